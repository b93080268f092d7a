// What the refinement commands print: the results as JSON or text, and a failed run.
#pragma once

#include "cli/JsonOutput.h"
#include "xray/RefineState.h"

namespace quarvex::cli {

/// The results of a refinement run as JSON: system, cell, error, volume, volume_error, rmse,
/// iterations, iteration_limit_hit, machine_error, machine_error_search, report, corr, table.
Json refineResultJson(const INOUTPARMS& io, const DATASTFF& data);

/// The refined cell with errors, volume, rmse, iterations, machine error and report path.
void printRefineText(const INOUTPARMS& io, const DATASTFF& data);

/// After REFINEMAIN: prints the message of a failed run (and returns false), or warns on stderr
/// when the machine-error search did not converge (and returns true).
bool reportRefineRun(bool ok, const INOUTPARMS& io);

} // namespace quarvex::cli
