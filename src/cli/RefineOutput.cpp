// The refinement's results as the commands print them, shared by refine and xray-refine.
#include "cli/RefineOutput.h"

#include "common/TextUtils.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <optional>

namespace quarvex::cli {

namespace {

constexpr std::array<const char*, 6> kCellNames{"a", "b", "c", "alpha", "beta", "gamma"};

std::string searchState(const INOUTPARMS& io) {
    if (!io.machineErrorSearched) {
        return "not run";
    }
    return io.machineErrorConverged ? "converged" : "not converged";
}

} // namespace

Json refineResultJson(const INOUTPARMS& io, const DATASTFF& data) {
    Json corr = Json::array();
    for (const auto& row : data.CORR) {
        corr.push_back(Json(row));
    }
    Json table = Json::array();
    for (int r = 0; r < data.NREF; ++r) {
        table.push_back(Json{{"h", data.h[r]},
                             {"k", data.k[r]},
                             {"l", data.l[r]},
                             {"wave", data.WAVEID[r]},
                             {"obs_2theta", data.TTHETA[r]},
                             {"obs_d", data.DO[r]},
                             {"calc_2theta", data.TTHETAC[r]},
                             {"calc_d", data.DC[r]},
                             {"obs_2theta_as_read", data.TTHETAORIGINAL[r]}});
    }
    return Json{{"system", std::string(trimmed(data.XTLSYS))},
                {"cell", data.CELL},
                {"error", data.ERROR},
                {"volume", io.volume},
                {"volume_error", io.volumeError},
                {"rmse", io.rmse},
                {"iterations", io.iterations},
                {"iteration_limit_hit", io.iterationLimitHit},
                {"machine_error", io.machineError},
                {"machine_error_search", searchState(io)},
                {"report", io.reportPath.string()},
                {"corr", corr},
                {"table", table}};
}

void printCellParameter(int m, double value, double esd, std::optional<double> esdFloor) {
    const int decimals = m < 3 ? 5 : 4;
    std::printf("  %-6s = %12.*f", kCellNames[m], decimals, value);
    if (esd > 0.0) {
        std::printf(" +/- %.*f", decimals, esd);
        if (esdFloor) {
            std::printf(" (floor %.*f)", decimals, *esdFloor);
        }
    }
    std::printf("\n");
}

void printRefineText(const INOUTPARMS& io, const DATASTFF& data) {
    std::printf("Refined cell, %s, %d reflections\n", std::string(trimmed(data.XTLSYS)).c_str(),
                data.NREF);
    for (int m = 0; m < 6; ++m) {
        printCellParameter(m, data.CELL[m], data.ERROR[m]);
    }
    std::printf("  %-6s = %12.3f +/- %.3f\n", "volume", io.volume, io.volumeError);
    std::printf("  rmse          %.5E (weighted Q = 1/d^2, 1/A^2)\n", io.rmse);
    if (io.iterationLimitHit) {
        std::printf("  iterations    101 passes without convergence: the last shifts stand\n");
    } else {
        std::printf("  iterations    %d\n", io.iterations);
    }
    std::printf("  machine error %.3f deg (search %s)\n", io.machineError, searchState(io).c_str());
    std::printf("  report        %s\n", io.reportPath.string().c_str());
}

bool reportRefineRun(bool ok, const INOUTPARMS& io) {
    if (!ok) {
        std::cerr << "Refine: " << io.message << '\n';
        if (!io.reportPath.empty()) {
            std::cerr << "Report: " << io.reportPath.string() << '\n';
        }
        return false;
    }
    if (io.machineErrorSearched && !io.machineErrorConverged) {
        std::cerr << "Warning: the machine-error search did not converge (" << io.machineErrorPasses
                  << " passes); its correction is not reliable, see the report.\n";
    }
    return true;
}

} // namespace quarvex::cli
