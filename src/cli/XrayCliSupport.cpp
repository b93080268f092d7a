// Shared parts of the X-ray commands: options, the request from the preferences, the matches.
#include "cli/XrayCliSupport.h"

#include "cli/PeakCliSupport.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayMessages.h"

#include <cmath>
#include <cstdio>
#include <iostream>

namespace quarvex::cli {

void addXrayRunOptions(CLI::App& command, XrayRunOptions& options) {
    command.add_option("pattern", options.pattern, "Measured powder pattern (x in 2-theta)")
        ->required();
    command.add_option("ref", options.reference, "Reference diffraction-data file (.out)")
        ->required();
    command.add_option("--system", options.system,
                       "Crystal system (TRICLINIC, MONOCLINIC1/2/3, ORTHORHOMBIC, TETRAGONAL, "
                       "HEXAGONAL, RHOMBOHEDRAL, CUBIC); default: from the reference file");
    command.add_option("--tol", options.tolerance,
                       "Peak-to-reflection tolerance, degrees 2-theta (default: preferences)");
    command.add_option("--wave", options.wavelength,
                       "Wavelength in angstroms (default: the pattern's \"wave:\", else the "
                       "reference file's, else the preferences)");
}

XrayStateGroups xrayGroups(ProgramState& state) {
    return {state.specdata, state.mineralInfo, state.diff,
            state.xrayPeak, state.inoutparms,  state.datastff};
}

XrayRefineRequest xrayRequest(const XrayRunOptions& options, const ProgramState& state) {
    const Preferences& preferences = state.quarvex.preferences;
    if ((options.tolerance && !(*options.tolerance > 0.0F)) ||
        (options.wavelength && !(*options.wavelength > 0.0))) {
        throw QuarvexError("--tol and --wave must be positive numbers.",
                           std::string(kXrayDiffractionTitle));
    }
    XrayRefineRequest request;
    request.pattern = options.pattern;
    request.reference = options.reference;
    request.importFolder = GET_IMPDIFF_PATH(state.quarvex.programFolder);
    request.wavelength = options.wavelength;
    request.system = options.system;
    request.fit.profile =
        preferences.profileSetting == 1 ? PeakProfile::gaussian : PeakProfile::pseudoVoigt;
    request.fit.search = searchSettings(preferences);
    request.match.tolerance = options.tolerance.value_or(preferences.matchTolerance);
    request.preferenceWavelength = preferences.xrayWavelength;
    request.machineErrorSearch = preferences.machineErrorSearch;
    request.reportIterations = preferences.reportIterations;
    return request;
}

Json matchesJson(const XrayPhase& phase) {
    Json rows = Json::array();
    for (const PeakAssignment& a : phase.assignments) {
        rows.push_back(Json{{"two_theta", jsonNumber(phase.peaks.twoTheta(a.peak))},
                            {"d", jsonNumber(phase.peaks.PKDSP[static_cast<std::size_t>(a.peak)])},
                            {"h", a.hkl[0]},
                            {"k", a.hkl[1]},
                            {"l", a.hkl[2]},
                            {"wave", a.wave},
                            {"reference_two_theta", jsonNumber(a.referenceTwoTheta)}});
    }
    return rows;
}

void printMatches(const XrayPhase& phase) {
    std::printf("Matched peaks of %s, %zu of %d\n", phase.name.c_str(), phase.assignments.size(),
                phase.peaks.count());
    std::printf("   2-theta         d    h   k   l  wave  ref 2-theta\n");
    for (const PeakAssignment& a : phase.assignments) {
        std::printf("%10.4f %9.5f %4d%4d%4d %5d %12.4f\n",
                    static_cast<double>(phase.peaks.twoTheta(a.peak)),
                    static_cast<double>(phase.peaks.PKDSP[static_cast<std::size_t>(a.peak)]),
                    a.hkl[0], a.hkl[1], a.hkl[2], a.wave, static_cast<double>(a.referenceTwoTheta));
    }
}

void printRunNotes(const XrayRefineOutcome& outcome) {
    std::cerr << "Wavelengths (" << outcome.wavelengths.source << "):";
    for (const double wavelength : outcome.wavelengths.wavelengths) {
        std::cerr << ' ' << shortestText(wavelength);
    }
    std::cerr << '\n';
    for (const std::string& note : outcome.notes) {
        std::cerr << "Note: " << note << '\n';
    }
}

} // namespace quarvex::cli
