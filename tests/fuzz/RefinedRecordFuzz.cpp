// Fuzz target: a project's refinement record ("<stem>.refined"). Whatever reads writes and
// reads back to the same record.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "xray/RefinedCellRecord.h"

#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder();
    RefinedCellRecord record;
    try {
        record = readRefinedRecord(fuzz::writeFile(folder / "q.refined", fuzz::asText(data, size)));
    } catch (const QuarvexError&) {
        return 0;
    }
    {
        std::ofstream out(folder / "again.refined", std::ios::binary);
        writeRefinedRecord(out, record);
    }
    if (readRefinedRecord(folder / "again.refined") != record) {
        fuzz::fail("refinement record read back differently");
    }
    return 0;
}
