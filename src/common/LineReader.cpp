#include "common/LineReader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace quarvex {

namespace {

std::string_view trimEndOfLine(std::string_view line) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

LineReader::LineReader(const std::filesystem::path& path, std::size_t maxLineLength,
                       std::size_t bufferSize)
    : LineReader(openReadableFile(path), maxLineLength, bufferSize) {}

LineReader::LineReader(FilePointer file, std::size_t maxLineLength, std::size_t bufferSize)
    : file_(std::move(file)), maxLineLength_(maxLineLength) {
    if (file_) {
        // Left uninitialised: only what fread put in is read, and readers open several per search.
        capacity_ = std::max<std::size_t>(bufferSize, 1);
        buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
        data_ = buffer_.get();
    }
}

LineReader::LineReader(std::string_view bytes, std::size_t maxLineLength)
    : maxLineLength_(maxLineLength), data_(bytes.data()), inMemory_(true), capacity_(bytes.size()),
      endOfFile_(true) {
    rewind();
}

bool LineReader::refill() {
    if (endOfFile_ || inMemory_ || !file_) {
        return false;
    }
    const std::size_t got = std::fread(buffer_.get(), 1, capacity_, file_.get());
    begin_ = 0;
    end_ = got;
    if (got < capacity_) {
        endOfFile_ = true;
    }
    return got > 0;
}

bool LineReader::next(std::string_view& line) {
    if (!isOpen()) {
        return false;
    }
    longLine_.clear();
    bool straddles = false;
    std::size_t straddlingBytes = 0;
    for (;;) {
        if (begin_ == end_ && !refill()) {
            if (!straddles) {
                return false;
            }
            line = longLine_; // the last line has no end of line
            break;
        }
        const char* start = data_ + begin_;
        const auto* newline = static_cast<const char*>(std::memchr(start, '\n', end_ - begin_));
        const std::size_t length =
            newline ? static_cast<std::size_t>(newline - start) : end_ - begin_;
        if (straddlingBytes + length > kMaxTextLineBytes) {
            notText_ = true; // no text file has such a line: stop rather than read on for ever
            endOfFile_ = true;
            begin_ = end_ = 0;
            return false;
        }
        if (!straddles && newline) {
            line = std::string_view(start, length);
            begin_ += length + 1;
            break;
        }
        // Keep only what the line buffer could hold (plus a possible '\r').
        const std::size_t room =
            maxLineLength_ + 1 - std::min(longLine_.size(), maxLineLength_ + 1);
        longLine_.append(start, std::min(length, room));
        straddles = true;
        begin_ += length;
        straddlingBytes += length;
        if (newline) {
            ++begin_;
            line = longLine_;
            break;
        }
    }
    line = trimEndOfLine(line);
    if (line.size() > maxLineLength_) {
        line = line.substr(0, maxLineLength_);
    }
    if (std::memchr(line.data(), '\0', line.size()) != nullptr) {
        notText_ = true;
    }
    ++lineNumber_;
    return true;
}

void LineReader::rewind() {
    lineNumber_ = 0;
    if (inMemory_) {
        begin_ = 0;
        end_ = capacity_;
        return;
    }
    if (!file_) {
        return;
    }
    std::rewind(file_.get());
    begin_ = end_ = 0;
    endOfFile_ = false;
}

} // namespace quarvex
