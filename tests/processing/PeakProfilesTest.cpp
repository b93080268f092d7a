// Peak profiles: closed-form values, exact derivatives against central differences, the
// deliberate half Gaussian centre derivative of PVDERIV against its formula.
#include "processing/PeakProfiles.h"
#include "processing/PsuedoVoight.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace quarvex {
namespace {

constexpr float kPi = 3.14159265F;

float valueAt(PeakModel model, float x, std::vector<float> a) {
    std::vector<float> dyda(a.size());
    float y = 0.0F;
    model(x, a, y, dyda);
    return y;
}

// Central difference of the model with respect to parameter j, in double steps of the floats.
float centralDifference(PeakModel model, float x, const std::vector<float>& a, std::size_t j) {
    const float h = 1.0e-3F * std::max(std::fabs(a[j]), 1.0F);
    std::vector<float> up = a;
    std::vector<float> down = a;
    up[j] += h;
    down[j] -= h;
    return (valueAt(model, x, up) - valueAt(model, x, down)) / (up[j] - down[j]);
}

struct ModelCase {
    const char* name;
    PeakModel model;
    std::vector<float> a;
    std::vector<bool> exact; // derivatives meant to be exact
};

TEST(PeakProfiles, ExactDerivativesMatchCentralDifferences) {
    const ModelCase cases[] = {
        {"GS_TOT two peaks", &GS_TOT, {100, 50, 3, 40, 56, 2, 7}, {1, 1, 1, 1, 1, 1, 1}},
        {"GD_TOT two peaks",
         &GD_TOT,
         {900, 50, 4, 0.3F, 500, 56, 3, 0.8F, 7},
         {1, 1, 1, 1, 1, 1, 1, 1, 1}},
        {"PVDERIV: all but the centre", &PVDERIV, {900, 50, 4, 0.3F, 7}, {1, 0, 1, 1, 1}},
    };
    for (const ModelCase& c : cases) {
        for (const float x : {44.0F, 48.5F, 50.0F, 51.7F, 55.0F, 59.0F}) {
            std::vector<float> dyda(c.a.size());
            float y = 0.0F;
            c.model(x, c.a, y, dyda);
            float scale = 0.0F;
            for (std::size_t j = 0; j < c.a.size(); ++j) {
                scale = std::max(scale, std::fabs(centralDifference(c.model, x, c.a, j)));
            }
            for (std::size_t j = 0; j < c.a.size(); ++j) {
                if (c.exact[j]) {
                    // Float central differences: about 1e-3 of the largest derivative.
                    EXPECT_NEAR(dyda[j], centralDifference(c.model, x, c.a, j), 2.0e-3F * scale)
                        << c.name << ", x " << x << ", parameter " << j;
                }
            }
        }
    }
}

TEST(PeakProfiles, PvderivCentreDerivativeHasHalfTheGaussianPart) {
    // dY/dx0 = (1 - η)·(exact Gaussian part)/2 + η·(exact Lorentzian part); both parts are the
    // central differences of the pure profiles (η = 0 and η = 1).
    for (const float eta : {0.0F, 0.4F, 1.0F}) {
        for (const float x : {46.0F, 49.0F, 52.5F}) {
            std::vector<float> a{900, 50, 4, eta, 7};
            std::vector<float> dyda(a.size());
            float y = 0.0F;
            PVDERIV(x, a, y, dyda);
            std::vector<float> gauss = a;
            gauss[3] = 0.0F;
            std::vector<float> lorentz = a;
            lorentz[3] = 1.0F;
            const float expected = 0.5F * (1.0F - eta) * centralDifference(&PVDERIV, x, gauss, 1) +
                                   eta * centralDifference(&PVDERIV, x, lorentz, 1);
            EXPECT_NEAR(dyda[1], expected, 2.0e-3F * std::fabs(expected))
                << "eta " << eta << ", x " << x;
        }
    }
}

TEST(PeakProfiles, PvderivClosedForms) {
    const float w = 2.5F;
    const float area = 10.0F;
    // η = 0 at the centre: A·ln4/(sqrt(π)·w) above the background.
    EXPECT_NEAR(valueAt(&PVDERIV, 3.0F, {area, 3.0F, w, 0.0F, 5.0F}) - 5.0F,
                area * 1.3862944F / (std::sqrt(kPi) * w), 1.0e-5F);
    // η = 1: A/w at the centre, half of it at d = w/sqrt(2π).
    EXPECT_NEAR(valueAt(&PVDERIV, 3.0F, {area, 3.0F, w, 1.0F, 5.0F}) - 5.0F, area / w, 1.0e-5F);
    EXPECT_NEAR(valueAt(&PVDERIV, 3.0F + w / std::sqrt(2.0F * kPi), {area, 3.0F, w, 1.0F, 5.0F}) -
                    5.0F,
                0.5F * area / w, 1.0e-5F);
    // Far from the centre only the background is left, and dY/dbackground = 1.
    std::vector<float> dyda(5);
    float y = 0.0F;
    const std::vector<float> far{area, 3.0F, w, 0.5F, 5.0F};
    PVDERIV(1.0e4F, far, y, dyda);
    EXPECT_NEAR(y, 5.0F, 1.0e-3F);
    EXPECT_EQ(dyda[4], 1.0F);
}

TEST(PeakProfiles, DisplayedQuantitiesOfGdTot) {
    // FWHM and height read off the curve; the area by the trapezoid rule over ±2000 FWHM.
    for (const float eta : {0.0F, 0.35F, 1.0F}) {
        const std::vector<float> peak{120.0F, 10.0F, 2.0F, eta};
        const std::vector<float> a{120.0F, 10.0F, 2.0F, eta, 0.0F};
        const float height = PEAKAMP(PeakProfile::pseudoVoigt, peak).value;
        EXPECT_NEAR(valueAt(&GD_TOT, 10.0F, a), height, 1.0e-4F * height) << eta;
        EXPECT_NEAR(valueAt(&GD_TOT, 11.0F, a), 0.5F * height, 1.0e-4F * height) << eta;
        EXPECT_EQ(PEAKWID(PeakProfile::pseudoVoigt, peak).value, 2.0F);
        double area = 0.0;
        for (int i = -400000; i < 400000; ++i) {
            area += 0.01 * valueAt(&GD_TOT, 10.0F + 0.01F * static_cast<float>(i), a);
        }
        // The Lorentzian tails beyond ±4000 hold 2/π·(1/4000) of its area.
        EXPECT_NEAR(area, 120.0 * (1.0 - eta * 0.000159), 0.05) << eta;
    }
}

TEST(PeakProfiles, DerivedQuantityGradientsMatchCentralDifferences) {
    using Quantity = PeakQuantity (*)(PeakProfile, std::span<const float>);
    const Quantity quantities[] = {&PEAKWID, &PEAKAMP, &peakArea};
    const std::pair<PeakProfile, std::vector<float>> peaks[] = {
        {PeakProfile::gaussian, {40.0F, 5.0F, 1.5F}},
        {PeakProfile::pseudoVoigt, {300.0F, 5.0F, 2.5F, 0.4F}}};
    for (const auto& [profile, peak] : peaks) {
        for (std::size_t q = 0; q < 3; ++q) {
            const PeakQuantity at = quantities[q](profile, peak);
            for (std::size_t j = 0; j < peak.size(); ++j) {
                std::vector<float> up = peak;
                std::vector<float> down = peak;
                const float h = 1.0e-3F * std::max(std::fabs(peak[j]), 1.0F);
                up[j] += h;
                down[j] -= h;
                const float difference =
                    (quantities[q](profile, up).value - quantities[q](profile, down).value) /
                    (up[j] - down[j]);
                EXPECT_NEAR(at.gradient[j], difference,
                            1.0e-3F * std::max(1.0F, std::fabs(difference)))
                    << "profile " << static_cast<int>(profile) << ", quantity " << q
                    << ", parameter " << j;
            }
        }
    }
}

} // namespace
} // namespace quarvex
