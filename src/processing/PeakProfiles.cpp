// Gaussian and pseudo-Voigt peak sums with exact derivatives, and the displayed quantities of a
// fitted peak.
#include "processing/PeakProfiles.h"

#include <cmath>
#include <cstddef>

namespace quarvex {

namespace {

constexpr float kFourLn2 = 2.7725887F;      // 4 ln 2
constexpr float kGaussNorm = 0.93943728F;   // 2 sqrt(ln 2 / π): unit-area Gaussian of FWHM 1
constexpr float kLorentzNorm = 0.63661977F; // 2 / π: unit-area Lorentzian of FWHM 1
constexpr float kGaussFwhm = 1.6651092F;    // 2 sqrt(ln 2): FWHM of exp(-t²)
constexpr float kSqrtPi = 1.7724539F;       // area of exp(-t²)

} // namespace

int parametersPerPeak(PeakProfile profile) {
    return profile == PeakProfile::gaussian ? 3 : 4;
}

PeakModel peakModel(PeakProfile profile) {
    return profile == PeakProfile::gaussian ? &GS_TOT : &GD_TOT;
}

void GS_TOT(float x, std::span<const float> a, float& y, std::span<float> dyda) {
    const std::size_t ma = a.size();
    y = 0.0F;
    for (std::size_t k = 0; k + 3 < ma; k += 3) {
        const float height = a[k];
        const float w = a[k + 2];
        const float t = (x - a[k + 1]) / w;
        const float e = std::exp(-t * t);
        y += height * e;
        dyda[k] = e;
        dyda[k + 1] = 2.0F * height * e * t / w;
        dyda[k + 2] = 2.0F * height * e * t * t / w;
    }
    y += a[ma - 1];
    dyda[ma - 1] = 1.0F;
}

void GD_TOT(float x, std::span<const float> a, float& y, std::span<float> dyda) {
    const std::size_t ma = a.size();
    y = 0.0F;
    for (std::size_t k = 0; k + 4 < ma; k += 4) {
        const float area = a[k];
        const float w = a[k + 2];
        const float eta = a[k + 3];
        const float d = x - a[k + 1];
        const float q = d / w;
        const float lorentzDen = 1.0F + 4.0F * q * q;
        const float gauss = kGaussNorm / w * std::exp(-kFourLn2 * q * q);
        const float lorentz = kLorentzNorm / w / lorentzDen;
        const float shape = (1.0F - eta) * gauss + eta * lorentz;
        y += area * shape;
        dyda[k] = shape;
        // d/dx0: G·8ln2·d/w², L·8d/(w²(1 + 4q²)).
        dyda[k + 1] = area * ((1.0F - eta) * gauss * 2.0F * kFourLn2 * q / w +
                              eta * lorentz * 8.0F * q / (w * lorentzDen));
        // d/dw: G·(8ln2·q² - 1)/w, -L·(1 - 4q²)/(w(1 + 4q²)).
        dyda[k + 2] = area * ((1.0F - eta) * gauss * (2.0F * kFourLn2 * q * q - 1.0F) / w -
                              eta * lorentz * (1.0F - 4.0F * q * q) / (w * lorentzDen));
        dyda[k + 3] = area * (lorentz - gauss);
    }
    y += a[ma - 1];
    dyda[ma - 1] = 1.0F;
}

PeakQuantity PEAKWID(PeakProfile profile, std::span<const float> peak) {
    if (profile == PeakProfile::gaussian) {
        return {kGaussFwhm * peak[2], {0.0F, 0.0F, kGaussFwhm, 0.0F}};
    }
    return {peak[2], {0.0F, 0.0F, 1.0F, 0.0F}};
}

PeakQuantity PEAKAMP(PeakProfile profile, std::span<const float> peak) {
    if (profile == PeakProfile::gaussian) {
        return {peak[0], {1.0F, 0.0F, 0.0F, 0.0F}};
    }
    const float area = peak[0];
    const float w = peak[2];
    const float eta = peak[3];
    const float perArea = ((1.0F - eta) * kGaussNorm + eta * kLorentzNorm) / w;
    return {area * perArea,
            {perArea, 0.0F, -area * perArea / w, area * (kLorentzNorm - kGaussNorm) / w}};
}

void appendPeak(PeakProfile profile, const PeakShape& shape, std::vector<float>& a) {
    if (profile == PeakProfile::gaussian) {
        a.insert(a.end(), {shape.height, shape.centre, shape.fwhm / kGaussFwhm});
        return;
    }
    const float perArea = ((1.0F - shape.mix) * kGaussNorm + shape.mix * kLorentzNorm) / shape.fwhm;
    a.insert(a.end(), {shape.height / perArea, shape.centre, shape.fwhm, shape.mix});
}

PeakQuantity peakArea(PeakProfile profile, std::span<const float> peak) {
    if (profile == PeakProfile::gaussian) {
        return {kSqrtPi * peak[0] * peak[2], {kSqrtPi * peak[2], 0.0F, kSqrtPi * peak[0], 0.0F}};
    }
    return {peak[0], {1.0F, 0.0F, 0.0F, 0.0F}};
}

} // namespace quarvex
