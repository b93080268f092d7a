#include "shell/ColourTable.h"

#include <algorithm>
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

} // namespace

void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting, std::uint32_t seed) {
    std::copy(kFixedColours.begin(), kFixedColours.end(), painting.RAND_BRUSH.begin());
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> fraction(0.0F, 1.0F);
    for (std::size_t k = kFixedColours.size(); k < painting.RAND_BRUSH.size(); ++k) {
        SpectrumColour& colour = painting.RAND_BRUSH[k];
        colour.red = fraction(generator); // drawn in the order red, green, blue
        colour.green = fraction(generator);
        colour.blue = fraction(generator);
    }
}

void SET_UP_RAND_BRUSHES(PAINTINGGLOBALS& painting) {
    SET_UP_RAND_BRUSHES(painting, std::random_device{}());
}

} // namespace quarvex
