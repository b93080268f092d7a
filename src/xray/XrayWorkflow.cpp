// The workflow's steps (wavelengths, phase, matching, refinement) and the operation that runs
// them in order for a pattern file and a reference file.
#include "xray/XrayWorkflow.h"

#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/LoadSpectra.h"
#include "specdata/SpecDataManager.h"
#include "xray/KAlpha2Strip.h"
#include "xray/Refine.h"
#include "xray/RefineEngine.h"
#include "xray/RefineInputWriter.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayMessages.h"
#include "xray/XrayPeakFit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quarvex {

namespace {

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kXrayDiffractionTitle));
}

// A single-precision setting as the double its text means (1.540562F is 1.540562, not
// 1.5405620336...).
double asWritten(float value) {
    double widened = value;
    parseReal(shortestText(value), widened);
    return widened;
}

std::string degrees(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", static_cast<double>(value));
    return text;
}

int requireSystem(const std::string& name) {
    const int sym = symCode(name);
    if (sym == kSymUnknown) {
        fail("Unknown crystal system \"" + name + "\"; expected one of " +
             std::string(crystalSystemList()) + ".");
    }
    return sym;
}

} // namespace

std::vector<float> alpha1Intensities(std::span<const float> x, std::span<const float> y,
                                     WavelengthChoice& choice) {
    const double alpha1 = choice.wavelengths.front();
    const std::optional<double> alpha2 =
        choice.wavelengths.size() > 1 ? choice.wavelengths[1] : kAlpha2For(alpha1);
    if (!alpha2) {
        fail("No K-alpha2 wavelength is known for " + shortestText(alpha1) +
             " angstroms: cannot strip K-alpha2.");
    }
    std::vector<float> stripped = stripKAlpha2(x, y, alpha1, *alpha2);
    if (stripped.empty()) {
        fail("The pattern's 2-theta values do not rise point by point: cannot strip K-alpha2.");
    }
    choice.wavelengths.resize(1);
    return stripped;
}

WavelengthChoice chooseWavelengths(std::optional<double> given, std::string_view patternWave,
                                   const DIFF_GLOBALS& diff, int reference, float preference) {
    const std::array<double, 2> fromFile =
        reference >= 0 ? diff.WAVELENGTHS[static_cast<std::size_t>(reference)]
                       : std::array<double, 2>{};
    WavelengthChoice choice;
    double stated = 0.0;
    if (given) {
        choice = {{*given}, "option"};
    } else if (readAll(patternWave, stated) && stated >= kMinXrayWavelength &&
               stated <= kMaxXrayWavelength) {
        choice = {{stated}, "pattern"};
    } else if (fromFile[0] > 0.0) {
        choice = {{fromFile[0]}, "reference"};
    } else {
        choice = {{asWritten(preference)}, "preferences"};
    }
    const bool twoLines =
        reference >= 0 && diff.MODE[static_cast<std::size_t>(reference)] == 2 && fromFile[1] > 0.0;
    if (twoLines && std::abs(fromFile[0] - choice.wavelengths[0]) <= kSameWavelength) {
        choice.wavelengths.push_back(fromFile[1]);
    }
    return choice;
}

void requireTwoThetaPattern(const SPECDATA_GLOBALS& specdata, int index) {
    const auto x = specdata.xValues(index);
    const std::string& name = specdata.NAME[static_cast<std::size_t>(index)];
    if (x.empty() || !(x.front() > 0.0F) || !(x.back() < kMaxTwoThetaDeg)) {
        fail(name + ": x runs from " + shortestText(x.empty() ? 0.0F : x.front()) + " to " +
             shortestText(x.empty() ? 0.0F : x.back()) +
             ": not a diffraction pattern over 2-theta (0 to 180 degrees).");
    }
}

XrayPhase phaseFromReference(const DIFF_GLOBALS& diff, int reference) {
    const auto p = static_cast<std::size_t>(reference);
    XrayPhase phase;
    phase.name = diff.TITLE[p].empty() ? diff.NAME[p] : diff.TITLE[p];
    phase.SYM = diff.SYM[p];
    phase.source = (std::filesystem::path(diff.PATH[p]) / diff.NAME[p]).string();
    const auto hkl = diff.reflections(diff.HKL, reference);
    const auto dSpacing = diff.reflections(diff.DSPACE, reference);
    const auto intensity = diff.reflections(diff.INTENS, reference);
    phase.IHKL.assign(hkl.begin(), hkl.end());
    phase.IDSP.assign(dSpacing.begin(), dSpacing.end());
    phase.IINTS.assign(intensity.begin(), intensity.end());
    phase.ICP = diff.CELL_PARAMS[p];
    return phase;
}

std::vector<PeakMatch> matchPhase(XrayPhase& phase, const DIFF_GLOBALS& diff,
                                  std::span<const double> wavelengths, float tolerance) {
    const std::vector<ReflectionCandidate> candidates =
        phase.USEIHKL ? candidatesFromInput(phase, wavelengths)
                      : candidatesFromPatterns(diff, wavelengths);
    std::vector<PeakMatch> matches =
        matchPeaks(phase.peaks, candidates, {tolerance, phase.USEIINTS});
    phase.assignments.clear();
    for (const PeakMatch& match : matches) {
        phase.assignments.push_back(match.assignment);
    }
    return matches;
}

bool refinePhase(const XrayPhase& phase, std::span<const double> wavelengths,
                 const std::filesystem::path& inputFile, const PhaseRefineSettings& settings,
                 INOUTPARMS& io, DATASTFF& data) {
    RefineInputContent content;
    content.title = settings.title;
    content.sym = phase.SYM;
    content.cell = phase.ICP;
    content.startFromCell = phase.USEICP;
    content.wavelengths.assign(wavelengths.begin(), wavelengths.end());
    content.machineErrorSearch = settings.machineErrorSearch;
    content.reportIterations = settings.reportIterations;
    content.lines = refineInputLines(phase);
    if (content.lines.empty()) {
        fail("No peak of the phase " + phase.name + " is assigned: nothing to refine.");
    }
    writeRefineInput(inputFile, content);
    return REFINEMAIN(inputFile, io, data);
}

XrayRefineOutcome prepareXrayPhase(XrayStateGroups groups, const XrayRefineRequest& request) {
    XrayRefineOutcome outcome;
    const LoadedFile loaded =
        loadSpectrumFile(groups.specdata, groups.mineralInfo, request.pattern);
    outcome.pattern = loaded.first;
    if (const std::string read = describeLoad(loaded); !read.empty()) {
        outcome.notes.push_back(request.pattern.string() + ": " + read);
    }
    if (loaded.count > 1) {
        outcome.notes.push_back(request.pattern.string() + " holds " +
                                std::to_string(loaded.count) + " scans: the first is used");
    }
    requireTwoThetaPattern(groups.specdata, outcome.pattern);
    const auto p = static_cast<std::size_t>(outcome.pattern);
    const std::string patternName = groups.specdata.NAME[p];
    if (groups.specdata.DTYPE[p] == kDefaultDataType) {
        outcome.notes.push_back(patternName + " has data type " + groups.specdata.DTYPE[p] +
                                "; its x values are taken as 2-theta in degrees");
    }
    outcome.reference =
        OPEN_AND_READ_DIFF_FILE(groups.diff, request.reference, request.importFolder);
    const auto r = static_cast<std::size_t>(outcome.reference);
    const std::string referenceName = groups.diff.NAME[r];
    for (const std::string& note : groups.diff.NOTES[r]) {
        outcome.notes.push_back(referenceName + ": " + note);
    }
    outcome.wavelengths =
        chooseWavelengths(request.wavelength, groups.specdata.WAVE_INFO[p], groups.diff,
                          outcome.reference, request.preferenceWavelength);

    XrayPhase phase = phaseFromReference(groups.diff, outcome.reference);
    if (!request.system.empty()) {
        phase.SYM = requireSystem(request.system);
    }
    if (phase.NUMINP() == 0) {
        fail(referenceName + " has no reflections: nothing to match.");
    }
    phase.USEIINTS = request.match.useIntensities;
    std::span<const float> intensities = groups.specdata.yValues(outcome.pattern);
    std::vector<float> stripped;
    if (request.stripKAlpha2) {
        stripped = alpha1Intensities(groups.specdata.xValues(outcome.pattern), intensities,
                                     outcome.wavelengths);
        intensities = stripped;
        outcome.notes.push_back("K-alpha2 stripped before the peak search (Rachinger, ratio 0.5); "
                                "peaks matched with K-alpha1 only");
    }
    phase.peaks = fitPatternPeaks(groups.specdata.xValues(outcome.pattern), intensities,
                                  request.fit, outcome.wavelengths.wavelengths[0]);
    if (phase.peaks.count() == 0) {
        fail("No peak of " + patternName + " stands out of its noise: nothing to match.");
    }
    outcome.matches =
        matchPhase(phase, groups.diff, outcome.wavelengths.wavelengths, request.match.tolerance);
    if (outcome.matches.empty()) {
        fail("No peak of " + patternName + " lies within " + degrees(request.match.tolerance) +
             " degrees of a reflection of " + referenceName + ": nothing to refine.");
    }
    const int usable =
        static_cast<int>(std::count(phase.peaks.USEPK.begin(), phase.peaks.USEPK.end(), true));
    outcome.notes.push_back(std::to_string(phase.peaks.count()) + " peaks found, " +
                            std::to_string(usable) + " usable, " +
                            std::to_string(outcome.matches.size()) + " matched");
    groups.xrayPeak.phases = {std::move(phase)};
    groups.xrayPeak.wavelengths = outcome.wavelengths.wavelengths;
    groups.xrayPeak.pattern = outcome.pattern;
    return outcome;
}

XrayRefineOutcome runXrayRefine(XrayStateGroups groups, const XrayRefineRequest& request) {
    XrayRefineOutcome outcome = prepareXrayPhase(groups, request);
    const XrayPhase& phase = groups.xrayPeak.phases.front();
    const std::vector<RefineInputLine> lines = refineInputLines(phase);
    if (lines.size() < phase.assignments.size()) {
        outcome.notes.push_back("the refinement takes the " + std::to_string(lines.size()) +
                                " strongest of the " + std::to_string(phase.assignments.size()) +
                                " matched peaks");
    }
    outcome.inputFile = refineInputPath(request.pattern);
    const PhaseRefineSettings settings{
        groups.specdata.NAME[static_cast<std::size_t>(outcome.pattern)] + " indexed from " +
            groups.diff.NAME[static_cast<std::size_t>(outcome.reference)],
        request.machineErrorSearch, request.reportIterations};
    outcome.refined = refinePhase(phase, groups.xrayPeak.wavelengths, outcome.inputFile, settings,
                                  groups.io, groups.data);
    return outcome;
}

} // namespace quarvex
