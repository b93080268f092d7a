#include "readers/StatedWavelength.h"

#include "xray/XrayWorkflow.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string>

namespace quarvex {

namespace {

constexpr std::array<std::string_view, 5> kKeywords = {"wavelength", "lambda", "kalpha1", "alpha1",
                                                       "ka1"};

bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Angstroms per unit of the (lower-case) unit word at `text`'s start: 1 when there is no word
// (a bare number, or "Å", which is not an ASCII letter); nothing for a word that is no unit of
// length we know, so that no value is taken in a unit it is not in.
std::optional<double> angstromsPerUnit(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && std::isalpha(static_cast<unsigned char>(text[length])) != 0) {
        ++length;
    }
    const std::string_view unit = text.substr(0, length);
    if (unit.empty() || unit == "a" || unit == "angstrom" || unit == "angstroms") {
        return 1.0;
    }
    if (unit == "nm") {
        return 10.0;
    }
    return unit == "m" ? std::optional(1e10) : std::nullopt;
}

} // namespace

std::optional<double> statedWavelength(std::string_view line) {
    std::string lower(line);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::size_t keywordAt = std::string::npos; // the first keyword that starts a word
    std::size_t at = 0;
    for (std::string_view keyword : kKeywords) {
        const std::size_t found = lower.find(keyword);
        if (found != std::string::npos && (found == 0 || !isWordCharacter(lower[found - 1])) &&
            found < keywordAt) {
            keywordAt = found;
            at = found + keyword.size();
        }
    }
    if (keywordAt == std::string::npos) {
        return std::nullopt;
    }
    while (at < lower.size() && isWordCharacter(lower[at])) {
        ++at; // "lambda1", "wavelengths"
    }
    std::optional<double> bracketScale; // a unit in brackets before the number
    while (at < lower.size()) {
        const char c = lower[at];
        if (c == ' ' || c == '\t' || c == '=' || c == ':') {
            ++at;
        } else if (c == '(' || c == '[') {
            const std::size_t close = lower.find(c == '(' ? ')' : ']', at);
            if (close == std::string::npos) {
                return std::nullopt;
            }
            bracketScale = angstromsPerUnit(std::string_view(lower).substr(at + 1, close - at - 1));
            if (!bracketScale) {
                return std::nullopt;
            }
            at = close + 1;
        } else {
            break;
        }
    }
    double value = 0.0;
    const char* first = lower.data() + at;
    const char* last = lower.data() + lower.size();
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end == first) {
        return std::nullopt;
    }
    std::string_view rest(end, static_cast<std::size_t>(last - end));
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const bool unitAfter = !rest.empty() && std::isalpha(static_cast<unsigned char>(rest[0])) != 0;
    const std::optional<double> afterScale = angstromsPerUnit(rest);
    if (!afterScale || (bracketScale && unitAfter)) {
        return std::nullopt; // an unknown unit, or two
    }
    const double scale = bracketScale.value_or(*afterScale);
    // A converted value keeps the digits it was written with: 1.0332e-10 m is 1.0332 A, not
    // 1.0332000000000001.
    const double angstroms = scale == 1.0 ? value : std::round(value * scale * 1e9) / 1e9;
    if (!(angstroms >= kMinXrayWavelength && angstroms <= kMaxXrayWavelength)) {
        return std::nullopt;
    }
    return angstroms;
}

} // namespace quarvex
