// Statistics-sensitive non-linear iterative peak-clipping (SNIP) baseline.
#pragma once

#include "processing/BaselineFit.h"

#include <span>

namespace quarvex {

/// Parameters of the SNIP baseline, in x units.
struct SnipParameters {
    double halfWidth = 80.0; ///< widest clipping half-window in x units; wider than any band
};

/// The SNIP baseline of (x, y) (Ryan et al. 1988; Morhac et al. 1997): each point is replaced by
/// the smaller of itself and the mean of its neighbours p points away, for windows p growing in
/// twelve equal steps up to the half-width. The values are clipped as they are, without the
/// log-log-square-root transform of counting spectra: that transform bends a broad fluorescence
/// background so much that clipping cuts into it. Throws QuarvexError ("Background") for fewer than
/// 10 points, NaN values or a half-width shorter than two point spacings.
BaselineFit snipBaseline(std::span<const float> x, std::span<const float> y,
                         const SnipParameters& parameters);

} // namespace quarvex
