// Paths of a project's files, and the project of the program state.
#include "xray/XrayProject.h"

#include "common/QuarvexError.h"
#include "xray/XrayMessages.h"

#include <array>

namespace quarvex {

namespace {

constexpr std::array<std::string_view, 4> kPhaseExtensions{".peak", ".info", ".ref", ".input"};

std::string phaseFileName(std::string_view prefix, int number, PhaseFile kind) {
    return std::string(prefix) + std::to_string(number) +
           std::string(kPhaseExtensions[static_cast<std::size_t>(kind)]);
}

} // namespace

std::filesystem::path phaseFolder(const std::filesystem::path& mainFile, int number) {
    return mainFile.parent_path() / ("Phase" + std::to_string(number));
}

std::filesystem::path phaseFilePath(const std::filesystem::path& mainFile, int number,
                                    PhaseFile kind) {
    return phaseFolder(mainFile, number) / phaseFileName("Phase", number, kind);
}

std::filesystem::path newPhaseFilePath(const std::filesystem::path& mainFile, int number,
                                       PhaseFile kind) {
    return phaseFolder(mainFile, number) / phaseFileName("phase", number, kind);
}

std::filesystem::path patternFilePath(const std::filesystem::path& mainFile) {
    std::filesystem::path pattern = mainFile;
    return pattern.replace_extension(kPatternExtension);
}

std::filesystem::path projectJournalPath(const std::filesystem::path& mainFile) {
    std::filesystem::path journal = mainFile;
    journal += ".quarvex-journal";
    return journal;
}

std::filesystem::path projectFolderFile(const std::filesystem::path& given) {
    const std::string stem =
        given.extension() == kProjectExtension ? given.stem().string() : given.filename().string();
    return given.parent_path() / stem / (stem + std::string(kProjectExtension));
}

std::filesystem::path resolveProjectFile(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) {
        return path;
    }
    if (std::filesystem::is_directory(path, error)) {
        const std::filesystem::path folder = path.filename().empty() ? path.parent_path() : path;
        return folder / (folder.filename().string() + std::string(kProjectExtension));
    }
    return projectFolderFile(path);
}

XrayProject projectFromState(const SPECDATA_GLOBALS& specdata, const XRAY_PEAK_GLOBALS& xrayPeak) {
    const int k = xrayPeak.pattern;
    if (k < 0 || k >= specdata.count()) {
        throw QuarvexError("There is no X-ray pattern to keep in a project.",
                           std::string(kXrayProjectTitle));
    }
    const auto i = static_cast<std::size_t>(k);
    XrayProject project;
    project.pattern.name = specdata.NAME[i];
    project.pattern.path = specdata.PATH[i];
    project.pattern.dtype = specdata.DTYPE[i];
    project.pattern.waveInfo = specdata.WAVE_INFO[i];
    project.pattern.header = specdata.HEADER[i];
    const auto x = specdata.xValues(k);
    const auto y = specdata.yValues(k);
    project.pattern.x.assign(x.begin(), x.end());
    project.pattern.y.assign(y.begin(), y.end());
    project.wavelengths = xrayPeak.wavelengths;
    project.phases = xrayPeak.phases;
    return project;
}

} // namespace quarvex
