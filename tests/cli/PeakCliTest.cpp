// quarvex-cli fit and peaks end to end on the shipped calcite spectra.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

namespace quarvex {
namespace {

std::string run(const test::TempFolder& home, const std::string& arguments) {
    return std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() + "' " + arguments;
}

std::string example(const char* name) {
    std::string quoted(1, '\'');
    quoted += test::sourcePath(std::string("data/raman/examples/") + name).string();
    quoted += '\'';
    return quoted;
}

TEST(PeakCli, FitFindsTheCalciteBandWithASmallError) {
    test::TempFolder home;
    // The strong calcite band, about 1086 cm-1 (the Horiba file reads about 2 cm-1 low).
    for (const char* file : {"calcite_horiba_633nm_top.txt", "calcite_bwtek_532nm_fnmt.txt",
                             "calcite_bwtek_532nm_icv.txt", "calcite_bwtek_785nm_icv.txt"}) {
        const auto fit = test::runProgram(
            run(home, std::string("fit ") + example(file) + " --range 1050:1120 --json"));
        ASSERT_EQ(fit.status, 0) << file << fit.err;
        const auto json = nlohmann::json::parse(fit.out);
        ASSERT_EQ(json["peaks"].size(), 1U) << file;
        const auto& peak = json["peaks"][0];
        EXPECT_NEAR(peak["centre"].get<double>(), 1086.0, 2.0) << file;
        EXPECT_GT(peak["centre_error"].get<double>(), 0.0) << file;
        EXPECT_LT(peak["centre_error"].get<double>(), 0.5) << file;
        EXPECT_GT(peak["fwhm"].get<double>(), 3.0) << file;
        EXPECT_TRUE(json["converged"].get<bool>()) << file;
        for (const char* key :
             {"height", "height_error", "area", "area_error", "mix", "mix_error", "fwhm_error"}) {
            EXPECT_TRUE(peak.contains(key)) << key;
        }
        for (const char* key : {"background", "chisq", "iterations"}) {
            EXPECT_TRUE(json.contains(key)) << key;
        }
    }
}

TEST(PeakCli, PeaksListsTheCalciteBands) {
    test::TempFolder home;
    const auto peaks =
        test::runProgram(run(home, std::string("peaks ") + example("calcite_bwtek_532nm_icv.txt") +
                                       " --range 200:1200 --json"));
    ASSERT_EQ(peaks.status, 0) << peaks.err;
    const auto json = nlohmann::json::parse(peaks.out)["peaks"];
    ASSERT_EQ(json.size(), 3U) << peaks.out;
    EXPECT_NEAR(json[0]["x"].get<double>(), 281.0, 2.0);
    EXPECT_NEAR(json[1]["x"].get<double>(), 712.0, 2.0);
    EXPECT_NEAR(json[2]["x"].get<double>(), 1086.0, 2.0);
    EXPECT_GT(json[2]["height"].get<double>(), json[0]["height"].get<double>());
}

TEST(PeakCli, BadInputFailsWithAMessage) {
    test::TempFolder home;
    const std::string file = example("calcite_bwtek_532nm_icv.txt");
    const std::pair<std::string, const char*> cases[] = {
        {std::string("fit ") + file + " --range 1086:1088", "Error: The window holds"},
        {std::string("fit ") + file + " --range 1120:1050", "is not of the form LO:HI"},
        {std::string("fit ") + file + " --range 1050:1120 --peak 900", "lies outside the window"},
        {std::string("peaks ") + file + " --range abc", "is not of the form LO:HI"},
    };
    for (const auto& [arguments, message] : cases) {
        const auto result = test::runProgram(run(home, arguments));
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_NE(result.err.find(message), std::string::npos) << arguments << ": " << result.err;
    }
}

} // namespace
} // namespace quarvex
