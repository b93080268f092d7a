// Least-squares refinement of a unit cell from indexed powder lines: what callers may use.
//
// A caller writes a "_refine.DAT" input file (layout in docs/refine.md), runs
//     const bool ok = REFINEMAIN(path, state.inoutparms, state.datastff);
// and reads the results from the two blocks: the refined `CELL` (angles in degrees), `ERROR`,
// `CORR`, `COVAR`, the observed/calculated table (`TTHETA`, `DO`, `TTHETAC`, `DC`, h k l,
// `WAVEID`), `rmse`, `iterations`, `volume`, `volumeError`, the machine error and whether its
// search converged. The report is written beside the input as base name + "Refine.out".
#pragma once

#include "xray/RefineState.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace quarvex {

/// Runs one refinement on the input file: reads it, refines the cell of its crystal system,
/// optionally searches the 2-theta zero error, and writes the report `io.reportPath`. True when
/// refined results were produced. False when the run ended with a message: the report holds the
/// message (unless the report itself could not be written) and `io.message` repeats it; then only
/// `io.ok`, `io.message` and `io.reportPath` change, and the previous results stay as they were.
/// An input that exists but is not a regular file (a folder, a pipe) is refused before anything
/// is written.
bool REFINEMAIN(const std::filesystem::path& inputPath, INOUTPARMS& io, DATASTFF& data);

/// The report's path for an input file: its folder, base name + "Refine.out"
/// (quartz_refine.DAT -> quartz_refineRefine.out).
std::filesystem::path refineReportPath(const std::filesystem::path& inputPath);

/// A crystal-system name as the engine holds it: upper-cased, "MONOCLINIC" read as
/// "MONOCLINIC2" (unique axis b) and "ISOMETRIC" as "CUBIC", blank-padded to 12 characters.
std::string normalizedSystemName(std::string_view name);

/// Sets `unknowns` to the number of free cell parameters of the (padded or trimmed) system name;
/// a name not among the nine systems leaves it unchanged.
void XTL(std::string_view XTLSYS, int& unknowns);

} // namespace quarvex
