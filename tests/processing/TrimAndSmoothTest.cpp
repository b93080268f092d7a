// Trimming and Savitzky-Golay filtering against closed forms: polynomials up to the order pass
// unchanged (ends included), derivatives of polynomials are exact, the classic 5-point weights.
#include "common/QuarvexError.h"
#include "processing/SavitzkyGolay.h"
#include "processing/Trim.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quarvex {
namespace {

TEST(Trim, KeepsThePointsInsideTheRange) {
    const std::vector<float> x{100, 101, 102, 103, 104, 105};
    struct Case {
        double low, high;
        std::size_t first, count;
    };
    const Case cases[] = {
        {101, 103, 1, 3}, {100.5, 200, 1, 5}, {0, 1000, 0, 6}, {102, 104.9, 2, 3}};
    for (const Case& c : cases) {
        const TrimRange range = trimRange(x, c.low, c.high);
        EXPECT_EQ(range.first, c.first) << c.low << ":" << c.high;
        EXPECT_EQ(range.count, c.count) << c.low << ":" << c.high;
    }
    for (const auto& [low, high] : {std::pair{101.0, 102.0}, {900.0, 200.0}, {200.0, 300.0}}) {
        EXPECT_THROW(trimRange(x, low, high), QuarvexError) << low << ":" << high;
    }
}

std::vector<float> grid(int n, double step) {
    std::vector<float> x;
    for (int i = 0; i < n; ++i) {
        x.push_back(static_cast<float>(200.0 + step * i));
    }
    return x;
}

TEST(SavitzkyGolay, PolynomialsUpToTheOrderAndTheirDerivativesAreExact) {
    struct Case {
        int window, order, derivative;
    };
    const Case cases[] = {{5, 2, 0}, {11, 3, 0}, {7, 3, 1}, {9, 4, 2}, {21, 2, 1}};
    const double step = 0.5;
    const auto x = grid(60, step);
    for (const Case& c : cases) {
        // p(x) = sum of a_k (x - 210)^k for k <= order, small enough for float values.
        const auto value = [&](double v, int d) {
            double sum = 0.0;
            for (int k = d; k <= c.order; ++k) {
                double factor = 1.0;
                for (int m = 0; m < d; ++m) {
                    factor *= k - m;
                }
                sum += factor * std::pow(0.3, k) * std::pow(v - 210.0, k - d);
            }
            return sum;
        };
        std::vector<float> y;
        for (const float v : x) {
            y.push_back(static_cast<float>(value(v, 0)));
        }
        const auto filtered = savitzkyGolay(x, y, {c.window, c.order, c.derivative});
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double expected = value(x[i], c.derivative);
            EXPECT_NEAR(filtered[i], expected, 2e-4 * (1.0 + std::abs(expected)))
                << "window " << c.window << ", order " << c.order << ", derivative " << c.derivative
                << ", point " << i;
        }
    }
}

TEST(SavitzkyGolay, FivePointQuadraticWeights) {
    // The impulse response in the middle is the classic (-3, 12, 17, 12, -3) / 35.
    const auto x = grid(11, 1.0);
    std::vector<float> y(11, 0.0F);
    y[5] = 35.0F;
    const auto filtered = savitzkyGolay(x, y, {5, 2, 0});
    const float expected[] = {-3, 12, 17, 12, -3};
    for (int k = 0; k < 5; ++k) {
        EXPECT_NEAR(filtered[static_cast<std::size_t>(3 + k)], expected[k], 1e-4) << k;
    }
}

TEST(SavitzkyGolay, WindowInXUnitsAndBadInput) {
    const auto x = grid(20, 0.5);
    EXPECT_EQ(windowPointsForWidth(x, 3.0), 7); // 6 points -> the next odd
    EXPECT_EQ(windowPointsForWidth(x, 4.5), 9);
    EXPECT_EQ(windowPointsForWidth(x, 0.1), 3);
    const std::vector<float> y(20, 1.0F);
    const SavitzkyGolayParameters bad[] = {{21, 2, 0}, {6, 2, 0}, {5, 5, 0}, {5, 1, 2}, {7, 2, 3}};
    for (const SavitzkyGolayParameters& p : bad) {
        EXPECT_THROW(savitzkyGolay(x, y, p), QuarvexError) << p.windowPoints << " " << p.order;
    }
    try {
        savitzkyGolay(x, y, {21, 2, 0});
    } catch (const QuarvexError& error) {
        EXPECT_EQ(error.text(),
                  "The smoothing window (21 points) is wider than the spectrum (20 points).");
    }
}

} // namespace
} // namespace quarvex
