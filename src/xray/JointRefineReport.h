// The joint refinement's section of the report "Refine.out", written after the refinement's
// own sections.
#pragma once

#include "xray/JointRefine.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quarvex {

/// The lines of the section: settings, cell with both esds, zero and displacement, correlations,
/// figures of merit and the diagnostics table; or the reason the refinement was refused.
std::vector<std::string> jointReportSection(const JointRefineResult& result);

/// Appends `lines` to the report at `path` (rewritten atomically); false when it cannot be read
/// or written.
bool appendToReport(const std::filesystem::path& path, const std::vector<std::string>& lines);

} // namespace quarvex
