// Fast sequential reading of a text file line by line, the way the program's readers see lines.
#pragma once

#include "common/ReadableFile.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace quarvex {

#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
// Fuzzing builds (QUARVEX_FUZZ) read through a small buffer: line ends fall on buffer boundaries,
// and the sanitizers need not prepare 1 MiB for every input of every reader.
inline constexpr std::size_t kLineReaderBufferBytes = 64;
#else
inline constexpr std::size_t kLineReaderBufferBytes = std::size_t{1} << 20;
#endif

/// Reads a text file line by line through a large buffer. Each line comes without its end of
/// line ("\n" or "\r\n") and cut at `maxLineLength` characters, like a read into a fixed-width
/// line buffer. No allocation per line. A line that runs on for kMaxTextLineBytes without an end
/// of line ends the reading: the file is not a text file.
class LineReader {
public:
    static constexpr std::size_t kDefaultMaxLineLength = 256;
    static constexpr std::size_t kDefaultBufferSize = kLineReaderBufferBytes;

    /// Opens `path` (see openReadableFile: throws QuarvexError for a device, a pipe or a socket).
    /// `bufferSize` (at least 1) is settable so that tests and fuzzers need no big files.
    explicit LineReader(const std::filesystem::path& path,
                        std::size_t maxLineLength = kDefaultMaxLineLength,
                        std::size_t bufferSize = kDefaultBufferSize);

    /// Reads a file opened by the caller (null: isOpen() is false), such as a pipe that
    /// openReadableFile took.
    LineReader(FilePointer file, std::size_t maxLineLength, std::size_t bufferSize);

    /// Reads lines straight from `bytes` (a file read whole beforehand), which must outlive the
    /// reader: nothing is copied.
    LineReader(std::string_view bytes, std::size_t maxLineLength);

    /// False when the file could not be opened (missing, a folder, no permission).
    bool isOpen() const noexcept { return file_ != nullptr || inMemory_; }

    /// The next line, valid only until the next call (copy what must outlive it); false at the
    /// end of the file, on a read error or at a line too long for a text file.
    bool next(std::string_view& line);

    /// Starts again from the first line.
    void rewind();

    /// Number of the line last returned, from 1.
    std::int64_t lineNumber() const noexcept { return lineNumber_; }

    /// True when a line read so far held a NUL byte or ran on for kMaxTextLineBytes without an
    /// end of line: the file is binary, not text.
    bool notText() const noexcept { return notText_; }

private:
    bool refill();

    FilePointer file_;
    std::size_t maxLineLength_;
    std::unique_ptr<char[]> buffer_;
    const char* data_ = nullptr; // buffer_, or the bytes read from memory
    bool inMemory_ = false;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool endOfFile_ = false;
    std::string longLine_; // a line that straddles two buffer fills
    std::int64_t lineNumber_ = 0;
    bool notText_ = false;
};

} // namespace quarvex
