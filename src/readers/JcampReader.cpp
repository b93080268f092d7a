#include "readers/JcampReader.h"

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/JcampAsdf.h"
#include "readers/RecordNotes.h"
#include "readers/SinglePrecision.h"
#include "specdata/PointOrder.h"
#include "specdata/SpecDataManager.h"

#include <cctype>
#include <cmath>
#include <map>
#include <optional>

namespace quarvex {

namespace {

constexpr std::size_t kLineWidth = std::size_t{1} << 16;
constexpr std::size_t kNameWidth = 256;
constexpr std::size_t kSniffLines = 40;
/// Relative disagreement of DELTAX, FIRSTY and the Y check values that earns a note.
constexpr double kRelativeTolerance = 1e-3;
constexpr double kNanometresPerCentimetre = 1e7;

enum class DataForm { None, XyData, Pairs };

// One ##TITLE= ... ##END= block: its labelled values and its data.
struct Block {
    std::map<std::string, std::string> values; // normalised label -> value (first line)
    DataForm form = DataForm::None;
    std::size_t groupSize = 2;            // XY or XYW groups of a pair table
    std::vector<double> rawX;             // pairs: every x; XYDATA: the abscissa of each line
    std::vector<std::size_t> lineStart;   // XYDATA: index of each line's first ordinate
    std::vector<std::int64_t> lineNumber; // XYDATA: file line of each data line
    std::vector<double> rawY;
    std::vector<double> pairValues; // a group cut by the end of a line goes on in the next
    bool collecting = false;        // the lines that follow are the data table's
    bool expectCheckValue = false;
    std::int64_t badCheckLine = 0;
    std::vector<std::string> notes;
};

[[noreturn]] void throwJcamp(const std::filesystem::path& path, const std::string& what) {
    throw QuarvexError(path.string() + ": " + what, std::string(kDataFileErrorTitle));
}

std::optional<double> number(const Block& block, const std::string& label) {
    const auto found = block.values.find(label);
    double value = 0.0;
    if (found == block.values.end()) {
        return std::nullopt;
    }
    ListReader reader(found->second);
    return reader.read(value) == FieldStatus::Assigned && std::isfinite(value)
               ? std::optional(value)
               : std::nullopt;
}

std::string text(const Block& block, const std::string& label) {
    const auto found = block.values.find(label);
    return found == block.values.end() ? std::string() : std::string(trimmed(found->second));
}

std::string upper(std::string value) {
    for (char& c : value) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return value;
}

bool disagree(double a, double b) {
    return std::fabs(a - b) > kRelativeTolerance * std::max(std::fabs(a), std::fabs(b));
}

std::string shortNumber(double value) {
    return shortestText(static_cast<float>(value));
}

void addXyDataLine(const std::filesystem::path& path, Block& block, std::string_view line,
                   std::int64_t lineNumber, AsdfLine& decoded) {
    if (!decodeAsdfLine(line, decoded)) {
        throwJcamp(path, "line " + std::to_string(lineNumber) +
                             ": not a line of ##XYDATA (AFFN or ASDF) values");
    }
    std::size_t first = 0;
    if (block.expectCheckValue && !decoded.y.empty()) {
        // The line after a DIF line begins with the last ordinate again: the Y check value.
        if (decoded.y.front() != block.rawY.back() && block.badCheckLine == 0) {
            block.badCheckLine = lineNumber;
        }
        first = 1;
    }
    block.lineStart.push_back(block.rawY.size() - first); // the check value's place
    block.rawX.push_back(decoded.x);
    block.lineNumber.push_back(lineNumber);
    block.rawY.insert(block.rawY.end(), decoded.y.begin() + static_cast<std::ptrdiff_t>(first),
                      decoded.y.end());
    block.expectCheckValue = decoded.endsInDifference;
}

void addPairLine(const std::filesystem::path& path, Block& block, std::string_view line,
                 std::int64_t lineNumber) {
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && (isBlank(line[i]) || line[i] == ',' || line[i] == ';' ||
                                   line[i] == '(' || line[i] == ')')) {
            ++i;
        }
        if (i == line.size() || line.substr(i).starts_with("$$")) {
            break;
        }
        std::size_t end = i;
        while (end < line.size() && !isBlank(line[end]) && line[end] != ',' && line[end] != ';' &&
               line[end] != ')') {
            ++end;
        }
        double value = 0.0;
        if (!parseReal(line.substr(i, end - i), value) || !std::isfinite(value)) {
            throwJcamp(path, "line " + std::to_string(lineNumber) + ": \"" +
                                 std::string(line.substr(i, end - i)) + "\" is not a number");
        }
        block.pairValues.push_back(value);
        if (block.pairValues.size() == block.groupSize) {
            block.rawX.push_back(block.pairValues[0]);
            block.rawY.push_back(block.pairValues[1]);
            block.pairValues.clear();
        }
        i = end;
    }
}

// The x of every point of an ##XYDATA block: FIRSTX + i·(LASTX − FIRSTX)/(n − 1), the
// abscissa of each line checked against it.
std::vector<double> xyDataAbscissae(const std::filesystem::path& path, Block& block) {
    const std::size_t n = block.rawY.size();
    const double xFactor = number(block, "XFACTOR").value_or(1.0);
    const double firstX = number(block, "FIRSTX").value_or(block.rawX.front() * xFactor);
    const std::optional<double> lastX = number(block, "LASTX");
    const std::optional<double> deltaX = number(block, "DELTAX");
    double step = 0.0;
    if (lastX && n > 1) {
        step = (*lastX - firstX) / static_cast<double>(n - 1);
        if (deltaX && disagree(*deltaX, step)) {
            block.notes.push_back("DELTAX " + shortNumber(*deltaX) +
                                  " disagrees with FIRSTX, LASTX and the point count (step " +
                                  shortNumber(step) + " used)");
        }
    } else if (deltaX) {
        step = *deltaX;
    } else if (n > 1) {
        throwJcamp(path, "the ##XYDATA block gives neither LASTX nor DELTAX");
    }
    for (std::size_t line = 0; line < block.rawX.size(); ++line) {
        const double expected = firstX + static_cast<double>(block.lineStart[line]) * step;
        if (std::fabs(block.rawX[line] * xFactor - expected) > 0.5 * std::fabs(step) + 1e-9) {
            block.notes.push_back("line " + std::to_string(block.lineNumber[line]) + ": X " +
                                  shortNumber(block.rawX[line] * xFactor) +
                                  " disagrees with FIRSTX and DELTAX (expected " +
                                  shortNumber(expected) + ")");
            break;
        }
    }
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = firstX + static_cast<double>(i) * step;
    }
    return x;
}

std::optional<double> laserWavelengthNm(const Block& block) {
    for (const auto& [label, value] : block.values) {
        if (label.find("LASER") != std::string::npos ||
            label.find("EXCITATION") != std::string::npos) {
            double nm = 0.0;
            ListReader reader(value);
            if (reader.read(nm) == FieldStatus::Assigned && nm > 0.0 && std::isfinite(nm)) {
                return nm;
            }
        }
    }
    return std::nullopt;
}

std::string dataType(const Block& block) {
    const std::string type = upper(text(block, "DATATYPE"));
    if (type.empty() || type.find("RAMAN") != std::string::npos) {
        return std::string(kDefaultDataType);
    }
    if (type.find("INFRARED") != std::string::npos) {
        return "IR";
    }
    if (type.find("X-RAY") != std::string::npos || type.find("DIFFRACTION") != std::string::npos) {
        return "XRD";
    }
    const std::size_t suffix = type.rfind(" SPECTRUM");
    return fitted(suffix == std::string::npos ? type : type.substr(0, suffix), kMineralInfoWidth);
}

// x in the units of the program: Raman shift from nanometres when the laser is known.
void convertUnits(Block& block, std::vector<double>& x, SpectrumRecord& record) {
    const std::string units = upper(text(block, "XUNITS"));
    const std::optional<double> laser = laserWavelengthNm(block);
    if (laser) {
        record.waveInfo = fitted(shortNumber(*laser) + " nm", kMineralInfoWidth);
    }
    if (units == "NANOMETERS" || units == "NANOMETRES" || units == "NM") {
        if (!laser) {
            block.notes.push_back("x kept in nanometres: the file gives no laser wavelength");
            return;
        }
        for (double& value : x) {
            value = kNanometresPerCentimetre / *laser - kNanometresPerCentimetre / value;
        }
        record.comments.push_back(std::string(kXAxisKey) + "Raman shift (1/CM) from NANOMETERS");
        return;
    }
    if (!units.empty()) {
        record.comments.push_back(std::string(kXAxisKey) + units);
    }
}

SpectrumRecord finishBlock(const std::filesystem::path& path, Block& block) {
    if (!block.pairValues.empty()) {
        block.notes.push_back("an incomplete group of " + std::to_string(block.pairValues.size()) +
                              " values at the end of the table left out");
    }
    if (block.badCheckLine != 0) {
        block.notes.push_back("line " + std::to_string(block.badCheckLine) +
                              ": the Y check value disagrees with the line before");
    }
    std::vector<double> x;
    if (block.form == DataForm::XyData && !block.rawY.empty()) {
        x = xyDataAbscissae(path, block);
    } else {
        const double xFactor = number(block, "XFACTOR").value_or(1.0);
        for (const double raw : block.rawX) {
            x.push_back(raw * xFactor);
        }
    }
    const double yFactor = number(block, "YFACTOR").value_or(1.0);
    const std::optional<double> points = number(block, "NPOINTS");
    if (points && *points != static_cast<double>(block.rawY.size())) {
        block.notes.push_back("NPOINTS says " + shortNumber(*points) + ", the data hold " +
                              std::to_string(block.rawY.size()));
    }
    const std::optional<double> firstY = number(block, "FIRSTY");
    if (firstY && !block.rawY.empty() && disagree(*firstY, block.rawY.front() * yFactor)) {
        block.notes.push_back("FIRSTY " + shortNumber(*firstY) +
                              " disagrees with the first value " +
                              shortNumber(block.rawY.front() * yFactor));
    }
    SpectrumRecord record;
    const std::string title = text(block, "TITLE");
    record.name = fitted(title.empty() ? path.filename().string() : title, kNameWidth);
    record.path = fitted(path.string(), kNameWidth);
    record.dtype = dataType(block);
    record.waveInfo = fitted(text(block, "$WAVEINFO"), kMineralInfoWidth);
    const std::string names = text(block, "NAMES");
    record.header.names = fitted(names.empty() ? title : names, kMineralInfoWidth);
    record.header.chemistry = fitted(text(block, "MOLFORM"), kMineralInfoWidth);
    record.header.locality = fitted(text(block, "$LOCALITY"), kMineralInfoWidth);
    record.header.id = fitted(text(block, "$ID"), kMineralInfoWidth);
    convertUnits(block, x, record);
    const std::string yUnits = text(block, "YUNITS");
    if (!yUnits.empty()) {
        record.comments.push_back(std::string(kYAxisKey) + yUnits);
    }
    for (std::size_t i = 0; i < block.rawY.size(); ++i) {
        const double yValue = block.rawY[i] * yFactor;
        if (!fitsSinglePrecision(x[i]) || !fitsSinglePrecision(yValue)) {
            throwJcamp(path, "point " + std::to_string(i + 1) + " of \"" + title +
                                 "\" is not a finite single-precision number");
        }
        record.x.push_back(static_cast<float>(x[i]));
        record.y.push_back(static_cast<float>(yValue));
    }
    for (const std::string& note : block.notes) {
        record.comments.push_back(std::string(kReadNoteKey) + note);
    }
    orderByAscendingX(record.x, record.y);
    return record;
}

// Splits "##LABEL=value" into its normalised label and its value; false for other lines.
bool labelledLine(std::string_view line, std::string& label, std::string_view& value) {
    line = trimmed(line);
    if (!line.starts_with("##")) {
        return false;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return false;
    }
    label = normalisedJcampLabel(line.substr(2, equals - 2));
    value = line.substr(equals + 1);
    return true;
}

} // namespace

std::string normalisedJcampLabel(std::string_view label) {
    std::string normal;
    for (const char c : label) {
        if (c != ' ' && c != '-' && c != '/' && c != '_' && c != '\t') {
            normal += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return normal;
}

bool isJcampDx(std::string_view head, std::string_view /*extensionLower*/) {
    std::string label;
    std::string_view value;
    for (std::size_t line = 0; line < kSniffLines && !head.empty(); ++line) {
        const std::size_t end = head.find('\n');
        if (labelledLine(head.substr(0, end), label, value) && label == "JCAMPDX") {
            return true;
        }
        head = end == std::string_view::npos ? std::string_view() : head.substr(end + 1);
    }
    return false;
}

std::vector<SpectrumRecord> readJcampDx(const std::filesystem::path& path,
                                        const ReadOptions& /*options*/) {
    LineReader reader(path, kLineWidth);
    if (!reader.isOpen()) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    std::vector<SpectrumRecord> spectra;
    std::vector<Block> open; // nested blocks: a LINK block holds the spectra's blocks
    AsdfLine decoded;
    std::string label;
    std::string_view value;
    std::string_view line;
    const auto close = [&] {
        // A table label with no values under it (a LINK block's header, a cut file) is no
        // spectrum: a record without points would reach the view.
        if (open.back().form != DataForm::None && !open.back().rawY.empty()) {
            spectra.push_back(finishBlock(path, open.back()));
        }
        open.pop_back();
    };
    while (reader.next(line)) {
        if (labelledLine(line, label, value)) {
            if (label == "TITLE") {
                open.emplace_back();
            } else if (open.empty()) {
                continue; // labels outside a block
            }
            Block& block = open.back();
            if (label == "END") {
                close();
                continue;
            }
            block.values.emplace(label, std::string(value));
            const bool table = label == "XYDATA" || label == "XYPOINTS" || label == "PEAKTABLE";
            block.collecting = table && block.form == DataForm::None;
            if (table && !block.collecting) {
                block.notes.push_back("a second data table (##" + label + ") left out");
            } else if (label == "XYDATA") {
                block.form = DataForm::XyData;
            } else if (block.collecting) {
                block.form = DataForm::Pairs;
                block.groupSize =
                    upper(std::string(value)).find("XYW") != std::string::npos ? 3 : 2;
                addPairLine(path, block, value.substr(std::min(value.find(')'), value.size())),
                            reader.lineNumber());
            }
            continue;
        }
        if (open.empty() || trimmed(line).empty() || trimmed(line).starts_with("$$")) {
            continue;
        }
        Block& block = open.back();
        if (!block.collecting) {
            continue; // the further lines of a value that runs over several lines
        }
        if (block.form == DataForm::XyData) {
            addXyDataLine(path, block, line, reader.lineNumber(), decoded);
        } else {
            addPairLine(path, block, line, reader.lineNumber());
        }
    }
    if (reader.notText()) {
        throwJcamp(path, "not a text file (it holds binary data)");
    }
    while (!open.empty()) {
        open.back().notes.push_back("the block has no ##END");
        close();
    }
    if (spectra.empty()) {
        throw QuarvexError("No data points found in " + path.string() +
                               ": no ##XYDATA, ##XYPOINTS or ##PEAK TABLE with values",
                           std::string(kDataFileErrorTitle));
    }
    return spectra;
}

} // namespace quarvex
