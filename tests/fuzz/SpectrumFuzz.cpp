// Fuzz target: the spectrum file reader (through a small buffer), then the resampling and the
// peak search on what it read.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "processing/InterpAndNorm.h"
#include "processing/PeakSearch.h"
#include "specdata/MineralInfo.h"
#include "specdata/SpecDataGlobals.h"
#include "specdata/SpecDataManager.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto path =
        fuzz::writeFile(fuzz::freshFolder() / "spectrum.txt", fuzz::asText(data, size));
    SPECDATA_GLOBALS specdata;
    MINERALINFO mineralInfo;
    int index = 0;
    try {
        index = READ_SPECDATA_FILE(specdata, mineralInfo, path, nullptr, fuzz::kReadBufferBytes);
    } catch (const QuarvexError&) {
        return 0;
    }
    const auto x = specdata.xValues(index);
    const auto y = specdata.yValues(index);
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
