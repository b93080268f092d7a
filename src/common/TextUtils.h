// Small text helpers for the fixed-width, blank-padded texts of the program's files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quarvex {

/// The text without leading and trailing blanks (spaces and tabs).
std::string_view trimmed(std::string_view text);

/// The text up to its last non-blank character (leading blanks kept).
std::string_view trimmedRight(std::string_view text);

/// Blanks of the program's files: space and tab.
inline bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// True when `line` begins with `key`, compared exactly and case-sensitively over the key's length.
inline bool startsWithKey(std::string_view line, std::string_view key) {
    return line.substr(0, key.size()) == key;
}

/// The text cut to at most `width` characters, like a store into a fixed-width text field.
inline std::string fitted(std::string_view text, std::size_t width) {
    return std::string(text.substr(0, width));
}

/// The shortest decimal text that reads back as exactly this float (std::to_chars).
std::string shortestText(float value);

/// The shortest decimal text that reads back as exactly this double.
std::string shortestText(double value);

} // namespace quarvex
