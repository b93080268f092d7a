// Opening a file for reading without ever blocking on a device, a named pipe or a socket.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace quarvex {

/// Title of the message that refuses a file which is not a regular file.
inline constexpr std::string_view kNotRegularFileTitle = "File Error";

/// A line longer than this without an end of line makes a file "not a text file".
inline constexpr std::size_t kMaxTextLineBytes = std::size_t{1} << 20;

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

/// Whether a reader takes a named pipe (also "<(command)"). Only a reader that reads its file
/// once, from start to end, can: a second open of a pipe finds it empty.
enum class PipeReading { Refused, ReadOnce };

/// Opens `path` for binary reading. Null when it is missing, a folder or not readable; throws
/// QuarvexError when it is a device, a socket or (unless `pipes` is ReadOnce) a named pipe, which
/// could be endless or make the reader wait for ever. A pipe taken is opened without waiting for
/// a writer: without one it reads as empty; with one, reads wait for its data until it closes.
FilePointer openReadableFile(const std::filesystem::path& path,
                             PipeReading pipes = PipeReading::Refused);

} // namespace quarvex
