// What the X-ray commands of quarvex-cli share: the workflow's options and request, the matched
// table, and the notes of a run.
#pragma once

#include "cli/JsonOutput.h"
#include "shell/ProgramState.h"
#include "xray/XrayWorkflow.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace quarvex::cli {

/// The options of a workflow run: the pattern, the reference and what may override them.
struct XrayRunOptions {
    std::string pattern;
    std::string reference;
    std::string system;               ///< --system
    std::optional<float> tolerance;   ///< --tol, degrees
    std::optional<double> wavelength; ///< --wave, angstroms
};

/// Adds PATTERN, REF, --system, --tol and --wave to a subcommand.
void addXrayRunOptions(CLI::App& command, XrayRunOptions& options);

/// The state groups the X-ray workflow works on.
XrayStateGroups xrayGroups(ProgramState& state);

/// The workflow request of the options, the rest from the preferences (peak search and profile,
/// match tolerance, wavelength, machine-error search, iterations) and the home folder (import
/// records). Throws QuarvexError for a tolerance or wavelength that is not positive.
XrayRefineRequest xrayRequest(const XrayRunOptions& options, const ProgramState& state);

/// The matched peaks: two_theta, d, h, k, l, wave, reference_two_theta per row.
Json matchesJson(const XrayPhase& phase);

/// The matched table as text.
void printMatches(const XrayPhase& phase);

/// The run's notes and its wavelengths, on stderr.
void printRunNotes(const XrayRefineOutcome& outcome);

} // namespace quarvex::cli
