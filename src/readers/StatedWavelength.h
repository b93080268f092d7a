// X-ray wavelengths stated in the free text of a pattern file's header ("# Wavelength: 1.5406",
// "lambda = 0.70932 A", "Wavelength: 1.0332e-10 m"), as .xy, RIET7 and DBWS files may say them.
#pragma once

#include <optional>
#include <string_view>

namespace quarvex {

/// The wavelength in angstroms that `line` states: a keyword ("wavelength", "lambda", "alpha1",
/// "ka1"; any case, a glued suffix such as "lambda1" allowed), then only blanks, '=', ':' and a
/// unit in brackets, then a number with an optional unit (A, Å, angstrom, nm, m). Nothing when
/// the line states none or the value lies outside [kMinXrayWavelength, kMaxXrayWavelength].
std::optional<double> statedWavelength(std::string_view line);

} // namespace quarvex
