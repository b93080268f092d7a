// Fuzz target: the reader of reference diffraction-data files (".out" and the like), through a
// small buffer.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "xray/DiffFileReader.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto path =
        fuzz::writeFile(fuzz::freshFolder() / "Mineral.out", fuzz::asText(data, size));
    std::ostringstream table;
    try {
        const DiffFileRecord record = READ_DIFF_INFO(path, &table, fuzz::kReadBufferBytes);
        if (record.reflections.size() > static_cast<std::size_t>(kMaxDiffReflections)) {
            fuzz::fail("more reflections than the table holds");
        }
    } catch (const QuarvexError&) {
    }
    return 0;
}
