// What the refinement commands print: the results as JSON or text, and a failed run.
#pragma once

#include "cli/JsonOutput.h"
#include "xray/RefineState.h"

#include <optional>

namespace quarvex::cli {

/// The results of a refinement run as JSON: system, cell, error, volume, volume_error, rmse,
/// iterations, iteration_limit_hit, machine_error, machine_error_search, report, corr, table.
Json refineResultJson(const INOUTPARMS& io, const DATASTFF& data);

/// Cell parameter `m` (a, b, c, alpha, beta, gamma) on a line: edges with five decimals, angles
/// with four; the esd, and its floor when given, only for a refined parameter.
void printCellParameter(int m, double value, double esd, std::optional<double> esdFloor = {});

/// The refined cell with errors, volume, rmse, iterations, machine error and report path.
void printRefineText(const INOUTPARMS& io, const DATASTFF& data);

/// After REFINEMAIN: prints the message of a failed run (and returns false), or warns on stderr
/// when the machine-error search did not converge (and returns true).
bool reportRefineRun(bool ok, const INOUTPARMS& io);

} // namespace quarvex::cli
