// FIND_MATCH against hand-written library entries, and the two passes of READ_LIBRARY.
#include "LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/LibraryFileReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace quarvex {
namespace {

InterpData table(std::vector<float> x, std::vector<float> y) {
    InterpData data;
    data.x = std::move(x);
    data.y = std::move(y);
    return data;
}

struct MatchCase {
    const char* what;
    InterpData unknown;
    std::string entry; // data lines of the entry, each ending in "\n"
    double score;      // worked out by hand
};

// Every case is followed by a second entry identical to the unknown (score 100), which the
// reader must find again however the first entry ended.
TEST(FindMatch, ScoresWorkedOutByHand) {
    const InterpData sixEight = table({100, 101}, {6, 8}); // norm 10
    const InterpData flat = table({100, 101, 102, 103}, {5, 5, 5, 5});
    const std::vector<MatchCase> cases = {
        {"identical", sixEight, "100 6\n101 8\n", 100.0},
        {"unnormalised entry: norm over the overlap", sixEight, "100 3\n101 4\n", 100.0},
        {"entry above the unknown", sixEight, "200 1\n201 1\n", 0.0},
        {"entry below the unknown", sixEight, "90 1\n91 1\n", 0.0},
        {"no data lines", sixEight, "", 0.0},
        {"grid off by half a step", sixEight, "100.5 1\n101.5 1\n", 0.0},
        {"entry starts below: read up to 100", sixEight, "98 9\n99 9\n100 6\n101 8\n", 100.0},
        {"unknown starts below: (5*3 + 5*4) * 10/5", flat, "102 3\n103 4\n104 9\n", 70.0},
        {"a gap ends the sum: 100 and 101 only", flat, "100 3\n101 4\n103 9\n", 70.0},
        {"unreadable line ends the sum", flat, "100 3\n101 4\nabc\n102 9\n", 70.0},
        {"commas and a Fortran exponent", sixEight, "100, 0.6d1\n101,8\n", 100.0},
        // 14 * fl(10 / fl(sqrt 2)) = 98.99494934; the exact cosine is 98.99494937.
        {"single-precision norm", sixEight, "100 1\n101 1\n", 98.99494934082031},
    };
    // Small buffers put the refills at every place of the lines (and cut lines longer than the
    // buffer); the default one holds the whole file.
    const std::size_t bufferSizes[] = {4, 7, 16, LibraryFileReader::kDefaultBufferSize};
    for (const std::size_t bufferSize : bufferSizes) {
        for (const MatchCase& c : cases) {
            const test::TempFolder folder;
            const auto path =
                folder.write("lib.rsf", "==\nfirst\n" + c.entry + "==\nsecond\n100 6\n101 8");
            LibraryFileReader reader(path, bufferSize);
            std::string_view line;
            ASSERT_TRUE(reader.skipPastSeparator() && reader.next(line))
                << c.what << ", buffer " << bufferSize;
            EXPECT_NEAR(FIND_MATCH(reader, c.unknown, c.unknown.capacity()), c.score, 1.0e-6)
                << c.what << ", buffer " << bufferSize;
            ASSERT_TRUE(reader.atSeparator() || reader.skipPastSeparator())
                << c.what << ", buffer " << bufferSize;
            ASSERT_TRUE(reader.next(line) && line == "second")
                << c.what << ", buffer " << bufferSize;
            // The last entry ends at the end of the file, without an end of line.
            EXPECT_EQ(FIND_MATCH(reader, sixEight, 2), 100.0)
                << c.what << ", buffer " << bufferSize;
        }
    }
}

class SearchTest : public ::testing::Test {
protected:
    std::filesystem::path folder() const { return ramanLibraryFolder(home.path()); }
    void put(const std::string& name, const std::string& content) const {
        std::ofstream(folder() / name, std::ios::binary) << content;
    }
    void SetUp() override { SET_UP_FOLDERS(home.path()); }

    test::TempFolder home;
    LIBRARY_GLOBALS library;
};

// Entries outside the 25 best of the coarse pass keep their coarse score; equal scores keep
// library order. Unknown: y = 1 at 100..103, so the coarse grid is 100, 102 and the fine grid
// 100, 101, 102. Entry k has coarse values (1, k/26): its coarse score rises with k; on the fine
// grid every entry equals the unknown (100).
TEST_F(SearchTest, FinePassRescoresTheBestTwentyFive) {
    std::string slow;
    std::string fast;
    std::string names;
    std::string info;
    for (int k = 0; k < 27; ++k) {
        const std::string name = "E" + std::to_string(100 + k).append("\n");
        names.append(name);
        info.append(name).append("'Rose quartz' pink\n Minas Gerais\nSiO2\n785\n");
        const std::string coarseY = std::to_string(k / 26.0);
        fast.append("==\n").append(name).append("100 1\n102 ").append(coarseY).append("\n");
        slow.append("==\n").append(name).append("100 2\n101 2\n102 2\n");
    }
    put(std::string(kSlowLibraryFile), slow);
    put(std::string(kFastLibraryFile), fast);
    put(std::string(kNameListFile), names);
    put(std::string(kNameInfoFile), info);

    const std::vector<float> x{100, 101, 102, 103};
    const std::vector<float> y{1, 1, 1, 1};
    READ_LIBRARY(folder(), x, y, library);
    ASSERT_EQ(library.count(), 27);
    // Entry 0 has (1, 0) on the coarse grid: score 100 / sqrt(2).
    EXPECT_NEAR(library.PERC_MATCH[0], 100.0 / std::sqrt(2.0), 1.0e-4);
    EXPECT_LT(library.PERC_MATCH[1], library.PERC_MATCH[2]);
    std::vector<int> ranking;
    for (int k = 2; k < 27; ++k) {
        EXPECT_NEAR(library.PERC_MATCH[k], 100.0, 1.0e-4) << k;
        ranking.push_back(k);
    }
    ranking.push_back(1);
    ranking.push_back(0);
    EXPECT_EQ(library.MI_SORTINDEXPERCENTS, ranking);
    // Identifier and names are read free-format, the other lines whole.
    EXPECT_EQ(library.MIGRELT_ID[3], "E103");
    EXPECT_EQ(library.MINAMES[3], "Rose quartz");
    EXPECT_EQ(library.LOCALITIES[3], "Minas Gerais");
    EXPECT_EQ(library.MI_WAVE[3], "785");
}

// The entries a search ranks first are shown with their own descriptions when the name files
// are read through buffers far smaller than they are, from the text files and from the cache.
// Entry k has coarse values (1, k/60), so its coarse score rises with k; every entry equals the
// unknown on the fine grid, so the 25 best (35..59) tie at 100 in library order.
TEST_F(SearchTest, RankedEntriesKeepTheirDescriptionsThroughSmallBuffers) {
    constexpr int kEntries = 60;
    std::string slow;
    std::string fast;
    std::string names;
    std::string info;
    for (int k = 0; k < kEntries; ++k) {
        const std::string n = std::to_string(k);
        const std::string name = "Mineral" + n + ".txt\n";
        names.append(name);
        info.append("R" + n + "\n'Name " + n + "' second word\n Locality of entry " + n +
                    ", far away \nCa" + n + "(SiO4)\n532 nm\n");
        fast.append("==\n").append(name).append("100 1\n102 ");
        fast.append(std::to_string(k / 60.0)).append("\n");
        slow.append("==\n").append(name).append("100 2\n101 2\n102 2\n");
    }
    put(std::string(kSlowLibraryFile), slow);
    put(std::string(kFastLibraryFile), fast);
    put(std::string(kNameListFile), names);
    put(std::string(kNameInfoFile), info);
    std::vector<int> ranking;
    for (int k = 35; k < kEntries; ++k) {
        ranking.push_back(k);
    }
    for (int k = 34; k >= 0; --k) {
        ranking.push_back(k);
    }

    const std::vector<float> x{100, 101, 102, 103};
    const std::vector<float> y{1, 1, 1, 1};
    for (const GridSource source :
         {GridSource::TextOnly, GridSource::CacheWhenValid, GridSource::CacheWhenValid}) {
        for (const std::size_t bufferSize : {16U, 64U}) {
            READ_LIBRARY(folder(), x, y, library, {}, bufferSize, source);
            ASSERT_EQ(library.MI_SORTINDEXPERCENTS, ranking) << bufferSize;
            for (std::size_t r = 0; r < kFinePassCandidates; ++r) {
                const auto k = static_cast<std::size_t>(ranking[r]);
                const std::string n = std::to_string(k);
                EXPECT_NEAR(library.PERC_MATCH[k], 100.0, 1.0e-4) << k;
                EXPECT_EQ(library.MI_FILENAMES[k], "Mineral" + n + ".txt") << bufferSize;
                EXPECT_EQ(library.MIGRELT_ID[k], "R" + n) << bufferSize;
                EXPECT_EQ(library.MINAMES[k], "Name " + n) << bufferSize;
                EXPECT_EQ(library.LOCALITIES[k], "Locality of entry " + n + ", far away");
                EXPECT_EQ(library.CHEMISTRIES[k], "Ca" + n + "(SiO4)") << bufferSize;
                EXPECT_EQ(library.MI_WAVE[k], "532") << bufferSize;
            }
        }
    }
}

// With a "Consistency" report in the folder the name list runs one line ahead: entry k of the
// data files is scored into place k, and the last name has no data.
TEST_F(SearchTest, ConsistencyReportShiftsTheNameList) {
    std::vector<float> x;
    std::vector<float> y;
    test::twoBands(100.0F, 900.0F, 300.0F, x, y);
    std::vector<float> otherX;
    std::vector<float> otherY;
    test::twoBands(100.0F, 900.0F, 500.0F, otherX, otherY);
    put("A.txt", test::spectrumText("", otherX, otherY));
    put("ConsistencyReport.rsf", "report\n");
    put("Z.txt", test::spectrumText("", x, y));
    searchLibrary(home.path(), x, y, library);
    ASSERT_EQ(library.count(), 3);
    EXPECT_EQ(library.MI_FILENAMES[1], "ConsistencyReport.rsf");
    // Single-precision sums over ~1,600 squares: 100 to a few 1e-6 relative.
    EXPECT_NEAR(library.PERC_MATCH[1], 100.0, 1.0e-3) << "Z.txt's score under the shifted name";
    EXPECT_EQ(library.PERC_MATCH[2], 0.0);
}

TEST_F(SearchTest, BadLibrariesAndUnknowns) {
    std::vector<float> x;
    std::vector<float> y;
    test::twoBands(100.0F, 900.0F, 300.0F, x, y);
    const auto messageOf = [&](std::span<const float> ux, std::span<const float> uy) {
        try {
            searchLibrary(home.path(), ux, uy, library);
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), kLibraryErrorTitle);
            return error.text();
        }
        return std::string("no error");
    };
    EXPECT_NE(messageOf(x, y).find("is empty"), std::string::npos);

    put("ref.txt", test::spectrumText("", x, y));
    CREATE_SEARCH_LIB(home.path());
    const std::vector<float> zeros(x.size(), 0.0F);
    EXPECT_NE(messageOf(x, zeros).find("no intensity"), std::string::npos);
    EXPECT_NE(messageOf({}, {}).find("no data points"), std::string::npos);
    EXPECT_EQ(library.count(), 0) << "a failed search leaves the results as they were";

    // An unknown outside every entry scores 0 everywhere.
    const std::vector<float> farX{2000, 2001, 2002, 2003};
    const std::vector<float> farY{1, 2, 3, 4};
    searchLibrary(home.path(), farX, farY, library);
    EXPECT_EQ(library.PERC_MATCH, std::vector<double>{0.0});

    // A library file cut in the middle of an entry: the sum of what is there.
    const std::string slow = test::readFile(folder() / kSlowLibraryFile);
    put(std::string(kSlowLibraryFile), slow.substr(0, slow.size() / 2));
    searchLibrary(home.path(), x, y, library);
    EXPECT_GT(library.PERC_MATCH[0], 0.0);

    std::filesystem::remove(folder() / kFastLibraryFile);
    EXPECT_EQ(messageOf(x, y), kNeedsCompilingText);

    // A library folder that cannot be created (here a file is in its place; a read-only parent
    // does the same): the message names the folder, not a library to compile.
    std::filesystem::remove_all(folder());
    std::ofstream(folder()) << "not a folder";
    EXPECT_NE(messageOf(x, y).find("The folder " + folder().string() + " cannot be created"),
              std::string::npos);
}

// Entries whose description lines straddle the read buffer's refills keep their own text: the
// descriptions are read through buffers far smaller than the files.
TEST(LoadLibraryEntries, DescriptionsSurviveBufferRefills) {
    test::TempFolder folder;
    constexpr int kEntries = 40;
    std::string names;
    std::string info;
    for (int k = 0; k < kEntries; ++k) {
        const std::string n = std::to_string(k);
        names += "Mineral" + n + ".txt\n";
        info += "R" + n + "\nName" + n + "\nLocality of entry " + n + ", far away\nCa" + n +
                "(SiO4)\n" + std::to_string(500 + k) + "\n";
    }
    folder.write(kNameListFile, names);
    folder.write(kNameInfoFile, info);
    for (const std::size_t bufferSize : {1U, 7U, 64U, 1000U}) {
        const LIBRARY_GLOBALS library = loadLibraryEntries(folder.path(), bufferSize);
        ASSERT_EQ(library.MI_FILENAMES.size(), std::size_t{kEntries}) << bufferSize;
        for (std::size_t k = 0; k < kEntries; ++k) {
            const std::string n = std::to_string(k);
            ASSERT_EQ(library.MI_FILENAMES[k], "Mineral" + n + ".txt") << bufferSize;
            ASSERT_EQ(library.MIGRELT_ID[k], "R" + n) << bufferSize;
            ASSERT_EQ(library.MINAMES[k], "Name" + n) << bufferSize;
            ASSERT_EQ(library.LOCALITIES[k], "Locality of entry " + n + ", far away") << bufferSize;
            ASSERT_EQ(library.CHEMISTRIES[k], "Ca" + n + "(SiO4)") << bufferSize;
            ASSERT_EQ(library.MI_WAVE[k], std::to_string(500 + k)) << bufferSize;
        }
    }
}

} // namespace
} // namespace quarvex
