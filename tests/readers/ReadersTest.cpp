// The readers against their test files: format, point count, first and last x, extremes and
// header values (tests/readers/data/README.md tells where each file's values come from).
#include "TestSupport.h"
#include "readers/JcampWriter.h"
#include "readers/LoadSpectra.h"
#include "readers/RecordNotes.h"
#include "readers/SpectrumFormats.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quarvex {
namespace {

struct FileCase {
    const char* file;
    std::size_t spectrum; // 0-based, for files of several spectra
    const char* format;
    std::size_t points;
    double firstX;
    double lastX;
    double minY;
    double maxY;
    const char* name;
    const char* names; // header value "names"
};

// JCAMP-DX rows: make_jcamp.py's printout. Delimited rows: read off the files by hand.
const FileCase kCases[] = {
    {"difdup.jdx", 0, "JCAMP-DX", 61, 200.0, 320.0, 0.0, 49.85, "difdup quartz", "Quartz"},
    {"affn.jdx", 0, "JCAMP-DX", 61, 200.0, 320.0, 0.0, 49.85, "affn quartz", "affn quartz"},
    {"link.jdx", 0, "JCAMP-DX", 4, 100.5, 300.0, -1.25, 7.5, "points", "points"},
    {"link.jdx", 1, "JCAMP-DX", 3, 278.4739626844894, 939.8496240601489, 10.0, 40.0, "sticks",
     "sticks"},
    {"damaged.jdx", 0, "JCAMP-DX", 61, 200.0, 320.0, 0.0, 49.85, "damaged", "damaged"},
    {"comma_header.csv", 0, "CSV", 3, 100.0, 300.0, 1.0, 5.0, "comma_header.csv", ""},
    {"semicolon_decimal_comma.txt", 0, "CSV", 3, 100.5, 300.5, -3.5, 8.0,
     "semicolon_decimal_comma.txt", ""},
    {"three_columns.tsv", 0, "CSV", 4, 100.0, 250.0, 5.0, 30.0, "three_columns.tsv", ""},
    {"descending_blank.txt", 0, "CSV", 3, 100.0, 300.0, 2.0, 4.0, "descending_blank.txt", ""},
    {"quoted.csv", 0, "CSV", 2, 1.5, 2.5, 2.0, 4.0, "quoted.csv", ""},
};

std::filesystem::path dataFile(std::string_view name) {
    return test::sourcePath("tests/readers/data") / name;
}

// Single precision holds about 7 digits: the tolerance is relative to the size of the value.
void expectNear(double expected, float actual, const std::string& what) {
    EXPECT_NEAR(expected, actual, 1e-6 * std::max(1.0, std::abs(expected))) << what;
}

TEST(Readers, EachTestFileGivesItsValues) {
    for (const FileCase& c : kCases) {
        const std::string row = std::string(c.file) + " #" + std::to_string(c.spectrum + 1);
        const SpectrumFileContents contents = readSpectrumFile(dataFile(c.file));
        EXPECT_EQ(c.format, contents.format) << row;
        ASSERT_LT(c.spectrum, contents.spectra.size()) << row;
        const SpectrumRecord& s = contents.spectra[c.spectrum];
        ASSERT_EQ(c.points, s.x.size()) << row;
        expectNear(c.firstX, s.x.front(), row + " first x");
        expectNear(c.lastX, s.x.back(), row + " last x");
        expectNear(c.minY, *std::min_element(s.y.begin(), s.y.end()), row + " smallest y");
        expectNear(c.maxY, *std::max_element(s.y.begin(), s.y.end()), row + " largest y");
        EXPECT_EQ(c.name, s.name) << row;
        EXPECT_EQ(c.names, s.header.names) << row;
        EXPECT_EQ("RAMAN", s.dtype) << row;
    }
}

bool hasComment(const SpectrumRecord& record, std::string_view start) {
    return std::any_of(record.comments.begin(), record.comments.end(),
                       [&](const std::string& line) { return line.starts_with(start); });
}

TEST(Readers, HeaderRowsAndUnitsBecomeAxisTitles) {
    struct Case {
        const char* file;
        std::size_t spectrum;
        const char* xAxis;
        const char* yAxis;
    };
    const Case cases[] = {
        {"comma_header.csv", 0, "x axis: Raman Shift (cm-1)", "y axis: Intensity"},
        {"semicolon_decimal_comma.txt", 0, "x axis: Wellenzahl", "y axis: Intensit\xc3\xa4t"},
        {"quoted.csv", 0, "x axis: x", "y axis: y, counts"},
        {"descending_blank.txt", 0, "x axis: shift", "y axis: intensity"},
        {"link.jdx", 1, "x axis: Raman shift (1/CM) from NANOMETERS", "y axis: COUNTS"},
    };
    for (const Case& c : cases) {
        const SpectrumRecord s = readSpectrumFile(dataFile(c.file)).spectra[c.spectrum];
        EXPECT_TRUE(hasComment(s, c.xAxis)) << c.file;
        EXPECT_TRUE(hasComment(s, c.yAxis)) << c.file;
    }
}

TEST(Readers, JcampHeaderValuesAndLaser) {
    const SpectrumRecord difdup = readSpectrumFile(dataFile("difdup.jdx")).spectra.front();
    EXPECT_EQ("SiO2", difdup.header.chemistry);
    EXPECT_FALSE(hasComment(difdup, kReadNoteKey)) << "a clean file earns no note";
    EXPECT_EQ("532 nm", readSpectrumFile(dataFile("link.jdx")).spectra[1].waveInfo);
}

TEST(Readers, DamagedJcampIsReadWithNotes) {
    const SpectrumRecord s = readSpectrumFile(dataFile("damaged.jdx")).spectra.front();
    EXPECT_TRUE(hasComment(s, "note: line 17: the Y check value disagrees"));
    EXPECT_TRUE(hasComment(s, "note: line 19: X 274 disagrees with FIRSTX and DELTAX"));
}

TEST(Readers, ChosenColumnsOfAWideFile) {
    ReadOptions options;
    options.columns = ColumnChoice{1, 3};
    const SpectrumRecord s = readSpectrumFile(dataFile("three_columns.tsv"), options).spectra[0];
    EXPECT_EQ((std::vector<float>{1, 2, 3, 4}), s.y);
    EXPECT_TRUE(hasComment(s, "y axis: background"));

    std::vector<std::string> offered;
    options = {};
    options.chooseColumns = [&](const std::vector<std::string>& titles) {
        offered = titles;
        return std::optional(ColumnChoice{3, 2});
    };
    const SpectrumRecord chosen =
        readSpectrumFile(dataFile("three_columns.tsv"), options).spectra[0];
    EXPECT_EQ((std::vector<std::string>{"shift", "counts", "background"}), offered);
    EXPECT_EQ((std::vector<float>{1, 2, 3, 4}), chosen.x);

    options.chooseColumns = [](const std::vector<std::string>&) {
        return std::optional<ColumnChoice>();
    };
    EXPECT_THROW(readSpectrumFile(dataFile("three_columns.tsv"), options), ReadCancelled);
}

// A spectrum saved as JCAMP-DX reads back with the same single-precision values.
TEST(Readers, JcampRoundTrip) {
    SpectrumRecord record;
    record.name = "round trip";
    record.dtype = "RAMAN";
    record.waveInfo = "785 nm";
    record.header = {"Calcite", "Somewhere, Earth", "R0001", "CaCO3"};
    record.x = {100.125F, 101.5F, 107.0F, 1085.33337F, 3000.0F};
    record.y = {-1.5e-7F, 0.0F, 12345.678F, 3.0e8F, 7.25F};
    const test::TempFolder folder;
    const auto path = folder.path() / "saved.jdx";
    writeJcampDxFile(path, record);
    const SpectrumFileContents back = readSpectrumFile(path);
    ASSERT_EQ("JCAMP-DX", back.format);
    ASSERT_EQ(1U, back.spectra.size());
    const SpectrumRecord& s = back.spectra.front();
    EXPECT_EQ(record.x, s.x);
    EXPECT_EQ(record.y, s.y);
    EXPECT_EQ(record.name, s.name);
    EXPECT_EQ(record.dtype, s.dtype);
    EXPECT_EQ(record.waveInfo, s.waveInfo);
    EXPECT_EQ(record.header.names, s.header.names);
    EXPECT_EQ(record.header.locality, s.header.locality);
    EXPECT_EQ(record.header.id, s.header.id);
    EXPECT_EQ(record.header.chemistry, s.header.chemistry);
    EXPECT_FALSE(hasComment(s, kReadNoteKey));
}

// Every shipped spectrum and example keeps going through the program's own text reader.
TEST(Readers, ShippedFilesStayWithTheTextReader) {
    int files = 0;
    for (const char* folder : {"data", "examples"}) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(test::sourcePath(folder))) {
            const auto extension = entry.path().extension();
            if (entry.is_regular_file() &&
                (extension == ".txt" || extension == ".grelt" || extension == ".dat")) {
                EXPECT_EQ(kTextFormatName, detectSpectrumFormat(entry.path()).name) << entry.path();
                ++files;
            }
        }
    }
    EXPECT_GT(files, 10);
}

TEST(Readers, LoadAddsEverySpectrumOfAFile) {
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const LoadedFile loaded = loadSpectrumFile(specdata, info, dataFile("link.jdx"));
    EXPECT_EQ("JCAMP-DX", loaded.format);
    EXPECT_EQ(0, loaded.first);
    EXPECT_EQ(2, loaded.count);
    ASSERT_EQ(2, specdata.count());
    EXPECT_EQ("sticks", specdata.NAME[1]);
    EXPECT_EQ(3, specdata.NUMDATA[1]);
    EXPECT_EQ("sticks", info.names);
}

} // namespace
} // namespace quarvex
