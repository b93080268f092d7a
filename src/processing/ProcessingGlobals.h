// State groups of spectrum processing and peak fitting.
#pragma once

namespace quarvex {

/// Interpolation and normalisation settings.
struct INTERP_AND_NORM_GLOBALS {};

/// Raman peak lists.
struct RAMAN_PEAK_GLOBALS {};

/// Peak-fitting state.
struct PEAK_ROUTINES_GLOBALS {};

/// Manual cosmic-ray-event removal state.
struct MANCRE_GLOBALS {};

} // namespace quarvex
