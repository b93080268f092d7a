// Reading JCAMP-DX 4.24 and 5.x spectra: ##XYDATA in AFFN and ASDF, ##XYPOINTS, ##PEAK TABLE,
// and LINK blocks that hold several spectra.
#pragma once

#include "readers/ReadOptions.h"
#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace quarvex {

/// True when one of the first lines is the "##JCAMP-DX=" label (spelt with any spaces, dashes,
/// slashes or underscores, in any case).
bool isJcampDx(std::string_view head, std::string_view extensionLower);

/// Reads every block with data (one spectrum each, ##TITLE its name). Factors, FIRSTX, LASTX,
/// DELTAX, NPOINTS, FIRSTY and the Y check values are checked against the data: a disagreement
/// is read with a note. Nanometres become Raman shift when the file gives the laser wavelength.
/// Throws QuarvexError for a data line that cannot be decoded or a file without data.
std::vector<SpectrumRecord> readJcampDx(const std::filesystem::path& path,
                                        const ReadOptions& options);

/// A JCAMP-DX label as compared: upper case, without spaces, dashes, slashes and underscores.
std::string normalisedJcampLabel(std::string_view label);

} // namespace quarvex
