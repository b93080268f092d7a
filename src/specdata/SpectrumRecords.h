// One loaded spectrum taken out of the set as a record, and put back in place.
#pragma once

#include "specdata/SpecDataGlobals.h"

namespace quarvex {

/// A copy of spectrum `index` (0-based): name, path, points, data type, wavelength, header
/// values and comment lines.
SpectrumRecord spectrumRecord(const SPECDATA_GLOBALS& specdata, int index);

/// Replaces the points, data type, wavelength, header values and comment lines of spectrum
/// `index` with those of `record`; its name, path and drawing settings stay. The point count may
/// change (the arrays are rebuilt when it grows past the point dimension).
void replaceSpectrum(SPECDATA_GLOBALS& specdata, int index, const SpectrumRecord& record);

} // namespace quarvex
