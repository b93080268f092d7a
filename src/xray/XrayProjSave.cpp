// The project writers: tag lines as a tag and its value, free-format value lines with the
// shortest text of each number (so that every value reads back exactly).
#include "xray/XrayProjSave.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/XrayMessages.h"

#include <ostream>
#include <span>

namespace quarvex {

namespace {

void writeValues(std::ostream& out, std::span<const float> values) {
    for (std::size_t k = 0; k < values.size(); ++k) {
        out << (k == 0 ? "" : " ") << shortestText(values[k]);
    }
    out << '\n';
}

char digit(bool value) {
    return value ? '1' : '0';
}

// A text value on one line.
std::string oneLine(std::string text) {
    for (char& c : text) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    return text;
}

void makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder, error)) {
        throw QuarvexError("Could not create the folder " + folder.string() + ".",
                           std::string(kXrayProjectTitle));
    }
}

// After a save, the first phase's files of a new project are superseded; on a file system that
// ignores case they are the saved files themselves and stay.
void removeNewProjectNames(const std::filesystem::path& mainFile) {
    for (const PhaseFile kind : {PhaseFile::Peak, PhaseFile::Info}) {
        const auto old = newPhaseFilePath(mainFile, 1, kind);
        const auto saved = phaseFilePath(mainFile, 1, kind);
        std::error_code error;
        if (std::filesystem::exists(old, error) &&
            !std::filesystem::equivalent(old, saved, error) && !error) {
            std::filesystem::remove(old, error);
        }
    }
}

} // namespace

void WRITEXPROJ(std::ostream& out, const XrayProject& project) {
    out << xproj::kNumXrays << 1 << '\n' << xproj::kNumPhases << project.phases.size() << '\n';
    if (!project.wavelengths.empty()) {
        out << xproj::kWave;
        for (std::size_t k = 0; k < project.wavelengths.size(); ++k) {
            out << (k == 0 ? "" : " ") << shortestText(project.wavelengths[k]);
        }
        out << '\n';
    }
    out << xproj::kPattern << oneLine(project.pattern.name) << '\n'
        << xproj::kDataType << oneLine(project.pattern.dtype) << '\n';
}

void WRITEPHASEINFO(std::ostream& out, const XrayPhase& phase) {
    out << xproj::kName << oneLine(phase.name) << '\n';
}

void WRITEPHASEPEAK(std::ostream& out, const XrayPeakList& peaks) {
    out << xproj::kNumPeaks << peaks.count() << '\n';
    for (int k = 0; k < peaks.count(); ++k) {
        const XrayPeak peak = peaks.peak(k);
        writeValues(out, peak.parameters);
        writeValues(out, peak.errors);
        out << shortestText(peak.dSpacing) << '\n'
            << shortestText(peak.dSpacingError) << '\n'
            << (peak.use ? 'T' : 'F') << '\n'
            << peak.type << '\n';
        writeValues(out, peak.bounds);
        writeValues(out, peak.background);
    }
}

void WRITEPHASEREF(std::ostream& out, const XrayPhase& phase) {
    out << xproj::kSystem << crystalSystemName(phase.SYM) << '\n'
        << xproj::kSource << oneLine(phase.source) << '\n'
        << xproj::kNumAssign << phase.assignments.size() << '\n';
    for (const PeakAssignment& a : phase.assignments) {
        out << a.peak + 1 << ' ' << a.hkl[0] << ' ' << a.hkl[1] << ' ' << a.hkl[2] << ' ' << a.wave
            << ' ' << shortestText(a.referenceTwoTheta) << '\n';
    }
}

void WRITEPHASEINPUT(std::ostream& out, const XrayPhase& phase) {
    out << xproj::kIcp;
    writeValues(out, phase.ICP);
    out << xproj::kNumInp << phase.NUMINP() << '\n';
    for (int r = 0; r < phase.NUMINP(); ++r) {
        const auto i = static_cast<std::size_t>(r);
        out << phase.IHKL[i][0] << ' ' << phase.IHKL[i][1] << ' ' << phase.IHKL[i][2] << '\n'
            << shortestText(phase.IDSP[i]) << '\n'
            << shortestText(phase.IINTS[i]) << '\n';
    }
    out << xproj::kUseIcp << digit(phase.USEICP) << '\n'
        << xproj::kUseIhkl << digit(phase.USEIHKL) << '\n'
        << xproj::kUseIints << digit(phase.USEIINTS) << '\n';
}

void XRAYPROJSAVE(const std::filesystem::path& mainFile, const XrayProject& project,
                  const CommitStepHook& beforeStep) {
    const std::string title(kXrayProjectTitle);
    finishInterruptedCommit(projectJournalPath(mainFile), title);
    removeStaleTemporaryFiles(mainFile.parent_path().empty() ? "." : mainFile.parent_path());
    StagedFiles files{projectJournalPath(mainFile), title, beforeStep};
    for (std::size_t p = 0; p < project.phases.size(); ++p) {
        const int number = static_cast<int>(p) + 1;
        const XrayPhase& phase = project.phases[p];
        makeFolder(phaseFolder(mainFile, number));
        removeStaleTemporaryFiles(phaseFolder(mainFile, number));
        WRITEPHASEINFO(files.add(phaseFilePath(mainFile, number, PhaseFile::Info)), phase);
        WRITEPHASEPEAK(files.add(phaseFilePath(mainFile, number, PhaseFile::Peak)), phase.peaks);
        WRITEPHASEREF(files.add(phaseFilePath(mainFile, number, PhaseFile::Ref)), phase);
        WRITEPHASEINPUT(files.add(phaseFilePath(mainFile, number, PhaseFile::Input)), phase);
    }
    if (project.refined) {
        writeRefinedRecord(files.add(refinedRecordPath(mainFile)), *project.refined);
    }
    WRITEXPROJ(files.add(mainFile), project);
    files.commitAll();
    removeNewProjectNames(mainFile);
    if (!project.refined) {
        // A record of peaks or assignments that were changed since is no longer theirs.
        std::error_code ignored;
        std::filesystem::remove(refinedRecordPath(mainFile), ignored);
    }
}

} // namespace quarvex
