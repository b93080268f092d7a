// The colour table with which loaded spectra are drawn.
#pragma once

#include <array>
#include <cstdint>

namespace quarvex {

/// One colour as single-precision fractions from 0 to 1.
struct SpectrumColour {
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
};

inline constexpr int kColourTableSize = 50;

/// Painting state: the colour of every spectrum number (index 0 = spectrum 1).
struct PAINTINGGLOBALS {
    std::array<SpectrumColour, kColourTableSize> RAND_BRUSH{};
};

/// Sets entries 1 to 6 to the fixed colours and draws red, green and blue of entries 7 to 50
/// from a uniform random source seeded afresh at every call (so they differ from run to run).
/// A draw too close to an earlier entry, or too pale for the white view, is drawn again, so
/// that every spectrum can be told apart.
void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting);

/// The same with a given seed, for repeatable tables.
void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting, std::uint32_t seed);

} // namespace quarvex
