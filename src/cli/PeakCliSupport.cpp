// Shared parts of the peak commands: the range option, settings from the preferences, loading.
#include "cli/PeakCliSupport.h"

#include "cli/SpectrumLoading.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"

#include <cmath>
#include <cstdio>

namespace quarvex::cli {

XRange parseRange(const std::string& text) {
    const auto colon = text.find(':');
    XRange range;
    if (colon == std::string::npos ||
        !parseReal(std::string_view(text).substr(0, colon), range.low) ||
        !parseReal(std::string_view(text).substr(colon + 1), range.high) ||
        !(range.low < range.high)) {
        throw QuarvexError("The range \"" + text +
                               "\" is not of the form LO:HI with LO below HI (e.g. 1050:1120).",
                           "Error");
    }
    return range;
}

PeakSearchSettings searchSettings(const Preferences& preferences) {
    return {preferences.noiseSegments, static_cast<float>(preferences.peakThreshold),
            preferences.peakSmoothingPoints, preferences.peakMinSeparation};
}

LoadedSpectrum loadSpectrum(ProgramState& state, const std::string& file,
                            const std::string& columns) {
    const int index = loadCommandSpectrum(state, file, columns);
    return {state.specdata.xValues(index), state.specdata.yValues(index)};
}

std::string formatValue(float value) {
    if (!std::isfinite(value)) {
        return "n/a";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", static_cast<double>(value));
    return text;
}

} // namespace quarvex::cli
