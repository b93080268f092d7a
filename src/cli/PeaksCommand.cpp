// quarvex-cli peaks: the peaks the automatic peak search finds in a spectrum or an x-range.
#include "cli/CliCommand.h"
#include "cli/JsonOutput.h"
#include "cli/PeakCliSupport.h"
#include "cli/SpectrumLoading.h"

#include <iostream>
#include <limits>
#include <memory>

namespace quarvex::cli {

namespace {

struct PeaksOptions {
    std::string file;
    std::string range;
    std::string columns;
    bool json = false;
};

int runPeaks(const PeaksOptions& options, ProgramState& state) {
    const LoadedSpectrum spectrum = loadSpectrum(state, options.file, options.columns);
    XRange range{-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity()};
    if (!options.range.empty()) {
        range = parseRange(options.range);
    }
    const PeakSearchResult found = findPeaks(
        spectrum.x, spectrum.y, searchSettings(state.quarvex.preferences), range.low, range.high);
    if (options.json) {
        Json peaks = Json::array();
        for (const FoundPeak& peak : found.peaks) {
            peaks.push_back(Json{{"x", jsonNumber(peak.x)}, {"height", jsonNumber(peak.height)}});
        }
        std::cout << Json{{"peaks", peaks}}.dump(2) << '\n';
        return 0;
    }
    std::cout << found.peaks.size() << " peaks above " << formatValue(found.threshold)
              << " (noise level " << formatValue(found.noise) << ")\n";
    for (const FoundPeak& peak : found.peaks) {
        std::cout << "  x " << formatValue(peak.x) << "  height " << formatValue(peak.height)
                  << '\n';
    }
    return 0;
}

} // namespace

CliCommand addPeaksCommand(CLI::App& app) {
    auto options = std::make_shared<PeaksOptions>();
    CLI::App* peaks = app.add_subcommand(
        "peaks", "Find the peaks of a spectrum above the noise (automatic peak search)");
    peaks->add_option("file", options->file, "Spectrum file (any format Quarvex reads)")
        ->required();
    addColumnsOption(*peaks, options->columns);
    peaks->add_option("--range", options->range, "Only peaks with LO <= x <= HI, as LO:HI");
    peaks->add_flag("--json", options->json, "Print JSON instead of text");
    return {peaks, [options](ProgramState& state) { return runPeaks(*options, state); }};
}

} // namespace quarvex::cli
