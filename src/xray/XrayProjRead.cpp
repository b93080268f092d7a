// The project reader: every file read line by line against the layout its writer uses, every
// count checked against the lines that follow it.
#include "xray/XrayProjRead.h"

#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/StagedFiles.h"
#include "common/TextUtils.h"
#include "xray/ProjectLines.h"
#include "xray/XrayMessages.h"

#include <cmath>
#include <optional>

namespace quarvex {

namespace {

std::optional<std::filesystem::path> phaseFile(const std::filesystem::path& mainFile, int number,
                                               PhaseFile kind) {
    std::error_code error;
    for (const auto& path :
         {phaseFilePath(mainFile, number, kind), newPhaseFilePath(mainFile, number, kind)}) {
        if (std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return std::nullopt;
}

std::filesystem::path requirePhaseFile(const std::filesystem::path& mainFile, int number,
                                       PhaseFile kind) {
    if (auto path = phaseFile(mainFile, number, kind)) {
        return *path;
    }
    throw QuarvexError("The project file " + phaseFilePath(mainFile, number, kind).string() +
                           " is missing.",
                       std::string(kXrayProjectTitle));
}

bool readUseFlag(ProjectLines& lines) {
    bool use = false;
    int number = 0;
    const std::string_view line = lines.next("the use flag");
    if (readAll(line, use)) {
        return use;
    }
    if (readAll(line, number) && (number == 0 || number == 1)) {
        return number == 1;
    }
    lines.fail("expected the use flag (T or F)");
}

XrayPeakList readPeaks(const std::filesystem::path& path) {
    ProjectLines lines(path);
    const int count = lines.count(xproj::kNumPeaks);
    XrayPeakList peaks;
    for (int k = 0; k < count; ++k) {
        XrayPeak peak;
        lines.floats("the four profile parameters", peak.parameters);
        lines.floats("their four errors", peak.errors);
        lines.values("the d-spacing", peak.dSpacing);
        lines.values("the error of the d-spacing", peak.dSpacingError);
        peak.use = readUseFlag(lines);
        lines.values("the profile type", peak.type);
        if (peak.type != 1 && peak.type != 2) {
            lines.fail("the profile type must be 1 or 2");
        }
        lines.floats("the two bounds", peak.bounds);
        lines.floats("the background and its error", peak.background);
        peaks.append(peak);
    }
    lines.end();
    return peaks;
}

void readInfo(const std::filesystem::path& path, XrayPhase& phase) {
    ProjectLines lines(path);
    phase.name = std::string(trimmedRight(lines.tagged(xproj::kName)));
}

void readReferences(const std::filesystem::path& path, XrayPhase& phase) {
    ProjectLines lines(path);
    const std::string_view system = trimmed(lines.tagged(xproj::kSystem));
    phase.SYM = system.empty() ? kSymUnknown : symCode(system);
    if (!system.empty() && phase.SYM == kSymUnknown) {
        lines.fail("unknown crystal system \"" + std::string(system) + "\"");
    }
    phase.source = std::string(trimmedRight(lines.tagged(xproj::kSource)));
    const int count = lines.count(xproj::kNumAssign);
    for (int k = 0; k < count; ++k) {
        PeakAssignment a;
        int peakNumber = 0;
        lines.values("peak number, h k l, wavelength number and reference 2-theta", peakNumber,
                     a.hkl[0], a.hkl[1], a.hkl[2], a.wave, a.referenceTwoTheta);
        if (peakNumber < 1 || peakNumber > phase.peaks.count() || a.wave < 1 || a.wave > 3) {
            lines.fail("peak " + std::to_string(peakNumber) + " or wavelength " +
                       std::to_string(a.wave) + " does not exist");
        }
        a.peak = peakNumber - 1;
        phase.assignments.push_back(a);
    }
    lines.end();
}

void readInput(const std::filesystem::path& path, XrayPhase& phase) {
    ProjectLines lines(path);
    ListReader cell(lines.tagged(xproj::kIcp));
    for (float& value : phase.ICP) {
        if (cell.read(value) != FieldStatus::Assigned) {
            lines.fail("expected six cell parameters after \"<icp> \"");
        }
    }
    const int count = lines.count(xproj::kNumInp);
    for (int r = 0; r < count; ++r) {
        std::array<int, 3> hkl{};
        float dSpacing = 0.0F;
        float intensity = 0.0F;
        lines.values("h k l", hkl[0], hkl[1], hkl[2]);
        lines.values("the d-spacing", dSpacing);
        lines.values("the intensity", intensity);
        phase.IHKL.push_back(hkl);
        phase.IDSP.push_back(dSpacing);
        phase.IINTS.push_back(intensity);
    }
    phase.USEICP = lines.switchValue(xproj::kUseIcp);
    phase.USEIHKL = lines.switchValue(xproj::kUseIhkl);
    phase.USEIINTS = lines.switchValue(xproj::kUseIints);
    lines.end();
}

void readPattern(const std::filesystem::path& path, SpectrumRecord& pattern) {
    ProjectLines lines(path);
    std::string_view line;
    while (lines.more(line)) {
        float x = 0.0F;
        float y = 0.0F;
        if (trimmed(line).empty()) {
            continue;
        }
        if (!readAll(line, x, y) || !std::isfinite(x) || !std::isfinite(y) ||
            (!pattern.x.empty() && !(x > pattern.x.back()))) {
            lines.fail("expected x and y, finite, with x ascending");
        }
        pattern.x.push_back(x);
        pattern.y.push_back(y);
    }
    if (pattern.x.empty()) {
        throw QuarvexError(path.string() + " holds no points.", std::string(kXrayProjectTitle));
    }
}

// The main file: its counts, and the pattern's wavelengths, name and data type.
int readMain(const std::filesystem::path& mainFile, XrayProject& project, bool& saved) {
    ProjectLines lines(mainFile);
    const int patterns = lines.count(xproj::kNumXrays);
    if (patterns != 1) {
        lines.fail("a project holds one pattern, this one says " + std::to_string(patterns));
    }
    int phases = 1;
    saved = false;
    project.pattern.name = patternFilePath(mainFile).filename().string();
    project.pattern.dtype = "XRD";
    std::string_view line;
    while (lines.more(line)) {
        if (startsWithKey(line, xproj::kNumPhases)) {
            saved = true;
            if (!readAll(line.substr(xproj::kNumPhases.size()), phases) || phases < 0) {
                lines.fail("expected the number of phases");
            }
        } else if (startsWithKey(line, xproj::kWave)) {
            ListReader values(line.substr(xproj::kWave.size()));
            double wavelength = 0.0;
            while (values.read(wavelength) == FieldStatus::Assigned && wavelength > 0.0 &&
                   project.wavelengths.size() < 3) {
                project.wavelengths.push_back(wavelength);
            }
        } else if (startsWithKey(line, xproj::kPattern)) {
            project.pattern.name = std::string(trimmedRight(line.substr(xproj::kPattern.size())));
        } else if (startsWithKey(line, xproj::kDataType)) {
            project.pattern.dtype = std::string(trimmedRight(line.substr(xproj::kDataType.size())));
        }
    }
    return phases;
}

} // namespace

XrayProject readXrayProject(const std::filesystem::path& mainFile) {
    // A save killed while it put its files in place is completed first: never a mix of two.
    finishInterruptedCommit(projectJournalPath(mainFile), std::string(kXrayProjectTitle));
    XrayProject project;
    bool saved = false;
    const int phases = readMain(mainFile, project, saved);
    project.pattern.path = patternFilePath(mainFile).string();
    readPattern(patternFilePath(mainFile), project.pattern);
    for (int number = 1; number <= phases; ++number) {
        XrayPhase phase;
        readInfo(requirePhaseFile(mainFile, number, PhaseFile::Info), phase);
        phase.peaks = readPeaks(requirePhaseFile(mainFile, number, PhaseFile::Peak));
        const auto ref = saved ? requirePhaseFile(mainFile, number, PhaseFile::Ref)
                               : phaseFile(mainFile, number, PhaseFile::Ref);
        if (ref) {
            readReferences(*ref, phase);
        }
        const auto input = saved ? requirePhaseFile(mainFile, number, PhaseFile::Input)
                                 : phaseFile(mainFile, number, PhaseFile::Input);
        if (input) {
            readInput(*input, phase);
        }
        project.phases.push_back(std::move(phase));
    }
    project.refined = loadRefinedRecord(mainFile);
    return project;
}

int openXrayProject(const std::filesystem::path& path, SPECDATA_GLOBALS& specdata,
                    XRAY_PEAK_GLOBALS& xrayPeak) {
    const std::filesystem::path mainFile = resolveProjectFile(path);
    XrayProject project = readXrayProject(mainFile);
    const int index = appendSpectrum(specdata, std::move(project.pattern));
    xrayPeak.phases = std::move(project.phases);
    xrayPeak.wavelengths = std::move(project.wavelengths);
    xrayPeak.pattern = index;
    xrayPeak.projectFile = mainFile;
    return index;
}

} // namespace quarvex
