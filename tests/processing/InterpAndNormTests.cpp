// Resampling grid rules, the interpolation's order of operations and the norm of 10.
#include "processing/InterpAndNorm.h"

#include "common/QuarvexError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace quarvex {
namespace {

struct GridCase {
    const char* what;
    std::vector<float> x;
    float step;
    std::vector<float> grid; // expected grid, worked out by hand from the grid rules
};

TEST(FillIntData, GridRules) {
    const std::vector<GridCase> cases = {
        {"110 < 110.2 is included",
         {99.7F, 110.2F},
         1.0F,
         {100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110}},
        {"the last measured x is never a grid point",
         {100.0F, 110.0F},
         1.0F,
         {100, 101, 102, 103, 104, 105, 106, 107, 108, 109}},
        {"step 2 aligns 101 to 102", {101.3F, 110.0F}, 2.0F, {102, 104, 106, 108}},
        {"step 5 aligns to a multiple of ten", {101.3F, 130.0F}, 5.0F, {110, 115, 120, 125}},
        {"negative x, step 2: floor -4, then up to -2", {-3.2F, 2.0F}, 2.0F, {-2, 0}},
        {"negative x, step 5: -14 moves up to -10", {-13.5F, 20.0F}, 5.0F, {-10, -5, 0, 5, 10, 15}},
        {"range shorter than a step still gives one row", {100.2F, 100.7F}, 1.0F, {101}},
        {"step 1.5 has no alignment", {10.2F, 15.0F}, 1.5F, {11.5F, 13.0F, 14.5F}},
    };
    for (const GridCase& c : cases) {
        const std::vector<float> y(c.x.size(), 1.0F);
        const InterpData data = resampleSpectrum(c.x, y, c.step, false);
        EXPECT_EQ(data.x, c.grid) << c.what;
    }
}

TEST(FillIntData, HalfOpenIntervalsAndInterceptForm) {
    // (0,0) (2,4) (4,0): the grid point 2 lies in the second interval and takes y = 4 there.
    const std::vector<float> x{0.0F, 2.0F, 4.0F};
    const std::vector<float> y{0.0F, 4.0F, 0.0F};
    EXPECT_EQ(resampleSpectrum(x, y, 1.0F, false).y, (std::vector<float>{0, 2, 4, 2}));

    // (100,1) (103,2): m = fl(1/3), b = fl(2 - fl(103 m)), value = fl(b + fl(g m)), every step
    // rounded to single precision by hand. The intercept form gives 1.33333206 at 101, where
    // 1 + (101 - 100) m would give 1.33333337: the order of operations is part of the result.
    const std::vector<float> x2{100.0F, 103.0F};
    const std::vector<float> y2{1.0F, 2.0F};
    EXPECT_EQ(resampleSpectrum(x2, y2, 1.0F, false).y,
              (std::vector<float>{1.0F, 0x1.55554p+0F, 0x1.aaaa8p+0F}));

    // One measured point: no interval, so the single grid row keeps 0.
    const std::vector<float> one{100.5F};
    EXPECT_EQ(resampleSpectrum(one, one, 1.0F, false).y, std::vector<float>{0.0F});
}

TEST(FillIntData, NeverWritesPastTheCapacity) {
    std::vector<float> x;
    for (int i = 0; i <= 100; ++i) {
        x.push_back(static_cast<float>(i));
    }
    InterpData data(8);
    std::fill(data.x.begin(), data.x.end(), -7.0F);
    int NINT = 5;
    FILL_INT_DATA(x, x, data, NINT, 1.0F);
    EXPECT_EQ(NINT, 5);
    EXPECT_EQ(data.x, (std::vector<float>{0, 1, 2, 3, 4, -7, -7, -7}));
}

TEST(FillIntData, UnusableInputGivesNoRows) {
    const struct {
        const char* what;
        std::vector<float> x;
        float step;
    } cases[] = {{"no points", {}, 1.0F},
                 {"beyond 2^24", {2.0e7F, 2.0e7F + 8.0F}, 1.0F},
                 {"negative step", {1.0F, 2.0F, 3.0F}, -1.0F},
                 {"step too small to move the grid", {1.0e6F + 0.5F, 1.0e6F + 2.0F}, 1.0e-3F}};
    for (const auto& c : cases) {
        InterpData data(16);
        int NINT = data.capacity();
        FILL_INT_DATA(c.x, c.x, data, NINT, c.step);
        EXPECT_EQ(NINT, 0) << c.what;
    }
}

// A stray x far away would ask for millions of rows: refused before anything is allocated,
// while the widest grid allowed is still built.
TEST(ResampleSpectrum, RefusesGridsNoSpectrumNeeds) {
    const std::vector<float> y{1.0F, 2.0F, 3.0F};
    const std::vector<float> stray{100.0F, 200.0F, 16777000.0F};
    try {
        resampleSpectrum(stray, y, 1.0F, true);
        ADD_FAILURE() << "a 16-million-row grid was built";
    } catch (const QuarvexError& error) {
        EXPECT_EQ(error.text(), "x range too wide to resample: 100 to 16777000 at step 1");
    }
    EXPECT_THROW(resampleSpectrum(std::vector<float>{0.0F, 1.0F, 2.0F}, y, 1.0e-7F, false),
                 QuarvexError);
    // floor((last - first) / step) + 2 rows: exactly the cap for a range of cap - 2 steps.
    const auto widest = static_cast<float>(kMaxResampleRows - 2);
    const InterpData data =
        resampleSpectrum(std::vector<float>{0.0F, widest / 2.0F, widest}, y, 1.0F, false);
    EXPECT_EQ(data.capacity(), kMaxResampleRows - 2); // 0 ... widest - 1
}

TEST(NormalizeIntData, ScalesToNormTen) {
    InterpData exact(2);
    exact.y = {3.0F, 4.0F}; // norm 5 -> 6, 8 exactly
    NORMALIZE_INT_DATA(exact, 2);
    EXPECT_EQ(exact.y, (std::vector<float>{6.0F, 8.0F}));

    std::vector<float> x;
    std::vector<float> y;
    for (int i = 0; i < 500; ++i) {
        x.push_back(100.0F + 0.7F * static_cast<float>(i));
        y.push_back(std::sin(0.05F * static_cast<float>(i)) * 1000.0F + 1200.0F);
    }
    const InterpData data = resampleSpectrum(x, y, 1.0F, true);
    double sumOfSquares = 0.0;
    for (float v : data.y) {
        sumOfSquares += static_cast<double>(v) * v;
    }
    // ~350 single-precision squares and divisions: relative error well below 1e-5.
    EXPECT_NEAR(sumOfSquares, 100.0, 1.0e-3);

    InterpData zeros(3); // all zero: 0/0, no guard
    NORMALIZE_INT_DATA(zeros, 3);
    EXPECT_TRUE(std::isnan(zeros.y[0]));
    EXPECT_FALSE(hasFiniteValues(zeros));
}

} // namespace
} // namespace quarvex
