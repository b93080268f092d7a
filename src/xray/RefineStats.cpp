// Statistics of a refinement: rmse, the covariance of the cell, standard errors, correlations and
// the volume with its error.
//
// The normal inverse N^-1 belongs either to the free direct parameters (the iteration) or to the
// free reciprocal-metric terms (the linear estimate). Either way the cell covariance is
// C = s^2 J N^-1 J^T with s^2 = SSR / (n - unknowns) and J = d(cell)/d(parameters). For the
// reciprocal terms, dG = -G dG* G, and from G11 = a^2, G23 = b c cos(alpha), ...:
//     da = dG11 / (2a),   dcos(alpha) = dG23 / (b c) - cos(alpha) (db / b + dc / c),
//     dalpha = -dcos(alpha) / sin(alpha)          (likewise beta from G13, gamma from G12).
// The volume V = a b c sqrt(1 - cos^2 alpha - cos^2 beta - cos^2 gamma + 2 cos alpha cos beta
// cos gamma) has dV/da = V / a and dV/dalpha = a^2 b^2 c^2 sin(alpha) (cos alpha - cos beta
// cos gamma) / V (cyclically).
#include "xray/RefineEngine.h"
#include "xray/RefineReport.h"

#include <algorithm>
#include <cmath>

namespace quarvex {

namespace {

void reciprocalJacobian(const DATASTFF& data, const CrystalSystemRule& rule, const Matrix3& metric,
                        RefineMatrix6& jacobian) {
    const auto& cell = data.CELL;
    const double cosines[3] = {std::cos(cell[3] * kDegree), std::cos(cell[4] * kDegree),
                               std::cos(cell[5] * kDegree)};
    const double sines[3] = {std::sin(cell[3] * kDegree), std::sin(cell[4] * kDegree),
                             std::sin(cell[5] * kDegree)};
    // Angle m (alpha, beta, gamma) lies between the edges (i, j) and sits in G[i][j].
    static constexpr int kEdgesOfAngle[3][2] = {{1, 2}, {0, 2}, {0, 1}};
    for (int j = 0; j < rule.unknowns; ++j) {
        const auto& t = rule.reciprocalTerms[j];
        const Matrix3 dReciprocal{{{t[0], t[3], t[4]}, {t[3], t[1], t[5]}, {t[4], t[5], t[2]}}};
        Matrix3 dMetric{};
        for (int p = 0; p < 3; ++p) {
            for (int q = 0; q < 3; ++q) {
                double sum = 0.0;
                for (int r = 0; r < 3; ++r) {
                    for (int s = 0; s < 3; ++s) {
                        sum += metric[p][r] * dReciprocal[r][s] * metric[s][q];
                    }
                }
                dMetric[p][q] = -sum;
            }
        }
        std::array<double, 3> dEdge{};
        for (int m = 0; m < 3; ++m) {
            dEdge[m] = dMetric[m][m] / (2.0 * cell[m]);
            jacobian[m][j] = dEdge[m];
        }
        for (int m = 0; m < 3; ++m) {
            const int p = kEdgesOfAngle[m][0];
            const int q = kEdgesOfAngle[m][1];
            const double dCosine = dMetric[p][q] / (cell[p] * cell[q]) -
                                   cosines[m] * (dEdge[p] / cell[p] + dEdge[q] / cell[q]);
            jacobian[3 + m][j] = -dCosine / sines[m];
        }
    }
}

} // namespace

bool ERRPROP(const DATASTFF& data, const CrystalSystemRule& rule, RefineMatrix6& jacobian) {
    Matrix3 reciprocal{};
    if (!reciprocalMetric(data.CELL, reciprocal)) {
        return false;
    }
    jacobian = RefineMatrix6{};
    if (data.normalKind == CovarianceKind::Reciprocal) {
        Matrix3 metric{};
        MKMETRIC(data.CELL, metric);
        reciprocalJacobian(data, rule, metric, jacobian);
    } else {
        for (int j = 0; j < rule.unknowns; ++j) {
            for (int m = 0; m < 6; ++m) {
                jacobian[m][j] = (rule.directEntries[j] & (1U << m)) != 0U ? 1.0 : 0.0;
            }
        }
    }
    return true;
}

void CELLERR(DATASTFF& data, const CrystalSystemRule& rule, const RefineMatrix6& jacobian,
             double rmse) {
    const unsigned held = ~freeCellEntries(rule);
    RefineMatrix6 shape{}; // J N^-1 J^T: the covariance up to the variance factor
    for (int m = 0; m < 6; ++m) {
        for (int n = 0; n < 6; ++n) {
            if (((held >> m) & 1U) != 0U || ((held >> n) & 1U) != 0U) {
                continue;
            }
            double sum = 0.0;
            for (int i = 0; i < rule.unknowns; ++i) {
                for (int j = 0; j < rule.unknowns; ++j) {
                    sum += jacobian[m][i] * data.normalInverse[i][j] * jacobian[n][j];
                }
            }
            shape[m][n] = sum;
        }
    }
    const double variance = rmse * rmse;
    for (int m = 0; m < 6; ++m) {
        for (int n = 0; n < 6; ++n) {
            data.COVAR[m][n] = variance * shape[m][n];
            const double scale = std::sqrt(shape[m][m] * shape[n][n]);
            data.CORR[m][n] = scale > 0.0 ? shape[m][n] / scale : 0.0;
        }
        const double error = std::sqrt(data.COVAR[m][m]);
        data.ERROR[m] = m < 3 ? error : error / kDegree;
    }
}

void VOLERR(const DATASTFF& data, double& volume, double& volumeError) {
    const auto& cell = data.CELL;
    const double ca = std::cos(cell[3] * kDegree);
    const double cb = std::cos(cell[4] * kDegree);
    const double cg = std::cos(cell[5] * kDegree);
    const double abc = cell[0] * cell[1] * cell[2];
    volume = abc * std::sqrt(1.0 - ca * ca - cb * cb - cg * cg + 2.0 * ca * cb * cg);
    const double factor = abc * abc / volume;
    const std::array<double, 6> gradient{volume / cell[0],
                                         volume / cell[1],
                                         volume / cell[2],
                                         factor * std::sin(cell[3] * kDegree) * (ca - cb * cg),
                                         factor * std::sin(cell[4] * kDegree) * (cb - ca * cg),
                                         factor * std::sin(cell[5] * kDegree) * (cg - ca * cb)};
    double variance = 0.0;
    for (int m = 0; m < 6; ++m) {
        for (int n = 0; n < 6; ++n) {
            variance += gradient[m] * data.COVAR[m][n] * gradient[n];
        }
    }
    volumeError = std::sqrt(std::max(variance, 0.0));
}

bool STATS(INOUTPARMS& io, DATASTFF& data, RefineReport& report) {
    const CrystalSystemRule& rule = *findCrystalSystem(data.XTLSYS);
    double sumOfSquares = 0.0;
    for (int r = 0; r < data.NREF; ++r) {
        const double residual = data.SQW[r] * (data.QO[r] - data.QC[r]);
        sumOfSquares += residual * residual;
    }
    const int freedom = data.NREF - rule.unknowns;
    io.rmse = freedom > 0 ? std::sqrt(sumOfSquares / freedom) : 0.0;

    data.COVAR = RefineMatrix6{};
    data.CORR = RefineMatrix6{};
    data.ERROR = {};
    if (data.normalKind != CovarianceKind::None) {
        RefineMatrix6 jacobian{};
        if (!ERRPROP(data, rule, jacobian)) {
            report.metricFailure(io);
            return false;
        }
        CELLERR(data, rule, jacobian, io.rmse);
    }
    VOLERR(data, io.volume, io.volumeError);
    if (!report.quiet()) {
        report.cellResults(io, data, rule);
        RECAST(io, data, report);
        report.statistics(io, data, rule);
    }
    return true;
}

} // namespace quarvex
