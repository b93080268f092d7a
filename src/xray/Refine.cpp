// The refinement driver: reads the input, refines the cell, searches the 2-theta zero error and
// writes the report "Refine.out" beside the input.
#include "xray/Refine.h"

#include "common/AtomicFile.h"
#include "common/TextUtils.h"
#include "xray/RefineEngine.h"
#include "xray/RefineReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace quarvex {

namespace {

constexpr std::array<double, 3> kTrialShifts{0.01, 0.05, -0.05};
// The stopping threshold is the single-precision 0.025 widened to double.
constexpr double kVertexThreshold = 0.02500000037252903;
constexpr int kMaxSearchPasses = 5;

std::array<double, 6> withAnglesInDegrees(std::array<double, 6> cell) {
    for (int m = 3; m < 6; ++m) {
        cell[m] = std::acos(cell[m]) / kDegree;
    }
    return cell;
}

// One line of the search table: the pass, its three trial rmse values and the vertex.
std::string searchLine(int pass, const LeastSquaresDesign& parabola, double vertex) {
    char text[128];
    std::snprintf(text, sizeof text, "   %4d %14.5E %14.5E %14.5E %14.4f", pass, parabola.y[0],
                  parabola.y[1], parabola.y[2], vertex);
    return text;
}

bool refineInput(const std::filesystem::path& inputPath, INOUTPARMS& io, DATASTFF& data,
                 RefineReport& report) {
    const bool read = DATAIN(inputPath, io, data, report);
    data.TTHETAORIGINAL = data.TTHETA;
    if (!read) {
        return false;
    }
    report.runHeading(io, data);
    XTL(data.XTLSYS, data.unknowns);
    if (data.NREF < data.unknowns) {
        report.failure(io, {" Too few reflections: " + std::to_string(data.NREF) + " given, the " +
                            std::string(trimmed(data.XTLSYS)) + " cell has " +
                            std::to_string(data.unknowns) + " unknowns."});
        return false;
    }
    if (!refineOnce(io, data, report, !io.noEstimate)) {
        return false;
    }
    io.machineError = 0.0;
    if (!io.searchMachineError) {
        return true;
    }
    if (io.tableInD) {
        report.line(" The machine-error search needs 2-theta observations: not run for a table "
                    "in d.");
        return true;
    }
    return MACHERR(io, data, report);
}

} // namespace

std::filesystem::path refineReportPath(const std::filesystem::path& inputPath) {
    std::filesystem::path report = inputPath.parent_path();
    report /= inputPath.stem().string() + "Refine.out";
    return report;
}

bool refineOnce(INOUTPARMS& io, DATASTFF& data, RefineReport& report, bool estimate) {
    if (estimate) {
        if (!ESTIMATE(io, data, report)) {
            return false;
        }
    } else {
        data.normalKind = CovarianceKind::None;
    }
    report.cellTable(estimate ? " Starting cell, the linear least-squares solution in the "
                                "reciprocal metric:"
                              : " Starting cell, as given in the input:",
                     withAnglesInDegrees(data.CELL));
    return NONLIN(io, data, report) && CALCVAL(io, data, report) && STATS(io, data, report);
}

bool MACHERR(INOUTPARMS& io, DATASTFF& data, RefineReport& report) {
    report.line(" Machine-error search: trial shifts +0.010, +0.050, -0.050 degrees, each a full");
    report.line(" refinement with unit weights; the shift taken is the vertex of the parabola");
    report.line(" through the three rmse values.");
    report.line("   Pass   rmse(+0.010)   rmse(+0.050)   rmse(-0.050)   Vertex (deg)");
    io.machineErrorSearched = true;
    double total = 0.0;
    double vertex = 0.0;
    int passes = 0;
    bool thresholdMet = false;
    bool leftRange = false; // a corrected 2-theta left (0, 180) degrees: the vertex ran off
    double firstPassRmse = std::numeric_limits<double>::infinity(); // best trial of pass 1
    while (true) {
        ++io.machineErrorPasses;
        data.TTHETAO = data.TTHETA;
        LeastSquaresDesign parabola;
        parabola.rows = 3;
        parabola.columns = 3;
        report.setQuiet(true);
        for (int i = 0; i < 3; ++i) {
            const double shift = kTrialShifts[i];
            for (int r = 0; r < data.NREF; ++r) {
                data.TTHETA[r] = data.TTHETAO[r] + shift;
                data.SQW[r] = 1.0;
            }
            observedFromTwoTheta(data);
            if (!refineOnce(io, data, report, true)) {
                report.setQuiet(false);
                return false;
            }
            parabola.a[i] = {1.0, shift, shift * shift};
            parabola.y[i] = io.rmse;
            if (io.machineErrorPasses == 1) {
                firstPassRmse = std::min(firstPassRmse, io.rmse);
            }
        }
        report.setQuiet(false);
        RefineVector6 coefficients{};
        RefineMatrix6 unused{};
        vertex = MAKEDP(parabola, coefficients, unused) ? -coefficients[1] / (2.0 * coefficients[2])
                                                        : std::numeric_limits<double>::quiet_NaN();
        report.line(searchLine(io.machineErrorPasses, parabola, vertex));
        if (std::isnan(vertex)) {
            // Adding an undefined shift would void every line: the pass leaves them as they were.
            data.TTHETA = data.TTHETAO;
            observedFromTwoTheta(data);
            vertex = 0.0;
            break;
        }
        for (int r = 0; r < data.NREF; ++r) {
            data.TTHETA[r] = data.TTHETAO[r] + vertex;
            leftRange = leftRange || !(data.TTHETA[r] > 0.0 && data.TTHETA[r] < 180.0);
        }
        observedFromTwoTheta(data);
        if (!(std::fabs(vertex) > kVertexThreshold)) {
            thresholdMet = true;
            break;
        }
        // On the fifth pass the vertex joins the total before the loop ends, and is added once
        // more below: the reported machine error counts it twice, the 2-theta values once.
        total += vertex;
        ++passes;
        if (passes == kMaxSearchPasses) {
            break;
        }
    }
    io.machineError = total + vertex;
    report.line("");
    report.line(" Refinement after correcting for machine error");
    report.line("");
    char text[96];
    std::snprintf(text, sizeof text, " MACHINE ERROR: %8.3f", io.machineError);
    report.line(text);
    report.line(" (added to every observed 2-theta, degrees)");
    report.line("");
    if (!refineOnce(io, data, report, true)) {
        return false;
    }
    // The verdict judges the search without changing it: besides its own stopping rule it must
    // keep the lines within 0 to 180 degrees and end below the rmse it started from.
    const bool rmseRose = io.rmse > firstPassRmse;
    io.machineErrorConverged = thresholdMet && !leftRange && !rmseRose;
    if (io.machineErrorConverged) {
        return true;
    }
    std::snprintf(text, sizeof text, "the rmse rose from %.5E to %.5E.", firstPassRmse, io.rmse);
    const std::string reason =
        leftRange ? "the corrected 2-theta values left 0 to 180 degrees."
        : !thresholdMet && passes == kMaxSearchPasses ? "it stopped after its 5 passes."
        : !thresholdMet ? "the parabola through the trial rmse values has no vertex."
                        : text;
    report.line(" The machine-error search did not converge: " + reason);
    report.line(" The MACHINE ERROR above is not reliable. The rmse is V-shaped away from its");
    report.line(
        " minimum, so a zero error beyond about 0.05 degrees sends the parabola vertex off;");
    report.line(" correct the zero shift separately.");
    report.line("");
    return true;
}

bool REFINEMAIN(const std::filesystem::path& inputPath, INOUTPARMS& io, DATASTFF& data) {
    // The run fills its own blocks and hands them over only when it produced results.
    INOUTPARMS runIo;
    DATASTFF runData;
    // A folder, device or pipe is refused before its report is created: nothing is written.
    std::error_code error;
    const auto status = std::filesystem::status(inputPath, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        io.ok = false;
        io.message =
            inputPath.string() +
            (std::filesystem::is_directory(status) ? " is a folder" : " is not a regular file") +
            ", not a refinement input file.";
        return false;
    }
    runIo.reportPath = refineReportPath(inputPath);
    io.reportPath = runIo.reportPath;
    AtomicFile file(runIo.reportPath);
    if (!file.isOpen()) {
        io.ok = false;
        io.message = "Cannot write the report " + runIo.reportPath.string();
        return false;
    }
    RefineReport report(file.stream());
    report.banner();
    bool ok = refineInput(inputPath, runIo, runData, report);
    report.setQuiet(false);
    if (!ok) {
        report.line("");
        report.line(" The refinement stopped with the message above:");
        report.line(" no refined cell was produced from this input.");
    }
    if (!file.commit()) {
        ok = false;
        runIo.message = "Cannot write the report " + runIo.reportPath.string();
    }
    if (!ok) {
        io.ok = false;
        io.message = runIo.message;
        return false;
    }
    runIo.ok = true;
    io = runIo;
    data = runData;
    return true;
}

} // namespace quarvex
