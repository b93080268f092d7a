// Finding and fitting the peaks of a whole powder pattern, group by group, into the peak list
// of a phase.
#pragma once

#include "processing/PeakFitting.h"
#include "xray/XrayPeakModel.h"

#include <span>

namespace quarvex {

/// A fitting window reaches this many FWHM beyond its outer peaks.
inline constexpr float kWindowHalfWidths = 3.0F;
/// Peaks fitted together in one window at most: a longer run of overlapping peaks is split at
/// its widest gap (the cost of a fit grows with the square of its parameters).
inline constexpr int kMaxPeaksPerWindow = 6;
/// A peak nearer to an end of the pattern than this many FWHM is kept but not used: its far
/// side is missing, and the fitted centre is pulled towards the data.
inline constexpr float kEndMarginWidths = 2.0F;

/// Finds the peaks of the pattern (x in degrees 2-theta, ascending) with the peak search of
/// `settings`, groups peaks whose windows (kWindowHalfWidths FWHM each side) overlap, and fits
/// each group with its own background constant and the profile of `settings`. Every peak found
/// is in the list: a peak whose group did not converge or whose fit makes no sense (centre out
/// of its window, width not positive) keeps its search position, errors NaN, and USEPK false;
/// so does a peak near an end. d and its error come from `wavelength` (angstroms). An empty list
/// when no peak stands out of the noise. Throws QuarvexError for values that are not finite.
XrayPeakList fitPatternPeaks(std::span<const float> x, std::span<const float> y,
                             const PeakFitSettings& settings, double wavelength);

/// Sets PKDSP and PKDERR of every peak from its centre and the centre's error at `wavelength`
/// (angstroms): after a fit, and when the user gives the pattern another wavelength.
void setPeakDSpacings(XrayPeakList& peaks, double wavelength);

} // namespace quarvex
