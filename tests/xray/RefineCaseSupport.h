// Test helpers for the cell refinement: the shared cases, input files made from them, an
// independent d-spacing formula and an independent refinement (Gauss-Newton on 2-theta).
#pragma once

#include "xray/RefineState.h"

#include <nlohmann/json.hpp>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace quarvex::test {

using Cell = std::array<double, 6>; // a, b, c (A), alpha, beta, gamma (deg)

struct CaseLine {
    int h = 0, k = 0, l = 0, wave = 1;
    double twoTheta = 0.0;
};

/// One case of tests/xray/data/refine, read from its expected_<name>.json (layout in the README).
struct RefineCase {
    std::string name, system;
    Cell trueCell{}, startCell{};
    std::vector<double> waves;
    double zeroShift = 0.0;
    std::vector<CaseLine> lines;
    nlohmann::json expected; ///< the whole file, with the independent fits
    std::vector<double> observed(double correction = 0.0) const;
};

RefineCase readRefineCase(const std::string& name);
const std::vector<std::string>& refineCaseNames();

struct InputSwitches {
    bool search = false, iterations = false, startGiven = false;
    bool twoThetaWeights = false; ///< weight each line as an equal error in 2-theta
};

/// A "_refine.DAT" text for the case with these observed 2-theta values (full precision).
std::string refineInputText(const RefineCase& c, const std::vector<double>& twoTheta,
                            const InputSwitches& switches = {});

/// What one REFINEMAIN run left: its flag, its blocks and its report.
struct RefineResult {
    bool ok = false;
    INOUTPARMS io;
    std::unique_ptr<DATASTFF> data = std::make_unique<DATASTFF>();
    std::string report;
};

/// Writes the input text to a fresh folder and refines it.
RefineResult refineText(const std::string& text);

/// Refines the case with these observed 2-theta values.
RefineResult refineCase(const RefineCase& c, const std::vector<double>& twoTheta,
                        const InputSwitches& switches = {});

/// 1/d^2 from the closed-form expression in the direct cell (no metric inversion).
double inverseDSquared(const Cell& cell, int h, int k, int l);
/// 2-theta (deg) of every line of the case computed from a cell.
std::vector<double> twoThetaFromCell(const RefineCase& c, const Cell& cell);
/// The cell entries each free parameter of a system stands for (b = a for TETRAGONAL, ...).
std::vector<std::vector<int>> freeGroups(const std::string& system);
/// Least squares on 2-theta residuals with central-difference derivatives, from the start cell.
Cell fitTwoThetaGaussNewton(const RefineCase& c, const std::vector<double>& twoTheta);

} // namespace quarvex::test
