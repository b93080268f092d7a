// The spectrum file reader: keys, comment block, point order, calibrated files and bad input.
#include "specdata/SpecDataManager.h"

#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <optional>

namespace quarvex {
namespace {

constexpr const char* kExample = "data/raman/examples/calcite_bwtek_532nm_icv.txt";

TEST(SpecDataManager, ReadsHeaderCommentAndPoints) {
    test::TempFolder folder;
    const auto path = folder.write("sample_785.txt", "##NAMES=Calcite, Iceland spar   \n"
                                                     "##LOCALITY= Chihuahua, Mexico\n"
                                                     "##GRELTID=R050048\n"
                                                     "##CHEMISTRY=CaCO3\n"
                                                     "##OTHER=ignored header\n"
                                                     "<COM>\n"
                                                     "dtype:  XRD \n"
                                                     "wave: 1.5406\n"
                                                     "##NAMES=inside the comment: not a key\n"
                                                     "5 5\n"
                                                     "</COM>\n"
                                                     "##names=lower case is not a key\n"
                                                     "some text line\n"
                                                     "100.5, 7\n"
                                                     "101.5 8.25\r\n"
                                                     "102.5,9e1\n");
    SPECDATA_GLOBALS s;
    MINERALINFO info;
    const int k = READ_SPECDATA_FILE(s, info, path);
    EXPECT_EQ(k, 0);
    EXPECT_EQ(info.names, "Calcite, Iceland spar");
    EXPECT_EQ(info.locality, " Chihuahua, Mexico") << "the value starts right after the key";
    EXPECT_EQ(info.id, "R050048");
    EXPECT_EQ(info.chemistry, "CaCO3");
    EXPECT_EQ(s.HEADER[0].names, info.names) << "each spectrum keeps its header values";
    EXPECT_EQ(s.DTYPE[0], "XRD");
    EXPECT_EQ(s.WAVE_INFO[0], "1.5406");
    EXPECT_EQ(s.NAME[0], "sample_785.txt");
    EXPECT_EQ(s.PATH[0], path.string());
    ASSERT_EQ(s.NUMDATA[0], 3);
    EXPECT_EQ(std::vector<float>(s.xValues(0).begin(), s.xValues(0).end()),
              (std::vector<float>{100.5F, 101.5F, 102.5F}));
    EXPECT_EQ(s.Y_EXTREMES[0], (std::array<float, 2>{7.0F, 90.0F}));
}

TEST(SpecDataManager, OrdersPointsAndMergesDuplicateX) {
    test::TempFolder folder;
    const auto path = folder.write("unsorted.txt", "3 30\n1 10\n2 20\n1 14\n3 31\n");
    SPECDATA_GLOBALS s;
    MINERALINFO info;
    READ_SPECDATA_FILE(s, info, path);
    EXPECT_EQ(s.DTYPE[0], "RAMAN") << "default data type";
    EXPECT_EQ(std::vector<float>(s.xValues(0).begin(), s.xValues(0).end()),
              (std::vector<float>{1.0F, 2.0F, 3.0F}));
    EXPECT_EQ(std::vector<float>(s.yValues(0).begin(), s.yValues(0).end()),
              (std::vector<float>{12.0F, 20.0F, 30.5F}));
}

TEST(SpecDataManager, ComputesCalibratedXInSinglePrecision) {
    struct Case {
        const char* file;
        std::vector<float> x;
        std::vector<float> y;
        const char* dtype;
    };
    const Case cases[] = {
        // x(i) = 0.25 i^2 + 2 i + 10 for channels 1, 2, 3 (values exact in binary).
        {"CAL_OFFSET 10\nCAL_SLOPE= 2\nCAL_QUAD: 0.25\n5\n6\n7\n",
         {12.25F, 15.0F, 18.25F},
         {5.0F, 6.0F, 7.0F},
         "ENERGY"},
        // Two values per line: the second is the channel's value; TWO_THETA marks the axis.
        {"TWO_THETA\nCAL_OFFSET 5\nCAL_SLOPE 0.5\n1 50\n2 60\n",
         {5.5F, 6.0F},
         {50.0F, 60.0F},
         "XRD"},
        // The sum in single precision: 0.1 + 100 rounds in float.
        {"CAL_OFFSET 100\nCAL_SLOPE 0.1\n1\n", {0.1F + 100.0F}, {1.0F}, "ENERGY"},
        // A falling calibration still yields ascending x.
        {"CAL_OFFSET 10\nCAL_SLOPE -1\n<COM>\ndtype: RAMAN\n</COM>\n1\n2\n",
         {8.0F, 9.0F},
         {2.0F, 1.0F},
         "RAMAN"},
    };
    test::TempFolder folder;
    for (const Case& c : cases) {
        SPECDATA_GLOBALS s;
        MINERALINFO info;
        READ_SPECDATA_FILE(s, info, folder.write("calibrated.dat", c.file));
        EXPECT_EQ(std::vector<float>(s.xValues(0).begin(), s.xValues(0).end()), c.x) << c.file;
        EXPECT_EQ(std::vector<float>(s.yValues(0).begin(), s.yValues(0).end()), c.y) << c.file;
        EXPECT_EQ(s.DTYPE[0], c.dtype) << c.file;
    }
}

TEST(SpecDataManager, ToleratesLongLinesAndUnclosedComments) {
    test::TempFolder folder;
    SPECDATA_GLOBALS s;
    MINERALINFO info;
    // A 300-character line is cut at 256: its two leading numbers still make a point.
    READ_SPECDATA_FILE(s, info, folder.write("long.txt", "1 2 " + std::string(296, 'x') + "\n"));
    EXPECT_EQ(s.NUMDATA[0], 1);
    // A header value is cut at 255 characters.
    READ_SPECDATA_FILE(s, info,
                       folder.write("names.txt", "##NAMES=" + std::string(248, 'n') + "\n1 2\n"));
    EXPECT_EQ(info.names.size(), 248U);
    READ_SPECDATA_FILE(s, info, folder.write("more.txt", "1 2\n<COM>\ndtype: XRD\n3 4\n"));
    EXPECT_EQ(s.NUMDATA[2], 1) << "lines of an unclosed comment block are not data";
    EXPECT_EQ(s.DTYPE[2], "XRD");
}

struct SkippedCase {
    const char* what;
    std::string content;
    int points;
    SkippedLines skipped;
    std::string told;
};

// A line that is neither a key nor two clean numbers is passed over, and counted: a number with
// letters in it ("12x3", "O3") or out of every range ("1e9999") is no number.
TEST(SpecDataManager, CountsTheLinesItPassesOver) {
    const std::vector<SkippedCase> cases = {
        {"clean", "##NAMES=Quartz\n##DATE=today\n\n   \n1 2\n3 4 5\n", 2, {}, ""},
        {"letters in numbers",
         "##NAMES=Quartz\n1 2\n12x3 5\n3 4\nO3 7\n5 6x\n",
         2,
         {3, 3, false},
         "3 lines skipped (not two numbers), first at line 3"},
        {"one number and a word",
         "1 2\n1e9999 5\n7\nwavenumber intensity\n",
         1,
         {3, 2, false},
         "3 lines skipped (not two numbers), first at line 2"},
        {"comment block lines are not counted",
         "<COM>\nmeasured today\n</COM>\n1 2\nx\n",
         1,
         {1, 5, false},
         "1 line skipped (not two numbers), first at line 5"},
        {"calibrated",
         "CAL_OFFSET 1\nCAL_SLOPE 2\n5\nchannel\n6 7\n",
         2,
         {1, 4, true},
         "1 line skipped (not one or two numbers), first at line 4"},
    };
    test::TempFolder folder;
    for (const SkippedCase& c : cases) {
        SPECDATA_GLOBALS s;
        MINERALINFO info;
        SkippedLines skipped{99, 99, true};
        READ_SPECDATA_FILE(s, info, folder.write("skipped.txt", c.content), &skipped);
        EXPECT_EQ(s.NUMDATA[0], c.points) << c.what;
        EXPECT_EQ(skipped.count, c.skipped.count) << c.what;
        EXPECT_EQ(skipped.firstLine, c.skipped.firstLine) << c.what;
        EXPECT_EQ(describeSkipped(skipped), c.told) << c.what;
    }
    // A file of nothing but such lines says so in its message.
    SPECDATA_GLOBALS s;
    MINERALINFO info;
    try {
        READ_SPECDATA_FILE(s, info, folder.write("words.txt", "##NAMES=Q\nno data\n12x3 4\n"));
        ADD_FAILURE() << "no error";
    } catch (const QuarvexError& error) {
        EXPECT_NE(error.text().find(": 2 lines skipped (not two numbers), first at line 2"),
                  std::string::npos)
            << error.text();
    }
}

struct BadInput {
    const char* what;
    std::optional<std::string> content; // no content: the path does not exist
    std::string text;                   // expected message text (a prefix will do)
    std::string title;
};

TEST(SpecDataManager, BadInputLeavesTheLoadedSpectraUnchanged) {
    test::TempFolder folder;
    const std::string dataError(kDataFileErrorTitle);
    const std::vector<BadInput> cases = {
        {"missing", std::nullopt, "ERROR WITH INCOMING DATA, FILE READ", "SHARING ERROR"},
        {"a folder", "folder", "ERROR WITH INCOMING DATA, FILE READ", "SHARING ERROR"},
        {"empty", "", "No data points found in ", dataError},
        {"headers only", "##NAMES=Quartz\n<COM>\ndtype: RAMAN\n</COM>\ntext\n",
         "No data points found in ", dataError},
        {"binary",
         std::string("\x7f"
                     "ELF\0\0\x01 2\n3 4\n",
                     14),
         "", dataError},
        {"NaN", "1 2\n2 nan\n3 4\n", "", dataError},
        {"Inf", "1 2\n-inf 3\n", "", dataError},
        {"beyond float", "1 2\n2 1e60\n", "", dataError},
        {"unclosed comment", "<COM>\n1 2\n3 4\n", "No data points found in ", dataError},
        {"lower-case keys only", "##names=Quartz\n<com>\n", "No data points found in ", dataError},
        {"calibrated without slope", "CAL_OFFSET 1\n5\n", "", dataError},
        {"calibration without number", "CAL_OFFSET\nCAL_SLOPE 1\n5\n", "", dataError},
    };
    for (const BadInput& c : cases) {
        SPECDATA_GLOBALS s;
        MINERALINFO info;
        READ_SPECDATA_FILE(s, info, test::sourcePath(kExample));
        const MINERALINFO before = info;
        const std::vector<float> x = s.X;
        auto path = c.content ? folder.write("bad.txt", *c.content) : folder.path() / "missing.txt";
        if (c.content == "folder") {
            path = folder.path();
        }
        try {
            READ_SPECDATA_FILE(s, info, path);
            ADD_FAILURE() << c.what << ": no error";
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), c.title) << c.what;
            EXPECT_EQ(error.text().rfind(c.text, 0), 0U) << c.what << ": " << error.text();
        }
        EXPECT_EQ(s.count(), 1) << c.what;
        EXPECT_EQ(s.X, x) << c.what;
        EXPECT_EQ(info.names, before.names) << c.what;
    }
}

TEST(SpecDataManager, LoadsFiveMillionLines) {
    test::TempFolder folder;
    std::string content;
    content.reserve(60'000'000);
    for (int i = 0; i < 5'000'000; ++i) {
        content += std::to_string(i);
        content += " 1\n";
    }
    SPECDATA_GLOBALS s;
    MINERALINFO info;
    READ_SPECDATA_FILE(s, info, folder.write("huge.txt", content));
    EXPECT_EQ(s.NUMDATA[0], 5'000'000);
    EXPECT_EQ(s.pointDimension, 5'000'000);
    EXPECT_EQ(s.xValues(0).back(), 4999999.0F);
}

TEST(SpecDataManager, FilterListPutsThePreviousTypeFirst) {
    EXPECT_EQ(fileFilterForPreviousExtension(".grelt").substr(0, 21), "GRELT Files (*.grelt)");
    EXPECT_EQ(fileFilterForPreviousExtension(".txt").substr(0, 18), "Text Files (*.txt)");
    EXPECT_EQ(fileFilterForPreviousExtension(".dat").substr(0, 15), "All Files (*.*)");
    EXPECT_EQ(fileFilterForPreviousExtension(".TXT").substr(0, 15), "All Files (*.*)");
}

} // namespace
} // namespace quarvex
