// The library manifest: an unchanged folder matches, every kind of change to the reference files
// or the library files does not, and a manifest that is not whole never matches.
#include "LibraryTestSupport.h"

#include "library/CreateLibraryFile.h"
#include "library/LibraryManifest.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

namespace quarvex {
namespace {

using test::spectrumText;

class ManifestTest : public ::testing::Test {
public: // the change table's functions work on the fixture
    void SetUp() override {
        SET_UP_FOLDERS(home.path());
        put("Calcite_532.txt",
            spectrumText("##NAMES=Calcite\n", {100, 101, 102, 103}, {1, 3, 2, 5}));
        put("Quartz_785.txt", spectrumText("##NAMES=Quartz\n", {200, 202, 204, 206}, {4, 1, 2, 1}));
        put("Notes.txt", "no data here\n"); // skipped by the compilation, yet read by it
        CREATE_SEARCH_LIB(home.path());
    }
    std::filesystem::path folder() const { return ramanLibraryFolder(home.path()); }
    void put(const std::string& name, const std::string& content) const {
        std::ofstream(folder() / name, std::ios::binary) << content;
    }
    // Moves a file's modification time back by a minute, its content untouched.
    void touch(const std::string& name) const {
        const auto path = folder() / name;
        std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) -
                                                   std::chrono::minutes(1));
    }

    test::TempFolder home;
};

TEST_F(ManifestTest, UnchangedFolderMatchesWithItsEntries) {
    EXPECT_TRUE(std::filesystem::is_regular_file(home.path() / "SearchRecords" /
                                                 "RamanLib.quarvex-manifest"));
    EXPECT_EQ(upToDateLibraryEntries(folder()), 2) << "two spectra; the notes were left out";
    // Files the compilation never lists: its own ("RamanSearch...") and what a robust search adds.
    put("RamanSearchFileRobust.rsf", "==\nx\n");
    put("RamanSearchNotes.txt", "not a spectrum\n");
    EXPECT_EQ(upToDateLibraryEntries(folder()), 2);
}

TEST_F(ManifestTest, EveryChangeOfTheFolderIsSeen) {
    const struct {
        const char* change;
        std::function<void(const ManifestTest&)> make;
    } cases[] = {
        {"a reference file touched", [](const ManifestTest& t) { t.touch("Quartz_785.txt"); }},
        {"a skipped file touched", [](const ManifestTest& t) { t.touch("Notes.txt"); }},
        {"a file added", [](const ManifestTest& t) { t.put("Azurite_532.txt", "1 2\n3 4\n"); }},
        {"a consistency report added (it takes a name-list line)",
         [](const ManifestTest& t) { t.put("Consistency.txt", "report\n"); }},
        {"a file removed",
         [](const ManifestTest& t) { std::filesystem::remove(t.folder() / "Calcite_532.txt"); }},
        {"a file renamed",
         [](const ManifestTest& t) {
             std::filesystem::rename(t.folder() / "Calcite_532.txt", t.folder() / "Calcite.txt");
         }},
        {"a file resized, same time",
         [](const ManifestTest& t) {
             const auto path = t.folder() / "Notes.txt";
             const auto time = std::filesystem::last_write_time(path);
             std::filesystem::resize_file(path, 3);
             std::filesystem::last_write_time(path, time);
         }},
        {"a library file edited",
         [](const ManifestTest& t) { t.touch("RamanSearchNameInfo.rsf"); }},
        {"a library file removed",
         [](const ManifestTest& t) {
             std::filesystem::remove(t.folder() / std::string(kFastLibraryFile));
         }},
        {"the manifest removed",
         [](const ManifestTest& t) { std::filesystem::remove(libraryManifestPath(t.folder())); }},
    };
    for (const auto& c : cases) {
        SetUp(); // a fresh compilation over the same files
        ASSERT_EQ(upToDateLibraryEntries(folder()), 2) << c.change;
        c.make(*this);
        EXPECT_EQ(upToDateLibraryEntries(folder()), std::nullopt) << c.change;
        std::filesystem::remove_all(folder());
        std::filesystem::create_directories(folder());
    }
}

TEST_F(ManifestTest, DamagedManifestCountsAsChanged) {
    const std::filesystem::path path = libraryManifestPath(folder());
    const std::string whole = test::readFile(path);
    ASSERT_TRUE(parseManifest(whole).has_value());
    // Cut anywhere, or one byte changed anywhere (the entry count included, which would still
    // read as a number): never read as a manifest.
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(parseManifest(whole.substr(0, length)), std::nullopt) << "cut at " << length;
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char garble : {'\n', ' ', '7', 'x'}) {
            std::string damaged = whole;
            if (damaged[at] != garble) {
                damaged[at] = garble;
                EXPECT_EQ(parseManifest(damaged), std::nullopt) << "'" << garble << "' at " << at;
            }
        }
    }
    const auto rewrite = [&path](const std::string& text) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    };
    const struct {
        const char* damage;
        std::string text;
    } files[] = {
        {"cut in half", whole.substr(0, whole.size() / 2)},
        {"cut before its last line break", whole.substr(0, whole.size() - 1)},
        {"text after the end line", whole + "end\n"},
        {"entry count changed",
         [&whole] {
             std::string text = whole;
             text.replace(text.find("entries 2"), 9, "entries 3");
             return text;
         }()},
    };
    for (const auto& file : files) {
        rewrite(file.text);
        EXPECT_EQ(upToDateLibraryEntries(folder()), std::nullopt) << file.damage;
    }
    rewrite(whole);
    EXPECT_EQ(upToDateLibraryEntries(folder()), 2);
}

TEST(ManifestText, ReadsBackWhatItWrites) {
    const LibraryManifest manifest{
        3,
        {{"RamanSearchFileSlow.rsf", 10, 1},
         {"RamanSearchFileFast.rsf", 5, -2},
         {"RamanSearchNameList.rsf", 0, 3},
         {"RamanSearchNameInfo.rsf", 7, 4}},
        {{"A b.txt", 1, 1}, {"B.txt", 18446744073709551615ULL, -9223372036854775807LL}}};
    const std::string text = manifestText(manifest);
    EXPECT_EQ(parseManifest(text), manifest);
    // Names out of order or twice, and a library list that is not the four files, are refused.
    LibraryManifest unordered = manifest;
    std::swap(unordered.referenceFiles[0], unordered.referenceFiles[1]);
    EXPECT_EQ(parseManifest(manifestText(unordered)), std::nullopt);
    LibraryManifest twice = manifest;
    twice.referenceFiles[1].name = "A b.txt";
    EXPECT_EQ(parseManifest(manifestText(twice)), std::nullopt);
    LibraryManifest otherFiles = manifest;
    otherFiles.libraryFiles[3].name = "Other.rsf";
    EXPECT_EQ(parseManifest(manifestText(otherFiles)), std::nullopt);
}

} // namespace
} // namespace quarvex
