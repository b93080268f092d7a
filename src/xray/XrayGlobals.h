// State groups of the X-ray side: reference patterns, peaks and the refinement blocks.
#pragma once

#include "xray/RefineState.h" // the refinement blocks PARMMAX, INOUTPARMS, DATASTFF

namespace quarvex {

/// Diffraction-pattern state: the loaded reference patterns.
struct DIFF_GLOBALS {};

/// X-ray peak state: the observed peaks of each phase.
struct XRAY_PEAK_GLOBALS {};

} // namespace quarvex
