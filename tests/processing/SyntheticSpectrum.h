// A synthetic Raman spectrum with a known background, known bands and seeded noise, for the
// tests of the spectrum operations.
#pragma once

#include <cmath>
#include <random>
#include <vector>

namespace quarvex::test {

struct Band {
    double position;
    double height;
    double fwhm;
};

struct SyntheticSpectrum {
    std::vector<float> x;
    std::vector<float> background; ///< the true background
    std::vector<float> bands;      ///< the true bands without background or noise
    std::vector<float> y;          ///< background + bands + noise
};

inline double lorentzian(double x, const Band& band) {
    const double u = (x - band.position) / (0.5 * band.fwhm);
    return band.height / (1.0 + u * u);
}

/// Points from `first` to `last` at `step`: a broad Gaussian hump (height `hump`, centre 1500,
/// sigma 900) on a slope, Lorentzian bands, Gaussian noise of spread `noise` (fixed seed).
inline SyntheticSpectrum makeSpectrum(double first, double last, double step,
                                      const std::vector<Band>& bands, double hump, double noise,
                                      unsigned seed = 7) {
    SyntheticSpectrum s;
    std::mt19937 random(seed);
    std::normal_distribution<double> gauss(0.0, noise);
    for (double x = first; x <= last + 1e-9; x += step) {
        const double background =
            hump * std::exp(-0.5 * std::pow((x - 1500.0) / 900.0, 2)) + 0.05 * x;
        double peak = 0.0;
        for (const Band& band : bands) {
            peak += lorentzian(x, band);
        }
        s.x.push_back(static_cast<float>(x));
        s.background.push_back(static_cast<float>(background));
        s.bands.push_back(static_cast<float>(peak));
        s.y.push_back(static_cast<float>(background + peak + (noise > 0.0 ? gauss(random) : 0.0)));
    }
    return s;
}

} // namespace quarvex::test
