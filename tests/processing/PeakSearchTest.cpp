// The peak search on synthetic spectra with known bands and noise, and on a measured spectrum.
#include "processing/PeakSearch.h"

#include "TestSupport.h"
#include "common/QuarvexError.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace quarvex {
namespace {

struct Band {
    float centre;
    float height;
};

// Lorentzian bands (FWHM 8) on a sloping background with Gaussian noise of 5, x = 100 ... 1100.
void syntheticSpectrum(const std::vector<Band>& bands, unsigned seed, std::vector<float>& x,
                       std::vector<float>& y) {
    std::mt19937 random(seed);
    std::normal_distribution<float> noise(0.0F, 5.0F);
    for (int i = 0; i <= 1000; ++i) {
        const float xi = 100.0F + static_cast<float>(i);
        float yi = 200.0F + 0.1F * xi + noise(random);
        for (const Band& band : bands) {
            const float q = (xi - band.centre) / 4.0F;
            yi += band.height / (1.0F + q * q);
        }
        x.push_back(xi);
        y.push_back(yi);
    }
}

TEST(PeakSearch, FindsTheBandsAboveFiveTimesTheNoiseAndNothingElse) {
    // 100, 20 and 8 times the noise are found; 2 times is not; two bands 2 points apart are one.
    const std::vector<Band> bands{{250.0F, 500.0F}, {420.5F, 100.0F}, {600.0F, 40.0F},
                                  {800.0F, 10.0F},  {950.0F, 300.0F}, {952.0F, 300.0F}};
    const std::vector<float> expected{250.0F, 420.5F, 600.0F, 951.0F};
    for (unsigned seed = 1; seed <= 10; ++seed) {
        std::vector<float> x;
        std::vector<float> y;
        syntheticSpectrum(bands, seed, x, y);
        const PeakSearchResult found = findPeaks(x, y, PeakSearchSettings{}, 0.0F, 2000.0F);
        EXPECT_NEAR(found.noise, 5.0F, 1.0F) << "seed " << seed;
        ASSERT_EQ(found.peaks.size(), expected.size()) << "seed " << seed;
        for (std::size_t k = 0; k < expected.size(); ++k) {
            // The weakest band (8 times the noise) is placed within 1.5 points.
            EXPECT_NEAR(found.peaks[k].x, expected[k], 1.5F) << "seed " << seed << ", peak " << k;
        }
        EXPECT_NEAR(found.peaks[0].height, 500.0F, 50.0F) << "seed " << seed;
        EXPECT_NEAR(found.peaks[1].height, 100.0F, 15.0F) << "seed " << seed;
    }
}

TEST(PeakSearch, NotFiniteValuesAreRefused) {
    std::vector<float> x{1, 2, 3, 4};
    std::vector<float> y{1, std::numeric_limits<float>::quiet_NaN(), 3, 4};
    EXPECT_THROW(findPeaks(x, y, PeakSearchSettings{}, 0.0F, 5.0F), QuarvexError);
}

TEST(PeakSearch, SmoothingKeepsQuadratics) {
    // Quadratic Savitzky-Golay weights reproduce any quadratic exactly, at the ends too.
    std::vector<float> y;
    for (int i = 0; i < 12; ++i) {
        y.push_back(3.0F + 2.0F * static_cast<float>(i) - 0.5F * static_cast<float>(i * i));
    }
    for (const int points : {3, 5, 6, 9}) {
        const std::vector<float> smoothed = smoothSpectrum(y, points);
        for (std::size_t i = 0; i < y.size(); ++i) {
            EXPECT_NEAR(smoothed[i], y[i], 1.0e-4F) << points << " points, i " << i;
        }
    }
}

TEST(PeakSearch, FindsTheCalciteBandsOfAMeasuredSpectrum) {
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const int index = READ_SPECDATA_FILE(
        specdata, info, test::sourcePath("data/raman/examples/calcite_horiba_633nm_top.txt"));
    const PeakSearchResult found = findPeaks(specdata.xValues(index), specdata.yValues(index),
                                             PeakSearchSettings{}, 120.0F, 1800.0F);
    // Calcite bands, about 2 cm-1 low in this file (instrument calibration).
    for (const float band : {154.0F, 280.0F, 710.0F, 1084.0F, 1434.0F, 1747.0F}) {
        const bool seen =
            std::any_of(found.peaks.begin(), found.peaks.end(),
                        [&](const FoundPeak& p) { return std::fabs(p.x - band) < 2.0F; });
        EXPECT_TRUE(seen) << band;
    }
    EXPECT_LE(found.peaks.size(), 8U);
}

// Bases found without walking out from every top: worked by hand on a small profile, and on
// long runs of equal and of ever higher tops (where walking out is quadratic).
TEST(PeakSearch, BasesOfEqualAndRisingTops) {
    PeakSearchSettings settings;
    settings.threshold = 0.0F; // every top with a prominence counts
    settings.smoothingPoints = 1;
    settings.minSeparation = 2;
    const auto search = [&](const std::vector<float>& y) {
        std::vector<float> x(y.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] = static_cast<float>(i);
        }
        return findPeaks(x, y, settings, 0.0F, static_cast<float>(y.size())).peaks;
    };
    // Tops 3, 9, 5: base values (0, 1), (0, 0) and (2, 0); parabola vertices worked by hand.
    const std::vector<FoundPeak> small = search({0, 3, 1, 9, 2, 5, 0});
    ASSERT_EQ(small.size(), 3U);
    const std::vector<FoundPeak> expected = {
        {1.1F, 2.475F}, {3.0F + 1.0F / 30.0F, 9.0F + 1.0F / 120.0F}, {4.875F, 3.9375F}};
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_NEAR(small[k].x, expected[k].x, 1e-5F) << k; // float rounding of a few operations
        EXPECT_NEAR(small[k].height, expected[k].height, 1e-5F) << k;
    }

    constexpr int kTeeth = 100'000;
    for (const bool rising : {false, true}) {
        std::vector<float> y(2 * kTeeth + 1, 0.0F);
        for (int m = 0; m < kTeeth; ++m) {
            y[static_cast<std::size_t>(2 * m + 1)] = rising ? static_cast<float>(m + 1) : 5.0F;
        }
        const std::vector<FoundPeak> peaks = search(y);
        ASSERT_EQ(peaks.size(), std::size_t{kTeeth}) << rising;
        for (int m = 0; m < kTeeth; m += 997) {
            const FoundPeak& peak = peaks[static_cast<std::size_t>(m)];
            EXPECT_EQ(peak.x, static_cast<float>(2 * m + 1)) << rising;
            EXPECT_EQ(peak.height, rising ? static_cast<float>(m + 1) : 5.0F) << rising;
        }
    }
}

} // namespace
} // namespace quarvex
