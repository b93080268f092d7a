// The reference-pattern list: opening files with their import records, and reordering and
// deleting patterns with every field of a pattern kept together.
#include "TestSupport.h"

#include "common/QuarvexError.h"
#include "xray/XrayDataAndFileManager.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quarvex {
namespace {

// Every field of one pattern, by value.
struct PatternSnapshot {
    std::string name, path, title, spaceGroup;
    int count = 0, sym = 0, mode = 0;
    std::array<float, 6> cell{};
    std::array<double, 2> wavelengths{};
    bool active = false;
    std::uint32_t brush = 0;
    std::vector<std::string> notes;
    std::vector<float> twoTheta, intensity, dSpacing, twoTheta2, intensity2;
    std::vector<std::array<int, 3>> hkl;
    bool operator==(const PatternSnapshot&) const = default;
};

template <class T> std::vector<T> column(const DIFF_GLOBALS& d, const std::vector<T>& v, int k) {
    const auto values = d.reflections(v, k);
    return {values.begin(), values.end()};
}

PatternSnapshot snapshot(const DIFF_GLOBALS& d, int k) {
    const auto i = static_cast<std::size_t>(k);
    return {d.NAME[i],
            d.PATH[i],
            d.TITLE[i],
            d.SPACE_GROUP[i],
            d.NUMDATA[i],
            d.SYM[i],
            d.MODE[i],
            d.CELL_PARAMS[i],
            d.WAVELENGTHS[i],
            d.ACTIVE[i],
            d.BRUSH[i],
            d.NOTES[i],
            column(d, d.TWO_THETA, k),
            column(d, d.INTENS, k),
            column(d, d.DSPACE, k),
            column(d, d.TWO_THETA2, k),
            column(d, d.INTENS2, k),
            column(d, d.HKL, k)};
}

std::filesystem::path reference(const char* name) {
    return test::sourcePath(std::string("data/xray/reference/") + name);
}

TEST(XrayDataAndFileManager, PatternsKeepEveryFieldThroughSortAndDelete) {
    test::TempFolder home;
    DIFF_GLOBALS diff;
    for (const char* name : {"Quartz.out", "Halite.out", "Silicon_Ka12.out"}) {
        OPEN_AND_READ_DIFF_FILE(diff, reference(name), home.path());
    }
    diff.ACTIVE[1] = false;
    EXPECT_EQ(diff.ACTIVE_ARRAY(), (std::vector<int>{0, 2}));
    EXPECT_EQ(diff.reflectionDimension, 28);
    const PatternSnapshot quartz = snapshot(diff, 0);
    const PatternSnapshot halite = snapshot(diff, 1);
    const PatternSnapshot silicon = snapshot(diff, 2);
    EXPECT_EQ(silicon.twoTheta2.front(), 28.52F);
    EXPECT_NE(quartz.brush, halite.brush);

    SORT_DIFF_FILE_ORDER(diff, 0, 2);
    ASSERT_EQ(diff.count(), 3);
    EXPECT_TRUE(snapshot(diff, 0) == halite);
    EXPECT_TRUE(snapshot(diff, 1) == silicon);
    EXPECT_TRUE(snapshot(diff, 2) == quartz);

    const int selected[] = {1, 7};
    DELETE_DIFF_FILES(diff, selected);
    ASSERT_EQ(diff.count(), 2);
    EXPECT_TRUE(snapshot(diff, 0) == halite);
    EXPECT_TRUE(snapshot(diff, 1) == quartz);
    EXPECT_TRUE(diff.NAME_TEMP.empty() && diff.DTT_TEMP.empty()) << "working copies released";

    const int notAPermutation[] = {0, 0};
    EXPECT_THROW(DIFF_FILE_SORT(diff, notAPermutation), std::invalid_argument);
}

TEST(XrayDataAndFileManager, TheImportRecordCopiesTheTableAsRead) {
    test::TempFolder home;
    DIFF_GLOBALS diff;
    OPEN_AND_READ_DIFF_FILE(diff, reference("Quartz.out"), home.path());
    std::istringstream file(test::readFile(reference("Quartz.out")));
    std::string expected =
        "PATH " + reference("Quartz.out").parent_path().string() + "\nNAME Quartz.out\n";
    int lineNumber = 0;
    for (std::string line; std::getline(file, line);) {
        if (++lineNumber > 5 && lineNumber <= 5 + 28) { // the 28 table lines after the heading
            expected += line + "\n";
        }
    }
    EXPECT_EQ(test::readFile(home.path() / "Quartz.imp"), expected);
}

TEST(XrayDataAndFileManager, AFailedOpenChangesNothing) {
    test::TempFolder home;
    DIFF_GLOBALS diff;
    OPEN_AND_READ_DIFF_FILE(diff, reference("Halite.out"), home.path());
    const PatternSnapshot before = snapshot(diff, 0);
    const auto binary = home.write("Binary.out", std::string("2-THETA\n\0\0\n", 11));
    EXPECT_THROW(OPEN_AND_READ_DIFF_FILE(diff, binary, home.path()), QuarvexError);
    ASSERT_EQ(diff.count(), 1);
    EXPECT_TRUE(snapshot(diff, 0) == before);
    EXPECT_FALSE(std::filesystem::exists(home.path() / "Binary.imp"));
}

} // namespace
} // namespace quarvex
