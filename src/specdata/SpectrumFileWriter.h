// Writing a spectrum in the program's own text format (the format the reader reads) and as CSV.
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace quarvex {

/// Key of the comment lines that record one operation applied to a spectrum.
inline constexpr std::string_view kProcessingKey = "processing:";

/// The two formats a spectrum is saved in.
enum class SpectrumFileFormat {
    Program, ///< "##" header keys, a "<COM>" block, then one "x, y" line per point
    Csv,     ///< an "x,y" header row, then one "x,y" line per point
};

/// Writes `record` as text in `format` (see writeSpectrumFile).
void writeSpectrumText(std::ostream& out, const SpectrumRecord& record, SpectrumFileFormat format);

/// Writes what `write` puts out to `path` atomically. Throws QuarvexError ("Save") when the file
/// cannot be written (a missing or read-only folder); the destination is then left as it was.
void writeSavedFile(const std::filesystem::path& path,
                    const std::function<void(std::ostream&)>& write);

/// Writes `record` to `path` atomically: the four header keys, the comment block ("dtype:",
/// "wave:", then the comment lines in their order, "processing:" lines included), then the points
/// with the shortest decimal texts that read back as the same single-precision values. Throws
/// QuarvexError ("Save") when the file cannot be written (a missing or read-only folder); the
/// destination is then left as it was.
void writeSpectrumFile(const std::filesystem::path& path, const SpectrumRecord& record,
                       SpectrumFileFormat format = SpectrumFileFormat::Program);

} // namespace quarvex
