#include "readers/DelimitedLayout.h"

#include "common/ListReader.h"
#include "common/TextUtils.h"

#include <algorithm>
#include <array>

namespace quarvex {

namespace {

constexpr std::size_t kSampleLines = 200;
constexpr std::array<std::string_view, 5> kProgramKeys{"##", "<COM>", "CAL_OFFSET", "CAL_SLOPE",
                                                       "TWO_THETA"};

char separatorChar(Separator separator) {
    switch (separator) {
    case Separator::Comma:
        return ',';
    case Separator::Semicolon:
        return ';';
    case Separator::Tab:
        return '\t';
    case Separator::Blank:
        break;
    }
    return ' ';
}

// Counts occurrences of `c` outside double quotes.
std::size_t countOutsideQuotes(std::string_view line, char c) {
    std::size_t count = 0;
    bool inQuotes = false;
    for (const char ch : line) {
        if (ch == '"') {
            inQuotes = !inQuotes;
        } else if (ch == c && !inQuotes) {
            ++count;
        }
    }
    return count;
}

// The separator that the most sampled lines use: tab, then semicolon, then comma, else blanks.
Separator chooseSeparator(const std::vector<std::string_view>& lines) {
    for (const Separator candidate : {Separator::Tab, Separator::Semicolon, Separator::Comma}) {
        const auto using_ = std::count_if(lines.begin(), lines.end(), [&](std::string_view line) {
            return countOutsideQuotes(line, separatorChar(candidate)) > 0;
        });
        if (using_ * 2 >= static_cast<std::ptrdiff_t>(lines.size())) {
            return candidate;
        }
    }
    return Separator::Blank;
}

bool allNumbers(const std::vector<std::string_view>& fields, bool decimalComma) {
    double value = 0.0;
    return !fields.empty() && std::all_of(fields.begin(), fields.end(), [&](std::string_view f) {
        return parseField(f, decimalComma, value);
    });
}

} // namespace

void splitFields(std::string_view line, Separator separator,
                 std::vector<std::string_view>& fields) {
    fields.clear();
    const char mark = separatorChar(separator);
    std::size_t i = 0;
    while (i <= line.size()) {
        if (separator == Separator::Blank) {
            while (i < line.size() && isBlank(line[i])) {
                ++i;
            }
            if (i == line.size()) {
                return;
            }
        }
        const std::size_t start = i;
        bool inQuotes = false;
        while (i < line.size() && (inQuotes || (separator == Separator::Blank ? !isBlank(line[i])
                                                                              : line[i] != mark))) {
            inQuotes = line[i] == '"' ? !inQuotes : inQuotes;
            ++i;
        }
        std::string_view field = trimmed(line.substr(start, i - start));
        if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
            field = field.substr(1, field.size() - 2);
        }
        fields.push_back(field);
        ++i; // past the separator
    }
}

bool parseField(std::string_view field, bool decimalComma, double& value) {
    if (field.empty() || field.size() > 64) {
        return false;
    }
    if (!decimalComma || field.find(',') == std::string_view::npos) {
        return parseReal(field, value);
    }
    std::array<char, 64> text{};
    std::replace_copy(field.begin(), field.end(), text.begin(), ',', '.');
    return parseReal(std::string_view(text.data(), field.size()), value);
}

std::string fieldTitle(std::string_view field) {
    std::string title;
    for (std::size_t i = 0; i < field.size(); ++i) {
        title += field[i];
        if (field[i] == '"' && i + 1 < field.size() && field[i + 1] == '"') {
            ++i;
        }
    }
    return title;
}

DelimitedLayout analyseDelimited(std::string_view head, bool wholeFile) {
    DelimitedLayout layout;
    std::vector<std::string_view> lines; // non-blank lines of the sample
    std::vector<std::int64_t> lineNumbers;
    std::int64_t lineNumber = 0;
    while (!head.empty() && lines.size() < kSampleLines) {
        const std::size_t end = head.find('\n');
        if (end == std::string_view::npos && !wholeFile) {
            break; // cut by the end of the sample
        }
        std::string_view line = head.substr(0, end);
        head = end == std::string_view::npos ? std::string_view() : head.substr(end + 1);
        ++lineNumber;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (lineNumber == 1 && line.starts_with("\xEF\xBB\xBF")) {
            line.remove_prefix(3); // a byte-order mark
        }
        if (std::any_of(kProgramKeys.begin(), kProgramKeys.end(),
                        [&](std::string_view key) { return startsWithKey(trimmed(line), key); })) {
            // The program's own text: never taken as delimited, so nothing more to learn (every
            // reference file of the library is sniffed, and most are of this kind).
            layout.programKeys = true;
            return layout;
        }
        if (!trimmed(line).empty()) {
            lines.push_back(line);
            lineNumbers.push_back(lineNumber);
        }
    }
    if (lines.empty()) {
        return layout;
    }
    layout.separator = chooseSeparator(lines);
    std::vector<std::string_view> fields;
    // A decimal comma shows as a comma inside a field when commas do not separate.
    if (layout.separator != Separator::Comma) {
        for (const std::string_view line : lines) {
            splitFields(line, layout.separator, fields);
            double value = 0.0;
            if (std::any_of(fields.begin(), fields.end(), [&](std::string_view f) {
                    return f.find(',') != std::string_view::npos && parseField(f, true, value);
                })) {
                layout.decimalComma = true;
                break;
            }
        }
    }
    layout.consistent = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        layout.quoted = layout.quoted || lines[i].find('"') != std::string_view::npos;
        splitFields(lines[i], layout.separator, fields);
        const bool numbers = allNumbers(fields, layout.decimalComma);
        if (layout.firstDataLine == 0) {
            if (numbers) {
                layout.firstDataLine = lineNumbers[i];
                layout.columns = fields.size();
            } else {
                layout.leadingLines.emplace_back(lines[i]);
            }
        } else if (!numbers || fields.size() != layout.columns) {
            layout.consistent = false;
        }
    }
    return layout;
}

} // namespace quarvex
