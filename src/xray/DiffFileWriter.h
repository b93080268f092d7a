// Writing a reference pattern as a reference diffraction-data file (".out") in the layout the
// reader takes: title, cell, space group, wavelength, the table and a trailing section.
#pragma once

#include "xray/DiffFileReader.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quarvex {

/// Writes `record` (mode 1: one wavelength) atomically to `path`: the title line, "CELL
/// PARAMETERS:", "SPACE GROUP:" (when known), "X-RAY WAVELENGTH:", the "2-THETA" heading and one
/// line per reflection in the columns (f21.2, f14.2, f14.4, i5, i4, i4), then "For reference:"
/// followed by `reference` lines. False when the file could not be written (the old one stays).
bool writeDiffFile(const std::filesystem::path& path, const DiffFileRecord& record,
                   const std::vector<std::string>& reference);

} // namespace quarvex
