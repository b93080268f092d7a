// The compilation writes the grid cache straight from its grids: byte for byte the cache that
// deriving it from the text files it wrote gives, on reference spectra with awkward values and
// names, on one thread and on several.
#include "LibraryTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"
#include "library/GridCache.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quarvex {
namespace {

struct Reference {
    const char* what;
    std::string name;
    std::string data; // "x, y" lines
};

std::string lines(float from, float to, float step, float (*y)(float)) {
    std::vector<float> xs;
    std::vector<float> ys;
    for (float x = from; x <= to; x += step) {
        xs.push_back(x);
        ys.push_back(y(x));
    }
    return test::spectrumText("", xs, ys);
}

std::vector<Reference> references() {
    const auto band = [](float x) { return 100.0F / (1.0F + (x - 400.0F) * (x - 400.0F) / 50.0F); };
    return {
        {"plain", "A.txt", lines(100.0F, 1500.0F, 0.5F, band)},
        {"tiny values next to a band (subnormal once normalised)", "B.txt",
         "100, 1e-38\n101, 3e-39\n102, 1e30\n103, 2e-40\n104, 5e-41\n105, 1e-38\n"},
        {"negative shifts and intensities through 0", "C.txt",
         lines(-60.5F, 80.0F, 0.25F, [](float x) { return x < 0.0F ? -x : x - 10.0F; })},
        {"whole numbers of 100000 and above", "D.txt",
         lines(99990.0F, 100020.0F, 0.5F, [](float x) { return x - 99980.0F; })},
        {"a name longer than the name line buffer", std::string(160, 'n') + ".txt",
         lines(200.0F, 300.0F, 1.0F, band)},
        {"a name cut at the buffer's width just after a blank", std::string(149, 'm') + " tail.txt",
         lines(200.0F, 320.0F, 1.0F, band)},
        {"a name beginning like a separator", "==E.txt", lines(300.0F, 900.0F, 0.7F, band)},
        {"one point: skipped", "F.txt", "500, 1\n"},
        {"a report file: a name-list line, no entry", "Consistency_G.txt", "report\n"},
        {"irregular measured points", "H.txt", "100, 1\n100.3, 4\n107.9, 2\n108, 9\n131, 1\n"},
    };
}

TEST(CompiledGridCache, IsTheCacheDerivedFromTheTextFiles) {
    const test::TempFolder home;
    SET_UP_FOLDERS(home.path());
    const std::filesystem::path folder = ramanLibraryFolder(home.path());
    for (const Reference& reference : references()) {
        std::ofstream(folder / reference.name) << "##NAMES=" << reference.what << '\n'
                                               << reference.data;
    }
    for (const unsigned workers : {1U, 2U}) {
        SCOPED_TRACE(workers);
        const LibraryCompilation compilation = CREATE_SEARCH_LIB(home.path(), {}, {}, workers);
        EXPECT_EQ(compilation.entries, 8);
        const std::string compiled = test::readFile(gridCachePath(folder));
        ASSERT_TRUE(writeGridCache(folder));
        const std::string derived = test::readFile(gridCachePath(folder));
        ASSERT_EQ(compiled.size(), derived.size());
        EXPECT_TRUE(compiled == derived)
            << "first difference at byte "
            << std::mismatch(compiled.begin(), compiled.end(), derived.begin()).first -
                   compiled.begin();
        std::string whyNot;
        EXPECT_TRUE(GridCache::open(folder, whyNot)) << whyNot;
    }
}

} // namespace
} // namespace quarvex
