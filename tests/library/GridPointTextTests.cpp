// The data lines of the library files: whole numbers written with integer formatting give the
// text of the shortest float form, byte for byte, over every grid position in use and beyond.
#include "library/CreateLibraryFile.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace quarvex {
namespace {

std::string shortestLine(float x, float y) {
    std::array<char, 64> text{};
    char* end = std::to_chars(text.data(), text.data() + text.size(), x).ptr;
    *end++ = ' ';
    end = std::to_chars(end, text.data() + text.size(), y).ptr;
    *end++ = '\n';
    return {text.data(), end};
}

TEST(GridPointText, WholeNumbersAsTheShortestFloatText) {
    std::string line;
    for (int whole = -120000; whole <= 120000; ++whole) {
        const auto x = static_cast<float>(whole);
        line.clear();
        appendGridPoint(line, x, 0.25F);
        ASSERT_EQ(line, shortestLine(x, 0.25F)) << whole;
    }
}

TEST(GridPointText, OtherValuesAsBefore) {
    const float values[] = {-0.0F,
                            0.0F,
                            0.5F,
                            -1.5F,
                            99999.5F,
                            100000.0F,
                            1.0e7F,
                            -3.0e9F,
                            1.0e-7F,
                            std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN(),
                            std::nextafter(4.0F, 5.0F)};
    for (const float x : values) {
        for (const float y : values) {
            std::string line;
            appendGridPoint(line, x, y);
            EXPECT_EQ(line, shortestLine(x, y)) << x << ' ' << y;
        }
    }
}

} // namespace
} // namespace quarvex
