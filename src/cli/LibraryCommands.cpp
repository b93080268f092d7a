// quarvex-cli compile, search and consistency: compile the Raman library of the home folder,
// search a spectrum file against it, examine it.
#include "cli/BatchOutput.h"
#include "cli/CliCommand.h"
#include "cli/ExplainOutput.h"
#include "cli/JsonOutput.h"
#include "cli/MixtureOutput.h"
#include "cli/SpectrumLoading.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/ConsistencyExam.h"
#include "library/DotProdSearch.h"
#include "library/RobustSearch.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumEdits.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

struct SearchOptions {
    std::vector<std::string> files;
    std::optional<std::string> csv;
    std::optional<std::string> range;
    std::optional<int> top;
    bool json = false;
    bool clean = false;
    bool text = false;
    std::string mode = "dot";
    bool mixture = false;
    int components = kDefaultMixtureComponents;
    std::string columns;
};

// A progress line on stderr, redrawn at most ten times a second, only when stderr is a terminal.
ProgressCallback terminalProgress() {
    if (!stderrIsTerminal()) {
        return {};
    }
    auto last = std::make_shared<std::chrono::steady_clock::time_point>();
    return [last](std::string_view status, double fraction) {
        const auto now = std::chrono::steady_clock::now();
        if (fraction < 1.0 && now - *last < std::chrono::milliseconds(100)) {
            return;
        }
        *last = now;
        std::cerr << '\r' << status << ' ' << static_cast<int>(fraction * 100.0) << "%   "
                  << (fraction >= 1.0 ? "\n" : "") << std::flush;
    };
}

void printCompilation(const LibraryCompilation& compilation, std::ostream& out) {
    out << "Library folder: " << compilation.folder.string() << '\n'
        << "Entries: " << compilation.entries << '\n';
    if (compilation.nameListLines != compilation.entries) {
        out << "Name-list lines: " << compilation.nameListLines
            << " (\"Consistency\" files are listed but not compiled)\n";
    }
    out << "Skipped files: " << compilation.skipped.size() << '\n';
    for (const SkippedFile& skipped : compilation.skipped) {
        out << "  " << skipped.name << ": " << skipped.reason << '\n';
    }
}

int runCompile(ProgramState& state) {
    printCompilation(CREATE_SEARCH_LIB(state.quarvex.programFolder, terminalProgress()), std::cout);
    return 0;
}

// The points of x within [low, high] (x ascending): a contiguous run.
std::pair<std::size_t, std::size_t> selectedArea(std::span<const float> x, float low, float high) {
    const auto first = std::lower_bound(x.begin(), x.end(), low);
    const auto last = std::upper_bound(first, x.end(), high);
    return {static_cast<std::size_t>(first - x.begin()), static_cast<std::size_t>(last - first)};
}

std::pair<float, float> parseRange(const std::string& text) {
    const std::size_t colon = text.find(':');
    float low = 0.0F;
    float high = 0.0F;
    if (colon == std::string::npos || !parseReal(text.substr(0, colon), low) ||
        !parseReal(text.substr(colon + 1), high) || !(low <= high)) {
        throw QuarvexError(
            "--range needs LO:HI with LO <= HI, e.g. 150:1200 (got \"" + text + "\")", "Range");
    }
    return {low, high};
}

Json entriesJson(const LIBRARY_GLOBALS& library, std::size_t shown) {
    Json entries = Json::array();
    for (std::size_t rank = 0; rank < shown; ++rank) {
        const auto k = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS[rank]);
        entries.push_back(Json{{"rank", rank + 1},
                               {"score", library.PERC_MATCH[k]},
                               {"file", library.MI_FILENAMES[k]},
                               {"id", library.MIGRELT_ID[k]},
                               {"names", library.MINAMES[k]},
                               {"locality", library.LOCALITIES[k]},
                               {"chemistry", library.CHEMISTRIES[k]},
                               {"wave", library.MI_WAVE[k]}});
        if (!library.MATCH_SHIFT.empty()) {
            entries.back()["shift"] = library.MATCH_SHIFT[k];
        }
    }
    return entries;
}

// The ranking as a table whose columns are as wide as their widest shown value; a robust
// search adds each entry's shift after its score.
void printRanking(const LIBRARY_GLOBALS& library, std::size_t shown) {
    const bool shifts = !library.MATCH_SHIFT.empty();
    std::vector<std::string> titles{"Rank",  "Score",    "File",      "Id",
                                    "Names", "Locality", "Chemistry", "Wave"};
    const std::size_t numbers = shifts ? 3 : 2;
    if (shifts) {
        titles.insert(titles.begin() + 2, "Shift");
    }
    const std::size_t columns = titles.size();
    std::vector<std::vector<std::string>> rows;
    for (std::size_t rank = 0; rank < shown; ++rank) {
        const auto k = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS[rank]);
        std::array<char, 32> score{};
        std::snprintf(score.data(), score.size(), "%.2f", library.PERC_MATCH[k]);
        rows.push_back({std::to_string(rank + 1), score.data(), library.MI_FILENAMES[k],
                        library.MIGRELT_ID[k], library.MINAMES[k], library.LOCALITIES[k],
                        library.CHEMISTRIES[k], library.MI_WAVE[k]});
        if (shifts) {
            rows.back().insert(rows.back().begin() + 2, std::to_string(library.MATCH_SHIFT[k]));
        }
    }
    std::vector<std::size_t> widths(columns);
    for (std::size_t c = 0; c < columns; ++c) {
        widths[c] = titles[c].size();
        for (const auto& row : rows) {
            widths[c] = std::max(widths[c], row[c].size());
        }
    }
    const auto printRow = [&](const std::vector<std::string>& row) {
        for (std::size_t c = 0; c < columns; ++c) {
            const bool number = c < numbers;
            const std::string padding(widths[c] - row[c].size(), ' ');
            std::cout << (number ? padding + row[c] : row[c] + (c + 1 < columns ? padding : ""))
                      << (c + 1 < columns ? "  " : "\n");
        }
    };
    printRow(titles);
    for (const auto& row : rows) {
        printRow(row);
    }
}

int runSearch(const SearchOptions& options, ProgramState& state) {
    const SearchMode mode = options.mode == "robust" ? SearchMode::Robust : SearchMode::Dot;
    if (options.files.size() > 1 || options.csv) {
        if (options.json || options.range || options.clean || options.mixture) {
            throw QuarvexError("--json, --range, --clean and --mixture search one file; a batch "
                               "of files gives CSV rows.",
                               "Search");
        }
        return runBatchSearch(state.quarvex.programFolder, options.files, mode, options.csv);
    }
    const std::string& file = options.files.front();
    const int index = loadCommandSpectrum(state, file, options.columns);
    const std::span<const float> x = state.specdata.xValues(index);
    const std::span<const float> y = state.specdata.yValues(index);
    const auto [low, high] =
        options.range ? parseRange(*options.range) : std::pair{x.front(), x.back()};
    const auto [first, count] = selectedArea(x, low, high);
    const std::vector<float> cleaned =
        options.clean ? cleanedValues(x.subspan(first, count), y.subspan(first, count))
                      : std::vector<float>{};

    const std::span<const float> searchedY =
        options.clean ? std::span<const float>(cleaned) : y.subspan(first, count);
    if (options.mixture) {
        std::optional<LibraryCompilation> compilation;
        const MixtureResult mixture =
            searchMixture(state.quarvex.programFolder, x.subspan(first, count), searchedY,
                          options.components, state.library, compilation, terminalProgress());
        if (compilation) {
            std::cerr << "The library was compiled first.\n";
            printCompilation(*compilation, std::cerr);
        }
        if (options.json) {
            std::cout << mixtureJson(mixture, state.library).dump(2) << '\n';
        } else {
            std::cout << "Mixture search of " << file << " against " << state.library.count()
                      << " library entries\n";
            printMixture(mixture, state.library, std::cout);
        }
        return 0;
    }
    const std::span<const float> unknownX = x.subspan(first, count);
    std::optional<LibraryCompilation> compilation;
    if (mode == SearchMode::Dot) {
        const std::filesystem::path& home = state.quarvex.programFolder;
        compilation = compileLibraryWhenMissing(home, terminalProgress());
        const LibrarySearchSource used =
            READ_LIBRARY(ramanLibraryFolder(home), unknownX, searchedY, state.library,
                         terminalProgress(), LibraryFileReader::kDefaultBufferSize,
                         options.text ? GridSource::TextOnly : GridSource::CacheWhenValid);
        if (const std::string note = textFallbackNote(used); !note.empty()) {
            std::cerr << note << '\n';
        }
    } else {
        compilation = searchLibrary(state.quarvex.programFolder, unknownX, searchedY,
                                    state.library, mode, terminalProgress());
    }
    if (compilation) {
        std::cerr << "The library was compiled first.\n";
        printCompilation(*compilation, std::cerr);
    }
    const LIBRARY_GLOBALS& library = state.library;
    const auto entries = static_cast<std::size_t>(library.count());
    const auto explain = [&] {
        return explainSearch(ramanLibraryFolder(state.quarvex.programFolder),
                             x.subspan(first, count), searchedY, library);
    };
    if (options.json) {
        const std::size_t shown =
            options.top ? std::min(entries, static_cast<std::size_t>(*options.top)) : entries;
        Json result{{"entries", entriesJson(library, shown)}};
        if (mode == SearchMode::Robust) {
            result["mode"] = searchModeName(mode);
            result["no_good_match"] = noGoodMatch(library);
            addExplanationJson(explain(), library, result);
        }
        std::cout << result.dump(2) << '\n';
        return 0;
    }
    const int top = options.top.value_or(state.quarvex.preferences.resultsShown);
    const std::size_t shown = std::min(entries, static_cast<std::size_t>(std::max(top, 0)));
    std::cout << "Search of " << file << " over " << shortestText(x[first]) << " to "
              << shortestText(x[first + count - 1]) << " (" << count << " points) against "
              << entries << " library entries\n";
    printRanking(library, shown);
    if (mode == SearchMode::Robust) {
        if (noGoodMatch(library)) {
            std::cout << "No good match: the best score is below " << kNoGoodMatchScore << '\n';
        }
        printExplanation(explain(), library, std::cout);
    }
    return 0;
}

Json examinedJson(const ExaminedEntry& exam) {
    Json entry{{"entry", exam.entry}, {"file", exam.fileName}, {"names", exam.names}};
    if (!exam.problem.empty()) {
        entry["problem"] = exam.problem;
        return entry;
    }
    entry.update({{"score", exam.selfScore},
                  {"rank", exam.rank},
                  {"closest", exam.closest},
                  {"closest_score", exam.closestScore},
                  {"passes", exam.passes()}});
    return entry;
}

// Lists the entries that did not pass (all of them with --json), then the summary.
int runConsistency(bool json, ProgramState& state) {
    const ConsistencyExamResult exam =
        runConsistencyExam(state.quarvex.programFolder, terminalProgress());
    if (exam.compilation) {
        std::cerr << "The library was compiled first.\n";
        printCompilation(*exam.compilation, std::cerr);
    }
    if (json) {
        Json entries = Json::array();
        for (const ExaminedEntry& entry : exam.entries) {
            entries.push_back(examinedJson(entry));
        }
        std::cout << Json{{"report", exam.report.string()}, {"entries", entries}}.dump(2) << '\n';
        return 0;
    }
    for (const ExaminedEntry& entry : exam.entries) {
        if (entry.passes()) {
            continue;
        }
        std::cout << entry.entry << "  " << entry.fileName << ": ";
        if (!entry.problem.empty()) {
            std::cout << entry.problem << '\n';
            continue;
        }
        std::array<char, 64> scores{};
        std::snprintf(scores.data(), scores.size(), "score %.2f, rank %d, closest %d at %.2f",
                      entry.selfScore, entry.rank, entry.closest, entry.closestScore);
        std::cout << scores.data() << '\n';
    }
    std::cout << exam.summary() << "\nReport: " << exam.report.string() << '\n';
    return 0;
}

} // namespace

std::vector<CliCommand> addLibraryCommands(CLI::App& app) {
    CLI::App* compile = app.add_subcommand(
        "compile", "Compile the Raman library of the home folder (SearchRecords/RamanLib/)");

    auto options = std::make_shared<SearchOptions>();
    CLI::App* search = app.add_subcommand(
        "search", "Search a Raman spectrum file against the library of the home folder "
                  "(compiled first when needed) and print the ranking");
    search
        ->add_option("file", options->files,
                     "Spectrum file of the unknown; several files are searched as a batch "
                     "(one CSV row each)")
        ->required();
    search->add_option("--csv", options->csv,
                       "Write the batch's CSV rows to this file (default: standard output)");
    addColumnsOption(*search, options->columns);
    search->add_option("--range", options->range,
                       "Selected x-range LO:HI in cm-1 (default: the whole spectrum)");
    search
        ->add_option("--top", options->top,
                     "Entries to print (default: the preference resultsShown; with --json: "
                     "every entry)")
        ->check(CLI::PositiveNumber);
    search->add_flag("--json", options->json, "Print JSON instead of a table");
    search->add_flag("--clean", options->clean,
                     "Remove cosmic-ray spikes and the background (ALS) from the range first");
    search->add_flag("--text", options->text,
                     "Read the library's text files, not its grid cache (the same scores)");
    search
        ->add_option("--mode", options->mode,
                     "dot: the dot-product search (default); robust: background removed, square "
                     "root, first derivative, best of shifts -3..+3 cm-1")
        ->check(CLI::IsMember({"dot", "robust"}));
    search->add_flag("--mixture", options->mixture,
                     "Mixture search: find up to --components entries one after another with "
                     "the robust score, subtracting each before searching what is left");
    search->add_option("--components", options->components,
                       "Most components of a mixture search (default 3)");

    auto json = std::make_shared<bool>(false);
    CLI::App* consistency = app.add_subcommand(
        "consistency", "Examine the library: search every reference file against it and report "
                       "entries that do not find themselves first or have a near twin");
    consistency->add_flag("--json", *json, "Print every entry as JSON");

    return {{compile, runCompile},
            {consistency, [json](ProgramState& state) { return runConsistency(*json, state); }},
            {search, [options](ProgramState& state) { return runSearch(*options, state); }}};
}

} // namespace quarvex::cli
