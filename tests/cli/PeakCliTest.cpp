// quarvex-cli fit and peaks end to end on the shipped calcite spectra.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <random>
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

// A Gaussian (height 200, centre 30, FWHM 2 sqrt(ln 2)·3) on y = 2x + 15 with noise of spread
// 0.5: the line is taken off and reported, and with equal unit weights the reduced chi-square is
// the noise variance (within three spreads of a variance estimate from 121 points).
TEST(PeakCli, FitOverALinearBackground) {
    test::TempFolder home;
    const auto file = home.path() / "sloped.txt";
    {
        std::ofstream out(file);
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0.0, 0.5);
        for (int i = 0; i <= 120; ++i) {
            const double x = 0.5 * i;
            out << x << ' '
                << 2.0 * x + 15.0 + 200.0 * std::exp(-std::pow((x - 30.0) / 3.0, 2)) + noise(random)
                << '\n';
        }
    }
    const std::string fit = "fit '" + file.string() + "' --range 0:60 --profile 1 --json";
    const auto levelled = test::runProgram(run(home, fit + " --linear-background"));
    ASSERT_EQ(levelled.status, 0) << levelled.err;
    const auto json = nlohmann::json::parse(levelled.out);
    // The end regions' noise moves the line: the slope by about 0.5 / (sqrt(24) · 25).
    EXPECT_NEAR(json["background_line"]["slope"].get<double>(), 2.0, 0.02);
    EXPECT_NEAR(json["background_line"]["intercept"].get<double>(), 15.0, 0.6);
    ASSERT_EQ(json["peaks"].size(), 1U);
    EXPECT_NEAR(json["peaks"][0]["centre"].get<double>(), 30.0, 0.05);
    EXPECT_NEAR(json["peaks"][0]["height"].get<double>(), 200.0, 1.0);
    EXPECT_NEAR(json["reduced_chisq"].get<double>(), 0.25, 3.0 * 0.25 / std::sqrt(60.0));
    EXPECT_GT(json["r_squared"].get<double>(), 0.999);

    // Without the option: the constant background alone, and no line reported.
    const auto constant = test::runProgram(run(home, fit));
    const auto plain = nlohmann::json::parse(constant.out);
    EXPECT_FALSE(plain.contains("background_line"));
    EXPECT_GT(plain["reduced_chisq"].get<double>(), 10.0 * json["reduced_chisq"].get<double>());
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
