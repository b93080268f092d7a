// The straight-line background of a fitting window and the fit's quality figures, against
// closed forms: a line recovered exactly, a Gaussian on a known line, sums worked by hand.
#include "processing/LinearBackground.h"
#include "processing/FitQuality.h"

#include "common/QuarvexError.h"
#include "processing/PeakProfiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace quarvex {
namespace {

struct Line {
    double slope;
    double intercept;
};

// A Gaussian (height 200, centre 30, width parameter 3: FWHM 2·sqrt(ln 2)·3) on `line`, x from
// 0 to 60 in steps of 0.5, with Gaussian noise of spread `noise` (fixed seed).
struct PeakOnLine {
    std::vector<float> x;
    std::vector<float> y;
};

PeakOnLine peakOnLine(const Line& line, double noise = 0.0) {
    std::mt19937 random(11);
    std::normal_distribution<double> gauss(0.0, noise > 0.0 ? noise : 1.0);
    PeakOnLine data;
    for (int i = 0; i <= 120; ++i) {
        const double x = 0.5 * i;
        const double peak = 200.0 * std::exp(-std::pow((x - 30.0) / 3.0, 2));
        data.x.push_back(static_cast<float>(x));
        data.y.push_back(static_cast<float>(line.slope * x + line.intercept + peak +
                                            (noise > 0.0 ? gauss(random) : 0.0)));
    }
    return data;
}

const Line kLines[] = {{0.0, 10.0}, {2.0, 15.0}, {-1.5, 120.0}, {0.25, -40.0}};

// The end regions lie 24 or more x units (8 widths) from the peak: its tail there is below
// 1e-25 of its height, and the line comes back to the float rounding of the values.
TEST(LinearBackground, EndRegionLineIsTheLineUnderANarrowPeak) {
    for (const Line& truth : kLines) {
        const PeakOnLine data = peakOnLine(truth);
        const StraightLine line = endRegionLine(data.x, data.y, 0.0F, 60.0F);
        EXPECT_NEAR(line.slope, truth.slope, 1e-5) << truth.slope << " " << truth.intercept;
        EXPECT_NEAR(line.intercept, truth.intercept, 2e-4) << truth.slope << " " << truth.intercept;
    }
}

TEST(LinearBackground, GaussianOnALineRecoversTheLineAndThePeak) {
    PeakFitSettings settings;
    settings.profile = PeakProfile::gaussian;
    for (const Line& truth : kLines) {
        const PeakOnLine data = peakOnLine(truth);
        const LineBackgroundFit result =
            fitPeaksOverLine(data.x, data.y, 0.0F, 60.0F, {}, settings);
        SCOPED_TRACE(testing::Message() << truth.slope << " " << truth.intercept);
        ASSERT_TRUE(result.fit.converged);
        ASSERT_EQ(result.fit.peaks.size(), 1U);
        EXPECT_NEAR(result.line.slope, truth.slope, 1e-5);
        EXPECT_NEAR(result.line.intercept, truth.intercept, 2e-4);
        EXPECT_NEAR(result.fit.peaks[0].centre, 30.0F, 1.0e-3F);
        EXPECT_NEAR(result.fit.peaks[0].height, 200.0F, 0.05F);
        EXPECT_NEAR(result.fit.peaks[0].fwhm, 2.0F * std::sqrt(std::log(2.0F)) * 3.0F, 1.0e-3F);
        EXPECT_NEAR(result.fit.background, 0.0F, 0.05F); // the line took all of it
        // The fitted curve includes the line: it meets the data.
        ASSERT_EQ(result.fit.fitted.size(), data.y.size());
        for (std::size_t i = 0; i < data.y.size(); i += 10) {
            EXPECT_NEAR(result.fit.fitted[i], data.y[i], 0.05F) << "x " << data.x[i];
        }
    }
}

// On a slope the specified constant background leaves a misfit that the line removes.
TEST(LinearBackground, TheLineBeatsAConstantOnASlope) {
    PeakFitSettings settings;
    settings.profile = PeakProfile::gaussian;
    const PeakOnLine data = peakOnLine({2.0, 15.0});
    const PeakFitResult constant = fitPeaks(data.x, data.y, 0.0F, 60.0F, {}, settings);
    const LineBackgroundFit sloped = fitPeaksOverLine(data.x, data.y, 0.0F, 60.0F, {}, settings);
    EXPECT_LT(fitQuality(data.y, sloped.fit.fitted, sloped.fit.parameters.size() + 2).reducedChisq,
              0.001 * fitQuality(data.y, constant.fitted, constant.parameters.size()).reducedChisq);
}

// With equal unit weights the reduced chi-square estimates the noise variance: 0.5² here, within
// the spread of a variance estimate from 121 points (relative 1 / sqrt(58), three of them).
TEST(FitQuality, ReducedChisqOfANoisyFitIsTheNoiseVariance) {
    PeakFitSettings settings;
    settings.profile = PeakProfile::gaussian;
    const PeakOnLine data = peakOnLine({2.0, 15.0}, 0.5);
    const LineBackgroundFit result = fitPeaksOverLine(data.x, data.y, 0.0F, 60.0F, {}, settings);
    const FitQuality q = fitQuality(data.y, result.fit.fitted, result.fit.parameters.size() + 2);
    EXPECT_NEAR(q.reducedChisq, 0.25, 3.0 * 0.25 / std::sqrt(60.0));
    EXPECT_GT(q.rSquared, 0.999);
}

struct QualityCase {
    const char* name;
    std::vector<float> measured;
    std::vector<float> fitted;
    std::size_t parameters;
    double reducedChisq; // worked by hand; NaN: undefined
    double rSquared;
};

TEST(FitQuality, ClosedForms) {
    const double nan = std::nan("");
    const QualityCase cases[] = {
        // Residuals 0.5, 0, 0.5, 0, 0: Σr² = 0.5; mean 3, Σ(y - ȳ)² = 10.
        {"hand-worked", {1, 2, 3, 4, 5}, {1.5F, 2, 2.5F, 4, 5}, 2, 0.5 / 3.0, 0.95},
        {"perfect", {1, 4, 9}, {1, 4, 9}, 1, 0.0, 1.0},
        // The mean as the model: R² is 0 by definition.
        {"the mean", {1, 2, 3, 6}, {3, 3, 3, 3}, 1, 14.0 / 3.0, 0.0},
        {"as many parameters as points", {1, 2}, {1, 2}, 2, nan, 1.0},
        {"flat data", {7, 7, 7}, {6, 7, 8}, 1, 1.0, nan},
    };
    for (const QualityCase& c : cases) {
        const FitQuality q = fitQuality(c.measured, c.fitted, c.parameters);
        if (std::isnan(c.reducedChisq)) {
            EXPECT_TRUE(std::isnan(q.reducedChisq)) << c.name;
        } else {
            EXPECT_NEAR(q.reducedChisq, c.reducedChisq, 1e-12) << c.name;
        }
        if (std::isnan(c.rSquared)) {
            EXPECT_TRUE(std::isnan(q.rSquared)) << c.name;
        } else {
            EXPECT_NEAR(q.rSquared, c.rSquared, 1e-12) << c.name;
        }
    }
}

TEST(LinearBackground, TooFewPointsForTheLineSaySo) {
    const std::vector<float> x{0, 1, 2, 3, 4, 5, 6, 7};
    const std::vector<float> y{1, 2, 9, 2, 1, 1, 1, 1};
    try {
        endRegionLine(x, y, 0.0F, 4.0F);
        FAIL() << "five points gave a line";
    } catch (const QuarvexError& error) {
        EXPECT_EQ(error.title(), "Error");
        EXPECT_NE(error.text().find("5 points"), std::string::npos) << error.text();
    }
}

} // namespace
} // namespace quarvex
