// The recent-file list: ten entries newest first, kept in RecentFiles/RCNTFILE.rfl, a missing
// file removed with a message.
#include "specdata/RecentFiles.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace quarvex {
namespace {

TEST(RecentFiles, KeepsTheTenNewestAndReadsThemBack) {
    test::TempFolder home;
    SET_UP_FOLDERS(home.path());
    RecentFileList list;
    for (int k = 1; k <= 12; ++k) {
        std::string name = std::to_string(k);
        name.insert(0, 1, 's'); // "s" + ... trips a false -Wrestrict of g++ 12
        rememberRecentFile(list, home.path(), home.write(name + ".txt", "1 2"));
    }
    rememberRecentFile(list, home.path(), home.path() / "s5.txt"); // to the top again
    ASSERT_EQ(list.paths.size(), 10U);
    EXPECT_EQ(list.paths[0].filename(), "s5.txt");
    EXPECT_EQ(list.paths[1].filename(), "s12.txt");
    EXPECT_EQ(list.paths[8].filename(), "s4.txt");
    EXPECT_EQ(list.paths[9].filename(), "s3.txt");
    const std::string file = test::readFile(home.path() / "RecentFiles" / "RCNTFILE.rfl");
    EXPECT_EQ(file.substr(0, file.find('\n')), (home.path() / "s5.txt").string());

    RecentFileList again;
    RECENT_FILES(again, home.path());
    EXPECT_EQ(again.paths, list.paths);
}

TEST(RecentFiles, AMissingFileIsRemovedWithAMessage) {
    test::TempFolder home;
    SET_UP_FOLDERS(home.path());
    RecentFileList list;
    rememberRecentFile(list, home.path(), home.write("gone.txt", "1 2"));
    rememberRecentFile(list, home.path(), home.write("kept.txt", "1 2"));
    std::filesystem::remove(home.path() / "gone.txt");
    EXPECT_EQ(recentFileToOpen(list, home.path(), 0).filename(), "kept.txt");
    try {
        recentFileToOpen(list, home.path(), 1);
        ADD_FAILURE() << "no error";
    } catch (const QuarvexError& error) {
        EXPECT_EQ(error.title(), "Recent Files");
        EXPECT_NE(error.text().find("gone.txt no longer exists"), std::string::npos);
    }
    RecentFileList again;
    RECENT_FILES(again, home.path());
    ASSERT_EQ(again.paths.size(), 1U);
    EXPECT_EQ(again.paths[0].filename(), "kept.txt");
}

} // namespace
} // namespace quarvex
