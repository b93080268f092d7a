// The nine shared refinement cases: agreement with an independent fit, accuracy against the
// true cells, standard errors against the scatter over noise seeds, the machine-error search,
// and a second formulation (Gauss-Newton on 2-theta) on noise-free lines.
#include "RefineCaseSupport.h"
#include "TestSupport.h"
#include "xray/Refine.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <memory>
#include <random>

namespace quarvex {
namespace {

using test::Cell;
using test::RefineCase;

struct RefineRun {
    bool ok = false;
    INOUTPARMS io;
    std::unique_ptr<DATASTFF> data = std::make_unique<DATASTFF>();
    std::string report;
};

RefineRun refine(const RefineCase& refineCase, const std::vector<double>& twoTheta,
                 const test::InputSwitches& switches) {
    test::TempFolder folder;
    const auto input = folder.write(refineCase.name + "_refine.DAT",
                                    test::refineInputText(refineCase, twoTheta, switches));
    RefineRun run;
    run.ok = REFINEMAIN(input, run.io, *run.data);
    run.report = test::readFile(run.io.reportPath);
    return run;
}

std::vector<double> observed(const RefineCase& refineCase, double correction = 0.0) {
    std::vector<double> twoTheta;
    for (const auto& line : refineCase.lines) {
        twoTheta.push_back(line.twoTheta + correction);
    }
    return twoTheta;
}

nlohmann::json expected(const std::string& name) {
    std::ifstream in(test::sourcePath("tests/xray/data/refine/expected_" + name + ".json"));
    return nlohmann::json::parse(in);
}

// Free cell entries of a system: the first entry of each group.
std::vector<int> freeEntries(const std::string& system) {
    std::vector<int> entries;
    for (const auto& group : test::freeGroups(system)) {
        entries.push_back(group[0]);
    }
    return entries;
}

double angleAwareScale(int m) {
    return m < 3 ? 1.0 : 3.141592653589793 / 180.0; // COVAR holds angles in radians
}

// Unit weights on Q: exactly the oracle's fit_q_no_zero (scipy, Levenberg-Marquardt).
TEST(RefineCases, MatchTheIndependentFitInQ) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const auto fit = expected(name)["fit_q_no_zero"];
        const RefineRun run = refine(c, observed(c), {});
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        for (int m = 0; m < 6; ++m) {
            EXPECT_NEAR(run.data->CELL[m], fit["cell"][m].get<double>(), m < 3 ? 1e-6 : 1e-5)
                << name << " cell entry " << m;
            EXPECT_NEAR(run.data->ERROR[m], fit["esd"][m].get<double>(),
                        1e-3 * fit["esd"][m].get<double>() + 1e-12)
                << name << " error of entry " << m;
        }
        EXPECT_NEAR(run.io.volume, fit["volume"].get<double>(), 1e-5) << name;
        EXPECT_NEAR(run.io.volumeError, fit["volume_esd"].get<double>(),
                    1e-3 * fit["volume_esd"].get<double>())
            << name;
        EXPECT_NEAR(run.io.rmse, fit["sigma"].get<double>(), 1e-6 * fit["sigma"].get<double>())
            << name;
        const auto entries = freeEntries(c.system);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            for (std::size_t j = 0; j < entries.size(); ++j) {
                EXPECT_NEAR(run.data->CORR[entries[i]][entries[j]],
                            fit["correlation"][i][j].get<double>(), 1e-6)
                    << name << " correlation " << i << "," << j;
            }
        }
    }
}

// With weights for equal 2-theta errors, each refined parameter lies within 3 standard errors of
// the true cell. The known zero shift is taken out for the two cases whose shift the search
// cannot find (see MachineErrorSearch); the +0.03 deg case corrects itself by the search.
TEST(RefineCases, WithinThreeStandardErrorsOfTheTruth) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const bool large = std::fabs(c.zeroShift) > 0.05;
        const RefineRun run =
            refine(c, observed(c, large ? -c.zeroShift : 0.0),
                   {.search = c.zeroShift != 0.0 && !large, .twoThetaWeights = true});
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        for (int m : freeEntries(c.system)) {
            EXPECT_LT(std::fabs(run.data->CELL[m] - c.trueCell[m]), 3.0 * run.data->ERROR[m])
                << name << " entry " << m;
        }
    }
}

double gaussianNoise(std::mt19937_64& engine) {
    // Box-Muller on the engine's own bits: the same numbers on every standard library.
    const double u1 = (static_cast<double>(engine() >> 11) + 0.5) * 0x1.0p-53;
    const double u2 = (static_cast<double>(engine() >> 11) + 0.5) * 0x1.0p-53;
    return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * 3.141592653589793 * u2);
}

// The reported standard errors against the spread of the refined cell over 20 noise seeds
// (0.005 deg in 2-theta, lines from the true cell): within a factor of 2.
TEST(RefineCases, ErrorsMatchTheScatterOverNoiseSeeds) {
    constexpr int kSeeds = 20;
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const std::vector<double> truth = test::twoThetaFromCell(c, c.trueCell);
        const auto entries = freeEntries(c.system);
        std::vector<double> sum(6), sumSquares(6), reported(6);
        for (int seed = 1; seed <= kSeeds; ++seed) {
            std::mt19937_64 engine(static_cast<unsigned>(seed));
            std::vector<double> noisy = truth;
            for (double& t : noisy) {
                t += 0.005 * gaussianNoise(engine);
            }
            const RefineRun run = refine(c, noisy, {.twoThetaWeights = true});
            ASSERT_TRUE(run.ok) << name << " seed " << seed;
            for (int m : entries) {
                sum[m] += run.data->CELL[m];
                sumSquares[m] += run.data->CELL[m] * run.data->CELL[m];
                reported[m] += run.data->ERROR[m] / kSeeds;
            }
        }
        for (int m : entries) {
            const double mean = sum[m] / kSeeds;
            const double scatter = std::sqrt((sumSquares[m] - kSeeds * mean * mean) / (kSeeds - 1));
            EXPECT_GT(reported[m], 0.5 * scatter) << name << " entry " << m;
            EXPECT_LT(reported[m], 2.0 * scatter) << name << " entry " << m;
        }
    }
}

// The search as specified: it finds the small shifts (all cases but two carry 0 or +0.03 deg)
// to within 0.02 deg (in fact within 0.006) and lowers the rmse; its vertices and machine error
// are those of the independent emulation of the same search. For -0.06 and +0.15 deg the rmse
// is V-shaped over the trial shifts and the vertex runs off (first vertices +0.293 and -21.18
// deg): the search ends within its five passes at -26.380 and -43.566 deg, with 2-theta values
// outside 0 to 180 deg, and says that it did not converge.
TEST(RefineCases, MachineErrorSearch) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const RefineRun before = refine(c, observed(c), {});
        const RefineRun run = refine(c, observed(c), {.search = true});
        ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
        const auto emulation = expected(name)["machine_error_search_emulation"]["runs"][0];
        if (std::fabs(c.zeroShift) > 0.05) {
            EXPECT_FALSE(run.io.machineErrorConverged) << name;
            EXPECT_EQ(run.io.machineErrorPasses, 5) << name;
            EXPECT_TRUE(std::isfinite(run.io.machineError)) << name;
            EXPECT_NEAR(run.io.machineError, name == "cubic" ? -43.566 : -26.380, 5e-4) << name;
            EXPECT_NE(run.report.find("The machine-error search did not converge"),
                      std::string::npos)
                << name;
            EXPECT_NEAR(std::stod(run.report.substr(run.report.find("      1  ") + 54, 14)),
                        emulation["vertices"][0].get<double>(), 1e-4)
                << name;
            continue;
        }
        EXPECT_TRUE(run.io.machineErrorConverged) << name;
        // Already at zero shift, the first vertex is within the threshold and is the answer.
        EXPECT_EQ(run.io.machineErrorPasses, c.zeroShift == 0.0 ? 1 : 2) << name;
        EXPECT_NEAR(run.io.machineError, -c.zeroShift, 0.02) << name;
        EXPECT_NEAR(run.io.machineError, emulation["reported_machine_error"].get<double>(), 1e-6)
            << name;
        EXPECT_LE(run.io.rmse, before.io.rmse) << name;
        // The 2-theta values carry the correction; the originals stay as read.
        EXPECT_NEAR(run.data->TTHETA[0] - run.data->TTHETAORIGINAL[0], run.io.machineError, 1e-12)
            << name;
    }
}

// Noise-free lines: the engine (from its estimate, and iterating from the start cell) agrees with
// Gauss-Newton on 2-theta residuals with numerical derivatives, and with the true cell.
TEST(RefineCases, AgreeWithGaussNewtonOnTwoTheta) {
    for (const std::string& name : test::refineCaseNames()) {
        const RefineCase c = test::readRefineCase(name);
        const std::vector<double> exact = test::twoThetaFromCell(c, c.trueCell);
        const Cell independent = test::fitTwoThetaGaussNewton(c, exact);
        for (const bool startGiven : {false, true}) {
            const RefineRun run = refine(c, exact, {.iterations = true, .startGiven = startGiven});
            ASSERT_TRUE(run.ok) << name << ": " << run.io.message;
            for (int m = 0; m < 6; ++m) {
                EXPECT_NEAR(run.data->CELL[m], independent[m], 1e-6 * independent[m])
                    << name << " entry " << m << (startGiven ? " from the start cell" : "");
                EXPECT_NEAR(run.data->CELL[m], c.trueCell[m], 1e-6 * c.trueCell[m])
                    << name << " entry " << m;
            }
        }
    }
}

// The covariance is the propagated one: its diagonal gives the errors (angles in radians).
TEST(RefineCases, CovarianceDiagonalGivesTheErrors) {
    const RefineCase c = test::readRefineCase("triclinic");
    const RefineRun run = refine(c, observed(c), {});
    ASSERT_TRUE(run.ok);
    for (int m = 0; m < 6; ++m) {
        EXPECT_NEAR(std::sqrt(run.data->COVAR[m][m]), run.data->ERROR[m] * angleAwareScale(m),
                    1e-15)
            << m;
    }
}

} // namespace
} // namespace quarvex
