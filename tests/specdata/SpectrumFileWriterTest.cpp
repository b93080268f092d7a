// The spectrum writer: what it writes reads back bit for bit through the reader; CSV; refused
// destinations leave nothing behind.
#include "specdata/SpectrumFileWriter.h"

#include "common/QuarvexError.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumRecords.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace quarvex {
namespace {

// Bit-for-bit comparison (EXPECT_EQ on floats would let -0 equal +0).
void expectSameBits(const std::vector<float>& a, std::span<const float> b, const char* what) {
    ASSERT_EQ(a.size(), b.size()) << what;
    EXPECT_EQ(std::memcmp(a.data(), b.data(), a.size() * sizeof(float)), 0) << what;
}

SpectrumRecord awkwardRecord() {
    SpectrumRecord record;
    record.x = {-5.5F, 0.1F, 1.0F / 3.0F, 99.999F, 1086.0F, 123456.79F, 3.0e7F};
    record.y = {1.5e-38F, -0.0F,      1.0e-30F, -2.5e-7F, std::numeric_limits<float>::max(),
                7.0F,     16777217.0F};
    record.dtype = "XRD";
    record.waveInfo = "1.5406 Cu K-alpha";
    record.header = {"Calcite", "Somewhere, far", "R050048", "CaCO3"};
    record.comments = {"instrument: test", "processing: trim to 1 .. 2", "note: kept in place",
                       "processing: smoothing"};
    return record;
}

TEST(SpectrumFileWriter, ProgramFormatReadsBackBitForBit) {
    test::TempFolder folder;
    const SpectrumRecord record = awkwardRecord();
    const auto path = folder.path() / "saved.txt";
    writeSpectrumFile(path, record);
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const int k = READ_SPECDATA_FILE(specdata, info, path);
    const SpectrumRecord back = spectrumRecord(specdata, k);
    expectSameBits(record.x, back.x, "x");
    expectSameBits(record.y, back.y, "y");
    EXPECT_EQ(back.dtype, record.dtype);
    EXPECT_EQ(back.waveInfo, record.waveInfo);
    EXPECT_EQ(back.header.names, record.header.names);
    EXPECT_EQ(back.header.locality, record.header.locality);
    EXPECT_EQ(back.header.id, record.header.id);
    EXPECT_EQ(back.header.chemistry, record.header.chemistry);
    EXPECT_EQ(back.comments, record.comments);
}

TEST(SpectrumFileWriter, ShippedSpectrumSurvivesASaveUnchanged) {
    test::TempFolder folder;
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const int k = READ_SPECDATA_FILE(
        specdata, info, test::sourcePath("data/raman/examples/calcite_bwtek_532nm_icv.txt"));
    const SpectrumRecord original = spectrumRecord(specdata, k);
    EXPECT_EQ(original.comments.size(), 8U) << "the comment lines other than dtype and wave";
    writeSpectrumFile(folder.path() / "copy.txt", original);
    const int again = READ_SPECDATA_FILE(specdata, info, folder.path() / "copy.txt");
    const SpectrumRecord back = spectrumRecord(specdata, again);
    expectSameBits(original.x, back.x, "x");
    expectSameBits(original.y, back.y, "y");
    EXPECT_EQ(back.comments, original.comments);
    EXPECT_EQ(back.header.names, "Calcite");
    EXPECT_EQ(back.waveInfo, "532");
}

TEST(SpectrumFileWriter, CsvHasAnXYHeaderRowAndReadsBack) {
    test::TempFolder folder;
    const SpectrumRecord record = awkwardRecord();
    const auto path = folder.path() / "saved.csv";
    writeSpectrumFile(path, record, SpectrumFileFormat::Csv);
    const std::string text = test::readFile(path);
    EXPECT_EQ(text.substr(0, text.find('\n')), "x,y");
    EXPECT_EQ(text.substr(text.find('\n') + 1, text.find('\n', 4) - text.find('\n') - 1),
              "-5.5,1.5e-38");
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const int k = READ_SPECDATA_FILE(specdata, info, path);
    expectSameBits(record.y, specdata.yValues(k), "y");
}

TEST(SpectrumFileWriter, UnwritableDestinationsLeaveNothing) {
    test::TempFolder folder;
    const auto notAFolder = folder.write("plain.txt", "1 2\n");
    const std::filesystem::path destinations[] = {folder.path() / "missing" / "out.txt",
                                                  notAFolder / "out.txt"};
    for (const auto& path : destinations) {
        try {
            writeSpectrumFile(path, awkwardRecord());
            ADD_FAILURE() << path << ": no error";
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), "Save");
            EXPECT_NE(error.text().find("Nothing was written"), std::string::npos);
        }
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()),
                            std::filesystem::directory_iterator()),
              1)
        << "no partial or temporary file";
}

} // namespace
} // namespace quarvex
