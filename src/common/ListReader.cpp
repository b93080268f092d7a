#include "common/ListReader.h"

#include "common/TextUtils.h"

#include <array>
#include <charconv>

namespace quarvex {

namespace {

bool isValueEnd(char c) {
    return isBlank(c) || c == ',' || c == '/';
}

void skipBlanks(std::string_view& text) {
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i])) {
        ++i;
    }
    text.remove_prefix(i);
}

// from_chars takes no leading '+'; a Fortran number may carry one.
std::string_view withoutPlus(std::string_view token) {
    if (token.size() > 1 && token.front() == '+') {
        token.remove_prefix(1);
    }
    return token;
}

template <class Real> bool parseRealToken(std::string_view token, Real& value) {
    token = withoutPlus(token);
    // Fortran writes double-precision exponents with D (and quad with Q): give from_chars an E.
    std::array<char, 64> buffer{};
    if (token.empty() || token.size() > buffer.size()) {
        return false;
    }
    for (std::size_t i = 0; i < token.size(); ++i) {
        const char c = token[i];
        buffer[i] = (c == 'd' || c == 'D' || c == 'q' || c == 'Q') ? 'e' : c;
    }
    const char* end = buffer.data() + token.size();
    Real parsed{};
    const auto [ptr, ec] = std::from_chars(buffer.data(), end, parsed);
    if (ec != std::errc{} || ptr != end) {
        return false;
    }
    value = parsed;
    return true;
}

// The longest token the general reader converts (see parseRealToken).
constexpr std::ptrdiff_t kLongestNumber = 64;

// Powers of ten that single precision holds exactly (5^10 < 2^24).
constexpr std::array<float, 11> kExactPowersOfTen{1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F,
                                                  1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
constexpr std::uint32_t kLargestExactMantissa = std::uint32_t{1} << 24;

// Appends the digits at `at` to `mantissa`; false once it passes kLargestExactMantissa.
bool appendDigits(const char*& at, const char* end, std::uint32_t& mantissa) {
    for (; at < end && *at >= '0' && *at <= '9'; ++at) {
        mantissa = mantissa * 10 + static_cast<std::uint32_t>(*at - '0');
        if (mantissa > kLargestExactMantissa) {
            return false;
        }
    }
    return true;
}

// A decimal without exponent whose digits make a whole number up to 2^24 and that has at most 10
// decimals: both are exact floats, so one correctly rounded division gives what std::from_chars
// gives, at a fraction of its cost. Null when the text is not of that kind.
const char* readShortDecimal(const char* first, const char* end, float& value) {
    const bool negative = first < end && *first == '-';
    const char* at = first + (negative ? 1 : 0);
    const char* digitsStart = at;
    std::uint32_t mantissa = 0;
    if (!appendDigits(at, end, mantissa)) {
        return nullptr;
    }
    std::ptrdiff_t digits = at - digitsStart;
    std::ptrdiff_t decimals = 0;
    if (at < end && *at == '.') {
        const char* decimalsStart = ++at;
        if (!appendDigits(at, end, mantissa)) {
            return nullptr;
        }
        decimals = at - decimalsStart;
        digits += decimals;
    }
    if (digits == 0 || decimals >= std::ssize(kExactPowersOfTen) ||
        (at < end && (*at == 'e' || *at == 'E'))) {
        return nullptr;
    }
    const float magnitude =
        static_cast<float>(mantissa) / kExactPowersOfTen[static_cast<std::size_t>(decimals)];
    value = negative ? -magnitude : magnitude;
    return at;
}

// One plain number at `position`: no sign '+', no D exponent, no repeat count, no quotes, ended by
// a value separator or the end. Anything else is left to the general reader.
bool readPlainReal(const char*& position, const char* end, float& value) {
    while (position < end && isBlank(*position)) {
        ++position;
    }
    if (const char* stop = readShortDecimal(position, end, value)) {
        if (stop - position > kLongestNumber || (stop != end && !isValueEnd(*stop))) {
            return false;
        }
        position = stop;
        return true;
    }
    const auto [stop, ec] = std::from_chars(position, end, value);
    if (ec != std::errc{} || stop - position > kLongestNumber ||
        (stop != end && !isValueEnd(*stop))) {
        return false;
    }
    position = stop;
    return true;
}

} // namespace

bool readRealPair(std::string_view record, float& first, float& second) {
    const char* position = record.data();
    const char* end = position + record.size();
    float a = 0.0F;
    float b = 0.0F;
    if (readPlainReal(position, end, a)) {
        while (position < end && isBlank(*position)) {
            ++position;
        }
        if (position < end && *position == ',') {
            ++position; // the one comma that separates the two values
        }
        const char* afterSeparator = position;
        while (afterSeparator < end && isBlank(*afterSeparator)) {
            ++afterSeparator;
        }
        const bool plainSecond = afterSeparator < end && *afterSeparator != ',' &&
                                 *afterSeparator != '/' && readPlainReal(position, end, b);
        if (plainSecond) {
            first = a;
            second = b;
            return true;
        }
    }
    return readAll(record, first, second);
}

bool parseReal(std::string_view token, float& value) {
    return parseRealToken(token, value);
}
bool parseReal(std::string_view token, double& value) {
    return parseRealToken(token, value);
}

bool parseInteger(std::string_view token, int& value) {
    token = withoutPlus(token);
    int parsed = 0;
    const auto [ptr, ec] = std::from_chars(token.data(), token.data() + token.size(), parsed);
    if (token.empty() || ec != std::errc{} || ptr != token.data() + token.size()) {
        return false;
    }
    value = parsed;
    return true;
}

bool parseLogical(std::string_view token, bool& value) {
    if (!token.empty() && token.front() == '.') {
        token.remove_prefix(1);
    }
    if (token.empty()) {
        return false;
    }
    switch (token.front()) {
    case 't':
    case 'T':
        value = true;
        return true;
    case 'f':
    case 'F':
        value = false;
        return true;
    default:
        return false;
    }
}

void ListReader::skipSeparatorAfterValue() {
    skipBlanks(rest_);
    if (!rest_.empty() && rest_.front() == ',') {
        rest_.remove_prefix(1);
    }
}

std::string_view ListReader::scanQuoted() {
    const char quote = rest_.front();
    rest_.remove_prefix(1);
    unquoteBuffer_.clear();
    std::size_t i = 0;
    while (i < rest_.size()) {
        if (rest_[i] == quote) {
            if (i + 1 < rest_.size() && rest_[i + 1] == quote) {
                unquoteBuffer_.push_back(quote); // a doubled quote stands for one
                i += 2;
                continue;
            }
            rest_.remove_prefix(i + 1);
            return unquoteBuffer_;
        }
        unquoteBuffer_.push_back(rest_[i]);
        ++i;
    }
    rest_ = {}; // an unclosed quote runs to the end of the record
    return unquoteBuffer_;
}

ListReader::Item ListReader::scanValue() {
    Item item{ItemKind::Value, {}, false};
    if (rest_.front() == '\'' || rest_.front() == '"') {
        item.token = scanQuoted();
        item.quoted = true;
    } else {
        std::size_t length = 0;
        while (length < rest_.size() && !isValueEnd(rest_[length])) {
            ++length;
        }
        item.token = rest_.substr(0, length);
        rest_.remove_prefix(length);
    }
    skipSeparatorAfterValue();
    return item;
}

ListReader::Item ListReader::nextItem() {
    if (repeatsLeft_ > 0) {
        --repeatsLeft_;
        return repeated_;
    }
    if (slashSeen_) {
        return {};
    }
    skipBlanks(rest_);
    if (rest_.empty()) {
        return {};
    }
    if (rest_.front() == '/') {
        slashSeen_ = true;
        return {};
    }
    if (rest_.front() == ',') {
        rest_.remove_prefix(1);
        return {ItemKind::Null, {}, false};
    }

    // A repeat count: digits directly followed by '*'.
    std::size_t digits = 0;
    while (digits < rest_.size() && isDigit(rest_[digits])) {
        ++digits;
    }
    int count = 0;
    if (digits > 0 && digits < rest_.size() && rest_[digits] == '*' &&
        parseInteger(rest_.substr(0, digits), count) && count > 0) {
        rest_.remove_prefix(digits + 1);
        if (rest_.empty() || isValueEnd(rest_.front())) {
            repeated_ = {ItemKind::Null, {}, false};
            skipSeparatorAfterValue();
        } else {
            repeated_ = scanValue();
        }
        repeatsLeft_ = count - 1;
        return repeated_;
    }
    return scanValue();
}

template <class Parse> FieldStatus ListReader::readWith(Parse parse) {
    const Item item = nextItem();
    switch (item.kind) {
    case ItemKind::End:
        return slashSeen_ ? FieldStatus::Kept : FieldStatus::Failed;
    case ItemKind::Null:
        return FieldStatus::Kept;
    case ItemKind::Value:
        break;
    }
    return parse(item) ? FieldStatus::Assigned : FieldStatus::Failed;
}

FieldStatus ListReader::read(float& value) {
    return readWith([&](const Item& item) { return !item.quoted && parseReal(item.token, value); });
}

FieldStatus ListReader::read(double& value) {
    return readWith([&](const Item& item) { return !item.quoted && parseReal(item.token, value); });
}

FieldStatus ListReader::read(int& value) {
    return readWith(
        [&](const Item& item) { return !item.quoted && parseInteger(item.token, value); });
}

FieldStatus ListReader::read(bool& value) {
    return readWith(
        [&](const Item& item) { return !item.quoted && parseLogical(item.token, value); });
}

FieldStatus ListReader::read(std::string& value) {
    return readWith([&](const Item& item) {
        value.assign(item.token);
        return true;
    });
}

} // namespace quarvex
