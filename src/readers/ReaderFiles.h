// Reading a whole data file into memory for the readers of binary and instrument formats.
#pragma once

#include "common/ReadableFile.h"
#include "specdata/SpecDataGlobals.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace quarvex {

/// Largest file the instrument-format readers take in; larger ones are refused with a message.
inline constexpr std::size_t kMaxInstrumentFileBytes = std::size_t{256} << 20;

/// The bytes of `path`. Throws QuarvexError when the file cannot be opened, is not a regular
/// file (device, pipe, socket: see openReadableFile) or is larger than `maxBytes`.
std::string readFileBytes(const std::filesystem::path& path,
                          std::size_t maxBytes = kMaxInstrumentFileBytes);

/// The first bytes of `path` up to `maxBytes` + 1: more than `maxBytes` tells that the file is
/// larger. A named pipe is taken when `pipes` is ReadOnce (read once, to its end or the bound).
/// Throws QuarvexError when the file cannot be opened or read, or is not a regular file (see
/// openReadableFile).
std::string readFileUpTo(const std::filesystem::path& path, std::size_t maxBytes,
                         PipeReading pipes = PipeReading::Refused);

/// Names record `index` (0-based) of the `count` records read from `path`: the display name is
/// `base`, numbered " #1", " #2" ... when the file holds several; both cut to 256 characters.
void nameRecord(SpectrumRecord& record, const std::filesystem::path& path, const std::string& base,
                std::size_t index, std::size_t count);

} // namespace quarvex
