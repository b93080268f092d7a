// The main window's dispatch: from a command number to the operation that carries it out.
#include "ui/MainWndProc.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "readers/LoadSpectra.h"
#include "readers/SpectrumFormats.h"
#include "specdata/SpecDataArrange.h"
#include "specdata/SpecDataManager.h"
#include "ui/AboutDlgProc.h"
#include "ui/BackgroundCompilation.h"
#include "ui/ColumnChoiceDialog.h"
#include "ui/Commands.h"
#include "ui/EditSpectrumDock.h"
#include "ui/FileManagerDock.h"
#include "ui/HelpPages.h"
#include "ui/HelpWindow.h"
#include "ui/PreferencesDialog.h"
#include "ui/PrintAndExport.h"
#include "ui/ProgressRunner.h"
#include "ui/RamanSearchDock.h"
#include "ui/SpectrumDialogs.h"
#include "ui/SpectrumView.h"
#include "ui/TextViewer.h"
#include "ui/XrayDiffractionDock.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QStatusBar>

namespace quarvex::ui {

namespace {

constexpr const char* kConsistencyQuestion =
    "Run Consistency Exam? The Process Can Take Several Hours!";
constexpr const char* kConsistencyTitle = "Raman Library Consistency Exam";

bool isMainWindowCommand(int command) {
    switch (command) {
    case kCmdExit:
    case kCmdOpen:
    case kCmdSave:
    case kCmdSaveAs:
    case kCmdPrint:
    case kCmdPrintSetup:
    case kCmdUndo:
    case kCmdHelpContents:
    case kCmdHelpSearch:
    case kCmdHelpOnHelp:
    case kCmdAbout:
    case kCmdAutoRemoveBackground:
    case kCmdXrayMode:
    case kCmdReverseXAxis:
    case kCmdOpen2:
    case kCmdTrimLeft:
    case kCmdTrimRight:
    case kCmdZoomFull:
    case kCmdRedo:
    case kCmdFileManager:
    case kCmdRamanSearchMode:
    case kCmdAutoRemoveCre:
    case kCmdEditSpectrumMode:
    case kCmdConsistencyExam:
    case kCmdMakeInvisible:
    case kCmdMakePrimary:
    case kCmdAdjustScale:
    case kCmdEditDataFile:
    case kCmdDelete:
    case kCmdSpectrumName:
    case kCmdAdjustDataType:
    case kCmdPreferences:
    case kCmdExportView:
    case kCmdSelectRangeMode:
    case kCmdStackSpectra:
    case kCmdSearchLibrary:
    case kCmdCompileLibrary:
    case kCmdFindPeaks:
    case kCmdFitPeaks:
    case kCmdCopyFitTable:
    case kCmdRemoveSpikesByHand:
    case kCmdSmooth:
        return true;
    default:
        return isXrayButtonCommand(command) ||
               (command >= kCmdRecentFileFirst && command <= kCmdRecentFileLast);
    }
}

} // namespace

DispatchResult MainWndProc::dispatch(int command) {
    if (!isMainWindowCommand(command)) {
        return DispatchResult::Unknown;
    }
    if (!canRun(command)) {
        return DispatchResult::Greyed;
    }
    try {
        runCommand(command);
    } catch (const QuarvexError& error) {
        showError(error);
    }
    SETUP_ANDADJUST_MENUS();
    return DispatchResult::Done;
}

void MainWndProc::runCommand(int command) {
    SPECDATA_GLOBALS& specdata = state_.specdata;
    Preferences& preferences = state_.quarvex.preferences;
    const int target = targetSpectrum();
    switch (command) {
    case kCmdOpen:
    case kCmdOpen2:
        READ_SPECDATA_FILE(command == kCmdOpen2);
        break;
    case kCmdPrint:
        print();
        break;
    case kCmdPrintSetup:
        printSetup();
        break;
    case kCmdExportView:
        exportView();
        break;
    case kCmdExit:
        close();
        break;
    case kCmdPreferences:
        editPreferences();
        break;
    case kCmdFileManager:
        showMode(fileManager_);
        break;
    case kCmdRamanSearchMode:
    case kCmdEditSpectrumMode:
    case kCmdSearchLibrary:
    case kCmdCompileLibrary:
    case kCmdFindPeaks:
    case kCmdFitPeaks:
    case kCmdCopyFitTable:
        runModeCommand(command);
        break;
    case kCmdXrayMode:
        runXrayCommand(command);
        break;
    case kCmdHelpContents:
    case kCmdHelpSearch:
    case kCmdHelpOnHelp:
        openHelp(command);
        break;
    case kCmdAbout: {
        AboutDlgProc about(this);
        runCentred(about);
        break;
    }
    case kCmdConsistencyExam:
        consistencyExam();
        break;
    case kCmdZoomFull:
        view_->ZOOM_OUT();
        break;
    case kCmdReverseXAxis:
        preferences.reverseXAxis = !preferences.reverseXAxis;
        AFTERUPDATESP();
        break;
    case kCmdStackSpectra:
        preferences.stackSpectra = !preferences.stackSpectra;
        refreshAfterSpectrumChange();
        view_->ZOOM_OUT();
        break;
    case kCmdSelectRangeMode:
        view_->setRangeSelectionMode(!view_->rangeSelectionMode());
        break;
    case kCmdMakeInvisible:
        setSpectrumVisible(specdata, target, !specdata.VISIBLE[at(target)]);
        refreshAfterSpectrumChange();
        break;
    case kCmdMakePrimary:
        MAKE_PRIMARY(specdata, target);
        refreshAfterSpectrumChange();
        break;
    case kCmdAdjustScale:
        adjustScale();
        break;
    case kCmdAdjustDataType:
        adjustDataType();
        break;
    case kCmdDelete:
        DELETE_SPECDATA_FILE(specdata, target);
        ensurePrimary(specdata);
        refreshAfterSpectrumChange();
        break;
    case kCmdSpectrumName:
        showMode(fileManager_);
        fileManager_->selectSpectrum(target);
        break;
    case kCmdUndo:
    case kCmdRedo:
    case kCmdSave:
    case kCmdSaveAs:
    case kCmdAutoRemoveBackground:
    case kCmdAutoRemoveCre:
    case kCmdTrimLeft:
    case kCmdTrimRight:
    case kCmdEditDataFile:
    case kCmdRemoveSpikesByHand:
    case kCmdSmooth:
        runEditCommand(command);
        break;
    default:
        if (isXrayButtonCommand(command)) {
            runXrayCommand(command);
        } else if (command >= kCmdRecentFileFirst && command <= kCmdRecentFileLast) {
            runEditCommand(command);
        }
        break; // greyed commands never arrive here
    }
}

void MainWndProc::READ_SPECDATA_FILE(bool another) {
    QString folder = QFileInfo(lastOpenedPath_).absolutePath();
    if (another) {
        // Open Another starts beside the primary spectrum, to add its neighbours.
        folder = QFileInfo(QString::fromStdString(state_.specdata.PATH[at(targetSpectrum())]))
                     .absolutePath();
    } else if (lastOpenedPath_.isEmpty()) {
        folder = QDir::currentPath();
    }
    const QString suffix = QFileInfo(lastOpenedPath_).suffix();
    const std::string extension =
        suffix.isEmpty() ? std::string() : (QLatin1Char('.') + suffix).toStdString();
    const QStringList files = options_.interaction->askOpenFileNames(
        this, another ? QStringLiteral("Open Another Spectrum") : QStringLiteral("Open Spectra"),
        folder, qtFileFilter(openDialogFilter(extension)));
    openFiles(files);
}

ReadOptions MainWndProc::columnDialogOptions(const QString& path) {
    ReadOptions read;
    read.chooseColumns = [this, path](const std::vector<std::string>& titles) {
        ColumnChoiceDialog dialog(QFileInfo(path).fileName(), titles, this);
        return options_.interaction->execDialog(dialog) == QDialog::Accepted
                   ? std::optional(dialog.choice())
                   : std::nullopt;
    };
    return read;
}

int MainWndProc::openFiles(const QStringList& paths) {
    int added = 0;
    QStringList passedOver; // part of a file that was not read is never kept from the user
    for (const QString& path : paths) {
        try {
            const LoadedFile loaded = loadSpectrumFile(
                state_.specdata, state_.mineralInfo, path.toStdString(), columnDialogOptions(path));
            rememberRecentFile(state_.recentFiles, options_.home, path.toStdString());
            lastOpenedPath_ = path;
            added += loaded.count;
            const std::string said = describeLoad(loaded);
            if (!said.empty()) {
                passedOver.append(QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(),
                                                               QString::fromStdString(said)));
            }
        } catch (const QuarvexError& error) {
            showError(error);
        } catch (const ReadCancelled&) {
            // the user closed the column dialog: nothing to say
        }
    }
    updateRecentFileItems();
    if (added > 0) {
        refreshAfterSpectrumChange();
        view_->ZOOM_OUT();
        view_->setFocus(); // the arrow keys move the cross-hair at once
    }
    if (!passedOver.isEmpty()) {
        statusBar()->showMessage(passedOver.join(QStringLiteral("; ")));
    }
    return added;
}

// After a spectrum was added, removed, hidden, rescaled or retyped: the list, its buttons, the
// extremes, the stack, then the view.
void MainWndProc::refreshAfterSpectrumChange() {
    fileManager_->HANDLE_FILEMANAGER_LISTVIEW();
    fileManager_->SET_UP_SPECDATA_BUTTONS();
    ramanSearch_->spectraChanged();
    editSpectrum_->spectraChanged();
    xray_->spectraChanged();
    RESET_YVALS(state_.specdata);
    RESETSTACK(state_.specdata, state_.quarvex.preferences.stackSpectra);
    if (state_.specdata.count() == 0) {
        setSpikeRemovalByHand(false);
    }
    AFTERUPDATESP();
}

void MainWndProc::AFTERUPDATESP() {
    view_->ORGANIZE_PAINTING();
    updateStatus();
    updateTitle();
    SETUP_ANDADJUST_MENUS();
}

void MainWndProc::showMode(QDockWidget* dock) {
    setSpikeRemovalByHand(false); // a mode of its own ends clicking spikes away
    const bool opening = dock->isHidden();
    dock->show();
    dock->raise();
    if (opening) {
        resizeDocks({dock}, {std::max(520, width() * 3 / 8)}, Qt::Horizontal);
    }
}

// The Raman Search and Edit Spectrum modes work on an x-range: opening one, or running one of
// its commands, shows its dock and lets a plain drag on the view select the range.
void MainWndProc::runModeCommand(int command) {
    const bool raman = command == kCmdRamanSearchMode || command == kCmdSearchLibrary ||
                       command == kCmdCompileLibrary;
    QDockWidget* dock =
        raman ? static_cast<QDockWidget*>(ramanSearch_) : static_cast<QDockWidget*>(editSpectrum_);
    if (dock->isHidden() || command == kCmdRamanSearchMode || command == kCmdEditSpectrumMode) {
        showMode(dock);
        view_->setRangeSelectionMode(true);
        if (raman) {
            ramanSearch_->activate();
        } else {
            editSpectrum_->activate();
        }
    }
    switch (command) {
    case kCmdSearchLibrary:
        ramanSearch_->search();
        break;
    case kCmdCompileLibrary:
        ramanSearch_->compileLibrary();
        break;
    case kCmdFindPeaks:
        editSpectrum_->findPeaks();
        break;
    case kCmdFitPeaks:
        editSpectrum_->fit();
        break;
    case kCmdCopyFitTable:
        editSpectrum_->copyTable();
        statusBar()->showMessage(QStringLiteral("The fit table is on the clipboard."), 5000);
        break;
    default:
        break; // opening the mode was all
    }
}

// The X-ray Diffraction mode: opening it, or running one of its commands, shows its dock.
void MainWndProc::runXrayCommand(int command) {
    if (xray_->isHidden() || command == kCmdXrayMode) {
        showMode(xray_);
        xray_->activate();
    }
    using Operation = void (XrayDiffractionDock::*)();
    const std::pair<int, Operation> operations[] = {
        {kCmdOpenReference, &XrayDiffractionDock::openReference},
        {kCmdFindXrayPeaks, &XrayDiffractionDock::findPeaks},
        {kCmdRefineCell, &XrayDiffractionDock::refine},
        {kCmdNewXrayProject, &XrayDiffractionDock::newProject},
        {kCmdOpenXrayProject, &XrayDiffractionDock::openProject},
        {kCmdSaveXrayProject, &XrayDiffractionDock::saveProject}};
    for (const auto& [number, operation] : operations) {
        if (number == command) {
            (xray_->*operation)();
        }
    }
}

bool MainWndProc::runCentred(QDialog& dialog) {
    dialog.adjustSize();
    CENTERWINDOW(dialog);
    return options_.interaction->execDialog(dialog) == QDialog::Accepted;
}

void MainWndProc::editPreferences() {
    PreferencesDialog dialog(state_.quarvex.preferences, this);
    if (!runCentred(dialog)) {
        return;
    }
    state_.quarvex.preferences = dialog.values();
    refreshAfterSpectrumChange();
    view_->ZOOM_OUT();
}

void MainWndProc::adjustScale() {
    const int k = targetSpectrum();
    SPECDATA_GLOBALS& specdata = state_.specdata;
    AdjustScaleDialog dialog(QString::fromStdString(specdata.NAME[at(k)]),
                             specdata.SCALE_FACT[at(k)], specdata.ABS_SCALE[at(k)], this);
    if (runCentred(dialog)) {
        ADJUST_SCALE(specdata, k, dialog.scaleFactor(), dialog.absoluteScale());
        refreshAfterSpectrumChange();
        view_->ZOOM_OUT();
    }
}

void MainWndProc::adjustDataType() {
    const int k = targetSpectrum();
    SPECDATA_GLOBALS& specdata = state_.specdata;
    AdjustDataTypeDialog dialog(QString::fromStdString(specdata.NAME[at(k)]),
                                QString::fromStdString(specdata.DTYPE[at(k)]), this);
    if (runCentred(dialog)) {
        ADJUST_DATA_TYPE(specdata, k, dialog.dataType().toStdString());
        refreshAfterSpectrumChange();
    }
}

QPrinter& MainWndProc::printer() {
    if (!printer_) {
        printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer_->setPageOrientation(QPageLayout::Landscape);
    }
    return *printer_;
}

void MainWndProc::print() {
    QPrintDialog dialog(&printer(), this);
    if (options_.interaction->execDialog(dialog) != QDialog::Accepted) {
        return;
    }
    printTo(printer());
}

void MainWndProc::printTo(QPrinter& target) {
    QStringList names;
    for (const int k : view_->drawnSpectra()) {
        names.append(QString::fromStdString(state_.specdata.NAME[at(k)]));
    }
    PRINTOUTMAINSCREEN(*view_, target,
                       QStringLiteral("Quarvex   %1   %2")
                           .arg(QDateTime::currentDateTime().toString(Qt::ISODate),
                                names.join(QStringLiteral(", "))));
}

void MainWndProc::printSetup() {
    if (printer().outputFormat() != QPrinter::NativeFormat) {
        throw QuarvexError("No Printer Is Installed. Print... Can Still Write The View To A PDF "
                           "File.",
                           "Print Setup");
    }
    QPageSetupDialog dialog(&printer(), this);
    options_.interaction->execDialog(dialog);
}

void MainWndProc::exportView() {
    const QString proposed =
        QFileInfo(QString::fromStdString(state_.specdata.PATH[at(targetSpectrum())]))
            .completeBaseName();
    const QString path = options_.interaction->askSaveFileName(
        this, QStringLiteral("Export View"),
        QDir(QFileInfo(lastOpenedPath_).absolutePath()).filePath(proposed + QStringLiteral(".pdf")),
        QStringLiteral("PDF document (*.pdf);;SVG drawing (*.svg);;PNG image (*.png)"));
    if (path.isEmpty()) {
        return;
    }
    if (!ui::exportView(*view_, path)) {
        throw QuarvexError("The View Could Not Be Saved As " + path.toStdString(), "Export View");
    }
    statusBar()->showMessage(QStringLiteral("Saved %1").arg(path), 5000);
}

void MainWndProc::openHelp(int command) {
    const std::filesystem::path page =
        prepareHelpPage(command, options_.docsFolder, options_.home / kTempFolder / "Help");
    if (helpWindow_ == nullptr) {
        helpWindow_ = new HelpWindow(this);
    }
    helpWindow_->showPage(page);
}

void MainWndProc::consistencyExam() {
    if (!options_.interaction->askYesNo(this, QString::fromUtf8(kConsistencyQuestion),
                                        QString::fromUtf8(kConsistencyTitle)) ||
        !hooks_.consistencyExam) {
        return;
    }
    std::optional<ConsistencyExamResult> exam; // a failure reaches the user through dispatch
    if (!runCancellableWithProgress(this, QString::fromUtf8(kConsistencyTitle),
                                    [this, &exam](const ProgressCallback& progress) {
                                        libraryCompilation_->wait(progress);
                                        exam = hooks_.consistencyExam(state_, progress);
                                    })) {
        statusBar()->showMessage(QStringLiteral("Consistency exam cancelled"));
        return;
    }
    const QString report = QString::fromStdString(exam->report.string());
    statusBar()->showMessage(QStringLiteral("Consistency report: %1").arg(report));
    options_.interaction->showInformation(this,
                                          QStringLiteral("%1\n\nThe report is in %2.")
                                              .arg(QString::fromStdString(exam->summary()), report),
                                          QString::fromUtf8(kConsistencyTitle));
    showTextFile(this, exam->report, QString::fromUtf8(kConsistencyTitle), options_.interaction);
}

void MainWndProc::showError(const QuarvexError& error) {
    options_.interaction->showError(this, QString::fromStdString(error.text()),
                                    QString::fromStdString(error.title()));
}

} // namespace quarvex::ui
