// How the loaded spectra are arranged for drawing: visibility, the primary spectrum, stacking,
// scaling and the data type.
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <string>
#include <string_view>

namespace quarvex {

/// Title of the messages of the scale and data-type operations.
inline constexpr std::string_view kAdjustScaleTitle = "Adjust Scale";
inline constexpr std::string_view kAdjustDataTypeTitle = "Adjust Data Type";

/// Empty space between two stacked spectra, in drawn units (one automatic spectrum is 1 high).
inline constexpr float kStackGap = 0.1F;

/// The longest data type kept (a fixed-size value per spectrum).
inline constexpr std::size_t kDataTypeWidth = 16;

/// Sets Y_EXTREMES of every spectrum to the smallest and largest of its valid y values.
void RESET_YVALS(SPECDATA_GLOBALS& specdata);

/// Sets STACK_BUFF of every spectrum. With `stack`, spectrum 1 sits at 0 and each later visible
/// spectrum sits kStackGap above the top of the visible one below it; an invisible spectrum takes
/// the offset it would have but adds no height. Without `stack` every offset is 0 (overlay).
void RESETSTACK(SPECDATA_GLOBALS& specdata, bool stack);

/// The y range a spectrum's drawing spans: SCALE_FACT · (ymax − ymin) / ABS_SCALE, or SCALE_FACT
/// with automatic scale (ABS_SCALE 0); 0 for a flat spectrum.
float drawnHeight(const SPECDATA_GLOBALS& specdata, int index);

/// Where the value y of spectrum `index` is drawn:
/// STACK_BUFF + SCALE_FACT · (y − ymin) / s, s = ABS_SCALE when positive, else ymax − ymin
/// (1 for a flat spectrum). Automatic scale therefore draws every spectrum 0 to SCALE_FACT high.
float drawnY(const SPECDATA_GLOBALS& specdata, int index, float y);

/// Makes `index` the one active (primary) spectrum. An index out of range changes nothing.
void MAKE_PRIMARY(SPECDATA_GLOBALS& specdata, int index);

/// The index of the primary spectrum; when none is marked (after a deletion), the last spectrum
/// becomes primary. -1 when nothing is loaded.
int ensurePrimary(SPECDATA_GLOBALS& specdata);

/// Shows or hides a spectrum in the view. An index out of range changes nothing.
void setSpectrumVisible(SPECDATA_GLOBALS& specdata, int index, bool visible);

/// Sets SCALE_FACT and ABS_SCALE of a spectrum. Throws QuarvexError (title "Adjust Scale") and
/// changes nothing when the factor is not a positive finite number or the absolute scale is
/// negative or not finite.
void ADJUST_SCALE(SPECDATA_GLOBALS& specdata, int index, float scaleFactor, float absoluteScale);

/// Sets DTYPE of a spectrum to the trimmed, upper-case text ("raman" becomes "RAMAN"). Throws
/// QuarvexError (title "Adjust Data Type") and changes nothing when the text is empty, longer
/// than kDataTypeWidth or holds a blank.
void ADJUST_DATA_TYPE(SPECDATA_GLOBALS& specdata, int index, std::string_view dataType);

/// What the x axis of a data type measures.
enum class XAxisKind {
    RamanShift, ///< "RAMAN": Raman shift in cm-1
    Energy,     ///< "ENERGY": an energy-calibrated spectrum
    TwoTheta    ///< every other type: a diffraction pattern over 2-theta in degrees
};

XAxisKind xAxisKindOf(std::string_view dataType);

} // namespace quarvex
