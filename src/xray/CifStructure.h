// A small-molecule CIF read for a computed reference pattern: the cell, the space group (from its
// symmetry operators or its name) and the atom sites, every problem named by its CIF item.
#pragma once

#include "xray/CifPattern.h" // kCifErrorTitle

#include <gemmi/small.hpp>
#include <gemmi/symmetry.hpp>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// What a CIF gives for a pattern.
struct CifCrystal {
    std::string title;      ///< the mineral's, common or systematic name, else the file's base name
    std::string spaceGroup; ///< Hermann-Mauguin symbol with blanks ("P 32 2 1"); may be empty
    /// Cell and sites (occupancies as in the CIF, U in A^2), cell images set from `group`.
    gemmi::SmallStructure structure;
    gemmi::GroupOps group;          ///< every symmetry operation, centring included
    std::vector<std::string> notes; ///< what a user should know about the reading
};

/// Reads the first data block that has a cell (else the first block). The group comes from the
/// symmetry operators ("_space_group_symop_operation_xyz" or "_symmetry_equiv_pos_as_xyz") when
/// the CIF lists them, else from the Hermann-Mauguin name, else from the Hall symbol. Throws
/// QuarvexError "<file>: ..." naming the item for a file that cannot be read or parsed, a cell
/// that is missing or not a cell, no usable space group, no atom sites or a site without a
/// position or a known element. A missing cell angle is taken as 90 degrees, with a note.
CifCrystal readCifCrystal(const std::filesystem::path& path);

} // namespace quarvex
