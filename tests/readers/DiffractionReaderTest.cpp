// The diffraction reader over scans written by data/make_diffraction.py (counts, ends, extremes
// and wavelength stored beside them), and over cut, contradictory and foreign files.
#include "readers/DiffractionReader.h"

#include "ReaderTestTables.h"
#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <map>
#include <sys/stat.h>

namespace quarvex {
namespace {

const std::filesystem::path& scans() {
    static const std::filesystem::path folder = test::sourcePath("tests/readers/data/diffraction");
    return folder;
}

// The file of a row's name: "FILE #N" names scan N of a file of several.
std::filesystem::path fileOf(const std::string& name) {
    return scans() / name.substr(0, name.find(" #"));
}

void expectStoredValues() {
    const auto rows = test::tableRows(scans() / "expected.tsv");
    ASSERT_GE(rows.size(), 16U);
    std::map<std::filesystem::path, std::size_t> scansPerFile;
    for (const auto& row : rows) {
        ++scansPerFile[fileOf(row[0])];
    }
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 8U);
        const std::string& what = row[0];
        const auto records = readDiffractionFile(fileOf(what));
        ASSERT_EQ(records.size(), scansPerFile[fileOf(what)]) << what;
        const auto match = std::find_if(records.begin(), records.end(),
                                        [&](const SpectrumRecord& r) { return r.name == what; });
        ASSERT_NE(match, records.end()) << what;
        const SpectrumRecord& record = *match;
        ASSERT_EQ(record.x.size(), static_cast<std::size_t>(std::stoi(row[1]))) << what;
        ASSERT_EQ(record.y.size(), record.x.size()) << what;
        test::expectNear(record.x.front(), row[2], what + " first 2-theta");
        test::expectNear(record.x.back(), row[3], what + " last 2-theta");
        const auto [yMin, yMax] = std::minmax_element(record.y.begin(), record.y.end());
        test::expectNear(*yMin, row[4], what + " smallest count");
        test::expectNear(*yMax, row[5], what + " largest count");
        EXPECT_EQ(record.dtype, "XRD") << what;
        EXPECT_EQ(record.waveInfo, row[6]) << what;
        if (!row[7].empty()) {
            EXPECT_NE(std::find(record.comments.begin(), record.comments.end(), row[7]),
                      record.comments.end())
                << what << ": no comment line \"" << row[7] << '"';
        }
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

// A binary file cut anywhere in its header or data, or whose counts promise more than it holds,
// is refused with xylib's "unexpected eof", never read in part.
TEST(DiffractionReader, CutBinaryFilesAreRefused) {
    struct Case {
        std::string name;
        std::size_t length;      // the file is cut to this many bytes ...
        std::size_t patchAt = 0; // ... or keeps its length with these bytes written here
        std::string patch = {};
    };
    const auto u32 = [](std::uint32_t value) {
        std::string bytes(4, '\0');
        for (std::size_t k = 0; k < 4; ++k) {
            bytes[k] = static_cast<char>((value >> (8 * k)) & 0xFFU);
        }
        return bytes;
    };
    // The layouts (make_diffraction.py): version 1: 152 header bytes after "RAW ", 100 counts,
    // "RAW " and the second range from 556; version 2: 256 + 64 header bytes; version 3: 712 +
    // 304, the second range from 1616; Philips RD: 250 header bytes, end 2-theta at 230.
    const std::vector<Case> cases = {
        {"scan_v1.raw", 4},
        {"scan_v1.raw", 40},
        {"scan_v1.raw", 155},
        {"scan_v1.raw", 156},
        {"scan_v1.raw", 555},
        {"scan_v1.raw", 556},
        {"scan_v2.raw", 5},
        {"scan_v2.raw", 200},
        {"scan_v2.raw", 319},
        {"scan_v2.raw", 320},
        {"scan_v2.raw", 679},
        {"scan_v3.raw", 7},
        {"scan_v3.raw", 400},
        {"scan_v3.raw", 712},
        {"scan_v3.raw", 1015},
        {"scan_v3.raw", 1200},
        {"scan_v3.raw", 1616},
        {"scan.rd", 4},
        {"scan.rd", 214},
        {"scan.rd", 249},
        {"scan.rd", 505},
        {"scan_v1.raw", 0, 4, u32(100000)},                          // steps of the first range
        {"scan_v2.raw", 0, 4, std::string("\x02", 1)},               // ranges
        {"scan_v3.raw", 0, 12, u32(3)},                              // ranges
        {"scan_v3.raw", 0, 716, u32(0x7FFFFFFF)},                    // steps of the first range
        {"scan.rd", 0, 230, std::string("\0\0\0\0\0\0\x59\x40", 8)}, // end 2-theta 100
    };
    test::TempFolder folder;
    for (const Case& c : cases) {
        std::string content = test::readFile(scans() / c.name);
        std::string what = c.name;
        if (c.patch.empty()) {
            ASSERT_LT(c.length, content.size()) << c.name;
            content.resize(c.length);
            what += " cut to " + std::to_string(c.length) + " bytes";
        } else {
            content.replace(c.patchAt, c.patch.size(), c.patch);
            what += " with a count at " + std::to_string(c.patchAt) + " beyond the file";
        }
        try {
            readDiffractionFile(folder.write(c.name, content));
            ADD_FAILURE() << what << " was read";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find("unexpected eof"), std::string::npos)
                << what << ": " << error.text();
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
