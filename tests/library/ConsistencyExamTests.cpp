// The consistency exam on small libraries with a twin, a changed file, a report file in the
// library folder and an unreadable file.
#include "LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/ConsistencyExam.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quarvex {
namespace {

class ConsistencyExamTest : public ::testing::Test {
protected:
    void SetUp() override { SET_UP_FOLDERS(home.path()); }

    // A reference file of two bands, the first at `band`.
    void put(const std::string& name, float band) const {
        std::vector<float> x;
        std::vector<float> y;
        test::twoBands(100.0F, 900.0F, band, x, y);
        std::ofstream(ramanLibraryFolder(home.path()) / name)
            << test::spectrumText("##NAMES=" + name.substr(0, 1) + "ite\n", x, y);
    }

    const ExaminedEntry& entry(const ConsistencyExamResult& exam, const std::string& file) const {
        for (const ExaminedEntry& e : exam.entries) {
            if (e.fileName == file) {
                return e;
            }
        }
        throw std::runtime_error("no entry " + file);
    }

    test::TempFolder home;
};

TEST_F(ConsistencyExamTest, FindsTwinsChangedFilesAndReportFiles) {
    put("A.txt", 300.0F);
    put("B.txt", 300.0F); // A's twin
    put("C.txt", 500.0F);
    put("D.txt", 650.0F);
    std::ofstream(ramanLibraryFolder(home.path()) / "E.txt") << "not a spectrum\n";
    CREATE_SEARCH_LIB(home.path());
    put("C.txt", 501.5F); // changed a little after the compilation

    std::vector<std::pair<std::string, double>> progress;
    const ConsistencyExamResult exam =
        runConsistencyExam(home.path(), [&progress](std::string_view status, double fraction) {
            progress.emplace_back(status, fraction);
        });
    EXPECT_FALSE(exam.compilation) << "a compiled library is examined as it is";
    ASSERT_EQ(exam.entries.size(), 4U) << "E.txt was left out of the library";

    const struct {
        const char* file;
        int rank;
        int closest; // 0: not checked
        bool full;
        bool close;
    } rows[] = {
        {"A.txt", 1, 2, true, true},   // the twin scores 100 too, but A comes first
        {"B.txt", 2, 1, true, true},   // equal scores keep library order: B is second
        {"C.txt", 1, 0, false, false}, // its file no longer matches its entry exactly
        {"D.txt", 1, 0, true, false},
    };
    for (const auto& row : rows) {
        const ExaminedEntry& e = entry(exam, row.file);
        EXPECT_TRUE(e.problem.empty()) << row.file << ": " << e.problem;
        EXPECT_EQ(e.rank, row.rank) << row.file;
        if (row.closest != 0) {
            EXPECT_EQ(e.closest, row.closest) << row.file;
        }
        EXPECT_EQ(e.scoresFull(), row.full) << row.file << " scores " << e.selfScore;
        EXPECT_EQ(e.hasCloseEntry(), row.close) << row.file << " closest " << e.closestScore;
        EXPECT_EQ(e.passes(), row.rank == 1 && row.full && !row.close) << row.file;
    }
    EXPECT_EQ(entry(exam, "A.txt").names, "Aite");
    EXPECT_EQ(exam.notFirst(), 1);
    EXPECT_EQ(exam.notFull(), 1);
    EXPECT_EQ(exam.withCloseEntry(), 2);
    EXPECT_EQ(exam.withProblem(), 0);

    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back(), std::make_pair(std::string(kConsistencyStatus), 1.0));

    // The report lists every entry, marks the ones that fail and ends with the counts.
    EXPECT_EQ(exam.report, home.path() / "SearchRecords" / "ConsistencyReport.txt");
    const std::vector<std::string> lines = test::fileLines(exam.report);
    ASSERT_GE(lines.size(), 8U);
    EXPECT_EQ(lines[0], "Raman Library Consistency Exam");
    EXPECT_EQ(lines.back(), exam.summary());
    EXPECT_EQ(exam.summary(), "4 entries examined, 1 passed: 1 not ranked first, 1 not scoring "
                              "100 themselves, 2 with another entry scoring 95 or more, 0 not "
                              "searchable.");
    std::string report;
    for (const std::string& line : lines) {
        report += line + '\n';
    }
    EXPECT_NE(report.find("    2  100.00     2        1  100.00  B.txt (Bite)\n"
                          "                                    ! ranked 2, behind entry 1; "
                          "close to entry 1 (A.txt)\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("D.txt (Dite)\n\n"), std::string::npos) << "D passes: no findings";
}

// A report file of the library folder takes a name-list line: the exam says so, and the entries
// after it no longer find themselves.
TEST_F(ConsistencyExamTest, ReportFileInTheLibraryFolder) {
    put("A.txt", 300.0F);
    std::ofstream(ramanLibraryFolder(home.path()) / "Consistency_old.txt") << "report\n";
    put("Z.txt", 500.0F);
    const ConsistencyExamResult exam = runConsistencyExam(home.path());
    ASSERT_TRUE(exam.compilation) << "a missing library is compiled first";
    ASSERT_EQ(exam.entries.size(), 3U);
    EXPECT_TRUE(exam.entries[0].passes());
    EXPECT_NE(exam.entries[1].problem.find("not a spectrum"), std::string::npos);
    EXPECT_FALSE(exam.entries[2].ranksFirst()) << "Z's data is scored under the report's name";
    EXPECT_EQ(exam.withProblem(), 1);
}

TEST_F(ConsistencyExamTest, EmptyLibraryDeletedFileAndCancel) {
    try {
        runConsistencyExam(home.path());
        FAIL() << "an empty library has nothing to examine";
    } catch (const QuarvexError& error) {
        EXPECT_NE(error.text().find("is empty"), std::string::npos) << error.text();
        EXPECT_EQ(error.title(), "Raman Library");
    }

    put("A.txt", 300.0F);
    put("B.txt", 500.0F);
    CREATE_SEARCH_LIB(home.path());
    std::filesystem::remove(ramanLibraryFolder(home.path()) / "B.txt");
    const ConsistencyExamResult exam = runConsistencyExam(home.path());
    ASSERT_EQ(exam.entries.size(), 2U);
    EXPECT_TRUE(exam.entries[0].passes());
    EXPECT_EQ(exam.entries[1].problem, "ERROR WITH INCOMING DATA, FILE READ");
    EXPECT_FALSE(exam.entries[1].passes());

    // A cancelled exam leaves the report of the last one whole.
    const std::string report = test::readFile(exam.report);
    const ProgressCallback cancel = [](std::string_view, double fraction) {
        if (fraction > 0.0) {
            throw OperationCancelled();
        }
    };
    EXPECT_THROW(runConsistencyExam(home.path(), cancel), OperationCancelled);
    EXPECT_EQ(test::readFile(exam.report), report);
}

} // namespace
} // namespace quarvex
