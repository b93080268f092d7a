// Rows of the peak arrays, and the displayed width and height of a peak from its parameters.
#include "xray/XrayPeakModel.h"

#include "processing/PeakProfiles.h"

namespace quarvex {

namespace {

PeakProfile profileOf(int type) {
    return type == 1 ? PeakProfile::gaussian : PeakProfile::pseudoVoigt;
}

std::span<const float> parametersOf(const XrayPeakList& list, int k) {
    const PeakParameters& p = list.PKPRMS[static_cast<std::size_t>(k)];
    const int type = list.PKTYPE[static_cast<std::size_t>(k)];
    return {p.data(), static_cast<std::size_t>(parametersPerPeak(profileOf(type)))};
}

} // namespace

XrayPeak XrayPeakList::peak(int k) const {
    const auto i = static_cast<std::size_t>(k);
    return {PKPRMS[i], PKERR[i], PKDSP[i], PKDERR[i], USEPK[i], PKTYPE[i], PKBND[i], PKBKG[i]};
}

void XrayPeakList::append(const XrayPeak& peak) {
    PKPRMS.push_back(peak.parameters);
    PKERR.push_back(peak.errors);
    PKDSP.push_back(peak.dSpacing);
    PKDERR.push_back(peak.dSpacingError);
    USEPK.push_back(peak.use);
    PKTYPE.push_back(peak.type);
    PKBND.push_back(peak.bounds);
    PKBKG.push_back(peak.background);
}

float XrayPeakList::fwhm(int k) const {
    return PEAKWID(profileOf(PKTYPE[static_cast<std::size_t>(k)]), parametersOf(*this, k)).value;
}

float XrayPeakList::height(int k) const {
    return PEAKAMP(profileOf(PKTYPE[static_cast<std::size_t>(k)]), parametersOf(*this, k)).value;
}

} // namespace quarvex
