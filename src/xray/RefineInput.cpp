// Reading the refinement input "_refine.DAT": title, crystal system, starting cell, wavelengths,
// switches and the indexed reflections up to "stop", each line checked with its line number.
#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/TextUtils.h"
#include "xray/FixedFormat.h"
#include "xray/RefineEngine.h"
#include "xray/RefineReport.h"

#include <cmath>
#include <string>

namespace quarvex {

namespace {

// Reads free-format values of one line through CH2NUM and CH2INT.
class ValueLine {
public:
    explicit ValueLine(std::string_view line) : fields_(line) {}

    bool number(double& value) { return next() && CH2NUM(token_, value); }
    bool integer(int& value) { return next() && CH2INT(token_, value); }
    bool switchValue(bool& value) {
        int number = 0;
        if (!integer(number) || (number != 0 && number != 1)) {
            return false;
        }
        value = number == 1;
        return true;
    }
    /// True when another value follows (it is read into the token).
    bool next() { return fields_.read(token_) == FieldStatus::Assigned; }
    const std::string& token() const { return token_; }

private:
    ListReader fields_;
    std::string token_;
};

class InputReader {
public:
    InputReader(const std::filesystem::path& path, INOUTPARMS& io, DATASTFF& data,
                RefineReport& report)
        : reader_(path), path_(path), io_(io), data_(data), report_(report) {}

    bool read();

private:
    bool fail(const std::string& text) {
        report_.failure(io_, {text});
        return false;
    }
    bool lineError(const std::string& text) {
        return fail(" Input error, line " + std::to_string(reader_.lineNumber()) + ": " +
                    (reader_.notText() ? std::string("the file is not a text file.") : text));
    }
    bool nextLine(std::string_view what) {
        if (READLN(reader_, line_)) {
            return true;
        }
        return endOfFile("the file ends before " + std::string(what) + ".");
    }
    bool endOfFile(const std::string& text) {
        return fail(" Input error: " +
                    (reader_.notText() ? std::string("the file is not a text file.") : text));
    }

    bool readSystem();
    bool readCell();
    bool readWavelengths();
    bool readSwitches();
    bool readReflections();
    bool readReflection(int r);
    void prepare();

    LineReader reader_;
    std::filesystem::path path_;
    INOUTPARMS& io_;
    DATASTFF& data_;
    RefineReport& report_;
    std::string_view line_;
};

bool InputReader::read() {
    if (!reader_.isOpen()) {
        return fail(" Cannot open the input file " + path_.string());
    }
    if (!nextLine("its title line")) {
        return false;
    }
    io_.title = std::string(trimmed(line_));
    if (!(readSystem() && readCell() && readWavelengths() && readSwitches() && readReflections())) {
        return false;
    }
    prepare();
    return true;
}

bool InputReader::readSystem() {
    if (!nextLine("the crystal-system line")) {
        return false;
    }
    data_.XTLSYS = normalizedSystemName(line_);
    if (findCrystalSystem(data_.XTLSYS) == nullptr) {
        return lineError("unknown crystal system \"" + std::string(trimmed(line_)) +
                         "\"; expected one of " + std::string(crystalSystemList()) +
                         " (or MONOCLINIC, ISOMETRIC).");
    }
    return true;
}

bool InputReader::readCell() {
    if (!nextLine("the cell line")) {
        return false;
    }
    ValueLine values(line_);
    bool read = values.integer(io_.cellOption);
    for (double& entry : data_.CELL) {
        read = read && values.number(entry);
    }
    if (!read || (io_.cellOption != 0 && io_.cellOption != 1)) {
        return lineError("expected the cell option (0 or 1), then a b c alpha beta gamma.");
    }
    if (io_.cellOption == 1) {
        const auto& c = data_.CELL;
        const bool edges = c[0] > 0.0 && c[1] > 0.0 && c[2] > 0.0;
        const bool angles =
            c[3] > 0.0 && c[3] < 180.0 && c[4] > 0.0 && c[4] < 180.0 && c[5] > 0.0 && c[5] < 180.0;
        if (!edges || !angles) {
            return lineError("the cell edges must be positive and the angles lie between 0 "
                             "and 180 degrees.");
        }
    }
    return true;
}

bool InputReader::readWavelengths() {
    if (!nextLine("the wavelength line")) {
        return false;
    }
    ValueLine values(line_);
    const std::string expected = "expected the number of wavelengths (1 to 3), then each "
                                 "wavelength in angstroms (positive).";
    if (!values.integer(data_.NWAVES) || data_.NWAVES < 1 ||
        data_.NWAVES > PARMMAX::kMaxWavelengths) {
        data_.NWAVES = 0;
        return lineError(expected);
    }
    for (int w = 0; w < data_.NWAVES; ++w) {
        if (!values.number(data_.WAVES[w]) || !(data_.WAVES[w] > 0.0)) {
            return lineError(expected);
        }
    }
    return true;
}

bool InputReader::readSwitches() {
    if (!nextLine("the line of four switches")) {
        return false;
    }
    ValueLine values(line_);
    if (!(values.switchValue(io_.searchMachineError) && values.switchValue(io_.reportIterations) &&
          values.switchValue(io_.tableInD) && values.switchValue(io_.startCellGiven))) {
        return lineError("expected four switches, each 0 or 1: machine-error search, number of "
                         "iterations, table in d only, starting cell given.");
    }
    return true;
}

bool InputReader::readReflections() {
    int count = 0;
    while (READLN(reader_, line_)) {
        const std::string_view text = trimmed(line_);
        if (text == "stop" || text == "STOP") {
            data_.NREF = count;
            return true;
        }
        if (count == PARMMAX::kMaxReflections) {
            report_.failure(io_, {formatFixed("(a,i4)", {"Too many reflections, must not exceed ",
                                                         PARMMAX::kMaxReflections})});
            return false;
        }
        if (!readReflection(count)) {
            return false;
        }
        ++count;
    }
    return endOfFile("the reflection list does not end with a \"stop\" line (the file ended "
                     "after " +
                     std::to_string(count) + " reflections); is the file complete?");
}

bool InputReader::readReflection(int r) {
    ValueLine values(line_);
    double observed = 0.0;
    if (!(values.integer(data_.h[r]) && values.integer(data_.k[r]) && values.integer(data_.l[r]) &&
          values.integer(data_.WAVEID[r]) && values.number(observed))) {
        return lineError(std::string("expected h k l, the wavelength number and the observed ") +
                         (io_.tableInD ? "d" : "2-theta") +
                         ", then an optional weight; the list ends with \"stop\".");
    }
    data_.SQW[r] = 1.0;
    if (values.next() && !(CH2NUM(values.token(), data_.SQW[r]) && data_.SQW[r] > 0.0)) {
        return lineError("the weight must be a positive number, found \"" + values.token() + "\".");
    }
    if (data_.WAVEID[r] < 1 || data_.WAVEID[r] > data_.NWAVES) {
        return lineError("wavelength number " + std::to_string(data_.WAVEID[r]) +
                         " is not defined: the file gives " + std::to_string(data_.NWAVES) +
                         " wavelength(s).");
    }
    if (data_.h[r] == 0 && data_.k[r] == 0 && data_.l[r] == 0) {
        return lineError("the indices 0 0 0 are not a reflection.");
    }
    if (io_.tableInD) {
        if (!(observed > 0.0)) {
            return lineError("the observed d must be positive, found " + shortestText(observed));
        }
        data_.DO[r] = observed;
    } else {
        if (!(observed > 0.0 && observed < 180.0)) {
            return lineError("2-theta must lie between 0 and 180 degrees, found " +
                             shortestText(observed));
        }
        data_.TTHETA[r] = observed;
    }
    return true;
}

void InputReader::prepare() {
    for (int r = 0; r < data_.NREF; ++r) {
        data_.WAVE[r] = data_.WAVES[data_.WAVEID[r] - 1];
    }
    if (io_.tableInD) {
        for (int r = 0; r < data_.NREF; ++r) {
            // The 2-theta of the line for its wavelength; NaN when the d is out of its reach.
            data_.TTHETA[r] = 2.0 * std::asin(data_.WAVE[r] / (2.0 * data_.DO[r])) / kDegree;
            data_.QO[r] = 1.0 / (data_.DO[r] * data_.DO[r]);
        }
    } else {
        observedFromTwoTheta(data_);
    }
    // Angles are held as cosines until the iteration: 0.0 is a right angle.
    auto& cell = data_.CELL;
    for (int m = 3; m < 6; ++m) {
        cell[m] = std::cos(cell[m] * kDegree);
    }
    if (io_.cellOption == 1) {
        const std::string_view system = trimmed(data_.XTLSYS);
        if (system == "MONOCLINIC1") {
            cell[3] = cell[4] = 0.0;
        } else if (system == "MONOCLINIC2") {
            cell[3] = cell[5] = 0.0;
        } else if (system == "MONOCLINIC3") {
            cell[4] = cell[5] = 0.0;
        } else if (system == "RHOMBOHEDRAL") {
            const double edge = (cell[0] + cell[1] + cell[2]) / 3.0;
            const double cosine = (cell[3] + cell[4] + cell[5]) / 3.0;
            cell = {edge, edge, edge, cosine, cosine, cosine};
        } else if (system != "TRICLINIC") {
            io_.cellOption = 0; // the linear systems always start from the estimate
        }
    }
    io_.noEstimate = io_.startCellGiven && io_.cellOption == 1;
}

} // namespace

bool READLN(LineReader& reader, std::string_view& line) {
    while (reader.next(line)) {
        if (!trimmed(line).empty()) {
            return true;
        }
    }
    return false;
}

bool CH2NUM(std::string_view text, double& value) {
    double parsed = 0.0;
    if (!parseReal(text, parsed) || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

bool CH2INT(std::string_view text, int& value) {
    return parseInteger(text, value);
}

double braggD(double wavelength, double twoThetaDeg) {
    return wavelength / (2.0 * std::sin(twoThetaDeg * (kPi / 180.0) * 0.5));
}

void observedFromTwoTheta(DATASTFF& data) {
    for (int r = 0; r < data.NREF; ++r) {
        data.DO[r] = braggD(data.WAVE[r], data.TTHETA[r]);
        data.QO[r] = 1.0 / (data.DO[r] * data.DO[r]);
    }
}

bool DATAIN(const std::filesystem::path& inputPath, INOUTPARMS& io, DATASTFF& data,
            RefineReport& report) {
    return InputReader(inputPath, io, data, report).read();
}

} // namespace quarvex
