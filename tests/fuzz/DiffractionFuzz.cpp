// Fuzz target: the diffraction-format reader (xylib behind our checks). The first byte picks
// the file's extension, so that the formats recognised only with theirs are reached too.
#include "FuzzSupport.h"
#include "ReaderChecks.h"

#include "common/QuarvexError.h"
#include "readers/DiffractionReader.h"

#include <array>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    static constexpr std::array<const char*, 12> kExtensions = {
        "raw", "xrdml", "udf", "rd", "uxd", "dat", "cpi", "dbw", "cif", "xy", "xye", "txt"};
    if (size == 0) {
        return 0;
    }
    const std::string extension = kExtensions[data[0] % kExtensions.size()];
    const std::string_view content = fuzz::asText(data + 1, size - 1);
    const auto path = fuzz::writeFile(fuzz::freshFolder() / ("scan." + extension), content);
    static_cast<void>(looksLikeDiffractionFile(content.substr(0, 4096), extension));
    try {
        const auto records = readDiffractionFile(path);
        fuzz::requireWholeRecords(records);
        for (const SpectrumRecord& record : records) {
            if (record.dtype != "XRD") {
                fuzz::fail("a pattern not typed XRD");
            }
        }
    } catch (const QuarvexError&) {
    }
    return 0;
}
