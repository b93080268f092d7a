// Cell refinement in 2-theta with a refined zero shift and sample displacement, esds with a
// floor on the line uncertainty, regression diagnostics for every line and figures of merit.
#pragma once

#include "xray/CellModel.h"
#include "xray/FiguresOfMerit.h"
#include "xray/RefineState.h"

#include <array>
#include <string>
#include <vector>

namespace quarvex {

/// One indexed line: h k l, its wavelength (angstroms) and observed 2-theta (degrees).
struct JointLine {
    int h = 0, k = 0, l = 0;
    double wavelength = 0.0;
    double twoThetaDeg = 0.0;
};

/// What to refine beside the cell.
struct JointRefineSettings {
    bool refineZero = false;         ///< z, degrees, added to every observed 2-theta
    bool refineDisplacement = false; ///< s, mm: the observed line lies -2 s cos(theta)/R off
    double radiusMm = 240.0;         ///< goniometer radius R
    double sigmaFloorDeg = 0.005;    ///< smallest 2-theta uncertainty a line is granted
    char centring = 'P';             ///< lattice centring for the figures of merit
};

/// The problem: the crystal system (engine name), a starting cell (angles in degrees) and lines.
struct JointRefineInput {
    std::string system;
    std::array<double, 6> startCell{};
    std::vector<JointLine> lines;
};

/// The diagnostics of one line (line numbers from 1, in input order).
struct JointLineResult {
    int line = 0;
    int h = 0, k = 0, l = 0;
    double twoThetaObsDeg = 0.0;  ///< as read
    double twoThetaCorrDeg = 0.0; ///< corrected by z and the displacement
    double twoThetaCalcDeg = 0.0; ///< from the refined cell
    double residualDeg = 0.0;     ///< corrected observed minus calculated
    double hat = 0.0;
    double rstudent = 0.0; ///< NaN when undefined (leverage 1, or n - p < 2)
    double dffits = 0.0;
    std::array<double, 3> edgeChange{}; ///< a, b, c without this line minus with it, angstroms
    bool highLeverage = false;          ///< hat > 2p/n
    bool outlier = false;               ///< |rstudent| > 2
    bool leverageOne = false;
};

/// Everything the joint refinement gives. When `ok` is false only `message` holds.
struct JointRefineResult {
    bool ok = false;
    std::string message;
    JointRefineSettings settings;

    std::array<double, 6> cell{};     ///< angles in degrees
    std::array<double, 6> esd{};      ///< residual-scaled: s^2 (J^T J)^-1, s^2 = SSR/(n - p)
    std::array<double, 6> esdFloor{}; ///< max(s, sigma floor)^2 (J^T J)^-1
    double volume = 0.0, volumeEsd = 0.0, volumeEsdFloor = 0.0;
    double zero = 0.0, zeroEsd = 0.0, zeroEsdFloor = 0.0;                         ///< degrees
    double displacement = 0.0, displacementEsd = 0.0, displacementEsdFloor = 0.0; ///< mm

    std::vector<std::string> parameters;          ///< "a", "c", "zero", "displacement"
    std::vector<std::vector<double>> correlation; ///< among `parameters`
    int n = 0, p = 0, iterations = 0;
    double sigmaDeg = 0.0; ///< s = sqrt(SSR / (n - p)), degrees
    std::vector<JointLineResult> lines;
    std::vector<std::string> warnings; ///< lines of leverage 1, ...
    FiguresOfMerit merit;
};

/// The refinement's lines and cell as the last `REFINEMAIN` left them (2-theta as read).
JointRefineInput jointInputFrom(const DATASTFF& data);

/// Refines the free cell parameters with z and/or s (or neither) by Levenberg-Marquardt in
/// 2-theta, unit weights, and computes the esds, diagnostics and figures of merit. Refuses with
/// a message: too few lines (n < p + 1), zero and displacement together over less than 30
/// degrees of 2-theta, a line out of reach, a singular problem, a zero shift beyond 2 degrees.
JointRefineResult refineJoint(const JointRefineInput& input, const JointRefineSettings& settings);

} // namespace quarvex
