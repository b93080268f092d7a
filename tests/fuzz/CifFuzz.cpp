// Fuzz target: the CIF loader and the pattern computed from what it reads.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "xray/CifPattern.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto path =
        fuzz::writeFile(fuzz::freshFolder() / "Structure.cif", fuzz::asText(data, size));
    try {
        const DiffFileRecord record = readCifReference(path, {});
        for (const DiffReflection& r : record.reflections) {
            if (!std::isfinite(r.intensity) || r.intensity > 100.0F || !(r.dSpacing > 0.0F)) {
                fuzz::fail("a computed line out of its range");
            }
        }
    } catch (const QuarvexError&) {
    }
    return 0;
}
