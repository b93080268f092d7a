// quarvex-cli compile, search and resample end to end: output formats and JSON keys.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
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

TEST_F(LibraryCli, CompileReportsEntriesAndSkippedFiles) {
    std::ofstream(library() / "notes.txt") << "no data here\n";
    const auto compiled = run("compile");
    ASSERT_EQ(compiled.status, 0) << compiled.err;
    EXPECT_NE(compiled.out.find("Entries: 3\n"), std::string::npos) << compiled.out;
    EXPECT_NE(compiled.out.find("Skipped files: 1\n  notes.txt: "), std::string::npos)
        << compiled.out;
}

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

TEST_F(LibraryCli, SearchWithoutALibraryNeedsCompiling) {
    std::filesystem::remove_all(library());
    std::ofstream(library()) << "a file where the library folder should be";
    const auto failed = run("search " + example("calcite_bwtek_785nm_icv.txt"));
    EXPECT_NE(failed.status, 0);
    EXPECT_NE(failed.err.find("Library File Needs To Be Compiled"), std::string::npos)
        << failed.err;
}

// Points (101.3, 0) (112, 10) (130, 28); step 5 starts at 110: straight lines give
// 10 * 8.7 / 10.7 at 110, then 13, 18, 23.
TEST_F(LibraryCli, ResamplePrintsTheGrid) {
    std::ofstream(home.path() / "three.txt") << "101.3, 0\n112, 10\n130, 28\n";
    const auto resampled =
        run("resample --no-normalize --step 5 '" + (home.path() / "three.txt").string() + "'");
    ASSERT_EQ(resampled.status, 0) << resampled.err;
    const double expected[][2] = {{110, 87.0 / 10.7}, {115, 13}, {120, 18}, {125, 23}};
    std::istringstream lines(resampled.out);
    for (const auto& point : expected) {
        double x = 0.0;
        double y = 0.0;
        ASSERT_TRUE(lines >> x >> y);
        EXPECT_EQ(x, point[0]);
        EXPECT_NEAR(y, point[1], 1.0e-5) << x; // single-precision interpolation
    }
    double extra = 0.0;
    EXPECT_FALSE(lines >> extra);
}

} // namespace
} // namespace quarvex
