// The stick pattern of a crystal structure read from a CIF: the reflections of a 2-theta range
// with their multiplicities, |F|^2 and Lorentz-polarisation, as a reference pattern.
#pragma once

#include "xray/DiffFileReader.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

struct CifCrystal;

/// Title of the messages about CIFs.
inline constexpr std::string_view kCifErrorTitle = "CIF Reference";

/// Cu K-alpha1, A: the wavelength of the shipped reference files.
inline constexpr double kCopperKAlpha1 = 1.540562;
/// More h k l triplets than this in the range are refused (a huge cell or a tiny wavelength).
inline constexpr long long kMaxCifHklTriplets = 8'000'000;

/// How a pattern is computed from a structure. The defaults are those of the shipped ".out"
/// files (docs/file-formats.md, "CIF reference patterns").
struct CifPatternSettings {
    double wavelength = kCopperKAlpha1; ///< A
    double twoThetaMin = 5.0;           ///< degrees
    double twoThetaMax = 90.0;          ///< degrees
    double defaultUIso = 0.0063;        ///< A^2 (B = 0.5 A^2) for sites without displacements
    double dTolerance = 0.00005;        ///< A: lines closer in d are one line
    double smallestIntensity = 0.05;    ///< lines weaker than this (on the 100 scale) are left out
};

/// Throws QuarvexError (kCifErrorTitle) for a wavelength that is not positive or a 2-theta
/// range that is not inside (0, 180) with its low end below its high end.
void checkCifPatternSettings(const CifPatternSettings& settings);

/// The pattern of `crystal`: every h k l with 2-theta in the range that the group does not
/// extinguish, one line per set of Laue-equivalent reflections (the member with the fewest
/// negative indices, then the largest, stands for it), I = |F|^2 x multiplicity x LP with
/// LP = (1 + cos^2 2theta) / (sin^2 theta cos theta), lines within dTolerance merged (summed,
/// under the strongest member's h k l), scaled to 100 and sorted by 2-theta. The record is
/// mode 1 with the wavelength, the cell, the space group and its crystal system; `name` and
/// `folder` are left empty. Throws QuarvexError when the range holds more than
/// kMaxCifHklTriplets triplets.
DiffFileRecord cifReferencePattern(const CifCrystal& crystal, const CifPatternSettings& settings);

/// The lines of the "For reference:" section of a pattern's ".out" file: its origin and how it
/// was computed.
std::vector<std::string> cifPatternDescription(const std::string& cifName,
                                               const CifPatternSettings& settings);

/// readCifCrystal then cifReferencePattern, with the file's name and folder.
DiffFileRecord readCifReference(const std::filesystem::path& path,
                                const CifPatternSettings& settings);

} // namespace quarvex
