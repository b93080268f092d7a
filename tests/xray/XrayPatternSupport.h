// Test helpers for the X-ray workflow: the reference files read by a parser of the tests' own,
// and synthetic powder patterns made from them.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quarvex::test {

/// One table line of a reference file.
struct ReferenceLine {
    double twoTheta = 0.0, intensity = 0.0, dSpacing = 0.0;
    std::array<int, 3> hkl{};
};

/// A reference file as the tests read it (independently of the program's reader).
struct ReferenceTable {
    std::array<double, 6> cell{};
    std::vector<double> wavelengths;
    std::vector<ReferenceLine> lines;
};

/// Parses data/xray/reference/<name>: the cell, the wavelengths and the table lines.
ReferenceTable readReferenceTable(const std::string& name);

/// How a synthetic pattern is made.
struct PatternRecipe {
    double zeroShiftDeg = 0.0; ///< added to every peak position
    bool kAlpha2 = false;      ///< add each line at the second wavelength with half its height
    std::uint32_t seed = 1;    ///< of the counting noise
    double firstDeg = 10.0, lastDeg = 90.0, stepDeg = 0.01;
};

/// The text of a spectrum file ("dtype: XRD", "wave:" the first wavelength) holding a pattern
/// of the reference's lines: pseudo-Voigt peaks (Lorentzian fraction 0.5, FWHM growing with
/// angle) of height 50 x intensity at 2-theta from each line's d, on a background of 50 counts,
/// with Gaussian counting noise of sqrt(counts).
std::string syntheticPatternText(const ReferenceTable& table, const PatternRecipe& recipe);

} // namespace quarvex::test
