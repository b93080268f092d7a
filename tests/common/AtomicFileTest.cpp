// Safe writing: the destination changes only on a successful commit.
#include "common/AtomicFile.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace quarvex {
namespace {

TEST(AtomicFile, ReplacesTheFileOnlyOnCommit) {
    test::TempFolder folder;
    const auto path = folder.write("out.txt", "old\n");
    {
        AtomicFile file(path);
        file.stream() << "new\n";
        EXPECT_EQ(test::readFile(path), "old\n") << "nothing visible before commit";
    }
    EXPECT_EQ(test::readFile(path), "old\n") << "abandoned write leaves the old file";
    {
        AtomicFile file(path);
        file.stream() << "new\n";
        EXPECT_TRUE(file.commit());
    }
    EXPECT_EQ(test::readFile(path), "new\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()),
                            std::filesystem::directory_iterator()),
              1)
        << "no temporary file is left behind";
}

TEST(AtomicFile, FailsCleanlyWhereItCannotWrite) {
    test::TempFolder folder;
    AtomicFile file(folder.path() / "no-such-folder" / "out.txt");
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(file.commit());
}

} // namespace
} // namespace quarvex
