#include "readers/DelimitedText.h"

#include "common/LineReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/DelimitedLayout.h"
#include "readers/RecordNotes.h"
#include "readers/SinglePrecision.h"
#include "readers/SpectrumFormats.h"
#include "specdata/PointOrder.h"
#include "specdata/SpecDataManager.h"

namespace quarvex {

namespace {

constexpr std::size_t kLineWidth = std::size_t{1} << 16; // rows of many columns
constexpr std::size_t kNameWidth = 256;
constexpr std::size_t kMaxLeadingComments = 20;

[[noreturn]] void throwDelimited(const std::filesystem::path& path, const std::string& what) {
    throw QuarvexError(path.string() + ": " + what, std::string(kDataFileErrorTitle));
}

std::string lineText(std::int64_t line) {
    return "line " + std::to_string(line);
}

// The column titles: the last leading line when it has one field per column.
std::vector<std::string> columnTitles(const DelimitedLayout& layout) {
    std::vector<std::string> titles;
    if (!layout.leadingLines.empty()) {
        std::vector<std::string_view> fields;
        splitFields(layout.leadingLines.back(), layout.separator, fields);
        if (fields.size() == layout.columns) {
            for (const std::string_view field : fields) {
                titles.push_back(fieldTitle(field));
            }
        }
    }
    if (titles.empty()) {
        for (std::size_t c = 1; c <= layout.columns; ++c) {
            titles.push_back("Column " + std::to_string(c));
        }
    }
    return titles;
}

ColumnChoice chooseColumns(const std::filesystem::path& path, const DelimitedLayout& layout,
                           const std::vector<std::string>& titles, const ReadOptions& options) {
    ColumnChoice choice;
    if (options.columns) {
        choice = *options.columns;
    } else if (layout.columns > 2 && options.chooseColumns) {
        const std::optional<ColumnChoice> chosen = options.chooseColumns(titles);
        if (!chosen) {
            throw ReadCancelled{};
        }
        choice = *chosen;
    }
    const auto columns = static_cast<int>(layout.columns);
    for (const int column : {choice.x, choice.y}) {
        if (column < 1 || column > columns) {
            throwDelimited(path, "column " + std::to_string(column) + " was asked for, but " +
                                     lineText(layout.firstDataLine) + " has " +
                                     std::to_string(columns) + " columns");
        }
    }
    return choice;
}

void readValue(const std::filesystem::path& path, std::string_view field, bool decimalComma,
               std::int64_t line, int column, float& value) {
    double wide = 0.0;
    if (!parseField(field, decimalComma, wide)) {
        throwDelimited(path, lineText(line) + ", column " + std::to_string(column) + ": \"" +
                                 fitted(field, 40) + "\" is not a number");
    }
    if (!fitsSinglePrecision(wide)) {
        throwDelimited(path, lineText(line) + ", column " + std::to_string(column) +
                                 ": the value is not a finite single-precision number");
    }
    value = static_cast<float>(wide);
}

void describe(SpectrumRecord& record, const std::filesystem::path& path,
              const DelimitedLayout& layout, const std::vector<std::string>& titles,
              ColumnChoice choice) {
    record.name = fitted(path.filename().string(), kNameWidth);
    record.path = fitted(path.string(), kNameWidth);
    record.dtype = std::string(kDefaultDataType);
    const bool named = !layout.leadingLines.empty() && !titles.front().starts_with("Column ");
    for (std::size_t i = 0;
         i + (named ? 1 : 0) < layout.leadingLines.size() && i < kMaxLeadingComments; ++i) {
        record.comments.push_back(layout.leadingLines[i]);
    }
    if (named) {
        record.comments.push_back(std::string(kXAxisKey) +
                                  titles[static_cast<std::size_t>(choice.x - 1)]);
        record.comments.push_back(std::string(kYAxisKey) +
                                  titles[static_cast<std::size_t>(choice.y - 1)]);
    }
}

} // namespace

bool isDelimitedText(std::string_view head, std::string_view extensionLower) {
    if (head.find('\0') != std::string_view::npos) {
        return false;
    }
    const DelimitedLayout layout = analyseDelimited(head, head.size() < kSniffBytes);
    if (layout.programKeys) {
        return false;
    }
    if (extensionLower == ".csv" || extensionLower == ".tsv") {
        return true;
    }
    if (layout.firstDataLine == 0 || layout.columns < 2 || !layout.consistent) {
        return false; // the program's reader takes lines of two numbers among others
    }
    return !layout.leadingLines.empty() || layout.separator == Separator::Semicolon ||
           layout.decimalComma || layout.quoted || layout.columns > 2;
}

std::vector<SpectrumRecord> readDelimitedText(const std::filesystem::path& path,
                                              const ReadOptions& options) {
    const std::string head = readFileHead(path);
    const DelimitedLayout layout = analyseDelimited(head, head.size() < kSniffBytes);
    if (layout.firstDataLine == 0) {
        throw QuarvexError("No data points found in " + path.string() +
                               ": no row of numbers in its first " +
                               std::to_string(kSniffBytes / 1024) + " KiB",
                           std::string(kDataFileErrorTitle));
    }
    if (layout.columns < 2) {
        throwDelimited(path, lineText(layout.firstDataLine) +
                                 " holds one column: an x and a y column are needed");
    }
    const std::vector<std::string> titles = columnTitles(layout);
    const ColumnChoice choice = chooseColumns(path, layout, titles, options);
    const auto needed = static_cast<std::size_t>(std::max(choice.x, choice.y));

    SpectrumRecord record;
    LineReader reader(path, kLineWidth);
    std::vector<std::string_view> fields;
    std::string_view line;
    while (reader.next(line)) {
        if (reader.lineNumber() < layout.firstDataLine || trimmed(line).empty()) {
            continue;
        }
        splitFields(line, layout.separator, fields);
        if (fields.size() < needed) {
            throwDelimited(path, lineText(reader.lineNumber()) + " has " +
                                     std::to_string(fields.size()) +
                                     (fields.size() == 1 ? " column" : " columns") + ", column " +
                                     std::to_string(needed) + " is missing");
        }
        float x = 0.0F;
        float y = 0.0F;
        readValue(path, fields[static_cast<std::size_t>(choice.x - 1)], layout.decimalComma,
                  reader.lineNumber(), choice.x, x);
        readValue(path, fields[static_cast<std::size_t>(choice.y - 1)], layout.decimalComma,
                  reader.lineNumber(), choice.y, y);
        record.x.push_back(x);
        record.y.push_back(y);
    }
    if (reader.notText()) {
        throwDelimited(path, "not a text file (it holds binary data)");
    }
    describe(record, path, layout, titles, choice);
    orderByAscendingX(record.x, record.y);
    std::vector<SpectrumRecord> spectra;
    spectra.push_back(std::move(record));
    return spectra;
}

} // namespace quarvex
