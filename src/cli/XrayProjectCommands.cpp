// quarvex-cli xray-project new|save|show: create an X-ray project from a pattern, save the
// pattern's matched peaks into it, and show what a project holds.
#include "cli/CliCommand.h"
#include "cli/SpectrumLoading.h"
#include "cli/XrayCliSupport.h"
#include "xray/XrayProjNew.h"
#include "xray/XrayProjRead.h"
#include "xray/XrayProjSave.h"

#include <cstdio>
#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

struct NewOptions {
    std::string path;
    std::string pattern;
    std::string name = "Phase1";
};

struct SaveOptions {
    std::string path;
    XrayRunOptions run;
};

struct ShowOptions {
    std::string path;
    bool json = false;
};

int runNew(const NewOptions& options, ProgramState& state) {
    const int index = loadCommandSpectrum(state, options.pattern, "");
    requireTwoThetaPattern(state.specdata, index);
    state.xrayPeak.pattern = index;
    XrayPhase phase;
    phase.name = options.name;
    state.xrayPeak.phases = {phase};
    const auto mainFile =
        XRAYPROJNEW(options.path, projectFromState(state.specdata, state.xrayPeak));
    std::cout << "Created " << mainFile.string() << '\n';
    return 0;
}

int runSave(const SaveOptions& options, ProgramState& state) {
    const XrayRefineOutcome outcome =
        prepareXrayPhase(xrayGroups(state), xrayRequest(options.run, state));
    printRunNotes(outcome);
    const XrayProject project = projectFromState(state.specdata, state.xrayPeak);
    std::filesystem::path mainFile = resolveProjectFile(options.path);
    if (!std::filesystem::exists(mainFile)) {
        mainFile = XRAYPROJNEW(options.path, project);
    }
    XRAYPROJSAVE(mainFile, project);
    printMatches(state.xrayPeak.phases.front());
    std::cout << "Saved " << mainFile.string() << '\n';
    return 0;
}

Json phaseJson(const XrayPhase& phase) {
    Json peaks = Json::array();
    for (int k = 0; k < phase.peaks.count(); ++k) {
        const auto i = static_cast<std::size_t>(k);
        peaks.push_back(Json{{"two_theta", jsonNumber(phase.peaks.twoTheta(k))},
                             {"two_theta_error", jsonNumber(phase.peaks.PKERR[i][1])},
                             {"fwhm", jsonNumber(phase.peaks.fwhm(k))},
                             {"height", jsonNumber(phase.peaks.height(k))},
                             {"d", jsonNumber(phase.peaks.PKDSP[i])},
                             {"d_error", jsonNumber(phase.peaks.PKDERR[i])},
                             {"use", static_cast<bool>(phase.peaks.USEPK[i])},
                             {"type", phase.peaks.PKTYPE[i]}});
    }
    Json cell = Json::array();
    for (const float value : phase.ICP) {
        cell.push_back(jsonNumber(value));
    }
    return Json{{"name", phase.name},
                {"system", std::string(crystalSystemName(phase.SYM))},
                {"source", phase.source},
                {"icp", cell},
                {"useicp", phase.USEICP},
                {"useihkl", phase.USEIHKL},
                {"useiints", phase.USEIINTS},
                {"numinp", phase.NUMINP()},
                {"peaks", peaks},
                {"matches", matchesJson(phase)}};
}

// The refinement the project was saved with; null when it holds none.
Json refinedJson(const std::optional<RefinedCellRecord>& refined) {
    if (!refined) {
        return nullptr;
    }
    return Json{{"system", refined->system},
                {"lines", refined->lines},
                {"cell", refined->cell},
                {"errors", refined->error},
                {"volume", refined->volume},
                {"volume_error", refined->volumeError},
                {"rmse", refined->rmse},
                {"machine_error", refined->machineError},
                {"input", refined->input.string()},
                {"report", refined->report.string()}};
}

int runShow(const ShowOptions& options, ProgramState& state) {
    const int index = openXrayProject(options.path, state.specdata, state.xrayPeak);
    const std::optional<RefinedCellRecord> refined = loadRefinedRecord(state.xrayPeak.projectFile);
    const auto x = state.specdata.xValues(index);
    const auto k = static_cast<std::size_t>(index);
    Json phases = Json::array();
    for (const XrayPhase& phase : state.xrayPeak.phases) {
        phases.push_back(phaseJson(phase));
    }
    const Json json{{"project", state.xrayPeak.projectFile.string()},
                    {"pattern",
                     {{"name", state.specdata.NAME[k]},
                      {"dtype", state.specdata.DTYPE[k]},
                      {"points", state.specdata.NUMDATA[k]},
                      {"x_first", jsonNumber(x.front())},
                      {"x_last", jsonNumber(x.back())}}},
                    {"wavelengths", state.xrayPeak.wavelengths},
                    {"phases", phases},
                    {"refined", refinedJson(refined)}};
    if (options.json) {
        std::cout << json.dump(2) << '\n';
        return 0;
    }
    std::cout << "Project " << json["project"].get<std::string>() << '\n'
              << "  pattern      " << state.specdata.NAME[k] << ", " << x.size() << " points, "
              << json["pattern"]["x_first"] << " to " << json["pattern"]["x_last"] << " deg\n"
              << "  wavelengths  " << json["wavelengths"].dump() << '\n';
    for (std::size_t p = 0; p < state.xrayPeak.phases.size(); ++p) {
        const XrayPhase& phase = state.xrayPeak.phases[p];
        std::cout << "Phase " << p + 1 << ": " << phase.name << ", "
                  << (phase.SYM == kSymUnknown ? "system not known"
                                               : std::string(crystalSystemName(phase.SYM)))
                  << ", " << phase.peaks.count() << " peaks, " << phase.NUMINP()
                  << " input reflections, input cell " << phases[p]["icp"].dump() << ", useicp "
                  << phase.USEICP << " useihkl " << phase.USEIHKL << " useiints " << phase.USEIINTS
                  << '\n';
        printMatches(phase);
    }
    if (refined) {
        std::cout << "Refined      " << refined->system << " cell "
                  << json["refined"]["cell"].dump() << " from " << refined->lines
                  << " lines, report " << refined->report.string() << '\n';
    }
    return 0;
}

} // namespace

std::vector<CliCommand> addXrayProjectCommands(CLI::App& app) {
    CLI::App* project = app.add_subcommand("xray-project", "Create, save and show X-ray projects");
    project->require_subcommand(1);

    auto newOptions = std::make_shared<NewOptions>();
    CLI::App* create = project->add_subcommand(
        "new", "Create a project (a folder of its own) holding a pattern and an empty phase");
    create->add_option("path", newOptions->path, "Project to create (work/q.xproj: work/q/)")
        ->required();
    create->add_option("pattern", newOptions->pattern, "Measured powder pattern")->required();
    create->add_option("--name", newOptions->name, "Name of the first phase");

    auto saveOptions = std::make_shared<SaveOptions>();
    CLI::App* save = project->add_subcommand(
        "save", "Fit and match a pattern's peaks to a reference file and save them as the "
                "project's phase (the project is created when missing)");
    save->add_option("path", saveOptions->path, "Project (main file or folder)")->required();
    addXrayRunOptions(*save, saveOptions->run);

    auto showOptions = std::make_shared<ShowOptions>();
    CLI::App* show = project->add_subcommand("show", "Read a project and show what it holds");
    show->add_option("path", showOptions->path, "Project (main file or folder)")->required();
    show->add_flag("--json", showOptions->json, "Print JSON instead of text");

    return {{create, [newOptions](ProgramState& s) { return runNew(*newOptions, s); }},
            {save, [saveOptions](ProgramState& s) { return runSave(*saveOptions, s); }},
            {show, [showOptions](ProgramState& s) { return runShow(*showOptions, s); }}};
}

} // namespace quarvex::cli
