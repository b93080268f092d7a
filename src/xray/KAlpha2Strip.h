// Removal of the K-alpha2 component from a powder pattern measured with K-alpha1 + K-alpha2
// (Rachinger's method), so that the peak search sees K-alpha1 lines only.
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace quarvex {

/// Intensity of K-alpha2 relative to K-alpha1 (the 2p1/2 : 2p3/2 occupancy ratio).
inline constexpr double kKAlpha2Ratio = 0.5;

/// The K-alpha2 wavelength (angstroms) of the anode whose K-alpha1 is `kAlpha1` (Cr, Fe, Co, Cu,
/// Mo, Ag; within 2e-4 angstroms); nullopt for any other wavelength.
std::optional<double> kAlpha2For(double kAlpha1);

/// The pattern with its K-alpha2 part removed: y1(x) = y(x) - ratio y1(x1), x1 = 2 asin(
/// (lambda1 / lambda2) sin(x / 2)) the K-alpha1 position whose K-alpha2 line falls on x, y1(x1)
/// interpolated linearly in the stripped values already found (Rachinger 1948). x is 2-theta in
/// degrees, ascending; where x1 lies before the first point its contribution is taken as 0.
/// Empty when x and y differ in length, x is not ascending or the wavelengths are not
/// 0 < lambda1 < lambda2.
std::vector<float> stripKAlpha2(std::span<const float> x, std::span<const float> y, double lambda1,
                                double lambda2, double ratio = kKAlpha2Ratio);

} // namespace quarvex
