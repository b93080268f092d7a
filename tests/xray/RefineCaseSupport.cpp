#include "RefineCaseSupport.h"

#include "TestSupport.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace quarvex::test {

namespace {

constexpr double kRad = 3.141592653589793 / 180.0;

Cell readCell(const std::string& text) {
    Cell cell{};
    std::istringstream in(text);
    for (double& v : cell) {
        in >> v;
    }
    return cell;
}

// Solves the small symmetric system by Gaussian elimination with partial pivoting.
std::vector<double> solve(std::vector<std::vector<double>> a, std::vector<double> b) {
    const std::size_t n = b.size();
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c + 1; r < n; ++r) {
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) {
                pivot = r;
            }
        }
        std::swap(a[c], a[pivot]);
        std::swap(b[c], b[pivot]);
        for (std::size_t r = c + 1; r < n; ++r) {
            const double f = a[r][c] / a[c][c];
            for (std::size_t j = c; j < n; ++j) {
                a[r][j] -= f * a[c][j];
            }
            b[r] -= f * b[c];
        }
    }
    std::vector<double> x(n);
    for (std::size_t i = n; i-- > 0;) {
        double s = b[i];
        for (std::size_t j = i + 1; j < n; ++j) {
            s -= a[i][j] * x[j];
        }
        x[i] = s / a[i][i];
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

RefineCase readRefineCase(std::string_view system) {
    std::ifstream in(sourcePath("tests/xray/data/refine/case_" + std::string(system) + ".txt"));
    if (!in) {
        throw std::runtime_error("missing case " + std::string(system));
    }
    RefineCase result;
    std::map<std::string, std::string> keys;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#' || line == "END") {
            continue;
        }
        const auto colon = line.find(':');
        if (colon != std::string::npos) {
            keys[line.substr(0, colon)] = line.substr(colon + 1);
            continue;
        }
        CaseLine entry;
        std::istringstream(line) >> entry.h >> entry.k >> entry.l >> entry.wave >> entry.twoTheta;
        result.lines.push_back(entry);
    }
    result.name = system;
    std::istringstream(keys["SYSTEM"]) >> result.system;
    result.trueCell = readCell(keys["TRUE_CELL"]);
    result.startCell = readCell(keys["START_CELL"]);
    std::istringstream waves(keys["WAVELENGTHS"]);
    for (double w = 0.0; waves >> w;) {
        result.waves.push_back(w);
    }
    result.zeroShift = std::stod(keys["ZERO_SHIFT"]);
    return result;
}

std::string refineInputText(const RefineCase& refineCase, const std::vector<double>& twoTheta,
                            const InputSwitches& switches) {
    std::string text = refineCase.name + " test case\n" + refineCase.system + "\n1";
    char buffer[160];
    for (double v : refineCase.startCell) {
        std::snprintf(buffer, sizeof buffer, " %.6f", v);
        text += buffer;
    }
    text += '\n';
    text += std::to_string(refineCase.waves.size());
    for (double w : refineCase.waves) {
        std::snprintf(buffer, sizeof buffer, " %.6f", w);
        text += buffer;
    }
    std::snprintf(buffer, sizeof buffer, "\n%d %d 0 %d\n", switches.search ? 1 : 0,
                  switches.iterations ? 1 : 0, switches.startGiven ? 1 : 0);
    text += buffer;
    for (std::size_t i = 0; i < refineCase.lines.size(); ++i) {
        const CaseLine& line = refineCase.lines[i];
        // Equal errors in 2-theta: the square-root weight is d(2theta)/dQ = lambda^2 / (2 sin
        // 2theta) per radian, here per degree.
        const double lambda = refineCase.waves[line.wave - 1];
        const double weight = switches.twoThetaWeights
                                  ? lambda * lambda / (2.0 * std::sin(twoTheta[i] * kRad) * kRad)
                                  : 1.0;
        std::snprintf(buffer, sizeof buffer, "%4d%4d%4d%3d %.12f %.12g\n", line.h, line.k, line.l,
                      line.wave, twoTheta[i], weight);
        text += buffer;
    }
    return text + "stop\n";
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

std::vector<double> twoThetaFromCell(const RefineCase& refineCase, const Cell& cell) {
    std::vector<double> result;
    for (const CaseLine& line : refineCase.lines) {
        const double d = 1.0 / std::sqrt(inverseDSquared(cell, line.h, line.k, line.l));
        result.push_back(2.0 * std::asin(refineCase.waves[line.wave - 1] / (2.0 * d)) / kRad);
    }
    return result;
}

std::vector<std::vector<int>> freeGroups(std::string_view system) {
    static const std::map<std::string_view, std::vector<std::vector<int>>> kGroups{
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

Cell fitTwoThetaGaussNewton(const RefineCase& refineCase, const std::vector<double>& twoTheta) {
    const auto groups = freeGroups(refineCase.system);
    const std::size_t p = groups.size();
    Cell cell = refineCase.startCell;
    const auto residuals = [&](const Cell& trial) {
        std::vector<double> calc = twoThetaFromCell(refineCase, trial);
        for (std::size_t i = 0; i < calc.size(); ++i) {
            calc[i] = twoTheta[i] - calc[i];
        }
        return calc;
    };
    for (int pass = 0; pass < 50; ++pass) {
        const std::vector<double> r = residuals(cell);
        std::vector<std::vector<double>> jac(p);
        for (std::size_t j = 0; j < p; ++j) {
            const double step = 1e-6 * cell[groups[j][0]];
            Cell up = cell, down = cell;
            for (int m : groups[j]) {
                up[m] += step;
                down[m] -= step;
            }
            const auto ru = residuals(up), rd = residuals(down);
            for (std::size_t i = 0; i < r.size(); ++i) {
                jac[j].push_back(-(ru[i] - rd[i]) / (2.0 * step));
            }
        }
        std::vector<std::vector<double>> normal(p, std::vector<double>(p, 0.0));
        std::vector<double> rhs(p, 0.0);
        for (std::size_t i = 0; i < r.size(); ++i) {
            for (std::size_t j = 0; j < p; ++j) {
                rhs[j] += jac[j][i] * r[i];
                for (std::size_t q = 0; q < p; ++q) {
                    normal[j][q] += jac[j][i] * jac[q][i];
                }
            }
        }
        const std::vector<double> shift = solve(normal, rhs);
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
