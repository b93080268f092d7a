// The refinement's input: bad files end the run with a report line and leave the results alone;
// the 99-reflection bound; name normalisation; the starting-cell rules; a table in d only.
#include "RefineCaseSupport.h"
#include "TestSupport.h"
#include "xray/Refine.h"
#include "xray/RefineEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>

namespace quarvex {
namespace {

using test::refineText;

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// The cubic case with its lines repeated to n, under another system name if given.
test::RefineCase cubicCase(std::size_t n, const std::string& system = "CUBIC") {
    test::RefineCase c = test::readRefineCase("cubic");
    c.system = system;
    const auto original = c.lines;
    c.lines.clear();
    while (c.lines.size() < n) {
        c.lines.push_back(original[c.lines.size() % original.size()]);
    }
    return c;
}

std::string cubicInput(std::size_t n, const test::InputSwitches& switches = {}) {
    const test::RefineCase c = cubicCase(n);
    return test::refineInputText(c, c.observed(), switches);
}

TEST(RefineInput, BadInputEndsTheRunWithAReportLine) {
    const std::string cubic = cubicInput(12);
    const std::size_t first = cubic.find("   1   1   1");
    const std::string line6 = cubic.substr(first, cubic.find('\n', first) + 1 - first);
    const test::RefineCase fewer = cubicCase(5, "TRICLINIC");
    test::RefineCase flat = cubicCase(8, "TRICLINIC"); // alpha + beta = gamma: no volume
    flat.startCell = {5, 5, 5, 60, 60, 120};
    const struct {
        const char* what;
        std::string text;
        const char* reportLine;
    } cases[] = {
        {"100 reflections", cubicInput(100), "\nToo many reflections, must not exceed   99\n"},
        {"fewer than unknowns", test::refineInputText(fewer, fewer.observed()),
         "Too few reflections: 5 given, the TRICLINIC cell has 6 unknowns."},
        {"unknown system", replaced(cubic, "CUBIC", "CUBICAL"), "system \"CUBICAL\"; expected"},
        {"singular metric", test::refineInputText(flat, flat.observed(), {.startGiven = true}),
         " There must be an error in the cell parameters\n because the metric cannot be "
         "inverted.\n"},
        {"2-theta of 0", replaced(cubic, line6, "1 1 1 1 0.0\n"),
         "line 6: 2-theta must lie between 0 and 180 degrees, found 0"},
        {"2-theta of 180", replaced(cubic, line6, "1 1 1 1 180\n"), "degrees, found 180"},
        {"undefined wavelength", replaced(cubic, line6, "1 1 1 2 28.4\n"),
         "wavelength number 2 is not defined: the file gives 1 wavelength(s)."},
        {"non-numeric line", replaced(cubic, line6, "1 1 x 1 28.4\n"),
         "line 6: expected h k l, the wavelength number and the observed 2-theta"},
        {"missing stop", replaced(cubic, "stop\n", ""), "does not end with a \"stop\" line"},
        {"bad weight", replaced(cubic, line6, "1 1 1 1 28.4 -1\n"), "weight must be a positive"},
        {"bad switch", replaced(cubic, "\n0 0 0 0\n", "\n0 2 0 0\n"), "line 5: expected four"},
        {"indices 0 0 0", replaced(cubic, line6, "0 0 0 1 28.4\n"), "0 0 0 are not"},
    };
    const test::RefineResult good = refineText(cubic);
    ASSERT_TRUE(good.ok) << good.io.message;
    for (const auto& c : cases) {
        INOUTPARMS io = good.io;
        auto data = std::make_unique<DATASTFF>(*good.data);
        test::TempFolder folder;
        EXPECT_FALSE(REFINEMAIN(folder.write("bad_refine.DAT", c.text), io, *data)) << c.what;
        const std::string report = test::readFile(io.reportPath);
        EXPECT_NE(report.find(c.reportLine), std::string::npos) << c.what << "\n" << report;
        EXPECT_NE(report.find("no refined cell was produced"), std::string::npos) << c.what;
        EXPECT_FALSE(io.message.empty()) << c.what;
        EXPECT_EQ(data->CELL, good.data->CELL) << c.what << ": the previous results stay";
    }
}

TEST(RefineInput, NinetyNineReflectionsAreAccepted) {
    const test::RefineResult run = refineText(cubicInput(99));
    EXPECT_TRUE(run.ok) << run.io.message;
    EXPECT_EQ(run.data->NREF, 99);
}

TEST(RefineInput, NamesAndReportPath) {
    const struct {
        const char* read;
        const char* held;
        int unknowns;
    } cases[] = {{"monoclinic", "MONOCLINIC2 ", 4},
                 {"Isometric", "CUBIC       ", 1},
                 {" hexagonal ", "HEXAGONAL   ", 2},
                 {"rhombohedral", "RHOMBOHEDRAL", 2}};
    for (const auto& c : cases) {
        EXPECT_EQ(normalizedSystemName(c.read), c.held) << c.read;
        int unknowns = -1;
        XTL(c.held, unknowns);
        EXPECT_EQ(unknowns, c.unknowns) << c.read;
    }
    int unchanged = 7;
    XTL("CUBICAL", unchanged);
    EXPECT_EQ(unchanged, 7);
    EXPECT_EQ(refineReportPath("/data/quartz_refine.DAT"), "/data/quartz_refineRefine.out");
}

// A rhombohedral starting cell with unequal edges and angles starts from their means (of the
// cosines for the angles) and is iterated; a cubic cell is never iterated.
TEST(RefineInput, StartingCellRules) {
    test::RefineCase c = test::readRefineCase("rhombohedral");
    c.startCell = {5.0, 5.1, 5.2, 54.0, 55.0, 56.0};
    const test::RefineResult rhombohedral = refineText(
        test::refineInputText(c, c.observed(), {.iterations = true, .startGiven = true}));
    ASSERT_TRUE(rhombohedral.ok) << rhombohedral.io.message;
    const double meanAngle =
        std::acos((std::cos(54 * kDegree) + std::cos(55 * kDegree) + std::cos(56 * kDegree)) / 3) /
        kDegree;
    const std::string& report = rhombohedral.report;
    std::istringstream values(report.substr(report.find("Gamma", report.find("as given")) + 5));
    for (const double expected : {5.1, 5.1, 5.1, meanAngle, meanAngle, meanAngle}) {
        double value = 0.0;
        values >> value;
        EXPECT_NEAR(value, expected, 5e-5);
    }
    EXPECT_GT(rhombohedral.io.iterations, 1);
    EXPECT_NE(report.find("Number of iterations ="), std::string::npos);

    const test::RefineResult cubic =
        refineText(cubicInput(12, {.iterations = true, .startGiven = true}));
    ASSERT_TRUE(cubic.ok);
    EXPECT_EQ(cubic.report.find("Number of iterations ="), std::string::npos);
}

// Observations as d-spacings: the true cell back, a table in d, no search.
TEST(RefineInput, TableInD) {
    const test::RefineCase c = test::readRefineCase("tetragonal");
    std::vector<double> d;
    for (const auto& line : c.lines) {
        d.push_back(1.0 / std::sqrt(test::inverseDSquared(c.trueCell, line.h, line.k, line.l)));
    }
    const std::string text =
        replaced(test::refineInputText(c, d, {.search = true}), "\n1 0 0 0\n", "\n1 0 1 0\n");
    const test::RefineResult run = refineText(text);
    ASSERT_TRUE(run.ok) << run.io.message;
    for (int m = 0; m < 6; ++m) {
        EXPECT_NEAR(run.data->CELL[m], c.trueCell[m], 1e-9 * c.trueCell[m]) << m;
    }
    EXPECT_NE(run.report.find("d     h  k  l       d(calc.)     d(diff.)"), std::string::npos);
    EXPECT_NE(run.report.find("not run for a table in d"), std::string::npos);
}

} // namespace
} // namespace quarvex
