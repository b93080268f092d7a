// Matching peaks to reflections (nearest within the tolerance, closest peak wins, unresolved
// overlaps left out) and Bragg's law both ways.
#include "xray/PeakMatching.h"
#include "xray/XrayBragg.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quarvex {
namespace {

constexpr double kDegree = 3.141592653589793 / 180.0;

struct TestPeak {
    float centre;
    float fwhm = 0.1F;
    bool use = true;
};

struct TestLine {
    double twoTheta;
    float intensity = 100.0F;
};

struct MatchCase {
    const char* what;
    std::vector<TestPeak> peaks;
    std::vector<TestLine> lines;
    bool useIntensities;
    std::vector<std::pair<int, int>> expected; ///< (peak, line) pairs
};

TEST(PeakMatching, NearestReflectionWithinToleranceOncePerReflection) {
    const MatchCase cases[] = {
        {"nearest within tolerance",
         {{20.0F}, {30.05F}},
         {{20.03}, {30.0}, {40.0}},
         true,
         {{0, 0}, {1, 1}}},
        {"beyond the tolerance", {{25.0F}}, {{25.15}}, true, {}},
        {"the closest peak wins", {{20.0F}, {20.04F}}, {{20.03}}, true, {{1, 0}}},
        {"unresolved overlap", {{30.0F}}, {{29.99}, {30.05, 50.0F}}, true, {}},
        {"overlap resolved by two peaks",
         {{30.0F}, {30.06F}},
         {{30.0}, {30.06}},
         true,
         {{0, 0}, {1, 1}}},
        {"weak neighbour ignored", {{30.0F}}, {{30.0}, {30.04, 2.0F}}, true, {{0, 0}}},
        {"weak neighbour counted without intensities",
         {{30.0F}},
         {{30.0}, {30.04, 2.0F}},
         false,
         {}},
        {"unused peak", {{20.0F, 0.1F, false}}, {{20.0}}, true, {}},
    };
    for (const MatchCase& c : cases) {
        XrayPeakList peaks;
        for (const TestPeak& p : c.peaks) {
            XrayPeak peak;
            peak.parameters = {1.0F, p.centre, p.fwhm, 0.5F};
            peak.use = p.use;
            peaks.append(peak);
        }
        std::vector<ReflectionCandidate> candidates;
        for (std::size_t r = 0; r < c.lines.size(); ++r) {
            candidates.push_back({0,
                                  static_cast<int>(r),
                                  1,
                                  c.lines[r].twoTheta,
                                  c.lines[r].intensity,
                                  {static_cast<int>(r), 0, 0}});
        }
        const auto matches = matchPeaks(peaks, candidates, {0.10F, c.useIntensities});
        std::vector<std::pair<int, int>> found;
        for (const PeakMatch& m : matches) {
            found.emplace_back(m.assignment.peak, m.reflection);
            EXPECT_EQ(m.assignment.hkl[0], m.reflection) << c.what;
            EXPECT_FLOAT_EQ(
                m.assignment.referenceTwoTheta,
                static_cast<float>(c.lines[static_cast<std::size_t>(m.reflection)].twoTheta))
                << c.what;
        }
        EXPECT_EQ(found, c.expected) << c.what;
    }
}

TEST(PeakMatching, InputReflectionsAtEachWavelength) {
    XrayPhase phase;
    phase.IHKL = {{0, 1, 1}, {9, 9, 9}};
    phase.IDSP = {3.3427F, 0.5F}; // the second is out of reach of copper radiation
    phase.IINTS = {100.0F, 10.0F};
    const double waves[] = {1.540562, 1.544390};
    const auto candidates = candidatesFromInput(phase, waves);
    ASSERT_EQ(candidates.size(), 2U);
    for (std::size_t w = 0; w < 2; ++w) {
        const double expected = 2.0 * std::asin(waves[w] / (2.0 * 3.3427F)) / kDegree;
        EXPECT_NEAR(candidates[w].twoTheta, expected, 1e-10) << w;
        EXPECT_EQ(candidates[w].wave, static_cast<int>(w) + 1);
    }
    EXPECT_EQ(candidates[1].intensity, 50.0F);
}

TEST(PeakMatching, TheUserOverridesAnAssignment) {
    XrayPhase phase;
    for (const float centre : {20.0F, 30.0F, 40.0F}) {
        XrayPeak peak;
        peak.parameters = {1.0F, centre, 0.1F, 0.5F};
        phase.peaks.append(peak);
    }
    phase.IHKL = {{1, 1, 1}};
    phase.IDSP = {2.9764F};
    phase.assignments = {{0, {1, 0, 0}, 1, 20.0F}, {2, {2, 0, 0}, 1, 40.0F}};
    const double waves[] = {1.540562};
    assignPeak(phase, 1, {1, 1, 1}, 1, waves);
    assignPeak(phase, 2, {3, 3, 3}, 1, waves);
    unassignPeak(phase, 0);
    ASSERT_EQ(phase.assignments.size(), 2U);
    EXPECT_EQ(phase.assignments[0].peak, 1);
    EXPECT_NEAR(phase.assignments[0].referenceTwoTheta, 29.99729, 1e-5); // 1 1 1 of the input
    EXPECT_EQ(phase.assignments[1].hkl, (std::array<int, 3>{3, 3, 3}));
    EXPECT_TRUE(std::isnan(phase.assignments[1].referenceTwoTheta)); // not an input reflection
    EXPECT_THROW(assignPeak(phase, 3, {1, 1, 1}, 1, waves), std::out_of_range);
    EXPECT_THROW(assignPeak(phase, 0, {1, 1, 1}, 2, waves), std::out_of_range);
}

TEST(XrayBragg, BothWaysAgreeAndTheErrorIsTheDerivative) {
    for (const double twoTheta : {5.0, 26.6456, 90.0, 150.0}) {
        const double d = dSpacingFromTwoTheta(twoTheta, 1.540562);
        EXPECT_NEAR(twoThetaFromDSpacing(d, 1.540562), twoTheta, 1e-11) << twoTheta;
        const double h = 1e-5;
        const double slope = (dSpacingFromTwoTheta(twoTheta + h, 1.540562) -
                              dSpacingFromTwoTheta(twoTheta - h, 1.540562)) /
                             (2.0 * h);
        EXPECT_NEAR(dSpacingError(twoTheta, 0.01, 1.540562), std::abs(slope) * 0.01, 1e-9 * d)
            << twoTheta;
    }
    EXPECT_TRUE(std::isnan(twoThetaFromDSpacing(0.7, 1.540562)));
    EXPECT_TRUE(std::isnan(twoThetaFromDSpacing(0.0, 1.540562)));
}

} // namespace
} // namespace quarvex
