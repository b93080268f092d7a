// Writing the refinement report: heading box, cell blocks, results, the observed/calculated table
// through its run-time-built format, and the statistics.
#include "xray/RefineReport.h"

#include "common/TextUtils.h"
#include "xray/FixedFormat.h"
#include "xray/RefineEngine.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace quarvex {

namespace {

// Decimals of the table: 2-theta to a thousandth of a degree, d to 1e-5 angstrom.
constexpr int kTwoThetaDecimals = 3;
constexpr int kDDecimals = 5;
constexpr int kTwoThetaDifferenceDecimals = 3;
constexpr int kDDifferenceDecimals = 5;
constexpr std::size_t kFormatWidth = 57; // the text the table format is built into

constexpr std::string_view kStars =
    " ************************************************************************";
constexpr std::string_view kCellHeading =
    "A            B            C          Alpha      Beta        Gamma";
constexpr int kCellHeadingIndent = 8;

template <class... T> std::string printed(const char* format, T... values) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, values...);
    return buffer;
}

void padTo(std::string& text, std::size_t column) {
    if (text.size() < column) {
        text.resize(column, ' ');
    }
}

// The column where a label of the cell heading is centred.
double labelCentre(std::string_view label) {
    const std::size_t start = kCellHeading.find(label);
    return kCellHeadingIndent + static_cast<double>(start) + 0.5 * (label.size() - 1.0);
}

int representativeEntry(unsigned entries) {
    int m = 0;
    while (((entries >> m) & 1U) == 0U) {
        ++m;
    }
    return m;
}

} // namespace

void RefineReport::line(std::string_view text) {
    if (!quiet_) {
        out_ << trimmedRight(text) << '\n';
    }
}

void RefineReport::failure(INOUTPARMS& io, std::initializer_list<std::string_view> lines) {
    std::string message;
    for (const std::string_view text : lines) {
        out_ << trimmedRight(text) << '\n';
        if (!message.empty()) {
            message += ' ';
        }
        message += trimmed(text);
    }
    if (io.message.empty()) {
        io.message = message;
    }
}

void RefineReport::metricFailure(INOUTPARMS& io) {
    failure(io, {" There must be an error in the cell parameters",
                 " because the metric cannot be inverted."});
}

void RefineReport::banner() {
    line(kStars);
    line(kStars);
    line(" **Program LATTIX Version 3.0");
    line(" **Least-squares refinement of unit-cell parameters from indexed powder lines");
    line(kStars);
    line(kStars);
    line("");
}

void RefineReport::runHeading(const INOUTPARMS& io, const DATASTFF& data) {
    line(" " + io.title);
    line(" Symmetry constraint is:");
    line(" " + data.XTLSYS);
    for (int w = 0; w < data.NWAVES; ++w) {
        line(printed(" Wavelength #%2d =%11.6f", w + 1, data.WAVES[w]));
    }
    line(printed(" Reflections: %d, observed as %s", data.NREF,
                 io.tableInD ? "d-spacings (angstroms)" : "2-theta (degrees)"));
    line("");
}

void RefineReport::cellTable(std::string_view caption, const std::array<double, 6>& cell) {
    static constexpr std::array<std::string_view, 6> kLabels{"A",     "B",    "C",
                                                             "Alpha", "Beta", "Gamma"};
    line(caption);
    line(std::string(kCellHeadingIndent, ' ') + std::string(kCellHeading));
    std::string values;
    for (int m = 0; m < 6; ++m) {
        const std::string text = m < 3 ? printed("%.5f", cell[m]) : printed("%.4f", cell[m]);
        // Decimal points line up under the centres of the labels.
        const double start = labelCentre(kLabels[m]) - static_cast<double>(text.find('.'));
        padTo(values, static_cast<std::size_t>(std::max(0.0, std::round(start))));
        if (!values.empty() && values.back() != ' ') {
            values += ' ';
        }
        values += text;
    }
    line(values);
    line("");
}

void RefineReport::cellResults(const INOUTPARMS& io, const DATASTFF& data,
                               const CrystalSystemRule& rule) {
    static constexpr std::array<std::string_view, 6> kLabels{
        "A =", "B =", "C =", "Alpha =", "Beta =", "Gamma ="};
    const unsigned free = freeCellEntries(rule);
    cellTable(" Refined cell:", data.CELL);
    if (data.normalKind == CovarianceKind::None) {
        line(" Standard errors are not available: the iteration gave no normal matrix.");
    } else if (data.NREF == rule.unknowns) {
        line(" As many reflections as unknowns: the standard errors cannot be estimated.");
    }
    for (int m = 0; m < 6; ++m) {
        const int decimals = m < 3 ? 5 : 4;
        std::string text =
            printed(" %9s%13.*f", std::string(kLabels[m]).c_str(), decimals, data.CELL[m]);
        if (((free >> m) & 1U) == 0U) {
            text += "      fixed by symmetry";
        } else {
            text += printed("  +/- %10.*f   ", decimals, data.ERROR[m]) +
                    compactWithError(data.CELL[m], data.ERROR[m]);
        }
        line(text);
    }
    line(printed(" %9s%13.3f  +/- %10.3f   ", "Volume =", io.volume, io.volumeError) +
         compactWithError(io.volume, io.volumeError));
    line("   (edges and volume in angstroms, angles in degrees; errors are standard errors)");
    line("");
}

void RefineReport::statistics(const INOUTPARMS& io, const DATASTFF& data,
                              const CrystalSystemRule& rule) {
    std::array<int, 6> entry{};
    for (int j = 0; j < rule.unknowns; ++j) {
        entry[j] = representativeEntry(rule.directEntries[j]);
    }
    const auto writeMatrix = [&](const RefineMatrix6& matrix, const char* valueFormat, int width) {
        std::string heading(8, ' ');
        for (int j = 0; j < rule.unknowns; ++j) {
            heading += printed("%*s", width, std::string(cellEntryLabel(entry[j])).c_str());
        }
        line(heading);
        for (int i = 0; i < rule.unknowns; ++i) {
            std::string row = printed(" %-7s", std::string(cellEntryLabel(entry[i])).c_str());
            for (int j = 0; j < rule.unknowns; ++j) {
                row += printed(valueFormat, matrix[entry[i]][entry[j]]);
            }
            line(row);
        }
        line("");
    };
    line(" Variance/Covariance MATRIX (units = angstroms and radians)");
    writeMatrix(data.COVAR, "%14.5E", 14);
    line(" Correlation Matrix");
    writeMatrix(data.CORR, "%9.4f", 9);
    line(printed(" rmse = %12.5E   (weighted residual in Q = 1/d**2, 1/angstroms**2)", io.rmse));
    line("");
}

std::string compactWithError(double value, double error) {
    if (!(error > 0.0) || !std::isfinite(error) || !std::isfinite(value)) {
        return {};
    }
    int decimals = -static_cast<int>(std::floor(std::log10(error)));
    if (std::round(error * std::pow(10.0, decimals + 1)) <= 19.0) {
        ++decimals; // a leading 1 keeps a second digit
    }
    decimals = std::max(decimals, 0);
    const double digits = std::round(error * std::pow(10.0, decimals));
    return printed("%.*f(%.0f)", decimals, value, digits);
}

std::string tableFormat(bool tableInD, int wavelengths) {
    std::string format;
    if (tableInD) {
        format = formatFixed("(A7,I1,A14,I1,A7,I1,A1)",
                             {"(8X,F9.", kDDecimals, ",1X,3I3,5X,F9.", kDDecimals, ",6X,F7.",
                              kDDifferenceDecimals, ")"});
    } else if (wavelengths > 1) {
        format =
            formatFixed("(A7,I1,A4,I1,A20,I1,A7,I1,A7,I1,A5,I1,A1)",
                        {"(1X,F9.", kTwoThetaDecimals, ",F9.", kDDecimals, ",1X,3I3,4X,I1,1X,F9.",
                         kTwoThetaDecimals, ",1X,F9.", kDDecimals, ",3X,F7.",
                         kTwoThetaDifferenceDecimals, ",F10.", kDDifferenceDecimals, ")"});
    } else {
        format = formatFixed("(A7,I1,A4,I1,A14,I1,A7,I1,A7,I1,A5,I1,A1)",
                             {"(1X,F9.", kTwoThetaDecimals, ",F9.", kDDecimals, ",1X,3I3,6X,F9.",
                              kTwoThetaDecimals, ",1X,F9.", kDDecimals, ",3X,F7.",
                              kTwoThetaDifferenceDecimals, ",F10.", kDDifferenceDecimals, ")"});
    }
    return fitted(format, kFormatWidth);
}

void RECAST(const INOUTPARMS& io, const DATASTFF& data, RefineReport& report) {
    const std::string format = tableFormat(io.tableInD, data.NWAVES);
    if (io.tableInD) {
        report.line("         OBSERVED            CALCULATED          DIFFERENCE");
        report.line("              d     h  k  l       d(calc.)     d(diff.)");
        for (int r = 0; r < data.NREF; ++r) {
            report.line(formatFixed(format, {data.DO[r], data.h[r], data.k[r], data.l[r],
                                             data.DC[r], data.DO[r] - data.DC[r]}));
        }
        report.line("");
        return;
    }
    report.line("      OBSERVED                        CALCULATED          DIFFERENCE");
    report.line(data.NWAVES > 1
                    ? "    2theta       d    h  k  l  Wave#  2theta       d      2theta       d"
                    : "    2theta       d    h  k  l         2theta       d      2theta       d");
    double sumOfSquares = 0.0;
    for (int r = 0; r < data.NREF; ++r) {
        const double twoThetaDifference = data.TTHETA[r] - data.TTHETAC[r];
        sumOfSquares += twoThetaDifference * twoThetaDifference;
        const double dDifference = data.DO[r] - data.DC[r];
        if (data.NWAVES > 1) {
            report.line(formatFixed(format, {data.TTHETA[r], data.DO[r], data.h[r], data.k[r],
                                             data.l[r], data.WAVEID[r], data.TTHETAC[r], data.DC[r],
                                             twoThetaDifference, dDifference}));
        } else {
            report.line(formatFixed(format, {data.TTHETA[r], data.DO[r], data.h[r], data.k[r],
                                             data.l[r], data.TTHETAC[r], data.DC[r],
                                             twoThetaDifference, dDifference}));
        }
    }
    report.line(printed("   rms of the 2-theta differences = %8.4f degrees",
                        std::sqrt(sumOfSquares / data.NREF)));
    report.line("");
}

} // namespace quarvex
