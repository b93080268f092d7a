// Fuzz target: the SPC reader; whatever it accepts is whole, finite and in ascending x.
#include "FuzzSupport.h"
#include "ReaderChecks.h"

#include "common/QuarvexError.h"
#include "readers/SpcReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const std::string_view input = fuzz::asText(data, size);
    const auto path = fuzz::writeFile(fuzz::freshFolder() / "sample.spc", input);
    static_cast<void>(looksLikeSpc(input.substr(0, 4096), ""));
    try {
        fuzz::requireWholeRecords(readSpcFile(path));
    } catch (const QuarvexError&) {
    }
    return 0;
}
