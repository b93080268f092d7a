// quarvex-cli refine with the joint-refinement options end to end: the specified report kept as
// its first part, the added JSON keys, and the refusals.
#include "TestSupport.h"
#include "XrayPatternSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numbers>
#include <string>

namespace quarvex {
namespace {

constexpr double kSiliconA = 5.43102;
constexpr double kCuKa1 = 1.540562;

// A silicon refinement input: the F-centred lines of `sums` (h^2 + k^2 + l^2 with one h k l
// each), 2-theta from Bragg's law plus `shiftDeg` and an alternating +-0.002 deg error.
std::string siliconInput(const std::vector<std::array<int, 3>>& lines, double shiftDeg,
                         const char* switches = "0 0 0 0") {
    std::string text = "Silicon, synthetic\nCUBIC\n0 5.4 5.4 5.4 90 90 90\n1 1.540562\n";
    text += std::string(switches) + "\n";
    for (size_t i = 0; i < lines.size(); ++i) {
        const auto& [h, k, l] = lines[i];
        const double q = (h * h + k * k + l * l) / (kSiliconA * kSiliconA);
        const double tt = 2.0 * std::asin(kCuKa1 * std::sqrt(q) / 2.0) * 180.0 / std::numbers::pi;
        char line[96];
        std::snprintf(line, sizeof line, "%d %d %d 1 %.4f\n", h, k, l,
                      tt + shiftDeg + (i % 2 == 0 ? 0.002 : -0.002));
        text += line;
    }
    return text + "stop\n";
}

const std::vector<std::array<int, 3>> kSiliconLines{{1, 1, 1}, {2, 2, 0}, {3, 1, 1}, {4, 0, 0},
                                                    {3, 3, 1}, {4, 2, 2}, {5, 1, 1}, {4, 4, 0},
                                                    {5, 3, 1}, {6, 2, 0}, {5, 3, 3}, {4, 4, 4}};

test::ProgramRun refine(const test::TempFolder& folder, const std::string& text,
                        const std::string& options) {
    const auto input = folder.write("si_refine.DAT", text);
    return test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + folder.path().string() +
                            "' refine '" + input.string() + "' " + options);
}

TEST(JointRefineCli, ZeroRefinedAndReportExtendedAfterItsEnd) {
    const std::string input = siliconInput(kSiliconLines, 0.25);
    test::TempFolder plain, joint;
    const auto before = refine(plain, input, "--json");
    ASSERT_EQ(before.status, 0) << before.err;
    const auto run = refine(joint, input, "--refine-zero --centring F --json");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    // Noise +-0.002 deg on 12 lines: the zero within 0.002 of -0.25, a within 2e-5 A.
    EXPECT_NEAR(json["zero"].get<double>(), -0.25, 0.002);
    EXPECT_GT(json["zero_error"].get<double>(), 0.0);
    EXPECT_TRUE(json["displacement"].is_null());
    EXPECT_NEAR(json["joint"]["cell"][0].get<double>(), kSiliconA, 2e-5);
    EXPECT_EQ(json["cell"], nlohmann::json::parse(before.out)["cell"]);
    ASSERT_EQ(json["diagnostics"].size(), kSiliconLines.size());
    for (const char* key : {"line", "h", "k", "l", "hat", "rstudent", "dffits", "flagged"}) {
        EXPECT_TRUE(json["diagnostics"][0].contains(key)) << key;
    }
    // F-centred positions up to 444 (sum 48): 3 4 8 11 12 16 19 20 24 27 32 35 36 40 43 44 48.
    EXPECT_EQ(json["fn"]["n_poss"], 17);
    EXPECT_EQ(json["fn"]["lines"], 12);
    EXPECT_TRUE(json["m20"].is_number());

    const std::string specified = test::readFile(plain.path() / "si_refineRefine.out");
    const std::string extended = test::readFile(joint.path() / "si_refineRefine.out");
    ASSERT_GT(extended.size(), specified.size());
    EXPECT_EQ(extended.substr(0, specified.size()), specified);
    EXPECT_NE(extended.find("Joint refinement in 2-theta", specified.size()), std::string::npos);
}

TEST(JointRefineCli, RefusalsExitNonZeroWithTheirMessage) {
    struct Row {
        const char* what;
        std::string input;
        const char* options;
        const char* message;
    };
    const std::vector<Row> rows{
        {"span under 30 deg", siliconInput({{1, 1, 1}, {2, 0, 0}, {2, 2, 0}, {3, 1, 1}}, 0.0),
         "--refine-zero --refine-displacement", "Refine: Zero and displacement cannot be told"},
        {"two lines", siliconInput({{1, 1, 1}, {2, 2, 0}}, 0.0), "--refine-zero",
         "Refine: Too few lines: 2 given"},
        {"bad centring", siliconInput(kSiliconLines, 0.0), "--refine-zero --centring Q",
         "--centring must be one of"},
    };
    for (const Row& row : rows) {
        test::TempFolder folder;
        const auto run = refine(folder, row.input, row.options);
        EXPECT_EQ(run.status, 1) << row.what;
        EXPECT_NE(run.err.find(row.message), std::string::npos) << row.what << ": " << run.err;
    }
}

// xray-refine: a K-alpha1 + K-alpha2 pattern of halite with K-alpha2 stripped, the zero refined;
// the centring of the figures of merit comes from the reference's space group (F m -3 m).
TEST(JointRefineCli, XrayRefineStripsKAlpha2AndRefinesTheZero) {
    test::TempFolder home;
    test::ReferenceTable halite = test::readReferenceTable("Halite.out");
    halite.wavelengths = {kCuKa1, 1.544390};
    test::PatternRecipe recipe;
    recipe.zeroShiftDeg = 0.06;
    recipe.kAlpha2 = true;
    const auto pattern = home.write("halite.txt", test::syntheticPatternText(halite, recipe));
    const std::string ref = test::sourcePath("data/xray/reference/Halite.out").string();
    const auto run =
        test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() +
                         "' xray-refine --json '" + pattern.string() + "' '" + ref +
                         "' --tol 0.12 --strip-ka2 --refine-zero");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    for (const auto& match : json["matches"]) {
        EXPECT_EQ(match["wave"], 1);
    }
    EXPECT_NEAR(json["zero"].get<double>(), -0.06, 0.01);
    EXPECT_NEAR(json["joint"]["cell"][0].get<double>(), halite.cell[0], 3e-4 * halite.cell[0]);
    EXPECT_EQ(json["diagnostics"].size(), json["table"].size());
    const std::string report = test::readFile(json["report"].get<std::string>());
    EXPECT_NE(report.find("lattice centring F"), std::string::npos);
}

} // namespace
} // namespace quarvex
