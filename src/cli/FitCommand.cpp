// quarvex-cli fit: fit the peaks of an x-window of a spectrum and print them with their errors.
#include "cli/CliCommand.h"
#include "cli/JsonOutput.h"
#include "cli/PeakCliSupport.h"
#include "cli/SpectrumLoading.h"
#include "common/QuarvexError.h"
#include "processing/FitQuality.h"
#include "processing/LinearBackground.h"
#include "processing/PeakStart.h"

#include <iostream>
#include <memory>
#include <optional>

namespace quarvex::cli {

namespace {

struct FitOptions {
    std::string file;
    std::string range;
    std::string columns;
    std::vector<float> peaks;
    int profile = 0; // 0: from the preferences
    bool json = false;
    bool linearBackground = false;
};

// A fit with the background line taken off before it (if any) and its quality.
struct FitRun {
    PeakFitResult fit;
    std::optional<StraightLine> line;
    FitQuality quality;
};

Json fitJson(const FitRun& run) {
    const PeakFitResult& fit = run.fit;
    Json peaks = Json::array();
    for (const FittedPeak& p : fit.peaks) {
        peaks.push_back(Json{{"centre", jsonNumber(p.centre)},
                             {"centre_error", jsonNumber(p.centreError)},
                             {"fwhm", jsonNumber(p.fwhm)},
                             {"fwhm_error", jsonNumber(p.fwhmError)},
                             {"height", jsonNumber(p.height)},
                             {"height_error", jsonNumber(p.heightError)},
                             {"area", jsonNumber(p.area)},
                             {"area_error", jsonNumber(p.areaError)},
                             {"mix", jsonNumber(p.mix)},
                             {"mix_error", jsonNumber(p.mixError)}});
    }
    Json json{{"peaks", peaks},
              {"background", jsonNumber(fit.background)},
              {"chisq", jsonNumber(fit.chisq)},
              {"reduced_chisq", run.quality.reducedChisq},
              {"r_squared", run.quality.rSquared},
              {"iterations", fit.iterations},
              {"converged", fit.converged}};
    if (run.line) {
        json["background_line"] =
            Json{{"slope", run.line->slope}, {"intercept", run.line->intercept}};
    }
    return json;
}

std::string withError(float value, float error) {
    return formatValue(value) + " ± " + formatValue(error);
}

void printFit(const FitRun& run, const XRange& range) {
    const PeakFitResult& fit = run.fit;
    std::cout << "Window " << formatValue(range.low) << " to " << formatValue(range.high) << ", "
              << fit.points << " points, "
              << (fit.profile == PeakProfile::gaussian ? "Gaussian" : "pseudo-Voigt")
              << " profile\n";
    for (std::size_t k = 0; k < fit.peaks.size(); ++k) {
        const FittedPeak& p = fit.peaks[k];
        std::cout << "Peak " << k + 1 << '\n'
                  << "  centre      " << withError(p.centre, p.centreError) << '\n'
                  << "  FWHM        " << withError(p.fwhm, p.fwhmError) << '\n'
                  << "  height      " << withError(p.height, p.heightError) << '\n'
                  << "  area        " << withError(p.area, p.areaError) << '\n'
                  << "  mix         " << withError(p.mix, p.mixError) << '\n';
    }
    if (run.line) {
        std::cout << "Background line, slope      "
                  << formatValue(static_cast<float>(run.line->slope)) << '\n'
                  << "Background line, intercept  "
                  << formatValue(static_cast<float>(run.line->intercept)) << '\n';
    }
    std::cout << "Background    " << withError(fit.background, fit.backgroundError) << '\n'
              << "Chi-square    " << formatValue(fit.chisq) << '\n'
              << "Reduced chi-square  " << formatValue(static_cast<float>(run.quality.reducedChisq))
              << '\n'
              << "R-squared     " << formatValue(static_cast<float>(run.quality.rSquared)) << '\n'
              << "Iterations    " << fit.iterations << '\n';
}

int runFit(const FitOptions& options, ProgramState& state) {
    const LoadedSpectrum spectrum = loadSpectrum(state, options.file, options.columns);
    const XRange range = parseRange(options.range);
    const Preferences& preferences = state.quarvex.preferences;
    PeakFitSettings settings;
    settings.profile = static_cast<PeakProfile>(options.profile != 0 ? options.profile
                                                                     : preferences.profileSetting);
    settings.search = searchSettings(preferences);
    FitRun run;
    if (options.linearBackground) {
        LineBackgroundFit levelled = fitPeaksOverLine(spectrum.x, spectrum.y, range.low, range.high,
                                                      options.peaks, settings);
        run.fit = std::move(levelled.fit);
        run.line = levelled.line;
    } else {
        run.fit = fitPeaks(spectrum.x, spectrum.y, range.low, range.high, options.peaks, settings);
    }
    const FitWindow window =
        FILL_DAT(spectrum.x, spectrum.y, GET_WINDOW_NDAT(spectrum.x, range.low, range.high));
    // The line's slope and intercept were fitted to the data too.
    run.quality =
        fitQuality(window.y, run.fit.fitted, run.fit.parameters.size() + (run.line ? 2 : 0));
    if (options.json) {
        std::cout << fitJson(run).dump(2) << '\n';
    } else if (run.fit.converged) {
        printFit(run, range);
    }
    if (!run.fit.converged) {
        printError(QuarvexError(std::string(kDidNotConvergeText), std::string(kPeakFitErrorTitle)));
        return 1;
    }
    return 0;
}

} // namespace

CliCommand addFitCommand(CLI::App& app) {
    auto options = std::make_shared<FitOptions>();
    CLI::App* fit = app.add_subcommand(
        "fit", "Fit the peaks of an x-window of a spectrum (Levenberg-Marquardt) and print each "
               "peak's centre, FWHM, height, area and mix with standard errors");
    fit->add_option("file", options->file, "Spectrum file (any format Quarvex reads)")->required();
    addColumnsOption(*fit, options->columns);
    fit->add_option("--range", options->range, "The window LO:HI, x units")->required();
    fit->add_option("--peak", options->peaks,
                    "Starting position of a peak (repeat for more); none: found automatically");
    fit->add_option("--profile", options->profile,
                    "1: Gaussian, 2: pseudo-Voigt (default: the preference)")
        ->check(CLI::IsMember({1, 2}));
    fit->add_flag("--linear-background", options->linearBackground,
                  "Take the straight line through the window's end regions (a tenth of its "
                  "points at each end) off before the fit, and report it");
    fit->add_flag("--json", options->json, "Print JSON instead of text");
    return {fit, [options](ProgramState& state) { return runFit(*options, state); }};
}

} // namespace quarvex::cli
