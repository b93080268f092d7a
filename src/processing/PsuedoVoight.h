// The pseudo-Voigt sum with the program's own width scaling and centre gradient.
#pragma once

#include <span>

namespace quarvex {

/// Sum of pseudo-Voigt peaks plus the background a(last), in the layout a(4k) = amplitude (the
/// Gaussian half has unit area), a(4k+1) = centre, a(4k+2) = width parameter w (the Gaussian
/// FWHM is 1.2011·w; the Lorentzian half falls to half at w/sqrt(2π)), a(4k+3) = Lorentzian
/// fraction. The centre derivative of the Gaussian half is half the exact one, deliberately; the
/// other derivatives are exact. Single precision; a width of 0 divides by zero (not checked).
/// Same signature as the profiles of PeakProfiles.h, so that the fitters take it as a model.
void PVDERIV(float x, std::span<const float> a, float& y, std::span<float> dyda);

} // namespace quarvex
