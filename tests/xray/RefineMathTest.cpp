// The refinement's derivatives against central differences, and its small matrix routines
// against identities and closed forms.
#include "xray/RefineEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace quarvex {
namespace {

// dQ/dp of QCALC against central differences of the Q of DCALC, for every free parameter of
// three systems (a general cell, a tied rhombohedral one, a monoclinic one).
TEST(RefineMath, DerivativesMatchCentralDifferences) {
    const struct {
        const char* system;
        std::array<double, 6> cell;
    } cases[] = {{"TRICLINIC", {5.1554, 8.9448, 7.4048, 91.7, 104.862, 89.822}},
                 {"RHOMBOHEDRAL", {5.12, 5.12, 5.12, 55.28, 55.28, 55.28}},
                 {"MONOCLINIC2", {5.68, 15.21, 6.53, 90.0, 118.48, 90.0}}};
    auto data = std::make_unique<DATASTFF>();
    data->NREF = 4;
    data->h = {1, 2, -1, 3};
    data->k = {0, 1, 3, -2};
    data->l = {1, -1, 2, 4};
    for (const auto& c : cases) {
        const CrystalSystemRule& rule = *findCrystalSystem(c.system);
        data->CELL = c.cell;
        Matrix3 reciprocal{};
        ASSERT_TRUE(reciprocalMetric(data->CELL, reciprocal));
        auto design = std::make_unique<LeastSquaresDesign>();
        QCALC(*data, rule, reciprocal, *design);
        for (int j = 0; j < rule.unknowns; ++j) {
            // Angles are held in degrees, the derivatives are per radian.
            const bool angle = (rule.directEntries[j] & (kEntryA | kEntryB | kEntryC)) == 0U;
            const double step = angle ? 1e-4 : 1e-6;
            std::array<double, 4> q[2];
            for (int side = 0; side < 2; ++side) {
                data->CELL = c.cell;
                for (int m = 0; m < 6; ++m) {
                    if ((rule.directEntries[j] & (1U << m)) != 0U) {
                        data->CELL[m] += (side == 0 ? step : -step);
                    }
                }
                ASSERT_TRUE(reciprocalMetric(data->CELL, reciprocal));
                DCALC(*data, reciprocal);
                std::copy_n(data->QC.begin(), 4, q[side].begin());
            }
            for (int r = 0; r < 4; ++r) {
                const double numeric =
                    (q[0][r] - q[1][r]) / (2.0 * step) * (angle ? 1 / kDegree : 1);
                EXPECT_NEAR(design->a[r][j], numeric, 1e-7 * (std::fabs(numeric) + 1e-3))
                    << c.system << " parameter " << j << " reflection " << r;
            }
        }
    }
}

TEST(RefineMath, InversesGiveTheIdentity) {
    RefineMatrix6 a{};
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j) {
            a[i][j] = 1.0 / (i + j + 1) + (i == j ? 1.0 : 0.0); // Hilbert plus identity
        }
    }
    RefineMatrix6 inverse = a;
    ASSERT_TRUE(MINVSE(inverse, 6));
    const Matrix3 b{{{4.0, 1.0, -2.0}, {0.5, 3.0, 1.0}, {-1.0, 2.0, 5.0}}};
    Matrix3 inverse3{};
    ASSERT_TRUE(INV3D(b, inverse3));
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j) {
            double sum = 0.0;
            for (int m = 0; m < 6; ++m) {
                sum += a[i][m] * inverse[m][j];
            }
            EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-12) << i << "," << j;
            if (i < 3 && j < 3) {
                const double sum3 =
                    b[i][0] * inverse3[0][j] + b[i][1] * inverse3[1][j] + b[i][2] * inverse3[2][j];
                EXPECT_NEAR(sum3, i == j ? 1.0 : 0.0, 1e-14) << i << "," << j;
            }
        }
    }
    RefineMatrix6 singular{};
    singular[0] = {1, 2, 0, 0, 0, 0};
    singular[1] = {2, 4, 0, 0, 0, 0};
    EXPECT_FALSE(MINVSE(singular, 2));
    EXPECT_FALSE(INV3D(Matrix3{{{1, 2, 3}, {2, 4, 6}, {0, 1, 1}}}, inverse3));
}

// Three points of y = 1 + 2 s + 3 s^2 give back its coefficients; a zero column is singular.
TEST(RefineMath, LeastSquaresSolveIsExactOnAParabola) {
    auto design = std::make_unique<LeastSquaresDesign>();
    design->rows = 3;
    design->columns = 3;
    const double s[3] = {0.01, 0.05, -0.05};
    for (int i = 0; i < 3; ++i) {
        design->a[i] = {1.0, s[i], s[i] * s[i]};
        design->y[i] = 1.0 + 2.0 * s[i] + 3.0 * s[i] * s[i];
    }
    RefineVector6 coefficients{};
    RefineMatrix6 inverse{};
    ASSERT_TRUE(MAKEDP(*design, coefficients, inverse));
    EXPECT_NEAR(coefficients[0], 1.0, 1e-12);
    EXPECT_NEAR(coefficients[1], 2.0, 1e-10);
    EXPECT_NEAR(coefficients[2], 3.0, 1e-8);
    for (int i = 0; i < 3; ++i) {
        design->a[i][1] = 0.0;
    }
    EXPECT_FALSE(MAKEDP(*design, coefficients, inverse));
}

} // namespace
} // namespace quarvex
