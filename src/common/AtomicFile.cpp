#include "common/AtomicFile.h"

#include <atomic>
#include <string>
#include <unistd.h>

namespace quarvex {

namespace {

// Unique within the process and across processes: two writers never share a temporary file.
std::filesystem::path temporaryNameFor(const std::filesystem::path& destination) {
    static std::atomic<unsigned> counter{0};
    std::filesystem::path temporary = destination;
    temporary += ".tmp" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    return temporary;
}

} // namespace

AtomicFile::AtomicFile(std::filesystem::path destination)
    : destination_(std::move(destination)), temporary_(temporaryNameFor(destination_)) {
    stream_.open(temporary_, std::ios::out | std::ios::trunc | std::ios::binary);
}

AtomicFile::~AtomicFile() {
    if (!committed_) {
        if (stream_.is_open()) {
            stream_.close();
        }
        std::error_code ignored;
        std::filesystem::remove(temporary_, ignored);
    }
}

bool AtomicFile::commit() {
    if (!stream_.is_open()) {
        return false;
    }
    stream_.flush();
    const bool written = static_cast<bool>(stream_);
    stream_.close();
    if (!written || stream_.fail()) {
        return false;
    }
    std::error_code error;
    std::filesystem::rename(temporary_, destination_, error);
    if (error) {
        return false;
    }
    committed_ = true;
    return true;
}

} // namespace quarvex
