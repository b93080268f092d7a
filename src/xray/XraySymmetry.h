// The symmetry codes (SYM) of reference patterns and phases: the nine crystal systems of the
// refinement, and how a reference file's space group and cell give one.
#pragma once

#include <array>
#include <string_view>

namespace quarvex {

/// SYM code of a pattern whose crystal system is not known.
inline constexpr int kSymUnknown = 0;
/// SYM codes 1 to 9 are the crystal systems in this order (code = index + 1).
inline constexpr std::array<std::string_view, 9> kCrystalSystemNames{
    "TRICLINIC",  "MONOCLINIC1", "MONOCLINIC2",  "MONOCLINIC3", "ORTHORHOMBIC",
    "TETRAGONAL", "HEXAGONAL",   "RHOMBOHEDRAL", "CUBIC"};

/// The crystal-system name of a SYM code (unpadded), or "" for 0 and codes out of range.
std::string_view crystalSystemName(int sym);

/// The SYM code of a crystal-system name in any case, padded or not ("monoclinic" is
/// MONOCLINIC2, "isometric" CUBIC, as the refinement reads them); 0 for an unknown name.
int symCode(std::string_view name);

/// The SYM code a cell's metric shows (a, b, c in angstroms, angles in degrees): edges equal
/// within 1e-4 of their size and angles of 90 or 120 within 0.001 degree. A cell with an edge
/// that is not positive gives 0. Two right angles give the monoclinic system whose unique axis
/// carries the third angle (gamma: MONOCLINIC1, beta: MONOCLINIC2, alpha: MONOCLINIC3).
int symFromCell(const std::array<float, 6>& cell);

/// The SYM code of a Hermann-Mauguin space-group symbol written with blanks between its parts
/// ("P 32 2 1", "R -3 c:H", "I 1 2/c 1"): the symbol gives the crystal family, the cell
/// settles what the symbol leaves open (rhombohedral or hexagonal axes of an R lattice without
/// ":R" or ":H", the unique axis of a short monoclinic symbol such as "P 21/c"). A symbol that
/// cannot be read this way gives symFromCell(cell).
int symFromSpaceGroup(std::string_view symbol, const std::array<float, 6>& cell);

} // namespace quarvex
