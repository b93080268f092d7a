// quarvex-cli search and consistency end to end: compiling first, the table and the JSON keys.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace quarvex {
namespace {

class LibraryCli : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(library());
        for (const char* mineral :
             {"Calcite_M00014_532.txt", "Quartz_M00047_532.txt", "Siderite_M00052_532.txt"}) {
            std::filesystem::copy_file(test::sourcePath("data/raman/model_library") / mineral,
                                       library() / mineral);
        }
    }
    std::filesystem::path library() const { return home.path() / "SearchRecords" / "RamanLib"; }
    test::ProgramRun run(const std::string& arguments) const {
        return test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() +
                                "' " + arguments);
    }
    static std::string example(const char* name) {
        std::string quoted = "'";
        quoted.append((test::sourcePath("data/raman/examples") / name).string()).append("'");
        return quoted;
    }

    test::TempFolder home;
};

TEST_F(LibraryCli, SearchCompilesFirstAndPrintsTheRanking) {
    const auto json = run("search --json " + example("calcite_bwtek_785nm_icv.txt"));
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_NE(json.err.find("compiled first"), std::string::npos) << json.err;
    const auto entries = nlohmann::ordered_json::parse(json.out)["entries"];
    ASSERT_EQ(entries.size(), 3U);
    std::vector<std::string> keys;
    for (const auto& [key, value] : entries[0].items()) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"rank", "score", "file", "id", "names", "locality",
                                              "chemistry", "wave"}));
    EXPECT_EQ(entries[0]["file"], "Calcite_M00014_532.txt");
    EXPECT_EQ(entries[0]["id"], "M00014");
    EXPECT_EQ(entries[0]["wave"], "532");
    EXPECT_GE(entries[0]["score"].get<double>(), entries[1]["score"].get<double>());

    const auto text =
        run("search --top 1 --range 150:1200 " + example("calcite_bwtek_785nm_icv.txt"));
    ASSERT_EQ(text.status, 0) << text.err;
    std::istringstream lines(text.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_NE(line.find("against 3 library entries"), std::string::npos) << line;
    std::getline(lines, line);
    EXPECT_EQ(line.rfind("Rank  Score  File", 0), 0U) << line;
    std::getline(lines, line);
    int rank = 0;
    double score = 0.0;
    char file[64] = {};
    ASSERT_EQ(std::sscanf(line.c_str(), "%d %lf %63s", &rank, &score, file), 3) << line;
    EXPECT_EQ(rank, 1);
    EXPECT_STREQ(file, "Calcite_M00014_532.txt");
    EXPECT_FALSE(std::getline(lines, line)) << "--top 1 prints one row";
}

// A copy of calcite under another name is its twin: the copy ranks second for itself.
TEST_F(LibraryCli, ConsistencyListsTheEntriesThatFail) {
    std::filesystem::copy_file(library() / "Calcite_M00014_532.txt",
                               library() / "Calcite_copy_532.txt");
    const auto text = run("consistency");
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out.rfind("1  Calcite_M00014_532.txt: score 100.00, rank 1, closest 2 at "
                             "100.00\n2  Calcite_copy_532.txt: score 100.00, rank 2, closest 1 "
                             "at 100.00\n4 entries examined, 2 passed: 1 not ranked first",
                             0),
              0U)
        << text.out;
    EXPECT_NE(text.out.find("Report: " +
                            (home.path() / "SearchRecords" / "ConsistencyReport.txt").string()),
              std::string::npos);

    const auto json = run("consistency --json");
    ASSERT_EQ(json.status, 0) << json.err;
    const auto entries = nlohmann::json::parse(json.out)["entries"];
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[3]["file"], "Siderite_M00052_532.txt");
    EXPECT_EQ(entries[3]["rank"], 1);
    EXPECT_TRUE(entries[3]["passes"].get<bool>());
}

// --mode robust: the sloping calcite first with its shift; --mode dot is the default search;
// a range narrower than the derivative window and an unknown mode are refused.
TEST_F(LibraryCli, RobustModeFindsTheSlopingCalcite) {
    const auto robust =
        run("search --json --mode robust " + example("calcite_bwtek_532nm_icv.txt"));
    ASSERT_EQ(robust.status, 0) << robust.err;
    const auto result = nlohmann::json::parse(robust.out);
    EXPECT_EQ(result["mode"], "robust");
    EXPECT_FALSE(result["no_good_match"].get<bool>());
    EXPECT_EQ(result["entries"][0]["file"], "Calcite_M00014_532.txt");
    const int shift = result["entries"][0]["shift"].get<int>();
    EXPECT_LE(std::abs(shift), 3);

    const auto dot = run("search --json --mode dot " + example("calcite_bwtek_532nm_icv.txt"));
    const auto standard = run("search --json " + example("calcite_bwtek_532nm_icv.txt"));
    ASSERT_EQ(dot.status, 0) << dot.err;
    EXPECT_EQ(dot.out, standard.out);

    const auto narrow =
        run("search --mode robust --range 700:710 " + example("calcite_bwtek_532nm_icv.txt"));
    EXPECT_NE(narrow.status, 0);
    EXPECT_NE(narrow.err.find("derivative window"), std::string::npos) << narrow.err;
    EXPECT_NE(run("search --mode cosine " + example("calcite_bwtek_532nm_icv.txt")).status, 0);
}

} // namespace
} // namespace quarvex
