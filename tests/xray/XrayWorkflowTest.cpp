// The X-ray workflow end to end: synthetic patterns of reference minerals of seven crystal
// systems, with a known zero shift and counting noise, indexed and refined to the reference
// cell; where the wavelength comes from; and the inputs that end it with a message.
#include "TestSupport.h"
#include "XrayPatternSupport.h"

#include "common/QuarvexError.h"
#include "shell/ProgramState.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayWorkflow.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quarvex {
namespace {

constexpr double kDegree = 3.141592653589793 / 180.0;

XrayStateGroups groupsOf(ProgramState& s) {
    return {s.specdata, s.mineralInfo, s.diff, s.xrayPeak, s.inoutparms, s.datastff};
}

std::filesystem::path reference(const std::string& name) {
    return test::sourcePath("data/xray/reference/" + name);
}

XrayRefineRequest requestFor(const std::filesystem::path& pattern, const std::string& ref) {
    XrayRefineRequest request;
    request.pattern = pattern;
    request.reference = reference(ref);
    request.machineErrorSearch = true;
    return request;
}

// The h k l of the reference line whose true position at `wavelength` is nearest to `x`.
std::array<int, 3> nearestLine(const test::ReferenceTable& table, double x, double wavelength) {
    const test::ReferenceLine* best = nullptr;
    double bestDistance = 0.0;
    for (const test::ReferenceLine& line : table.lines) {
        const double t = 2.0 * std::asin(wavelength / (2.0 * line.dSpacing)) / kDegree;
        if (best == nullptr || std::abs(t - x) < bestDistance) {
            best = &line;
            bestDistance = std::abs(t - x);
        }
    }
    return best->hkl;
}

struct EndToEndCase {
    const char* file;
    double zeroShift; ///< degrees; the search finds a few hundredths (docs/refine.md)
    bool kAlpha2;
};

TEST(XrayWorkflow, SyntheticPatternsRefineToTheReferenceCell) {
    const EndToEndCase cases[] = {
        {"Halite.out", 0.02, false},    {"Rutile.out", -0.03, false},
        {"Quartz.out", 0.025, false},   {"Brookite.out", 0.02, false},
        {"Tenorite.out", -0.03, false}, {"Corundum_rhombohedral.out", -0.03, false},
        {"Kaolinite.out", 0.02, false}, {"Quartz_Ka12.out", 0.02, true},
    };
    for (const EndToEndCase& c : cases) {
        test::TempFolder folder;
        const test::ReferenceTable table = test::readReferenceTable(c.file);
        const auto pattern = folder.write(
            "pattern.txt", test::syntheticPatternText(table, {c.zeroShift, c.kAlpha2}));
        ProgramState state;
        const XrayRefineOutcome outcome =
            runXrayRefine(groupsOf(state), requestFor(pattern, c.file));
        ASSERT_TRUE(outcome.refined) << c.file << ": " << state.inoutparms.message;
        EXPECT_EQ(outcome.inputFile, folder.path() / "pattern_refine.DAT");
        EXPECT_EQ(outcome.wavelengths.wavelengths.size(), c.kAlpha2 ? 2U : 1U) << c.file;
        for (int m = 0; m < 6; ++m) {
            EXPECT_NEAR(state.datastff.CELL[m], table.cell[m], 2.0e-4 * table.cell[m])
                << c.file << " cell entry " << m;
        }
        EXPECT_NEAR(state.inoutparms.machineError, -c.zeroShift, 0.01) << c.file;
        const XrayPhase& phase = state.xrayPeak.phases.front();
        ASSERT_GE(outcome.matches.size(), 9U) << c.file;
        for (const PeakAssignment& a : phase.assignments) {
            const double x = phase.peaks.twoTheta(a.peak) - c.zeroShift;
            EXPECT_EQ(a.hkl, nearestLine(table, x, table.wavelengths[a.wave - 1]))
                << c.file << ": peak at " << x << ", wavelength " << a.wave;
        }
    }
}

TEST(XrayWorkflow, TheWavelengthComesFromTheOptionThePatternTheReferenceOrThePreferences) {
    DIFF_GLOBALS diff;
    OPEN_AND_READ_DIFF_FILE(diff, reference("Quartz_Ka12.out"), {});
    OPEN_AND_READ_DIFF_FILE(diff, reference("Quartz.out"), {});
    test::TempFolder folder;
    OPEN_AND_READ_DIFF_FILE(diff, folder.write("none.out", "2-THETA\n20 1 4 1 0 0\n"), {});
    struct Case {
        std::optional<double> given;
        const char* wave;
        int reference;
        std::vector<double> expected;
        const char* source;
    } cases[] = {
        {0.70930, "1.5406", 1, {0.70930}, "option"},
        {std::nullopt, "1.78897 A (Co)", 1, {1.78897}, "pattern"},
        {std::nullopt, "532", 1, {1.540562}, "reference"},
        {std::nullopt, "Cu K-alpha", 0, {1.540562, 1.54439}, "reference"},
        {std::nullopt, "1.540562", 0, {1.540562, 1.54439}, "pattern"},
        {std::nullopt, "1.5406", 0, {1.5406, 1.54439}, "pattern"}, // K-alpha1, rounded
        {std::nullopt, "1.5418", 0, {1.5418}, "pattern"},          // the K-alpha mean: no doublet
        {std::nullopt, "", 2, {1.5418}, "preferences"},
    };
    for (const Case& c : cases) {
        const WavelengthChoice choice =
            chooseWavelengths(c.given, c.wave, diff, c.reference, 1.5418F);
        EXPECT_EQ(choice.wavelengths, c.expected) << c.wave;
        EXPECT_EQ(choice.source, c.source) << c.wave;
    }
}

struct FailureCase {
    const char* what;
    std::string pattern;
    const char* reference;
    const char* system;
    const char* message;
};

std::string patternText(double peakAt, double firstX = 10.0) {
    std::string text = "<COM>\ndtype: XRD\n</COM>\n";
    for (int i = 0; i < 2000; ++i) {
        const double x = firstX + 0.01 * i;
        const double u = (x - peakAt) / 0.1;
        text += std::to_string(x) + " " +
                std::to_string(50.0 + 5000.0 / (1.0 + 4 * u * u) + (i % 7) * 0.5) + "\n";
    }
    return text;
}

TEST(XrayWorkflow, InputsThatEndItWithAMessageAndChangeNoPhase) {
    const FailureCase cases[] = {
        {"no peak", patternText(-100.0), "Halite.out", "", "stands out of its noise"},
        {"nothing near a reflection", patternText(15.0), "Halite.out", "", "nothing to refine"},
        {"a Raman spectrum", patternText(1086.0, 1000.0), "Halite.out", "",
         "not a diffraction pattern"},
        {"an unknown system", patternText(27.36, 20.0), "Halite.out", "cubical",
         "Unknown crystal system"},
        {"a reference without reflections", patternText(27.36, 20.0), "", "", "has no reflections"},
    };
    for (const FailureCase& c : cases) {
        test::TempFolder folder;
        ProgramState state;
        XrayRefineRequest request =
            requestFor(folder.write("p.txt", c.pattern), *c.reference == '\0' ? "" : c.reference);
        if (*c.reference == '\0') {
            request.reference = folder.write("empty.out", "Nothing\n");
        }
        request.system = c.system;
        try {
            runXrayRefine(groupsOf(state), request);
            ADD_FAILURE() << c.what;
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.what << ": " << error.text();
        }
        EXPECT_TRUE(state.xrayPeak.phases.empty()) << c.what;
        EXPECT_FALSE(std::filesystem::exists(folder.path() / "p_refine.DAT")) << c.what;
    }
}

} // namespace
} // namespace quarvex
