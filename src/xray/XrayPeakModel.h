// The X-ray data model of an observed pattern: its fitted peaks, and the phases that own them
// with their input reflections, refinement switches and peak-to-reflection assignments.
#pragma once

#include "xray/XraySymmetry.h"

#include <array>
#include <string>
#include <vector>

namespace quarvex {

/// Profile parameters of one peak in the fitter's layout: area, centre, FWHM and Lorentzian
/// fraction for the pseudo-Voigt profile (PKTYPE 2); height, centre, width and 0 for the
/// Gaussian (PKTYPE 1). Centre and widths in degrees 2-theta.
using PeakParameters = std::array<float, 4>;

/// One peak with all its fields, as a value (a row of XrayPeakList).
struct XrayPeak {
    PeakParameters parameters{};       ///< PKPRMS
    PeakParameters errors{};           ///< PKERR: standard errors (NaN when not available)
    float dSpacing = 0.0F;             ///< PKDSP: d of the centre at the first wavelength, A
    float dSpacingError = 0.0F;        ///< PKDERR, A
    bool use = true;                   ///< USEPK: the peak takes part in matching and refining
    int type = 2;                      ///< PKTYPE: 1 Gaussian, 2 pseudo-Voigt
    std::array<float, 2> bounds{};     ///< PKBND: the fitting window the peak came from, degrees
    std::array<float, 2> background{}; ///< the background constant of that fit and its error
};

/// The fitted peaks of one phase as parallel arrays (peak k is index k-1 of each).
struct XrayPeakList {
    std::vector<PeakParameters> PKPRMS;
    std::vector<PeakParameters> PKERR;
    std::vector<float> PKDSP;
    std::vector<float> PKDERR;
    std::vector<bool> USEPK;
    std::vector<int> PKTYPE;
    std::vector<std::array<float, 2>> PKBND;
    std::vector<std::array<float, 2>> PKBKG; ///< the extra pair of the peak files

    int count() const { return static_cast<int>(PKDSP.size()); }
    /// Peak `k` (0-based) as one value.
    XrayPeak peak(int k) const;
    /// Adds a peak at the end.
    void append(const XrayPeak& peak);
    /// The peak's centre, degrees 2-theta.
    float twoTheta(int k) const { return PKPRMS[static_cast<std::size_t>(k)][1]; }
    /// Full width at half maximum (degrees) and height above the background of peak `k`.
    float fwhm(int k) const;
    float height(int k) const;
};

/// The h k l given to one peak, with the wavelength it diffracts (1 = the first).
struct PeakAssignment {
    int peak = 0;                   ///< index into the phase's peaks (0-based; files count from 1)
    std::array<int, 3> hkl{};       ///< Miller indices
    int wave = 1;                   ///< wavelength number, 1 to 3
    float referenceTwoTheta = 0.0F; ///< the reflection's 2-theta at that wavelength (NaN: none)
};

/// One phase (mineral) of the pattern.
struct XrayPhase {
    std::string name;
    int SYM = kSymUnknown; ///< crystal system of the refinement
    std::string source;    ///< the reference file the input reflections were taken from
    XrayPeakList peaks;    ///< the fitted peaks of the phase
    /// Input reflections: the reference reflections the phase's peaks are indexed from.
    std::vector<std::array<int, 3>> IHKL;
    std::vector<float> IDSP;    ///< their d-spacings, A
    std::vector<float> IINTS;   ///< their intensities
    std::array<float, 6> ICP{}; ///< input cell: a, b, c (A), alpha, beta, gamma (degrees)
    bool USEICP = false;        ///< the refinement starts its iteration from ICP
    bool USEIHKL = true;        ///< peaks are matched to the input reflections (else to the active
                                ///< reference patterns of the list)
    bool USEIINTS = true;       ///< overlapping reflections are told apart by their intensities
    std::vector<PeakAssignment> assignments; ///< in ascending peak order, one per peak at most

    /// Number of input reflections.
    int NUMINP() const { return static_cast<int>(IDSP.size()); }
};

} // namespace quarvex
