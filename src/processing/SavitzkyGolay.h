// Savitzky-Golay smoothing and derivatives.
#pragma once

#include <span>
#include <vector>

namespace quarvex {

/// Parameters of a Savitzky-Golay filter.
struct SavitzkyGolayParameters {
    int windowPoints = 7; ///< points of the window: odd, > order
    int order = 2;        ///< degree of the local polynomial (0 to 6)
    int derivative = 0;   ///< 0 smooths; 1 or 2 gives the derivative in y per x unit (^2)
};

/// The odd number of points nearest to `width` x units at the spectrum's mean spacing (at least
/// 3).
int windowPointsForWidth(std::span<const float> x, double width);

/// The filtered values of (x, y) (Savitzky and Golay 1964): at each point the least-squares
/// polynomial of the window centred on it, or at the ends of the spectrum the polynomial of the
/// first or last full window evaluated at the point, so that no point is lost. x is taken as
/// evenly spaced at its mean spacing. Throws QuarvexError ("Smoothing") for a window wider than
/// the spectrum, an even window, an order not below the window, a derivative above the order
/// or above 2, or NaN values.
std::vector<float> savitzkyGolay(std::span<const float> x, std::span<const float> y,
                                 const SavitzkyGolayParameters& parameters);

} // namespace quarvex
