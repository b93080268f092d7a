// Explained results: bands paired one to one within the tolerance after the shift, the bands of
// a synthetic spectrum and its signal-to-noise, and the ambiguity of the first two scores.
#include "library/SearchExplain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace quarvex {
namespace {

TEST(MatchBandsTest, PairsWithinToleranceOneToOne) {
    struct Case {
        const char* what;
        std::vector<float> unknown;
        std::vector<float> entry;
        int shift;
        std::vector<std::pair<float, float>> matched;
        std::vector<float> unknownOnly;
        std::vector<float> entryOnly;
    };
    const Case cases[] = {
        {"exact", {100, 500}, {100, 500}, 0, {{100, 100}, {500, 500}}, {}, {}},
        {"at the tolerance", {104}, {100}, 0, {{104, 100}}, {}, {}},
        {"beyond it", {104.5F}, {100}, 0, {}, {104.5F}, {100}},
        {"the shift moves the entry", {103, 600}, {100, 590}, 3, {{103, 100}}, {600}, {590}},
        {"a negative shift", {97}, {100}, -3, {{97, 100}}, {}, {}},
        // Two unknown bands near one entry band: the closer one takes it.
        {"closest first", {98, 101}, {100}, 0, {{101, 100}}, {98}, {}},
        {"nothing on one side", {}, {300, 400}, 0, {}, {}, {300, 400}},
    };
    for (const Case& c : cases) {
        const BandTable table = matchBands(c.unknown, c.entry, c.shift);
        std::vector<std::pair<float, float>> matched;
        for (const BandPair& pair : table.matched) {
            matched.emplace_back(pair.unknown, pair.entry);
        }
        EXPECT_EQ(matched, c.matched) << c.what;
        EXPECT_EQ(table.unknownOnly, c.unknownOnly) << c.what;
        EXPECT_EQ(table.entryOnly, c.entryOnly) << c.what;
    }
}

// Lorentzians of height 1000 at 400, 300 at 900 and `weak` at 1300 cm-1, plus noise.
void threeBands(float weak, float noiseDeviation, std::vector<float>& x, std::vector<float>& y) {
    std::mt19937 random(5);
    std::normal_distribution<float> noise(0.0F, noiseDeviation);
    for (float shift = 100.0F; shift <= 1500.0F; shift += 1.0F) {
        float value = noiseDeviation > 0.0F ? noise(random) : 0.0F;
        for (const auto& [centre, height] :
             {std::pair{400.0F, 1000.0F}, std::pair{900.0F, 300.0F}, std::pair{1300.0F, weak}}) {
            const float u = (shift - centre) / 6.0F;
            value += height / (1.0F + u * u);
        }
        x.push_back(shift);
        y.push_back(value);
    }
}

TEST(SignificantBandsTest, KeepsBandsAboveTheShareOfTheStrongest) {
    std::vector<float> x;
    std::vector<float> y;
    threeBands(30.0F, 0.0F, x, y); // 30 is below 5 % of 1000
    double snr = 0.0;
    const std::vector<float> bands = significantBands(x, y, &snr);
    ASSERT_EQ(bands.size(), 2U) << ::testing::PrintToString(bands);
    EXPECT_NEAR(bands[0], 400.0F, 0.05F);
    EXPECT_NEAR(bands[1], 900.0F, 0.05F);
    EXPECT_TRUE(std::isinf(snr)) << "no noise";
}

TEST(SignificantBandsTest, SignalToNoiseOfANoisySpectrum) {
    std::vector<float> x;
    std::vector<float> y;
    threeBands(0.0F, 10.0F, x, y);
    double snr = 0.0;
    const std::vector<float> bands = significantBands(x, y, &snr);
    ASSERT_EQ(bands.size(), 2U) << ::testing::PrintToString(bands);
    EXPECT_NEAR(bands[0], 400.0F, 0.5F);
    // Highest band 1000 over noise of deviation 10; the noise level is a spread about lines in
    // segments and the height is taken after smoothing, so only near 100.
    EXPECT_GT(snr, 50.0);
    EXPECT_LT(snr, 200.0);
}

TEST(AmbiguousResultTest, FirstTwoScoresWithinTheMargin) {
    const std::tuple<double, double, bool> cases[] = {
        {90.0, 89.0, true}, {90.0, 87.0, false}, {50.0, 50.0, true}, {60.0, 20.0, false}};
    for (const auto& [first, second, ambiguous] : cases) {
        LIBRARY_GLOBALS library;
        library.PERC_MATCH = {second, first};
        library.MI_SORTINDEXPERCENTS = {1, 0};
        EXPECT_EQ(ambiguousResult(library), ambiguous) << first << ' ' << second;
    }
    LIBRARY_GLOBALS single;
    single.PERC_MATCH = {80.0};
    single.MI_SORTINDEXPERCENTS = {0};
    EXPECT_FALSE(ambiguousResult(single));
}

} // namespace
} // namespace quarvex
