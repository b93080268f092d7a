// quarvex-cli bench consistency and bench baseline: the consistency exam of the home folder's
// library timed, and what reading the grid cache and one matrix-vector product over its coarse
// grids take on this machine (the floor a search could reach).
#include "cli/BenchSupport.h"
#include "cli/CliCommand.h"
#include "common/WorkingFolders.h"
#include "library/ConsistencyExam.h"
#include "library/GridCache.h"

#include <Eigen/Core>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <memory>
#include <random>

namespace quarvex::cli {

namespace {

int runConsistencyBench(unsigned workers, ProgramState& state) {
    ConsistencyExamResult exam;
    const std::clock_t cpuStart = std::clock();
    const double seconds =
        secondsTaken([&] { exam = runConsistencyExam(state.quarvex.programFolder, {}, workers); });
    const double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    std::cout << "consistency exam: " << exam.entries.size() << " entries\n"
              << "  wall clock  " << seconds << " s\n"
              << "  CPU time    " << cpu << " s (all threads)\n"
              << "  peak memory " << peakMemoryMegabytes() << " MB\n"
              << "  " << exam.summary() << '\n';
    return 0;
}

// The coarse grids of the cache as one matrix, an entry a row; empty unless every entry is a
// regular run of the same first position and length (as in the synthetic libraries).
Eigen::MatrixXf coarseMatrix(const std::filesystem::path& folder) {
    std::string whyNot;
    std::optional<GridCache> cache = GridCache::open(folder, whyNot);
    if (!cache || cache->count(CacheGrid::Coarse) == 0) {
        std::cerr << "no grid cache: " << whyNot << '\n';
        return {};
    }
    const std::vector<CachedEntry>& table = cache->table(CacheGrid::Coarse);
    const CachedEntry& model = table.front();
    const bool alike = std::all_of(table.begin(), table.end(), [&](const CachedEntry& e) {
        return e.regular == 1 && e.count == model.count && e.first == model.first;
    });
    if (!alike) {
        std::cerr << "the coarse entries are not regular runs of one length\n";
        return {};
    }
    Eigen::MatrixXf grids(static_cast<Eigen::Index>(table.size()), model.count);
    std::vector<float> values;
    for (std::size_t k = 0; k < table.size(); ++k) {
        const std::optional<CachedGridEntry> entry = cache->read(CacheGrid::Coarse, k, values);
        if (!entry) {
            return {};
        }
        grids.row(static_cast<Eigen::Index>(k)) =
            Eigen::Map<const Eigen::RowVectorXf>(entry->values.data(), model.count);
    }
    return grids;
}

int runBaselineBench(int repeats, ProgramState& state) {
    const std::filesystem::path folder = ramanLibraryFolder(state.quarvex.programFolder);
    const std::filesystem::path cache = gridCachePath(folder);
    double fastestCat = 1e30;
    double catCpu = 0.0;
    for (int r = 0; r < repeats; ++r) {
        const ProcessFigures cat = runProgram("/bin/cat", {cache.string()}, "/dev/null");
        fastestCat = std::min(fastestCat, cat.seconds);
        catCpu += cat.cpuSeconds / repeats;
    }
    const Eigen::MatrixXf grids = coarseMatrix(folder);
    if (grids.size() == 0) {
        return 1;
    }
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    Eigen::VectorXf unknown(grids.cols());
    for (float& v : unknown) {
        v = value(random);
    }
    double fastestProduct = 1e30;
    float checksum = 0.0F;
    for (int r = 0; r < repeats; ++r) {
        Eigen::VectorXf scores;
        fastestProduct = std::min(fastestProduct, secondsTaken([&] { scores = grids * unknown; }));
        checksum += scores(0);
    }
    std::cout << "baselines over the grid cache " << cache.string() << '\n'
              << "  cat of the cache file       " << fastestCat * 1000.0 << " ms (fastest of "
              << repeats << ", process included; CPU " << catCpu * 1000.0 << " ms)\n"
              << "  Eigen coarse matrix-vector  " << fastestProduct * 1000.0 << " ms ("
              << grids.rows() << " x " << grids.cols() << " float, in memory; fastest of "
              << repeats << ", checksum " << checksum << ")\n";
    return 0;
}

} // namespace

std::vector<CliCommand> addConsistencyBenchCommands(CLI::App& app) {
    CLI::App* bench = app.get_subcommand("bench");
    auto workers = std::make_shared<unsigned>(0);
    CLI::App* consistency = bench->add_subcommand(
        "consistency", "Time the consistency exam of the compiled library of the home folder");
    consistency->add_option("--workers", *workers, "Threads (0: one per core)");

    auto repeats = std::make_shared<int>(5);
    CLI::App* baseline = bench->add_subcommand(
        "baseline", "Time a cat of the home folder's grid cache and one matrix-vector product "
                    "over its coarse grids");
    baseline->add_option("--repeat", *repeats, "Runs of each (the fastest is printed)")
        ->check(CLI::Range(1, 100));
    return {
        {consistency,
         [workers](ProgramState& state) { return runConsistencyBench(*workers, state); }},
        {baseline, [repeats](ProgramState& state) { return runBaselineBench(*repeats, state); }}};
}

} // namespace quarvex::cli
