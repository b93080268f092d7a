// The grid cache: a search from it gives the text search's scores and ranking bit for bit (on
// compiled libraries and on hand-written files with odd entries), and a cache that does not fit
// the library files is never used.
#include "LibraryTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"
#include "library/DotProdSearch.h"
#include "library/GridCache.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>

namespace quarvex {
namespace {

struct Unknown {
    std::vector<float> x;
    std::vector<float> y;
};

Unknown bands(float from, float to, float band) {
    Unknown unknown;
    test::twoBands(from, to, band, unknown.x, unknown.y);
    return unknown;
}

// Three unknowns: bands inside the library's range, at its low end, and partly above it.
std::vector<Unknown> unknowns() {
    return {bands(150.0F, 1100.0F, 420.0F), bands(50.0F, 700.0F, 151.0F),
            bands(700.0F, 1600.0F, 900.0F)};
}

LIBRARY_GLOBALS search(const std::filesystem::path& folder, const Unknown& unknown,
                       GridSource source, LibrarySearchSource* used = nullptr) {
    LIBRARY_GLOBALS library;
    const LibrarySearchSource from = READ_LIBRARY(folder, unknown.x, unknown.y, library, {},
                                                  LibraryFileReader::kDefaultBufferSize, source);
    if (used != nullptr) {
        *used = from;
    }
    return library;
}

// Scores compared bit for bit (a NaN equals the same NaN), then the ranking.
void expectSameResult(const LIBRARY_GLOBALS& text, const LIBRARY_GLOBALS& cached) {
    ASSERT_EQ(text.PERC_MATCH.size(), cached.PERC_MATCH.size());
    for (std::size_t k = 0; k < text.PERC_MATCH.size(); ++k) {
        EXPECT_EQ(std::memcmp(&text.PERC_MATCH[k], &cached.PERC_MATCH[k], sizeof(double)), 0)
            << "entry " << k << ": " << text.PERC_MATCH[k] << " vs " << cached.PERC_MATCH[k];
    }
    EXPECT_EQ(text.MI_SORTINDEXPERCENTS, cached.MI_SORTINDEXPERCENTS);
}

// Every unknown searched from the text and from the cache; returns how many scores were NaN.
int expectCacheGivesTextScores(const std::filesystem::path& folder) {
    int nans = 0;
    for (const Unknown& unknown : unknowns()) {
        const LIBRARY_GLOBALS text = search(folder, unknown, GridSource::TextOnly);
        LibrarySearchSource used;
        const LIBRARY_GLOBALS cached = search(folder, unknown, GridSource::CacheWhenValid, &used);
        EXPECT_TRUE(used.fromCache) << used.note;
        expectSameResult(text, cached);
        nans += static_cast<int>(std::count_if(text.PERC_MATCH.begin(), text.PERC_MATCH.end(),
                                               [](double s) { return std::isnan(s); }));
    }
    return nans;
}

// A library of 40 reference spectra (bands moving through the range, some narrow, some
// starting late) and a consistency report, compiled: A00..A19, the report, S20..S39.
std::filesystem::path compiledLibrary(const std::filesystem::path& home) {
    SET_UP_FOLDERS(home);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    for (int k = 0; k < 40; ++k) {
        std::vector<float> x;
        std::vector<float> y;
        const float from = k % 7 == 0 ? 400.0F : 100.0F + static_cast<float>(k % 3) * 0.25F;
        test::twoBands(from, 1200.0F - static_cast<float>(k),
                       150.0F + 20.0F * static_cast<float>(k), x, y);
        const std::string name = std::string(k < 20 ? "A" : "S")
                                     .append(k < 10 ? "0" : "")
                                     .append(std::to_string(k))
                                     .append("_785.txt");
        std::ofstream(folder / name)
            << test::spectrumText("##NAMES=M" + std::to_string(k) + "\n", x, y);
        if (k == 20) {
            std::ofstream(folder / "Consistency_report.rsf") << "not a spectrum\n";
        }
    }
    CREATE_SEARCH_LIB(home);
    return folder;
}

// Data lines "x y" of a regular grid with one band at `band`.
std::string gridLines(int from, int to, int step, int band) {
    std::string lines;
    for (int x = from; x <= to; x += step) {
        const double d = (x - band) / 15.0;
        lines += std::to_string(x) + ' ' + std::to_string(1.0 / (1.0 + d * d) + 0.01) + '\n';
    }
    return lines;
}

// Hand-written library files with every kind of odd entry the text reader copes with.
std::filesystem::path handWrittenLibrary(const std::filesystem::path& root) {
    const std::filesystem::path folder = root / "lib";
    std::filesystem::create_directories(folder);
    std::string slow = "a line before the first entry\n";
    std::string fast;
    std::string names;
    std::string info;
    const auto add = [&](const std::string& name, const std::string& slowData,
                         const std::string& fastData) {
        for (auto [file, data] : {std::pair{&slow, &slowData}, std::pair{&fast, &fastData}}) {
            file->append("==\n").append(name).append("\n").append(*data);
        }
        names.append(name).append("\n");
        info += "id\nnames\nplace\nchem\n785\n";
    };
    for (int k = 0; k < 30; ++k) {
        const int band = 150 + 31 * k;
        add(std::string(1, 'e').append(std::to_string(k)), gridLines(100, 1200, 1, band),
            gridLines(100, 1200, 2, band));
        if (k == 12) {
            names += "Consistency_report.rsf\n"; // the name list runs one line ahead from here
        }
    }
    add("truncated", gridLines(100, 400, 1, 420) + "abc\n" + gridLines(401, 900, 1, 420),
        gridLines(100, 500, 2, 420) + "12\n" + gridLines(502, 900, 2, 420));
    add("nan values",
        gridLines(100, 300, 1, 420) + "301 nan\n302 inf\n" + gridLines(303, 900, 1, 420),
        gridLines(100, 300, 2, 420) + "302 NaN\n304 -inf\n" + gridLines(306, 900, 2, 420));
    add("irregular", "150.5 1\n151.5 2\n153 1\n160 4\n161 2\n",
        "150 1\n151 2\n152.000001 1\n160 4\n1e3 2\n");
    add("no data", "", "");
    add("e3", gridLines(100, 1200, 1, 400), gridLines(100, 1200, 2, 400)); // a repeated name
    slow += "==\n==\n"; // an entry whose name line is a separator
    fast += "==\n==\n";
    add("above", gridLines(2000, 2100, 1, 2050), gridLines(2000, 2100, 2, 2050));
    add("commas", "420, 0.5\n421,0.6d0\n422 3*0.2\n", "420 , 0.5\n422 1.0e0\n");
    add("last", gridLines(100, 1200, 1, 600), gridLines(100, 1200, 2, 600));
    slow.pop_back(); // the last entry ends at the end of the file, without an end of line
    for (const auto& [file, content] :
         {std::pair{kSlowLibraryFile, slow}, std::pair{kFastLibraryFile, fast},
          std::pair{kNameListFile, names}, std::pair{kNameInfoFile, info}}) {
        std::ofstream(folder / file, std::ios::binary) << content;
    }
    return folder;
}

TEST(GridCache, CompiledLibrarySearchesFromTheCacheWithTheTextScores) {
    const test::TempFolder home;
    const std::filesystem::path folder = compiledLibrary(home.path());
    ASSERT_TRUE(std::filesystem::exists(gridCachePath(folder)));
    expectCacheGivesTextScores(folder);
}

TEST(GridCache, HandWrittenFilesGiveTheTextScoresFromTheCache) {
    const test::TempFolder root;
    const std::filesystem::path folder = handWrittenLibrary(root.path());
    ASSERT_TRUE(writeGridCache(folder));
    EXPECT_GT(expectCacheGivesTextScores(folder), 0) << "the NaN values reach some scores";
}

struct BadCache {
    const char* what;
    std::function<void(const std::filesystem::path& folder, const std::filesystem::path& cache)>
        spoil;
    bool madeAnew; // the search writes a good cache again
};

void patch(const std::filesystem::path& path, std::size_t at, std::uint8_t value) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(at));
    file.put(static_cast<char>(value));
}

// The first data line of an entry of the Slow file made unreadable, its length kept.
void spoilEntry(const std::filesystem::path& folder, const std::string& name) {
    std::string text = test::readFile(folder / kSlowLibraryFile);
    const std::string block = std::string("==\n").append(name).append("\n");
    const std::size_t line = text.find('\n', text.find(block) + block.size());
    const std::size_t end = text.find('\n', line + 1);
    text.replace(line + 1, end - line - 1, std::string(end - line - 1, 'x'));
    std::ofstream(folder / kSlowLibraryFile, std::ios::binary) << text;
}

TEST(GridCache, ACacheThatDoesNotFitIsNeverUsed) {
    const std::vector<BadCache> cases = {
        {"another format version", [](auto&, auto& cache) { patch(cache, 8, 99); }, true},
        {"truncated",
         [](auto&, auto& cache) {
             std::filesystem::resize_file(cache, std::filesystem::file_size(cache) / 2);
         },
         true},
        {"empty", [](auto&, auto& cache) { std::ofstream(cache, std::ios::trunc); }, true},
        {"made for another name list", [](auto&, auto& cache) { patch(cache, 90, 0x5a); }, true},
        {"Slow file edited by hand after compilation",
         [](auto& folder, auto&) { spoilEntry(folder, "A12_785.txt"); }, true},
        {"cache cannot be written",
         [](auto&, auto& cache) {
             std::filesystem::remove(cache);
             std::filesystem::create_directory(cache); // stands where the cache would go
         },
         false},
    };
    const Unknown unknown = bands(300.0F, 1000.0F, 390.0F); // A12's bands: a fine candidate
    const test::TempFolder home;
    const std::filesystem::path compiled = compiledLibrary(home.path());
    for (const BadCache& c : cases) {
        SCOPED_TRACE(c.what);
        const test::TempFolder root;
        const std::filesystem::path folder = root.path() / "lib";
        std::filesystem::copy(compiled, folder);
        ASSERT_TRUE(writeGridCache(folder));
        c.spoil(folder, gridCachePath(folder));
        const LIBRARY_GLOBALS text = search(folder, unknown, GridSource::TextOnly);
        LibrarySearchSource used;
        expectSameResult(text, search(folder, unknown, GridSource::CacheWhenValid, &used));
        EXPECT_FALSE(used.fromCache);
        EXPECT_FALSE(used.note.empty());
        // The next search reads the cache made anew, or the text again.
        expectSameResult(text, search(folder, unknown, GridSource::CacheWhenValid, &used));
        EXPECT_EQ(used.fromCache, c.madeAnew) << used.note;
    }
}

TEST(GridCache, AHandEditChangesTheScore) {
    // The edit of the case above matters: the text search's score of A12 drops.
    const test::TempFolder home;
    const std::filesystem::path folder = compiledLibrary(home.path());
    const Unknown unknown = bands(300.0F, 1000.0F, 390.0F);
    const LIBRARY_GLOBALS before = search(folder, unknown, GridSource::CacheWhenValid);
    spoilEntry(folder, "A12_785.txt");
    const LIBRARY_GLOBALS after = search(folder, unknown, GridSource::CacheWhenValid);
    EXPECT_EQ(before.MI_FILENAMES[before.MI_SORTINDEXPERCENTS[0]], "A12_785.txt");
    EXPECT_EQ(after.PERC_MATCH[12], 0.0) << "no first pair: the entry scores 0";
    EXPECT_GT(before.PERC_MATCH[12], 99.0);
}

} // namespace
} // namespace quarvex
