#include "cli/BatchOutput.h"

#include "cli/CliCommand.h"
#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "library/BatchSearch.h"
#include "library/SearchExplain.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>

namespace quarvex::cli {

namespace {

constexpr std::size_t kCsvHits = 5;

// A CSV field: quoted, with quotes doubled, when it holds a comma, a quote or a line break.
std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return quoted + '"';
}

std::string csvHeader() {
    std::string header = "file";
    for (std::size_t rank = 1; rank <= kCsvHits; ++rank) {
        const std::string n = std::to_string(rank);
        header += ",rank" + n + ",name" + n + ",score" + n + ",shift" + n;
    }
    return header + ",no_good_match,ambiguous,error\n";
}

std::string csvRow(const std::filesystem::path& file, const LIBRARY_GLOBALS* ranking,
                   std::string_view error, SearchMode mode) {
    std::ostringstream row;
    row << csvField(file.string());
    for (std::size_t rank = 0; rank < kCsvHits; ++rank) {
        if (ranking == nullptr || rank >= ranking->MI_SORTINDEXPERCENTS.size()) {
            row << ",,,,";
            continue;
        }
        const auto k = static_cast<std::size_t>(ranking->MI_SORTINDEXPERCENTS[rank]);
        std::array<char, 32> score{};
        std::snprintf(score.data(), score.size(), "%.2f", ranking->PERC_MATCH[k]);
        row << ',' << rank + 1 << ',' << csvField(ranking->MINAMES[k]) << ',' << score.data() << ','
            << (ranking->MATCH_SHIFT.empty() ? "" : std::to_string(ranking->MATCH_SHIFT[k]));
    }
    if (ranking == nullptr) {
        row << ",,," << csvField(std::string(error));
    } else {
        // The verdict's threshold belongs to the robust score.
        row << ',' << (mode == SearchMode::Robust ? (noGoodMatch(*ranking) ? "yes" : "no") : "")
            << ',' << (ambiguousResult(*ranking) ? "yes" : "no") << ',';
    }
    return row.str() + '\n';
}

// "File 3 of 40: NAME" on stderr, only when stderr is a terminal.
ProgressCallback fileProgress(std::size_t files) {
    if (!stderrIsTerminal()) {
        return {};
    }
    return [files](std::string_view status, double fraction) {
        const auto done = static_cast<std::size_t>(fraction * static_cast<double>(files) + 0.5);
        std::cerr << '\r' << status << ' ' << done << " of " << files << "   "
                  << (done >= files ? "\n" : "") << std::flush;
    };
}

} // namespace

int runBatchSearch(const std::filesystem::path& home, const std::vector<std::string>& files,
                   SearchMode mode, const std::optional<std::string>& csv) {
    const std::vector<std::filesystem::path> paths(files.begin(), files.end());
    std::string text = csvHeader();
    int failed = 0;
    batchSearch(
        home, paths, mode,
        [&](const std::filesystem::path& file, const LIBRARY_GLOBALS* ranking,
            std::string_view error) {
            text += csvRow(file, ranking, error, mode);
            failed += ranking == nullptr ? 1 : 0;
        },
        fileProgress(paths.size()));
    if (!csv) {
        std::cout << text;
    } else {
        AtomicFile out(*csv);
        out.stream() << text;
        if (!out.isOpen() || !out.commit()) {
            throw QuarvexError("The CSV file " + *csv + " cannot be written.", "Search");
        }
        std::cerr << paths.size() << " files searched, " << failed << " failed; CSV: " << *csv
                  << '\n';
    }
    return 0;
}

} // namespace quarvex::cli
