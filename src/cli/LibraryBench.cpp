// quarvex-cli bench library and bench search: compilation speed of a synthetic library, and
// time and peak memory of two-pass searches in a process of their own.
#include "cli/BenchSupport.h"
#include "cli/CliCommand.h"
#include "cli/SpectrumLoading.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/GridCache.h"
#include "library/MixtureSearch.h"
#include "library/RobustSearch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <unistd.h>

namespace quarvex::cli {

namespace {

struct LibraryBenchOptions {
    int entries = 1000;
    int repeats = 5;
    bool keep = false;
};

struct SearchBenchOptions {
    std::string unknown;
    int repeats = 5;
    std::string mode = "dot";
    bool text = false;
    bool cold = false;
};

// Reference spectra as users have them: 100-1500 cm-1 every 0.5 cm-1, a dozen bands.
constexpr double kFirstShift = 100.0;
constexpr int kPoints = 2801;
constexpr double kSpacing = 0.5;
constexpr int kBandsPerSpectrum = 12;

struct Band {
    double centre;
    double fwhm;
    double height;
};

std::vector<Band> randomBands(std::mt19937& random) {
    std::uniform_real_distribution<double> centre(120.0, 1480.0);
    std::uniform_real_distribution<double> fwhm(3.0, 25.0);
    std::uniform_real_distribution<double> height(0.05, 1.0);
    std::vector<Band> bands(kBandsPerSpectrum);
    for (Band& band : bands) {
        band = {centre(random), fwhm(random), height(random)};
    }
    return bands;
}

// Pseudo-Voigt bands (80 % Lorentzian), scaled so that the highest point is 1000 counts.
std::vector<double> spectrumOf(const std::vector<Band>& bands) {
    std::vector<double> y(kPoints, 0.0);
    for (int i = 0; i < kPoints; ++i) {
        const double x = kFirstShift + kSpacing * i;
        for (const Band& band : bands) {
            const double u = (x - band.centre) / (band.fwhm / 2.0);
            const double lorentz = 1.0 / (1.0 + u * u);
            const double gauss = std::exp(-std::log(2.0) * u * u);
            y[static_cast<std::size_t>(i)] += band.height * (0.8 * lorentz + 0.2 * gauss);
        }
    }
    const double highest = *std::max_element(y.begin(), y.end());
    for (double& value : y) {
        value *= 1000.0 / highest;
    }
    return y;
}

void appendFixed(std::string& out, double value, int decimals) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    out.append(text.data(), end);
}

void writeSpectrumFile(const std::filesystem::path& path, const std::string& id,
                       const std::vector<double>& y) {
    std::string text = "##NAMES=Synthetic" + id + "\n##GRELTID=" + id +
                       "\n##LOCALITY=Synthetic benchmark spectrum\n##CHEMISTRY=None\n"
                       "<COM>\ndtype: RAMAN\nwave: 532\n</COM>\n";
    for (int i = 0; i < kPoints; ++i) {
        appendFixed(text, kFirstShift + kSpacing * i, 4);
        text += ", ";
        appendFixed(text, y[static_cast<std::size_t>(i)], 3);
        text += '\n';
    }
    std::ofstream(path, std::ios::binary) << text;
}

double megabytes(const std::filesystem::path& path) {
    std::error_code error;
    return static_cast<double>(std::filesystem::file_size(path, error)) / (1024.0 * 1024.0);
}

double cpuSecondsSince(std::clock_t start) {
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// Drops the library files' pages from the page cache, so that the next search reads them from
// the disk: a cold search, without emptying the whole machine's cache.
void evictLibraryFiles(const std::filesystem::path& folder) {
    for (const std::filesystem::path& path :
         {folder / kSlowLibraryFile, folder / kFastLibraryFile, folder / kNameListFile,
          folder / kNameInfoFile, gridCachePath(folder)}) {
        const int file = ::open(path.c_str(), O_RDONLY);
        if (file >= 0) {
            ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
            ::close(file);
        }
    }
}

// The whole `quarvex-cli search` process, as a user runs it: the fastest of `repeats` runs.
void timeSearchProcess(const std::filesystem::path& home, const std::filesystem::path& unknown,
                       int repeats) {
    ProcessFigures fastest;
    fastest.seconds = 1e30;
    for (int r = 0; r < repeats; ++r) {
        const ProcessFigures run =
            runSelf({"--home", home.string(), "search", unknown.string()}, "/dev/null");
        if (run.seconds < fastest.seconds) {
            fastest = run;
        }
    }
    std::cout << "search process (quarvex-cli search, whole process, fastest of " << repeats
              << ")\n"
              << "  wall clock  " << fastest.seconds << " s\n"
              << "  CPU time    " << fastest.cpuSeconds << " s\n"
              << "  peak memory " << fastest.peakMegabytes << " MB\n";
}

int runLibraryBench(const LibraryBenchOptions& options) {
    const std::filesystem::path home = std::filesystem::temp_directory_path() /
                                       ("quarvex-bench-library-" + std::to_string(::getpid()));
    const std::filesystem::path folder = ramanLibraryFolder(home);
    std::filesystem::create_directories(folder);
    std::mt19937 random(20240521);
    const int searchedEntry = options.entries / 2;
    std::vector<double> unknown;
    const double generateSeconds = secondsTaken([&] {
        for (int k = 0; k < options.entries; ++k) {
            const std::string id = "B" + std::to_string(1000000 + k).substr(1);
            const std::vector<double> y = spectrumOf(randomBands(random));
            writeSpectrumFile(folder / ("Synthetic_" + id + "_532.txt"), id, y);
            if (k == searchedEntry) {
                unknown = y;
            }
        }
    });
    // The unknown: one of the entries measured again, weaker and with noise.
    std::normal_distribution<double> noise(0.0, 5.0);
    for (double& value : unknown) {
        value = 0.6 * value + 50.0 + noise(random);
    }
    const std::filesystem::path unknownFile = home / kTempFolder / "bench_unknown.txt";
    std::filesystem::create_directories(unknownFile.parent_path());
    writeSpectrumFile(unknownFile, "UNKNOWN", unknown);

    LibraryCompilation compilation;
    const std::clock_t compileStart = std::clock();
    const double compileSeconds = secondsTaken([&] { compilation = CREATE_SEARCH_LIB(home); });
    const double compileCpu = cpuSecondsSince(compileStart);
    std::cout << "library: " << compilation.entries << " entries of " << kPoints
              << " points (100-1500 cm-1), " << kBandsPerSpectrum << " bands each\n"
              << "  generate    " << generateSeconds << " s\n"
              << "  compile     " << compileSeconds << " s\n"
              << "  spectra/s   " << compilation.entries / compileSeconds << " (CPU time "
              << compileCpu << " s: " << compilation.entries / compileCpu << " per CPU second)\n"
              << "  files       Slow " << megabytes(folder / kSlowLibraryFile) << " MB, Fast "
              << megabytes(folder / kFastLibraryFile) << " MB\n"
              << "  peak memory " << peakMemoryMegabytes() << " MB (generating and compiling)\n";

    std::cout << "  grid cache  " << megabytes(gridCachePath(folder)) << " MB\n";
    const std::vector<std::string> search{"bench",     "search",
                                          "--home",    home.string(),
                                          "--unknown", unknownFile.string(),
                                          "--repeat",  std::to_string(options.repeats)};
    int status = 0;
    for (const std::vector<std::string>& flags :
         std::vector<std::vector<std::string>>{{}, {"--text"}, {"--cold"}, {"--text", "--cold"}}) {
        std::vector<std::string> arguments = search;
        arguments.insert(arguments.end(), flags.begin(), flags.end());
        status = std::max(status, runSelf(arguments).status);
    }
    timeSearchProcess(home, unknownFile, options.repeats);
    status = std::max(status, runSelf({"bench", "baseline", "--home", home.string()}).status);
    if (options.keep) {
        std::cout << "kept: " << home.string() << '\n';
    } else {
        std::filesystem::remove_all(home);
    }
    return status;
}

int runSearchBench(const SearchBenchOptions& options, ProgramState& state) {
    const int index = loadCommandSpectrum(state, options.unknown, "");
    const std::span<const float> x = state.specdata.xValues(index);
    const std::span<const float> y = state.specdata.yValues(index);
    const std::filesystem::path folder = ramanLibraryFolder(state.quarvex.programFolder);
    std::vector<double> seconds;
    LibrarySearchSource used;
    double cpuSeconds = 0.0;
    for (int r = 0; r < options.repeats; ++r) {
        if (options.cold) {
            evictLibraryFiles(folder);
        }
        const std::clock_t cpuStart = std::clock();
        seconds.push_back(secondsTaken([&] {
            if (options.mode == "robust") {
                READ_LIBRARY_ROBUST(folder, x, y, state.library);
            } else if (options.mode == "mixture") {
                std::optional<LibraryCompilation> compilation;
                searchMixture(state.quarvex.programFolder, x, y, kDefaultMixtureComponents,
                              state.library, compilation);
            } else {
                used = READ_LIBRARY(
                    folder, x, y, state.library, {}, LibraryFileReader::kDefaultBufferSize,
                    options.text ? GridSource::TextOnly : GridSource::CacheWhenValid);
            }
        }));
        cpuSeconds += cpuSecondsSince(cpuStart);
    }
    const double cpuPerSearch = cpuSeconds / options.repeats;
    const double first = seconds.front();
    std::sort(seconds.begin(), seconds.end());
    const LIBRARY_GLOBALS& library = state.library;
    const auto best = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS.front());
    std::cout << "search: " << library.count() << " entries, " << options.repeats << ' '
              << options.mode << (options.cold ? " cold" : "")
              << " searches in a fresh process, grids from "
              << (used.fromCache ? "the grid cache" : "the text files") << '\n'
              << "  first       " << first << " s\n"
              << "  fastest     " << seconds.front() << " s\n"
              << "  median      " << seconds[seconds.size() / 2] << " s\n"
              << "  CPU/search  " << cpuPerSearch << " s (the figure to trust on a busy machine)\n"
              << "  best match  " << library.MI_FILENAMES[best] << ", score "
              << library.PERC_MATCH[best] << '\n'
              << "  peak memory " << peakMemoryMegabytes() << " MB\n";
    return 0;
}

} // namespace

std::vector<CliCommand> addLibraryBenchCommands(CLI::App& app) {
    CLI::App* bench = app.get_subcommand("bench");

    auto libraryOptions = std::make_shared<LibraryBenchOptions>();
    CLI::App* library = bench->add_subcommand(
        "library", "Generate a synthetic library in a temporary home folder, time its "
                   "compilation, then time searches of it in a fresh process (bench search)");
    library->add_option("--entries", libraryOptions->entries, "Reference spectra to generate")
        ->check(CLI::Range(1, 1'000'000));
    library->add_option("--repeat", libraryOptions->repeats, "Number of timed searches")
        ->check(CLI::Range(1, 1000));
    library->add_flag("--keep", libraryOptions->keep, "Keep the temporary home folder");

    auto searchOptions = std::make_shared<SearchBenchOptions>();
    CLI::App* search = bench->add_subcommand(
        "search", "Time two-pass searches of a spectrum file against the compiled library of "
                  "the home folder, and print the peak memory of this process");
    search->add_option("--unknown", searchOptions->unknown, "Spectrum file to search with")
        ->required();
    search->add_option("--repeat", searchOptions->repeats, "Number of timed searches")
        ->check(CLI::Range(1, 1000));
    search
        ->add_option("--mode", searchOptions->mode,
                     "dot (two-pass, default), robust (the first search derives the robust file "
                     "when missing) or mixture (up to 3 components)")
        ->check(CLI::IsMember({"dot", "robust", "mixture"}));
    search->add_flag("--text", searchOptions->text,
                     "dot mode: read the text files, not the grid cache");
    search->add_flag("--cold", searchOptions->cold,
                     "Drop the library files from the page cache before each search");

    return {{library, [libraryOptions](ProgramState&) { return runLibraryBench(*libraryOptions); }},
            {search, [searchOptions](ProgramState& state) {
                 return runSearchBench(*searchOptions, state);
             }}};
}

} // namespace quarvex::cli
