// The joint refinement on the command line: options, run, JSON and text.
#include "cli/JointRefineOutput.h"

#include "cli/RefineOutput.h"
#include "common/QuarvexError.h"
#include "xray/FiguresOfMerit.h"
#include "xray/JointRefineReport.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace quarvex::cli {

namespace {

Json valueOrNull(bool present, double value) {
    return present ? Json(value) : Json(nullptr);
}

} // namespace

void addJointOptions(CLI::App& command, JointOptions& options) {
    command.add_flag("--refine-zero", options.settings.refineZero,
                     "Also refine the 2-theta zero shift with the cell, in 2-theta");
    CLI::Option* displacement =
        command.add_flag("--refine-displacement", options.settings.refineDisplacement,
                         "Also refine the sample displacement (-2 s cos(theta) / R)");
    command
        .add_option("--radius", options.settings.radiusMm,
                    "Goniometer radius R in mm for the displacement (default 240)")
        ->needs(displacement);
    command.add_option("--sigma-floor", options.settings.sigmaFloorDeg,
                       "Smallest 2-theta uncertainty of a line for the floor esds, degrees "
                       "(default 0.005)");
    command.add_flag("--diagnostics", options.diagnostics,
                     "Run the 2-theta refinement with its diagnostics and figures of merit even "
                     "without --refine-zero or --refine-displacement");
    command.add_option("--centring", options.centring,
                       "Lattice centring for the figures of merit: P A B C I F R (default: the "
                       "reference's space group, else P)");
}

JointRefineResult runJointRefinement(const JointOptions& options, const INOUTPARMS& io,
                                     const DATASTFF& data, char referenceCentring) {
    JointRefineSettings settings = options.settings;
    settings.centring = referenceCentring;
    if (!options.centring.empty()) {
        settings.centring = latticeCentring(options.centring);
        if (options.centring.size() != 1 ||
            settings.centring != std::toupper(options.centring[0])) {
            throw QuarvexError("--centring must be one of P A B C I F R.", "Refine");
        }
    }
    JointRefineResult result;
    if (io.tableInD) {
        result.message = "The joint refinement needs 2-theta observations: the input holds d.";
    } else {
        result = refineJoint(jointInputFrom(data), settings);
    }
    result.settings = settings;
    if (!appendToReport(io.reportPath, jointReportSection(result))) {
        std::cerr << "Warning: cannot add the joint refinement to the report "
                  << io.reportPath.string() << '\n';
    }
    if (!result.ok) {
        std::cerr << "Refine: " << result.message << '\n';
    }
    return result;
}

void addJointJson(Json& json, const JointRefineResult& result) {
    const JointRefineSettings& settings = result.settings;
    json["zero"] = valueOrNull(settings.refineZero, result.zero);
    json["zero_error"] = valueOrNull(settings.refineZero, result.zeroEsd);
    json["displacement"] = valueOrNull(settings.refineDisplacement, result.displacement);
    json["displacement_error"] = valueOrNull(settings.refineDisplacement, result.displacementEsd);
    const FiguresOfMerit& merit = result.merit;
    json["m20"] = valueOrNull(merit.available, merit.m);
    json["fn"] = Json{{"value", valueOrNull(merit.available, merit.f)},
                      {"mean_delta_2theta", merit.meanAbsDeltaTwoTheta},
                      {"n_poss", merit.fPossible},
                      {"lines", merit.fLines}};
    Json diagnostics = Json::array();
    for (const JointLineResult& line : result.lines) {
        diagnostics.push_back(
            Json{{"line", line.line},
                 {"h", line.h},
                 {"k", line.k},
                 {"l", line.l},
                 {"hat", line.hat},
                 {"rstudent", valueOrNull(std::isfinite(line.rstudent), line.rstudent)},
                 {"dffits", valueOrNull(std::isfinite(line.dffits), line.dffits)},
                 {"flagged", line.highLeverage || line.outlier},
                 {"residual_2theta", line.residualDeg},
                 {"edge_change", line.edgeChange}});
    }
    json["diagnostics"] = diagnostics;
    json["joint"] =
        Json{{"cell", result.cell},
             {"error", result.esd},
             {"error_floor", result.esdFloor},
             {"volume", result.volume},
             {"volume_error", result.volumeEsd},
             {"volume_error_floor", result.volumeEsdFloor},
             {"zero_error_floor", valueOrNull(settings.refineZero, result.zeroEsdFloor)},
             {"displacement_error_floor",
              valueOrNull(settings.refineDisplacement, result.displacementEsdFloor)},
             {"radius_mm", settings.radiusMm},
             {"sigma_floor", settings.sigmaFloorDeg},
             {"sigma_2theta", result.sigmaDeg},
             {"parameters", result.parameters},
             {"correlation", result.correlation},
             {"iterations", result.iterations},
             {"m20_lines", merit.mLines},
             {"m20_n_poss", merit.mPossible},
             {"warnings", result.warnings}};
}

void printJointText(const JointRefineResult& result) {
    std::printf("Joint refinement in 2-theta, %d lines, %d parameters\n", result.n, result.p);
    for (int m = 0; m < 6; ++m) {
        printCellParameter(m, result.cell[m], result.esd[m], result.esdFloor[m]);
    }
    std::printf("  %-6s = %12.3f +/- %.3f (floor %.3f)\n", "volume", result.volume,
                result.volumeEsd, result.volumeEsdFloor);
    if (result.settings.refineZero) {
        std::printf("  zero   = %12.4f +/- %.4f deg (floor %.4f)\n", result.zero, result.zeroEsd,
                    result.zeroEsdFloor);
    }
    if (result.settings.refineDisplacement) {
        std::printf("  displ. = %12.4f +/- %.4f mm (floor %.4f)\n", result.displacement,
                    result.displacementEsd, result.displacementEsdFloor);
    }
    std::printf("  s      = %12.5f deg\n", result.sigmaDeg);
    if (result.merit.available) {
        std::printf("  M(%d) = %.1f, F(%d) = %.1f (%.4f, %d)\n", result.merit.mLines,
                    result.merit.m, result.merit.fLines, result.merit.f,
                    result.merit.meanAbsDeltaTwoTheta, result.merit.fPossible);
    }
    for (const JointLineResult& line : result.lines) {
        if (line.highLeverage || line.outlier) {
            std::printf("  flagged line %d (%d %d %d): hat %.3f, Rstudent %.2f\n", line.line,
                        line.h, line.k, line.l, line.hat, line.rstudent);
        }
    }
    for (const std::string& warning : result.warnings) {
        std::printf("  %s\n", warning.c_str());
    }
}

} // namespace quarvex::cli
