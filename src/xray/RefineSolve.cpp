// The refinement's crystallography and least squares: metric tensors, the linear estimate in the
// reciprocal metric, the Gauss-Newton iteration on the direct cell, calculated positions.
//
// With G the direct metric (G11 = a^2, G12 = a b cos(gamma), ...) and G* = G^-1 the reciprocal
// one, a reflection h = (h, k, l) has Q = 1/d^2 = h^T G* h. Q is linear in the six terms of G*,
// which `ESTIMATE` solves for directly. `NONLIN` refines the direct parameters instead: with
// u = G* h, dQ/dp = -u^T (dG/dp) u, and because G u = h this reduces to
//     dQ/da = -2 h u1 / a,   dQ/db = -2 k u2 / b,   dQ/dc = -2 l u3 / c,
//     dQ/dalpha = 2 b c sin(alpha) u2 u3,  dQ/dbeta = 2 a c sin(beta) u1 u3,
//     dQ/dgamma = 2 a b sin(gamma) u1 u2    (per radian).
#include "xray/RefineEngine.h"
#include "xray/RefineReport.h"

#include "common/TextUtils.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace quarvex {

namespace {

constexpr int kPassLimit = 100;
constexpr double kShiftTolerance = 1.0e-12;

bool positiveDefinite(const Matrix3& m) {
    const double minor2 = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const double determinant = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    return m[0][0] > 0.0 && minor2 > 0.0 && determinant > 0.0;
}

// The six products t = (h^2, k^2, l^2, 2hk, 2hl, 2kl) that multiply the terms of G*.
std::array<double, 6> reciprocalProducts(int h, int k, int l) {
    const double hd = h;
    const double kd = k;
    const double ld = l;
    return {hd * hd, kd * kd, ld * ld, 2.0 * hd * kd, 2.0 * hd * ld, 2.0 * kd * ld};
}

Matrix3 symmetricFromTerms(const std::array<double, 6>& g) {
    return Matrix3{{{g[0], g[3], g[4]}, {g[3], g[1], g[5]}, {g[4], g[5], g[2]}}};
}

// The reciprocal cell a*, b*, c* (1/A), alpha*, beta*, gamma* (degrees) of G*.
std::array<double, 6> reciprocalCell(const Matrix3& reciprocal) {
    const double as = std::sqrt(reciprocal[0][0]);
    const double bs = std::sqrt(reciprocal[1][1]);
    const double cs = std::sqrt(reciprocal[2][2]);
    return {as,
            bs,
            cs,
            std::acos(reciprocal[1][2] / (bs * cs)) / kDegree,
            std::acos(reciprocal[0][2] / (as * cs)) / kDegree,
            std::acos(reciprocal[0][1] / (as * bs)) / kDegree};
}

void singularFailure(INOUTPARMS& io, const DATASTFF& data, RefineReport& report) {
    const std::string advice = " Give reflections that fix every free parameter of the " +
                               std::string(trimmed(data.XTLSYS)) + " cell.";
    report.failure(io, {" The reflections do not determine the cell: the normal equations are "
                        "singular.",
                        advice});
}

} // namespace

void MKMETRIC(const std::array<double, 6>& cell, Matrix3& metric) {
    const double a = cell[0];
    const double b = cell[1];
    const double c = cell[2];
    const double cosAlpha = std::cos(cell[3] * kDegree);
    const double cosBeta = std::cos(cell[4] * kDegree);
    const double cosGamma = std::cos(cell[5] * kDegree);
    metric = Matrix3{{{a * a, a * b * cosGamma, a * c * cosBeta},
                      {a * b * cosGamma, b * b, b * c * cosAlpha},
                      {a * c * cosBeta, b * c * cosAlpha, c * c}}};
}

bool reciprocalMetric(const std::array<double, 6>& cell, Matrix3& reciprocal) {
    if (!(cell[0] > 0.0 && cell[1] > 0.0 && cell[2] > 0.0)) {
        return false;
    }
    Matrix3 metric{};
    MKMETRIC(cell, metric);
    return positiveDefinite(metric) && INV3D(metric, reciprocal);
}

bool ESTIMATE(INOUTPARMS& io, DATASTFF& data, RefineReport& report) {
    const CrystalSystemRule& rule = *findCrystalSystem(data.XTLSYS);
    LeastSquaresDesign design;
    design.rows = data.NREF;
    design.columns = rule.unknowns;
    for (int r = 0; r < data.NREF; ++r) {
        const auto t = reciprocalProducts(data.h[r], data.k[r], data.l[r]);
        for (int j = 0; j < rule.unknowns; ++j) {
            double column = 0.0;
            for (int m = 0; m < 6; ++m) {
                column += rule.reciprocalTerms[j][m] * t[m];
            }
            design.a[r][j] = data.SQW[r] * column;
        }
        design.y[r] = data.SQW[r] * data.QO[r];
    }
    RefineVector6 terms{};
    RefineMatrix6 inverse{};
    if (!MAKEDP(design, terms, inverse)) {
        singularFailure(io, data, report);
        return false;
    }
    std::array<double, 6> g{};
    for (int j = 0; j < rule.unknowns; ++j) {
        for (int m = 0; m < 6; ++m) {
            g[m] += terms[j] * rule.reciprocalTerms[j][m];
        }
    }
    const Matrix3 reciprocal = symmetricFromTerms(g);
    Matrix3 metric{};
    if (!positiveDefinite(reciprocal)) {
        report.failure(io, {" The reflections give no real cell: the fitted reciprocal metric is "
                            "not positive definite.",
                            " Check the indices and the crystal system."});
        return false;
    }
    if (!INV3D(reciprocal, metric)) {
        report.metricFailure(io);
        return false;
    }
    const double a = std::sqrt(metric[0][0]);
    const double b = std::sqrt(metric[1][1]);
    const double c = std::sqrt(metric[2][2]);
    data.CELL = {a, b, c, metric[1][2] / (b * c), metric[0][2] / (a * c), metric[0][1] / (a * b)};
    data.RCELL = reciprocalCell(reciprocal);
    data.normalInverse = inverse;
    data.normalKind = CovarianceKind::Reciprocal;
    return true;
}

void QCALC(const DATASTFF& data, const CrystalSystemRule& rule, const Matrix3& reciprocal,
           LeastSquaresDesign& design) {
    const auto& cell = data.CELL;
    const double sinAlpha = std::sin(cell[3] * kDegree);
    const double sinBeta = std::sin(cell[4] * kDegree);
    const double sinGamma = std::sin(cell[5] * kDegree);
    design.rows = data.NREF;
    design.columns = rule.unknowns;
    for (int r = 0; r < data.NREF; ++r) {
        const std::array<double, 3> hkl{static_cast<double>(data.h[r]),
                                        static_cast<double>(data.k[r]),
                                        static_cast<double>(data.l[r])};
        std::array<double, 3> u{};
        for (int i = 0; i < 3; ++i) {
            u[i] =
                reciprocal[i][0] * hkl[0] + reciprocal[i][1] * hkl[1] + reciprocal[i][2] * hkl[2];
        }
        const std::array<double, 6> derivative{-2.0 * hkl[0] * u[0] / cell[0],
                                               -2.0 * hkl[1] * u[1] / cell[1],
                                               -2.0 * hkl[2] * u[2] / cell[2],
                                               2.0 * cell[1] * cell[2] * sinAlpha * u[1] * u[2],
                                               2.0 * cell[0] * cell[2] * sinBeta * u[0] * u[2],
                                               2.0 * cell[0] * cell[1] * sinGamma * u[0] * u[1]};
        for (int j = 0; j < rule.unknowns; ++j) {
            double sum = 0.0;
            for (int m = 0; m < 6; ++m) {
                if ((rule.directEntries[j] & (1U << m)) != 0U) {
                    sum += derivative[m];
                }
            }
            design.a[r][j] = sum;
        }
    }
}

void DCALC(DATASTFF& data, const Matrix3& reciprocal) {
    std::array<double, 6> g{reciprocal[0][0], reciprocal[1][1], reciprocal[2][2],
                            reciprocal[0][1], reciprocal[0][2], reciprocal[1][2]};
    for (int r = 0; r < data.NREF; ++r) {
        const auto t = reciprocalProducts(data.h[r], data.k[r], data.l[r]);
        double q = 0.0;
        for (int m = 0; m < 6; ++m) {
            q += t[m] * g[m];
        }
        data.QC[r] = q;
        data.DC[r] = 1.0 / std::sqrt(q);
    }
}

bool NONLIN(INOUTPARMS& io, DATASTFF& data, RefineReport& report) {
    for (int m = 3; m < 6; ++m) {
        data.CELL[m] = std::acos(data.CELL[m]) / (kPi / 180.0);
    }
    io.iterations = 0;
    io.iterationLimitHit = false;
    const CrystalSystemRule& rule = *findCrystalSystem(data.XTLSYS);
    if (rule.linear) {
        return true;
    }
    LeastSquaresDesign design;
    RefineVector6 shifts{};
    RefineMatrix6 inverse{};
    // The counter is tested before it is raised, so the limit of 100 lets 101 passes run.
    int counter = 0;
    while (counter <= kPassLimit) {
        ++counter;
        Matrix3 reciprocal{};
        if (!reciprocalMetric(data.CELL, reciprocal)) {
            report.metricFailure(io);
            return false;
        }
        QCALC(data, rule, reciprocal, design);
        DCALC(data, reciprocal);
        for (int r = 0; r < data.NREF; ++r) {
            for (int j = 0; j < rule.unknowns; ++j) {
                design.a[r][j] *= data.SQW[r];
            }
            design.y[r] = data.SQW[r] * (data.QO[r] - data.QC[r]);
        }
        if (!MAKEDP(design, shifts, inverse)) {
            singularFailure(io, data, report);
            return false;
        }
        bool converged = true;
        for (int j = 0; j < rule.unknowns; ++j) {
            converged = converged && !(std::fabs(shifts[j]) > kShiftTolerance);
        }
        if (converged) {
            break;
        }
        for (int j = 0; j < rule.unknowns; ++j) {
            for (int m = 0; m < 6; ++m) {
                if ((rule.directEntries[j] & (1U << m)) != 0U) {
                    data.CELL[m] += m < 3 ? shifts[j] : shifts[j] / (kPi / 180.0);
                }
            }
        }
    }
    if (counter > kPassLimit) {
        // Out of passes: the last shifts stand and the covariance of the estimate stays.
        io.iterationLimitHit = true;
        return true;
    }
    io.iterations = counter - 1;
    if (io.reportIterations) {
        char text[64];
        std::snprintf(text, sizeof text, " Number of iterations = %4d", io.iterations);
        report.line(text);
        report.line("");
    }
    if (io.iterations < 1) {
        return true;
    }
    data.normalInverse = inverse;
    data.normalKind = CovarianceKind::Direct;
    return true;
}

bool CALCVAL(INOUTPARMS& io, DATASTFF& data, RefineReport& report) {
    Matrix3 reciprocal{};
    if (!reciprocalMetric(data.CELL, reciprocal)) {
        report.metricFailure(io);
        return false;
    }
    DCALC(data, reciprocal);
    for (int r = 0; r < data.NREF; ++r) {
        // Out of reach (lambda / 2d > 1) asin gives NaN: the table shows it as such.
        data.TTHETAC[r] = 2.0 * std::asin(data.WAVE[r] / (2.0 * data.DC[r])) / kDegree;
    }
    data.RCELL = reciprocalCell(reciprocal);
    return true;
}

} // namespace quarvex
