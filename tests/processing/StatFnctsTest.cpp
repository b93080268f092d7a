// Mean and spread, line fit, noise level and format width against hand-computed values.
#include "processing/StatFncts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace quarvex {
namespace {

TEST(StatFncts, SpreadSubtractsTheMeanNotItsSquare) {
    const std::vector<float> y{2.0F, 2.0F};
    float avg = 0.0F;
    float sd = 0.0F;
    GET_AVG_AND_STDDEV(y, avg, sd);
    EXPECT_EQ(avg, 2.0F);
    EXPECT_FLOAT_EQ(sd, std::sqrt(2.0F)); // sqrt(|4 - 2|), not 0
}

TEST(StatFncts, LineFit) {
    struct Case {
        const char* name;
        std::vector<float> x, y;
        float slope, intercept;
    };
    const Case cases[] = {
        {"exact line", {1, 2, 3, 4}, {5, 7, 9, 11}, 2.0F, 3.0F},
        {"scatter: by hand slope 0.5, intercept 1/6", {0, 1, 2}, {0, 1, 1}, 0.5F, 1.0F / 6.0F},
        {"all x equal keeps the old values", {3, 3, 3}, {1, 2, 3}, -7.0F, 11.0F},
    };
    for (const Case& c : cases) {
        float slope = -7.0F;
        float intercept = 11.0F;
        CALCULATE_LST_SQRS(c.x, c.y, slope, intercept);
        EXPECT_NEAR(slope, c.slope, 1.0e-6F) << c.name;
        EXPECT_NEAR(intercept, c.intercept, 1.0e-6F) << c.name;
    }
}

TEST(StatFncts, NoiseOfGaussianNoiseOnASlope) {
    std::mt19937 random(7);
    std::normal_distribution<float> noise(0.0F, 3.0F);
    std::vector<float> x(3200);
    std::vector<float> y(3200);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = 100.0F + static_cast<float>(i);
        y[i] = 500.0F + 0.2F * x[i] + noise(random);
    }
    const NoiseLevel level = FIND_NOISE_STDDEV(x, y, 32);
    EXPECT_NEAR(level.noise, 3.0F, 0.15F); // the residual mean is ~0, so the spread is the RMS
    EXPECT_NEAR(level.avg, 500.0F + 0.2F * 1699.5F, 0.5F);
}

TEST(StatFncts, NoiseOfTooShortSpectraIsZero) {
    struct Case {
        int points;
        int segments;
        bool zero;
    };
    const Case cases[] = {{0, 32, true},  {2, 32, true}, {1, 1, true},
                          {3, 32, false}, {4, 2, false}, {5, 0, true}};
    for (const Case& c : cases) {
        std::vector<float> x(static_cast<std::size_t>(c.points));
        std::vector<float> y(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] = static_cast<float>(i);
            y[i] = static_cast<float>(i * i);
        }
        const float noise = FIND_NOISE_STDDEV(x, y, c.segments).noise;
        EXPECT_EQ(noise == 0.0F, c.zero) << c.points << " points, " << c.segments << " segments";
        EXPECT_TRUE(std::isfinite(noise)) << c.points;
    }
}

TEST(StatFncts, FloatFormatWidth) {
    struct Case {
        float value;
        int decimals;
        const char* text;
    };
    const Case cases[] = {{3.14159F, 3, "(f 5.3)"},
                          {-0.5F, 2, "(f 5.2)"},
                          {12345.678F, 2, "(f 8.2)"},
                          {1234567.0F, 4, "(f12.4)"}};
    for (const Case& c : cases) {
        EXPECT_EQ(GET_FLOAT_SIZE(c.value, c.decimals).text, c.text) << c.value;
    }
}

} // namespace
} // namespace quarvex
