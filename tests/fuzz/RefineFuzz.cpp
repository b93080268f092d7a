// Fuzz target: the refinement run (REFINEMAIN) on a "_refine.DAT" input, report included.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "xray/Refine.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto path =
        fuzz::writeFile(fuzz::freshFolder() / "case_refine.DAT", fuzz::asText(data, size));
    INOUTPARMS io;
    auto blocks = std::make_unique<DATASTFF>(); // large: not on the stack
    try {
        REFINEMAIN(path, io, *blocks);
    } catch (const QuarvexError&) {
    }
    return 0;
}
