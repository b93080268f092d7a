#include "readers/DiffractionWavelength.h"

#include "common/ListReader.h"
#include "common/TextUtils.h"
#include "readers/StatedWavelength.h"
#include "xray/XrayWorkflow.h"

#include <cstring>

namespace quarvex {

namespace {

bool isXrayWavelength(double angstroms) {
    return angstroms >= kMinXrayWavelength && angstroms <= kMaxXrayWavelength;
}

// XRDML states the wavelength in an element xylib does not pass on: <kAlpha1 ...>1.54</kAlpha1>.
std::optional<double> xrdmlWavelength(std::string_view bytes) {
    const std::size_t element = bytes.find("<kAlpha1");
    const std::size_t open = bytes.find('>', element);
    const std::size_t close = bytes.find('<', open);
    if (element == std::string_view::npos || open == std::string_view::npos ||
        close == std::string_view::npos) {
        return std::nullopt;
    }
    double value = 0.0;
    if (readAll(trimmed(bytes.substr(open + 1, close - open - 1)), value) &&
        isXrayWavelength(value)) {
        return value;
    }
    return std::nullopt;
}

// xylib passes the RAW wavelengths on as text of six digits ("1.5406" for 1.540598): these are
// their fields, K-alpha1 of the first range (version 1, a float at 72), of the file
// (version 2, a float at 190; version 3, a double at 624), as the shortest text of that type.
std::optional<std::string> rawWavelengthText(std::string_view bytes) {
    const auto field = [&](std::size_t offset, auto value) -> std::optional<std::string> {
        if (bytes.size() < offset + sizeof(value)) {
            return std::nullopt;
        }
        std::memcpy(&value, bytes.data() + offset, sizeof(value));
        if (!isXrayWavelength(value)) {
            return std::nullopt;
        }
        return shortestText(value);
    };
    if (bytes.starts_with("RAW1.01")) {
        return field(624, double{});
    }
    return bytes.starts_with("RAW2") ? field(190, float{}) : field(72, float{});
}

// Wavelengths in headers xylib skips: a CPI file gives its own on the sixth line (after the
// anode's symbol); a RIET7 or DBWS file has free text above or beside its start-step-stop line,
// where one may be stated (statedWavelength).
std::optional<double> headerWavelength(std::string_view format, std::string_view bytes) {
    constexpr std::size_t kHeaderLines = 6;
    std::size_t start = 0;
    for (std::size_t line = 0; line < kHeaderLines && start < bytes.size(); ++line) {
        std::size_t end = bytes.find('\n', start);
        end = end == std::string_view::npos ? bytes.size() : end;
        const std::string_view text = trimmed(bytes.substr(start, end - start));
        start = end + 1;
        double value = 0.0;
        if (format == "cpi" && line == kHeaderLines - 1) {
            return readAll(text, value) && isXrayWavelength(value) ? std::optional(value)
                                                                   : std::nullopt;
        }
        if (format == "riet7" || format == "dbws") {
            if (const std::optional<double> stated = statedWavelength(text)) {
                return stated;
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> wavelengthFromBytes(std::string_view format, std::string_view bytes) {
    if (format == "bruker_raw") {
        return rawWavelengthText(bytes);
    }
    const std::optional<double> wavelength =
        format == "xrdml" ? xrdmlWavelength(bytes) : headerWavelength(format, bytes);
    return wavelength ? std::optional(shortestText(*wavelength)) : std::nullopt;
}

} // namespace quarvex
