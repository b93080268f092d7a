// Rachinger's K-alpha2 stripping (J. Sci. Instrum. 25 (1948) 254), walking up in 2-theta so
// that every value it needs is already stripped.
#include "xray/KAlpha2Strip.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quarvex {

namespace {

struct Anode {
    double kAlpha1;
    double kAlpha2;
};

// K-alpha1 and K-alpha2 of the common anodes, angstroms (Hoelzer et al., Phys. Rev. A 56 (1997)
// 4554).
constexpr std::array<Anode, 6> kAnodes{{{2.289760, 2.293663},
                                        {1.936042, 1.939980},
                                        {1.788965, 1.792850},
                                        {1.540562, 1.544390},
                                        {0.709300, 0.713590},
                                        {0.559407, 0.563798}}};

constexpr double kSameAnode = 2e-4;
constexpr double kHalfDegree = std::numbers::pi / 360.0;

} // namespace

std::optional<double> kAlpha2For(double kAlpha1) {
    for (const Anode& anode : kAnodes) {
        if (std::fabs(anode.kAlpha1 - kAlpha1) <= kSameAnode) {
            return anode.kAlpha2;
        }
    }
    return std::nullopt;
}

std::vector<float> stripKAlpha2(std::span<const float> x, std::span<const float> y, double lambda1,
                                double lambda2, double ratio) {
    if (x.size() != y.size() || !(lambda1 > 0.0 && lambda2 > lambda1) ||
        !std::is_sorted(x.begin(), x.end()) || std::adjacent_find(x.begin(), x.end()) != x.end()) {
        return {};
    }
    std::vector<double> stripped(y.size());
    size_t below = 0; // the last point at or before x1; x1 rises with x
    for (size_t i = 0; i < x.size(); ++i) {
        const double x1 =
            2.0 * std::asin(lambda1 / lambda2 * std::sin(x[i] * kHalfDegree)) / (2.0 * kHalfDegree);
        if (i == 0 || x1 < x[0]) {
            stripped[i] = y[i];
            continue;
        }
        if (x1 > x[i - 1]) {
            // Closer than one step: y1(x1) interpolates between y1(x[i-1]) and y1(x[i]) itself,
            // y1_i = y_i - ratio ((1 - t) y1_(i-1) + t y1_i), solved for y1_i.
            const double t = (x1 - x[i - 1]) / (x[i] - x[i - 1]);
            stripped[i] = (y[i] - ratio * (1.0 - t) * stripped[i - 1]) / (1.0 + ratio * t);
            continue;
        }
        while (x[below + 1] <= x1) {
            ++below;
        }
        const double t = (x1 - x[below]) / (x[below + 1] - x[below]);
        stripped[i] =
            y[i] - ratio * (stripped[below] + t * (stripped[below + 1] - stripped[below]));
    }
    return {stripped.begin(), stripped.end()};
}

} // namespace quarvex
