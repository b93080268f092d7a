#include "specdata/SpecDataManager.h"

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "specdata/PointOrder.h"
#include "specdata/SpectrumFileKeys.h"
#include "specdata/SpectrumFileWriter.h"

#include <cmath>
#include <string>

namespace quarvex {

namespace {

using namespace spectrum_file;

constexpr std::string_view kCalOffsetKey = "CAL_OFFSET";
constexpr std::string_view kCalSlopeKey = "CAL_SLOPE";
constexpr std::string_view kCalQuadKey = "CAL_QUAD";
constexpr std::string_view kTwoThetaKey = "TWO_THETA";
constexpr std::string_view kHeaderPrefix = "##"; // header lines of keys the program has no use for
constexpr std::size_t kPathWidth = 256;

/// Data type of calibrated files without a "dtype:" line.
constexpr std::string_view kTwoThetaDataType = "XRD";
constexpr std::string_view kEnergyDataType = "ENERGY";

// Everything of a file outside its data lines.
struct FileHeader {
    MINERALINFO header;
    std::string dtype;
    std::string waveInfo;
    bool calibrated = false;
    bool twoTheta = false;
    bool hasSlope = false;
    float calOffset = 0.0F;
    float calSlope = 0.0F;
    float calQuad = 0.0F;
    std::int64_t skippedLines = 0;
    std::int64_t firstSkippedLine = 0;
};

std::string fileText(const std::filesystem::path& path) {
    return path.string();
}

[[noreturn]] void throwDataError(const std::filesystem::path& path, const std::string& what) {
    throw QuarvexError(fileText(path) + ": " + what, std::string(kDataFileErrorTitle));
}

LineReader openOrThrow(const std::filesystem::path& path) {
    LineReader reader(path);
    if (!reader.isOpen()) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    return reader;
}

std::string headerValue(std::string_view line, std::string_view key) {
    return fitted(trimmedRight(line.substr(key.size())), kMineralInfoWidth);
}

// The coefficient of a calibration line: the first number after the key (and any '=' or ':').
float calibrationCoefficient(std::string_view line, std::string_view key,
                             const std::filesystem::path& path, std::int64_t lineNumber) {
    std::string_view rest = line.substr(key.size());
    while (!rest.empty() && (rest.front() == '=' || rest.front() == ':')) {
        rest.remove_prefix(1);
    }
    float value = 0.0F;
    if (!readAll(rest, value)) {
        throwDataError(path, "line " + std::to_string(lineNumber) + ": no number after " +
                                 std::string(key));
    }
    return value;
}

// Reads every line; keys and the comment block go to `header`, every other line to onOther.
template <class OnOther>
void scanLines(LineReader& reader, const std::filesystem::path& path, FileHeader& header,
               OnOther onOther) {
    std::string_view line;
    while (reader.next(line)) {
        if (startsWithKey(line, kNamesKey)) {
            header.header.names = headerValue(line, kNamesKey);
        } else if (startsWithKey(line, kLocalityKey)) {
            header.header.locality = headerValue(line, kLocalityKey);
        } else if (startsWithKey(line, kGreltIdKey)) {
            header.header.id = headerValue(line, kGreltIdKey);
        } else if (startsWithKey(line, kChemistryKey)) {
            header.header.chemistry = headerValue(line, kChemistryKey);
        } else if (startsWithKey(line, kCalOffsetKey)) {
            header.calibrated = true;
            header.calOffset =
                calibrationCoefficient(line, kCalOffsetKey, path, reader.lineNumber());
        } else if (startsWithKey(line, kCalSlopeKey)) {
            header.hasSlope = true;
            header.calSlope = calibrationCoefficient(line, kCalSlopeKey, path, reader.lineNumber());
        } else if (startsWithKey(line, kCalQuadKey)) {
            header.calQuad = calibrationCoefficient(line, kCalQuadKey, path, reader.lineNumber());
        } else if (startsWithKey(line, kTwoThetaKey)) {
            header.twoTheta = true;
        } else if (startsWithKey(line, kCommentStart)) {
            READ_COM(reader, header.dtype, header.waveInfo);
        } else {
            onOther(line, reader.lineNumber());
        }
    }
    if (reader.notText()) {
        throwDataError(path, "not a text file (it holds binary data)");
    }
}

enum class PointRead { Point, NotData, NotFinite };

// A data line holds two numbers: x, then y. Numbers that single precision cannot hold, NaN and
// Inf are refused rather than dropped.
PointRead readPoint(std::string_view line, float& x, float& y) {
    if (readRealPair(line, x, y)) {
        return std::isfinite(x) && std::isfinite(y) ? PointRead::Point : PointRead::NotFinite;
    }
    double wideX = 0.0;
    double wideY = 0.0;
    return readAll(line, wideX, wideY) ? PointRead::NotFinite : PointRead::NotData;
}

// A channel line of a calibrated file: one number, or two of which the second is the value.
PointRead readChannel(std::string_view line, float& y) {
    float first = 0.0F;
    float second = 0.0F;
    if (readAll(line, first, second)) {
        y = second;
    } else if (readAll(line, first)) {
        y = first;
    } else {
        double wide = 0.0;
        return readAll(line, wide) ? PointRead::NotFinite : PointRead::NotData;
    }
    return std::isfinite(y) ? PointRead::Point : PointRead::NotFinite;
}

[[noreturn]] void throwNotFinite(const std::filesystem::path& path, std::int64_t lineNumber) {
    throwDataError(path, "line " + std::to_string(lineNumber) +
                             " holds a value that is not a finite single-precision number "
                             "(NaN, Inf or out of range)");
}

// Reads every data line of a file with `readValues` (which fills the caller's variables) and
// calls `onValues` for each accepted line; a non-finite value ends the read with a message.
template <class ReadValues, class OnValues>
FileHeader readDataLines(const std::filesystem::path& path, ReadValues readValues,
                         OnValues onValues) {
    LineReader reader = openOrThrow(path);
    FileHeader header;
    scanLines(reader, path, header, [&](std::string_view line, std::int64_t lineNumber) {
        switch (readValues(line)) {
        case PointRead::Point:
            onValues();
            break;
        case PointRead::NotFinite:
            throwNotFinite(path, lineNumber);
        case PointRead::NotData:
            if (!trimmed(line).empty() && !startsWithKey(line, kHeaderPrefix)) {
                header.firstSkippedLine =
                    header.skippedLines == 0 ? lineNumber : header.firstSkippedLine;
                ++header.skippedLines;
            }
            break;
        }
    });
    return header;
}

void describe(SpectrumRecord& record, const std::filesystem::path& path, FileHeader& header,
              std::string_view defaultType) {
    record.name = fitted(path.filename().string(), kPathWidth);
    record.path = fitted(path.string(), kPathWidth);
    record.dtype = header.dtype.empty() ? std::string(defaultType) : std::move(header.dtype);
    record.waveInfo = std::move(header.waveInfo);
    record.header = std::move(header.header);
    record.skippedLines = header.skippedLines;
    record.firstSkippedLine = header.firstSkippedLine;
}

} // namespace

void READ_COM(LineReader& reader, std::string& dtype, std::string& waveInfo) {
    std::string_view line;
    while (reader.next(line)) {
        if (startsWithKey(line, kCommentEnd)) {
            return;
        }
        if (startsWithKey(line, kDataTypeKey)) {
            dtype = fitted(trimmed(line.substr(kDataTypeKey.size())), kMineralInfoWidth);
        } else if (startsWithKey(line, kWaveKey)) {
            waveInfo = fitted(trimmed(line.substr(kWaveKey.size())), kMineralInfoWidth);
        }
    }
}

SpectrumFileCount GET_NUMBER_DATA_POINTS(const std::filesystem::path& path) {
    SpectrumFileCount count;
    float x = 0.0F;
    float y = 0.0F;
    const FileHeader header = readDataLines(
        path, [&](std::string_view line) { return readPoint(line, x, y); },
        [&] { ++count.dataLines; });
    count.calibrated = header.calibrated;
    return count;
}

SpectrumRecord FILL_IN_SPECDATA_ARRAYS(const std::filesystem::path& path,
                                       std::int64_t expectedPoints) {
    SpectrumRecord record;
    record.x.reserve(static_cast<std::size_t>(expectedPoints));
    record.y.reserve(static_cast<std::size_t>(expectedPoints));
    float x = 0.0F;
    float y = 0.0F;
    FileHeader header = readDataLines(
        path, [&](std::string_view line) { return readPoint(line, x, y); },
        [&] {
            record.x.push_back(x);
            record.y.push_back(y);
        });
    describe(record, path, header, kDefaultDataType);
    orderByAscendingX(record.x, record.y);
    return record;
}

std::int64_t NUM_ENERGY_DATA_POINTS(const std::filesystem::path& path) {
    std::int64_t channels = 0;
    float y = 0.0F;
    readDataLines(
        path, [&](std::string_view line) { return readChannel(line, y); }, [&] { ++channels; });
    return channels;
}

SpectrumRecord FILL_IN_ENERGY_ARRAYS(const std::filesystem::path& path,
                                     std::int64_t expectedPoints) {
    SpectrumRecord record;
    record.y.reserve(static_cast<std::size_t>(expectedPoints));
    float y = 0.0F;
    FileHeader header = readDataLines(
        path, [&](std::string_view line) { return readChannel(line, y); },
        [&] { record.y.push_back(y); });
    if (!header.hasSlope) {
        throwDataError(path, "the file is calibrated (CAL_OFFSET) but has no CAL_SLOPE line");
    }
    describe(record, path, header, header.twoTheta ? kTwoThetaDataType : kEnergyDataType);
    record.x.reserve(record.y.size());
    for (std::size_t i = 0; i < record.y.size(); ++i) {
        const auto channel = static_cast<float>(i + 1);
        // Square term first, then the linear term, then the offset, all in single precision.
        float value = header.calQuad * (channel * channel);
        value = value + header.calSlope * channel;
        value = value + header.calOffset;
        record.x.push_back(value);
    }
    orderByAscendingX(record.x, record.y);
    return record;
}

std::string describeSkipped(const SkippedLines& skipped) {
    if (skipped.count == 0) {
        return {};
    }
    return std::to_string(skipped.count) + (skipped.count == 1 ? " line" : " lines") +
           " skipped (" + (skipped.calibrated ? "not one or two numbers" : "not two numbers") +
           "), first at line " + std::to_string(skipped.firstLine);
}

SpectrumRecord READ_SPECDATA_RECORD(const std::filesystem::path& path, SkippedLines* skipped) {
    const SpectrumFileCount count = GET_NUMBER_DATA_POINTS(path);
    SpectrumRecord record = count.calibrated
                                ? FILL_IN_ENERGY_ARRAYS(path, NUM_ENERGY_DATA_POINTS(path))
                                : FILL_IN_SPECDATA_ARRAYS(path, count.dataLines);
    const SkippedLines passedOver{record.skippedLines, record.firstSkippedLine, count.calibrated};
    if (record.x.empty()) {
        const std::string why = describeSkipped(passedOver);
        throw QuarvexError("No data points found in " + fileText(path) +
                               (why.empty() ? std::string() : ": " + why),
                           std::string(kDataFileErrorTitle));
    }
    record.comments = readCommentLines(path);
    if (skipped != nullptr) {
        *skipped = passedOver;
    }
    return record;
}

int READ_SPECDATA_FILE(SPECDATA_GLOBALS& specdata, MINERALINFO& mineralInfo,
                       const std::filesystem::path& path, SkippedLines* skipped) {
    SpectrumRecord record = READ_SPECDATA_RECORD(path, skipped);
    mineralInfo = record.header;
    return appendSpectrum(specdata, std::move(record));
}

std::string_view fileFilterForPreviousExtension(std::string_view previousExtension) {
    if (previousExtension == ".grelt") {
        return "GRELT Files (*.grelt)|*.grelt|Text Data Files (*.txt)|*.txt|Other Data Files "
               "(*.dat)|*.dat|All Files (*.*)|*.*|";
    }
    if (previousExtension == ".txt") {
        return "Text Files (*.txt)|*.txt|GRELT Files (*.grelt)|*.grelt|Other Data Files "
               "(*.dat)|*.dat|All Files (*.*)|*.*|";
    }
    return "All Files (*.*)|*.*|GRELT Files (*.grelt)|*.grelt|Text Data Files (*.txt)|*.txt|"
           "Other Data Files (*.dat)|*.dat|";
}

} // namespace quarvex
