// The main window's editing commands: cosmic-ray and background removal, trimming at the
// cursor, undo and redo, Save and Save As, and the recent-file list of the File menu.
#include "ui/MainWndProc.h"

#include "common/AtomicFile.h"
#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "readers/JcampWriter.h"
#include "readers/LoadSpectra.h"
#include "readers/SpectrumFormats.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumRecords.h"
#include "ui/BackgroundDialog.h"
#include "ui/DataFileEditor.h"
#include "ui/SmoothDialog.h"
#include "ui/SpectrumView.h"

#include <QAction>
#include <QFileInfo>
#include <QStatusBar>

#include <algorithm>
#include <span>

namespace quarvex::ui {

namespace {

constexpr const char* kSaveFilters =
    "Spectrum Files (*.txt)|*.txt|GRELT Files (*.grelt)|*.grelt|CSV Files (*.csv)|*.csv|"
    "JCAMP-DX Files (*.jdx *.dx)|*.jdx;*.dx|";

constexpr const char* kSpikeRemovalHint = "Click on a cosmic-ray spike to remove it; Escape ends.";

QString qPath(const std::string& path) {
    return QString::fromStdString(path);
}

} // namespace

void MainWndProc::startEditing() {
    CREATE_APPEND_UNDO_FILE(state_.undoHistory, options_.home);
    RECENT_FILES(state_.recentFiles, options_.home);
    updateRecentFileItems();
}

void MainWndProc::endEditing() {
    CREATE_APPEND_UNDO_FILE(state_.undoHistory, options_.home);
}

bool MainWndProc::canRunEditCommand(int command) const {
    const bool loaded = state_.specdata.count() > 0;
    switch (command) {
    case kCmdUndo:
        return !state_.undoHistory.undo.empty();
    case kCmdRedo:
        return !state_.undoHistory.redo.empty();
    case kCmdSave:
    case kCmdSaveAs:
    case kCmdEditDataFile:
    case kCmdAutoRemoveBackground:
    case kCmdAutoRemoveCre:
    case kCmdRemoveSpikesByHand:
    case kCmdSmooth:
        return loaded;
    case kCmdTrimLeft:
    case kCmdTrimRight:
        return loaded && view_->crosshairPoint() >= 0;
    default:
        return command >= kCmdRecentFileFirst && command <= kCmdRecentFileLast &&
               static_cast<std::size_t>(command - kCmdRecentFileFirst) <
                   state_.recentFiles.paths.size();
    }
}

void MainWndProc::runEditCommand(int command) {
    switch (command) {
    case kCmdAutoRemoveCre:
        applySpectrumEdit(DespikeEdit{});
        break;
    case kCmdAutoRemoveBackground: {
        const int spectrum = targetSpectrum();
        BackgroundDialog dialog(state_.specdata.xValues(spectrum),
                                state_.specdata.yValues(spectrum), this);
        if (runCentred(dialog)) {
            applySpectrumEdit(dialog.edit());
        }
        break;
    }
    case kCmdRemoveSpikesByHand:
        setSpikeRemovalByHand(!state_.mancre.active);
        break;
    case kCmdSmooth:
        smooth();
        break;
    case kCmdTrimLeft:
    case kCmdTrimRight:
        ORGANIZE_TRIMMING(command);
        break;
    case kCmdUndo:
    case kCmdRedo: {
        const std::string label =
            command == kCmdUndo ? undoLastEdit(state_.undoHistory, options_.home, state_.specdata)
                                : redoLastEdit(state_.undoHistory, options_.home, state_.specdata);
        refreshAfterSpectrumChange();
        statusBar()->showMessage(
            (command == kCmdUndo ? QStringLiteral("Undone: ") : QStringLiteral("Redone: ")) +
                QString::fromStdString(label),
            10000);
        break;
    }
    case kCmdSave:
    case kCmdSaveAs:
        ORGANIZE_SAVEFILE(command);
        break;
    case kCmdEditDataFile:
        EDIT_SPECDATA_FILE();
        break;
    default:
        openRecentFile(static_cast<std::size_t>(command - kCmdRecentFileFirst));
        break;
    }
}

void MainWndProc::applySpectrumEdit(const SpectrumEdit& edit) {
    const EditOutcome outcome =
        applyEdit(state_.specdata, state_.undoHistory, options_.home, targetSpectrum(), edit);
    refreshAfterSpectrumChange();
    statusBar()->showMessage(QString::fromStdString(outcome.processingLine), 10000);
}

// While on, a click on the view removes the spike under it (MANCRE_GLOBALS); the cursor and the
// tool button show the mode.
void MainWndProc::setSpikeRemovalByHand(bool on) {
    state_.mancre.active = on && state_.specdata.count() > 0;
    if (state_.mancre.active) {
        view_->setCursor(Qt::CrossCursor);
        view_->setFocus(); // Escape reaches the view
        statusBar()->showMessage(QString::fromUtf8(kSpikeRemovalHint));
    } else {
        view_->unsetCursor();
        if (statusBar()->currentMessage() == QString::fromUtf8(kSpikeRemovalHint)) {
            statusBar()->clearMessage();
        }
    }
    commandAction(kCmdRemoveSpikesByHand)->setChecked(state_.mancre.active);
}

// A click that finds no spike there is told in the status bar: the user simply clicks again.
void MainWndProc::removeSpikeAt(int spectrum, double x) {
    setTargetSpectrum(spectrum);
    try {
        applySpectrumEdit(ManualSpikeEdit{x, state_.mancre.parameters});
    } catch (const QuarvexError& error) {
        statusBar()->showMessage(QString::fromStdString(error.text()), 10000);
    }
    setTargetSpectrum(-1);
    SETUP_ANDADJUST_MENUS();
}

void MainWndProc::smooth() {
    const int spectrum = targetSpectrum();
    SmoothDialog dialog(state_.specdata.xValues(spectrum), state_.specdata.yValues(spectrum), this);
    if (runCentred(dialog)) {
        applySpectrumEdit(dialog.edit());
    }
}

// The spectrum takes the values read again from its file; undo brings the old ones back.
void MainWndProc::applySpectrumRecord(int spectrum, const SpectrumRecord& record) {
    appendUndoRecord(state_.undoHistory, options_.home, state_.specdata, spectrum,
                     "Edit Data File");
    replaceSpectrum(state_.specdata, spectrum, record);
    refreshAfterSpectrumChange();
}

// Trim left of cursor keeps the points from the cross-hair's x on; right of cursor up to it.
void MainWndProc::ORGANIZE_TRIMMING(int command) {
    const int spectrum = view_->crosshairSpectrum();
    const int point = view_->crosshairPoint();
    if (spectrum < 0 || spectrum >= state_.specdata.count() ||
        point >= state_.specdata.NUMDATA[at(spectrum)]) {
        throw QuarvexError("Place the cross-hair on the spectrum to trim first.", "Trim");
    }
    const std::span<const float> x = state_.specdata.xValues(spectrum);
    const auto cursorX = static_cast<double>(x[static_cast<std::size_t>(point)]);
    setTargetSpectrum(spectrum);
    applySpectrumEdit(command == kCmdTrimLeft ? TrimEdit{cursorX, static_cast<double>(x.back())}
                                              : TrimEdit{static_cast<double>(x.front()), cursorX});
}

// Save writes the spectrum over its own file after a question; Save As asks for a name, and a
// ".csv" name gives CSV, a ".jdx" or ".dx" name JCAMP-DX.
void MainWndProc::ORGANIZE_SAVEFILE(int command) {
    const int spectrum = targetSpectrum();
    const QString current = qPath(state_.specdata.PATH[at(spectrum)]);
    QString path = current;
    if (command == kCmdSaveAs) {
        path = options_.interaction->askSaveFileName(this, QStringLiteral("Save Spectrum As"),
                                                     current, qtFileFilter(kSaveFilters));
        if (path.isEmpty()) {
            return;
        }
    }
    if (QFileInfo(path) == QFileInfo(current) &&
        !options_.interaction->askYesNo(
            this, QStringLiteral("Overwrite %1, the file the spectrum came from?").arg(current),
            QStringLiteral("Save"))) {
        return;
    }
    if (isJcampDxName(path.toStdString())) {
        writeJcampDxFile(path.toStdString(), spectrumRecord(state_.specdata, spectrum));
        statusBar()->showMessage(QStringLiteral("Saved ") + path, 10000);
        return;
    }
    const SpectrumFileFormat format = path.endsWith(QStringLiteral(".csv"), Qt::CaseInsensitive)
                                          ? SpectrumFileFormat::Csv
                                          : SpectrumFileFormat::Program;
    quarvex::ORGANIZE_SAVEFILE(state_.specdata, state_.undoHistory, spectrum, path.toStdString(),
                               format);
    if (format == SpectrumFileFormat::Program) {
        rememberRecentFile(state_.recentFiles, options_.home, path.toStdString());
        updateRecentFileItems();
    }
    refreshAfterSpectrumChange();
    statusBar()->showMessage(QStringLiteral("Saved ") + path, 10000);
}

// The spectrum's file in the editor; Save writes it back (atomically) and reads the spectrum
// again, in whatever format the file now shows (of a file of several spectra, the one of the
// same name, else the first). A file that no longer reads shows its message and the spectrum
// keeps its data. Binary files (SPC, diffraction scans) would not survive a text editor.
void MainWndProc::EDIT_SPECDATA_FILE() {
    const int spectrum = targetSpectrum();
    const std::string path = state_.specdata.PATH[at(spectrum)];
    if (readFileHead(path).find('\0') != std::string::npos) {
        throw QuarvexError(path + " is a binary file: Edit Data File edits text files only.",
                           "Edit Data File");
    }
    DataFileEditor editor(qPath(path), this);
    if (!runCentred(editor)) {
        return;
    }
    {
        AtomicFile file(path);
        if (file.isOpen()) {
            file.stream() << editor.text().toStdString();
        }
        if (!file.isOpen() || !file.commit()) {
            throw QuarvexError("Cannot write " + path + ".", "Edit Data File");
        }
    }
    SPECDATA_GLOBALS reread;
    MINERALINFO header;
    LoadedFile loaded;
    try {
        loaded = loadSpectrumFile(reread, header, path, columnDialogOptions(qPath(path)));
    } catch (const ReadCancelled&) {
        return; // the column dialog was closed: the spectrum keeps its data
    }
    const auto sameName =
        std::find(reread.NAME.begin(), reread.NAME.end(), state_.specdata.NAME[at(spectrum)]);
    const int index = sameName != reread.NAME.end()
                          ? static_cast<int>(sameName - reread.NAME.begin())
                          : loaded.first;
    applySpectrumRecord(spectrum, spectrumRecord(reread, index));
}

void MainWndProc::openRecentFile(std::size_t entry) {
    std::filesystem::path path;
    try {
        path = recentFileToOpen(state_.recentFiles, options_.home, entry);
    } catch (const QuarvexError&) {
        updateRecentFileItems();
        throw;
    }
    openFiles({QString::fromStdString(path.string())});
}

// The File menu's rows 30039 to 30048 show the list, "&1 name" to "1&0 name"; unused rows hide.
void MainWndProc::updateRecentFileItems() {
    for (int command = kCmdRecentFileFirst; command <= kCmdRecentFileLast; ++command) {
        const auto entry = static_cast<std::size_t>(command - kCmdRecentFileFirst);
        for (QAction* action : actionsFor(command)) {
            const bool used = entry < state_.recentFiles.paths.size();
            action->setVisible(used);
            if (used) {
                const QString number =
                    entry < 9 ? QStringLiteral("&%1").arg(entry + 1) : QStringLiteral("1&0");
                action->setText(number + QLatin1Char(' ') +
                                QString::fromStdString(state_.recentFiles.paths[entry].string()));
            }
        }
    }
}

} // namespace quarvex::ui
