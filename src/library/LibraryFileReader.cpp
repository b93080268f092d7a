#include "library/LibraryFileReader.h"

#include "common/ListReader.h"
#include "common/TextUtils.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

namespace quarvex {

namespace {

// The smallest buffer that can hold a "\n=" while looking for the next separator.
constexpr std::size_t kSmallestBuffer = 4;

// Position of the first "\n==" in `text`, or npos. Data lines hold no '=', so looking for that
// rare character skips whole entries at memory speed.
std::size_t findSeparatorAtLineStart(std::string_view text) {
    for (std::size_t from = 1; from + 1 < text.size();) {
        const auto* equals =
            static_cast<const char*>(std::memchr(text.data() + from, '=', text.size() - from - 1));
        if (equals == nullptr) {
            break;
        }
        const auto at = static_cast<std::size_t>(equals - text.data());
        if (text[at - 1] == '\n' && text[at + 1] == '=') {
            return at - 1;
        }
        from = at + 1;
    }
    return std::string_view::npos;
}

// A number of up to seven digits (every grid position) is exact in single precision: no need
// for the general conversion.
constexpr int kExactDigits = 7;

// One number of a plain "x y" line, ending at a blank, at `end` or (with `lastOnLine`) at the end
// of the line. Anything else (commas, slashes, repeat counts, a leading '+', D exponents, NaN) is
// left to the full free-format reader.
bool readPlainNumber(const char*& position, const char* end, float& value,
                     bool lastOnLine = false) {
    while (position < end && isBlank(*position)) {
        ++position;
    }
    const char* digits = position < end && *position == '-' ? position + 1 : position;
    const char* stop = digits;
    int whole = 0;
    while (stop < end && isDigit(*stop) && stop - digits < kExactDigits) {
        whole = whole * 10 + (*stop - '0');
        ++stop;
    }
    if (stop > digits && stop < end && (isBlank(*stop) || *stop == '\n' || *stop == '\r')) {
        value = digits == position ? static_cast<float>(whole) : -static_cast<float>(whole);
    } else {
        const auto result = std::from_chars(position, end, value);
        if (result.ec != std::errc{} || std::isnan(value)) {
            return false;
        }
        stop = result.ptr;
    }
    const bool ends =
        stop == end || isBlank(*stop) || (lastOnLine && (*stop == '\n' || *stop == '\r'));
    position = stop;
    return ends;
}

} // namespace

LibraryFileReader::LibraryFileReader(const std::filesystem::path& path, std::size_t bufferSize)
    : file_(openReadableFile(path)) {
    if (file_) {
        std::error_code error;
        std::setvbuf(file_.get(), nullptr, _IONBF, 0); // our buffer is the only one
        // Left uninitialised: only what fread put in is ever read, and a search opens two.
        capacity_ = std::max(bufferSize, kSmallestBuffer);
        buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
        const auto size = std::filesystem::file_size(path, error);
        fileSize_ = error ? 0.0 : static_cast<double>(size);
    }
}

// Moves the unread rest to the front of the buffer and reads behind it; false when nothing new
// came in (end of file, or a buffer full of one line).
bool LibraryFileReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        consumed_ += static_cast<double>(begin_);
        begin_ = 0;
    }
    if (endOfFile_ || end_ == capacity_) {
        return false;
    }
    const std::size_t wanted = capacity_ - end_;
    const std::size_t got = std::fread(buffer_.get() + end_, 1, wanted, file_.get());
    endOfFile_ = got < wanted;
    end_ += got;
    return got > 0;
}

std::string_view LibraryFileReader::lineOf(const char* start, std::size_t length,
                                           std::size_t width) {
    if (length > 0 && start[length - 1] == '\r') {
        --length;
    }
    atSeparator_ = length >= 2 && start[0] == '=' && start[1] == '=';
    return {start, std::min(length, width)};
}

bool LibraryFileReader::next(std::string_view& line, std::size_t width) {
    atSeparator_ = false;
    if (!file_) {
        return false;
    }
    for (;;) {
        const char* start = buffer_.get() + begin_;
        const std::size_t available = end_ - begin_;
        if (const auto* newline = static_cast<const char*>(std::memchr(start, '\n', available))) {
            const auto length = static_cast<std::size_t>(newline - start);
            begin_ += length + 1;
            line = lineOf(start, length, width);
            return true;
        }
        if (fill()) {
            continue;
        }
        if (begin_ == end_) {
            return false;
        }
        if (endOfFile_) { // the last line has no end of line
            begin_ = end_;
            line = lineOf(buffer_.get(), end_, width);
            return true;
        }
        // A line longer than the whole buffer: gather what the line buffer holds (and one more
        // character, for a '\r'), drop the rest of it.
        overlong_.assign(buffer_.get(), std::min(end_, width + 1));
        begin_ = end_;
        while (fill()) {
            const char* rest = buffer_.get() + begin_;
            const auto* newline = static_cast<const char*>(std::memchr(rest, '\n', end_ - begin_));
            const std::size_t length =
                newline ? static_cast<std::size_t>(newline - rest) : end_ - begin_;
            const std::size_t room = width + 1 - std::min(overlong_.size(), width + 1);
            overlong_.append(rest, std::min(length, room));
            begin_ += newline ? length + 1 : length;
            if (newline) {
                break;
            }
        }
        line = lineOf(overlong_.data(), overlong_.size(), width);
        return true;
    }
}

bool LibraryFileReader::skipPastSeparator() {
    if (!file_) {
        return false;
    }
    bool atLineStart = true;
    for (;;) {
        const std::string_view rest(buffer_.get() + begin_, end_ - begin_);
        if (atLineStart && rest.size() < 2 && !endOfFile_) {
            fill();
            continue;
        }
        if (atLineStart && rest.substr(0, 2) == "==") {
            std::string_view separator;
            return next(separator);
        }
        if (const std::size_t found = findSeparatorAtLineStart(rest);
            found != std::string_view::npos) {
            begin_ += found + 1;
            atLineStart = true;
            continue;
        }
        if (endOfFile_) {
            begin_ = end_;
            atSeparator_ = false;
            return false;
        }
        // Keep the last two characters: a "\n=" may go on in the next read.
        begin_ = end_ - std::min<std::size_t>(rest.size(), 2);
        atLineStart = false;
        fill();
    }
}

LibraryFileReader::Line LibraryFileReader::nextPair(float& x, float& y) {
    // In place, when the whole line is in the buffer and is plain: "x y", then the end of line.
    const char* position = buffer_.get() + begin_;
    const char* end = buffer_.get() + end_;
    const char* lineStart = position;
    float first = 0.0F;
    float second = 0.0F;
    if (readPlainNumber(position, end, first) && readPlainNumber(position, end, second, true)) {
        while (position < end && isBlank(*position)) {
            ++position;
        }
        const char* lineEnd = position;
        if (position < end && *position == '\r') {
            ++position;
        }
        if (position < end && *position == '\n' &&
            static_cast<std::size_t>(lineEnd - lineStart) <= kLibraryLineWidth) {
            begin_ = static_cast<std::size_t>(position + 1 - buffer_.get());
            atSeparator_ = false;
            x = first;
            y = second;
            return Line::Pair;
        }
    }
    std::string_view line;
    if (!next(line)) {
        return Line::End;
    }
    if (atSeparator_) {
        return Line::Separator;
    }
    return readLibraryPair(line, x, y) ? Line::Pair : Line::Unreadable;
}

double LibraryFileReader::fractionRead() const noexcept {
    return fileSize_ > 0.0 ? (consumed_ + static_cast<double>(begin_)) / fileSize_ : 1.0;
}

bool readLibraryPair(std::string_view line, float& x, float& y) {
    const char* position = line.data();
    const char* end = position + line.size();
    float first = 0.0F;
    float second = 0.0F;
    if (readPlainNumber(position, end, first) && readPlainNumber(position, end, second)) {
        x = first;
        y = second;
        return true;
    }
    if (readAll(line, first, second)) {
        x = first;
        y = second;
        return true;
    }
    return false;
}

} // namespace quarvex
