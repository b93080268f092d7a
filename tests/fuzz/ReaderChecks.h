// What every spectrum a reader returns must satisfy, checked by the readers' fuzz targets.
#pragma once

#include "FuzzSupport.h"
#include "specdata/SpecDataGlobals.h"

#include <cmath>
#include <vector>

namespace quarvex::fuzz {

/// Fails unless each spectrum has as many x as y, all finite, x strictly ascending.
inline void checkSpectra(const std::vector<SpectrumRecord>& spectra) {
    for (const SpectrumRecord& s : spectra) {
        if (s.x.size() != s.y.size()) {
            fail("x and y of different lengths");
        }
        for (std::size_t i = 0; i < s.x.size(); ++i) {
            if (!std::isfinite(s.x[i]) || !std::isfinite(s.y[i])) {
                fail("a value that is not finite");
            }
            if (i > 0 && !(s.x[i - 1] < s.x[i])) {
                fail("x not strictly ascending");
            }
        }
    }
}

} // namespace quarvex::fuzz
