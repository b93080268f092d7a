// The nine shared refinement cases: agreement with an independent fit, accuracy against the
// true cells, standard errors against the scatter over noise seeds, the machine-error search,
// and a second formulation (Gauss-Newton on 2-theta) on noise-free lines.
#include "RefineCaseSupport.h"
#include "xray/Refine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

namespace quarvex {
namespace {

using test::RefineCase;

// The free cell entries of a system: the first entry of each group.
std::vector<int> freeEntries(const std::string& system) {
    std::vector<int> entries;
    for (const auto& group : test::freeGroups(system)) {
        entries.push_back(group[0]);
    }
    return entries;
}

// Unit weights on Q: the oracle's fit_q_no_zero (scipy, Levenberg-Marquardt), cell, errors,
// volume, rmse and correlations.
TEST(RefineCases, MatchTheIndependentFitInQ) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const auto& fit = c.expected["fit_q_no_zero"];
        const test::RefineResult run = test::refineCase(c, c.observed());
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        for (int m = 0; m < 6; ++m) {
            EXPECT_NEAR(run.data->CELL[m], fit["cell"][m], m < 3 ? 1e-6 : 1e-5) << name << m;
            EXPECT_NEAR(run.data->ERROR[m], fit["esd"][m], 1e-3 * fit["esd"][m].get<double>())
                << name << " error " << m;
        }
        EXPECT_NEAR(run.io.volume, fit["volume"], 1e-5) << name;
        EXPECT_NEAR(run.io.volumeError, fit["volume_esd"], 1e-3 * fit["volume_esd"].get<double>());
        EXPECT_NEAR(run.io.rmse, fit["sigma"], 1e-6 * fit["sigma"].get<double>()) << name;
        const auto entries = freeEntries(c.system);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            for (std::size_t j = 0; j < entries.size(); ++j) {
                EXPECT_NEAR(run.data->CORR[entries[i]][entries[j]], fit["correlation"][i][j], 1e-6)
                    << name << " correlation " << i << "," << j;
            }
        }
    }
}

// With weights for equal 2-theta errors each refined parameter lies within 3 standard errors of
// the true cell (the largest distance is 2.8, monoclinic1 a). The +0.03 deg case is corrected by
// the search; for -0.06 and +0.15 deg, beyond its reach, the test removes the known shift.
TEST(RefineCases, WithinThreeStandardErrorsOfTheTruth) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const bool large = std::fabs(c.zeroShift) > 0.05;
        const test::RefineResult run =
            test::refineCase(c, c.observed(large ? -c.zeroShift : 0.0),
                             {.search = c.zeroShift != 0.0 && !large, .twoThetaWeights = true});
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        for (int m : freeEntries(c.system)) {
            EXPECT_LT(std::fabs(run.data->CELL[m] - c.trueCell[m]), 3.0 * run.data->ERROR[m])
                << name << " entry " << m;
        }
    }
}

// The reported errors against the spread of the cell over 20 noise seeds (0.005 deg Gaussian
// noise on the true 2-theta): within a factor of 2 (the ratios seen are 0.8 to 1.3).
TEST(RefineCases, ErrorsMatchTheScatterOverNoiseSeeds) {
    constexpr int kSeeds = 20;
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const std::vector<double> truth = test::twoThetaFromCell(c, c.trueCell);
        std::array<double, 6> sum{}, sumSquares{}, reported{};
        for (int seed = 1; seed <= kSeeds; ++seed) {
            // Box-Muller on the engine's own bits: the same noise with every standard library.
            std::mt19937_64 engine(static_cast<unsigned>(seed));
            std::vector<double> noisy = truth;
            for (double& t : noisy) {
                const double u1 = (static_cast<double>(engine() >> 11) + 0.5) * 0x1.0p-53;
                const double u2 = (static_cast<double>(engine() >> 11) + 0.5) * 0x1.0p-53;
                t += 0.005 * std::sqrt(-2.0 * std::log(u1)) * std::cos(6.283185307179586 * u2);
            }
            const test::RefineResult run = test::refineCase(c, noisy, {.twoThetaWeights = true});
            ASSERT_TRUE(run.ok) << name << " seed " << seed;
            for (int m = 0; m < 6; ++m) {
                sum[m] += run.data->CELL[m];
                sumSquares[m] += run.data->CELL[m] * run.data->CELL[m];
                reported[m] += run.data->ERROR[m] / kSeeds;
            }
        }
        for (int m : freeEntries(c.system)) {
            const double mean = sum[m] / kSeeds;
            const double scatter = std::sqrt((sumSquares[m] - kSeeds * mean * mean) / (kSeeds - 1));
            EXPECT_GT(reported[m], 0.5 * scatter) << name << " entry " << m;
            EXPECT_LT(reported[m], 2.0 * scatter) << name << " entry " << m;
        }
    }
}

// The search as specified: it finds the small shifts (0 and +0.03 deg) to within 0.02 deg (in
// fact 0.006) and lowers the rmse; at zero shift it stops on its first vertex; its results are
// those of the independent emulation of the same search. For -0.06 and +0.15 deg the rmse is
// V-shaped over the trial shifts and the vertex runs off (first vertices +0.293 and -21.18 deg):
// the search ends within its five passes at -26.380 and -43.566 deg, with 2-theta values
// outside 0 to 180 deg, and says that it did not converge.
TEST(RefineCases, MachineErrorSearch) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const test::RefineResult before = test::refineCase(c, c.observed());
        const test::RefineResult run = test::refineCase(c, c.observed(), {.search = true});
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        const auto& emulation = c.expected["machine_error_search_emulation"]["runs"][0];
        const std::size_t pass1 = run.report.find('\n', run.report.find("Vertex (deg)")) + 1;
        const double firstVertex = std::stod(run.report.substr(pass1 + 53, 14));
        EXPECT_NEAR(firstVertex, emulation["vertices"][0], 1e-4) << name;
        if (std::fabs(c.zeroShift) > 0.05) {
            EXPECT_FALSE(run.io.machineErrorConverged) << name;
            EXPECT_EQ(run.io.machineErrorPasses, 5) << name;
            EXPECT_NEAR(run.io.machineError, name == "cubic" ? -43.566 : -26.380, 5e-4) << name;
            EXPECT_NE(run.report.find("search did not converge"), std::string::npos) << name;
            continue;
        }
        EXPECT_TRUE(run.io.machineErrorConverged) << name;
        EXPECT_EQ(run.io.machineErrorPasses, c.zeroShift == 0.0 ? 1 : 2) << name;
        EXPECT_NEAR(run.io.machineError, -c.zeroShift, 0.02) << name;
        EXPECT_NEAR(run.io.machineError, emulation["reported_machine_error"], 1e-6) << name;
        EXPECT_LE(run.io.rmse, before.io.rmse) << name;
        // The 2-theta values carry the correction; the originals stay as read.
        EXPECT_NEAR(run.data->TTHETA[0] - run.data->TTHETAORIGINAL[0], run.io.machineError, 1e-12);
    }
}

// Noise-free lines: the engine (from its estimate, and iterating from the start cell) agrees with
// Gauss-Newton on 2-theta residuals with numerical derivatives, and with the true cell.
TEST(RefineCases, AgreeWithGaussNewtonOnTwoTheta) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const std::vector<double> exact = test::twoThetaFromCell(c, c.trueCell);
        const test::Cell independent = test::fitTwoThetaGaussNewton(c, exact);
        for (const bool startGiven : {false, true}) {
            const test::RefineResult run =
                test::refineCase(c, exact, {.iterations = true, .startGiven = startGiven});
            ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
            for (int m = 0; m < 6; ++m) {
                EXPECT_NEAR(run.data->CELL[m], independent[m], 1e-6 * independent[m])
                    << name << " entry " << m << (startGiven ? " from the start cell" : "");
                EXPECT_NEAR(run.data->CELL[m], c.trueCell[m], 1e-6 * c.trueCell[m]) << name << m;
            }
        }
    }
}

} // namespace
} // namespace quarvex
