// quarvex-cli bench: benchmarks that print figures (speed and memory targets are checked here,
// never by timed unit tests).
#include "cli/BenchSupport.h"
#include "cli/CliCommand.h"
#include "common/WorkingFolders.h"
#include "readers/LoadSpectra.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

struct ReadBenchOptions {
    int points = 1'000'000;
    int repeats = 5;
};

// A Raman-like spectrum: 100 cm-1 onwards at a fine step, a few bands on a sloping background.
void writeSyntheticSpectrum(const std::filesystem::path& path, int points) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        throw std::runtime_error("cannot write " + path.string());
    }
    std::fputs("##NAMES=Synthetic\n<COM>\ndtype: RAMAN\nwave: 532\n</COM>\n", file);
    const double step = 3900.0 / points;
    for (int i = 0; i < points; ++i) {
        const double x = 100.0 + step * i;
        const double band = 1000.0 / (1.0 + std::pow((x - 1086.0) / 4.0, 2));
        std::fprintf(file, "%.4f, %.3f\n", x, 200.0 + 0.05 * x + band);
    }
    std::fclose(file);
}

int runReadBench(const ReadBenchOptions& options, ProgramState& state) {
    const std::filesystem::path path =
        state.quarvex.programFolder / kTempFolder / "bench_read_spectrum.txt";
    writeSyntheticSpectrum(path, options.points);
    std::vector<double> seconds;
    for (int r = 0; r < options.repeats; ++r) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        seconds.push_back(secondsTaken([&] { loadSpectrumFile(specdata, info, path); }));
    }
    std::filesystem::remove(path);
    std::sort(seconds.begin(), seconds.end());
    std::cout << "read: " << options.points << " points, " << options.repeats << " runs\n"
              << "  fastest  " << seconds.front() << " s\n"
              << "  median   " << seconds[seconds.size() / 2] << " s\n"
              << "  points/s " << options.points / seconds[seconds.size() / 2] << '\n'
              << "  peak memory " << peakMemoryMegabytes() << " MB\n";
    return 0;
}

} // namespace

std::vector<CliCommand> addBenchCommands(CLI::App& app) {
    CLI::App* bench = app.add_subcommand("bench", "Benchmarks that print speed and memory figures");
    bench->require_subcommand(1);

    auto readOptions = std::make_shared<ReadBenchOptions>();
    CLI::App* read = bench->add_subcommand("read", "Time the loading of a synthetic spectrum file");
    read->add_option("--points", readOptions->points, "Points of the spectrum file")
        ->check(CLI::Range(1, 100'000'000));
    read->add_option("--repeat", readOptions->repeats, "Number of timed loads")
        ->check(CLI::Range(1, 1000));

    return {
        {read, [readOptions](ProgramState& state) { return runReadBench(*readOptions, state); }}};
}

} // namespace quarvex::cli
