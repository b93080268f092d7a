// Cosmic-ray removal: synthetic spikes found and replaced near the true values, real narrow bands
// (calcite's 1086 cm-1 band of a measured spectrum) left alone, manual removal, bad input.
#include "processing/CosmicRays.h"
#include "SyntheticSpectrum.h"
#include "TestSupport.h"
#include "common/QuarvexError.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <limits>

namespace quarvex {
namespace {

using test::Band;

const std::vector<Band> kBands{{465, 1000, 8}, {1086, 800, 4}, {700, 300, 20}};

TEST(CosmicRays, SpikesOfOneAndTwoPointsAreReplacedNearTheTrueValue) {
    struct Case {
        const char* name;
        double step;
        std::vector<std::size_t> spikePoints; // consecutive points form one spike
        float height;
    };
    const Case cases[] = {
        {"one point on the baseline", 1.0, {300}, 5000.0F},
        {"one point on a band's flank (x = 470)", 1.0, {370}, 5000.0F},
        {"two points", 1.0, {800, 801}, 3000.0F},
        {"three separate spikes, 0.5 grid", 0.5, {500, 1500, 2500}, 10000.0F},
        {"small spike: 20 times the noise", 2.0, {400}, 100.0F},
        // x = 580.00, 580.04, ...: too few float digits for line fits on x itself.
        {"fine grid far from x = 0", 0.04, {12000, 30000}, 1000.0F},
    };
    for (const Case& c : cases) {
        auto s = test::makeSpectrum(100, 1500, c.step, kBands, 500.0, 5.0);
        const std::vector<float> clean = s.y;
        for (const std::size_t i : c.spikePoints) {
            s.y[i] += c.height;
        }
        const DespikeResult result = RUN_AUTO_CRE(s.x, s.y);
        EXPECT_EQ(result.spikes, c.spikePoints) << c.name;
        for (const std::size_t i : c.spikePoints) {
            // Within 4 noise spreads plus 2% of the highest band of the clean value.
            EXPECT_NEAR(result.y[i], clean[i], 40.0F) << c.name << ", point " << i;
        }
        for (std::size_t i = 0; i < s.y.size(); ++i) {
            if (std::find(c.spikePoints.begin(), c.spikePoints.end(), i) == c.spikePoints.end()) {
                ASSERT_EQ(result.y[i], s.y[i]) << c.name << ": point " << i << " changed";
            }
        }
    }
}

TEST(CosmicRays, NarrowRealBandsSurvive) {
    // Measured spectra with narrow bands (calcite 1086 cm-1 at 2.6 cm-1 spacing, silicon 520):
    // no point of a band may be taken for a spike.
    for (const char* name : {"calcite_bwtek_532nm_icv.txt", "calcite_horiba_633nm_top.txt",
                             "calcite_bwtek_785nm_icv.txt", "silicon_horiba_633nm_top.txt"}) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const int k =
            READ_SPECDATA_FILE(specdata, info, test::sourcePath("data/raman/examples/") / name);
        const auto x = specdata.xValues(k);
        const auto y = specdata.yValues(k);
        const DespikeResult result = RUN_AUTO_CRE(x, y);
        EXPECT_TRUE(result.spikes.empty())
            << name << ": " << result.spikes.size()
            << " points, first at x = " << (result.spikes.empty() ? 0.0F : x[result.spikes[0]]);
        // A spike added beside the band is still found, and the band is kept.
        std::vector<float> spiked(y.begin(), y.end());
        const auto at =
            static_cast<std::size_t>(std::lower_bound(x.begin(), x.end(), 800.0F) - x.begin());
        spiked[at] += 10.0F * *std::max_element(y.begin(), y.end());
        const DespikeResult found = RUN_AUTO_CRE(x, spiked);
        EXPECT_EQ(found.spikes, std::vector<std::size_t>{at}) << name;
    }
}

TEST(CosmicRays, ManualRemovalTakesTheHighestPointNearTheClick) {
    auto s = test::makeSpectrum(100, 600, 1.0, kBands, 0.0, 1.0);
    const std::vector<float> clean = s.y;
    s.y[200] += 50.0F; // x = 300: only 50 above, not a spike for the automatic search's defaults
    const DespikeResult result = removeSpikeNear(s.x, s.y, 302.0);
    ASSERT_EQ(result.spikes, std::vector<std::size_t>{200});
    EXPECT_NEAR(result.y[200], clean[200], 5.0F);
    const DespikeResult nothing = removeSpikeNear(s.x, s.y, 100.0); // the first point
    EXPECT_TRUE(nothing.spikes.empty() || nothing.spikes[0] > 0);
}

TEST(CosmicRays, BadInputIsRefused) {
    const std::vector<float> four{1, 2, 3, 4};
    std::vector<float> x{1, 2, 3, 4, 5, 6};
    std::vector<float> y{1, 2, std::numeric_limits<float>::quiet_NaN(), 4, 5, 6};
    EXPECT_THROW(RUN_AUTO_CRE(four, four), QuarvexError);
    EXPECT_THROW(RUN_AUTO_CRE(x, y), QuarvexError);
    y[2] = 3;
    DespikeParameters wide;
    wide.maxWidth = 4;
    EXPECT_THROW(RUN_AUTO_CRE(x, y, wide), QuarvexError);
}

} // namespace
} // namespace quarvex
