// The CLI on files in the further formats: info --json reports the format and the values the
// test files hold (see tests/readers/data/README.md), --columns picks columns, and process
// saves JCAMP-DX that reads back.
#include "TestSupport.h"
#include "readers/ReaderTestTables.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace quarvex {
namespace {

std::string cli(const test::TempFolder& home) {
    return std::string(QUARVEX_CLI_PATH) + " --home '" + home.path().string() + "' ";
}

std::string dataFile(const char* name) {
    std::string quoted(1, '\'');
    quoted += (test::sourcePath("tests/readers/data") / name).string();
    quoted += '\'';
    return quoted;
}

TEST(ReadersCli, InfoReportsFormatAndValues) {
    const test::TempFolder home;
    const auto run = test::runProgram(cli(home) + "info --json " + dataFile("link.jdx") + " " +
                                      dataFile("three_columns.tsv") + " --columns 1,3");
    ASSERT_EQ(0, run.status) << run.err;
    const auto spectra = nlohmann::json::parse(run.out)["spectra"];
    ASSERT_EQ(3U, spectra.size());
    struct Row {
        const char* format;
        const char* name;
        int points;
        double firstX;
        double lastX;
        double yMin;
        double yMax;
    };
    // link.jdx: make_jcamp.py's values; three_columns.tsv with columns 1 and 3: read off the file.
    const Row rows[] = {{"JCAMP-DX", "points", 4, 100.5, 300.0, -1.25, 7.5},
                        {"JCAMP-DX", "sticks", 3, 278.4739626844894, 939.8496240601489, 10, 40},
                        {"CSV", "three_columns.tsv", 4, 100, 250, 1, 4}};
    for (std::size_t k = 0; k < 3; ++k) {
        const auto& s = spectra[k];
        const Row& row = rows[k];
        EXPECT_EQ(row.format, s["format"].get<std::string>()) << k;
        EXPECT_EQ(row.name, s["name"].get<std::string>()) << k;
        EXPECT_EQ(row.points, s["numdata"].get<int>()) << k;
        // info prints single-precision values: 1e-6 relative.
        EXPECT_NEAR(row.firstX, s["x_first"].get<double>(), 1e-6 * row.lastX) << k;
        EXPECT_NEAR(row.lastX, s["x_last"].get<double>(), 1e-6 * row.lastX) << k;
        EXPECT_NEAR(row.yMin, s["y_min"].get<double>(), 1e-6) << k;
        EXPECT_NEAR(row.yMax, s["y_max"].get<double>(), 1e-5) << k;
    }
    EXPECT_EQ("532 nm", spectra[1]["wave_info"].get<std::string>());
}

// info --json over every SPC and diffraction test file gives the values their scripts stored
// beside them (spc/expected.tsv, diffraction/expected.tsv), in the order the rows list them.
TEST(ReadersCli, InfoReportsTheStoredValuesOfEveryBinaryAndDiffractionFile) {
    struct Table {
        const char* folder;
        const char* format;
        std::size_t points; // the columns of the row: points, first and last x, least and most y
        std::size_t name;
        std::size_t dtype;    // 0: "XRD" for every row
        std::size_t waveInfo; // 0: empty for every row
    };
    const Table tables[] = {{"spc", "SPC", 2, 8, 7, 0}, {"diffraction", "diffraction", 1, 0, 0, 6}};
    const test::TempFolder home;
    for (const Table& table : tables) {
        const auto folder = test::sourcePath("tests/readers/data") / table.folder;
        const auto rows = test::tableRows(folder / "expected.tsv");
        std::string files;
        std::string previous;
        for (const auto& row : rows) {
            const std::string file = row[0].substr(0, row[0].find(" #"));
            if (file != previous) {
                files += " '" + (folder / file).string() + "'";
                previous = file;
            }
        }
        const auto run = test::runProgram(cli(home) + "info --json" + files);
        ASSERT_EQ(0, run.status) << run.err;
        const auto spectra = nlohmann::json::parse(run.out)["spectra"];
        ASSERT_EQ(rows.size(), spectra.size()) << table.folder;
        for (std::size_t k = 0; k < rows.size(); ++k) {
            const auto& row = rows[k];
            const auto& s = spectra[k];
            const std::string what = std::string(table.folder) + " row " + std::to_string(k + 1);
            EXPECT_EQ(table.format, s["format"].get<std::string>()) << what;
            EXPECT_EQ(row[table.name], s["name"].get<std::string>()) << what;
            EXPECT_EQ(std::stoi(row[table.points]), s["numdata"].get<int>()) << what;
            const char* keys[] = {"x_first", "x_last", "y_min", "y_max"};
            for (std::size_t c = 0; c < 4; ++c) {
                test::expectNear(s[keys[c]].get<float>(), row[table.points + 1 + c],
                                 what + " " + keys[c]);
            }
            EXPECT_EQ(table.dtype == 0 ? "XRD" : row[table.dtype], s["dtype"].get<std::string>())
                << what;
            EXPECT_EQ(table.waveInfo == 0 ? "" : row[table.waveInfo],
                      s["wave_info"].get<std::string>())
                << what;
        }
    }
}

TEST(ReadersCli, UnknownFilesAndBadColumnsSaySo) {
    const test::TempFolder home;
    const auto binary = home.write("picture.png", std::string_view("\x89PNG\r\n\x1a\n\0\0", 10));
    auto run = test::runProgram(cli(home) + "info '" + binary.string() + "'");
    EXPECT_NE(0, run.status);
    EXPECT_NE(run.err.find(binary.string() +
                           ": not a spectrum file Quarvex can read (tried: text, CSV, JCAMP-DX, "
                           "SPC, diffraction formats)"),
              std::string::npos)
        << run.err;
    run = test::runProgram(cli(home) + "peaks " + dataFile("three_columns.tsv") + " --columns 1,4");
    EXPECT_NE(0, run.status);
    EXPECT_NE(run.err.find("column 4 was asked for, but line 2 has 3 columns"), std::string::npos)
        << run.err;
    run = test::runProgram(cli(home) + "info " + dataFile("quoted.csv") + " --columns 2");
    EXPECT_NE(0, run.status);
    EXPECT_NE(run.err.find("is not of the form X,Y"), std::string::npos) << run.err;
}

TEST(ReadersCli, ProcessWritesJcampThatReadsBack) {
    const test::TempFolder home;
    const auto out = home.path() / "saved.jdx";
    const auto source = test::sourcePath("tests/readers/data/comma_header.csv");
    auto run = test::runProgram(cli(home) + "process '" + source.string() + "' --out '" +
                                out.string() + "'");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ(0U, test::readFile(out).find("##TITLE=comma_header.csv\n##JCAMP-DX=5.01\n"));
    run = test::runProgram(cli(home) + "info --json '" + out.string() + "' '" + source.string() +
                           "'");
    ASSERT_EQ(0, run.status) << run.err;
    const auto spectra = nlohmann::json::parse(run.out)["spectra"];
    EXPECT_EQ("JCAMP-DX", spectra[0]["format"].get<std::string>());
    for (const char* key : {"numdata", "x_first", "x_last", "y_min", "y_max"}) {
        EXPECT_EQ(spectra[1][key], spectra[0][key]) << key;
    }
}

} // namespace
} // namespace quarvex
