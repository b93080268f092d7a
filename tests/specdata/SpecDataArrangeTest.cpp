// Visibility, primary spectrum, stacking, scaling and data type of the loaded spectra.
#include "specdata/SpecDataArrange.h"

#include "common/QuarvexError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quarvex {
namespace {

// Three spectra whose y run over [low, high] in two points.
SPECDATA_GLOBALS threeSpectra() {
    SPECDATA_GLOBALS s;
    const float ranges[3][2] = {{100.0F, 300.0F}, {0.0F, 5.0F}, {7.0F, 7.0F}};
    for (const auto& range : ranges) {
        SpectrumRecord record;
        record.x = {1.0F, 2.0F};
        record.y = {range[0], range[1]};
        record.dtype = "RAMAN";
        appendSpectrum(s, std::move(record));
    }
    return s;
}

TEST(SpecDataArrange, AutomaticScaleDrawsEverySpectrumOneHighAndStacksWithGaps) {
    SPECDATA_GLOBALS s = threeSpectra();
    RESETSTACK(s, true);
    EXPECT_EQ(s.STACK_BUFF[0], 0.0F);
    EXPECT_EQ(s.STACK_BUFF[1], 1.1F) << "height 1 plus the gap";
    EXPECT_EQ(s.STACK_BUFF[2], 2.2F);
    EXPECT_EQ(drawnY(s, 0, 300.0F), 1.0F);
    EXPECT_EQ(drawnY(s, 0, 200.0F), 0.5F);
    EXPECT_EQ(drawnY(s, 1, 0.0F), 1.1F);
    EXPECT_EQ(drawnHeight(s, 2), 0.0F) << "a flat spectrum has no height";
    EXPECT_EQ(drawnY(s, 2, 7.0F), s.STACK_BUFF[2]);

    RESETSTACK(s, false);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(s.STACK_BUFF[static_cast<std::size_t>(k)], 0.0F) << "overlay, spectrum " << k;
    }
}

TEST(SpecDataArrange, ScaleFactorAndAbsoluteScaleSetTheDrawnHeight) {
    SPECDATA_GLOBALS s = threeSpectra();
    ADJUST_SCALE(s, 0, 2.0F, 0.0F);
    ADJUST_SCALE(s, 1, 1.0F, 20.0F); // a range of 5 on a full scale of 20
    RESETSTACK(s, true);
    EXPECT_EQ(drawnHeight(s, 0), 2.0F);
    EXPECT_EQ(drawnHeight(s, 1), 0.25F);
    EXPECT_EQ(s.STACK_BUFF[1], 2.1F);
    EXPECT_EQ(s.STACK_BUFF[2], 2.1F + 0.25F + 0.1F);
    EXPECT_EQ(drawnY(s, 1, 5.0F), 2.1F + 0.25F);
}

TEST(SpecDataArrange, HiddenSpectraAddNoHeightToTheStack) {
    SPECDATA_GLOBALS s = threeSpectra();
    setSpectrumVisible(s, 0, false);
    RESETSTACK(s, true);
    EXPECT_EQ(s.STACK_BUFF[0], 0.0F);
    EXPECT_EQ(s.STACK_BUFF[1], 0.0F) << "takes the place of the hidden spectrum";
    EXPECT_EQ(s.STACK_BUFF[2], 1.1F);
    DELETE_SPECDATA_FILE(s, 1);
    EXPECT_EQ(s.VISIBLE, (std::vector<bool>{false, true})) << "visibility moves with the spectra";
}

TEST(SpecDataArrange, PrimarySpectrumIsKeptAfterDeletion) {
    SPECDATA_GLOBALS s = threeSpectra();
    MAKE_PRIMARY(s, 0);
    EXPECT_EQ(s.ACTIVE, (std::vector<bool>{true, false, false}));
    MAKE_PRIMARY(s, 7);
    EXPECT_EQ(ensurePrimary(s), 0) << "an index out of range changes nothing";
    DELETE_SPECDATA_FILE(s, 0);
    EXPECT_EQ(ensurePrimary(s), 1) << "the last spectrum takes over";
    EXPECT_EQ(s.ACTIVE, (std::vector<bool>{false, true}));
    SPECDATA_GLOBALS empty;
    EXPECT_EQ(ensurePrimary(empty), -1);
}

TEST(SpecDataArrange, ResetYvalsFollowsChangedValues) {
    SPECDATA_GLOBALS s = threeSpectra();
    s.yColumn(1)[0] = -4.0F;
    RESET_YVALS(s);
    EXPECT_EQ(s.Y_EXTREMES[1], (std::array<float, 2>{-4.0F, 5.0F}));
    EXPECT_EQ(s.Y_EXTREMES[0], (std::array<float, 2>{100.0F, 300.0F}));
}

TEST(SpecDataArrange, BadScalesAreRefusedAndChangeNothing) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        float factor;
        float absolute;
    } bad[] = {{0.0F, 0.0F}, {-1.0F, 0.0F}, {nan, 0.0F}, {inf, 0.0F}, {1.0F, -2.0F}, {1.0F, nan}};
    for (const auto& row : bad) {
        SPECDATA_GLOBALS s = threeSpectra();
        try {
            ADJUST_SCALE(s, 0, row.factor, row.absolute);
            ADD_FAILURE() << "accepted " << row.factor << ", " << row.absolute;
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), "Adjust Scale");
        }
        EXPECT_EQ(s.SCALE_FACT[0], 1.0F) << row.factor << ", " << row.absolute;
        EXPECT_EQ(s.ABS_SCALE[0], 0.0F) << row.factor << ", " << row.absolute;
    }
}

TEST(SpecDataArrange, DataTypesAreOneUpperCaseWord) {
    const struct {
        const char* text;
        const char* stored; // nullptr: refused
    } rows[] = {{"raman", "RAMAN"},
                {"  XRD ", "XRD"},
                {"Energy", "ENERGY"},
                {"", nullptr},
                {"   ", nullptr},
                {"X RD", nullptr},
                {"ABCDEFGHIJKLMNOPQ", nullptr},
                {"NEUTRON_TOF", "NEUTRON_TOF"}};
    for (const auto& row : rows) {
        SPECDATA_GLOBALS s = threeSpectra();
        if (row.stored == nullptr) {
            EXPECT_THROW(ADJUST_DATA_TYPE(s, 0, row.text), QuarvexError) << row.text;
            EXPECT_EQ(s.DTYPE[0], "RAMAN") << row.text;
        } else {
            ADJUST_DATA_TYPE(s, 0, row.text);
            EXPECT_EQ(s.DTYPE[0], row.stored) << row.text;
        }
    }
}

TEST(SpecDataArrange, AxisKindFollowsTheDataType) {
    EXPECT_EQ(xAxisKindOf("RAMAN"), XAxisKind::RamanShift);
    EXPECT_EQ(xAxisKindOf("ENERGY"), XAxisKind::Energy);
    EXPECT_EQ(xAxisKindOf("XRD"), XAxisKind::TwoTheta);
    EXPECT_EQ(xAxisKindOf("raman"), XAxisKind::TwoTheta) << "types are compared exactly";
}

} // namespace
} // namespace quarvex
