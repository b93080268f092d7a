// Wavelengths that diffraction files give where xylib does not pass them on, or passes them on
// rounded: read from the file's bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quarvex {

/// The K-alpha1 (or single) wavelength in angstroms, as `WAVE_INFO` text, that a file of xylib
/// format `format` gives in its bytes: Bruker RAW's K-alpha1 field, XRDML's <kAlpha1>, CPI's
/// sixth line, a wavelength stated in the title lines of RIET7 and DBWS files. Nothing for
/// other formats, or when the file gives none within [kMinXrayWavelength, kMaxXrayWavelength].
std::optional<std::string> wavelengthFromBytes(std::string_view format, std::string_view bytes);

} // namespace quarvex
