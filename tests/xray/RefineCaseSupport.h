// Test helpers for the cell refinement: the shared case files, input files made from them, an
// independent d-spacing formula and an independent refinement (Gauss-Newton on 2-theta).
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex::test {

using Cell = std::array<double, 6>; // a, b, c (A), alpha, beta, gamma (deg)

struct CaseLine {
    int h = 0, k = 0, l = 0, wave = 1;
    double twoTheta = 0.0;
};

/// One case file of tests/xray/data/refine (layout in its README).
struct RefineCase {
    std::string name;
    std::string system;
    Cell trueCell{};
    Cell startCell{};
    std::vector<double> waves;
    double zeroShift = 0.0;
    std::vector<CaseLine> lines;
};

/// Reads case_<system>.txt, e.g. readRefineCase("hexagonal").
RefineCase readRefineCase(std::string_view system);

/// The nine case names.
const std::vector<std::string>& refineCaseNames();

struct InputSwitches {
    bool search = false;
    bool iterations = false;
    bool startGiven = false;
    bool twoThetaWeights = false; ///< weight each line as an equal error in 2-theta
};

/// A "_refine.DAT" text for the case with these observed 2-theta values (full precision).
std::string refineInputText(const RefineCase& refineCase, const std::vector<double>& twoTheta,
                            const InputSwitches& switches);

/// 1/d^2 from the closed-form expression in the direct cell (no metric inversion).
double inverseDSquared(const Cell& cell, int h, int k, int l);

/// 2-theta (deg) of every line of the case computed from a cell.
std::vector<double> twoThetaFromCell(const RefineCase& refineCase, const Cell& cell);

/// Least squares on 2-theta residuals with central-difference derivatives, from the start cell.
Cell fitTwoThetaGaussNewton(const RefineCase& refineCase, const std::vector<double>& twoTheta);

/// Indices of the cell entries each free parameter of a system stands for.
std::vector<std::vector<int>> freeGroups(std::string_view system);

} // namespace quarvex::test
