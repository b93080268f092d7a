// The reference-file reader: a key per header line, the wavelength mode, and the table that
// follows the "2-THETA" line, with notes for everything a user should know about the file.
#include "xray/DiffFileReader.h"

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "specdata/SpecDataManager.h"
#include "xray/XraySymmetry.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace quarvex {

namespace {

constexpr std::string_view kCellKey = "CELL PARAMETERS:";
constexpr std::string_view kXrayKey = "X-RAY";
constexpr std::string_view kWavelengthKey = "X-RAY WAVELENGTH:";
constexpr std::string_view kWavelengthsKey = "X-RAY WAVELENGTHS:";
constexpr std::string_view kTableKey = "2-THETA";
constexpr std::string_view kReferenceKey = "For reference";
constexpr std::string_view kSpaceGroupKey = "SPACE GROUP:";

// Keys may follow leading blanks: real files indent their header lines.
std::string_view keyText(std::string_view line) {
    const auto first = line.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view{} : line.substr(first);
}

// The text in double quotes (built by appending: no temporary for g++ to misjudge).
std::string quoted(std::string_view text) {
    std::string result(1, '"');
    result.append(trimmed(text));
    result.push_back('"');
    return result;
}

std::string lineNote(std::int64_t lineNumber, const std::string& what) {
    return "line " + std::to_string(lineNumber) + ": " + what;
}

// One table line in the layout of the mode; false when it does not read as such numbers.
bool readTableLine(std::string_view line, int mode, DiffReflection& r) {
    int h = 0;
    int k = 0;
    int l = 0;
    const bool read = mode == 2 ? readAll(line, r.twoTheta, r.intensity, r.dSpacing, r.twoTheta2,
                                          r.intensity2, h, k, l)
                                : readAll(line, r.twoTheta, r.intensity, r.dSpacing, h, k, l);
    r.hkl = {h, k, l};
    return read;
}

bool finite(const DiffReflection& r) {
    return std::isfinite(r.twoTheta) && std::isfinite(r.intensity) && std::isfinite(r.dSpacing) &&
           std::isfinite(r.twoTheta2) && std::isfinite(r.intensity2);
}

std::string layoutText(int mode) {
    return mode == 2 ? "5 numbers and h k l" : "3 numbers and h k l";
}

class DiffFileParser {
public:
    DiffFileParser(const std::filesystem::path& path, std::ostream* tableCopy,
                   std::size_t bufferSize)
        : reader_(path, LineReader::kDefaultMaxLineLength, bufferSize), path_(path),
          tableCopy_(tableCopy) {}

    DiffFileRecord read();

private:
    bool handle(std::string_view line);
    void readCell(std::string_view rest);
    void readWavelengthLine(std::string_view key);
    void checkStrayTableLine(std::string_view line);
    void requireText() const {
        if (reader_.notText()) {
            throw QuarvexError(path_.string() + ": not a text file (it holds binary data)",
                               std::string(kDiffFileErrorTitle));
        }
    }

    LineReader reader_;
    std::filesystem::path path_;
    std::ostream* tableCopy_;
    DiffFileRecord record_;
    bool cellSeen_ = false;
    bool tableSeen_ = false;
    bool strayNoted_ = false;
};

DiffFileRecord DiffFileParser::read() {
    if (!reader_.isOpen()) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    record_.name = path_.filename().string();
    record_.folder = path_.parent_path().string();
    std::string_view line;
    while (reader_.next(line)) {
        requireText();
        if (!handle(line) && reader_.lineNumber() == 1) {
            record_.title = std::string(trimmed(line));
        }
    }
    requireText();
    if (!tableSeen_) {
        record_.notes.push_back("no \"2-THETA\" line: the pattern has no reflections");
    }
    if (!cellSeen_) {
        record_.notes.push_back("no \"CELL PARAMETERS:\" line: the cell is left at zero");
    }
    record_.sym = record_.spaceGroup.empty() ? symFromCell(record_.cell)
                                             : symFromSpaceGroup(record_.spaceGroup, record_.cell);
    return std::move(record_);
}

// True when the line is one of the keys.
bool DiffFileParser::handle(std::string_view line) {
    const std::string_view key = keyText(line);
    if (startsWithKey(key, kCellKey)) {
        readCell(key.substr(kCellKey.size()));
    } else if (startsWithKey(key, kXrayKey)) {
        readWavelengthLine(key);
    } else if (startsWithKey(key, kTableKey)) {
        if (tableSeen_) {
            record_.notes.push_back(
                lineNote(reader_.lineNumber(), "a second \"2-THETA\" table was not read"));
            return true;
        }
        tableSeen_ = true;
        if (const auto ending = READ_DIFF_DATA(reader_, record_.mode, record_, tableCopy_)) {
            requireText();
            handle(*ending);
        }
    } else if (startsWithKey(key, kReferenceKey)) {
        record_.referenceSection = true;
    } else if (startsWithKey(key, kSpaceGroupKey)) {
        record_.spaceGroup = std::string(trimmed(key.substr(kSpaceGroupKey.size())));
    } else {
        checkStrayTableLine(line);
        return false;
    }
    return true;
}

void DiffFileParser::readCell(std::string_view rest) {
    cellSeen_ = true;
    std::array<float, 6> cell{};
    if (readAll(rest, cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]) &&
        std::all_of(cell.begin(), cell.end(), [](float v) { return std::isfinite(v); })) {
        record_.cell = cell;
    } else {
        record_.notes.push_back(
            lineNote(reader_.lineNumber(),
                     "\"CELL PARAMETERS:\" is not followed by six numbers: the cell is left at "
                     "zero"));
    }
}

// "X-RAY WAVELENGTH:" (17 characters) does not match the plural line, whose 17th character is
// the S: so the two keys are told apart by their compared lengths alone.
void DiffFileParser::readWavelengthLine(std::string_view key) {
    int count = 0;
    if (startsWithKey(key, kWavelengthKey)) {
        record_.mode = 1;
        count = readAll(key.substr(kWavelengthKey.size()), record_.wavelengths[0]) ? 1 : 0;
        if (count == 1) {
            return;
        }
    } else if (startsWithKey(key, kWavelengthsKey)) {
        record_.mode = 2;
        ListReader values(key.substr(kWavelengthsKey.size()));
        while (count < 2 && values.read(record_.wavelengths[static_cast<std::size_t>(count)]) ==
                                FieldStatus::Assigned) {
            ++count;
        }
        if (count == 2) {
            return;
        }
    } else {
        record_.notes.push_back(
            lineNote(reader_.lineNumber(), quoted(key) + " is not a wavelength line"));
        return;
    }
    record_.notes.push_back(lineNote(
        reader_.lineNumber(), "the wavelength line gives " + std::to_string(count) + " of its " +
                                  std::to_string(record_.mode) + " wavelengths"));
}

// A line that would have been a reflection after the table ended: the user should know that
// the table stopped early (a blank or broken line inside it).
void DiffFileParser::checkStrayTableLine(std::string_view line) {
    DiffReflection ignored;
    if (tableSeen_ && !strayNoted_ && readTableLine(line, record_.mode, ignored)) {
        strayNoted_ = true;
        record_.notes.push_back(
            lineNote(reader_.lineNumber(),
                     "reads as a reflection but comes after the end of the table; it and the "
                     "lines like it were not read"));
    }
}

} // namespace

std::optional<std::string> READ_DIFF_DATA(LineReader& reader, int mode, DiffFileRecord& record,
                                          std::ostream* tableCopy) {
    std::string_view line;
    while (reader.next(line)) {
        if (startsWithKey(keyText(line), kReferenceKey)) {
            return std::string(line);
        }
        DiffReflection reflection;
        if (!readTableLine(line, mode, reflection) || !finite(reflection)) {
            if (!keyText(line).empty()) {
                record.notes.push_back(
                    lineNote(reader.lineNumber(), "the table ends here: " + quoted(line) +
                                                      " does not read as " + layoutText(mode)));
            }
            return std::string(line);
        }
        if (static_cast<int>(record.reflections.size()) == kMaxDiffReflections) {
            record.notes.push_back(
                lineNote(reader.lineNumber(), "the table ends here: only the first " +
                                                  std::to_string(kMaxDiffReflections) +
                                                  " reflections are read"));
            return std::string(line);
        }
        record.reflections.push_back(reflection);
        if (tableCopy != nullptr) {
            *tableCopy << line << '\n';
        }
    }
    return std::nullopt;
}

DiffFileRecord READ_DIFF_INFO(const std::filesystem::path& path, std::ostream* tableCopy,
                              std::size_t bufferSize) {
    return DiffFileParser(path, tableCopy, bufferSize).read();
}

} // namespace quarvex
