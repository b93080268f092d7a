// quarvex-cli refine: run the cell refinement on a "_refine.DAT" input and print its results.
#include "cli/CliCommand.h"
#include "cli/JointRefineOutput.h"
#include "cli/RefineOutput.h"
#include "xray/Refine.h"

#include <iostream>
#include <memory>
#include <optional>

namespace quarvex::cli {

namespace {

struct RefineOptions {
    std::string file;
    bool json = false;
    JointOptions joint;
};

int runRefine(const RefineOptions& options, ProgramState& state) {
    INOUTPARMS& io = state.inoutparms;
    DATASTFF& data = state.datastff;
    if (!reportRefineRun(REFINEMAIN(options.file, io, data), io)) {
        return 1;
    }
    std::optional<JointRefineResult> joint;
    if (options.joint.requested()) {
        joint = runJointRefinement(options.joint, io, data, 'P');
        if (!joint->ok) {
            return 1;
        }
    }
    if (options.json) {
        Json json = refineResultJson(io, data);
        if (joint) {
            addJointJson(json, *joint);
        }
        std::cout << json.dump(2) << '\n';
    } else {
        printRefineText(io, data);
        if (joint) {
            printJointText(*joint);
        }
    }
    return 0;
}

} // namespace

CliCommand addRefineCommand(CLI::App& app) {
    auto options = std::make_shared<RefineOptions>();
    CLI::App* refine = app.add_subcommand(
        "refine", "Refine a unit cell from indexed powder lines in a _refine.DAT file and write "
                  "the report (base name + Refine.out) beside it");
    refine->add_option("file", options->file, "Refinement input file (_refine.DAT)")->required();
    refine->add_flag("--json", options->json, "Print JSON instead of text");
    addJointOptions(*refine, options->joint);
    return {refine, [options](ProgramState& state) { return runRefine(*options, state); }};
}

} // namespace quarvex::cli
