// Start-up and shut-down: home folder, working folders, reference file, colour table.
#include "shell/StartUp.h"

#include "common/WorkingFolders.h"
#include "shell/ReferenceFile.h"
#include "specdata/SpecDataManager.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace quarvex {
namespace {

TEST(StartUp, CreatesFoldersReferenceFileAndPreferences) {
    test::TempFolder home;
    ProgramState state;
    startUp(state, home.path());
    for (const char* folder : {"UndoRecords", "SearchRecords", "SearchRecords/RamanLib",
                               "SearchRecords/XrayLib", "RecentFiles", "TempFold"}) {
        EXPECT_TRUE(std::filesystem::is_directory(home.path() / folder)) << folder;
    }
    std::istringstream reference(test::readFile(home.path() / "ForReference.txt"));
    std::vector<std::size_t> lengths;
    for (std::string line; std::getline(reference, line);) {
        lengths.push_back(line.size());
    }
    EXPECT_EQ(lengths, (std::vector<std::size_t>{71, 70, 69, 61, 56}));

    state.quarvex.preferences.resultsShown = 40;
    READ_SPECDATA_FILE(state.specdata, state.mineralInfo,
                       test::sourcePath("data/raman/examples/calcite_bwtek_532nm_icv.txt"));
    shutDown(state);
    EXPECT_EQ(state.specdata.count(), 0) << "shut-down releases the spectra";
    Preferences reread;
    INI_PREF_SETUP(2, home.path(), reread);
    EXPECT_EQ(reread.resultsShown, 40) << "shut-down writes the preferences";
}

TEST(StartUp, ExistingFoldersAreLeftAsTheyAre) {
    test::TempFolder home;
    SET_UP_FOLDERS(home.path());
    const auto kept = home.write("TempFold/work.txt", "keep me");
    SET_UP_FOLDERS(home.path());
    EXPECT_EQ(test::readFile(kept), "keep me");

    const auto blocked = home.write("blocked", "a file where a folder should be");
    SET_UP_FOLDERS(blocked); // cannot create anything: silently ignored
    EXPECT_TRUE(std::filesystem::is_regular_file(blocked));
}

TEST(ColourTable, FixedEntriesThenRandomOnes) {
    PAINTINGGLOBALS first;
    PAINTINGGLOBALS second;
    SET_UP_RAND_BRUSHES(first);
    SET_UP_RAND_BRUSHES(second);
    const int fixed[6][3] = {{255, 0, 0},    {30, 144, 255},  {0, 255, 0},
                             {106, 90, 205}, {100, 149, 237}, {218, 165, 32}};
    for (int k = 0; k < 6; ++k) {
        const SpectrumColour& c = first.RAND_BRUSH[static_cast<std::size_t>(k)];
        EXPECT_EQ(c.red * 255.0F, static_cast<float>(fixed[k][0])) << "entry " << k + 1;
        EXPECT_EQ(c.green * 255.0F, static_cast<float>(fixed[k][1])) << "entry " << k + 1;
        EXPECT_EQ(c.blue * 255.0F, static_cast<float>(fixed[k][2])) << "entry " << k + 1;
    }
    int differing = 0;
    for (std::size_t k = 6; k < 50; ++k) {
        const SpectrumColour& a = first.RAND_BRUSH[k];
        const SpectrumColour& b = second.RAND_BRUSH[k];
        for (float fraction : {a.red, a.green, a.blue}) {
            EXPECT_TRUE(fraction >= 0.0F && fraction <= 1.0F) << "entry " << k + 1;
        }
        differing += (a.red != b.red || a.green != b.green || a.blue != b.blue) ? 1 : 0;
    }
    EXPECT_GT(differing, 40) << "entries 7 to 50 differ from one start to the next";
}

// Spectra from number 7 on can be told apart: no two entries nearly alike, none too pale.
TEST(ColourTable, RandomEntriesAreDistinct) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        PAINTINGGLOBALS painting;
        SET_UP_RAND_BRUSHES(painting, seed);
        for (std::size_t k = 6; k < 50; ++k) {
            const SpectrumColour& a = painting.RAND_BRUSH[k];
            EXPECT_LE(0.299F * a.red + 0.587F * a.green + 0.114F * a.blue, 0.8F) << k + 1;
            for (std::size_t j = 0; j < k; ++j) {
                const SpectrumColour& b = painting.RAND_BRUSH[j];
                const float d = std::hypot(a.red - b.red, a.green - b.green, a.blue - b.blue);
                EXPECT_GE(d, 0.2F) << "entries " << j + 1 << " and " << k + 1 << ", seed " << seed;
            }
        }
    }
}

} // namespace
} // namespace quarvex
