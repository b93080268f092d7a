#include "XrayPatternSupport.h"

#include "TestSupport.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

namespace quarvex::test {

namespace {

constexpr double kRad = 3.141592653589793 / 180.0;

// Caglioti width: FWHM^2 = U tan^2(theta) + V tan(theta) + W (0.07 deg at 20, 0.11 at 90).
double fwhmAt(double twoThetaDeg) {
    const double t = std::tan(0.5 * twoThetaDeg * kRad);
    return std::sqrt(0.01 * t * t - 0.005 * t + 0.006);
}

double pseudoVoigt(double x, double centre, double fwhm) {
    const double u = (x - centre) / fwhm;
    return 0.5 * std::exp(-4.0 * std::log(2.0) * u * u) + 0.5 / (1.0 + 4.0 * u * u);
}

// Standard normal deviates by Box-Muller from the portable 32-bit Mersenne twister.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : engine_(seed) {}
    double next() {
        const double u1 = (engine_() + 1.0) / 4294967297.0;
        const double u2 = engine_() / 4294967296.0;
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * 3.141592653589793 * u2);
    }

private:
    std::mt19937 engine_;
};

} // namespace

ReferenceTable readReferenceTable(const std::string& name) {
    std::ifstream in(sourcePath("data/xray/reference/" + name));
    ReferenceTable table;
    std::string line;
    bool inTable = false;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string word;
        if (line.rfind("CELL PARAMETERS:", 0) == 0) {
            fields >> word >> word;
            for (double& value : table.cell) {
                fields >> value;
            }
        } else if (line.rfind("X-RAY WAVELENGTH", 0) == 0) {
            fields >> word >> word;
            for (double w = 0.0; fields >> w;) {
                table.wavelengths.push_back(w);
            }
        } else if (line.rfind("2-THETA", 0) == 0) {
            inTable = true;
        } else if (inTable) {
            ReferenceLine r;
            double skip = 0.0;
            fields >> r.twoTheta >> r.intensity >> r.dSpacing;
            if (table.wavelengths.size() == 2) {
                fields >> skip >> skip;
            }
            if (!(fields >> r.hkl[0] >> r.hkl[1] >> r.hkl[2])) {
                break;
            }
            table.lines.push_back(r);
        }
    }
    return table;
}

std::string syntheticPatternText(const ReferenceTable& table, const PatternRecipe& recipe) {
    struct Peak {
        double centre, height, fwhm;
    };
    std::vector<Peak> peaks;
    const std::size_t waves = recipe.kAlpha2 ? 2 : 1;
    for (const ReferenceLine& r : table.lines) {
        for (std::size_t w = 0; w < waves; ++w) {
            const double twoTheta =
                2.0 * std::asin(table.wavelengths[w] / (2.0 * r.dSpacing)) / kRad;
            peaks.push_back({twoTheta + recipe.zeroShiftDeg,
                             50.0 * r.intensity * (w == 0 ? 1 : 0.5), fwhmAt(twoTheta)});
        }
    }
    std::string text =
        "##NAMES=synthetic\n<COM>\ndtype: XRD\nwave: " + std::to_string(table.wavelengths[0]) +
        "\n</COM>\n";
    Noise noise(recipe.seed);
    char line[64];
    const int points =
        static_cast<int>(std::lround((recipe.lastDeg - recipe.firstDeg) / recipe.stepDeg));
    for (int i = 0; i <= points; ++i) {
        const double x = recipe.firstDeg + i * recipe.stepDeg;
        double y = 50.0;
        for (const Peak& p : peaks) {
            if (std::abs(x - p.centre) < 40.0 * p.fwhm) {
                y += p.height * pseudoVoigt(x, p.centre, p.fwhm);
            }
        }
        y += std::sqrt(y) * noise.next();
        std::snprintf(line, sizeof line, "%.2f %.3f\n", x, y);
        text += line;
    }
    return text;
}

} // namespace quarvex::test
