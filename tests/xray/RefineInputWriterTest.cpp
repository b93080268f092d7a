// The "_refine.DAT" writer: its weights, its layout read back by the refinement, the choice of
// lines when too many are matched, and what it refuses.
#include "TestSupport.h"

#include "common/QuarvexError.h"
#include "xray/Refine.h"
#include "xray/RefineInputWriter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quarvex {
namespace {

constexpr double kDegree = 3.141592653589793 / 180.0;

double qOf(double twoThetaDeg, double wavelength) {
    const double s = std::sin(0.5 * twoThetaDeg * kDegree);
    return 4.0 * s * s / (wavelength * wavelength);
}

// A cubic phase whose peaks lie exactly where the cell puts the lines (area k+1 for peak k).
XrayPhase cubicPhase(double a, int lines) {
    XrayPhase phase;
    phase.SYM = symCode("CUBIC");
    phase.ICP = {5.43F, 5.43F, 5.43F, 90.0F, 90.0F, 90.0F};
    int k = 0;
    for (int h = 1; k < lines; ++h) {
        for (int l = 0; l <= h && k < lines; ++l, ++k) {
            const double d = a / std::sqrt(2.0 * h * h + l * l);
            XrayPeak peak;
            peak.parameters = {static_cast<float>(k + 1),
                               static_cast<float>(2.0 * std::asin(0.5 / d) / kDegree), 0.1F, 0.5F};
            phase.peaks.append(peak);
            phase.assignments.push_back({k, {h, h, l}, 1, 0.0F});
        }
    }
    return phase;
}

TEST(RefineInputWriter, TheWeightIsTheTwoThetaErrorPerQ) {
    for (const double twoTheta : {10.0, 45.0, 120.0}) {
        const double h = 1e-4;
        const double dQ = (qOf(twoTheta + h, 1.540562) - qOf(twoTheta - h, 1.540562)) / (2 * h);
        EXPECT_NEAR(twoThetaWeight(twoTheta, 1.540562) * dQ, 1.0, 1e-8) << twoTheta;
    }
}

TEST(RefineInputWriter, TheInputRefinesToTheCellOfItsLines) {
    test::TempFolder folder;
    const XrayPhase phase = cubicPhase(5.4307, 12);
    RefineInputContent content{"synthetic", phase.SYM, phase.ICP, true,
                               {1.0},       false,     true,      refineInputLines(phase)};
    const auto input = refineInputPath(folder.path() / "si.txt");
    EXPECT_EQ(input.filename(), "si_refine.DAT");
    writeRefineInput(input, content);
    EXPECT_EQ(test::readFile(input).rfind(
                  "synthetic\nCUBIC\n1 5.43 5.43 5.43 90 90 90\n1 1\n0 1 0 1\n1 1 0 1 ", 0),
              0U);
    INOUTPARMS io;
    auto data = std::make_unique<DATASTFF>();
    ASSERT_TRUE(REFINEMAIN(input, io, *data)) << io.message;
    EXPECT_EQ(data->NREF, 12);
    EXPECT_NEAR(data->CELL[0], 5.4307, 5e-6); // peaks hold single-precision 2-theta
}

TEST(RefineInputWriter, TooManyMatchesKeepTheStrongestInAngleOrder) {
    const XrayPhase phase = cubicPhase(30.0, 120);
    const std::vector<RefineInputLine> lines = refineInputLines(phase);
    ASSERT_EQ(lines.size(), 99U);
    for (std::size_t k = 1; k < lines.size(); ++k) {
        EXPECT_LE(lines[k - 1].twoTheta, lines[k].twoTheta) << k;
    }
    EXPECT_EQ(lines.front().twoTheta, phase.peaks.twoTheta(21)); // peaks 0-20 are the weakest
}

TEST(RefineInputWriter, RefusesWhatTheRefinementCannotRun) {
    test::TempFolder folder;
    const XrayPhase phase = cubicPhase(5.4307, 3);
    RefineInputContent good{"t",    phase.SYM, phase.ICP, false,
                            {1.54}, false,     false,     refineInputLines(phase)};
    RefineInputContent noSystem = good;
    noSystem.sym = kSymUnknown;
    RefineInputContent noWave = good;
    noWave.wavelengths.clear();
    RefineInputContent badWaveNumber = good;
    badWaveNumber.lines[0].wave = 2;
    for (const RefineInputContent* content : {&noSystem, &noWave, &badWaveNumber}) {
        EXPECT_THROW(writeRefineInput(folder.path() / "x_refine.DAT", *content), QuarvexError);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "x_refine.DAT"));
    EXPECT_THROW(writeRefineInput(folder.path() / "no" / "x_refine.DAT", good), QuarvexError);
}

} // namespace
} // namespace quarvex
