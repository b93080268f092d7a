// Fuzz target: the delimited text reader (CSV, TSV, ...), through the format detection, with
// the column dialog answered by the last and the first column.
#include "FuzzSupport.h"
#include "ReaderChecks.h"

#include "common/QuarvexError.h"
#include "readers/SpectrumFormats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto path = fuzz::writeFile(fuzz::freshFolder() / "table.csv", fuzz::asText(data, size));
    ReadOptions options;
    options.chooseColumns = [](const std::vector<std::string>& titles) {
        return std::optional(ColumnChoice{static_cast<int>(titles.size()), 1});
    };
    try {
        fuzz::requireWholeRecords(readSpectrumFile(path, options).spectra);
    } catch (const QuarvexError&) {
    }
    return 0;
}
