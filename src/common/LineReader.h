// Fast sequential reading of a text file line by line, the way the program's readers see lines.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Reads a text file line by line through a large buffer. Each line comes without its end of
/// line ("\n" or "\r\n") and cut at `maxLineLength` characters, like a read into a fixed-width
/// line buffer. No allocation per line.
class LineReader {
public:
    static constexpr std::size_t kDefaultMaxLineLength = 256;

    explicit LineReader(const std::filesystem::path& path,
                        std::size_t maxLineLength = kDefaultMaxLineLength);

    /// False when the file could not be opened (missing, a folder, no permission).
    bool isOpen() const noexcept { return file_ != nullptr; }

    /// The next line, valid until the next call; false at the end of the file or on a read error.
    bool next(std::string_view& line);

    /// Starts again from the first line.
    void rewind();

    /// Number of the line last returned, from 1.
    std::int64_t lineNumber() const noexcept { return lineNumber_; }

    /// True when a line read so far held a NUL byte: the file is binary, not text.
    bool sawNulByte() const noexcept { return sawNul_; }

private:
    bool refill();

    struct FileCloser {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, FileCloser> file_;
    std::size_t maxLineLength_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool endOfFile_ = false;
    std::string longLine_; // a line that straddles two buffer fills
    std::int64_t lineNumber_ = 0;
    bool sawNul_ = false;
};

} // namespace quarvex
