// Reading spectrum files (".grelt", ".txt", ".dat") into the set of loaded spectra.
#pragma once

#include "common/LineReader.h"
#include "specdata/MineralInfo.h"
#include "specdata/SpecDataGlobals.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kFileReadErrorText = "ERROR WITH INCOMING DATA, FILE READ";
inline constexpr std::string_view kFileReadErrorTitle = "SHARING ERROR";
/// Title of the reader's own messages (no data, binary file, non-finite values).
inline constexpr std::string_view kDataFileErrorTitle = "DATA FILE ERROR";
/// Data type of a spectrum whose file has no "dtype:" line.
inline constexpr std::string_view kDefaultDataType = "RAMAN";

/// The lines of a spectrum file that were read as nothing: neither a key, nor a "##" header
/// line, nor blank, nor data. Counted so that a load can say that part of the file was not read.
struct SkippedLines {
    std::int64_t count = 0;
    std::int64_t firstLine = 0; ///< 1-based number of the first such line; 0 when none
    bool calibrated = false;    ///< data lines of a calibrated file hold one or two numbers
};

/// "3 lines skipped (not two numbers), first at line 12"; empty when no line was skipped.
std::string describeSkipped(const SkippedLines& skipped);

/// Reads the header keys, the comment block and the x, y pairs of a plain spectrum file
/// (`expectedPoints` reserves the arrays). Points come out in ascending x with duplicate x merged
/// into one point of mean y; the comment lines come out as READ_SPECDATA_RECORD gives them.
/// Throws QuarvexError ("ERROR WITH INCOMING DATA, FILE READ" / "SHARING ERROR") when the file
/// cannot be opened, a DATA FILE ERROR for a binary file or a non-finite value.
SpectrumRecord FILL_IN_SPECDATA_ARRAYS(const std::filesystem::path& path,
                                       std::int64_t expectedPoints);

/// FILL_IN_SPECDATA_ARRAYS on the bytes of the file at `path`, read beforehand: the same record.
SpectrumRecord FILL_IN_SPECDATA_ARRAYS(const std::filesystem::path& path, std::string_view bytes,
                                       std::int64_t expectedPoints);

/// Reads the lines of one comment block after "<COM>", up to a line that begins with "</COM>"
/// (or the end of the file), taking "dtype:" and "wave:" from them and every other line into
/// `comments`.
void READ_COM(LineReader& reader, std::string& dtype, std::string& waveInfo,
              std::vector<std::string>& comments);

/// Reads a spectrum file into a record, as READ_SPECDATA_FILE does before the record joins the
/// set: the header keys, the comment lines and the points, in one pass over the file (so that a
/// named pipe with a writer is read too). A file with a line that begins with "CAL_OFFSET" is
/// energy-calibrated: its lines of one or two numbers are channels, and x of channel i (from 1)
/// is CAL_QUAD·i² + CAL_SLOPE·i + CAL_OFFSET in single precision. Throws QuarvexError as
/// FILL_IN_SPECDATA_ARRAYS does, and when the file has no data points. `skipped`, when given,
/// receives the lines the read passed over. `bufferSize` (bytes read at a time) changes no
/// result: tests and fuzzers make it small.
SpectrumRecord READ_SPECDATA_RECORD(const std::filesystem::path& path,
                                    SkippedLines* skipped = nullptr,
                                    std::size_t bufferSize = LineReader::kDefaultBufferSize);

/// READ_SPECDATA_RECORD on the bytes of the file at `path`, read beforehand (once, so a pipe
/// works too): the same record and the same messages.
SpectrumRecord READ_SPECDATA_RECORD(const std::filesystem::path& path, std::string_view bytes,
                                    SkippedLines* skipped = nullptr);

/// Reads a spectrum file into a new spectrum at the end of the set, which becomes the active
/// one; its header values also go to `mineralInfo`. Returns the new index (0-based). On any
/// failure throws QuarvexError and leaves the set and `mineralInfo` unchanged.
/// `skipped`, when given, receives the lines the read passed over.
/// `bufferSize` as for READ_SPECDATA_RECORD.
int READ_SPECDATA_FILE(SPECDATA_GLOBALS& specdata, MINERALINFO& mineralInfo,
                       const std::filesystem::path& path, SkippedLines* skipped = nullptr,
                       std::size_t bufferSize = LineReader::kDefaultBufferSize);

/// The "|"-separated filter list of the open-file dialog, the type of the previously chosen
/// file first (".grelt" or ".txt"; any other extension puts all files first).
std::string_view fileFilterForPreviousExtension(std::string_view previousExtension);

} // namespace quarvex
