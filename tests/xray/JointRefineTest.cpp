// The joint refinement of cell, zero and displacement against an independent fit (scipy, stored
// in tests/xray/data/joint), its diagnostics against explicit refits, and figures of merit by
// hand.
#include "xray/JointRefine.h"
#include "xray/CellModel.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

namespace quarvex {
namespace {

using nlohmann::json;

const json& jointCases() {
    static const json cases = [] {
        std::ifstream in(std::string(QUARVEX_SOURCE_DIR) +
                         "/tests/xray/data/joint/joint_cases.json");
        return json::parse(in);
    }();
    return cases;
}

JointRefineInput inputOf(const json& c) {
    JointRefineInput input;
    input.system = c["system"].get<std::string>();
    for (int m = 0; m < 6; ++m) {
        input.startCell[m] = c["start_cell"][m].get<double>();
    }
    const std::vector<double> waves = c["wavelengths"].get<std::vector<double>>();
    for (const json& line : c["lines"]) {
        input.lines.push_back({line[0].get<int>(), line[1].get<int>(), line[2].get<int>(),
                               waves[line[3].get<size_t>() - 1], line[4].get<double>()});
    }
    return input;
}

JointRefineSettings settingsOf(const json& c) {
    JointRefineSettings settings;
    settings.refineZero = true;
    settings.refineDisplacement = c["displacement_applied_mm"].get<double>() != 0.0;
    return settings;
}

// Zero shifts -0.30 to +0.20 deg in every system, noise 0.005 deg: the zero and cell come back
// within 0.003 deg and 3e-5 relative, and equal scipy's fit of the same lines (1e-7 deg, 1e-9
// relative: both are converged optima of one problem; scipy's esds use a numerical Jacobian,
// hence 1e-4 relative on them).
TEST(JointRefineTest, ZeroShiftRecoveredInEverySystemAndEqualsScipy) {
    int checked = 0;
    int withinTarget = 0;
    for (const json& c : jointCases()["cases"]) {
        if (!c["misindexed_line"].is_null()) {
            continue;
        }
        const std::string name = c["name"].get<std::string>();
        const JointRefineResult result = refineJoint(inputOf(c), settingsOf(c));
        ASSERT_TRUE(result.ok) << name << ": " << result.message;
        const json& scipy = c["scipy"];
        EXPECT_NEAR(result.zero, scipy["zero"].get<double>(), 1e-7) << name;
        EXPECT_NEAR(result.sigmaDeg, scipy["sigma_deg"].get<double>(), 1e-9) << name;
        for (int m = 0; m < 6; ++m) {
            EXPECT_NEAR(result.cell[m] / scipy["cell"][m].get<double>(), 1.0, 1e-9) << name;
        }
        const std::vector<double> freeEsd = scipy["free_esd"].get<std::vector<double>>();
        EXPECT_NEAR(
            result.zeroEsd /
                freeEsd[static_cast<size_t>(result.p - (settingsOf(c).refineDisplacement ? 2 : 1))],
            1.0, 1e-4)
            << name;
        if (settingsOf(c).refineDisplacement) {
            EXPECT_NEAR(result.displacement, scipy["displacement_mm"].get<double>(), 1e-6) << name;
            EXPECT_NEAR(result.displacementEsd / freeEsd.back(), 1.0, 1e-4) << name;
            // Zero and displacement are strongly correlated: they come back within 3 esd.
            EXPECT_NEAR(result.displacement, c["displacement_applied_mm"].get<double>(),
                        3.0 * result.displacementEsd)
                << name;
            continue;
        }
        EXPECT_NEAR(result.zero, c["zero_correction_applied"].get<double>(), 0.003) << name;
        bool within = true;
        for (int m = 0; m < 6; ++m) {
            const double truth = c["true_cell"][m].get<double>();
            const double relative = std::fabs(result.cell[m] / truth - 1.0);
            within = within && relative <= 3e-5;
            // The noise sets the limit: an edge may land a little beyond 3e-5 when that is
            // within 3 of its esds.
            EXPECT_LE(relative, std::max(3e-5, 3.0 * result.esd[m] / truth)) << name << " " << m;
        }
        withinTarget += within ? 1 : 0;
        ++checked;
    }
    EXPECT_EQ(checked, 36);
    // monoclinic1_shift-0.05 lands at 3.1e-5 in a (2.8 esd); every other case within 3e-5.
    // That is the noise, not the method (docs/refine.md, "Why one case of 36 ...").
    EXPECT_GE(withinTarget, 35);
}

TEST(JointRefineTest, MisindexedLineStandsOutAndDeletionsMatchRefits) {
    for (const json& c : jointCases()["cases"]) {
        if (!c.contains("scipy_deletion")) {
            continue;
        }
        const std::string name = c["name"].get<std::string>();
        const JointRefineResult result = refineJoint(inputOf(c), settingsOf(c));
        ASSERT_TRUE(result.ok) << name;
        const json& rows = c["scipy_deletion"];
        ASSERT_EQ(rows.size(), result.lines.size());
        for (size_t i = 0; i < rows.size(); ++i) {
            const JointLineResult& line = result.lines[i];
            // Leverages at the optimum are the same matrix quantity (scipy's numerical Jacobian
            // limits the agreement). Rstudent and the edge changes here come from the deletion
            // formulas, there from refits without the line: equal to first order.
            EXPECT_NEAR(line.hat, rows[i]["hat"].get<double>(), 1e-5) << name << " line " << i + 1;
            EXPECT_NEAR(line.rstudent, rows[i]["rstudent"].get<double>(),
                        0.02 * std::max(1.0, std::fabs(line.rstudent)))
                << name << " line " << i + 1;
            for (int edge = 0; edge < 3; ++edge) {
                const double refit = rows[i]["edge_change"][edge].get<double>();
                EXPECT_NEAR(line.edgeChange[edge], refit, 0.05 * std::fabs(refit) + 1e-7)
                    << name << " line " << i + 1 << " edge " << edge;
            }
        }
        if (c["misindexed_line"].is_null()) {
            continue;
        }
        const size_t bad = c["misindexed_line"].get<size_t>() - 1;
        EXPECT_TRUE(result.lines[bad].outlier) << name;
        double largestOther = 0.0;
        for (size_t i = 0; i < result.lines.size(); ++i) {
            if (i != bad) {
                largestOther = std::max(largestOther, std::fabs(result.lines[i].rstudent));
            }
        }
        EXPECT_LT(largestOther, 3.5) << name;
        EXPECT_GT(std::fabs(result.lines[bad].rstudent), 3.0 * largestOther) << name;
    }
}

// Silicon, a = 5.43102 A, Cu K-alpha1, its eight strongest lines with the 2-theta errors below.
// By hand: F-centred reflections up to 440 have h^2+k^2+l^2 = 3 4 8 11 12 16 19 20 24 27 32,
// 11 distinct positions (333 and 511 coincide). M8 = Q8 / (2 <|dQ|> 11), F8 = 8 / (<|d2t|> 11).
TEST(JointRefineTest, FiguresOfMeritOfSiliconByHand) {
    const double a = 5.43102, wave = 1.540562;
    const int hkl[8][3] = {{1, 1, 1}, {2, 2, 0}, {3, 1, 1}, {4, 0, 0},
                           {3, 3, 1}, {4, 2, 2}, {5, 1, 1}, {4, 4, 0}};
    const double error[8] = {0.004, -0.006, 0.002, -0.003, 0.005, -0.001, 0.003, -0.004};
    std::vector<MeritLine> lines;
    double sumDq = 0.0, sumD2t = 0.0, q8 = 0.0;
    for (int i = 0; i < 8; ++i) {
        const double s = hkl[i][0] * hkl[i][0] + hkl[i][1] * hkl[i][1] + hkl[i][2] * hkl[i][2];
        const double qCalc = s / (a * a);
        const double calc =
            2.0 * std::asin(wave * std::sqrt(qCalc) / 2.0) * 180.0 / std::numbers::pi;
        const double obs = calc + error[i];
        const double sinObs = std::sin(obs / 2.0 * std::numbers::pi / 180.0);
        const double qObs = 4.0 * sinObs * sinObs / (wave * wave);
        sumDq += std::fabs(qObs - qCalc);
        sumD2t += std::fabs(error[i]);
        q8 = qObs;
        lines.push_back({obs, calc, wave});
    }
    const double deg90 = std::numbers::pi / 2.0;
    const FiguresOfMerit merit = figuresOfMerit(lines, {a, a, a, deg90, deg90, deg90}, 'F');
    ASSERT_TRUE(merit.available);
    EXPECT_EQ(merit.mLines, 8);
    EXPECT_EQ(merit.mPossible, 11);
    EXPECT_EQ(merit.fPossible, 11);
    EXPECT_NEAR(merit.meanAbsDeltaTwoTheta, 0.0035, 1e-12);
    EXPECT_NEAR(merit.m, q8 / (2.0 * (sumDq / 8.0) * 11.0), 1e-9 * merit.m);
    EXPECT_NEAR(merit.f, 8.0 / (sumD2t / 8.0 * 11.0), 1e-9 * merit.f);
    // Primitive counting adds 100 110 200... : 1 2 3 4 5 6 8 9 10 11 12 13 14 16 17 18 19 20 21
    // 22 24 25 26 27 29 30 32 (7, 15, 23, 28, 31 are no sums of three squares): 27 positions.
    EXPECT_EQ(figuresOfMerit(lines, {a, a, a, deg90, deg90, deg90}, 'P').fPossible, 27);
}

TEST(JointRefineTest, CentringRulesAndSymbols) {
    EXPECT_EQ(latticeCentring("I 1 2/c 1"), 'I');
    EXPECT_EQ(latticeCentring("  F m -3 m"), 'F');
    EXPECT_EQ(latticeCentring("R -3 c:H"), 'R');
    EXPECT_EQ(latticeCentring(""), 'P');
    EXPECT_EQ(latticeCentring("x"), 'P');
    EXPECT_TRUE(centringAllows('C', 1, 1, 0));
    EXPECT_FALSE(centringAllows('C', 1, 0, 0));
    EXPECT_FALSE(centringAllows('I', 1, 0, 0));
    EXPECT_TRUE(centringAllows('F', -1, 1, 1));
    EXPECT_FALSE(centringAllows('F', 1, 1, 0));
    EXPECT_TRUE(centringAllows('R', 1, 0, 1)); // -1 + 0 + 1 = 0
    EXPECT_FALSE(centringAllows('R', 1, 0, 0));
    EXPECT_FALSE(centringAllows('R', -1, 0, -2)); // 1 + 0 - 2 = -1
}

// Analytic dQ/d(cell) and dV/d(cell) against central differences on a general triclinic cell.
TEST(JointRefineTest, MetricDerivativesMatchCentralDifferences) {
    const double deg = std::numbers::pi / 180.0;
    const CellVector cell{5.1, 8.9, 7.4, 91.7 * deg, 104.9 * deg, 89.8 * deg};
    const auto q = reciprocalQ(cell, 2, -3, 1);
    ASSERT_TRUE(q);
    const auto volume = cellVolume(cell);
    for (int m = 0; m < 6; ++m) {
        const double step = 1e-6;
        CellVector up = cell, down = cell;
        up[m] += step;
        down[m] -= step;
        const double dq =
            (reciprocalQ(up, 2, -3, 1)->first - reciprocalQ(down, 2, -3, 1)->first) / (2.0 * step);
        const double dv = (cellVolume(up).first - cellVolume(down).first) / (2.0 * step);
        EXPECT_NEAR(q->second[m], dq, 1e-7 * std::max(1.0, std::fabs(dq))) << m;
        EXPECT_NEAR(volume.second[m], dv, 1e-6 * std::max(1.0, std::fabs(dv))) << m;
    }
}

JointRefineInput cubicLines(std::initializer_list<std::array<int, 3>> hkls, double shiftDeg) {
    JointRefineInput input{"CUBIC", {5.43, 5.43, 5.43, 90, 90, 90}, {}};
    for (const auto& hkl : hkls) {
        const double s = hkl[0] * hkl[0] + hkl[1] * hkl[1] + hkl[2] * hkl[2];
        const double tt =
            2.0 * std::asin(1.540562 * std::sqrt(s) / (2.0 * 5.43102)) * 180.0 / std::numbers::pi;
        input.lines.push_back({hkl[0], hkl[1], hkl[2], 1.540562, tt + shiftDeg});
    }
    return input;
}

TEST(JointRefineTest, BadInputIsRefusedWithAMessage) {
    JointRefineSettings zero;
    zero.refineZero = true;
    JointRefineSettings both = zero;
    both.refineDisplacement = true;
    struct Row {
        const char* what;
        JointRefineInput input;
        JointRefineSettings settings;
        const char* message;
    };
    const std::vector<Row> rows{
        {"two lines for a and z", cubicLines({{1, 1, 1}, {2, 2, 0}}, 0.0), zero, "Too few lines"},
        {"span under 30 deg", cubicLines({{1, 1, 1}, {2, 0, 0}, {2, 2, 0}, {3, 1, 1}}, 0.0), both,
         "cannot be told apart"},
        {"zero beyond 2 deg", cubicLines({{1, 1, 1}, {2, 2, 0}, {3, 1, 1}, {4, 0, 0}}, 3.0), zero,
         "ran to"},
        {"unknown system", {"TRIGONAL", {}, {}}, zero, "Unknown crystal system"},
    };
    for (const Row& row : rows) {
        const JointRefineResult result = refineJoint(row.input, row.settings);
        EXPECT_FALSE(result.ok) << row.what;
        EXPECT_NE(result.message.find(row.message), std::string::npos)
            << row.what << ": " << result.message;
    }
}

// A line that alone fixes c (the only one with l != 0) has leverage 1: no Rstudent, a warning.
TEST(JointRefineTest, LeverageOneLineIsReportedNotFlaggedAsNumber) {
    JointRefineInput input{"TETRAGONAL", {4.59, 4.59, 2.96, 90, 90, 90}, {}};
    for (const auto& hkl : std::vector<std::array<int, 3>>{
             {1, 1, 0}, {2, 0, 0}, {2, 1, 0}, {2, 2, 0}, {3, 1, 0}, {1, 0, 1}}) {
        const double q = (hkl[0] * hkl[0] + hkl[1] * hkl[1]) / (4.59373 * 4.59373) +
                         hkl[2] * hkl[2] / (2.95812 * 2.95812);
        input.lines.push_back(
            {hkl[0], hkl[1], hkl[2], 1.540562,
             2.0 * std::asin(1.540562 * std::sqrt(q) / 2.0) * 180.0 / std::numbers::pi +
                 0.001 * static_cast<double>(input.lines.size() % 3)});
    }
    const JointRefineResult result = refineJoint(input, {});
    ASSERT_TRUE(result.ok) << result.message;
    EXPECT_TRUE(result.lines.back().leverageOne);
    EXPECT_TRUE(std::isnan(result.lines.back().rstudent));
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_NE(result.warnings[0].find("Line 6 has leverage 1"), std::string::npos);
}

// The floor on the line uncertainty: with a fit better than 0.005 deg the floor esds are the
// residual-scaled ones times 0.005 / s; the volume esd follows the same factor.
TEST(JointRefineTest, FloorEsdsScaleWithTheFloor) {
    JointRefineInput input = cubicLines(
        {{1, 1, 1}, {2, 2, 0}, {3, 1, 1}, {4, 0, 0}, {3, 3, 1}, {4, 2, 2}, {5, 1, 1}, {4, 4, 0}},
        0.1);
    for (size_t i = 0; i < input.lines.size(); ++i) {
        input.lines[i].twoThetaDeg += (i % 2 == 0 ? 0.001 : -0.001);
    }
    JointRefineSettings settings;
    settings.refineZero = true;
    const JointRefineResult result = refineJoint(input, settings);
    ASSERT_TRUE(result.ok) << result.message;
    ASSERT_LT(result.sigmaDeg, 0.005);
    const double factor = 0.005 / result.sigmaDeg;
    EXPECT_NEAR(result.esdFloor[0] / result.esd[0], factor, 1e-9 * factor);
    EXPECT_NEAR(result.zeroEsdFloor / result.zeroEsd, factor, 1e-9 * factor);
    EXPECT_NEAR(result.volumeEsdFloor / result.volumeEsd, factor, 1e-9 * factor);
    // Cubic: V = a^3, so sigma(V) = 3 a^2 sigma(a).
    EXPECT_NEAR(result.volumeEsd, 3.0 * result.cell[0] * result.cell[0] * result.esd[0],
                1e-9 * result.volumeEsd);
    EXPECT_NEAR(result.zero, -0.1, 0.002);
}

} // namespace
} // namespace quarvex
