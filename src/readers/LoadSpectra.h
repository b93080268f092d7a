// Loading a spectrum file of any known format into the set of loaded spectra: what the GUI's
// open, drop and recent files and every CLI command that reads spectra call.
#pragma once

#include "readers/ReadOptions.h"
#include "specdata/SpecDataGlobals.h"
#include "specdata/SpecDataManager.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// What one load added.
struct LoadedFile {
    std::string_view format;        ///< the format table's name ("text", "CSV", ...)
    int first = 0;                  ///< index (0-based) of the first spectrum added
    int count = 0;                  ///< spectra added (a file may hold several)
    SkippedLines skipped;           ///< lines the program's text reader passed over
    std::vector<std::string> notes; ///< the readers' notes ("x kept in nanometres: ...")
};

/// Reads `path` in the format its content shows and appends each of its spectra; the last one
/// added becomes the active spectrum and its header values go to `mineralInfo`. A file in the
/// program's own text format goes through READ_SPECDATA_FILE unchanged. On any failure throws
/// QuarvexError (or ReadCancelled) and leaves the set and `mineralInfo` unchanged.
LoadedFile loadSpectrumFile(SPECDATA_GLOBALS& specdata, MINERALINFO& mineralInfo,
                            const std::filesystem::path& path, const ReadOptions& options = {});

/// The notes of a load and its skipped lines, as one line for a status bar or stderr; empty when
/// there is nothing to say.
std::string describeLoad(const LoadedFile& loaded);

} // namespace quarvex
