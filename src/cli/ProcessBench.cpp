// quarvex-cli bench process: time of the ALS baseline and of the cosmic-ray removal on synthetic
// spectra of a given length.
#include "cli/BenchSupport.h"
#include "cli/CliCommand.h"
#include "processing/AlsBaseline.h"
#include "processing/CosmicRays.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <random>

namespace quarvex::cli {

namespace {

struct ProcessBenchOptions {
    int repeats = 5;
};

// 100 to 4000 cm-1: a broad background, bands, noise and a spike every 5,000 points.
void syntheticSpectrum(int points, std::vector<float>& x, std::vector<float>& y) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0.0, 5.0);
    x.resize(static_cast<std::size_t>(points));
    y.resize(static_cast<std::size_t>(points));
    const double step = 3900.0 / (points - 1);
    for (int i = 0; i < points; ++i) {
        const double v = 100.0 + step * i;
        double value = 3000.0 * std::exp(-0.5 * std::pow((v - 1500.0) / 900.0, 2)) +
                       1000.0 / (1.0 + std::pow((v - 1086.0) / 3.0, 2)) +
                       400.0 / (1.0 + std::pow((v - 465.0) / 5.0, 2)) + noise(random);
        if (i % 5000 == 2500) {
            value += 10000.0;
        }
        x[static_cast<std::size_t>(i)] = static_cast<float>(v);
        y[static_cast<std::size_t>(i)] = static_cast<float>(value);
    }
}

template <class Work> void report(const char* what, int points, int repeats, Work&& work) {
    std::vector<double> seconds;
    for (int r = 0; r < repeats; ++r) {
        seconds.push_back(secondsTaken(work));
    }
    std::sort(seconds.begin(), seconds.end());
    std::cout << what << ", " << points << " points: fastest " << seconds.front() * 1000.0
              << " ms, median " << seconds[seconds.size() / 2] * 1000.0 << " ms\n";
}

int runProcessBench(const ProcessBenchOptions& options) {
    std::vector<float> x;
    std::vector<float> y;
    for (const int points : {5'000, 100'000}) {
        syntheticSpectrum(points, x, y);
        int passes = 0;
        report("ALS baseline (defaults)", points, options.repeats,
               [&] { passes = alsBaseline(x, y, {}).iterations; });
        std::cout << "  passes: " << passes << '\n';
    }
    syntheticSpectrum(100'000, x, y);
    std::size_t spikes = 0;
    report("cosmic-ray removal (defaults)", 100'000, options.repeats,
           [&] { spikes = RUN_AUTO_CRE(x, y).spikes.size(); });
    std::cout << "  spike points replaced: " << spikes << " (20 planted)\n"
              << "peak memory " << peakMemoryMegabytes() << " MB\n";
    return 0;
}

} // namespace

CliCommand addProcessBenchCommand(CLI::App& app) {
    auto options = std::make_shared<ProcessBenchOptions>();
    CLI::App* bench = app.get_subcommand("bench");
    CLI::App* process = bench->add_subcommand(
        "process", "Time the ALS baseline on 5,000 and 100,000 points and the cosmic-ray "
                   "removal on 100,000 points");
    process->add_option("--repeat", options->repeats, "Number of timed runs")
        ->check(CLI::Range(1, 1000));
    return {process, [options](ProgramState&) { return runProcessBench(*options); }};
}

} // namespace quarvex::cli
