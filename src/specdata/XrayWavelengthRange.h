// The range in which a stated wavelength is taken as an X-ray wavelength: shared by the file
// readers that find one in a file and by the X-ray workflow that chooses the pattern's.
#pragma once

namespace quarvex {

/// A "wave:" value is taken as an X-ray wavelength in angstroms only within this range (a
/// Raman laser line such as 532 is not one).
inline constexpr double kMinXrayWavelength = 0.05;
inline constexpr double kMaxXrayWavelength = 5.0;

} // namespace quarvex
