// Formats the joint refinement for the report: fixed columns, the esds side by side.
#include "xray/JointRefineReport.h"

#include "common/AtomicFile.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace quarvex {

namespace {

constexpr std::array<const char*, 6> kEntryLabels{"A", "B", "C", "Alpha", "Beta", "Gamma"};
const std::string kRule(72, '*');

std::string printed(const char* format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

std::string numberOrDash(const char* format, double value) {
    return std::isfinite(value) ? printed(format, value) : printed("%9s", "-");
}

void cellBlock(const JointRefineResult& result, std::vector<std::string>& out) {
    out.push_back("                  Value      esd(s)  esd(floor)");
    for (int m = 0; m < 6; ++m) {
        const int decimals = m < 3 ? 5 : 4;
        if (result.esd[m] > 0.0) {
            out.push_back(printed(" %6s = %12.*f %11.*f %11.*f", kEntryLabels[m], decimals,
                                  result.cell[m], decimals, result.esd[m], decimals,
                                  result.esdFloor[m]));
        } else {
            out.push_back(printed(" %6s = %12.*f      fixed by symmetry", kEntryLabels[m], decimals,
                                  result.cell[m]));
        }
    }
    out.push_back(printed(" Volume = %12.3f %11.3f %11.3f", result.volume, result.volumeEsd,
                          result.volumeEsdFloor));
    if (result.settings.refineZero) {
        out.push_back(printed("   Zero = %12.4f %11.4f %11.4f  degrees, added to every observed "
                              "2-theta",
                              result.zero, result.zeroEsd, result.zeroEsdFloor));
    }
    if (result.settings.refineDisplacement) {
        out.push_back(printed(" Displ. = %12.4f %11.4f %11.4f  mm, the observed lines lie "
                              "-2 s cos(theta)/R off",
                              result.displacement, result.displacementEsd,
                              result.displacementEsdFloor));
    }
}

void correlationBlock(const JointRefineResult& result, std::vector<std::string>& out) {
    out.push_back(" Correlations of the refined parameters:");
    std::string heading = "              ";
    for (const std::string& name : result.parameters) {
        heading += printed("%9.8s", name.c_str());
    }
    out.push_back(heading);
    for (size_t i = 0; i < result.parameters.size(); ++i) {
        std::string row = printed(" %12.12s ", result.parameters[i].c_str());
        for (size_t j = 0; j <= i; ++j) {
            row += printed("%9.3f", result.correlation[i][j]);
        }
        out.push_back(row);
    }
}

void meritBlock(const JointRefineResult& result, std::vector<std::string>& out) {
    const FiguresOfMerit& merit = result.merit;
    out.push_back(printed(" Figures of merit (lattice centring %c, lines of the first wavelength):",
                          result.settings.centring));
    if (!merit.available) {
        out.push_back("   not available: no possible line up to the observed ones.");
        return;
    }
    out.push_back(printed("   M(%d) = %8.1f   Q(%d) = %.5f 1/A^2, <|dQ|> = %.3E, N_poss = %d",
                          merit.mLines, merit.m, merit.mLines, merit.qN, merit.meanAbsDeltaQ,
                          merit.mPossible));
    out.push_back(printed("   F(%d) = %8.1f   (<|d2theta|> = %.4f deg, N_poss = %d)", merit.fLines,
                          merit.f, merit.meanAbsDeltaTwoTheta, merit.fPossible));
}

void diagnosticsBlock(const JointRefineResult& result, std::vector<std::string>& out) {
    out.push_back(printed(" Diagnostics per line (flags: H hat > 2p/n = %.3f, R |Rstudent| > 2);",
                          2.0 * result.p / result.n));
    out.push_back(" da db dc: change of the edge when the line is left out, angstroms.");
    out.push_back(" Line   h   k   l  2th(obs) 2th(corr) 2th(calc)    diff    hat  Rstudent"
                  "   DFFITS        da        db        dc  flag");
    for (const JointLineResult& line : result.lines) {
        std::string flag;
        flag += line.highLeverage ? "H" : "";
        flag += line.outlier ? "R" : "";
        flag += line.leverageOne ? "1" : "";
        out.push_back(printed("%5d%4d%4d%4d%10.4f%10.4f%10.4f%8.4f%7.3f", line.line, line.h, line.k,
                              line.l, line.twoThetaObsDeg, line.twoThetaCorrDeg,
                              line.twoThetaCalcDeg, line.residualDeg, line.hat) +
                      numberOrDash("%10.3f", line.rstudent) + numberOrDash("%9.3f", line.dffits) +
                      numberOrDash("%10.6f", line.edgeChange[0]) +
                      numberOrDash("%10.6f", line.edgeChange[1]) +
                      numberOrDash("%10.6f", line.edgeChange[2]) + "  " + flag);
    }
    for (const std::string& warning : result.warnings) {
        out.push_back(" " + warning);
    }
}

} // namespace

std::vector<std::string> jointReportSection(const JointRefineResult& result) {
    std::vector<std::string> out{"", " " + kRule,
                                 " Joint refinement in 2-theta: the cell with the instrument terms",
                                 " " + kRule};
    if (!result.ok) {
        out.push_back(" The joint refinement was refused: " + result.message);
        out.push_back("");
        return out;
    }
    const JointRefineSettings& settings = result.settings;
    std::string refined = " Refined with the cell:";
    refined += settings.refineZero ? " zero shift" : "";
    refined += settings.refineZero && settings.refineDisplacement ? " and" : "";
    refined += settings.refineDisplacement
                   ? printed(" sample displacement (goniometer radius %.1f mm)", settings.radiusMm)
                   : "";
    refined += settings.refineZero || settings.refineDisplacement ? "" : " nothing else";
    out.push_back(refined);
    out.push_back(printed(" Unit weights in 2-theta: %d lines, %d parameters, %d iterations",
                          result.n, result.p, result.iterations));
    out.push_back(printed(" s = %.5f degrees (sqrt(SSR / (n - p)) of the 2-theta residuals)",
                          result.sigmaDeg));
    out.push_back(printed(" esd(s): scaled by s; esd(floor): scaled by max(s, %.4f degrees)",
                          settings.sigmaFloorDeg));
    out.push_back("");
    cellBlock(result, out);
    out.push_back("");
    correlationBlock(result, out);
    out.push_back("");
    meritBlock(result, out);
    out.push_back("");
    diagnosticsBlock(result, out);
    out.push_back("");
    return out;
}

bool appendToReport(const std::filesystem::path& path, const std::vector<std::string>& lines) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream existing;
    existing << in.rdbuf();
    in.close();
    AtomicFile file(path);
    if (!file.isOpen()) {
        return false;
    }
    file.stream() << existing.str();
    for (const std::string& line : lines) {
        file.stream() << line << '\n';
    }
    return file.commit();
}

} // namespace quarvex
