// Fuzz target: the four library files (Slow, Fast, name list, name information; kPartSeparator
// between them) read by READ_LIBRARY through small buffers. Every score is NaN or within
// +-100: the unknown and each entry are normalised to norm 10 over the points they share at most
// (Cauchy-Schwarz), up to single-precision rounding.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "library/CreateLibraryFile.h"
#include "library/DotProdSearch.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder();
    const auto parts = fuzz::splitParts(fuzz::asText(data, size), 4);
    const std::string_view names[] = {kSlowLibraryFile, kFastLibraryFile, kNameListFile,
                                      kNameInfoFile};
    for (std::size_t k = 0; k < 4; ++k) {
        fuzz::writeFile(folder / names[k], parts[k]);
    }
    // Two bands between 100 and 1100 cm-1, every 0.5 cm-1.
    std::vector<float> x;
    std::vector<float> y;
    for (int i = 0; i <= 2000; ++i) {
        const float shift = 100.0F + 0.5F * static_cast<float>(i);
        const float a = (shift - 300.0F) / 6.0F;
        const float b = (shift - 700.0F) / 9.0F;
        x.push_back(shift);
        y.push_back(1000.0F / (1.0F + a * a) + 400.0F / (1.0F + b * b));
    }
    LIBRARY_GLOBALS library;
    try {
        READ_LIBRARY(folder, x, y, library, {}, fuzz::kReadBufferBytes);
    } catch (const QuarvexError&) {
        return 0;
    }
    for (const double score : library.PERC_MATCH) {
        if (!std::isnan(score) && std::fabs(score) > 100.01) {
            fuzz::fail("a score beyond 100");
        }
    }
    return 0;
}
