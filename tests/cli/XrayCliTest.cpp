// quarvex-cli xray-ref, xray-refine and xray-project end to end on the reference files and a
// synthetic halite pattern: the JSON keys and values, the files written beside the pattern.
#include "TestSupport.h"
#include "XrayPatternSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>

namespace quarvex {
namespace {

test::ProgramRun cli(const test::TempFolder& home, const std::string& arguments) {
    return test::runProgram(std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() +
                            "' " + arguments);
}

// A quoted path (built by appending: no temporary for g++ 12 to misjudge under -Wrestrict).
std::string quoted(const std::filesystem::path& path) {
    std::string text(1, '\'');
    text.append(path.string()).push_back('\'');
    return text;
}

std::string reference(const char* name) {
    return quoted(test::sourcePath(std::string("data/xray/reference/") + name));
}

TEST(XrayCli, XrayRefListsEachFileAndGoesOnPastABadOne) {
    test::TempFolder home;
    const auto run = cli(home, "xray-ref --json " + reference("Quartz_Ka12.out") + " missing.out " +
                                   reference("Halite.out"));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("SHARING ERROR"), std::string::npos) << run.err;
    const auto json = nlohmann::json::parse(run.out)["patterns"];
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["name"], "Quartz_Ka12.out");
    EXPECT_EQ(json[0]["mode"], 2);
    EXPECT_EQ(json[0]["count"], 28);
    EXPECT_EQ(json[0]["cell"][2], 5.40385);
    EXPECT_EQ(json[0]["reflections"][1]["two_theta"], 26.65);
    EXPECT_EQ(json[0]["reflections"][1]["l"], 1);
    EXPECT_EQ(json[1]["system"], "CUBIC");
    EXPECT_EQ(json[1]["reflections"][8]["d"], 1.1514);
}

TEST(XrayCli, XrayRefineAndAProjectOfItsMatches) {
    test::TempFolder home;
    const test::ReferenceTable halite = test::readReferenceTable("Halite.out");
    const auto pattern = home.write("halite.txt", test::syntheticPatternText(halite, {0.02}));
    const auto run = cli(home, "xray-refine --json " + quoted(pattern) + " " +
                                   reference("Halite.out") + " --tol 0.08");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    for (const char* key :
         {"system", "cell", "error", "volume", "volume_error", "rmse", "iterations",
          "machine_error", "machine_error_search", "report", "corr", "table", "matches"}) {
        EXPECT_TRUE(json.contains(key)) << key;
    }
    EXPECT_NEAR(json["cell"][0].get<double>(), 5.64056, 5.64056 * 2e-4);
    ASSERT_EQ(json["matches"].size(), 9U);
    EXPECT_EQ(json["matches"][0]["h"], 1);
    EXPECT_NEAR(json["matches"][0]["reference_two_theta"].get<double>(), 27.36, 0.005);
    EXPECT_NEAR(json["matches"][0]["d"].get<double>(), 3.2566, 0.003);
    EXPECT_TRUE(std::filesystem::exists(home.path() / "halite_refine.DAT"));

    ASSERT_EQ(
        cli(home, "xray-project new " + quoted(home.path() / "p.xproj") + " " + quoted(pattern))
            .status,
        0);
    const auto save = cli(home, "xray-project save " + quoted(home.path() / "p") + " " +
                                    quoted(pattern) + " " + reference("Halite.out"));
    ASSERT_EQ(save.status, 0) << save.err;
    const auto show = cli(home, "xray-project show --json " + quoted(home.path() / "p"));
    ASSERT_EQ(show.status, 0) << show.err;
    const auto project = nlohmann::json::parse(show.out);
    EXPECT_EQ(project["pattern"]["points"], 8001);
    EXPECT_EQ(project["phases"][0]["name"], "Halite");
    EXPECT_EQ(project["phases"][0]["numinp"], 9);
    EXPECT_EQ(project["phases"][0]["matches"], json["matches"]);
    EXPECT_TRUE(project["refined"].is_null()); // a save keeps no refinement it did not make
}

// The shipped example is what its recorded command makes, and refines to the reference cell
// with the zero shift it was made with found again.
TEST(XrayCli, XrayPatternMakesTheShippedExample) {
    test::TempFolder home;
    const auto out = home.path() / "quartz_pattern.txt";
    const auto made = cli(
        home, "xray-pattern " + reference("Quartz.out") +
                  " --zero-shift 0.02 --noise 10000 --seed 7 --out " + quoted(out) +
                  " --comment 'licence: CC0 1.0 (public domain dedication); made by the Quarvex "
                  "developers from data/xray/reference/Quartz.out'");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(test::readFile(out), test::readFile(test::sourcePath("examples/quartz_pattern.txt")));

    const auto run = cli(home, "xray-refine --json " + quoted(out) + " " + reference("Quartz.out"));
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_NEAR(json["cell"][0].get<double>(), 4.91239, 4.91239 * 2e-4);
    EXPECT_NEAR(json["cell"][2].get<double>(), 5.40385, 5.40385 * 2e-4);
    EXPECT_NEAR(json["machine_error"].get<double>(), -0.02, 0.01);

    const auto bad =
        cli(home, "xray-pattern " + reference("Quartz.out") + " --fwhm 0 --out " + quoted(out));
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("X-ray Diffraction: The FWHM"), std::string::npos) << bad.err;
}

// A CIF lists as its computed pattern, in the range and at the wavelength asked for, and its
// ".out" file is kept in the import folder.
TEST(XrayCli, XrayRefComputesTheCifPattern) {
    test::TempFolder home;
    const auto run = cli(home, "xray-ref --json --wave 1.540562 --range 20:37 " +
                                   reference("cif/SiO2-Quartz-alpha.cif"));
    ASSERT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out)["patterns"];
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0]["title"], "Quartz");
    EXPECT_EQ(json[0]["space_group"], "P 32 2 1");
    EXPECT_EQ(json[0]["system"], "HEXAGONAL");
    EXPECT_EQ(json[0]["count"], 3); // Quartz.out's first three lines
    EXPECT_EQ(json[0]["reflections"][1]["intensity"], 100.0);
    EXPECT_NEAR(json[0]["reflections"][1]["d"].get<double>(), 3.3427, 5e-5);
    EXPECT_TRUE(std::filesystem::exists(home.path() / "SearchRecords/XrayLib" /
                                        "SiO2-Quartz-alpha_cif.out"));

    const auto bad = cli(home, "xray-ref --range 37 " + reference("cif/SiO2-Quartz-alpha.cif"));
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("CIF Reference: --range 37: expected LO:HI"), std::string::npos)
        << bad.err;
}

// Quartz refines from its CIF exactly as from the ".out" file computed from the same CIF.
TEST(XrayCli, XrayRefineTakesACif) {
    test::TempFolder home;
    const auto pattern = home.path() / "quartz_pattern.txt";
    std::filesystem::copy_file(test::sourcePath("examples/quartz_pattern.txt"), pattern);
    const auto fromOut =
        cli(home, "xray-refine --json " + quoted(pattern) + " " + reference("Quartz.out"));
    const auto fromCif = cli(home, "xray-refine --json " + quoted(pattern) + " " +
                                       reference("cif/SiO2-Quartz-alpha.cif"));
    ASSERT_EQ(fromOut.status, 0) << fromOut.err;
    ASSERT_EQ(fromCif.status, 0) << fromCif.err;
    const auto outJson = nlohmann::json::parse(fromOut.out);
    const auto cifJson = nlohmann::json::parse(fromCif.out);
    EXPECT_EQ(cifJson["matches"].size(), outJson["matches"].size());
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(cifJson["cell"][i].get<double>(), outJson["cell"][i].get<double>(), 1e-6)
            << "cell parameter " << i;
    }
    EXPECT_NEAR(cifJson["machine_error"].get<double>(), outJson["machine_error"].get<double>(),
                1e-6);
    EXPECT_NEAR(cifJson["cell"][0].get<double>(), 4.91239, 4.91239 * 2e-4);
}

// A pattern in another format (.xy; CSV with a header row, semicolons and decimal commas, which
// the program's own reader cannot read) goes through the readers' entry point and refines to the
// same cell as the same points in the program's own text.
TEST(XrayCli, XrayRefineReadsPatternsInOtherFormats) {
    test::TempFolder home;
    const std::string text = test::readFile(test::sourcePath("examples/quartz_pattern.txt"));
    std::string xy = "# 2theta counts\n";
    std::string csv = "2theta (deg);counts\n";
    std::istringstream lines(text.substr(text.find("</COM>\n") + 7));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t comma = line.find(", ");
        ASSERT_NE(comma, std::string::npos) << line;
        xy += line.substr(0, comma) + ' ' + line.substr(comma + 2) + '\n';
        std::string twoTheta = line.substr(0, comma);
        twoTheta[twoTheta.find('.')] = ',';
        csv += twoTheta + ';' + line.substr(comma + 2) + '\n';
    }
    const auto refine = [&](const std::filesystem::path& pattern) {
        const auto run = cli(home, "xray-refine --json --wave 1.540562 " + quoted(pattern) + " " +
                                       reference("Quartz.out"));
        EXPECT_EQ(run.status, 0) << pattern << ": " << run.err;
        return run.status == 0 ? nlohmann::json::parse(run.out) : nlohmann::json();
    };
    const auto fromText = refine(home.write("quartz.txt", text));
    ASSERT_FALSE(fromText.is_null());
    for (const auto& pattern : {home.write("quartz.xy", xy), home.write("quartz.csv", csv)}) {
        const auto json = refine(pattern);
        ASSERT_FALSE(json.is_null()) << pattern;
        EXPECT_EQ(json["matches"].size(), fromText["matches"].size()) << pattern;
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(json["cell"][i], fromText["cell"][i]) << pattern << " cell parameter " << i;
        }
    }
}

} // namespace
} // namespace quarvex
