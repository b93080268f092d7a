// quarvex-cli bench csv: loading a large delimited text file (written for the run, then removed)
// through the readers' entry point, with its time and the peak memory.
#include "cli/BenchSupport.h"
#include "cli/CliCommand.h"
#include "common/WorkingFolders.h"
#include "readers/LoadSpectra.h"

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace quarvex::cli {

namespace {

struct CsvBenchOptions {
    int megabytes = 200;
};

// A header row, then "x,y" rows of about 24 bytes until the size is reached. Returns the rows.
std::int64_t writeLargeCsv(const std::filesystem::path& path, std::int64_t bytes) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        throw std::runtime_error("cannot write " + path.string());
    }
    std::int64_t written = std::fprintf(file, "Raman shift (cm-1),Intensity\n");
    std::int64_t rows = 0;
    while (written < bytes) {
        const double x = 100.0 + 0.0001 * static_cast<double>(rows);
        written += std::fprintf(file, "%.4f,%.3f\n", x, 200.0 + 50.0 * std::sin(x));
        ++rows;
    }
    std::fclose(file);
    return rows;
}

int runCsvBench(const CsvBenchOptions& options, ProgramState& state) {
    const std::filesystem::path path =
        state.quarvex.programFolder / kTempFolder / "bench_read_large.csv";
    const std::int64_t rows = writeLargeCsv(path, std::int64_t{options.megabytes} << 20);
    const double before = peakMemoryMegabytes();
    LoadedFile loaded;
    const double seconds =
        secondsTaken([&] { loaded = loadSpectrumFile(state.specdata, state.mineralInfo, path); });
    std::filesystem::remove(path);
    std::cout << "csv: " << options.megabytes << " MB, " << rows << " rows, format "
              << loaded.format << ", " << state.specdata.NUMDATA.at(0) << " points loaded\n"
              << "  seconds  " << seconds << '\n'
              << "  rows/s   " << static_cast<double>(rows) / seconds << '\n'
              << "  peak memory " << peakMemoryMegabytes() << " MB (" << before
              << " MB before the load)\n";
    return 0;
}

} // namespace

CliCommand addCsvBenchCommand(CLI::App& app) {
    auto options = std::make_shared<CsvBenchOptions>();
    CLI::App* csv = app.get_subcommand("bench")->add_subcommand(
        "csv", "Time the loading of a large CSV file written for the run");
    csv->add_option("--megabytes", options->megabytes, "Size of the CSV file")
        ->check(CLI::Range(1, 4000));
    return {csv, [options](ProgramState& state) { return runCsvBench(*options, state); }};
}

} // namespace quarvex::cli
