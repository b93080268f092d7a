// Baselines (ALS, arPLS, SNIP, polynomial) against synthetic spectra of known background, the
// sparse solve against a dense one, and the refusals of bad input.
#include "SyntheticSpectrum.h"
#include "common/QuarvexError.h"
#include "processing/AlsBaseline.h"
#include "processing/ArplsBaseline.h"
#include "processing/PolynomialBaseline.h"
#include "processing/SnipBaseline.h"
#include "processing/WhittakerSmoother.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace quarvex {
namespace {

using test::Band;

const std::vector<Band> kBands{{465, 1000, 8}, {1086, 800, 5}, {700, 300, 20}, {2900, 400, 30}};

// Largest |baseline - true background| over the points farther than 60 x units from any band
// centre, relative to the strongest band.
double backgroundError(const test::SyntheticSpectrum& s, const std::vector<float>& baseline) {
    double worst = 0.0;
    for (std::size_t i = 0; i < s.x.size(); ++i) {
        bool nearBand = false;
        for (const Band& band : kBands) {
            nearBand = nearBand || std::abs(s.x[i] - band.position) < 60.0;
        }
        if (!nearBand) {
            worst = std::max(worst, std::abs(static_cast<double>(baseline[i] - s.background[i])));
        }
    }
    return worst / 1000.0;
}

// Fraction of a band's sampled height kept after the baseline is subtracted.
double keptHeight(const test::SyntheticSpectrum& s, const std::vector<float>& baseline,
                  const Band& band) {
    double top = -std::numeric_limits<double>::infinity();
    double trueTop = 0.0;
    for (std::size_t i = 0; i < s.x.size(); ++i) {
        if (std::abs(s.x[i] - band.position) <= band.fwhm / 2) {
            top = std::max(top, static_cast<double>(s.y[i] - baseline[i]));
            trueTop = std::max(trueTop, static_cast<double>(s.bands[i]));
        }
    }
    return top / trueTop;
}

using BaselineMethod = std::function<BaselineFit(std::span<const float>, std::span<const float>)>;

TEST(Baseline, RemovesABroadBackgroundTwiceTheHighestBandAndKeepsTheBands) {
    struct Case {
        const char* name;
        BaselineMethod method;
        double backgroundTolerance; // fraction of the highest band
    };
    const Case cases[] = {
        {"ALS defaults", [](auto x, auto y) { return alsBaseline(x, y, {}); }, 0.04},
        {"arPLS defaults", [](auto x, auto y) { return arplsBaseline(x, y, {}); }, 0.03},
        {"SNIP defaults", [](auto x, auto y) { return snipBaseline(x, y, {}); }, 0.06},
    };
    for (const double step : {0.5, 1.0, 3.0}) {
        const auto s = test::makeSpectrum(100, 3200, step, kBands, 2000.0, 5.0);
        for (const Case& c : cases) {
            const BaselineFit fit = c.method(s.x, s.y);
            ASSERT_EQ(fit.baseline.size(), s.y.size()) << c.name;
            EXPECT_LT(backgroundError(s, fit.baseline), c.backgroundTolerance)
                << c.name << ", step " << step;
            for (const Band& band : kBands) {
                EXPECT_GT(keptHeight(s, fit.baseline, band), 0.9)
                    << c.name << ", step " << step << ", band at " << band.position;
            }
        }
    }
}

TEST(Baseline, AlsPenaltyInXUnitsGivesTheSameBaselineOnAnyGrid) {
    const auto fine = test::makeSpectrum(100, 2000, 0.5, kBands, 3000.0, 0.0);
    const auto coarse = test::makeSpectrum(100, 2000, 2.0, kBands, 3000.0, 0.0);
    const auto fineFit = alsBaseline(fine.x, fine.y, {});
    const auto coarseFit = alsBaseline(coarse.x, coarse.y, {});
    for (std::size_t i = 0; i < coarse.x.size(); i += 50) {
        // x = 100 + 2i is point 4i of the fine grid; 1% of the highest band.
        EXPECT_NEAR(coarseFit.baseline[i], fineFit.baseline[4 * i], 10.0) << coarse.x[i];
    }
}

TEST(Baseline, SparseSolveAgreesWithDenseSolve) {
    const int n = 25;
    const double lambda = 40.0;
    std::vector<float> y(n);
    std::vector<double> weights(n);
    for (int i = 0; i < n; ++i) {
        y[static_cast<std::size_t>(i)] = static_cast<float>(std::sin(0.3 * i) + 0.1 * i);
        weights[static_cast<std::size_t>(i)] = i % 3 == 0 ? 0.01 : 0.99;
    }
    Eigen::MatrixXd d = Eigen::MatrixXd::Zero(n - 2, n);
    for (int r = 0; r < n - 2; ++r) {
        d(r, r) = 1.0;
        d(r, r + 1) = -2.0;
        d(r, r + 2) = 1.0;
    }
    Eigen::MatrixXd system = lambda * d.transpose() * d;
    Eigen::VectorXd rightSide(n);
    for (int i = 0; i < n; ++i) {
        system(i, i) += weights[static_cast<std::size_t>(i)];
        rightSide(i) = weights[static_cast<std::size_t>(i)] * y[static_cast<std::size_t>(i)];
    }
    const Eigen::VectorXd dense = system.fullPivLu().solve(rightSide);
    WhittakerSmoother smoother(static_cast<std::size_t>(n), lambda);
    std::vector<double> z;
    ASSERT_TRUE(smoother.solve(weights, y, z));
    for (int i = 0; i < n; ++i) {
        EXPECT_NEAR(z[static_cast<std::size_t>(i)], dense(i), 1e-9) << i;
    }
}

TEST(Baseline, PolynomialThroughPickedPointsOfAnExactCubic) {
    std::vector<float> x;
    std::vector<float> y;
    const auto cubic = [](double v) { return 2.0 + 0.01 * v - 2e-5 * v * v + 4e-9 * v * v * v; };
    for (int i = 0; i <= 1000; ++i) {
        x.push_back(static_cast<float>(200 + i));
        y.push_back(static_cast<float>(cubic(200 + i)));
    }
    const std::vector<double> anchors{210, 500, 800, 1150, 1195};
    // One averaged point: the anchor's value is the cubic's (to float rounding).
    const BaselineFit fit = polynomialBaseline(x, y, anchors, 3, 1);
    for (std::size_t i = 0; i < x.size(); i += 100) {
        EXPECT_NEAR(fit.baseline[i], cubic(x[i]), 1e-3) << x[i];
    }
    // Two anchors and degree 3 fall back to the straight line through them.
    const std::vector<double> two{300, 1100};
    const BaselineFit line = polynomialBaseline(x, y, two, 3, 1);
    const double slope = (cubic(1100) - cubic(300)) / 800.0;
    EXPECT_NEAR(line.baseline[500], cubic(300) + slope * 400.0, 1e-3);
}

TEST(Baseline, BadInputIsRefusedWithAMessage) {
    const auto s = test::makeSpectrum(100, 200, 1.0, kBands, 10.0, 0.0);
    const std::vector<float> shortX(s.x.begin(), s.x.begin() + 9);
    const std::vector<float> shortY(s.y.begin(), s.y.begin() + 9);
    std::vector<float> withNan = s.y;
    withNan[40] = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        const char* name;
        std::function<void()> run;
        const char* message;
    };
    const std::vector<double> outside{50.0};
    const Case cases[] = {
        {"9 points", [&] { alsBaseline(shortX, shortY, {}); }, "at least 10"},
        {"NaN", [&] { alsBaseline(s.x, withNan, {}); }, "NaN"},
        {"zero penalty",
         [&] {
             alsBaseline(s.x, s.y, {0.0, 0.01, 10});
         },
         "positive"},
        {"negative penalty",
         [&] {
             arplsBaseline(s.x, s.y, {-1.0, 1e-3, 10});
         },
         "positive"},
        {"asymmetry 0.5",
         [&] {
             alsBaseline(s.x, s.y, {1e5, 0.5, 10});
         },
         "asymmetry"},
        {"SNIP on 9 points", [&] { snipBaseline(shortX, shortY, {}); }, "at least 10"},
        {"SNIP half-width 1 point", [&] { snipBaseline(s.x, s.y, {1.0}); }, "two points"},
        {"anchor outside", [&] { polynomialBaseline(s.x, s.y, outside, 2); }, "outside"},
    };
    for (const Case& c : cases) {
        try {
            c.run();
            ADD_FAILURE() << c.name << ": no error";
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), "Background") << c.name;
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.name << ": " << error.text();
        }
    }
}

} // namespace
} // namespace quarvex
