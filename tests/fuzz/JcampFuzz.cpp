// Fuzz target: the JCAMP-DX reader (AFFN, ASDF, pair tables, LINK blocks), then its writer and
// the reader again on what was written.
#include "FuzzSupport.h"
#include "ReaderChecks.h"

#include "common/QuarvexError.h"
#include "readers/JcampReader.h"
#include "readers/JcampWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder();
    const auto path = fuzz::writeFile(folder / "input.jdx", fuzz::asText(data, size));
    std::vector<SpectrumRecord> spectra;
    try {
        spectra = readJcampDx(path, {});
    } catch (const QuarvexError&) {
        return 0;
    }
    fuzz::requireWholeRecords(spectra);
    writeJcampDxFile(folder / "again.jdx", spectra.front());
    const std::vector<SpectrumRecord> again = readJcampDx(folder / "again.jdx", {});
    if (again.size() != 1 || again.front().x != spectra.front().x ||
        again.front().y != spectra.front().y) {
        fuzz::fail("a spectrum written as JCAMP-DX reads back different");
    }
    return 0;
}
