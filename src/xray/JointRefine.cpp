// Joint least squares of the cell, the 2-theta zero and the sample displacement, in 2-theta:
// the lines are measured as angles with an error that does not depend on the angle, and both
// instrument terms are additive there, so unit weights in 2-theta give the maximum-likelihood
// cell and esds in degrees directly (a fit in Q would need weights from d(2theta)/dQ).
#include "xray/JointRefine.h"

#include "xray/RegressionDiagnostics.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <optional>

namespace quarvex {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kMaxZeroDeg = 2.0;
constexpr double kMinSpanForBothDeg = 30.0;
constexpr int kMaxIterations = 200;
constexpr double kStepTolerance = 1e-12;
// Smallest singular value of the column-scaled design, relative to the largest, for a problem
// the lines determine.
constexpr double kRankTolerance = 1e-10;
// Beyond this correlation zero and displacement are not told apart by the lines.
constexpr double kNearlyOneParameter = 0.99;

std::string formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// The model f(beta) = 2theta_calc(cell) - z - D_i s and its derivatives X = df/dbeta.
class LineModel {
public:
    LineModel(const JointRefineInput& input, const CellModel& cell,
              const JointRefineSettings& settings)
        : input_(input), cell_(cell), settings_(settings) {}

    int parameterCount() const {
        return cell_.freeCount() + (settings_.refineZero ? 1 : 0) +
               (settings_.refineDisplacement ? 1 : 0);
    }
    int zeroIndex() const { return settings_.refineZero ? cell_.freeCount() : -1; }
    int displacementIndex() const {
        return settings_.refineDisplacement ? parameterCount() - 1 : -1;
    }
    // Degrees of 2-theta per mm of displacement at this line: 2 cos(theta) / R in radians.
    double displacementFactor(const JointLine& line) const {
        return 2.0 * std::cos(0.5 * line.twoThetaDeg * kDegree) / settings_.radiusMm / kDegree;
    }
    double correction(const Eigen::VectorXd& beta, const JointLine& line) const {
        double total = 0.0;
        if (zeroIndex() >= 0) {
            total += beta(zeroIndex());
        }
        if (displacementIndex() >= 0) {
            total += displacementFactor(line) * beta(displacementIndex());
        }
        return total;
    }
    CellVector cellOf(const Eigen::VectorXd& beta) const {
        std::vector<double> free(beta.data(), beta.data() + cell_.freeCount());
        return cell_.cellFrom(free);
    }

    // Fills the model values and the design; false when a line is out of reach or the cell is
    // no cell.
    bool evaluate(const Eigen::VectorXd& beta, Eigen::VectorXd& model, Eigen::MatrixXd& X) const {
        const auto n = static_cast<Eigen::Index>(input_.lines.size());
        model.resize(n);
        X.setZero(n, parameterCount());
        const CellVector cell = cellOf(beta);
        for (Eigen::Index i = 0; i < n; ++i) {
            const JointLine& line = input_.lines[static_cast<size_t>(i)];
            const auto q = reciprocalQ(cell, line.h, line.k, line.l);
            if (!q || !(q->first > 0.0)) {
                return false;
            }
            const double sinTheta = line.wavelength * std::sqrt(q->first) / 2.0;
            if (!(sinTheta < 1.0)) {
                return false;
            }
            const double theta = std::asin(sinTheta);
            // d(2theta)/dQ = lambda / (2 sqrt(Q) cos(theta)) radians.
            const double perQ =
                line.wavelength / (2.0 * std::sqrt(q->first) * std::cos(theta)) / kDegree;
            const std::vector<double> perFree = cell_.chain(q->second);
            for (int j = 0; j < cell_.freeCount(); ++j) {
                X(i, j) = perQ * perFree[static_cast<size_t>(j)];
            }
            model(i) = 2.0 * theta / kDegree;
            if (zeroIndex() >= 0) {
                model(i) -= beta(zeroIndex());
                X(i, zeroIndex()) = -1.0;
            }
            if (displacementIndex() >= 0) {
                model(i) -= displacementFactor(line) * beta(displacementIndex());
                X(i, displacementIndex()) = -displacementFactor(line);
            }
        }
        return true;
    }

private:
    const JointRefineInput& input_;
    const CellModel& cell_;
    const JointRefineSettings& settings_;
};

JointRefineResult refused(std::string message) {
    JointRefineResult result;
    result.message = std::move(message);
    return result;
}

struct Fit {
    Eigen::VectorXd beta;
    Eigen::VectorXd model;
    Eigen::MatrixXd X;
    int iterations = 0;
    bool converged = false;
};

// Levenberg-Marquardt (Marquardt 1963) on the scaled normal equations.
std::optional<Fit> levenbergMarquardt(const LineModel& model, const Eigen::VectorXd& y,
                                      Eigen::VectorXd beta) {
    Fit fit;
    if (!model.evaluate(beta, fit.model, fit.X)) {
        return std::nullopt;
    }
    double ssr = (y - fit.model).squaredNorm();
    double lambda = 1e-3;
    Eigen::VectorXd trialModel;
    Eigen::MatrixXd trialX;
    for (fit.iterations = 0; fit.iterations < kMaxIterations; ++fit.iterations) {
        const Eigen::MatrixXd normal = fit.X.transpose() * fit.X;
        const Eigen::VectorXd gradient = fit.X.transpose() * (y - fit.model);
        bool accepted = false;
        Eigen::VectorXd step;
        while (lambda < 1e12) {
            Eigen::MatrixXd damped = normal;
            damped.diagonal() += lambda * normal.diagonal();
            step = damped.ldlt().solve(gradient);
            const Eigen::VectorXd trial = beta + step;
            if (step.allFinite() && model.evaluate(trial, trialModel, trialX)) {
                const double trialSsr = (y - trialModel).squaredNorm();
                if (trialSsr <= ssr) {
                    beta = trial;
                    fit.model = trialModel;
                    fit.X = trialX;
                    ssr = trialSsr;
                    lambda = std::max(lambda / 10.0, 1e-12);
                    accepted = true;
                    break;
                }
            }
            lambda *= 10.0;
        }
        const bool small =
            (step.array().abs() <= kStepTolerance * (1.0 + beta.array().abs())).all();
        if (!accepted || small) {
            fit.converged = small || ssr == 0.0;
            break;
        }
    }
    fit.beta = beta;
    return fit;
}

void fillEsds(const LineModel& lineModel, const CellModel& cellModel, const Fit& fit,
              const Eigen::MatrixXd& unitCovariance, double sigma, double floorSigma,
              JointRefineResult& result) {
    const CellVector cell = lineModel.cellOf(fit.beta);
    const auto [volume, volumeGradient] = cellVolume(cell);
    const std::vector<double> gradient = cellModel.chain(volumeGradient);
    Eigen::VectorXd g = Eigen::VectorXd::Zero(unitCovariance.rows());
    for (int j = 0; j < cellModel.freeCount(); ++j) {
        g(j) = gradient[static_cast<size_t>(j)];
    }
    const double volumeUnit = std::sqrt(std::max(0.0, g.dot(unitCovariance * g)));
    result.volume = volume;
    result.volumeEsd = sigma * volumeUnit;
    result.volumeEsdFloor = floorSigma * volumeUnit;
    for (int j = 0; j < cellModel.freeCount(); ++j) {
        const double unit = std::sqrt(unitCovariance(j, j));
        for (const int entry : cellModel.tied[static_cast<size_t>(j)]) {
            const double toUnits = entry < 3 ? 1.0 : 1.0 / kDegree;
            result.esd[entry] = sigma * unit * toUnits;
            result.esdFloor[entry] = floorSigma * unit * toUnits;
        }
    }
    for (int m = 0; m < 6; ++m) {
        result.cell[m] = m < 3 ? cell[m] : cell[m] / kDegree;
    }
    if (lineModel.zeroIndex() >= 0) {
        const int z = lineModel.zeroIndex();
        result.zero = fit.beta(z);
        result.zeroEsd = sigma * std::sqrt(unitCovariance(z, z));
        result.zeroEsdFloor = floorSigma * std::sqrt(unitCovariance(z, z));
    }
    if (lineModel.displacementIndex() >= 0) {
        const int s = lineModel.displacementIndex();
        result.displacement = fit.beta(s);
        result.displacementEsd = sigma * std::sqrt(unitCovariance(s, s));
        result.displacementEsdFloor = floorSigma * std::sqrt(unitCovariance(s, s));
    }
}

void fillDiagnostics(const JointRefineInput& input, const LineModel& lineModel,
                     const CellModel& cellModel, const Fit& fit, const Eigen::VectorXd& y,
                     JointRefineResult& result) {
    const Eigen::VectorXd e = y - fit.model;
    const std::vector<CaseDiagnostics> cases = regressionDiagnostics(fit.X, e);
    const double hatLimit = 2.0 * result.p / result.n;
    for (size_t i = 0; i < input.lines.size(); ++i) {
        const JointLine& line = input.lines[i];
        const CaseDiagnostics& c = cases[i];
        JointLineResult out;
        out.line = static_cast<int>(i) + 1;
        out.h = line.h;
        out.k = line.k;
        out.l = line.l;
        out.twoThetaObsDeg = line.twoThetaDeg;
        out.twoThetaCorrDeg = line.twoThetaDeg + lineModel.correction(fit.beta, line);
        out.residualDeg = e(static_cast<Eigen::Index>(i));
        out.twoThetaCalcDeg = out.twoThetaCorrDeg - out.residualDeg;
        out.hat = c.hat;
        out.rstudent = c.rstudent;
        out.dffits = c.dffits;
        out.leverageOne = c.leverageOne;
        for (int edge = 0; edge < 3; ++edge) {
            for (int j = 0; j < cellModel.freeCount(); ++j) {
                const auto& entries = cellModel.tied[static_cast<size_t>(j)];
                if (std::find(entries.begin(), entries.end(), edge) != entries.end()) {
                    out.edgeChange[edge] = c.deletionChange(j);
                }
            }
        }
        out.highLeverage = c.hat > hatLimit;
        out.outlier = std::fabs(c.rstudent) > 2.0;
        if (c.leverageOne) {
            result.warnings.push_back("Line " + std::to_string(out.line) +
                                      " has leverage 1: it alone fixes a parameter, so its "
                                      "Rstudent and DFFITS are undefined.");
        }
        result.lines.push_back(out);
    }
}

void fillMerit(const JointRefineInput& input, const JointRefineResult& partial,
               const CellVector& cell, JointRefineResult& result) {
    std::vector<MeritLine> merit;
    for (size_t i = 0; i < input.lines.size(); ++i) {
        // The figures are defined for one wavelength: the lines of the first one count.
        if (input.lines[i].wavelength == input.lines.front().wavelength) {
            merit.push_back({partial.lines[i].twoThetaCorrDeg, partial.lines[i].twoThetaCalcDeg,
                             input.lines[i].wavelength});
        }
    }
    result.merit = figuresOfMerit(merit, cell, result.settings.centring);
}

} // namespace

JointRefineInput jointInputFrom(const DATASTFF& data) {
    JointRefineInput input;
    input.system = data.XTLSYS;
    for (int m = 0; m < 6; ++m) {
        input.startCell[m] = data.CELL[m];
    }
    for (int r = 0; r < data.NREF; ++r) {
        input.lines.push_back(
            {data.h[r], data.k[r], data.l[r], data.WAVE[r], data.TTHETAORIGINAL[r]});
    }
    return input;
}

JointRefineResult refineJoint(const JointRefineInput& input, const JointRefineSettings& settings) {
    const std::optional<CellModel> cellModel = cellModelFor(input.system);
    if (!cellModel) {
        return refused("Unknown crystal system \"" + input.system + "\".");
    }
    if (!(settings.radiusMm > 0.0) || !(settings.sigmaFloorDeg >= 0.0)) {
        return refused("The goniometer radius must be positive and the 2-theta uncertainty "
                       "floor not negative.");
    }
    const LineModel lineModel(input, *cellModel, settings);
    const int p = lineModel.parameterCount();
    const int n = static_cast<int>(input.lines.size());
    if (n < p + 1) {
        return refused("Too few lines: " + std::to_string(n) + " given, refining " +
                       std::to_string(p) + " parameters needs at least " + std::to_string(p + 1) +
                       ".");
    }
    double lowest = 180.0, highest = 0.0;
    for (const JointLine& line : input.lines) {
        if (!(line.twoThetaDeg > 0.0 && line.twoThetaDeg < 180.0) || !(line.wavelength > 0.0)) {
            return refused("Every line needs a 2-theta between 0 and 180 degrees and a "
                           "positive wavelength.");
        }
        lowest = std::min(lowest, line.twoThetaDeg);
        highest = std::max(highest, line.twoThetaDeg);
    }
    if (settings.refineZero && settings.refineDisplacement &&
        highest - lowest < kMinSpanForBothDeg) {
        return refused("Zero and displacement cannot be told apart on lines spanning " +
                       formatted("%.1f", highest - lowest) +
                       " degrees of 2-theta (at least 30 needed): refine one of them.");
    }
    CellVector start{};
    for (int m = 0; m < 6; ++m) {
        start[m] = m < 3 ? input.startCell[m] : input.startCell[m] * kDegree;
    }
    const std::vector<double> startFree = cellModel->freeFrom(start);
    Eigen::VectorXd beta = Eigen::VectorXd::Zero(p);
    for (int j = 0; j < cellModel->freeCount(); ++j) {
        beta(j) = startFree[static_cast<size_t>(j)];
    }
    Eigen::VectorXd y(n);
    for (int i = 0; i < n; ++i) {
        y(i) = input.lines[static_cast<size_t>(i)].twoThetaDeg;
    }
    const std::optional<Fit> fit = levenbergMarquardt(lineModel, y, beta);
    if (!fit) {
        return refused("A line is out of reach of its wavelength for the starting cell, or the "
                       "starting cell is no cell.");
    }
    if (lineModel.zeroIndex() >= 0 && std::fabs(fit->beta(lineModel.zeroIndex())) > kMaxZeroDeg) {
        return refused("The zero shift ran to " +
                       formatted("%.3f", fit->beta(lineModel.zeroIndex())) +
                       " degrees (more than 2): the refinement did not converge. Check the "
                       "indexing, or correct the zero first.");
    }
    if (!fit->converged) {
        return refused("The joint refinement did not converge in 200 iterations.");
    }

    JointRefineResult result;
    result.settings = settings;
    result.n = n;
    result.p = p;
    result.iterations = fit->iterations;
    const Eigen::VectorXd scale = fit->X.colwise().norm().transpose().cwiseMax(1e-300);
    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(fit->X * scale.cwiseInverse().asDiagonal(),
                                                Eigen::ComputeThinV);
    const Eigen::VectorXd singular = svd.singularValues();
    if (!(singular(p - 1) > kRankTolerance * singular(0))) {
        return refused("The lines do not determine every refined parameter (the normal "
                       "equations are singular).");
    }
    // (X^T X)^-1 = D^-1 V S^-2 V^T D^-1.
    const Eigen::MatrixXd vs =
        scale.cwiseInverse().asDiagonal() * svd.matrixV() * singular.cwiseInverse().asDiagonal();
    const Eigen::MatrixXd unitCovariance = vs * vs.transpose();
    const double ssr = (y - fit->model).squaredNorm();
    result.sigmaDeg = n > p ? std::sqrt(ssr / (n - p)) : 0.0;
    fillEsds(lineModel, *cellModel, *fit, unitCovariance, result.sigmaDeg,
             std::max(result.sigmaDeg, settings.sigmaFloorDeg), result);

    for (int j = 0; j < p; ++j) {
        result.parameters.push_back(j < cellModel->freeCount()   ? cellModel->name(j)
                                    : j == lineModel.zeroIndex() ? "zero"
                                                                 : "displacement");
    }
    result.correlation.assign(static_cast<size_t>(p), std::vector<double>(static_cast<size_t>(p)));
    for (int i = 0; i < p; ++i) {
        for (int j = 0; j < p; ++j) {
            result.correlation[static_cast<size_t>(i)][static_cast<size_t>(j)] =
                unitCovariance(i, j) / std::sqrt(unitCovariance(i, i) * unitCovariance(j, j));
        }
    }
    if (lineModel.zeroIndex() >= 0 && lineModel.displacementIndex() >= 0) {
        const double zs = result.correlation[static_cast<size_t>(lineModel.zeroIndex())]
                                            [static_cast<size_t>(lineModel.displacementIndex())];
        if (std::fabs(zs) > kNearlyOneParameter) {
            result.warnings.push_back("Zero and displacement correlate at " +
                                      formatted("%.4f", zs) +
                                      ": over these lines they act as one parameter, and "
                                      "neither value means much alone.");
        }
    }
    fillDiagnostics(input, lineModel, *cellModel, *fit, y, result);
    fillMerit(input, result, lineModel.cellOf(fit->beta), result);
    result.ok = true;
    return result;
}

} // namespace quarvex
