// Library compilation: which files become entries, the four files in step, the wavelength code,
// the bit-exact x, y lines and the previous library surviving a failed compilation.
#include "LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"
#include "library/LibraryFileReader.h"
#include "processing/InterpAndNorm.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace quarvex {
namespace {

using test::fileLines;
using test::spectrumText;

const std::string kFullHeader =
    "##NAMES=Quartz alpha\n##GRELTID=R0001\n##LOCALITY=Brazil\n##CHEMISTRY=SiO2\n";

class CompileTest : public ::testing::Test {
protected:
    void SetUp() override { SET_UP_FOLDERS(home.path()); }
    std::filesystem::path folder() const { return ramanLibraryFolder(home.path()); }
    void put(const std::string& name, const std::string& content) const {
        std::ofstream(folder() / name, std::ios::binary) << content;
    }
    std::vector<std::string> lines(std::string_view file) const {
        return fileLines(folder() / file);
    }
    // The "==" and name lines of a Slow or Fast file.
    std::vector<std::string> entryNames(std::string_view file) const {
        std::vector<std::string> names;
        const auto all = lines(file);
        for (std::size_t i = 0; i + 1 < all.size(); ++i) {
            if (all[i] == "==") {
                names.push_back(all[i + 1]);
            }
        }
        return names;
    }

    test::TempFolder home;
    std::vector<float> x{100.0F, 100.5F, 101.0F, 102.5F, 104.0F, 107.0F};
    std::vector<float> y{10.0F, 12.0F, 15.0F, 11.0F, 30.0F, 20.0F};
};

TEST_F(CompileTest, FolderOfLibraryFilesOnlyGivesAnEmptyLibrary) {
    put("RamanSearchFileSlow.rsf", "==\nold\n100 1\n");
    put("RamanSearchNotes.txt", spectrumText(kFullHeader, x, y));
    const LibraryCompilation result = CREATE_SEARCH_LIB(home.path());
    EXPECT_EQ(result.entries, 0);
    for (std::string_view file :
         {kSlowLibraryFile, kFastLibraryFile, kNameListFile, kNameInfoFile}) {
        EXPECT_EQ(test::readFile(folder() / file), "") << file;
    }
}

TEST_F(CompileTest, FilesStayInStepAndSkippedFilesAreReported) {
    const std::string noLocality = "##NAMES=Calcite\n##GRELTID=R0002\n##CHEMISTRY=CaCO3\n";
    // Wavelength codes: after the first "_7" (looked for before "_5"), else after the first
    // "_5", else the name's first three characters; cut at the name's end.
    put("b_532.txt", spectrumText(kFullHeader, x, y));
    put("B.txt", spectrumText(kFullHeader, x, y));
    put("a_5x_7ab.txt", spectrumText(noLocality, x, y));
    put("z_7", spectrumText(kFullHeader, x, y));
    put("ConsistencyExam.rsf", "a report, not a spectrum\n");
    put("empty.txt", kFullHeader);
    put("one.txt", spectrumText(kFullHeader, {100.0F}, {5.0F}));
    put("zero.txt", spectrumText(kFullHeader, x, std::vector<float>(x.size(), 0.0F)));

    const LibraryCompilation result = CREATE_SEARCH_LIB(home.path());
    EXPECT_EQ(result.entries, 4);
    ASSERT_EQ(result.skipped.size(), 3U);
    EXPECT_EQ(result.skipped[0].name, "empty.txt");
    EXPECT_EQ(result.skipped[1].name, "one.txt");
    EXPECT_EQ(result.skipped[2].name, "zero.txt");

    // Byte order: upper case before lower case; the "Consistency" report only in the name list.
    EXPECT_EQ(lines(kNameListFile), (std::vector<std::string>{"B.txt", "ConsistencyExam.rsf",
                                                              "a_5x_7ab.txt", "b_532.txt", "z_7"}));
    const std::vector<std::string> entries{"B.txt", "a_5x_7ab.txt", "b_532.txt", "z_7"};
    EXPECT_EQ(entryNames(kSlowLibraryFile), entries);
    EXPECT_EQ(entryNames(kFastLibraryFile), entries);
    EXPECT_EQ(lines(kNameInfoFile),
              (std::vector<std::string>{"R0001", "Quartz alpha", "Brazil", "SiO2",  "B.t", //
                                        "R0002", "Calcite",      " ",      "CaCO3", "7ab", //
                                        "R0001", "Quartz alpha", "Brazil", "SiO2",  "532", //
                                        "R0001", "Quartz alpha", "Brazil", "SiO2",  "7"}));
}

// The x, y lines read back to exactly the floats of the resampling, whatever the point order.
TEST_F(CompileTest, DataLinesReadBackBitForBit) {
    std::vector<float> downX(x.rbegin(), x.rend());
    std::vector<float> downY(y.rbegin(), y.rend());
    downX.push_back(101.0F); // a duplicate x: merged into one point of mean y
    downY.push_back(15.0F);
    put("down.txt", spectrumText(kFullHeader, downX, downY));
    put("up.txt", spectrumText(kFullHeader, x, y));
    CREATE_SEARCH_LIB(home.path());

    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    READ_SPECDATA_FILE(specdata, info, folder() / "up.txt");
    for (const auto& [file, step] :
         {std::pair{kSlowLibraryFile, kFineStep}, std::pair{kFastLibraryFile, kCoarseStep}}) {
        const InterpData expected =
            resampleSpectrum(specdata.xValues(0), specdata.yValues(0), step, true);
        LibraryFileReader reader(folder() / file);
        for (int entry = 0; entry < 2; ++entry) { // down.txt, then up.txt
            std::string_view line;
            ASSERT_TRUE(reader.skipPastSeparator() && reader.next(line));
            for (int i = 0; i < expected.capacity(); ++i) {
                float gridX = 0.0F;
                float gridY = 0.0F;
                ASSERT_TRUE(reader.next(line) && readLibraryPair(line, gridX, gridY));
                EXPECT_EQ(std::memcmp(&gridX, &expected.x[i], sizeof(float)), 0) << line;
                EXPECT_EQ(std::memcmp(&gridY, &expected.y[i], sizeof(float)), 0) << line;
            }
        }
    }
}

TEST_F(CompileTest, FailedCompilationLeavesThePreviousLibraryWhole) {
    put("a.txt", spectrumText(kFullHeader, x, y));
    put("b.txt", spectrumText(kFullHeader, x, y));
    CREATE_SEARCH_LIB(home.path());
    const std::string before = test::readFile(folder() / kSlowLibraryFile);
    put("c.txt", spectrumText(kFullHeader, x, y));

    int calls = 0;
    const ProgressCallback interrupt = [&calls](std::string_view status, double) {
        EXPECT_EQ(status, kCompilingStatus);
        if (++calls == 3) {
            throw OperationCancelled(); // what the desktop program's Cancel does
        }
    };
    EXPECT_THROW(CREATE_SEARCH_LIB(home.path(), interrupt), OperationCancelled);
    EXPECT_EQ(test::readFile(folder() / kSlowLibraryFile), before);
    EXPECT_EQ(lines(kNameListFile), (std::vector<std::string>{"a.txt", "b.txt"}));
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(folder())) {
        ++files;
    }
    EXPECT_EQ(files, 7U) << "three spectra and four library files, no temporary file left";
}

} // namespace
} // namespace quarvex
