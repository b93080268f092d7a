// The X-ray Diffraction dock's files: projects, the reference files shown as text, the
// reflection table, and theoretical patterns made into spectra (the pop-up commands).
#include "ui/XrayDiffractionDock.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "readers/LoadSpectra.h"
#include "ui/CsvExport.h"
#include "ui/QtText.h"
#include "ui/XrayDialogs.h"
#include "xray/TheoreticalPattern.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayMessages.h"
#include "xray/XrayProjNew.h"
#include "xray/XrayProjRead.h"
#include "xray/XrayProjSave.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace quarvex::ui {

void XrayDiffractionDock::newProject() {
    ProgramState& state = context_.state;
    XRAY_PEAK_GLOBALS& x = state.xrayPeak;
    const int k = phase() != nullptr ? x.pattern : activeSpectrum(state.specdata);
    requireDiffractionPattern(k);
    const QFileInfo pattern(QString::fromStdString(state.specdata.PATH[at(k)]));
    const QString given = context_.interaction->askSaveFileName(
        this, qText(kNewProjectPrompt),
        pattern.dir().filePath(pattern.completeBaseName() + qText(kProjectExtension)),
        qtFileFilter(kProjectFilter));
    if (given.isEmpty()) {
        return;
    }
    if (phase() == nullptr) {
        // A project of a pattern whose peaks are still to be found.
        x.pattern = k;
        patternPath_ = state.specdata.PATH[at(k)];
        applyWavelengths(wavelengthChoice(k));
    }
    XrayProject project = projectFromState(state.specdata, x);
    project.refined = refined_;
    const std::filesystem::path mainFile = XRAYPROJNEW(given.toStdString(), project);
    if (!x.phases.empty()) {
        XRAYPROJSAVE(mainFile, project);
    }
    x.projectFile = mainFile;
    emit statusMessage(
        QStringLiteral("Created the project %1").arg(QString::fromStdString(mainFile.string())));
}

void XrayDiffractionDock::saveCellSummary() {
    if (!refined_) {
        throw QuarvexError("Refine first: there is no refined cell to save.",
                           std::string(kXrayDiffractionTitle));
    }
    const QFileInfo pattern(
        QString::fromStdString(context_.state.specdata.PATH[at(context_.state.xrayPeak.pattern)]));
    const QString path = context_.interaction->askSaveFileName(
        this, QStringLiteral("Save Refined Cell"),
        pattern.dir().filePath(pattern.completeBaseName() + QStringLiteral("_cell.txt")),
        QStringLiteral("Text files (*.txt)"));
    if (path.isEmpty()) {
        return;
    }
    saveText(path, QString::fromStdString(refinedCellSummary(*refined_)),
             std::string(kXrayDiffractionTitle));
    emit statusMessage(QStringLiteral("Saved the refined cell to %1").arg(path));
}

void XrayDiffractionDock::saveProject() {
    XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    if (x.projectFile.empty() || phase() == nullptr) {
        newProject();
        return;
    }
    XrayProject project = projectFromState(context_.state.specdata, x);
    project.refined = refined_;
    XRAYPROJSAVE(x.projectFile, project);
    emit statusMessage(
        QStringLiteral("Saved the project %1").arg(QString::fromStdString(x.projectFile.string())));
}

void XrayDiffractionDock::openProject() {
    ProgramState& state = context_.state;
    const int active = activeSpectrum(state.specdata);
    const QString folder =
        active >= 0
            ? QFileInfo(QString::fromStdString(state.specdata.PATH[at(active)])).absolutePath()
            : QString::fromStdString(context_.home.string());
    const QStringList files = context_.interaction->askOpenFileNames(
        this, QStringLiteral("Open X-ray Project"), folder, qtFileFilter(kProjectFilter));
    if (files.isEmpty()) {
        return;
    }
    const int k = openXrayProject(files.front().toStdString(), state.specdata, state.xrayPeak);
    patternPath_ = state.specdata.PATH[at(k)];
    shownPath_ = patternPath_;
    typedWavelength_.reset();
    joint_ = {};
    lastInput_.clear();
    refined_ = loadRefinedRecord(state.xrayPeak.projectFile);
    wavelengthSource_ = "project";
    if (state.xrayPeak.wavelengths.empty()) {
        applyWavelengths(wavelengthChoice(k));
    }
    // The phase's reference joins the list, for its ticks, when it is still where it was.
    const XrayPhase* p = phase();
    if (p != nullptr && !p->source.empty() && std::filesystem::exists(p->source)) {
        bool listed = false;
        for (int r = 0; r < state.diff.count(); ++r) {
            listed = listed || referenceSource(r) == p->source;
        }
        try {
            if (!listed) {
                OPEN_AND_READ_DIFF_FILE(state.diff, p->source, GET_IMPDIFF_PATH(context_.home));
            }
        } catch (const QuarvexError&) {
            // The project holds the reflections it was indexed from; the ticks can wait.
        }
    }
    emit spectraAdded();
    emit statusMessage(QStringLiteral("Opened the project %1")
                           .arg(QString::fromStdString(state.xrayPeak.projectFile.string())));
}

DispatchResult XrayDiffractionDock::dispatch(int command) {
    switch (command) {
    case kCmdOpenOriginalDif:
    case kCmdOpenAdjustedDif:
    case kCmdViewReference:
    case kCmdOpenGreltDatabase:
    case kCmdCreateSpectrumFromDif:
        break;
    default:
        return DispatchResult::Unknown;
    }
    if (!canRun(command)) {
        return DispatchResult::Greyed;
    }
    try {
        if (command == kCmdCreateSpectrumFromDif) {
            createSpectrumFromDif();
        } else if (command == kCmdViewReference) {
            ReferenceTableDialog dialog(context_.state.diff, selectedReference(), this);
            context_.interaction->execDialog(dialog);
        } else {
            viewReferenceFile(command == kCmdOpenAdjustedDif);
        }
    } catch (const QuarvexError& error) {
        context_.interaction->showError(this, QString::fromStdString(error.text()),
                                        QString::fromStdString(error.title()));
    }
    return DispatchResult::Done;
}

// Open Original... shows the reference file as it is; Open Adjusted... its import record, the
// lines the reader took from it.
void XrayDiffractionDock::viewReferenceFile(bool adjusted) {
    const DIFF_GLOBALS& diff = context_.state.diff;
    const auto r = at(selectedReference());
    std::filesystem::path path = referenceSource(selectedReference());
    QString title = QStringLiteral("%1 (original)").arg(QString::fromStdString(diff.NAME[r]));
    if (adjusted) {
        path = GET_IMPDIFF_PATH(context_.home) /
               (path.stem().string() + std::string(kImportRecordExtension));
        title = QStringLiteral("%1 (import record of %2)")
                    .arg(QString::fromStdString(path.filename().string()),
                         QString::fromStdString(diff.NAME[r]));
    }
    TextViewDialog dialog(title, readTextFile(path), this);
    context_.interaction->execDialog(dialog);
}

// The theoretical pattern is written to the home folder's TempFold and read from there like
// any spectrum file, so that it has a file of its own (a refinement writes beside it).
void XrayDiffractionDock::createSpectrumFromDif() {
    ProgramState& state = context_.state;
    const int r = selectedReference();
    TheoreticalPatternSettings settings;
    settings.wavelength = wavelengths().front();
    TheoreticalPatternDialog dialog(QString::fromStdString(state.diff.NAME[at(r)]), settings, this);
    if (context_.interaction->execDialog(dialog) != QDialog::Accepted) {
        return;
    }
    settings = dialog.settings();
    const TheoreticalPattern pattern = theoreticalPattern(state.diff, r, settings);
    const std::filesystem::path folder = context_.home / kTempFolder;
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    const std::string stem = std::filesystem::path(state.diff.NAME[at(r)]).stem().string();
    // A file no loaded spectrum reads from: <stem>_theoretical.txt, else _2, _3, ...
    std::filesystem::path file = folder / (stem + "_theoretical.txt");
    for (int n = 2;
         std::count(state.specdata.PATH.begin(), state.specdata.PATH.end(), file.string()) > 0;
         ++n) {
        std::string name = stem;
        name.append("_theoretical_").append(std::to_string(n)).append(".txt");
        file = folder / name;
    }
    const std::string title = state.diff.TITLE[at(r)].empty() ? stem : state.diff.TITLE[at(r)];
    writeTheoreticalPattern(file, pattern, title + " (theoretical)",
                            theoreticalPatternNotes(state.diff, r, settings, pattern));
    loadSpectrumFile(state.specdata, state.mineralInfo, file);
    emit spectraAdded();
    emit statusMessage(QStringLiteral("Created %1: %2 points, %3 reflections")
                           .arg(QString::fromStdString(file.string()))
                           .arg(pattern.x.size())
                           .arg(pattern.reflections));
}

} // namespace quarvex::ui
