// The arithmetic of FIND_MATCH over any source of library pairs, so that the text files and the
// grid cache give the same score bit for bit.
#pragma once

#include "processing/InterpAndNorm.h"

#include <algorithm>
#include <cmath>

namespace quarvex {

/// Two grid positions coincide when they differ by less than this.
inline constexpr float kCoincidence = 1.0e-6F;

/// FIND_MATCH's score of the entry whose data pairs `readPair(lx, ly)` gives one by one (false
/// when the entry has no further readable pair).
template <typename ReadPair>
double matchScore(ReadPair&& readPair, const InterpData& INTERP_DATA, int NINT) {
    NINT = std::min(NINT, INTERP_DATA.capacity());
    if (NINT <= 0) {
        return 0.0;
    }
    const std::vector<float>& ux = INTERP_DATA.x;
    const std::vector<float>& uy = INTERP_DATA.y;
    float lx = 0.0F;
    float ly = 0.0F;
    if (!readPair(lx, ly)) {
        return 0.0;
    }
    if (ux[NINT - 1] < lx) {
        return 0.0; // the entry starts above the unknown's last point
    }
    int i = 0;
    if (ux[0] < lx) {
        while (ux[i] < lx && i < NINT - 1) {
            ++i;
        }
    } else {
        while (lx < ux[0]) {
            if (!readPair(lx, ly)) {
                return 0.0;
            }
        }
    }

    double SCORE = 0.0;
    float SUMSQ = 0.0F;
    // Only exactly coinciding grid points count: the first gap ends the sum.
    while (std::fabs(lx - ux[i]) < kCoincidence) {
        SCORE += static_cast<double>(ly * uy[i]);
        SUMSQ += ly * ly;
        ++i;
        if (i >= NINT || !readPair(lx, ly)) {
            break; // the end of the unknown, the end of the entry or an unreadable line
        }
    }
    if (SUMSQ == 0.0F) {
        return SCORE;
    }
    return SCORE * static_cast<double>(10.0F / std::sqrt(SUMSQ));
}

} // namespace quarvex
