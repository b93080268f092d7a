// Compilation on several threads writes the four library files byte for byte as one thread does.
#include "LibraryTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quarvex {
namespace {

// 150 files (more than two batches): spectra of varied ranges, files that are skipped, a
// consistency report and a library file of the folder among them.
void fillLibraryFolder(const std::filesystem::path& home) {
    SET_UP_FOLDERS(home);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    for (int k = 0; k < 150; ++k) {
        const std::string name = "ref" + std::to_string(1000 + k) + "_532.txt";
        std::vector<float> x;
        std::vector<float> y;
        test::twoBands(100.0F + static_cast<float>(k % 11), 300.0F + static_cast<float>(k), 150.0F,
                       x, y);
        std::ofstream file(folder / name);
        if (k % 37 == 5) {
            file << "no data at all\n";
        } else {
            file << test::spectrumText("##NAMES=M" + std::to_string(k) + "\n", x, y);
        }
    }
    std::ofstream(folder / "Consistency_x.rsf") << "report\n";
    std::ofstream(folder / "ref1070_a.txt") << "##NAMES=one point\n100, 5\n";
}

TEST(ParallelCompile, FilesAreTheSameAsOneThreadWrites) {
    const test::TempFolder home;
    fillLibraryFolder(home.path());
    const std::filesystem::path folder = ramanLibraryFolder(home.path());
    const std::string_view files[] = {kSlowLibraryFile, kFastLibraryFile, kNameListFile,
                                      kNameInfoFile};
    const LibraryCompilation single = CREATE_SEARCH_LIB(home.path(), {}, {}, 1);
    std::vector<std::string> expected;
    for (const std::string_view file : files) {
        expected.push_back(test::readFile(folder / file));
    }
    for (const unsigned workers : {2U, 3U}) {
        const LibraryCompilation parallel = CREATE_SEARCH_LIB(home.path(), {}, {}, workers);
        EXPECT_EQ(parallel.entries, single.entries);
        EXPECT_EQ(parallel.nameListLines, single.nameListLines);
        EXPECT_EQ(parallel.skipped.size(), single.skipped.size());
        for (std::size_t f = 0; f < expected.size(); ++f) {
            EXPECT_TRUE(test::readFile(folder / files[f]) == expected[f])
                << files[f] << " with " << workers << " threads";
        }
    }
    EXPECT_GT(single.skipped.size(), 3U);
    EXPECT_EQ(single.nameListLines, single.entries + 1);
}

} // namespace
} // namespace quarvex
