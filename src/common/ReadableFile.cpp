#include "common/ReadableFile.h"

#include "common/QuarvexError.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace quarvex {

namespace {

std::string kindOf(mode_t mode) {
    if (S_ISFIFO(mode)) {
        return "a named pipe";
    }
    if (S_ISSOCK(mode)) {
        return "a socket";
    }
    if (S_ISCHR(mode) || S_ISBLK(mode)) {
        return "a device";
    }
    return "not a regular file";
}

[[noreturn]] void refuse(const std::filesystem::path& path, mode_t mode) {
    throw QuarvexError(path.string() + " is " + kindOf(mode) +
                           ", not a regular file: only files stored on disk can be read.",
                       std::string(kNotRegularFileTitle));
}

} // namespace

FilePointer openReadableFile(const std::filesystem::path& path, PipeReading pipes) {
    const auto readable = [pipes](mode_t mode) {
        return S_ISREG(mode) || (S_ISFIFO(mode) && pipes == PipeReading::ReadOnce);
    };
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) {
        return nullptr; // missing, or a folder (which the readers report as a file they cannot
                        // open)
    }
    if (!readable(status.st_mode)) {
        refuse(path, status.st_mode); // a socket cannot even be opened
    }
    // Non-blocking, so that neither a pipe without a writer nor a file swapped for one in the
    // meantime can stall the open.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    if (::fstat(descriptor, &status) != 0 || !readable(status.st_mode)) {
        ::close(descriptor);
        if (S_ISDIR(status.st_mode)) {
            return nullptr;
        }
        refuse(path, status.st_mode);
    }
    // Blocking again, so that a pipe's reads wait for its writer's data rather than end early.
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    FilePointer file(::fdopen(descriptor, "rb"));
    if (!file) {
        ::close(descriptor);
    }
    return file;
}

} // namespace quarvex
