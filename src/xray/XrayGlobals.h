// State groups of the X-ray side: reference patterns, peaks and the refinement blocks.
#pragma once

#include "xray/RefineState.h" // the refinement blocks PARMMAX, INOUTPARMS, DATASTFF
#include "xray/XrayPeakModel.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace quarvex {

/// Diffraction-pattern state: the loaded reference patterns (`ReferencePattern`) as parallel
/// arrays. Pattern k (numbered from 1 for the user) is index k-1 of every per-pattern array; the
/// reflection arrays hold `reflectionDimension` rows for every pattern, column by column, of
/// which the first `NUMDATA` are meaningful. The arrays named ..._TEMP are the working copies
/// through which the list is grown, reordered and shrunk.
struct DIFF_GLOBALS {
    std::vector<std::string> NAME;  ///< file name
    std::vector<std::string> PATH;  ///< folder of the file
    std::vector<std::string> TITLE; ///< the file's first line when it is not a key (the mineral)
    std::vector<std::string> SPACE_GROUP;           ///< text after "SPACE GROUP:", trimmed
    std::vector<int> NUMDATA;                       ///< reflections of each pattern
    std::vector<std::array<float, 6>> CELL_PARAMS;  ///< a, b, c (A), alpha, beta, gamma (deg)
    std::vector<int> SYM;                           ///< symmetry code (XraySymmetry.h)
    std::vector<int> MODE;                          ///< table mode 0, 1 or 2
    std::vector<std::array<double, 2>> WAVELENGTHS; ///< from the file, A; 0 when not given
    std::vector<bool> ACTIVE;                       ///< shown and used for matching
    std::vector<std::uint32_t> BRUSH;               ///< colour of the marks, 0xRRGGBB
    std::vector<std::vector<std::string>> NOTES;    ///< what the reader had to tell
    std::vector<float> TWO_THETA;        ///< 2-theta, degrees (mode 2: at the first wavelength)
    std::vector<float> INTENS;           ///< intensity (mode 2: at the first wavelength)
    std::vector<float> DSPACE;           ///< d-spacing, A
    std::vector<float> TWO_THETA2;       ///< mode 2: 2-theta at the second wavelength, else 0
    std::vector<float> INTENS2;          ///< mode 2: intensity at the second wavelength, else 0
    std::vector<std::array<int, 3>> HKL; ///< h, k, l
    int reflectionDimension = 0;         ///< rows of the reflection arrays: the largest NUMDATA

    std::vector<std::string> NAME_TEMP;
    std::vector<std::string> PATH_TEMP;
    std::vector<std::string> TITLE_TEMP;
    std::vector<std::string> SG_TEMP;
    std::vector<int> NDD_TEMP;
    std::vector<std::array<float, 6>> CP_TEMP;
    std::vector<int> SYM_TEMP;
    std::vector<int> MODE_TEMP;
    std::vector<std::array<double, 2>> WAVE_TEMP;
    std::vector<bool> ACT_TEMP;
    std::vector<std::uint32_t> BRUSH_TEMP;
    std::vector<std::vector<std::string>> NOTE_TEMP;
    std::vector<float> DTT_TEMP;
    std::vector<float> DINT_TEMP;
    std::vector<float> DSP_TEMP;
    std::vector<float> DTT2_TEMP;
    std::vector<float> DINT2_TEMP;
    std::vector<std::array<int, 3>> DHKL_TEMP;
    int dimensionTemp = 0;

    /// Number of loaded patterns.
    int count() const { return static_cast<int>(NUMDATA.size()); }

    /// The meaningful rows of one reflection array for pattern `k` (0-based), e.g.
    /// `diff.reflections(diff.DSPACE, k)`.
    template <class T> std::span<const T> reflections(const std::vector<T>& values, int k) const {
        return {values.data() +
                    static_cast<std::size_t>(k) * static_cast<std::size_t>(reflectionDimension),
                static_cast<std::size_t>(NUMDATA[static_cast<std::size_t>(k)])};
    }

    /// ACTIVE_ARRAY: the indices (0-based) of the active patterns, in list order.
    std::vector<int> ACTIVE_ARRAY() const;
};

/// X-ray peak state: the observed pattern's phases with their peaks, and the project.
struct XRAY_PEAK_GLOBALS {
    std::vector<XrayPhase> phases;     ///< phase n of the user is index n-1
    std::vector<double> wavelengths;   ///< the pattern's wavelengths (1 to 3), A; first = K-alpha1
    int pattern = -1;                  ///< the pattern's spectrum index (0-based), -1 for none
    std::filesystem::path projectFile; ///< main file of the open project, empty for none
};

} // namespace quarvex
