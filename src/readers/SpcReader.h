// Reader of the binary SPC spectrum format (new 0x4B and old 0x4D layouts).
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace quarvex {

/// True when `head` (the first up to 4096 bytes of a file) starts like an SPC file: a version
/// byte of 0x4B or 0x4D after the flag byte, a header that fits and binary (zero) bytes among
/// its counts; or the extension "spc".
/// Files whose version byte is another value but carry the extension are claimed too, so that
/// the reader can say which type it does not support.
bool looksLikeSpc(std::string_view head, std::string_view extensionLower);

/// The spectra of an SPC file: one per subfile, x ascending. Reads the new layout (0x4B) and
/// the old one (0x4D); evenly spaced x or an explicit x array (one shared, or one per subfile);
/// y as 32-bit floats or as integers (16 or 32 bit) scaled by a power-of-two exponent.
/// Throws QuarvexError "SPC file type 0x.. is not supported" for every other variant and for a
/// header whose counts the file does not hold; another message for non-finite values.
std::vector<SpectrumRecord> readSpcFile(const std::filesystem::path& path);

/// readSpcFile on the bytes of the file at `path`, read beforehand.
std::vector<SpectrumRecord> readSpcBytes(const std::filesystem::path& path,
                                         std::string_view content);

} // namespace quarvex
