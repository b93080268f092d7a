// Growing, rebuilding and shrinking the set of loaded spectra.
#include "specdata/SpecDataGlobals.h"

#include <gtest/gtest.h>

#include <numeric>

namespace quarvex {
namespace {

SpectrumRecord ramp(const std::string& name, int points, float start) {
    SpectrumRecord record;
    record.name = name;
    record.x.resize(static_cast<std::size_t>(points));
    std::iota(record.x.begin(), record.x.end(), start);
    record.y = record.x;
    record.dtype = "RAMAN";
    return record;
}

void expectRamp(const SPECDATA_GLOBALS& s, int k, const std::string& name, int points,
                float start) {
    const auto i = static_cast<std::size_t>(k);
    EXPECT_EQ(s.NAME[i], name);
    ASSERT_EQ(s.NUMDATA[i], points) << name;
    const auto x = s.xValues(k);
    for (int p = 0; p < points; ++p) {
        EXPECT_EQ(x[static_cast<std::size_t>(p)], start + static_cast<float>(p)) << name;
    }
    EXPECT_EQ(s.Y_EXTREMES[i][0], start) << name;
    EXPECT_EQ(s.Y_EXTREMES[i][1], start + static_cast<float>(points - 1)) << name;
}

TEST(SpecDataGlobals, AddingAWiderSpectrumWidensEveryColumn) {
    SPECDATA_GLOBALS s;
    appendSpectrum(s, ramp("a", 3, 10.0F));
    appendSpectrum(s, ramp("b", 5, 20.0F));
    appendSpectrum(s, ramp("c", 2, 30.0F));
    EXPECT_EQ(s.count(), 3);
    EXPECT_EQ(s.pointDimension, 5);
    EXPECT_EQ(s.X.size(), 15U);
    expectRamp(s, 0, "a", 3, 10.0F);
    expectRamp(s, 1, "b", 5, 20.0F);
    expectRamp(s, 2, "c", 2, 30.0F);
    EXPECT_EQ(s.ACTIVE, (std::vector<bool>{false, false, true})) << "the newest is in focus";
    EXPECT_TRUE(s.DATA_X2.empty() && s.DATA_NAME2.empty()) << "spares hold data only meanwhile";
}

TEST(SpecDataGlobals, DeletingKeepsTheOrderOfTheOthers) {
    struct Case {
        int remove;
        std::vector<std::string> left;
        int dimension;
    };
    const Case cases[] = {
        {1, {"a", "c"}, 3}, {0, {"b", "c"}, 5}, {2, {"a", "b"}, 5}, {7, {"a", "b", "c"}, 5}};
    for (const Case& c : cases) {
        SPECDATA_GLOBALS s;
        appendSpectrum(s, ramp("a", 3, 10.0F));
        appendSpectrum(s, ramp("b", 5, 20.0F));
        appendSpectrum(s, ramp("c", 2, 30.0F));
        DELETE_SPECDATA_FILE(s, c.remove);
        EXPECT_EQ(s.NAME, c.left) << "removing " << c.remove;
        EXPECT_EQ(s.pointDimension, c.dimension) << "removing " << c.remove;
        for (int k = 0; k < s.count(); ++k) {
            const float start = s.NAME[static_cast<std::size_t>(k)] == "a"   ? 10.0F
                                : s.NAME[static_cast<std::size_t>(k)] == "b" ? 20.0F
                                                                             : 30.0F;
            expectRamp(s, k, s.NAME[static_cast<std::size_t>(k)],
                       s.NUMDATA[static_cast<std::size_t>(k)], start);
        }
    }
}

TEST(SpecDataGlobals, DeletingTheLastSpectrumLeavesAnEmptySet) {
    SPECDATA_GLOBALS s;
    appendSpectrum(s, ramp("only", 4, 1.0F));
    DELETE_SPECDATA_FILE(s, 0);
    EXPECT_EQ(s.count(), 0);
    EXPECT_EQ(s.pointDimension, 0);
    EXPECT_TRUE(s.X.empty() && s.Y.empty() && s.NAME.empty() && s.HEADER.empty());
}

} // namespace
} // namespace quarvex
