// The refinement's analytic derivatives dQ/dp against central differences.
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

} // namespace
} // namespace quarvex
