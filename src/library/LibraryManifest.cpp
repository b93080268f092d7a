#include "library/LibraryManifest.h"

#include "common/AtomicFile.h"
#include "library/CreateLibraryFile.h"
#include "library/GridCache.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <sys/stat.h>

namespace quarvex {

namespace {

constexpr std::string_view kManifestHeading = "QUARVEX LIBRARY MANIFEST 1";
constexpr std::string_view kEntriesKey = "entries ";
constexpr std::string_view kLibraryKey = "library ";
constexpr std::string_view kReferencesKey = "references ";
// The last line, "end" and a hash of all the text before it: a manifest damaged anywhere, even
// in a way that still reads (its entry count), is never taken for whole.
constexpr std::string_view kEndKey = "end ";
constexpr std::array<std::string_view, 4> kLibraryFiles{kSlowLibraryFile, kFastLibraryFile,
                                                        kNameListFile, kNameInfoFile};

// The size and modification time of `name`, from one stat (relative to the open folder
// `folder` when it is one, else `name` is the whole path): 30,000 reference files are examined
// at every start, and path look-ups and second calls would double the time.
std::optional<ManifestFile> examine(int folder, const char* name, std::string fileName) {
    struct stat status {};
    if (::fstatat(folder, name, &status, 0) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
    return ManifestFile{std::move(fileName), static_cast<std::uint64_t>(status.st_size),
                        static_cast<std::int64_t>(status.st_mtim.tv_sec) * kNanosecondsPerSecond +
                            status.st_mtim.tv_nsec};
}

// Reads the next line (without its '\n') from `text`; false at the end or on a last line
// without its '\n' (a truncated file).
bool nextLine(std::string_view& text, std::string_view& line) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return true;
}

// A whole number that is the whole of `field`, written as the manifest writes it (no sign
// before a positive number, no leading zero), so that a manifest read is the text written.
template <typename Number> bool parseWhole(std::string_view field, Number& value) {
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    return error == std::errc{} && end == field.data() + field.size() &&
           field == std::to_string(value);
}

// "KEY COUNT": the count, never negative.
bool parseCount(std::string_view line, std::string_view key, int& count) {
    return line.starts_with(key) && parseWhole(line.substr(key.size()), count) && count >= 0;
}

// "SIZE MODIFIED NAME", the name the rest of the line.
std::optional<ManifestFile> parseFileLine(std::string_view line) {
    const std::size_t first = line.find(' ');
    const std::size_t second =
        first == std::string_view::npos ? std::string_view::npos : line.find(' ', first + 1);
    if (second == std::string_view::npos || second + 1 >= line.size()) {
        return std::nullopt;
    }
    ManifestFile file{std::string(line.substr(second + 1)), 0, 0};
    if (!parseWhole(line.substr(0, first), file.size) ||
        !parseWhole(line.substr(first + 1, second - first - 1), file.modified) ||
        file.name.find('\r') != std::string::npos) {
        return std::nullopt;
    }
    return file;
}

bool parseFiles(std::string_view& text, std::string_view key, std::vector<ManifestFile>& files) {
    std::string_view line;
    int count = 0;
    if (!nextLine(text, line) || !parseCount(line, key, count)) {
        return false;
    }
    for (int k = 0; k < count; ++k) {
        std::optional<ManifestFile> file;
        if (!nextLine(text, line) || !(file = parseFileLine(line))) {
            return false;
        }
        files.push_back(std::move(*file));
    }
    return true;
}

void appendFiles(std::string& text, std::string_view key, const std::vector<ManifestFile>& files) {
    text.append(key).append(std::to_string(files.size())).push_back('\n');
    for (const ManifestFile& file : files) {
        text.append(std::to_string(file.size))
            .append(" ")
            .append(std::to_string(file.modified))
            .append(" ")
            .append(file.name)
            .push_back('\n');
    }
}

std::string checksum(std::string_view text) {
    std::uint64_t hash = 14695981039346656037ULL; // FNV-1a
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, 16).ptr;
    return {digits.data(), end};
}

bool isLibraryFileList(const std::vector<ManifestFile>& files) {
    return std::equal(
        files.begin(), files.end(), kLibraryFiles.begin(), kLibraryFiles.end(),
        [](const ManifestFile& file, std::string_view name) { return file.name == name; });
}

bool strictlyAscending(const std::vector<ManifestFile>& files) {
    return std::adjacent_find(files.begin(), files.end(),
                              [](const ManifestFile& a, const ManifestFile& b) {
                                  return a.name >= b.name;
                              }) == files.end();
}

} // namespace

std::filesystem::path libraryManifestPath(const std::filesystem::path& folder) {
    std::filesystem::path path = gridCachePath(folder); // the same place, beside the folder
    path.replace_extension(kManifestExtension);
    return path;
}

std::optional<std::vector<ManifestFile>> listReferenceFiles(const std::filesystem::path& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), ::closedir);
    if (!listing) {
        return std::nullopt;
    }
    std::vector<ManifestFile> files;
    while (const dirent* entry = ::readdir(listing.get())) {
        const std::string_view name = entry->d_name;
        if (name.starts_with(kLibraryFilePrefix)) {
            continue;
        }
        // Folders and what is gone since the listing are no files of the compilation either.
        std::optional<ManifestFile> file =
            examine(::dirfd(listing.get()), entry->d_name, std::string(name));
        if (!file) {
            continue;
        }
        if (name.find_first_of("\r\n") != std::string_view::npos) {
            return std::nullopt;
        }
        files.push_back(std::move(*file));
    }
    std::sort(files.begin(), files.end(),
              [](const ManifestFile& a, const ManifestFile& b) { return a.name < b.name; });
    return files;
}

std::optional<std::vector<ManifestFile>> listLibraryFiles(const std::filesystem::path& folder) {
    std::vector<ManifestFile> files;
    for (std::string_view name : kLibraryFiles) {
        const std::filesystem::path path = folder / name;
        std::optional<ManifestFile> file = examine(AT_FDCWD, path.c_str(), std::string(name));
        if (!file) {
            return std::nullopt;
        }
        files.push_back(std::move(*file));
    }
    return files;
}

std::string manifestText(const LibraryManifest& manifest) {
    std::string text(kManifestHeading);
    text.append("\n").append(kEntriesKey).append(std::to_string(manifest.entries)).append("\n");
    appendFiles(text, kLibraryKey, manifest.libraryFiles);
    appendFiles(text, kReferencesKey, manifest.referenceFiles);
    const std::string hash = checksum(text);
    text.append(kEndKey).append(hash).push_back('\n');
    return text;
}

std::optional<LibraryManifest> parseManifest(std::string_view text) {
    const std::string_view whole = text;
    LibraryManifest manifest;
    std::string_view line;
    if (!nextLine(text, line) || line != kManifestHeading || !nextLine(text, line) ||
        !parseCount(line, kEntriesKey, manifest.entries) ||
        !parseFiles(text, kLibraryKey, manifest.libraryFiles) ||
        !isLibraryFileList(manifest.libraryFiles) ||
        !parseFiles(text, kReferencesKey, manifest.referenceFiles) ||
        !strictlyAscending(manifest.referenceFiles)) {
        return std::nullopt;
    }
    const std::string_view checked = whole.substr(0, whole.size() - text.size());
    if (!nextLine(text, line) || !line.starts_with(kEndKey) ||
        line.substr(kEndKey.size()) != checksum(checked) || !text.empty()) {
        return std::nullopt;
    }
    return manifest;
}

bool writeLibraryManifest(const std::filesystem::path& folder,
                          const std::optional<std::vector<ManifestFile>>& referenceFiles,
                          int entries) {
    const std::filesystem::path path = libraryManifestPath(folder);
    std::optional<std::vector<ManifestFile>> libraryFiles = listLibraryFiles(folder);
    if (referenceFiles && libraryFiles) {
        const std::string text = manifestText({entries, std::move(*libraryFiles), *referenceFiles});
        AtomicFile file(path);
        file.stream().write(text.data(), static_cast<std::streamsize>(text.size()));
        if (file.commit()) {
            return true;
        }
    }
    // An old manifest would still describe the library files of an earlier compilation.
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    return false;
}

std::optional<int> upToDateLibraryEntries(const std::filesystem::path& folder) {
    std::ifstream file(libraryManifestPath(folder), std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::optional<LibraryManifest> manifest = parseManifest(text);
    if (!manifest || listLibraryFiles(folder) != manifest->libraryFiles ||
        listReferenceFiles(folder) != manifest->referenceFiles) {
        return std::nullopt;
    }
    return manifest->entries;
}

} // namespace quarvex
