// The .xy and .xye column files of powder patterns: 2-theta, counts and an optional error.
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string_view>

namespace quarvex {

/// The first two numbers of every data line of `bytes` as x and y (a third, the error, is not
/// kept), in file order. Blank lines and lines starting with '#', ';' or '!' are skipped
/// anywhere, other lines before the first data line as a header. Numbers are separated by blanks
/// or commas. The first wavelength a header line states (statedWavelength) becomes `waveInfo`.
/// Throws QuarvexError naming the line when a later line holds no two numbers, or when
/// there is no data line at all.
SpectrumRecord readXyColumns(std::string_view bytes, const std::filesystem::path& path);

} // namespace quarvex
