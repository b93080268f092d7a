// quarvex-cli resample: the grid and values of the resampling (and normalisation) of a spectrum
// file, so that both can be checked from outside.
#include "cli/CliCommand.h"
#include "cli/SpectrumLoading.h"
#include "processing/InterpAndNorm.h"
#include "specdata/SpecDataManager.h"

#include <cstdio>
#include <memory>

namespace quarvex::cli {

namespace {

struct ResampleOptions {
    std::string file;
    float step = 1.0F;
    bool noNormalize = false;
    std::string columns;
};

int runResample(const ResampleOptions& options, ProgramState& state) {
    const int index = loadCommandSpectrum(state, options.file, options.columns);
    const InterpData grid =
        resampleSpectrum(state.specdata.xValues(index), state.specdata.yValues(index), options.step,
                         !options.noNormalize);
    // Nine significant digits tell every single-precision value apart.
    for (int i = 0; i < grid.capacity(); ++i) {
        std::printf("%.9g %.9g\n", static_cast<double>(grid.x[i]), static_cast<double>(grid.y[i]));
    }
    return 0;
}

} // namespace

CliCommand addResampleCommand(CLI::App& app) {
    auto options = std::make_shared<ResampleOptions>();
    CLI::App* resample = app.add_subcommand(
        "resample", "Print the spectrum resampled onto whole-number grid positions (one \"x y\" "
                    "line per grid point), normalised to Euclidean norm 10");
    resample->add_option("file", options->file, "Spectrum file")->required();
    addColumnsOption(*resample, options->columns);
    resample->add_option("--step", options->step, "Grid step in x units (1, 2 and 5 are aligned)")
        ->required()
        ->check(CLI::PositiveNumber);
    resample->add_flag("--no-normalize", options->noNormalize, "Print the values before scaling");
    return {resample, [options](ProgramState& state) { return runResample(*options, state); }};
}

} // namespace quarvex::cli
