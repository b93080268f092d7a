// Visibility, primary spectrum, stacking, scaling and data type of the loaded spectra.
#include "specdata/SpecDataArrange.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace quarvex {

namespace {

bool inRange(const SPECDATA_GLOBALS& specdata, int index) {
    return index >= 0 && index < specdata.count();
}

// The divisor that maps (y - ymin) to drawn units before SCALE_FACT.
float scaleDivisor(const SPECDATA_GLOBALS& specdata, int index) {
    const float absolute = specdata.ABS_SCALE[at(index)];
    if (absolute > 0.0F) {
        return absolute;
    }
    const auto& extremes = specdata.Y_EXTREMES[at(index)];
    const float range = extremes[1] - extremes[0];
    return range > 0.0F ? range : 1.0F;
}

} // namespace

void RESET_YVALS(SPECDATA_GLOBALS& specdata) {
    for (int k = 0; k < specdata.count(); ++k) {
        const auto y = specdata.yValues(k);
        if (y.empty()) {
            specdata.Y_EXTREMES[at(k)] = {0.0F, 0.0F};
            continue;
        }
        const auto [low, high] = std::minmax_element(y.begin(), y.end());
        specdata.Y_EXTREMES[at(k)] = {*low, *high};
    }
}

void RESETSTACK(SPECDATA_GLOBALS& specdata, bool stack) {
    float level = 0.0F;
    for (int k = 0; k < specdata.count(); ++k) {
        specdata.STACK_BUFF[at(k)] = stack ? level : 0.0F;
        if (stack && specdata.VISIBLE[at(k)]) {
            level += drawnHeight(specdata, k) + kStackGap;
        }
    }
}

float drawnHeight(const SPECDATA_GLOBALS& specdata, int index) {
    const auto& extremes = specdata.Y_EXTREMES[at(index)];
    return specdata.SCALE_FACT[at(index)] * (extremes[1] - extremes[0]) /
           scaleDivisor(specdata, index);
}

float drawnY(const SPECDATA_GLOBALS& specdata, int index, float y) {
    return specdata.STACK_BUFF[at(index)] + specdata.SCALE_FACT[at(index)] *
                                                (y - specdata.Y_EXTREMES[at(index)][0]) /
                                                scaleDivisor(specdata, index);
}

void MAKE_PRIMARY(SPECDATA_GLOBALS& specdata, int index) {
    if (!inRange(specdata, index)) {
        return;
    }
    std::fill(specdata.ACTIVE.begin(), specdata.ACTIVE.end(), false);
    specdata.ACTIVE[at(index)] = true;
}

int ensurePrimary(SPECDATA_GLOBALS& specdata) {
    const auto marked = std::find(specdata.ACTIVE.begin(), specdata.ACTIVE.end(), true);
    if (marked != specdata.ACTIVE.end()) {
        return static_cast<int>(marked - specdata.ACTIVE.begin());
    }
    const int last = specdata.count() - 1;
    MAKE_PRIMARY(specdata, last);
    return last;
}

void setSpectrumVisible(SPECDATA_GLOBALS& specdata, int index, bool visible) {
    if (inRange(specdata, index)) {
        specdata.VISIBLE[at(index)] = visible;
    }
}

void ADJUST_SCALE(SPECDATA_GLOBALS& specdata, int index, float scaleFactor, float absoluteScale) {
    if (!(std::isfinite(scaleFactor) && scaleFactor > 0.0F)) {
        throw QuarvexError("The Scale Factor Must Be A Positive Number",
                           std::string(kAdjustScaleTitle));
    }
    if (!(std::isfinite(absoluteScale) && absoluteScale >= 0.0F)) {
        throw QuarvexError("The Absolute Scale Must Be Zero (Automatic) Or A Positive Number",
                           std::string(kAdjustScaleTitle));
    }
    if (inRange(specdata, index)) {
        specdata.SCALE_FACT[at(index)] = scaleFactor;
        specdata.ABS_SCALE[at(index)] = absoluteScale;
    }
}

void ADJUST_DATA_TYPE(SPECDATA_GLOBALS& specdata, int index, std::string_view dataType) {
    const std::string_view text = trimmed(dataType);
    const bool hasBlank = text.find_first_of(" \t") != std::string_view::npos;
    if (text.empty() || text.size() > kDataTypeWidth || hasBlank) {
        throw QuarvexError("The Data Type Must Be One Word Of At Most 16 Characters",
                           std::string(kAdjustDataTypeTitle));
    }
    if (!inRange(specdata, index)) {
        return;
    }
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    specdata.DTYPE[at(index)] = std::move(upper);
}

XAxisKind xAxisKindOf(std::string_view dataType) {
    const std::string_view text = trimmed(dataType);
    if (text == "RAMAN") {
        return XAxisKind::RamanShift;
    }
    if (text == "ENERGY") {
        return XAxisKind::Energy;
    }
    return XAxisKind::TwoTheta;
}

} // namespace quarvex
