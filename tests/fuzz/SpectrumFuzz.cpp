// Fuzz target: the spectrum file reader (through a small buffer, and from memory: the same
// record), then the resampling and the peak search on what it read.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "processing/InterpAndNorm.h"
#include "processing/PeakSearch.h"
#include "specdata/MineralInfo.h"
#include "specdata/SpecDataGlobals.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <cmath>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const std::string_view text = fuzz::asText(data, size);
    const auto path = fuzz::writeFile(fuzz::freshFolder() / "spectrum.txt", text);
    // The reading from memory (the format entry point's) gives the file's record or its failure.
    SpectrumRecord fromMemory;
    bool memoryFailed = false;
    try {
        fromMemory = READ_SPECDATA_RECORD(path, text);
    } catch (const QuarvexError&) {
        memoryFailed = true;
    }
    SPECDATA_GLOBALS specdata;
    MINERALINFO mineralInfo;
    int index = 0;
    try {
        index = READ_SPECDATA_FILE(specdata, mineralInfo, path, nullptr, fuzz::kReadBufferBytes);
    } catch (const QuarvexError&) {
        if (!memoryFailed) {
            fuzz::fail("the reading from memory took a file the file reading refused");
        }
        return 0;
    }
    const auto x = specdata.xValues(index);
    const auto y = specdata.yValues(index);
    if (memoryFailed || !std::equal(x.begin(), x.end(), fromMemory.x.begin(), fromMemory.x.end()) ||
        !std::equal(y.begin(), y.end(), fromMemory.y.begin(), fromMemory.y.end())) {
        fuzz::fail("the reading from memory gave other points than the file reading");
    }
    for (const float step : {1.0F, 2.0F}) {
        try {
            const InterpData grid = resampleSpectrum(x, y, step, true);
            if (grid.capacity() > kMaxResampleRows) {
                fuzz::fail("a grid above the cap");
            }
        } catch (const QuarvexError&) {
        }
    }
    try {
        const PeakSearchResult found = findPeaks(x, y, PeakSearchSettings{}, x.front(), x.back());
        for (const FoundPeak& peak : found.peaks) {
            if (!(peak.x >= x.front() && peak.x <= x.back())) {
                fuzz::fail("a peak outside the range searched");
            }
        }
    } catch (const QuarvexError&) {
    }
    return 0;
}
