// quarvex-cli info end to end on the shipped examples, checked against an independent count.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>

namespace quarvex {
namespace {

struct IndependentCount {
    int points = 0;
    float yMin = 0.0F;
    float yMax = 0.0F;
};

// Counts "x, y" lines outside the comment block with sscanf, averaging y over repeated x.
IndependentCount countWithScanf(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::map<float, std::pair<double, int>> points;
    bool inComment = false;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("<COM>", 0) == 0 || line.rfind("</COM>", 0) == 0) {
            inComment = line[1] == 'C';
            continue;
        }
        float x = 0.0F;
        float y = 0.0F;
        if (!inComment && std::sscanf(line.c_str(), "%f%*[ ,\t]%f", &x, &y) == 2) {
            points[x].first += y;
            points[x].second += 1;
        }
    }
    IndependentCount count;
    count.points = static_cast<int>(points.size());
    count.yMin = 1e30F;
    count.yMax = -1e30F;
    for (const auto& [x, sum] : points) {
        const auto y = static_cast<float>(sum.first / sum.second);
        count.yMin = std::min(count.yMin, y);
        count.yMax = std::max(count.yMax, y);
    }
    return count;
}

std::string cli() {
    return QUARVEX_CLI_PATH;
}

TEST(InfoCli, DescribesEveryShippedExample) {
    test::TempFolder home;
    for (const auto& entry :
         std::filesystem::directory_iterator(test::sourcePath("data/raman/examples"))) {
        if (entry.path().filename().string().rfind("LICENSE", 0) == 0) {
            continue;
        }
        const auto run = test::runProgram(cli() + " --home '" + home.path().string() +
                                          "' info --json '" + entry.path().string() + "'");
        ASSERT_EQ(run.status, 0) << entry.path() << run.err;
        const auto spectrum = nlohmann::json::parse(run.out)["spectra"][0];
        const IndependentCount expected = countWithScanf(entry.path());
        EXPECT_EQ(spectrum["number"], 1);
        EXPECT_EQ(spectrum["numdata"], expected.points) << entry.path();
        EXPECT_EQ(spectrum["y_min"].get<float>(), expected.yMin) << entry.path();
        EXPECT_EQ(spectrum["y_max"].get<float>(), expected.yMax) << entry.path();
        EXPECT_EQ(spectrum["dtype"], "RAMAN") << entry.path();
    }
    for (const char* made : {"QV.ini", "ForReference.txt", "SearchRecords/RamanLib"}) {
        EXPECT_TRUE(std::filesystem::exists(home.path() / made)) << made;
    }
}

// Lines that are neither keys nor two numbers are told, never dropped without a word.
TEST(InfoCli, TellsTheLinesItSkipped) {
    test::TempFolder home;
    const auto file = home.write("letters.txt", "##NAMES=Quartz\n1 2\n12x3 5\nO3 7\n3 4\n");
    const std::string command = cli() + " --home '" + home.path().string() + "' info ";
    const auto json = test::runProgram(command + "--json '" + file.string() + "'");
    ASSERT_EQ(json.status, 0) << json.err;
    const auto spectrum = nlohmann::json::parse(json.out)["spectra"][0];
    EXPECT_EQ(spectrum["numdata"], 2);
    EXPECT_EQ(spectrum["skipped_lines"], 2);
    EXPECT_EQ(spectrum["first_skipped_line"], 3);
    const auto text = test::runProgram(command + "'" + file.string() + "'");
    EXPECT_NE(text.out.find("  skipped    2 lines skipped (not two numbers), first at line 3\n"),
              std::string::npos)
        << text.out;
}

TEST(InfoCli, MissingFileFailsWithTheSharingError) {
    test::TempFolder home;
    const auto run = test::runProgram(cli() + " --home '" + home.path().string() + "' info '" +
                                      (home.path() / "absent.txt").string() + "'");
    EXPECT_NE(run.status, 0);
    EXPECT_NE(run.err.find("SHARING ERROR: ERROR WITH INCOMING DATA, FILE READ"), std::string::npos)
        << run.err;
}

TEST(InfoCli, TextOutputNamesEveryField) {
    test::TempFolder home;
    const auto run = test::runProgram(
        cli() + " info --home '" + home.path().string() + "' '" +
        test::sourcePath("data/raman/examples/calcite_horiba_633nm_top.txt").string() + "'");
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* expected :
         {"Spectrum 1: calcite_horiba_633nm_top.txt", "points     6034", "dtype      RAMAN",
          "wave       633", "names      Calcite", "chemistry  CaCO3"}) {
        EXPECT_NE(run.out.find(expected), std::string::npos) << expected << "\n" << run.out;
    }
}

} // namespace
} // namespace quarvex
