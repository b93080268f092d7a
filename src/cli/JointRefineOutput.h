// The joint-refinement options of refine and xray-refine, their run after the refinement, and
// what they add to the output.
#pragma once

#include "cli/JsonOutput.h"
#include "xray/JointRefine.h"
#include "xray/RefineState.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace quarvex::cli {

/// --refine-zero, --refine-displacement, --radius, --sigma-floor, --diagnostics, --centring.
struct JointOptions {
    JointRefineSettings settings;
    bool diagnostics = false; ///< the joint fit with neither instrument term
    std::string centring;     ///< lattice letter; empty: from the reference, else P
    bool requested() const {
        return settings.refineZero || settings.refineDisplacement || diagnostics;
    }
};

/// Adds the options to a subcommand.
void addJointOptions(CLI::App& command, JointOptions& options);

/// After a successful refinement: runs the joint refinement on its lines and appends its section
/// to the report. A refused run prints "Refine: message" on stderr. `referenceCentring` is used
/// when --centring was not given.
JointRefineResult runJointRefinement(const JointOptions& options, const INOUTPARMS& io,
                                     const DATASTFF& data, char referenceCentring);

/// Adds zero, zero_error, displacement, displacement_error, m20, fn, diagnostics and joint.
void addJointJson(Json& json, const JointRefineResult& result);

/// The joint cell, the instrument terms, the figures of merit and the flagged lines as text.
void printJointText(const JointRefineResult& result);

} // namespace quarvex::cli
