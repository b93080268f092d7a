// "QV.ini": defaults, the write/read round trip and the stop at the first unreadable value.
#include "shell/Preferences.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace quarvex {
namespace {

bool samePreferences(const Preferences& a, const Preferences& b) {
    return a.compileLibraryAtStart == b.compileLibraryAtStart &&
           a.profileSetting == b.profileSetting && a.machineErrorSearch == b.machineErrorSearch &&
           a.reportIterations == b.reportIterations && a.stackSpectra == b.stackSpectra &&
           a.noiseSegments == b.noiseSegments && a.peakThreshold == b.peakThreshold &&
           a.matchTolerance == b.matchTolerance && a.xrayWavelength == b.xrayWavelength &&
           a.searchRangeStart == b.searchRangeStart && a.searchRangeEnd == b.searchRangeEnd &&
           a.resultsShown == b.resultsShown && a.peakSmoothingPoints == b.peakSmoothingPoints &&
           a.peakMinSeparation == b.peakMinSeparation && a.reverseXAxis == b.reverseXAxis &&
           a.showGrid == b.showGrid;
}

TEST(Preferences, WrittenValuesReadBackExactly) {
    test::TempFolder home;
    Preferences changed;
    changed.compileLibraryAtStart = false;
    changed.profileSetting = 1;
    changed.noiseSegments = 16;
    changed.matchTolerance = 0.07F;
    changed.xrayWavelength = 1.7889996F;
    changed.searchRangeEnd = 1800;
    changed.showGrid = false;
    INI_PREF_SETUP(1, home.path(), changed);

    Preferences read;
    INI_PREF_SETUP(2, home.path(), read);
    EXPECT_TRUE(samePreferences(read, changed));

    const std::string text = test::readFile(home.path() / "QV.ini");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 16);
    EXPECT_NE(text.find(std::string(25 - 4, ' ') + "0.07\n"), std::string::npos)
        << "a real is written as the text of a 25-character field:\n"
        << text;
}

TEST(Preferences, ReadingStopsAtTheFirstUnreadableValue) {
    struct Case {
        const char* file;
        bool compile;
        int profile;
        bool machineError;
        int segments;
    };
    const Preferences defaults;
    const Case cases[] = {
        // Three values: those three, the defaults for the other thirteen.
        {" F\n 1\n F\n", false, 1, false, defaults.noiseSegments},
        // The second value is not an integer: it and all later ones keep their defaults.
        {" F\n two\n F\n F\n F\n 8\n", false, defaults.profileSetting, defaults.machineErrorSearch,
         defaults.noiseSegments},
        // Blank lines are passed over on the way to a value; a slash keeps a value as it is.
        {"\n F\n\n 1\n /\n T\n T\n 8\n", false, 1, defaults.machineErrorSearch, 8},
        {"", defaults.compileLibraryAtStart, defaults.profileSetting, defaults.machineErrorSearch,
         defaults.noiseSegments},
    };
    for (const Case& c : cases) {
        test::TempFolder home;
        home.write("QV.ini", c.file);
        Preferences read;
        INI_PREF_SETUP(2, home.path(), read);
        EXPECT_EQ(read.compileLibraryAtStart, c.compile) << c.file;
        EXPECT_EQ(read.profileSetting, c.profile) << c.file;
        EXPECT_EQ(read.machineErrorSearch, c.machineError) << c.file;
        EXPECT_EQ(read.noiseSegments, c.segments) << c.file;
        EXPECT_EQ(read.showGrid, defaults.showGrid) << c.file;
    }
}

TEST(Preferences, MissingFileKeepsEveryDefault) {
    test::TempFolder home;
    Preferences read;
    read.profileSetting = 7;
    INI_PREF_SETUP(2, home.path(), read);
    EXPECT_EQ(read.profileSetting, 7);
    INI_PREF_SETUP(1, home.path() / "missing-folder", read); // silently gives up
}

TEST(Preferences, UnreadableFileKeepsEveryDefaultWithoutAWord) {
    test::TempFolder home;
    const std::filesystem::path file = home.path() / "QV.ini";
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); // no writer: opening it must not wait for one
    Preferences read;
    EXPECT_NO_THROW(INI_PREF_SETUP(2, home.path(), read));
    EXPECT_TRUE(samePreferences(read, Preferences{}));
}

} // namespace
} // namespace quarvex
