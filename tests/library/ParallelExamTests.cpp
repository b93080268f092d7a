// The consistency exam over the library held in memory, on several threads, gives each entry
// the scores, rank and closest rival of a separate specified search (text files, one search per
// entry), bit for bit: with a "Consistency" line shifting the name list, entries cut short by an
// unreadable line, grids holding NaN, and whether the grids come from the cache or the text.
#include "LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/ConsistencyExam.h"
#include "library/DotProdSearch.h"
#include "library/GridCache.h"
#include "library/LibraryGrids.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>

namespace quarvex {
namespace {

// 30 reference spectra of two bands each (a few twins, ranges that start late), a report file
// among them, a file without data; compiled.
std::filesystem::path compiledLibrary(const std::filesystem::path& home) {
    SET_UP_FOLDERS(home);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    for (int k = 0; k < 30; ++k) {
        std::vector<float> x;
        std::vector<float> y;
        const float from = k % 5 == 0 ? 350.0F : 100.0F + static_cast<float>(k % 4) * 0.5F;
        const float band = 200.0F + 25.0F * static_cast<float>(k % 24); // 24..29 twin 0..5
        test::twoBands(from, 1000.0F + static_cast<float>(k), band, x, y);
        std::ofstream(folder / std::string("R").append(std::to_string(100 + k)).append(".txt"))
            << test::spectrumText("##NAMES=M" + std::to_string(k) + "\n", x, y);
    }
    std::ofstream(folder / "R115_empty.txt") << "##NAMES=nothing\n";
    std::ofstream(folder / "Consistency_R110.txt") << "an old report\n";
    CREATE_SEARCH_LIB(home);
    return folder;
}

// Replaces the data line of `x` in the entry `name` of a library file.
void editLine(const std::filesystem::path& file, const std::string& name, int x,
              const std::string& line) {
    std::string text = test::readFile(file);
    const std::size_t entry = text.find(std::string("==\n").append(name).append("\n"));
    ASSERT_NE(entry, std::string::npos) << name;
    const std::size_t at =
        text.find(std::string("\n").append(std::to_string(x)).append(" "), entry);
    text.replace(at + 1, text.find('\n', at + 1) - at - 1, line);
    std::ofstream(file, std::ios::binary) << text;
}

// The exam's findings for entry `exam.entry` from a separate specified search of its file.
void expectSeparateSearchGives(const std::filesystem::path& folder, const ExaminedEntry& exam) {
    SCOPED_TRACE(exam.fileName);
    if (isNotASpectrumFile(exam.fileName)) {
        EXPECT_NE(exam.problem.find("not a spectrum"), std::string::npos);
        return;
    }
    LIBRARY_GLOBALS library;
    try {
        const SpectrumRecord spectrum = FILL_IN_SPECDATA_ARRAYS(folder / exam.fileName, 0);
        READ_LIBRARY(folder, spectrum.x, spectrum.y, library, {},
                     LibraryFileReader::kDefaultBufferSize, GridSource::TextOnly);
    } catch (const QuarvexError& error) {
        EXPECT_FALSE(exam.problem.empty());
        return;
    }
    ASSERT_EQ(exam.problem, "");
    const auto own = static_cast<std::size_t>(exam.entry - 1);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(exam.selfScore),
              std::bit_cast<std::uint64_t>(library.PERC_MATCH[own]))
        << exam.selfScore << " vs " << library.PERC_MATCH[own];
    const std::vector<int>& ranking = library.MI_SORTINDEXPERCENTS;
    const auto place = std::find(ranking.begin(), ranking.end(), static_cast<int>(own));
    EXPECT_EQ(exam.rank, place - ranking.begin() + 1);
    const int rival = ranking[place == ranking.begin() ? 1 : 0];
    EXPECT_EQ(exam.closest, rival + 1);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(exam.closestScore),
              std::bit_cast<std::uint64_t>(library.PERC_MATCH[static_cast<std::size_t>(rival)]));
}

TEST(ParallelExam, GivesWhatSeparateSearchesGiveBitForBit) {
    const test::TempFolder home;
    const std::filesystem::path folder = compiledLibrary(home.path());
    // Hand edits after the compilation: the grid cache no longer fits, the text is read.
    editLine(folder / kSlowLibraryFile, "R103.txt", 400, "not a number");  // cut short
    editLine(folder / kFastLibraryFile, "R107.txt", 500, "500 0.5 0.25x"); // cut short
    editLine(folder / kSlowLibraryFile, "R112.txt", 300, "300 nan");
    editLine(folder / kFastLibraryFile, "R120.txt", 600, "600 NaN");
    editLine(folder / kFastLibraryFile, "R121.txt", 250, "250 inf");

    const struct {
        const char* grids;
        bool cached;
    } sources[] = {{"from the text", false}, {"from the cache", true}};
    for (const auto& source : sources) {
        SCOPED_TRACE(source.grids);
        if (source.cached) {
            ASSERT_TRUE(writeGridCache(folder));
        }
        EXPECT_EQ(LibraryGrids::load(folder).fromCache(), source.cached);
        for (const unsigned workers : {1U, 2U, 3U}) {
            const ConsistencyExamResult exam = runConsistencyExam(home.path(), {}, workers);
            ASSERT_EQ(exam.entries.size(), 31U) << "30 spectra and the report's line";
            int nans = 0;
            for (const ExaminedEntry& entry : exam.entries) {
                expectSeparateSearchGives(folder, entry);
                nans += std::isnan(entry.selfScore) || std::isnan(entry.closestScore) ? 1 : 0;
            }
            EXPECT_GT(nans, 0) << "the NaN values reach some scores";
            EXPECT_GT(exam.notFirst(), 0) << "entries after the report's line rank late";
        }
    }
}

TEST(ParallelExam, ProgressFromTheCallingThreadAndCancel) {
    const test::TempFolder home;
    compiledLibrary(home.path());
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<double> fractions;
    runConsistencyExam(
        home.path(),
        [&](std::string_view, double fraction) {
            EXPECT_TRUE(std::this_thread::get_id() == caller);
            fractions.push_back(fraction);
        },
        3);
    ASSERT_GE(fractions.size(), 2U);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_EQ(fractions.back(), 1.0);

    int calls = 0;
    // The second report comes after an entry or at the end, however the threads are scheduled.
    const ProgressCallback cancelAtTheSecond = [&calls](std::string_view, double) {
        if (++calls == 2) {
            throw OperationCancelled();
        }
    };
    const std::filesystem::path report = home.path() / "SearchRecords" / "ConsistencyReport.txt";
    const std::string before = test::readFile(report);
    EXPECT_THROW(runConsistencyExam(home.path(), cancelAtTheSecond, 3), OperationCancelled);
    EXPECT_EQ(calls, 2) << "no report once cancelled";
    EXPECT_EQ(test::readFile(report), before);
}

} // namespace
} // namespace quarvex
