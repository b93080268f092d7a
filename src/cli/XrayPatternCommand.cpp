// quarvex-cli xray-pattern: a theoretical powder pattern of a reference file written as a
// spectrum file, to look at or to try the X-ray workflow on.
#include "cli/CliCommand.h"
#include "common/TextUtils.h"
#include "xray/TheoreticalPattern.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayWorkflow.h"

#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

struct XrayPatternOptions {
    std::string reference;
    std::string out;
    TheoreticalPatternSettings settings;
    std::optional<double> wavelength;
    std::vector<std::string> comments;
};

// The command line that makes this pattern again, with every setting spelled out.
std::string commandLine(const std::string& referenceName, const TheoreticalPatternSettings& s,
                        const TheoreticalPattern& pattern) {
    std::string line = "quarvex-cli xray-pattern " + referenceName + " --fwhm " +
                       shortestText(s.fwhm) + " --step " + shortestText(s.step) + " --from " +
                       shortestText(pattern.x.front()) + " --to " + shortestText(pattern.x.back()) +
                       " --wave " + shortestText(pattern.wavelength);
    if (s.zeroShift != 0.0) {
        line += " --zero-shift " + shortestText(s.zeroShift);
    }
    if (s.noise) {
        line += " --noise " + shortestText(*s.noise) + " --seed " + std::to_string(s.seed);
    }
    return line;
}

int runXrayPattern(XrayPatternOptions options, ProgramState& state) {
    const int reference = OPEN_AND_READ_DIFF_FILE(state.diff, options.reference,
                                                  GET_IMPDIFF_PATH(state.quarvex.programFolder));
    const auto r = static_cast<std::size_t>(reference);
    options.settings.wavelength = chooseWavelengths(options.wavelength, "", state.diff, reference,
                                                    state.quarvex.preferences.xrayWavelength)
                                      .wavelengths.front();
    const TheoreticalPattern pattern = theoreticalPattern(state.diff, reference, options.settings);
    std::vector<std::string> notes =
        theoreticalPatternNotes(state.diff, reference, options.settings, pattern);
    notes.push_back("command: " + commandLine(state.diff.NAME[r], options.settings, pattern));
    notes.insert(notes.end(), options.comments.begin(), options.comments.end());
    const std::string title =
        state.diff.TITLE[r].empty() ? state.diff.NAME[r] : state.diff.TITLE[r];
    writeTheoreticalPattern(options.out, pattern, title, notes);
    std::cout << "Wrote " << options.out << ": " << pattern.x.size() << " points from "
              << shortestText(pattern.x.front()) << " to " << shortestText(pattern.x.back())
              << " deg 2-theta, " << pattern.reflections << " reflections of " << state.diff.NAME[r]
              << " at " << shortestText(pattern.wavelength) << " A\n";
    return 0;
}

} // namespace

CliCommand addXrayPatternCommand(CLI::App& app) {
    auto options = std::make_shared<XrayPatternOptions>();
    TheoreticalPatternSettings& s = options->settings;
    CLI::App* command = app.add_subcommand(
        "xray-pattern", "Write the theoretical powder pattern of a reference file as a spectrum "
                        "file (dtype XRD): pseudo-Voigt peaks at the Bragg angles of its "
                        "reflections, optionally with a zero shift and counting noise");
    command->add_option("ref", options->reference, "Reference diffraction-data file (.out)")
        ->required();
    command->add_option("--out", options->out, "Spectrum file to write")->required();
    command->add_option("--fwhm", s.fwhm, "FWHM of every peak, degrees 2-theta")
        ->capture_default_str();
    command->add_option("--step", s.step, "Step between points, degrees 2-theta")
        ->capture_default_str();
    command->add_option("--from", s.from,
                        "First 2-theta, degrees (default: 2 degrees before the first "
                        "reflection, rounded down)");
    command->add_option("--to", s.to,
                        "Last 2-theta, degrees (default: 2 degrees after the last reflection, "
                        "rounded up)");
    command->add_option("--wave", options->wavelength,
                        "Wavelength in angstroms (default: the reference file's, else the "
                        "preferences)");
    command
        ->add_option("--zero-shift", s.zeroShift,
                     "Added to every peak position, degrees (an instrument's zero error)")
        ->capture_default_str();
    command->add_option("--noise", s.noise,
                        "Counting noise: the strongest line gets this many counts over a "
                        "background of 2% of them");
    command->add_option("--seed", s.seed, "Seed of the counting noise")->capture_default_str();
    command->add_option("--comment", options->comments,
                        "A further line for the file's comment block (repeatable)");
    return {command, [options](ProgramState& state) { return runXrayPattern(*options, state); }};
}

} // namespace quarvex::cli
