// The robust cache: a robust search from it gives the scores and shifts of the robust file's
// text bit for bit (odd blocks included), and a cache that does not fit its files is never used.
#include "LibraryTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"
#include "library/RobustGridCache.h"
#include "library/RobustSearch.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>
#include <functional>

namespace quarvex {
namespace {

// 20 reference spectra, compiled; then the Slow file edited by hand: a block cut short by an
// unreadable line, one with a gap in its grid. (A value that is not finite makes the robust
// file's derivation fail, cache or not.)
std::filesystem::path library(const std::filesystem::path& home) {
    SET_UP_FOLDERS(home);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    for (int k = 0; k < 20; ++k) {
        std::vector<float> x;
        std::vector<float> y;
        test::twoBands(100.0F + static_cast<float>(k), 1100.0F,
                       200.0F + 30.0F * static_cast<float>(k), x, y);
        std::ofstream(folder / std::string("R").append(std::to_string(10 + k)).append(".txt"))
            << test::spectrumText("##NAMES=M\n", x, y);
    }
    CREATE_SEARCH_LIB(home);
    std::string slow = test::readFile(folder / kSlowLibraryFile);
    const auto edit = [&slow](const char* entry, const char* line, const char* replacement) {
        const std::size_t at = slow.find(std::string("\n").append(line).append(" "),
                                         slow.find(std::string("==\n").append(entry)));
        slow.replace(at + 1, slow.find('\n', at + 1) - at - 1, replacement);
    };
    edit("R12.txt", "500", "not a number");
    edit("R13.txt", "600", "620 0.5");
    std::ofstream(folder / kSlowLibraryFile, std::ios::binary) << slow;
    return folder;
}

struct Search {
    std::vector<double> scores;
    std::vector<int> shifts;
};

Search robustSearch(const std::filesystem::path& folder, GridSource source) {
    std::vector<float> x;
    std::vector<float> y;
    test::twoBands(150.0F, 1000.0F, 561.0F, x, y); // R22's bands, moved by 1 cm-1
    LIBRARY_GLOBALS result;
    READ_LIBRARY_ROBUST(folder, x, y, result, {}, source);
    return {result.PERC_MATCH, result.MATCH_SHIFT};
}

void expectSame(const Search& text, const Search& cached) {
    ASSERT_EQ(text.scores.size(), cached.scores.size());
    for (std::size_t k = 0; k < text.scores.size(); ++k) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(text.scores[k]),
                  std::bit_cast<std::uint64_t>(cached.scores[k]))
            << "entry " << k << ": " << text.scores[k] << " vs " << cached.scores[k];
    }
    EXPECT_EQ(text.shifts, cached.shifts);
}

void patch(const std::filesystem::path& path, std::size_t at, char value) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(at));
    file.put(value);
}

TEST(RobustCache, GivesTheRobustFileScoresAndIsNeverUsedWhenItDoesNotFit) {
    const test::TempFolder home;
    const std::filesystem::path folder = library(home.path());
    const Search text = robustSearch(folder, GridSource::TextOnly); // derives the robust file
    ASSERT_FALSE(std::filesystem::exists(robustCachePath(folder)));
    EXPECT_GT(text.scores[12], 90.0);
    EXPECT_EQ(text.shifts[12], 1);

    expectSame(text, robustSearch(folder, GridSource::CacheWhenValid)); // makes the cache
    std::string whyNot;
    ASSERT_TRUE(RobustCache::open(folder, whyNot)) << whyNot;
    expectSame(text, robustSearch(folder, GridSource::CacheWhenValid)); // reads it

    const struct {
        const char* what;
        std::function<void(const std::filesystem::path&)> spoil;
    } cases[] = {
        {"another version", [](auto& cache) { patch(cache, 8, 9); }},
        {"truncated",
         [](auto& cache) {
             std::filesystem::resize_file(cache, std::filesystem::file_size(cache) - 8);
         }},
        {"a table that points elsewhere",
         [](auto& cache) { patch(cache, std::filesystem::file_size(cache) - 16, 7); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(writeRobustCache(folder));
        c.spoil(robustCachePath(folder));
        EXPECT_FALSE(RobustCache::open(folder, whyNot));
        expectSame(text, robustSearch(folder, GridSource::CacheWhenValid));
    }
    // The robust file changed by hand after the cache was made: its own scores count.
    ASSERT_TRUE(writeRobustCache(folder));
    std::string robust = test::readFile(folder / kRobustLibraryFile);
    robust.replace(robust.find("\n3"), 2, "\nx");
    std::ofstream(folder / kRobustLibraryFile, std::ios::binary) << robust;
    EXPECT_FALSE(RobustCache::open(folder, whyNot));
    expectSame(robustSearch(folder, GridSource::TextOnly),
               robustSearch(folder, GridSource::CacheWhenValid));
}

} // namespace
} // namespace quarvex
