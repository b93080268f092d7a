// A polynomial baseline through points the user picks on the spectrum.
#pragma once

#include "processing/BaselineFit.h"

#include <span>

namespace quarvex {

/// The least-squares polynomial of degree min(`degree`, anchors - 1) through the spectrum at the
/// anchor positions `anchorX` (x units), evaluated at every x. The spectrum's value at an anchor
/// is the mean of its `averagedPoints` nearest points, so that noise does not pull the curve.
/// Throws QuarvexError ("Background") for no anchors, an anchor outside the spectrum, a degree
/// below 0 or above 5, or NaN values.
BaselineFit polynomialBaseline(std::span<const float> x, std::span<const float> y,
                               std::span<const double> anchorX, int degree, int averagedPoints = 5);

} // namespace quarvex
