#include "RefineCaseSupport.h"

#include "TestSupport.h"
#include "xray/Refine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

namespace quarvex::test {

namespace {

constexpr double kRad = 3.141592653589793 / 180.0;

// Gauss-Jordan elimination with partial pivoting on the augmented normal equations.
std::vector<double> solve(std::vector<std::vector<double>> a) {
    const std::size_t n = a.size();
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c + 1; r < n; ++r) {
            pivot = std::fabs(a[r][c]) > std::fabs(a[pivot][c]) ? r : pivot;
        }
        std::swap(a[c], a[pivot]);
        for (std::size_t r = 0; r < n; ++r) {
            const double f = r == c ? 0.0 : a[r][c] / a[c][c];
            for (std::size_t j = c; j <= n; ++j) {
                a[r][j] -= f * a[c][j];
            }
        }
    }
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = a[i][n] / a[i][i];
    }
    return x;
}

} // namespace

const std::vector<std::string>& refineCaseNames() {
    static const std::vector<std::string> kNames{"triclinic",   "monoclinic1",  "monoclinic2",
                                                 "monoclinic3", "orthorhombic", "tetragonal",
                                                 "hexagonal",   "rhombohedral", "cubic"};
    return kNames;
}

RefineCase readRefineCase(const std::string& name) {
    std::ifstream in(sourcePath("tests/xray/data/refine/expected_" + name + ".json"));
    RefineCase c;
    c.expected = nlohmann::json::parse(in);
    c.name = name;
    c.system = c.expected["system_as_written"];
    c.trueCell = c.expected["true_cell"];
    c.startCell = c.expected["start_cell"];
    c.waves = c.expected["wavelengths"].get<std::vector<double>>();
    c.zeroShift = c.expected["zero_shift_applied"];
    for (const auto& r : c.expected["reflections"]) {
        c.lines.push_back({r["h"], r["k"], r["l"], r["wave"], r["two_theta_obs"]});
    }
    return c;
}

std::vector<double> RefineCase::observed(double correction) const {
    std::vector<double> twoTheta;
    for (const CaseLine& line : lines) {
        twoTheta.push_back(line.twoTheta + correction);
    }
    return twoTheta;
}

std::string refineInputText(const RefineCase& c, const std::vector<double>& twoTheta,
                            const InputSwitches& switches) {
    std::string text = c.name + " test case\n" + c.system + "\n1";
    char buffer[160];
    const auto append = [&](double value) {
        std::snprintf(buffer, sizeof buffer, " %.6f", value);
        text += buffer;
    };
    std::for_each(c.startCell.begin(), c.startCell.end(), append);
    text += '\n';
    text += std::to_string(c.waves.size());
    std::for_each(c.waves.begin(), c.waves.end(), append);
    std::snprintf(buffer, sizeof buffer, "\n%d %d 0 %d\n", switches.search ? 1 : 0,
                  switches.iterations ? 1 : 0, switches.startGiven ? 1 : 0);
    text += buffer;
    for (std::size_t i = 0; i < c.lines.size(); ++i) {
        const CaseLine& line = c.lines[i];
        // Equal 2-theta errors: the square-root weight is d(2theta)/dQ = lambda^2 / (2 sin 2theta)
        // per radian, here per degree.
        const double lambda = c.waves[line.wave - 1];
        const double weight = switches.twoThetaWeights
                                  ? lambda * lambda / (2.0 * std::sin(twoTheta[i] * kRad) * kRad)
                                  : 1.0;
        std::snprintf(buffer, sizeof buffer, "%4d%4d%4d%3d %.12f %.12g\n", line.h, line.k, line.l,
                      line.wave, twoTheta[i], weight);
        text += buffer;
    }
    return text + "stop\n";
}

RefineResult refineText(const std::string& text) {
    TempFolder folder;
    RefineResult result;
    result.ok = REFINEMAIN(folder.write("case_refine.DAT", text), result.io, *result.data);
    result.report = readFile(result.io.reportPath);
    return result;
}

RefineResult refineCase(const RefineCase& c, const std::vector<double>& twoTheta,
                        const InputSwitches& switches) {
    return refineText(refineInputText(c, twoTheta, switches));
}

double inverseDSquared(const Cell& cell, int h, int k, int l) {
    const double a = cell[0], b = cell[1], c = cell[2];
    const double ca = std::cos(cell[3] * kRad), cb = std::cos(cell[4] * kRad),
                 cg = std::cos(cell[5] * kRad);
    const double sa = std::sin(cell[3] * kRad), sb = std::sin(cell[4] * kRad),
                 sg = std::sin(cell[5] * kRad);
    const double v2 = a * a * b * b * c * c * (1 - ca * ca - cb * cb - cg * cg + 2 * ca * cb * cg);
    const double s =
        h * h * b * b * c * c * sa * sa + k * k * a * a * c * c * sb * sb +
        l * l * a * a * b * b * sg * sg + 2.0 * h * k * a * b * c * c * (ca * cb - cg) +
        2.0 * k * l * a * a * b * c * (cb * cg - ca) + 2.0 * h * l * a * b * b * c * (cg * ca - cb);
    return s / v2;
}

std::vector<double> twoThetaFromCell(const RefineCase& c, const Cell& cell) {
    std::vector<double> result;
    for (const CaseLine& line : c.lines) {
        const double d = 1.0 / std::sqrt(inverseDSquared(cell, line.h, line.k, line.l));
        result.push_back(2.0 * std::asin(c.waves[line.wave - 1] / (2.0 * d)) / kRad);
    }
    return result;
}

std::vector<std::vector<int>> freeGroups(const std::string& system) {
    static const std::map<std::string, std::vector<std::vector<int>>> kGroups{
        {"TRICLINIC", {{0}, {1}, {2}, {3}, {4}, {5}}},
        {"MONOCLINIC1", {{0}, {1}, {2}, {5}}},
        {"MONOCLINIC2", {{0}, {1}, {2}, {4}}},
        {"MONOCLINIC3", {{0}, {1}, {2}, {3}}},
        {"ORTHORHOMBIC", {{0}, {1}, {2}}},
        {"TETRAGONAL", {{0, 1}, {2}}},
        {"HEXAGONAL", {{0, 1}, {2}}},
        {"RHOMBOHEDRAL", {{0, 1, 2}, {3, 4, 5}}},
        {"CUBIC", {{0, 1, 2}}}};
    return kGroups.at(system);
}

Cell fitTwoThetaGaussNewton(const RefineCase& c, const std::vector<double>& twoTheta) {
    const auto groups = freeGroups(c.system);
    const std::size_t p = groups.size(), n = twoTheta.size();
    Cell cell = c.startCell;
    for (int pass = 0; pass < 50; ++pass) {
        // Normal equations of the residuals 2theta_obs - 2theta_calc, augmented by J^T r.
        std::vector<std::vector<double>> normal(p, std::vector<double>(p + 1, 0.0));
        std::vector<std::vector<double>> jacobian(p);
        const std::vector<double> calc = twoThetaFromCell(c, cell);
        for (std::size_t j = 0; j < p; ++j) {
            const double step = 1e-6 * cell[groups[j][0]];
            Cell up = cell, down = cell;
            for (int m : groups[j]) {
                up[m] += step;
                down[m] -= step;
            }
            const auto calcUp = twoThetaFromCell(c, up), calcDown = twoThetaFromCell(c, down);
            for (std::size_t i = 0; i < n; ++i) {
                jacobian[j].push_back((calcUp[i] - calcDown[i]) / (2.0 * step));
            }
        }
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < p; ++j) {
                normal[j][p] += jacobian[j][i] * (twoTheta[i] - calc[i]);
                for (std::size_t q = 0; q < p; ++q) {
                    normal[j][q] += jacobian[j][i] * jacobian[q][i];
                }
            }
        }
        const std::vector<double> shift = solve(normal);
        double largest = 0.0;
        for (std::size_t j = 0; j < p; ++j) {
            for (int m : groups[j]) {
                cell[m] += shift[j];
            }
            largest = std::max(largest, std::fabs(shift[j]));
        }
        if (largest < 1e-12) {
            break;
        }
    }
    return cell;
}

} // namespace quarvex::test
