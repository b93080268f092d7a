// Cosmic-ray-event removal: spikes one or two points wide, far above the local noise, are
// replaced from a quadratic fitted to their neighbours.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace quarvex {

/// Parameters of the spike search. A spike is narrower than any Raman band: it is a run of at
/// most `maxWidth` points whose lowest point stands above both neighbours of the run by more than
/// `threshold` times the local noise and by at least `narrowness` of its height above the lowest
/// point nearby. A band sampled at two or more points per full width at half maximum drops by at
/// most half its height to its neighbours and is left alone.
struct DespikeParameters {
    float threshold = 8.0F;  ///< least excess over the neighbours, in multiples of the noise
    int maxWidth = 2;        ///< widest spike, in points (1 to 3)
    float narrowness = 0.7F; ///< least drop to the neighbours as a fraction of the height
    int fitPoints = 4;       ///< neighbours on each side for the replacing quadratic
};

/// The despiked values and the indices of the points replaced (ascending).
struct DespikeResult {
    std::vector<float> y;
    std::vector<std::size_t> spikes;
};

/// Finds and replaces every spike of (x, y), x ascending. The local noise is the segment noise
/// of FIND_NOISE_STDDEV over 32 points on each side; a spike's points are replaced by the
/// quadratic least-squares fit (single-precision LU inversion) of `fitPoints` neighbours on
/// each side, evaluated at their x. Throws QuarvexError ("Cosmic Rays") for fewer than 5
/// points, NaN values or parameters out of range.
DespikeResult RUN_AUTO_CRE(std::span<const float> x, std::span<const float> y,
                           const DespikeParameters& parameters = {});

/// Manual removal: the highest point within a few points of `clickX` and the run of up to
/// `maxWidth` points around it that stands highest above its neighbours are replaced like a
/// spike, without the noise and narrowness tests. `spikes` is empty when no point there stands
/// above both its neighbours. Throws QuarvexError ("Cosmic Rays") for a click outside the
/// spectrum.
DespikeResult removeSpikeNear(std::span<const float> x, std::span<const float> y, double clickX,
                              const DespikeParameters& parameters = {});

} // namespace quarvex
