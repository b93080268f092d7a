// quarvex-cli refine end to end on the shipped examples: JSON keys and values, text output, the
// report beside the input, a failed run, and a machine-error search that does not converge.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>
#include <string>

namespace quarvex {
namespace {

// Copies an example into the folder (the report is written beside the input) and refines it.
test::ProgramRun refine(const test::TempFolder& folder, const std::string& name,
                        const std::string& text, const std::string& options = "") {
    const auto input = folder.write(name, text);
    return test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + folder.path().string() +
                            "' refine '" + input.string() + "' " + options);
}

std::string example(const char* name) {
    return test::readFile(test::sourcePath(std::string("examples/") + name));
}

TEST(RefineCli, JsonOfTheQuartzExample) {
    test::TempFolder folder;
    const auto run = refine(folder, "quartz_refine.DAT", example("quartz_refine.DAT"), "--json");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_NEAR(json["cell"][0].get<double>(), 4.91241, 5e-5);
    EXPECT_NEAR(json["cell"][2].get<double>(), 5.40410, 5e-5);
    EXPECT_NEAR(json["error"][0].get<double>(), 0.000105, 5e-6);
    EXPECT_EQ(json["error"].size(), 6U);
    EXPECT_EQ(json["corr"].size(), 6U);
    EXPECT_EQ(json["corr"][5].size(), 6U);
    EXPECT_NEAR(json["machine_error"].get<double>(), -0.0006, 1e-4);
    EXPECT_EQ(json["machine_error_search"], "converged");
    for (const char* key : {"volume", "volume_error", "rmse", "iterations"}) {
        EXPECT_TRUE(json[key].is_number()) << key;
    }
    ASSERT_EQ(json["table"].size(), 26U);
    for (const char* key :
         {"h", "k", "l", "wave", "obs_2theta", "obs_d", "calc_2theta", "calc_d"}) {
        EXPECT_TRUE(json["table"][25][key].is_number()) << key;
    }
    EXPECT_EQ(json["table"][25]["wave"], 2);
    const std::filesystem::path report = json["report"].get<std::string>();
    EXPECT_EQ(report, folder.path() / "quartz_refineRefine.out");
    EXPECT_NE(test::readFile(report).find("**Program LATTIX Version 3.0"), std::string::npos);
}

TEST(RefineCli, TextOfTheGypsumExample) {
    test::TempFolder folder;
    const auto run = refine(folder, "gypsum_refine.DAT", example("gypsum_refine.DAT"));
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* text : {"Refined cell, MONOCLINIC2, 24 reflections", "beta   =     118.48",
                             "iterations    3", "gypsum_refineRefine.out"}) {
        EXPECT_NE(run.out.find(text), std::string::npos) << text << "\n" << run.out;
    }
}

TEST(RefineCli, FailedRunExitsNonZero) {
    test::TempFolder folder;
    std::string text = example("quartz_refine.DAT");
    text.replace(text.find("HEXAGONAL"), 9, "HEXAGON");
    const auto run = refine(folder, "bad_refine.DAT", text);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("Refine: Input error, line 2: unknown crystal system \"HEXAGON\""),
              std::string::npos)
        << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "bad_refineRefine.out"));
}

// A zero error of +0.15 deg is beyond the reach of the search: the CLI says so.
TEST(RefineCli, SaysWhenTheSearchDidNotConverge) {
    std::istringstream in(example("quartz_refine.DAT"));
    std::string shifted;
    int number = 0;
    for (std::string line; std::getline(in, line); ++number) {
        std::istringstream fields(line);
        int h = 0, k = 0, l = 0, wave = 0;
        double twoTheta = 0.0;
        if (number >= 5 && fields >> h >> k >> l >> wave >> twoTheta) {
            line.replace(line.rfind(' ') + 1, std::string::npos, std::to_string(twoTheta + 0.15));
        }
        shifted += line + "\n";
    }
    test::TempFolder folder;
    const auto run = refine(folder, "shifted_refine.DAT", shifted, "--json");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("machine-error search did not converge"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(run.out)["machine_error_search"], "not converged");
}

} // namespace
} // namespace quarvex
