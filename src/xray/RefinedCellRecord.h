// The last refinement of a project's pattern as the project keeps it: the refined cell with its
// errors, the run's figures and its report, in "<main file stem>.refined" beside the main file.
// The file is ours (the other project files do not name it), so that reopening a project shows
// the refinement it was saved with.
#pragma once

#include "xray/RefineState.h"

#include <array>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace quarvex {

/// What the X-ray Diffraction mode shows of a refinement.
struct RefinedCellRecord {
    std::string system;            ///< crystal system, trimmed
    int lines = 0;                 ///< reflections refined
    std::array<double, 6> cell{};  ///< a, b, c (angstroms), alpha, beta, gamma (degrees)
    std::array<double, 6> error{}; ///< their standard errors; 0 for one the system fixes
    double volume = 0.0;           ///< cubic angstroms
    double volumeError = 0.0;
    double rmse = 0.0;
    bool machineErrorSearched = false;
    bool machineErrorConverged = false;
    double machineError = 0.0; ///< degrees, added to the observed 2-theta
    int iterations = 0;
    bool iterationLimitHit = false;
    std::filesystem::path input;  ///< the refinement input written for the run
    std::filesystem::path report; ///< where the run wrote its report
    std::string reportText;       ///< the report as it was then, every line ending in "\n"

    bool operator==(const RefinedCellRecord&) const = default;
};

inline constexpr std::string_view kRefinedExtension = ".refined";

/// The record of project `mainFile`: its stem + ".refined", beside it (work/q/q.refined).
std::filesystem::path refinedRecordPath(const std::filesystem::path& mainFile);

/// The record of a finished run (io.ok): its figures, the input `input`, and the report read from
/// io.reportPath (empty when it cannot be read).
RefinedCellRecord refinedCellRecord(const INOUTPARMS& io, const DATASTFF& data,
                                    const std::filesystem::path& input);

/// Writes the record: tag lines "<refined> 1", "<system> ", "<lines> ", "<cell> ", "<errors> ",
/// "<volume> " (value and error), "<rmse> ", "<machineerror> " (searched, converged: 1 or 0, the
/// value), "<iterations> " (count, limit hit), "<input> ", "<report> ", then "<reportlines> " and
/// that many lines of the report. Numbers in their shortest exact text.
void writeRefinedRecord(std::ostream& out, const RefinedCellRecord& record);

/// The refined cell as a short text for the user's notes: a title line with the crystal system
/// and the lines used; a, b, c (angstroms, 6 decimals) and alpha, beta, gamma (degrees, 4
/// decimals), each with "+/- " its standard error or "(fixed)"; the volume with its error; the
/// rmse; the machine error; the input and report files.
std::string refinedCellSummary(const RefinedCellRecord& record);

/// The record of project `mainFile` (refinedRecordPath), nullopt when there is none; a damaged
/// one throws as readRefinedRecord does.
std::optional<RefinedCellRecord> loadRefinedRecord(const std::filesystem::path& mainFile);

/// Reads a record written by writeRefinedRecord. Throws QuarvexError (title "X-ray Project")
/// naming the file and line for a missing tag, a value that does not read or is not finite, a
/// count above the lines that follow, or lines after the report.
RefinedCellRecord readRefinedRecord(const std::filesystem::path& path);

} // namespace quarvex
