// Reading an X-ray project back into memory: the pattern, the wavelengths and every phase with
// its peaks, assignments, input reflections and switches.
#pragma once

#include "xray/XrayProject.h"

#include <filesystem>

namespace quarvex {

/// Reads the project whose main file is `mainFile`: a saved project (its main file has a
/// "<numphases> " line) needs the four files of every phase; a new project has one phase whose
/// ".ref" and ".input" files may be missing. Phase files are found under their saved names
/// ("Phase1.peak") or a new project's ("phase1.peak"). The last refinement is read from
/// refinedRecordPath when that file is there. Throws QuarvexError (title "X-ray
/// Project") naming the file and line for a missing file, a count that does not agree with the
/// lines that follow, or a line that does not read.
XrayProject readXrayProject(const std::filesystem::path& mainFile);

/// Opens the project named by `path` (resolveProjectFile): reads it, adds its pattern as a new
/// spectrum (the active one) and makes its phases and wavelengths the X-ray peak state, with the
/// project's main file. Returns the pattern's spectrum index. On failure nothing changes.
int openXrayProject(const std::filesystem::path& path, SPECDATA_GLOBALS& specdata,
                    XRAY_PEAK_GLOBALS& xrayPeak);

} // namespace quarvex
