// quarvex-cli xray-refine: a measured pattern and a reference file through the whole X-ray
// workflow, to the refined cell.
#include "cli/CliCommand.h"
#include "cli/JointRefineOutput.h"
#include "cli/RefineOutput.h"
#include "cli/XrayCliSupport.h"

#include <iostream>
#include <memory>
#include <optional>

namespace quarvex::cli {

namespace {

struct XrayRefineOptions {
    XrayRunOptions run;
    bool json = false;
    JointOptions joint;
    bool stripKAlpha2 = false;
};

int runXrayRefineCommand(const XrayRefineOptions& options, ProgramState& state) {
    XrayRefineRequest request = xrayRequest(options.run, state);
    request.stripKAlpha2 = options.stripKAlpha2;
    const XrayRefineOutcome outcome = runXrayRefine(xrayGroups(state), request);
    printRunNotes(outcome);
    std::cerr << "Refinement input: " << outcome.inputFile.string() << '\n';
    if (!reportRefineRun(outcome.refined, state.inoutparms)) {
        return 1;
    }
    const XrayPhase& phase = state.xrayPeak.phases.front();
    std::optional<JointRefineResult> joint;
    if (options.joint.requested()) {
        const std::string& spaceGroup =
            state.diff.SPACE_GROUP[static_cast<std::size_t>(outcome.reference)];
        joint = runJointRefinement(options.joint, state.inoutparms, state.datastff,
                                   latticeCentring(spaceGroup));
        if (!joint->ok) {
            return 1;
        }
    }
    if (options.json) {
        Json json = refineResultJson(state.inoutparms, state.datastff);
        json["matches"] = matchesJson(phase);
        json["input"] = outcome.inputFile.string();
        if (joint) {
            addJointJson(json, *joint);
        }
        std::cout << json.dump(2) << '\n';
    } else {
        printMatches(phase);
        printRefineText(state.inoutparms, state.datastff);
        if (joint) {
            printJointText(*joint);
        }
    }
    return 0;
}

} // namespace

CliCommand addXrayRefineCommand(CLI::App& app) {
    auto options = std::make_shared<XrayRefineOptions>();
    CLI::App* command = app.add_subcommand(
        "xray-refine", "Find and fit the peaks of a powder pattern, index them from a reference "
                       "file, write <pattern>_refine.DAT beside the pattern and refine the cell");
    addXrayRunOptions(*command, options->run);
    command->add_flag("--json", options->json, "Print JSON instead of text");
    addJointOptions(*command, options->joint);
    command->add_flag("--strip-ka2", options->stripKAlpha2,
                      "Strip K-alpha2 (Rachinger) before the peak search; match K-alpha1 only");
    return {command,
            [options](ProgramState& state) { return runXrayRefineCommand(*options, state); }};
}

} // namespace quarvex::cli
