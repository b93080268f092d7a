// The refinement's input: bad files end the run with a report line and leave the results alone;
// the 99-reflection bound; name normalisation; the starting-cell rules; a table in d only.
#include "RefineCaseSupport.h"
#include "TestSupport.h"
#include "xray/Refine.h"
#include "xray/RefineEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>

namespace quarvex {
namespace {

struct Outcome {
    bool ok = false;
    INOUTPARMS io;
    std::unique_ptr<DATASTFF> data = std::make_unique<DATASTFF>();
    std::string report;
};

Outcome runText(const std::string& text, const std::string& name = "case_refine.DAT") {
    test::TempFolder folder;
    Outcome outcome;
    outcome.ok = REFINEMAIN(folder.write(name, text), outcome.io, *outcome.data);
    outcome.report = test::readFile(outcome.io.reportPath);
    return outcome;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// The cubic case with n copies of its lines.
test::RefineCase cubicCase(std::size_t lines) {
    test::RefineCase c = test::readRefineCase("cubic");
    const auto original = c.lines;
    c.lines.clear();
    while (c.lines.size() < lines) {
        c.lines.push_back(original[c.lines.size() % original.size()]);
    }
    return c;
}

std::string inputText(const test::RefineCase& c, const test::InputSwitches& switches = {}) {
    std::vector<double> twoTheta;
    for (const auto& line : c.lines) {
        twoTheta.push_back(line.twoTheta);
    }
    return test::refineInputText(c, twoTheta, switches);
}

std::string cubicInput(std::size_t lines, const test::InputSwitches& switches = {}) {
    return inputText(cubicCase(lines), switches);
}

TEST(RefineInput, BadInputEndsTheRunWithAReportLine) {
    const std::string cubic = cubicInput(12);
    const std::size_t first = cubic.find("   1   1   1");
    const std::string firstReflection = cubic.substr(first, cubic.find('\n', first) + 1 - first);
    test::RefineCase fewer = cubicCase(5);
    fewer.system = "TRICLINIC";
    test::RefineCase flat = cubicCase(8); // alpha + beta = gamma: no volume
    flat.system = "TRICLINIC";
    flat.startCell = {5, 5, 5, 60, 60, 120};
    const struct {
        const char* what;
        std::string text;
        const char* reportLine;
    } cases[] = {
        {"100 reflections", cubicInput(100), "\nToo many reflections, must not exceed   99\n"},
        {"fewer than unknowns", inputText(fewer),
         "Too few reflections: 5 given, the TRICLINIC cell has 6 unknowns."},
        {"unknown system", replaced(cubic, "CUBIC", "CUBICAL"),
         "unknown crystal system \"CUBICAL\""},
        {"singular metric", inputText(flat, {.startGiven = true}),
         " There must be an error in the cell parameters\n because the metric cannot be "
         "inverted.\n"},
        {"2-theta of 0", replaced(cubic, firstReflection, "1 1 1 1 0.0\n"),
         "line 6: 2-theta must lie between 0 and 180 degrees, found 0"},
        {"2-theta of 180", replaced(cubic, firstReflection, "1 1 1 1 180\n"),
         "2-theta must lie between 0 and 180 degrees, found 180"},
        {"undefined wavelength", replaced(cubic, firstReflection, "1 1 1 2 28.4\n"),
         "wavelength number 2 is not defined: the file gives 1 wavelength(s)."},
        {"non-numeric line", replaced(cubic, firstReflection, "1 1 x 1 28.4\n"),
         "line 6: expected h k l, the wavelength number and the observed 2-theta"},
        {"missing stop", replaced(cubic, "stop\n", ""), "does not end with a \"stop\" line"},
        {"bad weight", replaced(cubic, firstReflection, "1 1 1 1 28.4 -1\n"),
         "the weight must be a positive number"},
        {"bad switch", replaced(cubic, "\n0 0 0 0\n", "\n0 2 0 0\n"),
         "line 5: expected four switches"},
        {"indices 0 0 0", replaced(cubic, firstReflection, "0 0 0 1 28.4\n"), "0 0 0 are not"},
    };
    const Outcome good = runText(cubic);
    ASSERT_TRUE(good.ok) << good.io.message;
    for (const auto& c : cases) {
        INOUTPARMS io = good.io;
        auto data = std::make_unique<DATASTFF>(*good.data);
        test::TempFolder folder;
        const auto input = folder.write("bad_refine.DAT", c.text);
        EXPECT_FALSE(REFINEMAIN(input, io, *data)) << c.what;
        const std::string report = test::readFile(io.reportPath);
        EXPECT_NE(report.find(c.reportLine), std::string::npos) << c.what << "\n" << report;
        EXPECT_NE(report.find("no refined cell was produced"), std::string::npos) << c.what;
        EXPECT_FALSE(io.message.empty()) << c.what;
        EXPECT_EQ(data->CELL, good.data->CELL) << c.what << ": the previous results stay";
    }
}

TEST(RefineInput, NinetyNineReflectionsAreAccepted) {
    const Outcome run = runText(cubicInput(99));
    EXPECT_TRUE(run.ok) << run.io.message;
    EXPECT_EQ(run.data->NREF, 99);
}

TEST(RefineInput, SystemNamesAreNormalised) {
    const struct {
        const char* read;
        const char* held;
        int unknowns;
    } cases[] = {{"monoclinic", "MONOCLINIC2 ", 4},   {"Isometric", "CUBIC       ", 1},
                 {" hexagonal ", "HEXAGONAL   ", 2},  {"Monoclinic3", "MONOCLINIC3 ", 4},
                 {"rhombohedral", "RHOMBOHEDRAL", 2}, {"triclinic", "TRICLINIC   ", 6},
                 {"orthorhombic", "ORTHORHOMBIC", 3}, {"tetragonal", "TETRAGONAL  ", 2}};
    for (const auto& c : cases) {
        const std::string held = normalizedSystemName(c.read);
        EXPECT_EQ(held, c.held) << c.read;
        int unknowns = -1;
        XTL(held, unknowns);
        EXPECT_EQ(unknowns, c.unknowns) << c.read;
    }
    int unchanged = 7;
    XTL("CUBICAL", unchanged);
    EXPECT_EQ(unchanged, 7);
}

TEST(RefineInput, ReportIsNamedAfterTheInput) {
    EXPECT_EQ(refineReportPath("/data/quartz_refine.DAT"), "/data/quartz_refineRefine.out");
    EXPECT_EQ(refineReportPath("run"), "runRefine.out");
}

// A rhombohedral starting cell with unequal edges and angles starts from their means (the mean
// of the cosines for the angles), and is then iterated; a cubic cell is never iterated.
TEST(RefineInput, StartingCellRules) {
    test::RefineCase c = test::readRefineCase("rhombohedral");
    c.startCell = {5.0, 5.1, 5.2, 54.0, 55.0, 56.0};
    const std::string text = inputText(c, {.iterations = true, .startGiven = true});
    const Outcome rhombohedral = runText(text);
    ASSERT_TRUE(rhombohedral.ok) << rhombohedral.io.message << rhombohedral.report;
    const double meanAngle =
        std::acos((std::cos(54 * kDegree) + std::cos(55 * kDegree) + std::cos(56 * kDegree)) / 3) /
        kDegree;
    const std::size_t caption = rhombohedral.report.find("Starting cell, as given in the input:");
    ASSERT_NE(caption, std::string::npos);
    std::istringstream values(rhombohedral.report.substr(
        rhombohedral.report.find('\n', rhombohedral.report.find("Gamma", caption))));
    for (const double expected : {5.1, 5.1, 5.1, meanAngle, meanAngle, meanAngle}) {
        double value = 0.0;
        values >> value;
        EXPECT_NEAR(value, expected, 5e-5);
    }
    EXPECT_GT(rhombohedral.io.iterations, 1);
    EXPECT_NE(rhombohedral.report.find("Number of iterations ="), std::string::npos);

    const Outcome cubic = runText(cubicInput(12, {.iterations = true, .startGiven = true}));
    ASSERT_TRUE(cubic.ok);
    EXPECT_EQ(cubic.report.find("Number of iterations ="), std::string::npos);
    EXPECT_EQ(cubic.io.iterations, 0);
}

// Observations as d-spacings: the same cell as from 2-theta, a table in d, no search.
TEST(RefineInput, TableInD) {
    const test::RefineCase c = test::readRefineCase("tetragonal");
    const auto exact = test::twoThetaFromCell(c, c.trueCell);
    std::string text = test::refineInputText(c, exact, {.search = true});
    text = replaced(text, "\n1 0 0 0\n", "\n1 0 1 0\n");
    for (std::size_t i = 0; i < c.lines.size(); ++i) {
        char from[64];
        char to[64];
        std::snprintf(from, sizeof from, " %.12f ", exact[i]);
        std::snprintf(to, sizeof to, " %.12f ",
                      1.0 / std::sqrt(test::inverseDSquared(c.trueCell, c.lines[i].h, c.lines[i].k,
                                                            c.lines[i].l)));
        text = replaced(text, from, to);
    }
    const Outcome run = runText(text);
    ASSERT_TRUE(run.ok) << run.io.message;
    for (int m = 0; m < 6; ++m) {
        EXPECT_NEAR(run.data->CELL[m], c.trueCell[m], 1e-9 * c.trueCell[m]) << m;
    }
    EXPECT_NE(run.report.find("d     h  k  l       d(calc.)     d(diff.)"), std::string::npos);
    EXPECT_NE(run.report.find("not run for a table in d"), std::string::npos);
    EXPECT_FALSE(run.io.machineErrorSearched);
}

} // namespace
} // namespace quarvex
