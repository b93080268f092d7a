// Streaming reader of the library's Slow and Fast files: lines through a large buffer, fast
// skipping to the next entry, and the reading of one "x y" data line.
#pragma once

#include "common/ReadableFile.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace quarvex {

/// Width of the line buffer a library data line is read into.
inline constexpr std::size_t kLibraryLineWidth = 100;

/// Reads a library file strictly sequentially through one buffer of a few megabytes (plain
/// reads, not a mapping: the search's memory stays the same whatever the library's size). No
/// allocation per line.
class LibraryFileReader {
public:
    /// Size of the read buffer unless told otherwise.
    static constexpr std::size_t kDefaultBufferSize = std::size_t{4} << 20;

    /// Opens `path` for reading through a buffer of `bufferSize` bytes (at least 4); throws
    /// QuarvexError for a device, a pipe or a socket (see openReadableFile).
    explicit LibraryFileReader(const std::filesystem::path& path,
                               std::size_t bufferSize = kDefaultBufferSize);

    /// False when the file could not be opened.
    bool isOpen() const noexcept { return file_ != nullptr; }

    /// The next line without its end of line, cut at `width` characters; valid until the next
    /// call. False at the end of the file.
    bool next(std::string_view& line, std::size_t width = kLibraryLineWidth);

    /// What nextPair found.
    enum class Line { Pair, Separator, Unreadable, End };

    /// Reads the next line as a data line "x y" (read as readLibraryPair reads it): Pair with x
    /// and y set, Separator for a "==" line, Unreadable for any other line, End at the end of
    /// the file. Plain lines are read in place, without looking for their end first.
    Line nextPair(float& x, float& y);

    /// True when the line last read begins with "==", the separator of two entries.
    bool atSeparator() const noexcept { return atSeparator_; }

    /// Reads past every line up to and including the next "==" line; false at the end of the
    /// file. Skips whole entries without looking at their lines one by one.
    bool skipPastSeparator();

    /// Fraction of the file read so far, 0 to 1 (for progress reports).
    double fractionRead() const noexcept;

private:
    bool fill();
    std::string_view lineOf(const char* start, std::size_t length, std::size_t width);

    FilePointer file_;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool endOfFile_ = false;
    bool atSeparator_ = false;
    std::string overlong_; // head of a line longer than the whole buffer
    double fileSize_ = 0.0;
    double consumed_ = 0.0;
};

/// Reads two reals from a library data line the way a free-format read does ("x y", blanks or
/// a comma between, Fortran exponents...); true when both were read.
bool readLibraryPair(std::string_view line, float& x, float& y);

} // namespace quarvex
