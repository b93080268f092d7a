// The buffered line reader: line ends, cut lines, lines across buffer fills, binary files.
#include "common/LineReader.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quarvex {
namespace {

std::vector<std::string> allLines(LineReader& reader) {
    std::vector<std::string> lines;
    std::string_view line;
    while (reader.next(line)) {
        lines.emplace_back(line);
    }
    return lines;
}

TEST(LineReader, SplitsLinesAndDropsLineEnds) {
    struct Case {
        const char* content;
        std::vector<std::string> lines;
    };
    const std::vector<Case> cases = {
        {"", {}},
        {"a\nb\n", {"a", "b"}},
        {"a\r\nb", {"a", "b"}},
        {"\n\nc", {"", "", "c"}},
        {"only", {"only"}},
    };
    test::TempFolder folder;
    for (const Case& c : cases) {
        LineReader reader(folder.write("lines.txt", c.content));
        EXPECT_EQ(allLines(reader), c.lines) << '"' << c.content << '"';
    }
}

TEST(LineReader, CutsLongLinesAndReadsLinesAcrossBufferFills) {
    test::TempFolder folder;
    // A first line that overflows a 64 KiB buffer, then lines that straddle its end.
    constexpr std::size_t kBuffer = std::size_t{1} << 16;
    std::string content(3 * kBuffer, 'x');
    content += "\r\nshort\n";
    content += std::string(300, 'y') + "\n";
    LineReader reader(folder.write("long.txt", content), LineReader::kDefaultMaxLineLength,
                      kBuffer);
    const std::vector<std::string> lines = allLines(reader);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], std::string(256, 'x'));
    EXPECT_EQ(lines[1], "short");
    EXPECT_EQ(lines[2], std::string(256, 'y'));
    EXPECT_EQ(reader.lineNumber(), 3);

    // Many short lines whose ends fall on every position of a buffer boundary.
    std::string many;
    for (int i = 0; i < 200'000; ++i) {
        many += std::to_string(i) + "\n";
    }
    LineReader counter(folder.write("many.txt", many), LineReader::kDefaultMaxLineLength, kBuffer);
    const std::vector<std::string> numbers = allLines(counter);
    ASSERT_EQ(numbers.size(), 200'000U);
    for (int i = 0; i < 200'000; i += 7919) {
        EXPECT_EQ(numbers[static_cast<std::size_t>(i)], std::to_string(i));
    }
    counter.rewind();
    std::string_view first;
    ASSERT_TRUE(counter.next(first));
    EXPECT_EQ(first, "0");
}

TEST(LineReader, TellsMissingFilesFoldersAndBinaryContent) {
    test::TempFolder folder;
    EXPECT_FALSE(LineReader(folder.path() / "missing.txt").isOpen());
    EXPECT_FALSE(LineReader(folder.path()).isOpen());

    LineReader binary(folder.write("binary.dat", std::string("ab\0cd\n", 6)));
    allLines(binary);
    EXPECT_TRUE(binary.notText());
}

} // namespace
} // namespace quarvex
