#include "common/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace quarvex {

namespace {

// Unique within the process and across processes: two writers never share a temporary file.
std::filesystem::path temporaryNameFor(const std::filesystem::path& destination) {
    static std::atomic<unsigned> counter{0};
    std::filesystem::path temporary = destination;
    temporary += std::string(kTemporaryMarker) + std::to_string(::getpid()) + "-" +
                 std::to_string(counter++);
    return temporary;
}

// The process that wrote a temporary file, from its name; 0 when the name is not one of ours.
pid_t writerOf(std::string_view name) {
    const std::size_t at = name.rfind(kTemporaryMarker);
    if (at == std::string_view::npos) {
        return 0;
    }
    const std::string_view rest = name.substr(at + kTemporaryMarker.size());
    pid_t writer = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), writer);
    if (error != std::errc{} || end == rest.data() + rest.size() || *end != '-' || writer <= 0) {
        return 0;
    }
    return writer;
}

bool isRunning(pid_t process) {
    return ::kill(process, 0) == 0 || errno == EPERM;
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

bool AtomicFile::writeOut() {
    if (!stream_.is_open()) {
        return false;
    }
    stream_.flush();
    const bool written = static_cast<bool>(stream_);
    stream_.close();
    // Without the sync a power cut after the rename can leave an empty file at the destination.
    return written && !stream_.fail() && syncToDisk(temporary_);
}

bool AtomicFile::commit() {
    if (!writeOut()) {
        return false;
    }
    std::error_code error;
    std::filesystem::rename(temporary_, destination_, error);
    if (error) {
        return false;
    }
    committed_ = true;
    const std::filesystem::path folder =
        destination_.parent_path().empty() ? "." : destination_.parent_path();
    syncToDisk(folder);
    removeStaleTemporaryFiles(folder,
                              destination_.filename().string() + std::string(kTemporaryMarker));
    return true;
}

bool syncToDisk(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return false;
    }
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

void removeStaleTemporaryFiles(const std::filesystem::path& folder, std::string_view namePrefix) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(namePrefix)) {
            continue;
        }
        const pid_t writer = writerOf(name);
        if (writer != 0 && writer != ::getpid() && !isRunning(writer)) {
            std::error_code ignored;
            std::filesystem::remove(entry->path(), ignored);
        }
    }
}

} // namespace quarvex
