// The spectrum file formats the program reads, and the one entry point that picks the reader of
// a file by its content (its extension only a hint).
#pragma once

#include "readers/ReadOptions.h"
#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// One row of the format table: a reader and the test that tells whether it takes a file.
struct SpectrumFormat {
    std::string_view name;         ///< shown by `info --json` as "format": "text", "CSV", ...
    std::string_view dialogFilter; ///< "JCAMP-DX Files (*.jdx *.dx)|*.jdx;*.dx|"; empty: none
    /// True when the reader takes a file that begins with `head` (up to kSniffBytes bytes) and
    /// has the extension `extensionLower` (".csv", lower case, empty when none).
    bool (*sniff)(std::string_view head, std::string_view extensionLower);
    /// Reads every spectrum of the file (at least one) or throws QuarvexError.
    std::vector<SpectrumRecord> (*read)(const std::filesystem::path& path,
                                        const ReadOptions& options);
    /// The same reading on the file's bytes, read beforehand; null when the reader opens the
    /// file itself.
    std::vector<SpectrumRecord> (*readBytes)(const std::filesystem::path& path,
                                             std::string_view bytes,
                                             const ReadOptions& options) = nullptr;
};

/// Bytes of a file's beginning that the sniffs see.
inline constexpr std::size_t kSniffBytes = 64 * 1024;

/// The first kSniffBytes bytes of a file (fewer when the file is shorter). Throws QuarvexError
/// ("ERROR WITH INCOMING DATA, FILE READ") when it cannot be opened.
std::string readFileHead(const std::filesystem::path& path);

/// Largest file the format entry point reads whole; a larger regular file is sniffed from its
/// head and read by its reader from the file, as the readers stream or bound it themselves.
inline constexpr std::size_t kWholeFileBytes = std::size_t{256} << 20;

/// A spectrum file read once for the sniffs and the readers.
struct SpectrumFileBytes {
    std::string bytes; ///< the whole file, or its first kSniffBytes bytes when not `whole`
    bool whole = true;
};

/// Reads `path` once: a regular file or a named pipe (also "<(command)"). Throws QuarvexError
/// ("ERROR WITH INCOMING DATA, FILE READ") when it cannot be opened, a message for a device or
/// a socket, and one for a pipe larger than kWholeFileBytes.
SpectrumFileBytes readSpectrumFileBytes(const std::filesystem::path& path);

/// The first format whose sniff takes a file of these bytes (extension from `path`); null when
/// none does.
const SpectrumFormat* findSpectrumFormat(const std::filesystem::path& path,
                                         const SpectrumFileBytes& file);

/// The spectra of the file read by `format`, from `file`'s bytes when they are whole.
std::vector<SpectrumRecord> readSpectra(const SpectrumFormat& format,
                                        const std::filesystem::path& path,
                                        const SpectrumFileBytes& file, const ReadOptions& options);

/// The formats in the order they are tried; the program's own text format comes last, since it
/// reads any text.
std::span<const SpectrumFormat> spectrumFormats();

/// The first format whose sniff takes the file; null when none does. Throws QuarvexError when
/// the file cannot be opened.
const SpectrumFormat* findSpectrumFormat(const std::filesystem::path& path);

/// The first format whose sniff takes the file. Throws QuarvexError when the file cannot be
/// opened ("ERROR WITH INCOMING DATA, FILE READ") and "FILE: not a spectrum file Quarvex can
/// read (tried: ...)" when no format takes it.
const SpectrumFormat& detectSpectrumFormat(const std::filesystem::path& path);

/// detectSpectrumFormat on the bytes of the file, read once by readSpectrumFileBytes.
const SpectrumFormat& detectSpectrumFormat(const std::filesystem::path& path,
                                           const SpectrumFileBytes& file);

/// The spectra of one file and the format they were read in.
struct SpectrumFileContents {
    std::string_view format;
    std::vector<SpectrumRecord> spectra;
};

/// Reads a spectrum file of any known format: nothing is loaded, so a failure changes nothing.
SpectrumFileContents readSpectrumFile(const std::filesystem::path& path,
                                      const ReadOptions& options = {});

/// The open dialog's filter list: the list for `previousExtension` exactly as the program's own
/// formats have it, then one entry per further format.
std::string openDialogFilter(std::string_view previousExtension);

/// Name of the program's own text format in the table.
inline constexpr std::string_view kTextFormatName = "text";

} // namespace quarvex
