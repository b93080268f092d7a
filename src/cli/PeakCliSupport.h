// What the peak commands of quarvex-cli share: the x-range option, the settings from the
// preferences, loading the one spectrum they work on, and number formatting.
#pragma once

#include "processing/PeakFitting.h"
#include "shell/ProgramState.h"

#include <span>
#include <string>

namespace quarvex::cli {

/// An x-range given as "LO:HI".
struct XRange {
    float low = 0.0F;
    float high = 0.0F;
};

/// Reads "LO:HI" (two numbers, LO < HI). Throws QuarvexError for anything else.
XRange parseRange(const std::string& text);

/// Peak-search settings from the preferences (noise segments, threshold, smoothing, separation).
PeakSearchSettings searchSettings(const Preferences& preferences);

/// The x and y values of a spectrum file loaded into `state`.
struct LoadedSpectrum {
    std::span<const float> x;
    std::span<const float> y;
};

/// Reads the spectrum file (any format; `columns` as --columns) into the program state and
/// returns the points of its first spectrum.
LoadedSpectrum loadSpectrum(ProgramState& state, const std::string& file,
                            const std::string& columns);

/// A value for text output: 6 significant digits, "n/a" when not finite.
std::string formatValue(float value);

} // namespace quarvex::cli
