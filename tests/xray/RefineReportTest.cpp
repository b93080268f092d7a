// The written report: every heading and label, the run-time-built table formats and the columns
// they give, the fixed-column writer and the compact value(error) form.
#include "xray/RefineReport.h"
#include "RefineCaseSupport.h"
#include "xray/FixedFormat.h"
#include "xray/Refine.h"
#include "xray/RefineEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>

namespace quarvex {
namespace {

test::RefineResult writeReport(const std::string& name, const test::InputSwitches& switches) {
    const test::RefineCase c = test::readRefineCase(name);
    test::RefineResult result = test::refineCase(c, c.observed(), switches);
    EXPECT_TRUE(result.ok) << result.io.message;
    return result;
}

TEST(RefineReport, HoldsEveryHeadingAndLabel) {
    const test::RefineResult one = writeReport("monoclinic2", {.search = true, .iterations = true});
    const std::string texts[] = {
        "**Program LATTIX Version 3.0",
        "\n Symmetry constraint is:\n MONOCLINIC2\n",
        "\n Wavelength # 1 =   1.540562\n",
        "A            B            C          Alpha      Beta        Gamma",
        " A =",
        " B =",
        " C =",
        " Alpha =",
        " Beta =",
        " Gamma =",
        " Volume =",
        "OBSERVED                        CALCULATED          DIFFERENCE",
        "2theta       d    h  k  l         2theta       d      2theta       d",
        "Number of iterations =",
        "\n Variance/Covariance MATRIX (units = angstroms and radians)\n",
        "\n Correlation Matrix\n",
        "\n rmse = ",
        "\n Refinement after correcting for machine error\n\n MACHINE ERROR: ",
    };
    for (const std::string& text : texts) {
        EXPECT_NE(one.report.find(text), std::string::npos) << text;
    }
    char machineError[64];
    std::snprintf(machineError, sizeof machineError, "\n MACHINE ERROR: %8.3f\n",
                  one.io.machineError);
    EXPECT_NE(one.report.find(machineError), std::string::npos);
    EXPECT_NE(one.report.find("did not converge"), std::string::npos);

    const test::RefineResult two = writeReport("hexagonal", {});
    EXPECT_NE(two.report.find("\n Wavelength # 2 =   1.544390\n"), std::string::npos);
    EXPECT_NE(two.report.find("h  k  l  Wave#  2theta"), std::string::npos);
}

TEST(RefineReport, TableFormatsAreBuiltAtRunTime) {
    EXPECT_EQ(tableFormat(false, 1), "(1X,F9.3,F9.5,1X,3I3,6X,F9.3,1X,F9.5,3X,F7.3,F10.5)");
    EXPECT_EQ(tableFormat(false, 2), "(1X,F9.3,F9.5,1X,3I3,4X,I1,1X,F9.3,1X,F9.5,3X,F7.3,F10.5)");
    EXPECT_EQ(tableFormat(true, 1), "(8X,F9.5,1X,3I3,5X,F9.5,6X,F7.5)");
}

// The table's columns read back to the refined numbers, rounded to their decimals.
TEST(RefineReport, TableColumnsCarryTheResults) {
    const test::RefineResult w = writeReport("hexagonal", {});
    const DATASTFF& d = *w.data;
    const std::size_t heading = w.report.find("h  k  l  Wave#");
    std::size_t lineStart = w.report.find('\n', heading) + 1;
    for (int r = 0; r < d.NREF; ++r) {
        const std::string row =
            w.report.substr(lineStart, w.report.find('\n', lineStart) - lineStart);
        lineStart += row.size() + 1;
        const struct {
            std::size_t column, width;
            double value, rounding;
        } fields[] = {{1, 9, d.TTHETA[r], 5e-4},        {10, 9, d.DO[r], 5e-6},
                      {20, 3, double(d.h[r]), 0},       {26, 3, double(d.l[r]), 0},
                      {33, 1, double(d.WAVEID[r]), 0},  {35, 9, d.TTHETAC[r], 5e-4},
                      {45, 9, d.DC[r], 5e-6},           {57, 7, d.TTHETA[r] - d.TTHETAC[r], 5e-4},
                      {64, 10, d.DO[r] - d.DC[r], 5e-6}};
        for (const auto& f : fields) {
            EXPECT_NEAR(std::stod(row.substr(f.column, f.width)), f.value, f.rounding + 1e-12)
                << "row " << r + 1 << " column " << f.column << ": " << row;
        }
    }
}

TEST(RefineReport, FixedFormatWritesColumns) {
    const struct {
        const char* format;
        std::initializer_list<FixedValue> values;
        const char* expected;
    } cases[] = {
        {"(1X,F9.3,F9.5)", {20.85775, 4.255337}, "    20.858  4.25534"},
        {"(3I3,4X,I1)", {1, -1, 10, 2}, "  1 -1 10    2"},
        {"(F4.1)", {123.45}, "****"},
        {"(F7.5)", {-0.00123}, "-.00123"},
        {"(F7.3,F6.2)", {std::nan(""), -0.004}, "    NaN -0.00"},
        {"(a,i4)",
         {"Too many reflections, must not exceed ", 99},
         "Too many reflections, must not exceed   99"},
        {"(A7,I1,A1)", {"(1X,F9.", 3, ")"}, "(1X,F9.3)"},
        {"(2I3)", {7}, "  7"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatFixed(c.format, c.values), c.expected) << c.format;
    }
    EXPECT_THROW(formatFixed("(F9)", {1.0}), std::invalid_argument);
    EXPECT_THROW(formatFixed("(I3)", {1.0}), std::invalid_argument);
}

TEST(RefineReport, CompactValueWithError) {
    const struct {
        double value, error;
        const char* expected;
    } cases[] = {{4.912370, 0.000100, "4.91237(10)"}, {118.48484, 0.00441, "118.485(4)"},
                 {5.4503, 0.0188, "5.450(19)"},       {163.04, 12.3, "163(12)"},
                 {112.9393, 0.0053, "112.939(5)"},    {90.0, 0.0, ""}};
    for (const auto& c : cases) {
        EXPECT_EQ(compactWithError(c.value, c.error), c.expected) << c.value;
    }
}

} // namespace
} // namespace quarvex
