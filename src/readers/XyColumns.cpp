#include "readers/XyColumns.h"

#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/StatedWavelength.h"
#include "specdata/SpecDataManager.h"

#include <string>

namespace quarvex {

namespace {

bool isComment(std::string_view line) {
    return line.empty() || line.front() == '#' || line.front() == ';' || line.front() == '!';
}

} // namespace

SpectrumRecord readXyColumns(std::string_view bytes, const std::filesystem::path& path) {
    SpectrumRecord record;
    std::size_t start = 0;
    std::int64_t lineNumber = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        end = end == std::string_view::npos ? bytes.size() : end;
        std::string_view line = trimmed(bytes.substr(start, end - start));
        start = end + 1;
        ++lineNumber;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        float x = 0.0F;
        float y = 0.0F;
        if (!isComment(line) && readAll(line, x, y)) {
            record.x.push_back(x);
            record.y.push_back(y);
        } else if (record.x.empty()) {
            const std::optional<double> wavelength = statedWavelength(line); // a header line
            if (wavelength && record.waveInfo.empty()) {
                record.waveInfo = shortestText(*wavelength);
            }
        } else if (!isComment(line)) {
            throw QuarvexError(path.string() + ": line " + std::to_string(lineNumber) +
                                   ": not 2-theta and counts",
                               std::string(kDataFileErrorTitle));
        }
    }
    if (record.x.empty()) {
        throw QuarvexError(path.string() + ": no line with 2-theta and counts",
                           std::string(kDataFileErrorTitle));
    }
    return record;
}

} // namespace quarvex
