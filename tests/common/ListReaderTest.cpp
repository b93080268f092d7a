// The free-format reader against hand-worked records of list-directed input.
#include "common/ListReader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <random>

#include <string>
#include <vector>

namespace quarvex {
namespace {

using S = FieldStatus;

struct RealCase {
    const char* record;
    std::vector<S> statuses;    // one read per entry
    std::vector<double> values; // variable after each read (start value -1)
};

TEST(ListReader, ReadsRealsLikeAListDirectedRead) {
    const std::vector<RealCase> cases = {
        {"1.5 2.5", {S::Assigned, S::Assigned}, {1.5, 2.5}},
        {"1.5,2.5", {S::Assigned, S::Assigned}, {1.5, 2.5}},
        {"  1.5 ,  2.5  ", {S::Assigned, S::Assigned}, {1.5, 2.5}},
        {"\t1.5\t2.5", {S::Assigned, S::Assigned}, {1.5, 2.5}},
        {"1.5d3 -2.5D-1", {S::Assigned, S::Assigned}, {1500.0, -0.25}},
        {"+4. .5", {S::Assigned, S::Assigned}, {4.0, 0.5}},
        {"1.0E+02 7", {S::Assigned, S::Assigned}, {100.0, 7.0}},
        {"3*2.0", {S::Assigned, S::Assigned, S::Assigned, S::Failed}, {2.0, 2.0, 2.0, -1.0}},
        {"2* 5", {S::Kept, S::Kept, S::Assigned}, {-1.0, -1.0, 5.0}},
        {"1,,3", {S::Assigned, S::Kept, S::Assigned}, {1.0, -1.0, 3.0}},
        {",3", {S::Kept, S::Assigned}, {-1.0, 3.0}},
        {"1 / 2", {S::Assigned, S::Kept, S::Kept}, {1.0, -1.0, -1.0}},
        {"1/2", {S::Assigned, S::Kept}, {1.0, -1.0}},
        {"1", {S::Assigned, S::Failed}, {1.0, -1.0}},
        {"1,", {S::Assigned, S::Failed}, {1.0, -1.0}},
        {"", {S::Failed}, {-1.0}},
        {"abc", {S::Failed}, {-1.0}},
        {"1.5x", {S::Failed}, {-1.0}},
        {"'1.5'", {S::Failed}, {-1.0}},
        {"1.0 2.0 trailing words", {S::Assigned, S::Assigned}, {1.0, 2.0}},
    };
    for (const RealCase& c : cases) {
        ListReader reader(c.record);
        for (std::size_t i = 0; i < c.statuses.size(); ++i) {
            double value = -1.0;
            EXPECT_EQ(reader.read(value), c.statuses[i])
                << "record \"" << c.record << "\" read " << i;
            EXPECT_EQ(value, c.values[i]) << "record \"" << c.record << "\" read " << i;
        }
    }
}

TEST(ListReader, RealsRoundCorrectlyToSinglePrecision) {
    // 0.1 read straight into a float is the nearest float, not the double 0.1 rounded twice.
    float value = 0.0F;
    ListReader reader("0.1 16777217 1e39");
    ASSERT_EQ(reader.read(value), S::Assigned);
    EXPECT_EQ(value, 0.1F);
    ASSERT_EQ(reader.read(value), S::Assigned);
    EXPECT_EQ(value, 16777216.0F);
    EXPECT_EQ(reader.read(value), S::Failed) << "beyond single precision";
}

struct TextCase {
    const char* record;
    std::vector<std::string> values;
};

TEST(ListReader, ReadsTextValues) {
    const std::vector<TextCase> cases = {
        {"Quartz", {"Quartz"}},
        {"Alpha quartz", {"Alpha", "quartz"}},
        {"'Alpha quartz', next", {"Alpha quartz", "next"}},
        {"\"Alpha, quartz\"", {"Alpha, quartz"}},
        {"'it''s'", {"it's"}},
        {"a/b", {"a"}},
        {"2*'x y'", {"x y", "x y"}},
    };
    for (const TextCase& c : cases) {
        ListReader reader(c.record);
        for (const std::string& expected : c.values) {
            std::string value;
            EXPECT_EQ(reader.read(value), S::Assigned) << c.record;
            EXPECT_EQ(value, expected) << c.record;
        }
    }
}

TEST(ListReader, ReadsIntegersAndLogicals) {
    int a = 0;
    int b = 0;
    EXPECT_TRUE(readAll("32 +7", a, b));
    EXPECT_EQ(a, 32);
    EXPECT_EQ(b, 7);
    EXPECT_FALSE(readAll("3.0", a)) << "an integer takes no decimal point";

    struct LogicalCase {
        const char* token;
        bool parses;
        bool value;
    };
    const LogicalCase logicals[] = {{"T", true, true},        {".TRUE.", true, true},
                                    {"f", true, false},       {".false.", true, false},
                                    {"Tomorrow", true, true}, {"yes", false, false},
                                    {".", false, false}};
    for (const LogicalCase& c : logicals) {
        bool value = !c.value;
        EXPECT_EQ(readAll(c.token, value), c.parses) << c.token;
        if (c.parses) {
            EXPECT_EQ(value, c.value) << c.token;
        }
    }
}

TEST(ListReader, ReadListKeepsNullsWhileReadAllRequiresEveryValue) {
    float x = 9.0F;
    float y = 9.0F;
    EXPECT_TRUE(readList("1.0 /", x, y));
    EXPECT_EQ(x, 1.0F);
    EXPECT_EQ(y, 9.0F);
    EXPECT_FALSE(readAll("1.0 /", x, y));
    EXPECT_FALSE(readList("1.0 oops", x, y));
}

} // namespace
} // namespace quarvex

namespace quarvex {
namespace {

// The pair reader's verdict and both floats, bit for bit, against the general list reader's.
::testing::AssertionResult readsLikeTheGeneralReader(const std::string& record) {
    float fastX = -7.0F;
    float fastY = -7.0F;
    float x = -7.0F;
    float y = -7.0F;
    const bool fast = readRealPair(record, fastX, fastY);
    const bool general = readAll(record, x, y);
    if (fast != general) {
        return ::testing::AssertionFailure() << '"' << record << "\" verdicts differ";
    }
    if (general &&
        (std::memcmp(&fastX, &x, sizeof x) != 0 || std::memcmp(&fastY, &y, sizeof y) != 0)) {
        return ::testing::AssertionFailure() << '"' << record << "\" read as " << fastX << ' '
                                             << fastY << ", not " << x << ' ' << y;
    }
    return ::testing::AssertionSuccess();
}

TEST(ListReader, ThePairFastPathReadsExactlyLikeTheGeneralReader) {
    const char* records[] = {
        "100.5, 7.25",
        "100.5 7.25",
        "\t1\t2\t",
        "1 , 2",
        "-0 -1e-3",
        "1 2 trailing",
        "1 2x",
        "1,,2",
        "1 /",
        "1/2",
        "1,",
        "1",
        "",
        "+4 5",
        "4 +5",
        "1.5d3 2",
        "3*2.0",
        "2*",
        "'1' 2",
        "nan 1",
        "1 inf",
        "1e39 1",
        "1 1e-50",
        ".5 5.",
        "1 2,3",
        "0x10 1",
        "1e 2",
        "1 2/",
        " , 1 2",
        "7 'text'",
        "1234567890123456789012345678901234567890123456789012345678901234567 1",
    };
    for (const char* record : records) {
        EXPECT_TRUE(readsLikeTheGeneralReader(record));
    }
}

// Short decimals take a shortcut of their own (a whole number divided by a power of ten): over
// many random ones, around 2^24 and with up to 12 decimals, it gives the general reader's float
// (std::from_chars's correct rounding) bit for bit, and the same verdict.
TEST(ListReader, ShortDecimalsReadExactlyLikeTheGeneralReader) {
    std::mt19937_64 random(17);
    const auto digitsOf = [&](int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text.push_back(static_cast<char>('0' + random() % 10));
        }
        return text;
    };
    const char* separators[] = {" ", ", ", "\t", ",", "x", "e5", "E-3", "e", ".", "/"};
    for (int i = 0; i < 200'000; ++i) {
        const int count = 1 + static_cast<int>(random() % 11);
        const std::string digits = i % 5 == 0 ? std::to_string((1U << 24) - 3 + random() % 7)
                                              : digitsOf(count); // every fifth around 2^24
        const auto point = random() % (digits.size() + 3);
        const std::string unsigned_ =
            point <= digits.size() ? digits.substr(0, point) + "." + digits.substr(point) : digits;
        const std::string number = (random() % 3 == 0 ? "-" : "") + unsigned_;
        const std::string record = "  " + number + separators[random() % std::size(separators)] +
                                   digitsOf(1 + static_cast<int>(random() % 8));
        ASSERT_TRUE(readsLikeTheGeneralReader(record));
    }
}

} // namespace
} // namespace quarvex
