// The patterns computed from the shipped CIFs against the ".out" files computed from the same
// CIFs by an independent generator (data/xray/reference/README.md says how).
#include "xray/CifPattern.h"
#include "TestSupport.h"
#include "xray/CifStructure.h"
#include "xray/DiffFileReader.h"
#include "xray/XrayDataAndFileManager.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace quarvex {
namespace {

struct ReferenceCase {
    const char* cif;
    const char* out;
};

// Every CIF with its ".out" file (Barite's CIF is not shipped; the K-alpha1+2 files hold the
// same K-alpha1 lines as their single-wavelength twins).
constexpr ReferenceCase kReferenceCases[] = {
    {"SiO2-Quartz-alpha.cif", "Quartz.out"},
    {"CaCO3-Calcite.cif", "Calcite.out"},
    {"Al2O3-Corundum_hexagonal-axes.cif", "Corundum.out"},
    {"Al2O3-Corundum.cif", "Corundum_rhombohedral.out"},
    {"Fe2O3-Hematite_hexagonal-axes.cif", "Hematite.out"},
    {"TiO2-Rutile.cif", "Rutile.out"},
    {"TiO2-Anatase.cif", "Anatase.out"},
    {"TiO2-Brookite.cif", "Brookite.out"},
    {"NaCl-Halite.cif", "Halite.out"},
    {"CaF2-Fluorite.cif", "Fluorite.out"},
    {"Si-Silicon.cif", "Silicon.out"},
    {"LaB6_constructed.cif", "LaB6.out"},
    {"CeO2-Cerianite.cif", "Cerianite.out"},
    {"CaSO4-2(H2O)-Gypsum.cif", "Gypsum.out"},
    {"CuO-Tenorite.cif", "Tenorite.out"},
    {"Al2Si2O9H4-Kaolinite.cif", "Kaolinite.out"},
    {"ZnO-Zincite.cif", "Zincite.out"},
};

TEST(CifPatternTest, ComputedPatternsAgreeWithTheShippedFiles) {
    for (const ReferenceCase& c : kReferenceCases) {
        SCOPED_TRACE(c.cif);
        const DiffFileRecord computed =
            readCifReference(test::sourcePath(std::string("data/xray/reference/cif/") + c.cif), {});
        const DiffFileRecord expected =
            READ_DIFF_INFO(test::sourcePath(std::string("data/xray/reference/") + c.out), nullptr);
        EXPECT_EQ(computed.spaceGroup, expected.spaceGroup);
        EXPECT_EQ(computed.sym, expected.sym);
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_NEAR(computed.cell[i], expected.cell[i], 1e-4) << "cell parameter " << i;
        }
        ASSERT_EQ(computed.reflections.size(), expected.reflections.size());
        for (std::size_t r = 0; r < expected.reflections.size(); ++r) {
            const DiffReflection& got = computed.reflections[r];
            const DiffReflection& want = expected.reflections[r];
            // The file prints d to 4 decimals, 2-theta and intensity to 2.
            if (std::abs(got.dSpacing - want.dSpacing) > 1e-4F ||
                std::abs(got.twoTheta - want.twoTheta) > 0.01F ||
                std::abs(got.intensity - want.intensity) > 1.0F) {
                ADD_FAILURE() << "line " << r + 1 << ": computed " << got.twoTheta << ' '
                              << got.intensity << ' ' << got.dSpacing << ", file " << want.twoTheta
                              << ' ' << want.intensity << ' ' << want.dSpacing;
            }
            EXPECT_EQ(got.hkl, want.hkl) << "line " << r + 1;
        }
    }
}

struct AbsenceCase {
    const char* cif;
    std::array<int, 3> hkl;
    bool absent;
    const char* rule;
};

// Extinction rules of the International Tables for centred lattices, glides and screws.
constexpr AbsenceCase kAbsenceCases[] = {
    {"Si-Silicon.cif", {1, 1, 0}, true, "F: h, k, l all odd or all even"},
    {"Si-Silicon.cif", {1, 1, 1}, false, "F"},
    {"Si-Silicon.cif", {2, 0, 0}, true, "d glide: h00 with h = 4n"},
    {"Si-Silicon.cif", {4, 0, 0}, false, "d glide"},
    {"Si-Silicon.cif", {2, 2, 2}, false, "d glide allows hhl with h + l = 4n (F = 0 by the sites)"},
    {"TiO2-Anatase.cif", {1, 0, 0}, true, "I: h + k + l = 2n"},
    {"TiO2-Anatase.cif", {1, 0, 1}, false, "I"},
    {"TiO2-Anatase.cif", {0, 0, 2}, true, "41 screw: 00l with l = 4n"},
    {"TiO2-Anatase.cif", {0, 0, 4}, false, "41 screw"},
    {"CaCO3-Calcite.cif", {1, 0, 0}, true, "R (obverse): -h + k + l = 3n"},
    {"CaCO3-Calcite.cif", {1, 0, 4}, false, "R"},
    {"CaCO3-Calcite.cif", {0, 0, 3}, true, "c glide: 000l with l = 6n"},
    {"CaCO3-Calcite.cif", {0, 0, 6}, false, "c glide"},
    {"TiO2-Rutile.cif", {1, 0, 0}, true, "n glide: h00 with h = 2n"},
    {"TiO2-Rutile.cif", {0, 1, 2}, true, "n glide: 0kl with k + l = 2n"},
    {"TiO2-Rutile.cif", {1, 1, 0}, false, "n glide"},
    {"TiO2-Rutile.cif", {0, 0, 1}, true, "42 screw: 00l with l = 2n"},
    {"SiO2-Quartz-alpha.cif", {0, 0, 1}, true, "32 screw: 000l with l = 3n"},
    {"SiO2-Quartz-alpha.cif", {0, 0, 2}, true, "32 screw"},
    {"SiO2-Quartz-alpha.cif", {0, 0, 3}, false, "32 screw"},
    {"TiO2-Brookite.cif", {0, 1, 1}, true, "b glide: 0kl with k = 2n"},
    {"TiO2-Brookite.cif", {0, 2, 1}, false, "b glide"},
    {"TiO2-Brookite.cif", {1, 0, 1}, true, "c glide: h0l with l = 2n"},
    {"TiO2-Brookite.cif", {1, 1, 0}, true, "a glide: hk0 with h = 2n"},
    {"TiO2-Brookite.cif", {2, 1, 0}, false, "a glide"},
    {"CuO-Tenorite.cif", {1, 0, 0}, true, "C: h + k = 2n"},
    {"CuO-Tenorite.cif", {1, 1, 0}, false, "C"},
    {"CuO-Tenorite.cif", {0, 0, 1}, true, "c glide: h0l with l = 2n"},
};

TEST(CifPatternTest, SystematicAbsencesFollowTheLatticeAndTheGlides) {
    for (const AbsenceCase& c : kAbsenceCases) {
        const CifCrystal crystal =
            readCifCrystal(test::sourcePath(std::string("data/xray/reference/cif/") + c.cif));
        const gemmi::Miller hkl{{c.hkl[0], c.hkl[1], c.hkl[2]}};
        EXPECT_EQ(crystal.group.is_systematically_absent(hkl), c.absent)
            << c.cif << ' ' << c.hkl[0] << ' ' << c.hkl[1] << ' ' << c.hkl[2] << ": " << c.rule;
    }
}

// The kept ".out" file reads back, through the reader of reference files, as the pattern did.
TEST(CifPatternTest, KeptFileReadsBackAsThePattern) {
    const test::TempFolder home;
    DIFF_GLOBALS diff;
    const auto cif = test::sourcePath("data/xray/reference/cif/CaSO4-2(H2O)-Gypsum.cif");
    const int k = OPEN_AND_READ_DIFF_FILE(diff, cif, home.path());
    const DiffFileRecord computed = readCifReference(cif, {});
    std::ostringstream table;
    const DiffFileRecord kept = READ_DIFF_INFO(home.path() / "CaSO4-2(H2O)-Gypsum_cif.out", &table);
    EXPECT_TRUE(kept.notes.empty()) << kept.notes.front();
    EXPECT_TRUE(kept.referenceSection);
    EXPECT_EQ(kept.title, "CaSO4-2(H2O)-Gypsum"); // its only name is " ?"
    EXPECT_EQ(kept.spaceGroup, computed.spaceGroup);
    EXPECT_EQ(kept.sym, computed.sym);
    EXPECT_EQ(kept.mode, 1);
    EXPECT_DOUBLE_EQ(kept.wavelengths[0], kCopperKAlpha1);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(kept.cell[i], computed.cell[i], 5e-5) << "cell parameter " << i;
    }
    ASSERT_EQ(kept.reflections.size(), computed.reflections.size());
    for (std::size_t r = 0; r < kept.reflections.size(); ++r) {
        const DiffReflection& back = kept.reflections[r];
        const DiffReflection& line = computed.reflections[r];
        // Written with 2 decimals (2-theta, intensity) and 4 (d): half a unit of the last.
        EXPECT_NEAR(back.twoTheta, line.twoTheta, 0.0051) << "line " << r + 1;
        EXPECT_NEAR(back.intensity, line.intensity, 0.0051) << "line " << r + 1;
        EXPECT_NEAR(back.dSpacing, line.dSpacing, 0.000051) << "line " << r + 1;
        EXPECT_EQ(back.hkl, line.hkl) << "line " << r + 1;
    }
    // The list holds the pattern under the CIF's name, with the computed values.
    EXPECT_EQ(diff.NAME[static_cast<std::size_t>(k)], "CaSO4-2(H2O)-Gypsum.cif");
    EXPECT_EQ(diff.NUMDATA[static_cast<std::size_t>(k)],
              static_cast<int>(computed.reflections.size()));
}

} // namespace
} // namespace quarvex
