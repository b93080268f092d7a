// quarvex-cli xray-refine: a measured pattern and a reference file through the whole X-ray
// workflow, to the refined cell.
#include "cli/CliCommand.h"
#include "cli/RefineOutput.h"
#include "cli/XrayCliSupport.h"

#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

struct XrayRefineOptions {
    XrayRunOptions run;
    bool json = false;
};

int runXrayRefineCommand(const XrayRefineOptions& options, ProgramState& state) {
    const XrayRefineOutcome outcome =
        runXrayRefine(xrayGroups(state), xrayRequest(options.run, state));
    printRunNotes(outcome);
    std::cerr << "Refinement input: " << outcome.inputFile.string() << '\n';
    if (!reportRefineRun(outcome.refined, state.inoutparms)) {
        return 1;
    }
    const XrayPhase& phase = state.xrayPeak.phases.front();
    if (options.json) {
        Json json = refineResultJson(state.inoutparms, state.datastff);
        json["matches"] = matchesJson(phase);
        json["input"] = outcome.inputFile.string();
        std::cout << json.dump(2) << '\n';
    } else {
        printMatches(phase);
        printRefineText(state.inoutparms, state.datastff);
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
    return {command,
            [options](ProgramState& state) { return runXrayRefineCommand(*options, state); }};
}

} // namespace quarvex::cli
