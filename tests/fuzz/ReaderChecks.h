// What every spectrum a file reader accepts must satisfy, checked by the readers' fuzz targets.
#pragma once

#include "FuzzSupport.h"

#include "specdata/SpecDataGlobals.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quarvex::fuzz {

/// Stops the run unless every record has points, x and y of one length, finite values and
/// ascending x.
inline void requireWholeRecords(const std::vector<SpectrumRecord>& records) {
    const auto notFinite = [](float v) { return !std::isfinite(v); };
    for (const SpectrumRecord& record : records) {
        if (record.x.empty() || record.x.size() != record.y.size()) {
            fail("a spectrum without points or with x and y of different lengths");
        }
        if (std::any_of(record.x.begin(), record.x.end(), notFinite) ||
            std::any_of(record.y.begin(), record.y.end(), notFinite)) {
            fail("a value that is not finite");
        }
        if (!std::is_sorted(record.x.begin(), record.x.end())) {
            fail("x not ascending");
        }
    }
}

} // namespace quarvex::fuzz
