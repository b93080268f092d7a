// The SPC reader over files written by data/make_spc.py from known arrays: every variant gives
// the counts, ends and extremes the script stored; every refused file gives its message.
#include "readers/SpcReader.h"

#include "ReaderTestTables.h"
#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>

namespace quarvex {
namespace {

TEST(SpcReader, EveryVariantGivesTheStoredValues) {
    const auto folder = test::sourcePath("tests/readers/data/spc");
    const auto rows = test::tableRows(folder / "expected.tsv");
    ASSERT_GE(rows.size(), 12U);
    std::string loadedFile;
    std::vector<SpectrumRecord> records;
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 9U);
        const std::string what = row[0] + " subfile " + row[1];
        if (row[0] != loadedFile) {
            records = readSpcFile(folder / row[0]);
            loadedFile = row[0];
        }
        const auto sub = static_cast<std::size_t>(std::stoi(row[1]) - 1);
        ASSERT_LT(sub, records.size()) << what;
        const SpectrumRecord& record = records[sub];
        ASSERT_EQ(record.x.size(), static_cast<std::size_t>(std::stoi(row[2]))) << what;
        ASSERT_EQ(record.y.size(), record.x.size()) << what;
        test::expectNear(record.x.front(), row[3], what + " first x");
        test::expectNear(record.x.back(), row[4], what + " last x");
        const auto [yMin, yMax] = std::minmax_element(record.y.begin(), record.y.end());
        test::expectNear(*yMin, row[5], what + " smallest y");
        test::expectNear(*yMax, row[6], what + " largest y");
        EXPECT_EQ(record.dtype, row[7]) << what;
        EXPECT_EQ(record.name, row[8]) << what;
        EXPECT_TRUE(std::is_sorted(record.x.begin(), record.x.end())) << what;
    }
}

TEST(SpcReader, SubfileCountsOfMultiFiles) {
    const auto folder = test::sourcePath("tests/readers/data/spc");
    EXPECT_EQ(readSpcFile(folder / "new_multi.spc").size(), 3U);
    EXPECT_EQ(readSpcFile(folder / "new_multi_xy.spc").size(), 2U);
}

TEST(SpcReader, UnitsWithoutAnAxisAreKeptAndSaid) {
    const auto records = readSpcFile(test::sourcePath("tests/readers/data/spc/new_xvalues.spc"));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_NE(std::find(records[0].comments.begin(), records[0].comments.end(),
                        "SPC x unit: nanometres (x kept as read)"),
              records[0].comments.end());
}

TEST(SpcReader, RefusedFilesGiveTheirMessage) {
    const auto folder = test::sourcePath("tests/readers/data/spc_bad");
    const auto rows = test::tableRows(folder / "expected.tsv");
    ASSERT_GE(rows.size(), 13U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 2U);
        try {
            readSpcFile(folder / row[0]);
            ADD_FAILURE() << row[0] << " was read";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(row[1]), std::string::npos)
                << row[0] << ": " << error.text();
        }
    }
}

TEST(SpcReader, EmptyAndMissingFilesAreRefused) {
    test::TempFolder folder;
    EXPECT_THROW(readSpcFile(folder.write("empty.spc", "")), QuarvexError);
    EXPECT_THROW(readSpcFile(folder.path() / "missing.spc"), QuarvexError);
    const auto pipe = folder.path() / "pipe.spc";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(readSpcFile(pipe), QuarvexError); // must not wait for a writer
}

TEST(SpcReader, DetectionByContentAndExtension) {
    const auto folder = test::sourcePath("tests/readers/data/spc");
    const std::string newHead = test::readFile(folder / "new_float.spc").substr(0, 4096);
    const std::string oldHead = test::readFile(folder / "old_int16.spc");
    struct Case {
        std::string head;
        std::string extension;
        bool expected;
    };
    const std::vector<Case> cases = {
        {newHead, "bin", true},
        {oldHead, "", true},
        {"", "spc", true},
        {newHead.substr(0, 300), "", false}, // too short for the new header
        {std::string(600, 'a'), "txt", false},
        {"1 2\n3 4\n" + std::string(600, ' '), "", false},
        {"OK, 4 lines of text\n" + std::string(600, '-'), "", false}, // 'K' second
        {"#MINERAL=Quartz\n" + std::string(600, '-'), "txt", false},  // 'M' second
    };
    for (const Case& c : cases) {
        EXPECT_EQ(looksLikeSpc(c.head, c.extension), c.expected)
            << c.extension << " head of " << c.head.size() << " bytes";
    }
}

} // namespace
} // namespace quarvex
