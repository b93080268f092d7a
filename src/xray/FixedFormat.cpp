// A small writer for fixed-column records: blanks, reals, integers and texts by format edits.
#include "xray/FixedFormat.h"

#include "common/ListReader.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace quarvex {

namespace {

struct Edit {
    char kind = 'X';
    int repeat = 1;
    int width = 0; // 0 for a bare A: the text's own length
    int decimals = 0;
};

[[noreturn]] void malformed(std::string_view format) {
    throw std::invalid_argument("malformed record format: " + std::string(format));
}

// Reads the digits at the front of `text` (none gives `fallback`).
int leadingNumber(std::string_view& text, int fallback) {
    std::size_t length = 0;
    while (length < text.size() && text[length] >= '0' && text[length] <= '9') {
        ++length;
    }
    int number = fallback;
    if (length > 0 && !parseInteger(text.substr(0, length), number)) {
        number = fallback;
    }
    text.remove_prefix(length);
    return number;
}

Edit parseEdit(std::string_view item, std::string_view format) {
    Edit edit;
    edit.repeat = leadingNumber(item, 1);
    if (item.empty()) {
        malformed(format);
    }
    edit.kind = static_cast<char>(item.front() & ~0x20); // upper case
    item.remove_prefix(1);
    if (edit.kind == 'X') {
        if (!item.empty()) {
            malformed(format);
        }
        return edit;
    }
    edit.width = leadingNumber(item, 0);
    if (edit.kind == 'F') {
        if (item.empty() || item.front() != '.') {
            malformed(format);
        }
        item.remove_prefix(1);
        edit.decimals = leadingNumber(item, -1);
    }
    if (!item.empty() || edit.decimals < 0 || (edit.kind != 'A' && edit.width == 0) ||
        (edit.kind != 'A' && edit.kind != 'I' && edit.kind != 'F')) {
        malformed(format);
    }
    return edit;
}

void appendRightAligned(std::string& record, std::string text, int width) {
    if (static_cast<int>(text.size()) > width) {
        // A real may drop its leading zero ("-.00123") to fit, as fixed-column output does.
        const std::size_t zero = text.find("0.");
        if (zero != std::string::npos && (zero == 0 || (zero == 1 && text[0] == '-'))) {
            text.erase(zero, 1);
        }
    }
    if (static_cast<int>(text.size()) > width) {
        record.append(static_cast<std::size_t>(width), '*');
        return;
    }
    record.append(static_cast<std::size_t>(width) - text.size(), ' ');
    record += text;
}

std::string realText(double value, int decimals) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0.0 ? "Inf" : "-Inf";
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

template <class T> const T& valueAs(const FixedValue& value, std::string_view format) {
    if (const T* held = std::get_if<T>(&value)) {
        return *held;
    }
    throw std::invalid_argument("value of the wrong kind for record format: " +
                                std::string(format));
}

} // namespace

std::string formatFixed(std::string_view format, std::initializer_list<FixedValue> values) {
    if (format.size() < 2 || format.front() != '(' || format.back() != ')') {
        malformed(format);
    }
    std::string_view body = format.substr(1, format.size() - 2);
    const FixedValue* next = values.begin();
    std::string record;
    while (!body.empty()) {
        const std::size_t comma = body.find(',');
        const Edit edit = parseEdit(body.substr(0, comma), format);
        body.remove_prefix(comma == std::string_view::npos ? body.size() : comma + 1);
        if (edit.kind == 'X') {
            record.append(static_cast<std::size_t>(edit.repeat), ' ');
            continue;
        }
        for (int r = 0; r < edit.repeat; ++r) {
            if (next == values.end()) {
                return record;
            }
            const FixedValue& value = *next++;
            if (edit.kind == 'F') {
                appendRightAligned(record, realText(valueAs<double>(value, format), edit.decimals),
                                   edit.width);
            } else if (edit.kind == 'I') {
                appendRightAligned(record, std::to_string(valueAs<int>(value, format)), edit.width);
            } else {
                const std::string_view text = valueAs<std::string_view>(value, format);
                const int width = edit.width == 0 ? static_cast<int>(text.size()) : edit.width;
                appendRightAligned(record, std::string(text.substr(0, width)), width);
            }
        }
    }
    return record;
}

} // namespace quarvex
