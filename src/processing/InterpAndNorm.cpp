#include "processing/InterpAndNorm.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"

#include <algorithm>
#include <cmath>

namespace quarvex {

namespace {

// Whole numbers are exact in single precision up to 2^24; beyond it the grid cannot be built.
constexpr float kLargestGridPosition = 16777216.0F;

bool usableEnd(float value) {
    return std::fabs(value) < kLargestGridPosition; // false for NaN and Inf as well
}

// The first grid position: floor(x1) as a whole number, aligned for the steps 2 and 5, then
// moved up by steps until it is at or above x1. Returns false when STEP is too small to move it.
bool firstGridPosition(float x1, float STEP, float& g) {
    g = static_cast<float>(static_cast<int>(std::floor(x1)));
    if (STEP == 2.0F) {
        while (std::fmod(g, 2.0F) != 0.0F) {
            g += 1.0F;
        }
    }
    // Step 5 starts on a multiple of ten, not of five: every 5-step grid then shares its points.
    if (STEP == 5.0F) {
        while (std::fmod(g, 10.0F) != 0.0F) {
            g += 1.0F;
        }
    }
    while (g < x1) {
        const float next = g + STEP;
        if (next == g) {
            return false;
        }
        g = next;
    }
    return true;
}

} // namespace

InterpData::InterpData(int capacity)
    : x(static_cast<std::size_t>(std::max(capacity, 0))),
      y(static_cast<std::size_t>(std::max(capacity, 0))) {}

int InterpData::capacity() const {
    return static_cast<int>(std::min(x.size(), y.size()));
}

int gridCapacity(float first, float last, float step) {
    if (!std::isfinite(first) || !std::isfinite(last) || !(step > 0.0F) || !std::isfinite(step)) {
        return 0;
    }
    // Grid positions lie in [first, last): at most floor((last - first) / step) + 1 of them; one
    // more row covers the rounding of the float sums.
    const double rows = std::floor((static_cast<double>(last) - first) / step) + 2.0;
    return static_cast<int>(std::clamp(rows, 1.0, static_cast<double>(kMaxGridPoints)));
}

void FILL_INT_DATA(std::span<const float> x, std::span<const float> y, InterpData& INTERP_DATA,
                   int& NINT, float STEP) {
    const int capacity = std::min(NINT, INTERP_DATA.capacity());
    const std::size_t NDAT = std::min(x.size(), y.size());
    NINT = 0;
    if (NDAT == 0 || capacity <= 0 || !(STEP > 0.0F) || !std::isfinite(STEP)) {
        return;
    }
    const float x1 = x[0];
    const float xN = x[NDAT - 1];
    float g = 0.0F;
    if (!usableEnd(x1) || !usableEnd(xN) || !firstGridPosition(x1, STEP, g)) {
        return;
    }

    std::vector<float>& gridX = INTERP_DATA.x;
    std::vector<float>& gridY = INTERP_DATA.y;
    gridX[0] = g;
    int i = 1;
    // The last measured point is never a grid position: the grid stays strictly below xN.
    while (i < capacity && gridX[i - 1] + STEP < xN) {
        gridX[i] = gridX[i - 1] + STEP;
        ++i;
    }
    NINT = i;
    std::fill_n(gridY.begin(), NINT, 0.0F);

    // One pass over the measured intervals with a grid cursor that never goes back. Intervals
    // are half-open, so a grid position on a measured x takes the following interval.
    int k = 0;
    for (std::size_t j = 0; j + 1 < NDAT && k < NINT; ++j) {
        const float xLow = x[j];
        const float xHigh = x[j + 1];
        if (!(xLow <= gridX[k] && gridX[k] < xHigh)) {
            continue; // no grid position in this interval: its line is never needed
        }
        const float m = (y[j + 1] - y[j]) / (xHigh - xLow);
        const float b = y[j + 1] - xHigh * m;
        while (k < NINT && xLow <= gridX[k] && gridX[k] < xHigh) {
            gridY[k] = b + gridX[k] * m;
            ++k;
        }
    }
}

void NORMALIZE_INT_DATA(InterpData& INTERP_DATA, int NINT) {
    NINT = std::min(NINT, INTERP_DATA.capacity());
    float sumOfSquares = 0.0F;
    for (int i = 0; i < NINT; ++i) {
        sumOfSquares += INTERP_DATA.y[i] * INTERP_DATA.y[i];
    }
    const float norm = std::sqrt(sumOfSquares);
    // Norm 10, not 1: the dot product of two normalised spectra then runs up to 100.
    for (int i = 0; i < NINT; ++i) {
        INTERP_DATA.y[i] = 10.0F * INTERP_DATA.y[i] / norm;
    }
}

InterpData resampleSpectrum(std::span<const float> x, std::span<const float> y, float step,
                            bool normalize) {
    const std::size_t points = std::min(x.size(), y.size());
    const int rows = points == 0 ? 0 : gridCapacity(x.front(), x[points - 1], step);
    if (rows > kMaxResampleRows) {
        throw QuarvexError("x range too wide to resample: " + shortestText(x.front()) + " to " +
                               shortestText(x[points - 1]) + " at step " + shortestText(step),
                           "Error");
    }
    InterpData data(rows);
    int NINT = data.capacity();
    FILL_INT_DATA(x, y, data, NINT, step);
    if (normalize) {
        NORMALIZE_INT_DATA(data, NINT);
    }
    data.x.resize(static_cast<std::size_t>(NINT));
    data.y.resize(static_cast<std::size_t>(NINT));
    return data;
}

bool hasFiniteValues(const InterpData& data) {
    return data.capacity() > 0 &&
           std::all_of(data.y.begin(), data.y.end(), [](float v) { return std::isfinite(v); });
}

} // namespace quarvex
