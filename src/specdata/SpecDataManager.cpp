#include "specdata/SpecDataManager.h"

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "specdata/PointOrder.h"
#include "specdata/SpectrumFileKeys.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

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
    std::vector<std::string> comments;
    SkippedLines skipped;
};

std::string fileText(const std::filesystem::path& path) {
    return path.string();
}

[[noreturn]] void throwDataError(const std::filesystem::path& path, const std::string& what) {
    throw QuarvexError(fileText(path) + ": " + what, std::string(kDataFileErrorTitle));
}

LineReader openOrThrow(const std::filesystem::path& path, PipeReading pipes = PipeReading::Refused,
                       std::size_t bufferSize = LineReader::kDefaultBufferSize) {
    LineReader reader(openReadableFile(path, pipes), LineReader::kDefaultMaxLineLength, bufferSize);
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
            READ_COM(reader, header.dtype, header.waveInfo, header.comments);
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

// Counts a line that is not data, unless it is blank or a header line of some other key.
void countSkipped(SkippedLines& skipped, std::string_view line, std::int64_t lineNumber) {
    if (!trimmed(line).empty() && !startsWithKey(line, kHeaderPrefix)) {
        skipped.firstLine = skipped.count == 0 ? lineNumber : skipped.firstLine;
        ++skipped.count;
    }
}

// Reads every data line of a file with `readValues` (which fills the caller's variables) and
// calls `onValues` for each accepted line; a non-finite value ends the read with a message.
template <class ReadValues, class OnValues>
FileHeader readDataLines(LineReader& reader, const std::filesystem::path& path,
                         ReadValues readValues, OnValues onValues) {
    FileHeader header;
    scanLines(reader, path, header, [&](std::string_view line, std::int64_t lineNumber) {
        switch (readValues(line)) {
        case PointRead::Point:
            onValues();
            break;
        case PointRead::NotFinite:
            throwNotFinite(path, lineNumber);
        case PointRead::NotData:
            countSkipped(header.skipped, line, lineNumber);
            break;
        }
    });
    return header;
}

// A file read both ways in one pass: whether it is calibrated is known only at its end (a
// CAL_OFFSET line may come last), so each line is taken as an x, y pair and as a channel alike.
// A non-finite pair ends the pass, as the pair reading always has; a non-finite channel matters
// only if the file turns out to be calibrated.
struct BothReadings {
    FileHeader header; // the lines skipped as pairs
    std::vector<float> x;
    std::vector<float> y;
    std::vector<float> channels;
    SkippedLines channelsSkipped;
    std::int64_t firstNonFiniteChannel = 0;
};

BothReadings readBothWays(LineReader& reader, const std::filesystem::path& path) {
    BothReadings read;
    scanLines(reader, path, read.header, [&](std::string_view line, std::int64_t lineNumber) {
        float x = 0.0F;
        float y = 0.0F;
        switch (readPoint(line, x, y)) {
        case PointRead::Point:
            read.x.push_back(x);
            read.y.push_back(y);
            read.channels.push_back(y); // a channel line of two numbers: the value is the second
            return;
        case PointRead::NotFinite:
            throwNotFinite(path, lineNumber);
        case PointRead::NotData:
            countSkipped(read.header.skipped, line, lineNumber);
            break;
        }
        switch (readChannel(line, y)) {
        case PointRead::Point:
            read.channels.push_back(y);
            break;
        case PointRead::NotFinite:
            read.firstNonFiniteChannel =
                read.firstNonFiniteChannel == 0 ? lineNumber : read.firstNonFiniteChannel;
            break;
        case PointRead::NotData:
            countSkipped(read.channelsSkipped, line, lineNumber);
            break;
        }
    });
    return read;
}

void describe(SpectrumRecord& record, const std::filesystem::path& path, FileHeader& header,
              std::string_view defaultType) {
    record.name = fitted(path.filename().string(), kPathWidth);
    record.path = fitted(path.string(), kPathWidth);
    record.dtype = header.dtype.empty() ? std::string(defaultType) : std::move(header.dtype);
    record.waveInfo = std::move(header.waveInfo);
    record.header = std::move(header.header);
    record.comments = std::move(header.comments);
    record.skippedLines = header.skipped.count;
    record.firstSkippedLine = header.skipped.firstLine;
}

SpectrumRecord pairRecord(std::vector<float> x, std::vector<float> y,
                          const std::filesystem::path& path, FileHeader& header) {
    SpectrumRecord record;
    record.x = std::move(x);
    record.y = std::move(y);
    describe(record, path, header, kDefaultDataType);
    orderByAscendingX(record.x, record.y);
    return record;
}

SpectrumRecord energyRecord(std::vector<float> channels, const std::filesystem::path& path,
                            FileHeader& header) {
    if (!header.hasSlope) {
        throwDataError(path, "the file is calibrated (CAL_OFFSET) but has no CAL_SLOPE line");
    }
    SpectrumRecord record;
    record.y = std::move(channels);
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

SpectrumRecord readPairRecord(LineReader& reader, const std::filesystem::path& path,
                              std::int64_t expectedPoints) {
    std::vector<float> x;
    std::vector<float> y;
    x.reserve(static_cast<std::size_t>(expectedPoints));
    y.reserve(static_cast<std::size_t>(expectedPoints));
    float pointX = 0.0F;
    float pointY = 0.0F;
    FileHeader header = readDataLines(
        reader, path, [&](std::string_view line) { return readPoint(line, pointX, pointY); },
        [&] {
            x.push_back(pointX);
            y.push_back(pointY);
        });
    return pairRecord(std::move(x), std::move(y), path, header);
}

// The record of a file both ways in one pass (see READ_SPECDATA_RECORD).
SpectrumRecord readWholeRecord(LineReader& reader, const std::filesystem::path& path,
                               SkippedLines* skipped) {
    BothReadings read = readBothWays(reader, path);
    const bool calibrated = read.header.calibrated;
    if (calibrated && read.firstNonFiniteChannel != 0) {
        throwNotFinite(path, read.firstNonFiniteChannel);
    }
    if (calibrated) {
        read.header.skipped = read.channelsSkipped;
    }
    SpectrumRecord record =
        calibrated ? energyRecord(std::move(read.channels), path, read.header)
                   : pairRecord(std::move(read.x), std::move(read.y), path, read.header);
    const SkippedLines passedOver{record.skippedLines, record.firstSkippedLine, calibrated};
    if (record.x.empty()) {
        const std::string why = describeSkipped(passedOver);
        throw QuarvexError("No data points found in " + fileText(path) +
                               (why.empty() ? std::string() : ": " + why),
                           std::string(kDataFileErrorTitle));
    }
    if (skipped != nullptr) {
        *skipped = passedOver;
    }
    return record;
}

} // namespace

void READ_COM(LineReader& reader, std::string& dtype, std::string& waveInfo,
              std::vector<std::string>& comments) {
    std::string_view line;
    while (reader.next(line)) {
        if (startsWithKey(line, kCommentEnd)) {
            return;
        }
        if (startsWithKey(line, kDataTypeKey)) {
            dtype = fitted(trimmed(line.substr(kDataTypeKey.size())), kMineralInfoWidth);
        } else if (startsWithKey(line, kWaveKey)) {
            waveInfo = fitted(trimmed(line.substr(kWaveKey.size())), kMineralInfoWidth);
        } else {
            comments.emplace_back(line);
        }
    }
}

SpectrumRecord FILL_IN_SPECDATA_ARRAYS(const std::filesystem::path& path,
                                       std::int64_t expectedPoints) {
    LineReader reader = openOrThrow(path);
    return readPairRecord(reader, path, expectedPoints);
}

SpectrumRecord FILL_IN_SPECDATA_ARRAYS(const std::filesystem::path& path, std::string_view bytes,
                                       std::int64_t expectedPoints) {
    LineReader reader(bytes, LineReader::kDefaultMaxLineLength);
    return readPairRecord(reader, path, expectedPoints);
}

std::string describeSkipped(const SkippedLines& skipped) {
    if (skipped.count == 0) {
        return {};
    }
    return std::to_string(skipped.count) + (skipped.count == 1 ? " line" : " lines") +
           " skipped (" + (skipped.calibrated ? "not one or two numbers" : "not two numbers") +
           "), first at line " + std::to_string(skipped.firstLine);
}

SpectrumRecord READ_SPECDATA_RECORD(const std::filesystem::path& path, SkippedLines* skipped,
                                    std::size_t bufferSize) {
    LineReader reader = openOrThrow(path, PipeReading::ReadOnce, bufferSize);
    return readWholeRecord(reader, path, skipped);
}

SpectrumRecord READ_SPECDATA_RECORD(const std::filesystem::path& path, std::string_view bytes,
                                    SkippedLines* skipped) {
    LineReader reader(bytes, LineReader::kDefaultMaxLineLength);
    return readWholeRecord(reader, path, skipped);
}

int READ_SPECDATA_FILE(SPECDATA_GLOBALS& specdata, MINERALINFO& mineralInfo,
                       const std::filesystem::path& path, SkippedLines* skipped,
                       std::size_t bufferSize) {
    SpectrumRecord record = READ_SPECDATA_RECORD(path, skipped, bufferSize);
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
