// The diffraction reader over scans written by data/make_diffraction.py (counts, ends, extremes
// and wavelength stored beside them), and over cut, contradictory and foreign files.
#include "readers/DiffractionReader.h"

#include "ReaderTestTables.h"
#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <sys/stat.h>

namespace quarvex {
namespace {

const std::filesystem::path& scans() {
    static const std::filesystem::path folder = test::sourcePath("tests/readers/data/diffraction");
    return folder;
}

void expectStoredValues() {
    const auto rows = test::tableRows(scans() / "expected.tsv");
    ASSERT_GE(rows.size(), 10U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 7U);
        const std::string& what = row[0];
        const auto records = readDiffractionFile(scans() / row[0]);
        ASSERT_EQ(records.size(), 1U) << what;
        const SpectrumRecord& record = records[0];
        ASSERT_EQ(record.x.size(), static_cast<std::size_t>(std::stoi(row[1]))) << what;
        ASSERT_EQ(record.y.size(), record.x.size()) << what;
        test::expectNear(record.x.front(), row[2], what + " first 2-theta");
        test::expectNear(record.x.back(), row[3], what + " last 2-theta");
        const auto [yMin, yMax] = std::minmax_element(record.y.begin(), record.y.end());
        test::expectNear(*yMin, row[4], what + " smallest count");
        test::expectNear(*yMax, row[5], what + " largest count");
        EXPECT_EQ(record.dtype, "XRD") << what;
        EXPECT_EQ(record.waveInfo, row[6]) << what;
        EXPECT_EQ(record.name, row[0]) << what;
    }
}

TEST(DiffractionReader, EveryFormatGivesTheStoredValues) {
    expectStoredValues();
}

// The GUI toolkit sets LC_NUMERIC from the user's locale; a decimal comma must change nothing.
TEST(DiffractionReader, ReadsTheSameUnderADecimalCommaLocale) {
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string restore = previous != nullptr ? previous : "C";
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr &&
        std::setlocale(LC_NUMERIC, "fr_FR.UTF-8") == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma installed";
    }
    expectStoredValues();
    std::setlocale(LC_NUMERIC, restore.c_str());
}

TEST(DiffractionReader, BadFilesGiveAMessage) {
    const std::string xrdml = test::readFile(scans() / "scan.xrdml");
    const std::string udf = test::readFile(scans() / "scan.udf");
    std::string farEnd = xrdml;
    farEnd.replace(farEnd.find("30.000</end"), 6, "1e300");
    std::string countBeyond = test::readFile(scans() / "scan_rigaku.dat");
    countBeyond.replace(countBeyond.find("=  150\n"), 7, "=  150000000\n");
    const std::string infinite = "1 2\n3 4\n5 inf\n";
    struct Case {
        std::string name;
        std::string content;
        std::string message; // a part of it
    };
    const std::vector<Case> cases = {
        {"v4.raw", std::string("RAW4.00") + std::string(64, '\0'), "RAW version 4"},
        {"scan.brml", std::string("PK\x03\x04") + std::string(64, '\0'), ".brml"},
        {"zipped.raw", std::string("PK\x03\x04") + std::string(64, '\0'), ".brml"},
        {"v1.raw", std::string("RAW ") + std::string(10, '\0'), "cannot be read as"},
        {"v2.raw", std::string("RAW2") + std::string(10, '\0'), "cannot be read as"},
        {"v3.raw", std::string("RAW1.01") + std::string(10, '\0'), "cannot be read as"},
        {"header.rd", std::string("V3RD") + std::string(2, '\0'), "cannot be read as"},
        {"cut.xrdml", xrdml.substr(0, 1500), "cannot be read as"},
        {"far.xrdml", farEnd, "not a finite number"},
        {"cut.udf", udf.substr(0, 600), "cut short"},
        {"count_beyond.dat", countBeyond, "cannot be read as"},
        {"no_counts.uxd",
         "_FILEVERSION = 1\n_DRIVE = COUPLED\n_START = 10\n_STEPSIZE = 0.02\n_COUNTS\n",
         "no scan with 2-theta"},
        {"two_sections.uxd",
         "_FILEVERSION = 1\n_DRIVE = COUPLED\n_STEPSIZE = 0.02\n_START = 10\n_COUNTS\n1\n2\n"
         "_2THETA = 10\n_CPS\n3\n4\n",
         "without a _DRIVE header of its own"},
        {"flat.dbw", "    8.00    0.00   12.75test\n 1 2 3\n", "does not advance"},
        {"bad_step.dat", "c\n  12.0  -0.03  15.0\n1 2 3\n", "not in a diffraction format"},
        {"infinite.xy", infinite, "not a finite number"},
        {"words.xy", "two theta and counts\nnone here\n", "no line with 2-theta and counts"},
        {"broken.xye", "# 2theta counts error\n10 5 1\n10.02 6 1\nten 7 1\n",
         "line 4: not 2-theta and counts"},
        {"letter.txt", "Dear reader,\nthis is a letter.\n", "not in a diffraction format"},
        {"empty.xrdml", "", "not in a diffraction format"},
    };
    test::TempFolder folder;
    for (const Case& c : cases) {
        try {
            readDiffractionFile(folder.write(c.name, c.content));
            ADD_FAILURE() << c.name << " was read";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.name << ": " << error.text();
        }
    }
}

TEST(DiffractionReader, PipesAreRefused) {
    test::TempFolder folder;
    const auto pipe = folder.path() / "scan.xy";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(readDiffractionFile(pipe), QuarvexError); // must not wait for a writer
}

TEST(DiffractionReader, DetectionByContentAndExtension) {
    const auto head = [](const std::string& name) {
        return test::readFile(scans() / name).substr(0, 4096);
    };
    const std::string structureCif =
        "data_quartz\n_cell_length_a 4.9\n_symmetry_space_group_name_H-M "
        "'P 32 2 1'\nloop_\n_atom_site_label\nSi1\n";
    struct Case {
        std::string head;
        std::string extension;
        bool expected;
    };
    const std::vector<Case> cases = {
        {head("scan.uxd"), "txt", true},
        {head("scan.xrdml"), "xml", true},
        {head("scan_rigaku.dat"), "dat", true},
        {head("scan_riet7.dat"), "dat", true},
        {head("scan.udf"), "", true},
        {head("scan.cpi"), "", true},
        {head("scan_pd.cif"), "cif", true},
        {std::string("RAW4.00") + std::string(64, '\0'), "", true},
        {"", "xye", true},
        {"", "brml", true},
        {structureCif, "cif", false},
        {"100.0 5\n101.0 6\n102.0 7\n", "dat", false}, // the program's own two columns
        {"100.0 5\n101.0 6\n102.0 7\n", "txt", false},
        {head("scan_riet7.dat"), "txt", false}, // start-step-stop only with its extension
    };
    for (std::size_t k = 0; k < cases.size(); ++k) {
        EXPECT_EQ(looksLikeDiffractionFile(cases[k].head, cases[k].extension), cases[k].expected)
            << "case " << k << " (" << cases[k].extension << ")";
    }
}

} // namespace
} // namespace quarvex
