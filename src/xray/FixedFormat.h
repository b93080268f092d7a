// Fixed-column records written through format texts built at run time ("(1X,F9.3,3I3)").
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace quarvex {

/// One value of a record: a real for an F edit, an integer for an I edit, a text for an A edit.
using FixedValue = std::variant<double, int, std::string_view>;

/// Writes the values through a format text in parentheses made of comma-separated edits:
/// `nX` (n blanks), `rFw.d` (real, w columns, d decimals), `rIw` (integer), `rAw` / `A` (text),
/// with an optional repeat count r. Numbers are right-aligned; a number too wide for its field
/// fills it with asterisks (a leading "0" before the point is dropped first when that makes it
/// fit); NaN and infinities are written as "NaN", "Inf", "-Inf". A text longer than its field is
/// cut, a shorter one right-aligned. Writing stops at the first data edit without a value.
/// Throws std::invalid_argument for a malformed format or a value of the wrong kind (a program
/// error: the formats are the program's own).
std::string formatFixed(std::string_view format, std::initializer_list<FixedValue> values);

} // namespace quarvex
