// quarvex-cli process: trim, despike, remove the background and smooth a spectrum file with the
// desktop program's editing operations, and write the result in the program's format.
#include "cli/CliCommand.h"
#include "cli/JsonOutput.h"
#include "cli/SpectrumLoading.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "readers/JcampWriter.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumEdits.h"
#include "specdata/SpectrumRecords.h"

#include <iostream>
#include <memory>

namespace quarvex::cli {

namespace {

constexpr const char* kProcessTitle = "Process";

struct ProcessOptions {
    std::string file;
    std::optional<std::string> trim;
    bool despike = false;
    std::optional<std::string> baseline;
    std::optional<double> smooth;
    std::optional<std::string> out;
    std::string columns;
    bool json = false;
};

TrimEdit parseTrim(const std::string& text) {
    const std::size_t colon = text.find(':');
    TrimEdit edit;
    if (colon == std::string::npos || !parseReal(text.substr(0, colon), edit.low) ||
        !parseReal(text.substr(colon + 1), edit.high)) {
        throw QuarvexError("--trim needs LO:HI in x units, e.g. 150:1200 (got \"" + text + "\")",
                           "Trim");
    }
    return edit;
}

BaselineEdit baselineEdit(const std::string& method) {
    BaselineEdit edit;
    edit.method = method == "arpls"  ? BaselineMethod::Arpls
                  : method == "snip" ? BaselineMethod::Snip
                                     : BaselineMethod::Als;
    return edit;
}

// The operations in their fixed order: trim, despike, baseline, smooth.
std::vector<SpectrumEdit> requestedEdits(const ProcessOptions& options) {
    std::vector<SpectrumEdit> edits;
    if (options.trim) {
        edits.emplace_back(parseTrim(*options.trim));
    }
    if (options.despike) {
        edits.emplace_back(DespikeEdit{});
    }
    if (options.baseline) {
        edits.emplace_back(baselineEdit(*options.baseline));
    }
    if (options.smooth) {
        edits.emplace_back(SmoothEdit{*options.smooth, 0, 2});
    }
    return edits;
}

Json floatList(const std::vector<float>& values) {
    Json list = Json::array();
    for (const float value : values) {
        list.push_back(jsonNumber(value));
    }
    return list;
}

Json baselineJson(const BaselineEdit& edit, const EditOutcome& outcome) {
    Json json{{"method", baselineMethodName(edit.method)}};
    switch (edit.method) {
    case BaselineMethod::Als:
        json.update({{"penalty", edit.als.penalty}, {"asymmetry", edit.als.asymmetry}});
        break;
    case BaselineMethod::Arpls:
        json.update({{"penalty", edit.arpls.penalty}, {"tolerance", edit.arpls.tolerance}});
        break;
    case BaselineMethod::Snip:
        json["half_width"] = edit.snip.halfWidth;
        break;
    case BaselineMethod::Polynomial:
        break;
    }
    json["iterations"] = outcome.baselineIterations;
    return json;
}

int runProcess(const ProcessOptions& options, ProgramState& state) {
    if (options.json && !options.out) {
        throw QuarvexError("--json needs --out: the spectrum goes to the file, the report to "
                           "standard output.",
                           kProcessTitle);
    }
    const int index = loadCommandSpectrum(state, options.file, options.columns);
    SpectrumRecord record = spectrumRecord(state.specdata, index);
    Json report{{"file", options.file}, {"points_in", record.x.size()}};
    Json operations = Json::array();
    for (const SpectrumEdit& edit : requestedEdits(options)) {
        EditOutcome outcome = computeEdit(record, edit);
        Json operation{{"operation", outcome.label}, {"processing", outcome.processingLine}};
        if (std::holds_alternative<DespikeEdit>(edit)) {
            operation["spikes_x"] = floatList(outcome.spikeX);
        }
        if (const auto* baseline = std::get_if<BaselineEdit>(&edit)) {
            operation["baseline"] = baselineJson(*baseline, outcome);
        }
        if (std::holds_alternative<SmoothEdit>(edit)) {
            operation["window_points"] = outcome.windowPoints;
        }
        operations.push_back(std::move(operation));
        record = std::move(outcome.record);
    }
    if (!options.out) {
        writeSpectrumText(std::cout, record, SpectrumFileFormat::Program);
        return 0;
    }
    if (isJcampDxName(*options.out)) {
        writeJcampDxFile(*options.out, record);
    } else {
        writeSpectrumFile(*options.out, record);
    }
    report["points_out"] = record.x.size();
    report["operations"] = std::move(operations);
    report["out"] = *options.out;
    if (options.json) {
        std::cout << report.dump(2) << '\n';
    }
    return 0;
}

} // namespace

CliCommand addProcessCommand(CLI::App& app) {
    auto options = std::make_shared<ProcessOptions>();
    CLI::App* process = app.add_subcommand(
        "process", "Clean a spectrum file (in this order: trim, despike, baseline, smooth) and "
                   "write it in the program's format (to standard output without --out)");
    process->add_option("file", options->file, "Spectrum file")->required();
    addColumnsOption(*process, options->columns);
    process->add_option("--trim", options->trim, "Keep LO:HI (x units)");
    process->add_flag("--despike", options->despike, "Remove cosmic-ray spikes");
    process->add_option("--baseline", options->baseline, "Remove the background")
        ->check(CLI::IsMember({"als", "arpls", "snip"}));
    process->add_option("--smooth", options->smooth,
                        "Savitzky-Golay smoothing (order 2) over WIDTH x units");
    process->add_option("--out", options->out,
                        "Write the result to this file (JCAMP-DX when it ends in .jdx or .dx)");
    process->add_flag("--json", options->json, "Report what was done as JSON (needs --out)");
    return {process, [options](ProgramState& state) { return runProcess(*options, state); }};
}

} // namespace quarvex::cli
