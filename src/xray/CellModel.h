// A unit cell as the free parameters of its crystal system: the map to a b c alpha beta gamma,
// Q = 1/d^2 of a reflection with its derivatives, and the volume with its gradient.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// a, b, c (angstroms) and alpha, beta, gamma (radians).
using CellVector = std::array<double, 6>;

/// The free parameters of one crystal system. Free parameter j sets every cell entry listed in
/// `tied[j]` (b = a of a tetragonal cell); entries not tied to any parameter keep `fixed`.
struct CellModel {
    std::string system;                 ///< trimmed engine name, "HEXAGONAL"
    std::vector<std::vector<int>> tied; ///< cell entries (0..5) set by each free parameter
    CellVector fixed{};                 ///< values of the entries fixed by symmetry

    int freeCount() const { return static_cast<int>(tied.size()); }
    /// The free parameters read from a whole cell (the first entry each one sets).
    std::vector<double> freeFrom(const CellVector& cell) const;
    /// The whole cell from the free parameters.
    CellVector cellFrom(const std::vector<double>& free) const;
    /// Derivatives of a quantity with respect to the free parameters from those with respect
    /// to the six cell entries (the chain rule through the ties).
    std::vector<double> chain(const CellVector& perCellEntry) const;
    /// Name of free parameter j: "a", "c", "alpha", ...
    std::string name(int j) const;
};

/// The model of a crystal system given by its engine name (padded or not); empty when the name
/// is none of the nine systems.
std::optional<CellModel> cellModelFor(std::string_view systemName);

/// Q = h^T G* h (1/A^2) of reflection h k l and its derivatives dQ/d(a b c alpha beta gamma)
/// = -u^T (dG/dp) u with u = G* h; nullopt when the metric cannot be inverted.
std::optional<std::pair<double, CellVector>> reciprocalQ(const CellVector& cell, int h, int k,
                                                         int l);

/// Volume of the cell (cubic angstroms) and its derivatives with respect to the six entries;
/// the volume is NaN when the angles make no real cell.
std::pair<double, CellVector> cellVolume(const CellVector& cell);

} // namespace quarvex
