// A new project: a folder of its own, the pattern, and the first phase with its peaks.
#include "xray/XrayProjNew.h"

#include "common/QuarvexError.h"
#include "common/StagedFiles.h"
#include "common/TextUtils.h"
#include "xray/XrayMessages.h"
#include "xray/XrayProjSave.h"

#include <ostream>

namespace quarvex {

namespace {

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kXrayProjectTitle));
}

} // namespace

std::filesystem::path GETXRAYNEWPATH(const std::filesystem::path& given) {
    const std::filesystem::path mainFile = projectFolderFile(given);
    if (mainFile.stem().empty() || mainFile.stem() == "." || mainFile.stem() == "..") {
        fail(given.string() + " does not name a project.");
    }
    std::error_code error;
    const std::filesystem::path parent = mainFile.parent_path().parent_path();
    if (!parent.empty() && !std::filesystem::is_directory(parent, error)) {
        fail("The folder " + parent.string() + " does not exist.");
    }
    return mainFile;
}

void CREATEXRAYPROJFOLDER(const std::filesystem::path& mainFile) {
    std::error_code error;
    if (std::filesystem::exists(mainFile, error)) {
        fail("A project already exists at " + mainFile.string() + ".");
    }
    const std::filesystem::path phase = phaseFolder(mainFile, 1);
    std::filesystem::create_directories(phase, error);
    if (error || !std::filesystem::is_directory(phase, error)) {
        fail("Could not create the folder " + phase.string() + ".");
    }
}

void writePatternFile(std::ostream& out, const SpectrumRecord& pattern) {
    for (std::size_t k = 0; k < pattern.x.size(); ++k) {
        out << shortestText(pattern.x[k]) << ' ' << shortestText(pattern.y[k]) << '\n';
    }
}

void CREATEXRAYPROJFILES(const std::filesystem::path& mainFile, const XrayProject& project) {
    XrayPhase first;
    first.name = "Phase1";
    const XrayPhase& phase = project.phases.empty() ? first : project.phases.front();
    StagedFiles files{projectJournalPath(mainFile), std::string(kXrayProjectTitle)};
    writePatternFile(files.add(patternFilePath(mainFile)), project.pattern);
    WRITEPHASEPEAK(files.add(newPhaseFilePath(mainFile, 1, PhaseFile::Peak)), phase.peaks);
    WRITEPHASEINFO(files.add(newPhaseFilePath(mainFile, 1, PhaseFile::Info)), phase);
    files.add(mainFile) << xproj::kNumXrays << 1 << '\n';
    files.commitAll();
}

std::filesystem::path XRAYPROJNEW(const std::filesystem::path& given, const XrayProject& project) {
    const std::filesystem::path mainFile = GETXRAYNEWPATH(given);
    CREATEXRAYPROJFOLDER(mainFile);
    CREATEXRAYPROJFILES(mainFile, project);
    return mainFile;
}

} // namespace quarvex
