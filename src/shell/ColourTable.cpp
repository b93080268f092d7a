#include "shell/ColourTable.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace quarvex {

namespace {

constexpr std::array<SpectrumColour, 6> kFixedColours = {{
    {1.0F, 0.0F, 0.0F},
    {30.0F / 255.0F, 144.0F / 255.0F, 1.0F},
    {0.0F, 1.0F, 0.0F},
    {106.0F / 255.0F, 90.0F / 255.0F, 205.0F / 255.0F},
    {100.0F / 255.0F, 149.0F / 255.0F, 237.0F / 255.0F},
    {218.0F / 255.0F, 165.0F / 255.0F, 32.0F / 255.0F},
}};

// A drawn colour is kept when it is this far (RGB distance, fractions) from every colour
// before it and dark enough to see on the white view; after kDraws tries the farthest is kept.
constexpr float kDistinctDistance = 0.2F;
constexpr float kPalestLuminance = 0.8F;
constexpr int kDraws = 400;

float distance(const SpectrumColour& a, const SpectrumColour& b) {
    const float red = a.red - b.red;
    const float green = a.green - b.green;
    const float blue = a.blue - b.blue;
    return std::sqrt(red * red + green * green + blue * blue);
}

float luminance(const SpectrumColour& c) {
    return 0.299F * c.red + 0.587F * c.green + 0.114F * c.blue;
}

} // namespace

void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting, std::uint32_t seed) {
    std::copy(kFixedColours.begin(), kFixedColours.end(), painting.RAND_BRUSH.begin());
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> fraction(0.0F, 1.0F);
    for (std::size_t k = kFixedColours.size(); k < painting.RAND_BRUSH.size(); ++k) {
        const auto before = painting.RAND_BRUSH.begin() + static_cast<std::ptrdiff_t>(k);
        SpectrumColour best;
        float bestDistance = -1.0F;
        for (int draw = 0; draw < kDraws && bestDistance < kDistinctDistance; ++draw) {
            SpectrumColour colour;
            colour.red = fraction(generator); // drawn in the order red, green, blue
            colour.green = fraction(generator);
            colour.blue = fraction(generator);
            float nearest = luminance(colour) > kPalestLuminance ? 0.0F : 2.0F;
            for (auto other = painting.RAND_BRUSH.begin(); other != before; ++other) {
                nearest = std::min(nearest, distance(colour, *other));
            }
            if (nearest > bestDistance) {
                best = colour;
                bestDistance = nearest;
            }
        }
        painting.RAND_BRUSH[k] = best;
    }
}

void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting) {
    SET_UP_RAND_BRUSHES(painting, std::random_device{}());
}

} // namespace quarvex
