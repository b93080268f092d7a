// Reading reference diffraction-data files: every shipped file against the tests' own parser,
// the space group's crystal system, and the rules for what a file gets wrong.
#include "TestSupport.h"
#include "XrayPatternSupport.h"

#include "common/QuarvexError.h"
#include "xray/DiffFileReader.h"
#include "xray/XraySymmetry.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace quarvex {
namespace {

struct ReferenceFileCase {
    const char* file;
    int mode;
    int count;
    const char* system;
};

void expectReadAsTheTestsParserReadsIt(const ReferenceFileCase& c, std::size_t bufferSize) {
    const auto path = test::sourcePath(std::string("data/xray/reference/") + c.file);
    const DiffFileRecord record = READ_DIFF_INFO(path, nullptr, bufferSize);
    const test::ReferenceTable truth = test::readReferenceTable(c.file);
    EXPECT_EQ(record.mode, c.mode) << c.file;
    ASSERT_EQ(static_cast<int>(record.reflections.size()), c.count) << c.file;
    ASSERT_EQ(truth.lines.size(), record.reflections.size()) << c.file;
    EXPECT_EQ(crystalSystemName(record.sym), c.system) << c.file;
    EXPECT_TRUE(record.notes.empty()) << c.file << ": " << record.notes.front();
    EXPECT_EQ(record.referenceSection, c.mode == 1) << c.file;
    for (int m = 0; m < 6; ++m) {
        EXPECT_EQ(record.cell[m], static_cast<float>(truth.cell[m])) << c.file << " cell " << m;
    }
    EXPECT_EQ(record.wavelengths[0], truth.wavelengths[0]) << c.file;
    for (std::size_t r = 0; r < truth.lines.size(); ++r) {
        const DiffReflection& read = record.reflections[r];
        const test::ReferenceLine& line = truth.lines[r];
        EXPECT_EQ(read.twoTheta, static_cast<float>(line.twoTheta)) << c.file << " line " << r;
        EXPECT_EQ(read.intensity, static_cast<float>(line.intensity)) << c.file << " line " << r;
        EXPECT_EQ(read.dSpacing, static_cast<float>(line.dSpacing)) << c.file << " line " << r;
        EXPECT_EQ(read.hkl, line.hkl) << c.file << " line " << r;
    }
}

TEST(DiffFileReader, EveryReferenceFileReadsWithItsCellModeAndReflections) {
    const ReferenceFileCase cases[] = {
        {"Anatase.out", 1, 18, "TETRAGONAL"},
        {"Barite.out", 1, 141, "ORTHORHOMBIC"},
        {"Brookite.out", 1, 91, "ORTHORHOMBIC"},
        {"Calcite.out", 1, 30, "HEXAGONAL"},
        {"Cerianite.out", 1, 9, "CUBIC"},
        {"Corundum.out", 1, 25, "HEXAGONAL"},
        {"Corundum_rhombohedral.out", 1, 25, "RHOMBOHEDRAL"},
        {"Fluorite.out", 1, 9, "CUBIC"},
        {"Gypsum.out", 1, 159, "MONOCLINIC2"},
        {"Halite.out", 1, 9, "CUBIC"},
        {"Hematite.out", 1, 29, "HEXAGONAL"},
        {"Kaolinite.out", 1, 252, "TRICLINIC"},
        {"LaB6.out", 1, 13, "CUBIC"},
        {"Quartz.out", 1, 28, "HEXAGONAL"},
        {"Quartz_Ka12.out", 2, 28, "HEXAGONAL"},
        {"Rutile.out", 1, 20, "TETRAGONAL"},
        {"Silicon.out", 1, 6, "CUBIC"},
        {"Silicon_Ka12.out", 2, 6, "CUBIC"},
        {"Tenorite.out", 1, 33, "MONOCLINIC2"},
        {"Zincite.out", 1, 13, "HEXAGONAL"},
    };
    // Every buffer size reads the same: small ones put line ends on every buffer boundary.
    for (const std::size_t bufferSize :
         {LineReader::kDefaultBufferSize, std::size_t{1}, std::size_t{7}, std::size_t{64}}) {
        SCOPED_TRACE("buffer of " + std::to_string(bufferSize) + " bytes");
        for (const ReferenceFileCase& c : cases) {
            expectReadAsTheTestsParserReadsIt(c, bufferSize);
        }
    }
}

struct BadFileCase {
    const char* what;
    std::string content;
    int count;
    int mode;
    const char* note; ///< a fragment of one note ("": no note about a line)
};

constexpr const char* kHeader = "Test\nCELL PARAMETERS: 5 5 5 90 90 90\nX-RAY WAVELENGTH: 1.54\n";
constexpr const char* kTableHead = "2-THETA INTENSITY D-SPACING H K L\n";
constexpr const char* kLine1 = "  30.00  100.0  2.9764  1 1 1\n";
constexpr const char* kLine2 = "  40.00   50.0  2.2522  2 0 0\n";

TEST(DiffFileReader, WhatAFileGetsWrongBecomesANoteNeverAFailure) {
    const std::string head = std::string(kHeader) + kTableHead;
    const BadFileCase cases[] = {
        {"no table line", kHeader, 0, 1, "no \"2-THETA\" line"},
        {"no cell line", std::string("X-RAY WAVELENGTH: 1.54\n") + kTableHead + kLine1, 1, 1,
         "the cell is left at zero"},
        {"truncated line", head + kLine1 + "  40.00   50.0\n" + kLine2, 1, 1,
         "does not read as 3 numbers"},
        {"letters in a column", head + kLine1 + "  40.00  abc  2.2522  2 0 0\n", 1, 1,
         "the table ends here"},
        {"blank line inside the table", head + kLine1 + "\n" + kLine2, 1, 1,
         "after the end of the table"},
        {"For reference ends it", head + kLine1 + "For reference: computed\n", 1, 1, ""},
        {"indented keys",
         "Test\n   CELL PARAMETERS: 5 5 5 90 90 90\n  X-RAY WAVELENGTH: 1.54\n  "
         "2-THETA INTENSITY\n" +
             std::string(kLine1) + kLine2,
         2, 1, ""},
        {"no wavelength line: mode 0",
         std::string("CELL PARAMETERS: 5 5 5 90 90 90\n") + kTableHead + kLine1, 1, 0, ""},
        {"an X-RAY line of neither kind", "X-RAY SOURCE: Cu\n" + std::string(kTableHead) + kLine1,
         1, 0, "is not a wavelength line"},
        {"the plural key reads five reals",
         "X-RAY WAVELENGTHS: 1.540562 1.544390\n" + std::string(kTableHead) +
             "  30.00  100.0  2.9764  30.08  49.9  1 1 1\n",
         1, 2, ""},
        {"a cell line without six numbers", "CELL PARAMETERS: 5 5 five 90 90 90\n", 0, 0,
         "not followed by six numbers"},
    };
    for (const BadFileCase& c : cases) {
        test::TempFolder folder;
        const DiffFileRecord record = READ_DIFF_INFO(folder.write("bad.out", c.content), nullptr);
        EXPECT_EQ(static_cast<int>(record.reflections.size()), c.count) << c.what;
        EXPECT_EQ(record.mode, c.mode) << c.what;
        std::string notes;
        for (const std::string& note : record.notes) {
            notes += note + "\n";
        }
        if (*c.note == '\0') { // no complaint about any line
            EXPECT_EQ(("\n" + notes).find("\nline "), std::string::npos) << c.what << ": " << notes;
        } else {
            EXPECT_NE(notes.find(c.note), std::string::npos) << c.what << ": " << notes;
        }
    }
}

TEST(DiffFileReader, ARunawayTableStopsAtItsLimit) {
    test::TempFolder folder;
    std::ostringstream text;
    text << kHeader << kTableHead;
    for (int r = 0; r < kMaxDiffReflections + 3; ++r) {
        text << kLine1;
    }
    const DiffFileRecord record = READ_DIFF_INFO(folder.write("huge.out", text.str()), nullptr);
    EXPECT_EQ(static_cast<int>(record.reflections.size()), kMaxDiffReflections);
    EXPECT_NE(record.notes.front().find("only the first"), std::string::npos);
}

TEST(DiffFileReader, UnreadableFilesRaiseTheirMessages) {
    test::TempFolder folder;
    const std::string binary("CELL PARAMETERS: 1 1 1 90 90 90\n\0\x01\x02\n", 37);
    const std::pair<std::filesystem::path, std::string> cases[] = {
        {folder.path() / "missing.out", "SHARING ERROR"},
        {folder.write("binary.out", binary), "Diffraction Data File"},
    };
    for (const auto& [path, title] : cases) {
        try {
            READ_DIFF_INFO(path, nullptr);
            ADD_FAILURE() << path;
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), title) << path;
        }
    }
}

TEST(XraySymmetry, SpaceGroupAndCellGiveTheCrystalSystem) {
    const std::array<float, 6> cubic{5, 5, 5, 90, 90, 90};
    const std::array<float, 6> betaCell{5, 6, 7, 90, 100, 90};
    const std::array<float, 6> gammaCell{5, 6, 7, 90, 90, 100};
    const std::array<float, 6> rhombo{5, 5, 5, 55, 55, 55};
    const std::array<float, 6> hexagonal{5, 5, 7, 90, 90, 120};
    struct Case {
        const char* symbol;
        std::array<float, 6> cell;
        const char* system;
    } cases[] = {
        {"P 21 3", cubic, "CUBIC"},
        {"P 1 1 21/b", gammaCell, "MONOCLINIC1"},
        {"P 21/c", gammaCell, "MONOCLINIC1"}, // short symbol: the cell names the unique axis
        {"P 21/c", betaCell, "MONOCLINIC2"},
        {"B 2/b 1 1", {5, 6, 7, 100, 90, 90}, "MONOCLINIC3"},
        {"R -3 m", rhombo, "RHOMBOHEDRAL"},
        {"R -3 m", hexagonal, "HEXAGONAL"},
        {"P -1", {5, 6, 7, 80, 100, 95}, "TRICLINIC"},
        {"Pnma", {5, 6, 7, 90, 90, 90}, "ORTHORHOMBIC"}, // written without blanks: the cell
        {"", hexagonal, "HEXAGONAL"},
        {"", {5, 5, 7, 90, 90, 90}, "TETRAGONAL"},
        {"", {0, 0, 0, 0, 0, 0}, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(crystalSystemName(symFromSpaceGroup(c.symbol, c.cell)), c.system) << c.symbol;
    }
    EXPECT_EQ(symCode("monoclinic"), symCode("MONOCLINIC2"));
    EXPECT_EQ(symCode(" isometric "), 9);
    EXPECT_EQ(symCode("ORTHORHOMBICX"), kSymUnknown);
}

} // namespace
} // namespace quarvex
