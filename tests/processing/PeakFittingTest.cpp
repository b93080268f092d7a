// The peak fitter: the step rules of LEVMRQ, recovery of known peaks from noisy windows with
// honest standard errors, the retry and the failure message, and bad input.
#include "processing/PeakFitting.h"

#include "common/QuarvexError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace quarvex {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Points of GD_TOT with parameters `a` on x = 0, 0.5, ... 100, plus Gaussian noise.
FitWindow syntheticWindow(const std::vector<float>& a, float noise, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> deviate(0.0F, noise);
    FitWindow window;
    std::vector<float> dyda(a.size());
    for (int i = 0; i <= 200; ++i) {
        const float x = 0.5F * static_cast<float>(i);
        float y = 0.0F;
        GD_TOT(x, a, y, dyda);
        window.x.push_back(x);
        window.y.push_back(y + (noise > 0.0F ? deviate(random) : 0.0F));
    }
    return window;
}

// y = p·x with the sign of its derivative turned, so that every step goes uphill.
void uphillModel(float x, std::span<const float> a, float& y, std::span<float> dyda) {
    y = a[0] * x;
    dyda[0] = -x;
}

TEST(PeakFitting, LevmrqStepRules) {
    const std::vector<float> truth{300.0F, 50.0F, 4.0F, 0.5F, 20.0F};
    const FitWindow perfect = syntheticWindow(truth, 0.0F, 0);
    const bool all[] = {true, true, true, true, true};
    {
        // A perfect model converges at the first accepted step: the χ² decrease is below 1e-4.
        const FitProblem problem{perfect.x, perfect.y, &GD_TOT, all, {}, {}};
        std::vector<float> a = truth;
        float chisq = -1.0F;
        float alamda = -1.0F;
        LevmrqWork work;
        LEVMRQ(problem, a, chisq, alamda, work);
        EXPECT_EQ(alamda, -1.0F);
        EXPECT_LT(chisq, 1.0e-4F);
    }
    {
        // A step that raises χ² leaves A as it was and multiplies ALAMDA by 10.
        const std::vector<float> x{1, 2, 3};
        const std::vector<float> y{2, 4, 6};
        const FitProblem problem{x, y, &uphillModel, std::span(all, 1), {}, {}};
        std::vector<float> a{1.0F};
        float chisq = 0.0F;
        float alamda = -1.0F;
        LevmrqWork work;
        LEVMRQ(problem, a, chisq, alamda, work);
        EXPECT_EQ(a[0], 1.0F);
        EXPECT_FLOAT_EQ(alamda, 0.01F);
        EXPECT_EQ(chisq, 14.0F); // (2-1)² + (4-2)² + (6-3)²
        LEVMRQ(problem, a, chisq, alamda, work);
        EXPECT_EQ(a[0], 1.0F);
        EXPECT_FLOAT_EQ(alamda, 0.1F);
    }
}

struct RecoveryCase {
    const char* name;
    std::vector<float> truth; // GD_TOT parameters
};

TEST(PeakFitting, RecoversOverlappingPeaksWithinTwoStandardErrors) {
    const RecoveryCase cases[] = {
        {"one peak", {400, 50, 5, 0.4F, 30}},
        {"two overlapping", {400, 45, 5, 0.3F, 250, 52, 4, 0.7F, 30}},
        {"three overlapping", {300, 35, 5, 0.5F, 500, 44, 6, 0.2F, 200, 52, 4, 0.8F, 30}},
    };
    int inside = 0;
    int total = 0;
    for (const RecoveryCase& c : cases) {
        for (unsigned seed = 1; seed <= 100; ++seed) {
            const FitWindow window = syntheticWindow(c.truth, 0.8F, seed);
            std::vector<float> positions;
            for (std::size_t k = 1; k < c.truth.size(); k += 4) {
                positions.push_back(c.truth[k] + 0.7F); // start off the true centres
            }
            PeakFitSettings settings;
            const PeakFitResult fit =
                fitPeaks(window.x, window.y, 0.0F, 100.0F, positions, settings);
            ASSERT_TRUE(fit.converged) << c.name << ", seed " << seed;
            for (std::size_t k = 0; k < fit.peaks.size(); ++k) {
                const float truth = c.truth[4 * k + 1];
                const FittedPeak& peak = fit.peaks[k];
                ASSERT_TRUE(std::isfinite(peak.centreError) && peak.centreError > 0.0F) << c.name;
                inside += std::fabs(peak.centre - truth) <= 2.0F * peak.centreError ? 1 : 0;
                ++total;
            }
        }
    }
    // Honest errors put about 95.4% of the centres within two standard errors.
    const double fraction = static_cast<double>(inside) / total;
    EXPECT_GE(fraction, 0.95) << inside << " of " << total;
    EXPECT_LE(fraction, 0.995) << "errors too large: " << inside << " of " << total;
}

TEST(PeakFitting, GaussianProfileRecoversHeightAndWidth) {
    FitWindow window;
    std::vector<float> dyda(4);
    const std::vector<float> truth{200.0F, 30.0F, 3.0F, 10.0F};
    for (int i = 0; i <= 120; ++i) {
        window.x.push_back(0.5F * static_cast<float>(i));
        float y = 0.0F;
        GS_TOT(window.x.back(), truth, y, dyda);
        window.y.push_back(y);
    }
    PeakFitSettings settings;
    settings.profile = PeakProfile::gaussian;
    const PeakFitResult fit = ORGANIZE_PEAKFITTING(window.x, window.y, 0.0F, 60.0F, {}, settings);
    ASSERT_EQ(fit.peaks.size(), 1U);
    EXPECT_NEAR(fit.peaks[0].centre, 30.0F, 1.0e-3F);
    EXPECT_NEAR(fit.peaks[0].height, 200.0F, 0.05F);
    EXPECT_NEAR(fit.peaks[0].fwhm, 2.0F * std::sqrt(std::log(2.0F)) * 3.0F, 1.0e-3F);
    EXPECT_NEAR(fit.background, 10.0F, 0.05F);
    EXPECT_EQ(fit.peaks[0].mix, 0.0F);
}

TEST(PeakFitting, RetriesOnceThenReportsNonConvergence) {
    const FitWindow window = syntheticWindow({400, 50, 5, 0.4F, 30}, 0.8F, 3);
    PeakFitSettings settings;
    settings.maxIterations = 2; // far too few for a start 3 units off
    const std::vector<float> positions{53.0F};
    const PeakFitResult fit = fitPeaks(window.x, window.y, 0.0F, 100.0F, positions, settings);
    EXPECT_FALSE(fit.converged);
    EXPECT_TRUE(fit.retried);
    EXPECT_EQ(fit.iterations, 2 * (1 + 2));
    EXPECT_TRUE(std::isnan(fit.peaks[0].centreError));
    int messages = 0;
    try {
        ORGANIZE_PEAKFITTING(window.x, window.y, 0.0F, 100.0F, positions, settings);
    } catch (const QuarvexError& error) {
        ++messages;
        EXPECT_EQ(error.text(), "Did not converge. Resize window and try again.");
        EXPECT_EQ(error.title(), "Error");
    }
    EXPECT_EQ(messages, 1);
}

TEST(PeakFitting, BadInputEndsWithAClearMessage) {
    const FitWindow good = syntheticWindow({400, 50, 5, 0.4F, 30}, 0.8F, 5);
    FitWindow zeros = good;
    std::fill(zeros.y.begin(), zeros.y.end(), 0.0F);
    FitWindow withNaN = good;
    withNaN.y[100] = kNaN;
    struct Case {
        const char* name;
        const FitWindow* window;
        float low, high;
        std::vector<float> positions;
        const char* message;
    };
    const Case cases[] = {
        {"fewer points than parameters", &good, 49.0F, 50.0F, {49.5F}, "too few to fit 5"},
        {"all-zero data", &zeros, 0.0F, 100.0F, {}, "all its values are equal"},
        {"NaN in the data", &withNaN, 0.0F, 100.0F, {50.0F}, "not a finite number"},
        {"peak outside the window", &good, 40.0F, 60.0F, {70.0F}, "lies outside the window"},
        {"no peak in pure background", &good, 90.0F, 100.0F, {}, "No peak was found"},
    };
    for (const Case& c : cases) {
        const std::vector<float> before = c.window->y;
        try {
            fitPeaks(c.window->x, c.window->y, c.low, c.high, c.positions, PeakFitSettings{});
            ADD_FAILURE() << c.name << ": no message";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.name << ": " << error.text();
            EXPECT_EQ(error.title(), "Error") << c.name;
        }
        EXPECT_EQ(std::memcmp(before.data(), c.window->y.data(), before.size() * sizeof(float)), 0)
            << c.name;
    }
    EXPECT_THROW(fitPeakParameters(good, {400, 50, 0, 0.4F, 30}, PeakFitSettings{}), QuarvexError);
}

TEST(PeakFitting, SingularCurvatureGivesNoErrorsButNoCrash) {
    // Two identical peaks at one place: their columns of the curvature matrix are equal.
    const FitWindow window = syntheticWindow({400, 50, 5, 0.4F, 30}, 0.8F, 9);
    const PeakFitResult fit =
        fitPeakParameters(window, {200, 50, 5, 0.5F, 200, 50, 5, 0.5F, 30}, PeakFitSettings{});
    EXPECT_TRUE(std::isnan(fit.peaks[0].centreError) || !fit.converged);
    EXPECT_TRUE(std::isfinite(fit.chisq));
}

TEST(PeakStart, WindowAndNearestPoint) {
    const std::vector<float> x{1, 2, 3, 4, 5};
    struct WindowCase {
        float low, high;
        int first, count;
    };
    const WindowCase windows[] = {{2, 4, 1, 3}, {4, 2, 1, 3}, {2.5F, 2.7F, 2, 0}, {0, 9, 0, 5}};
    for (const WindowCase& w : windows) {
        const WindowRange range = GET_WINDOW_NDAT(x, w.low, w.high);
        EXPECT_EQ(range.first, w.first) << w.low << ":" << w.high;
        EXPECT_EQ(range.count, w.count) << w.low << ":" << w.high;
    }
    const std::pair<float, int> nearest[] = {{-3, 0}, {2.4F, 1}, {2.6F, 2}, {5, 4}, {80, 4}};
    for (const auto& [location, index] : nearest) {
        EXPECT_EQ(nearestPoint(x, location), index) << location;
    }
}

TEST(PeakStart, StartingValuesFromTheData) {
    const FitWindow window = syntheticWindow({400, 50, 5, 0.4F, 30}, 0.0F, 0);
    const std::vector<float> positions{50.0F};
    const std::vector<float> a = GET_PARMS(window, positions, PeakProfile::pseudoVoigt, 5);
    ASSERT_EQ(a.size(), 5U);
    EXPECT_NEAR(PEAKWID(PeakProfile::pseudoVoigt, a).value, 5.0F, 0.5F);
    EXPECT_NEAR(a[4], 30.0F, 3.0F); // the lower envelope sits on the Lorentzian tails
    EXPECT_NEAR(PEAKAMP(PeakProfile::pseudoVoigt, a).value + a[4], window.y[100], 1.0F);
    // READJUSTPARMS moves a wandered peak back onto the nearest point and the data there.
    const std::vector<float> wandered{1.0e6F, 63.3F, 1.0e-3F, 0.9F, -50.0F};
    const std::vector<float> readjusted =
        READJUSTPARMS(window, wandered, PeakProfile::pseudoVoigt, 5);
    EXPECT_EQ(readjusted[1], 63.5F);
    EXPECT_GT(readjusted[2], 0.9F);
    EXPECT_EQ(readjusted[3], 0.5F);
}

} // namespace
} // namespace quarvex
