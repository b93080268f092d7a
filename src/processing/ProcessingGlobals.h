// State groups of spectrum processing and peak fitting.
#pragma once

#include "processing/CosmicRays.h"

namespace quarvex {

/// Interpolation and normalisation settings.
struct INTERP_AND_NORM_GLOBALS {};

/// Raman peak lists.
struct RAMAN_PEAK_GLOBALS {};

/// Peak-fitting state.
struct PEAK_ROUTINES_GLOBALS {};

/// Manual cosmic-ray-event removal state: while `active`, a click on the view removes the spike
/// nearest to it, with these parameters (run width, neighbours of the replacing fit).
struct MANCRE_GLOBALS {
    bool active = false;
    DespikeParameters parameters;
};

} // namespace quarvex
