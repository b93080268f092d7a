#include "readers/JcampAsdf.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace quarvex {

namespace {

enum class Kind { Absolute, Difference, Duplicate };

struct Token {
    Kind kind = Kind::Absolute;
    double value = 0.0;
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The lead character of an ASDF token: its kind and its first digit with sign.
bool asdfLead(char c, Kind& kind, int& digit) {
    if (c == '@') {
        kind = Kind::Absolute;
        digit = 0;
    } else if (c >= 'A' && c <= 'I') {
        kind = Kind::Absolute;
        digit = c - 'A' + 1;
    } else if (c >= 'a' && c <= 'i') {
        kind = Kind::Absolute;
        digit = -(c - 'a' + 1);
    } else if (c == '%') {
        kind = Kind::Difference;
        digit = 0;
    } else if (c >= 'J' && c <= 'R') {
        kind = Kind::Difference;
        digit = c - 'J' + 1;
    } else if (c >= 'j' && c <= 'r') {
        kind = Kind::Difference;
        digit = -(c - 'j' + 1);
    } else if (c >= 'S' && c <= 'Z') {
        kind = Kind::Duplicate;
        digit = c - 'S' + 1;
    } else if (c == 's') {
        kind = Kind::Duplicate;
        digit = 9;
    } else {
        return false;
    }
    return true;
}

// The digits (and a decimal point) after an ASDF lead character, appended to its digit.
double asdfValue(std::string_view line, std::size_t& i, int digit) {
    std::array<char, 64> text{};
    std::size_t length = 0;
    text[length++] = static_cast<char>('0' + std::abs(digit));
    while (i < line.size() && (isDigit(line[i]) || line[i] == '.')) {
        if (length < text.size()) {
            text[length++] = line[i];
        }
        ++i;
    }
    double value = 0.0;
    std::from_chars(text.data(), text.data() + length, value);
    return digit < 0 ? -value : value;
}

// A plain number: sign, digits, decimal point, exponent.
bool affnValue(std::string_view line, std::size_t& i, double& value) {
    std::size_t start = i;
    if (line[i] == '+') {
        start = ++i; // from_chars takes no plus sign
    } else if (line[i] == '-') {
        ++i;
    }
    while (i < line.size() && (isDigit(line[i]) || line[i] == '.')) {
        ++i;
    }
    if (i < line.size() && (line[i] == 'E' || line[i] == 'e')) {
        ++i;
        if (i < line.size() && (line[i] == '+' || line[i] == '-')) {
            ++i;
        }
        while (i < line.size() && isDigit(line[i])) {
            ++i;
        }
    }
    const auto [end, error] = std::from_chars(line.data() + start, line.data() + i, value);
    return error == std::errc() && end == line.data() + i;
}

} // namespace

bool decodeAsdfLine(std::string_view line, AsdfLine& decoded) {
    decoded.y.clear();
    decoded.endsInDifference = false;
    bool haveX = false;
    double last = 0.0;
    Token previous;
    bool any = false;
    const auto push = [&](double value) {
        if (!haveX) {
            decoded.x = value;
            haveX = true;
        } else {
            decoded.y.push_back(value);
        }
        last = value;
    };
    std::size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (c == ' ' || c == '\t' || c == ',' || c == ';') {
            ++i;
            continue;
        }
        if (c == '$' && i + 1 < line.size() && line[i + 1] == '$') {
            break; // a comment to the end of the line
        }
        Token token;
        int digit = 0;
        if (c == '+' || c == '-' || c == '.' || isDigit(c)) {
            if (!affnValue(line, i, token.value)) {
                return false;
            }
        } else if (asdfLead(c, token.kind, digit)) {
            ++i;
            token.value = asdfValue(line, i, digit);
        } else {
            return false;
        }
        switch (token.kind) {
        case Kind::Absolute:
            push(token.value);
            previous = token;
            break;
        case Kind::Difference:
            if (!any || !haveX || decoded.y.empty()) {
                return false; // a difference needs an ordinate before it
            }
            push(last + token.value);
            previous = token;
            break;
        case Kind::Duplicate:
            if (!any || decoded.y.empty() || token.value < 1.0 || token.value > 1e7) {
                return false;
            }
            for (int k = 1; k < static_cast<int>(token.value); ++k) {
                push(previous.kind == Kind::Difference ? last + previous.value : last);
            }
            break;
        }
        any = true;
    }
    decoded.endsInDifference = previous.kind == Kind::Difference;
    return haveX;
}

} // namespace quarvex
