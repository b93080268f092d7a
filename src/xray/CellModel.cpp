// The free-parameter view of a cell and the metric-tensor derivatives of Q = 1/d^2.
#include "xray/CellModel.h"

#include "xray/RefineEngine.h"

#include <cmath>
#include <numbers>

namespace quarvex {

namespace {

constexpr double kRightAngle = std::numbers::pi / 2.0;

} // namespace

std::vector<double> CellModel::freeFrom(const CellVector& cell) const {
    std::vector<double> free;
    for (const auto& entries : tied) {
        free.push_back(cell[entries.front()]);
    }
    return free;
}

CellVector CellModel::cellFrom(const std::vector<double>& free) const {
    CellVector cell = fixed;
    for (int j = 0; j < freeCount(); ++j) {
        for (const int entry : tied[j]) {
            cell[entry] = free[j];
        }
    }
    return cell;
}

std::vector<double> CellModel::chain(const CellVector& perCellEntry) const {
    std::vector<double> perFree(tied.size(), 0.0);
    for (int j = 0; j < freeCount(); ++j) {
        for (const int entry : tied[j]) {
            perFree[j] += perCellEntry[entry];
        }
    }
    return perFree;
}

std::string CellModel::name(int j) const {
    return std::string(cellEntryLabel(tied[j].front()));
}

std::optional<CellModel> cellModelFor(std::string_view systemName) {
    const CrystalSystemRule* rule = findCrystalSystem(systemName);
    if (rule == nullptr) {
        return std::nullopt;
    }
    CellModel model{std::string(rule->name), {}, {0, 0, 0, kRightAngle, kRightAngle, kRightAngle}};
    for (int j = 0; j < rule->unknowns; ++j) {
        std::vector<int> entries;
        for (int m = 0; m < 6; ++m) {
            if ((rule->directEntries[static_cast<size_t>(j)] & (1U << m)) != 0U) {
                entries.push_back(m);
            }
        }
        model.tied.push_back(entries);
    }
    if (model.system == "HEXAGONAL") {
        model.fixed[5] = 2.0 * std::numbers::pi / 3.0;
    }
    return model;
}

std::optional<std::pair<double, CellVector>> reciprocalQ(const CellVector& cell, int h, int k,
                                                         int l) {
    const double a = cell[0], b = cell[1], c = cell[2];
    const double ca = std::cos(cell[3]), cb = std::cos(cell[4]), cg = std::cos(cell[5]);
    const double sa = std::sin(cell[3]), sb = std::sin(cell[4]), sg = std::sin(cell[5]);
    // Direct metric G; its inverse by cofactors.
    const double g[3][3] = {{a * a, a * b * cg, a * c * cb},
                            {a * b * cg, b * b, b * c * ca},
                            {a * c * cb, b * c * ca, c * c}};
    const double det = g[0][0] * (g[1][1] * g[2][2] - g[1][2] * g[2][1]) -
                       g[0][1] * (g[1][0] * g[2][2] - g[1][2] * g[2][0]) +
                       g[0][2] * (g[1][0] * g[2][1] - g[1][1] * g[2][0]);
    if (!(det > 0.0) || !std::isfinite(det)) {
        return std::nullopt;
    }
    double gStar[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const int i1 = (j + 1) % 3, i2 = (j + 2) % 3, j1 = (i + 1) % 3, j2 = (i + 2) % 3;
            gStar[i][j] = (g[i1][j1] * g[i2][j2] - g[i1][j2] * g[i2][j1]) / det;
        }
    }
    const double hkl[3] = {static_cast<double>(h), static_cast<double>(k), static_cast<double>(l)};
    double u[3];
    for (int i = 0; i < 3; ++i) {
        u[i] = gStar[i][0] * hkl[0] + gStar[i][1] * hkl[1] + gStar[i][2] * hkl[2];
    }
    const double q = u[0] * hkl[0] + u[1] * hkl[1] + u[2] * hkl[2];
    // dQ/dp = -u^T (dG/dp) u; each dG/dp touches one row and column (edges) or one pair (angles).
    CellVector dq{};
    dq[0] = -(2.0 * a * u[0] * u[0] + 2.0 * b * cg * u[0] * u[1] + 2.0 * c * cb * u[0] * u[2]);
    dq[1] = -(2.0 * b * u[1] * u[1] + 2.0 * a * cg * u[0] * u[1] + 2.0 * c * ca * u[1] * u[2]);
    dq[2] = -(2.0 * c * u[2] * u[2] + 2.0 * a * cb * u[0] * u[2] + 2.0 * b * ca * u[1] * u[2]);
    dq[3] = 2.0 * b * c * sa * u[1] * u[2];
    dq[4] = 2.0 * a * c * sb * u[0] * u[2];
    dq[5] = 2.0 * a * b * sg * u[0] * u[1];
    return std::make_pair(q, dq);
}

std::pair<double, CellVector> cellVolume(const CellVector& cell) {
    const double ca = std::cos(cell[3]), cb = std::cos(cell[4]), cg = std::cos(cell[5]);
    const double root = std::sqrt(1.0 - ca * ca - cb * cb - cg * cg + 2.0 * ca * cb * cg);
    const double abc = cell[0] * cell[1] * cell[2];
    const double volume = abc * root;
    CellVector gradient{};
    gradient[0] = volume / cell[0];
    gradient[1] = volume / cell[1];
    gradient[2] = volume / cell[2];
    gradient[3] = abc * std::sin(cell[3]) * (ca - cb * cg) / root;
    gradient[4] = abc * std::sin(cell[4]) * (cb - ca * cg) / root;
    gradient[5] = abc * std::sin(cell[5]) * (cg - ca * cb) / root;
    return {volume, gradient};
}

} // namespace quarvex
