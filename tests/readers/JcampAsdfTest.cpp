// Decoding JCAMP-DX data lines; the expected values are worked out by hand from the rules of the
// compressed forms (SQZ digit letters, DIF differences, DUP repeat counts).
#include "readers/JcampAsdf.h"

#include <gtest/gtest.h>

namespace quarvex {
namespace {

TEST(JcampAsdf, DecodesEachForm) {
    struct Case {
        const char* line;
        double x;
        std::vector<double> y;
        bool endsInDifference;
    };
    const Case cases[] = {
        // @ = 0; % = difference 0, T repeats it once more; J +1, K +2, M +4; %U: 7 three times;
        // J34: +134.
        {"D00@%TJKM%UJ34", 400, {0, 0, 0, 1, 3, 7, 7, 7, 7, 141}, true},
        {"200 1 -2.5 3E2,4", 200, {1, -2.5, 300, 4}, false},
        {"A1b2c", 11, {-22, -3}, false},
        {"+5;6 $$ a comment", 5, {6}, false},
        {"1@J", 1, {0, 1}, true},
        {"7A5S", 7, {15}, false}, // S: the value once (a count of one)
        {"9 1 W", 9, {1, 1, 1, 1, 1}, false},
        {"3 2k", 3, {2, 0}, true},
    };
    for (const Case& c : cases) {
        AsdfLine decoded;
        ASSERT_TRUE(decodeAsdfLine(c.line, decoded)) << c.line;
        EXPECT_EQ(c.x, decoded.x) << c.line;
        EXPECT_EQ(c.y, decoded.y) << c.line;
        EXPECT_EQ(c.endsInDifference, decoded.endsInDifference) << c.line;
    }
}

TEST(JcampAsdf, RefusesWhatIsNotData) {
    for (const char* line : {"", "A1 J2", "1 2 xyz", "1 S", "5 U", "1 2 3..4", "1 2 -", "##END="}) {
        AsdfLine decoded;
        EXPECT_FALSE(decodeAsdfLine(line, decoded)) << line;
    }
}

} // namespace
} // namespace quarvex
