// Mean and spread, straight-line fit, noise level and number-format width, single precision.
#include "processing/StatFncts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace quarvex {

void GET_AVG_AND_STDDEV(std::span<const float> y, float& avg, float& sd) {
    const auto n = static_cast<float>(y.size());
    float sum = 0.0F;
    float sumSquares = 0.0F;
    for (const float value : y) {
        sum += value;
        sumSquares += value * value;
    }
    avg = sum / n;
    // The mean itself, not its square, is subtracted: keep it, the thresholds are tuned to it.
    sd = std::sqrt(std::fabs(sumSquares / n - avg));
}

void CALCULATE_LST_SQRS(std::span<const float> x, std::span<const float> y, float& slope,
                        float& intercept) {
    const auto n = static_cast<float>(x.size());
    float sx = 0.0F;
    float sy = 0.0F;
    float sxy = 0.0F;
    float sxx = 0.0F;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sx += x[i];
        sy += y[i];
        sxy += x[i] * y[i];
        sxx += x[i] * x[i];
    }
    const float d = n * sxx - sx * sx;
    if (d == 0.0F) {
        return;
    }
    slope = (n * sxy - sx * sy) / d;
    intercept = (sy * sxx - sx * sxy) / d;
}

NoiseLevel FIND_NOISE_STDDEV(std::span<const float> x, std::span<const float> y, int segments) {
    NoiseLevel level;
    const int ndat = static_cast<int>(y.size());
    if (ndat == 0) {
        return level;
    }
    float sum = 0.0F;
    for (const float value : y) {
        sum += value;
    }
    level.avg = sum / static_cast<float>(ndat);

    int count = segments;
    int length =
        count > 0
            ? static_cast<int>(std::lround(static_cast<float>(ndat) / static_cast<float>(count)))
            : 0;
    while (length <= 2) {
        // Halving one segment gives one again: then no segment of more than 2 points fits.
        if (count <= 1) {
            return level;
        }
        count = static_cast<int>(std::lround(static_cast<float>(count) / 2.0F));
        length =
            static_cast<int>(std::lround(static_cast<float>(ndat) / static_cast<float>(count)));
    }

    std::vector<float> residuals;
    float noise = 0.0F;
    int counted = 0;
    for (int c = 0; c < count; ++c) {
        const int first = length * c;
        const int points = std::min(length, ndat - first);
        // Rounding up the length can leave the last segments short or empty.
        if (points < 3) {
            continue;
        }
        const auto xs =
            x.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(points));
        const auto ys =
            y.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(points));
        float slope = 0.0F;
        float intercept = 0.0F;
        CALCULATE_LST_SQRS(xs, ys, slope, intercept);
        residuals.resize(static_cast<std::size_t>(points));
        for (std::size_t i = 0; i < residuals.size(); ++i) {
            residuals[i] = ys[i] - (slope * xs[i] + intercept);
        }
        float avg = 0.0F;
        float sd = 0.0F;
        GET_AVG_AND_STDDEV(residuals, avg, sd);
        noise += sd;
        ++counted;
    }
    level.noise = counted > 0 ? noise / static_cast<float>(counted) : 0.0F;
    return level;
}

FloatFormat GET_FLOAT_SIZE(float value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
    int point = 1;
    while (text[point - 1] != '\0' && text[point - 1] != '.') {
        ++point;
    }
    FloatFormat format;
    format.width = point + decimals;
    format.decimals = decimals;
    char width[16];
    // Two characters for W, as the edit descriptor i2 writes it (asterisks when it overflows).
    if (format.width <= 99) {
        std::snprintf(width, sizeof width, "%2d", format.width);
    } else {
        std::snprintf(width, sizeof width, "**");
    }
    format.text = std::string("(f") + width + "." + std::to_string(decimals) + ")";
    return format;
}

} // namespace quarvex
