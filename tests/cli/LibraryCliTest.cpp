// quarvex-cli search and consistency end to end: compiling first, the table and the JSON keys.
#include "TestSupport.h"
#include "library/LibraryTestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
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
    // Calcite's bands 155, 281, 712 and 1086 cm-1 all matched in the measured calcite.
    EXPECT_EQ(result["explain"][0]["file"], "Calcite_M00014_532.txt");
    EXPECT_EQ(result["explain"][0]["matched"].size(), 4U) << result["explain"][0].dump();
    EXPECT_GT(result["snr"].get<double>(), 20.0);
    EXPECT_FALSE(result["ambiguous"].get<bool>());

    const auto table =
        run("search --mode robust --top 1 " + example("calcite_bwtek_532nm_icv.txt"));
    EXPECT_NE(table.out.find("Rank  Score  Shift  File"), std::string::npos) << table.out;
    EXPECT_NE(table.out.find("Signal-to-noise of the unknown: "), std::string::npos);

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

// --mixture: the two of the three components the small library holds, the JSON keys;
// component counts below 1 are refused.
TEST_F(LibraryCli, MixtureFindsTheComponentsInTheLibrary) {
    const auto mixture = run("search --json --mixture --components 2 " +
                             example("mixture_calcite_dolomite_quartz.txt"));
    ASSERT_EQ(mixture.status, 0) << mixture.err;
    const auto result = nlohmann::json::parse(mixture.out);
    ASSERT_EQ(result["components"].size(), 2U);
    std::vector<std::string> files;
    for (const auto& component : result["components"]) {
        files.push_back(component["file"].get<std::string>());
        for (const char* key : {"names", "score", "fraction", "shift"}) {
            EXPECT_TRUE(component.contains(key)) << key;
        }
        EXPECT_EQ(component["shift"], 2) << "the mixture's bands are moved by +2 cm-1";
    }
    EXPECT_EQ(files, (std::vector<std::string>{"Calcite_M00014_532.txt", "Quartz_M00047_532.txt"}));
    const double residual = result["residual_fraction"].get<double>();
    EXPECT_GT(residual, 0.0);
    EXPECT_LT(residual, 1.0);

    for (const char* count : {"0", "-1"}) {
        const auto refused = run(std::string("search --mixture --components ") + count + " " +
                                 example("mixture_calcite_dolomite_quartz.txt"));
        EXPECT_NE(refused.status, 0) << count;
        EXPECT_NE(refused.err.find("at least 1 component"), std::string::npos) << refused.err;
    }
}

// A batch: one CSV row per file, a file that cannot be read keeps its row with the error and
// the batch goes on; the rankings are those of single searches.
TEST_F(LibraryCli, BatchSearchWritesOneCsvRowPerFile) {
    const std::filesystem::path csv = home.path() / "batch.csv";
    const std::filesystem::path missing = home.path() / "missing.txt";
    const auto batch = run("search --mode robust --csv '" + csv.string() + "' " +
                           example("calcite_bwtek_532nm_icv.txt") + " '" + missing.string() + "' " +
                           example("mixture_calcite_dolomite_quartz.txt"));
    ASSERT_EQ(batch.status, 0) << batch.err;
    const std::vector<std::string> lines = test::fileLines(csv);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].rfind("file,rank1,name1,score1,shift1,rank2,", 0), 0U) << lines[0];
    EXPECT_NE(lines[0].find(",no_good_match,ambiguous,error"), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find(",1,Calcite,"), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find(",no,no,"), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find("missing.txt"), std::string::npos) << lines[2];
    EXPECT_GT(lines[2].size(), missing.string().size() + 30) << "the error is kept: " << lines[2];
    EXPECT_NE(lines[3].find(",1,Calcite,"), std::string::npos) << lines[3];

    const auto single =
        run("search --json --mode robust " + example("calcite_bwtek_532nm_icv.txt"));
    const auto entries = nlohmann::json::parse(single.out)["entries"];
    std::array<char, 32> score{};
    std::snprintf(score.data(), score.size(), "%.2f", entries[0]["score"].get<double>());
    EXPECT_NE(lines[1].find(std::string(",Calcite,") + score.data() + ","), std::string::npos)
        << lines[1];

    EXPECT_NE(run("search --json " + example("calcite_bwtek_532nm_icv.txt") + " " +
                  example("calcite_bwtek_785nm_icv.txt"))
                  .status,
              0);
}

} // namespace
} // namespace quarvex
