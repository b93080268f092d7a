// The view settings file: the strict reader's verdict on each kind of text, the defaults for a
// missing or damaged file, the round trip, and QV.ini left alone.
#include "shell/ViewSettings.h"

#include "TestSupport.h"
#include "shell/Preferences.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quarvex {
namespace {

struct TextCase {
    const char* name;
    std::string text;
    std::optional<bool> intensityNumbers; // nullopt: refused
};

TEST(ViewSettings, TheReaderTakesOnlyWellFormedText) {
    const TextCase cases[] = {
        {"empty", "", false},
        {"on", "intensity_numbers=1\n", true},
        {"off", "intensity_numbers=0\n", false},
        {"comments and blank lines", "# a comment\n\nintensity_numbers=1\n\n", true},
        {"CRLF line ends", "# x\r\nintensity_numbers=1\r\n", true},
        {"no final line end", "intensity_numbers=1", true},
        {"key twice", "intensity_numbers=1\nintensity_numbers=1\n", std::nullopt},
        {"unknown key", "intensity_numbers=1\nstack=1\n", std::nullopt},
        {"no equals sign", "intensity_numbers\n", std::nullopt},
        {"space around the value", "intensity_numbers= 1\n", std::nullopt},
        {"space before the key", " intensity_numbers=1\n", std::nullopt},
        {"a word for the value", "intensity_numbers=true\n", std::nullopt},
        {"a number other than 0 or 1", "intensity_numbers=2\n", std::nullopt},
        {"empty value", "intensity_numbers=\n", std::nullopt},
        {"a zero byte", std::string("intensity_numbers=1\n\0\n", 22), std::nullopt},
        {"too large", "intensity_numbers=1\n" + std::string(4096, '\n'), std::nullopt},
    };
    for (const TextCase& c : cases) {
        const std::optional<ViewSettings> read = parseViewSettings(c.text);
        ASSERT_EQ(read.has_value(), c.intensityNumbers.has_value()) << c.name;
        if (read) {
            EXPECT_EQ(read->intensityNumbers, *c.intensityNumbers) << c.name;
        }
    }
}

TEST(ViewSettings, MissingOrDamagedFilesGiveTheDefaults) {
    test::TempFolder home;
    EXPECT_FALSE(readViewSettings(home.path()).intensityNumbers);
    std::ofstream(home.path() / kViewSettingsFileName) << "intensity_numbers=1\nzoom=2\n";
    EXPECT_FALSE(readViewSettings(home.path()).intensityNumbers);
}

TEST(ViewSettings, WrittenSettingsReadBackAndLeaveQvIniAlone) {
    test::TempFolder home;
    Preferences defaults;
    INI_PREF_SETUP(1, home.path(), defaults);
    const std::string preferences = test::readFile(home.path() / kPreferencesFileName);
    for (const bool on : {true, false}) {
        ASSERT_TRUE(writeViewSettings(home.path(), ViewSettings{on}));
        EXPECT_EQ(readViewSettings(home.path()).intensityNumbers, on);
    }
    EXPECT_EQ(test::readFile(home.path() / kPreferencesFileName), preferences);
    EXPECT_FALSE(writeViewSettings(home.path() / "missing" / "folder", ViewSettings{true}));
}

} // namespace
} // namespace quarvex
