// What the fuzz targets share: inputs become files in a folder of the process (every reader
// takes a path), and one input can hold several files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace quarvex::fuzz {

/// A folder of this process below the system's temporary folder, emptied at every call.
std::filesystem::path freshFolder();

/// Writes `content` to `path` (replacing it) and returns the path.
std::filesystem::path writeFile(const std::filesystem::path& path, std::string_view content);

/// Writes the four library files of a one-entry library (grids at 1 and 2 points) into `folder`.
void writeOneEntryLibrary(const std::filesystem::path& folder);

/// The input as text.
inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Read buffer of the readers that take one: small, so that inputs cross buffer boundaries and
/// the sanitizers need not prepare a 1 MiB buffer for every input.
inline constexpr std::size_t kReadBufferBytes = 64;

/// Line that separates the files of one input.
inline constexpr std::string_view kPartSeparator = "\n%%FILE%%\n";

/// The input cut at each kPartSeparator into `count` parts (missing ones empty).
std::vector<std::string_view> splitParts(std::string_view input, std::size_t count);

/// Every regular file below `folder`, with its path relative to it and its content, sorted.
std::vector<std::pair<std::string, std::string>> folderContent(const std::filesystem::path& folder);

/// Stops the run so that the fuzzer records the input: a property that must hold did not.
[[noreturn]] void fail(std::string_view what);

} // namespace quarvex::fuzz
