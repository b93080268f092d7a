// Peak profiles for the fitters: sums of peaks plus a background constant, their derivatives,
// and the displayed width, height and area of one fitted peak.
#pragma once

#include <array>
#include <span>
#include <vector>

namespace quarvex {

/// A profile of the fitters: the value `y` at abscissa `x` of the sum of peaks with parameters
/// `a` (flat, per peak in the profile's layout, the background constant last) and the partial
/// derivative of `y` with respect to every parameter in `dyda` (same length as `a`).
using PeakModel = void (*)(float x, std::span<const float> a, float& y, std::span<float> dyda);

/// The profile setting of the peak fit (a preference).
enum class PeakProfile {
    gaussian = 1,    ///< GS_TOT: height, centre, width per peak
    pseudoVoigt = 2, ///< GD_TOT: area, centre, FWHM, Lorentzian fraction per peak
};

/// Parameters per peak: 3 for the Gaussian sum, 4 for the pseudo-Voigt sum.
int parametersPerPeak(PeakProfile profile);

/// The model function of a profile (GS_TOT or GD_TOT).
PeakModel peakModel(PeakProfile profile);

/// Sum of Gaussians H·exp(-t²), t = (x - x0)/w, with a(3k) = H, a(3k+1) = x0, a(3k+2) = w, plus
/// the background a(last). Exact derivatives. A width of 0 divides by zero (not checked).
void GS_TOT(float x, std::span<const float> a, float& y, std::span<float> dyda);

/// Sum of pseudo-Voigt peaks A·((1-η)·G + η·L) plus the background a(last), with a(4k) = A the
/// area, a(4k+1) = x0 the centre, a(4k+2) = w the full width at half maximum of both the
/// unit-area Gaussian G and the unit-area Lorentzian L, a(4k+3) = η the Lorentzian fraction.
/// Exact derivatives. A width of 0 divides by zero (not checked).
void GD_TOT(float x, std::span<const float> a, float& y, std::span<float> dyda);

/// A quantity derived from one peak's parameters, with its gradient with respect to them (in
/// the profile's per-peak order; unused entries 0), for the propagation of standard errors.
struct PeakQuantity {
    float value = 0.0F;
    std::array<float, 4> gradient{};
};

/// Displayed full width at half maximum of one peak (`peak`: its parameters), x units.
PeakQuantity PEAKWID(PeakProfile profile, std::span<const float> peak);

/// Displayed height of one peak above the background, y units.
PeakQuantity PEAKAMP(PeakProfile profile, std::span<const float> peak);

/// A peak described by what a user sees of it.
struct PeakShape {
    float height = 0.0F; ///< above the background, y units
    float centre = 0.0F; ///< x units
    float fwhm = 0.0F;   ///< full width at half maximum, x units
    float mix = 0.0F;    ///< Lorentzian fraction (pseudo-Voigt only)
};

/// Appends the parameters of the peak `shape` to `a` in the layout of `profile` (the inverse of
/// PEAKAMP and PEAKWID).
void appendPeak(PeakProfile profile, const PeakShape& shape, std::vector<float>& a);

/// Integrated area of one peak above the background, x·y units.
PeakQuantity peakArea(PeakProfile profile, std::span<const float> peak);

} // namespace quarvex
