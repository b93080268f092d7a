// quarvex-cli process and search --clean end to end: a save without operations reads back the
// same; the measured calcite with its sloping background is found after cleaning; bad input.
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>

namespace quarvex {
namespace {

class ProcessCli : public ::testing::Test {
protected:
    test::ProgramRun run(const std::string& arguments) const {
        return test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() +
                                "' " + arguments);
    }
    static std::string quoted(const std::filesystem::path& path) {
        std::string text = "'"; // "'" + ... trips a false -Wrestrict of g++ 12
        text.append(path.string()).append("'");
        return text;
    }
    static std::filesystem::path example(const char* name) {
        return test::sourcePath("data/raman/examples") / name;
    }
    nlohmann::json info(const std::filesystem::path& file) const {
        const auto result = run(std::string("info --json ") + quoted(file));
        EXPECT_EQ(result.status, 0) << result.err;
        return nlohmann::json::parse(result.out)["spectra"][0];
    }

    test::TempFolder home;
};

// The "x, y" lines of a file, read with sscanf into floats (independent of the program's reader).
std::vector<std::pair<float, float>> pointsByScanf(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::vector<std::pair<float, float>> points;
    for (std::string line; std::getline(in, line);) {
        float x = 0.0F;
        float y = 0.0F;
        if (std::sscanf(line.c_str(), "%f , %f", &x, &y) == 2) {
            points.emplace_back(x, y);
        }
    }
    return points;
}

TEST_F(ProcessCli, NoOperationsWritesWhatInfoReadsBackTheSame) {
    const auto source = example("calcite_bwtek_532nm_icv.txt");
    const auto out = home.path() / "same.txt";
    const auto result = run(std::string("process ") + quoted(source) + " --out " + quoted(out));
    ASSERT_EQ(result.status, 0) << result.err;
    nlohmann::json before = info(source);
    nlohmann::json after = info(out);
    for (const char* differs : {"name", "path"}) {
        before.erase(differs);
        after.erase(differs);
    }
    EXPECT_EQ(after, before);
    EXPECT_EQ(pointsByScanf(out), pointsByScanf(source));
}

TEST_F(ProcessCli, CleanedCalciteIsFoundFirst) {
    std::filesystem::create_directories(home.path() / "SearchRecords" / "RamanLib");
    for (const auto& file :
         std::filesystem::directory_iterator(test::sourcePath("data/raman/model_library"))) {
        std::filesystem::copy_file(file.path(), home.path() / "SearchRecords" / "RamanLib" /
                                                    file.path().filename());
    }
    const auto source = example("calcite_bwtek_532nm_icv.txt");
    const auto out = home.path() / "cleaned.txt";
    const auto processed = run(std::string("process ") + quoted(source) +
                               " --despike --baseline als --out " + quoted(out) + " --json");
    ASSERT_EQ(processed.status, 0) << processed.err;
    const auto report = nlohmann::json::parse(processed.out);
    EXPECT_EQ(report["points_in"], 727);
    EXPECT_EQ(report["points_out"], 727);
    ASSERT_EQ(report["operations"].size(), 2U);
    EXPECT_EQ(report["operations"][0]["spikes_x"].size(), 0U);
    EXPECT_EQ(report["operations"][1]["baseline"]["method"], "als");

    for (const std::string& search :
         {std::string("search --json --top 2 ") + quoted(out),
          std::string("search --json --top 2 --clean ") + quoted(source)}) {
        const auto result = run(search);
        ASSERT_EQ(result.status, 0) << result.err;
        const auto entries = nlohmann::json::parse(result.out)["entries"];
        EXPECT_EQ(entries[0]["file"], "Calcite_M00014_532.txt") << search;
    }
    // Without --clean the search stays as it was: the background puts siderite first.
    const auto plain = run(std::string("search --json --top 1 ") + quoted(source));
    EXPECT_EQ(nlohmann::json::parse(plain.out)["entries"][0]["file"], "Siderite_M00052_532.txt");
}

TEST_F(ProcessCli, BadInputGetsAClearMessageAndWritesNothing) {
    const auto source = quoted(example("calcite_bwtek_532nm_icv.txt"));
    const auto out = home.path() / "never.txt";
    struct Case {
        std::string arguments;
        const char* message;
    };
    const Case cases[] = {
        {std::string("--trim 900:200 --out ") + quoted(out),
         "Trim: The trim range 900 to 200 is empty"},
        {std::string("--trim 300:303 --out ") + quoted(out), "would leave 1 points"},
        {std::string("--trim 300 --out ") + quoted(out), "--trim needs LO:HI"},
        {std::string("--smooth 100000 --out ") + quoted(out), "wider than the spectrum"},
        {"--json", "--json needs --out"},
        {std::string("--out ") + quoted(home.path() / "missing" / "x.txt"), "Save: Cannot write"},
    };
    for (const Case& c : cases) {
        const auto result = run(std::string("process ") + source + " " + c.arguments);
        EXPECT_EQ(result.status, 1) << c.arguments;
        EXPECT_NE(result.err.find(c.message), std::string::npos)
            << c.arguments << ": " << result.err;
        EXPECT_FALSE(std::filesystem::exists(out)) << c.arguments;
    }
}

} // namespace
} // namespace quarvex
