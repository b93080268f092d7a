// Writing the refinement input "_refine.DAT" from a phase's matched peaks.
#pragma once

#include "xray/RefineState.h"
#include "xray/XrayPeakModel.h"

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace quarvex {

/// One indexed line of the input.
struct RefineInputLine {
    std::array<int, 3> hkl{};
    int wave = 1;          ///< wavelength number
    double twoTheta = 0.0; ///< observed, degrees
};

/// Everything the input file holds (layout in docs/refine.md).
struct RefineInputContent {
    std::string title;
    int sym = kSymUnknown;           ///< crystal system
    std::array<float, 6> cell{};     ///< starting cell; all zero: none
    bool startFromCell = false;      ///< switch 4: iterate from the cell instead of the estimate
    std::vector<double> wavelengths; ///< 1 to 3, angstroms
    bool machineErrorSearch = false; ///< switch 1
    bool reportIterations = false;   ///< switch 2
    std::vector<RefineInputLine> lines;
};

/// The input file of a pattern: beside it, named <base name>_refine.DAT.
std::filesystem::path refineInputPath(const std::filesystem::path& patternPath);

/// Square-root weight that makes a line count as an equal error in 2-theta: its d(2-theta)/dQ,
/// lambda^2 / (2 sin(2-theta) x pi/180), in degrees per 1/A^2.
double twoThetaWeight(double twoThetaDeg, double wavelength);

/// The lines of a phase's assignments: each assigned, usable peak's centre with its h k l and
/// wavelength number, in ascending 2-theta. When more than PARMMAX::kMaxReflections are
/// assigned, the strongest peaks are kept.
std::vector<RefineInputLine> refineInputLines(const XrayPhase& phase);

/// Writes the input file through a temporary file. Each line carries twoThetaWeight as its
/// weight. Throws QuarvexError (title "X-ray Diffraction") for an unknown crystal system, no
/// wavelength, more lines than the refinement takes, or a file that cannot be written.
void writeRefineInput(const std::filesystem::path& path, const RefineInputContent& content);

} // namespace quarvex
