// The choice of the home folder and the seeding of a home from the shipped data.
#include "shell/HomeFolder.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <unistd.h>

namespace quarvex {
namespace {

namespace fs = std::filesystem;

TEST(HomeFolder, ChosenByOptionEnvironmentPortableCopyThenUserData) {
    test::TempFolder root;
    const fs::path portable = root.path() / "portable";
    const fs::path installed = root.path() / "installed-bin";
    const fs::path blocked = root.path() / "blocked-bin";
    fs::create_directories(portable / "SearchRecords");
    fs::create_directories(installed);
    fs::create_directories(blocked);
    root.write("blocked-bin/SearchRecords", "a file, not the working folder");

    struct Row {
        const char* name;
        HomeLookup lookup;
        fs::path folder;
        HomeSource source;
    };
    const Row rows[] = {
        {"option beats everything",
         {"/opt-home", "/env-home", "/xdg", "/u", portable},
         "/opt-home",
         HomeSource::Option},
        {"empty option counts as unset",
         {fs::path(), "/env-home", "/xdg", "/u", portable},
         "/env-home",
         HomeSource::Environment},
        {"environment beats a portable copy",
         {std::nullopt, "/env-home", "", "/u", portable},
         "/env-home",
         HomeSource::Environment},
        {"portable copy with its working folders",
         {std::nullopt, "", "/xdg", "/u", portable},
         portable,
         HomeSource::ExecutableFolder},
        {"installed program: XDG_DATA_HOME",
         {std::nullopt, "", "/xdg", "/u", installed},
         "/xdg/quarvex",
         HomeSource::UserData},
        {"installed program: default data folder",
         {std::nullopt, "", "", "/u", installed},
         "/u/.local/share/quarvex",
         HomeSource::UserData},
        {"relative XDG_DATA_HOME is ignored",
         {std::nullopt, "", "rel/data", "/u", installed},
         "/u/.local/share/quarvex",
         HomeSource::UserData},
        {"SearchRecords must be a folder",
         {std::nullopt, "", "", "/u", blocked},
         "/u/.local/share/quarvex",
         HomeSource::UserData},
    };
    for (const Row& row : rows) {
        const HomeChoice choice = chooseHomeFolder(row.lookup);
        EXPECT_EQ(choice.folder, row.folder) << row.name;
        EXPECT_EQ(choice.source, row.source) << row.name;
    }
}

TEST(HomeFolder, ReadOnlyPortableCopyIsNotAHome) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write to every folder";
    }
    test::TempFolder root;
    fs::create_directories(root.path() / "bin" / "SearchRecords");
    fs::permissions(root.path() / "bin", fs::perms::owner_write, fs::perm_options::remove);
    const HomeChoice choice = chooseHomeFolder({std::nullopt, "", "", "/u", root.path() / "bin"});
    fs::permissions(root.path() / "bin", fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(choice.source, HomeSource::UserData);
}

TEST(HomeFolder, ThisProcessReadsItsEnvironment) {
    ::setenv("QUARVEX_HOME", "/from-environment", 1);
    ::setenv("XDG_DATA_HOME", "/xdg-data", 1);
    const HomeLookup lookup = homeLookupOfThisProcess(fs::path("/from-option"));
    ::unsetenv("QUARVEX_HOME");
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(lookup.option, fs::path("/from-option"));
    EXPECT_EQ(lookup.quarvexHome, "/from-environment");
    EXPECT_EQ(lookup.xdgDataHome, "/xdg-data");
    EXPECT_FALSE(lookup.userHome.empty());
}

// One home through the life of several installs: each step changes the home or the shipped
// data, seeds, and states what was copied and what the home's files hold afterwards.
class Seeding : public ::testing::Test {
protected:
    void put(const fs::path& file, const std::string& content) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }
    fs::path lib(const char* name) const { return fs::path("SearchRecords/RamanLib") / name; }
    fs::path xray(const char* name) const { return fs::path("SearchRecords/XrayLib") / name; }

    test::TempFolder root;
    fs::path shipped = root.path() / "share" / "quarvex";
    fs::path home = root.path() / "new-home";
};

TEST_F(Seeding, NewFilesComeInUserFilesStay) {
    put(shipped / lib("Calcite_1.txt"), "shipped calcite v1");
    put(shipped / lib("Quartz_2.txt"), "shipped quartz v1");
    put(shipped / xray("Quartz.out"), "shipped quartz reference v1");
    put(shipped / "docs" / "guide.md", "not seeded");
    put(shipped / "QV.ini", "not seeded");

    struct Step {
        const char* name;
        std::function<void()> before;
        std::vector<fs::path> copied;
        std::vector<std::pair<fs::path, const char*>> holds; ///< "" = absent
    };
    const fs::path compiled = lib("RamanSearchFileSlow.rsf");
    const std::vector<Step> steps = {
        {"a new home receives the library and the references",
         [] {},
         {lib("Calcite_1.txt"), lib("Quartz_2.txt"), xray("Quartz.out")},
         {{lib("Calcite_1.txt"), "shipped calcite v1"},
          {xray("Quartz.out"), "shipped quartz reference v1"},
          {"docs/guide.md", ""},
          {"QV.ini", ""}}},
        {"the user's edits, deletions and QV.ini stand at the next start",
         [&] {
             put(home / lib("Calcite_1.txt"), "user's calcite");
             put(home / "QV.ini", "user's preferences");
             put(home / compiled, "compiled");
             fs::remove(home / lib("Quartz_2.txt"));
             put(shipped / lib("Calcite_1.txt"), "shipped calcite v2");
             put(shipped / xray("Quartz.out"), "shipped quartz reference v2");
         },
         {},
         {{lib("Calcite_1.txt"), "user's calcite"},
          {lib("Quartz_2.txt"), ""},
          {xray("Quartz.out"), "shipped quartz reference v1"},
          {"QV.ini", "user's preferences"},
          {compiled, "compiled"}}},
        {"a later install's new files are added beside the user's; the library recompiles",
         [&] {
             put(shipped / lib("Dolomite_3.txt"), "shipped dolomite");
             put(shipped / lib("Mine_4.txt"), "shipped file of the user's name");
             put(home / lib("Mine_4.txt"), "user's own spectrum");
         },
         {lib("Dolomite_3.txt")},
         {{lib("Dolomite_3.txt"), "shipped dolomite"},
          {lib("Mine_4.txt"), "user's own spectrum"},
          {lib("Calcite_1.txt"), "user's calcite"},
          {compiled, ""}}},
        {"a new reference file only leaves the compiled library alone",
         [&] {
             put(home / compiled, "compiled");
             put(shipped / xray("Halite.out"), "shipped halite");
         },
         {xray("Halite.out")},
         {{xray("Halite.out"), "shipped halite"}, {compiled, "compiled"}}},
    };
    for (const Step& step : steps) {
        step.before();
        std::vector<fs::path> copied = seedHomeFolder(home, shipped);
        std::sort(copied.begin(), copied.end());
        EXPECT_EQ(copied, step.copied) << step.name;
        for (const auto& [file, content] : step.holds) {
            if (*content == '\0') {
                EXPECT_FALSE(fs::exists(home / file)) << step.name << ": " << file;
            } else {
                EXPECT_EQ(test::readFile(home / file), content) << step.name << ": " << file;
            }
        }
    }
    for (const char* folder : {"UndoRecords", "RecentFiles", "TempFold"}) {
        EXPECT_TRUE(fs::is_directory(home / folder)) << "a new home has its working folders";
    }
}

TEST_F(Seeding, HomesNeverSeededAreLeftAlone) {
    put(shipped / lib("Calcite_1.txt"), "shipped calcite");
    fs::create_directories(home / "SearchRecords" / "RamanLib"); // a build tree, a portable copy
    EXPECT_TRUE(seedHomeFolder(home, shipped).empty());
    EXPECT_FALSE(fs::exists(home / lib("Calcite_1.txt")));
    EXPECT_FALSE(fs::exists(home / "ShippedFiles.txt"));

    const fs::path elsewhere = root.path() / "other-home";
    EXPECT_TRUE(seedHomeFolder(elsewhere, root.path() / "nothing-shipped").empty());
    EXPECT_FALSE(fs::exists(elsewhere)) << "nothing shipped: start-up makes the folders";
}

} // namespace
} // namespace quarvex
