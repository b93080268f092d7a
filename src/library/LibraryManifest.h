// The manifest of a compiled library: the names, sizes and modification times of the reference
// files a compilation read and of the four library files it wrote, so that start-up can tell an
// unchanged library folder from a changed one without compiling it again.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Extension of a manifest file; the manifest of a library folder lies beside the folder.
inline constexpr std::string_view kManifestExtension = ".quarvex-manifest";

/// The manifest of the library folder `folder`: "<parent>/<folder name>.quarvex-manifest",
/// outside the folder, whose every file the compilation lists.
std::filesystem::path libraryManifestPath(const std::filesystem::path& folder);

/// One file as the manifest records it.
struct ManifestFile {
    std::string name;
    std::uint64_t size = 0;
    std::int64_t modified = 0; ///< modification time, in the file clock's ticks (ns on Linux)
    bool operator==(const ManifestFile&) const = default;
};

/// What a compilation read and wrote.
struct LibraryManifest {
    int entries = 0;                          ///< entries of the Slow, Fast and name-info files
    std::vector<ManifestFile> libraryFiles;   ///< the four ".rsf" files, Slow, Fast, list, info
    std::vector<ManifestFile> referenceFiles; ///< every file the compilation lists, by name
    bool operator==(const LibraryManifest&) const = default;
};

/// The files of `folder` the compilation lists (regular files whose names do not begin with
/// "RamanSearch"), sorted by name in byte order. Empty when the folder cannot be listed, a file
/// cannot be examined, or a name holds a line break (such a folder gets no manifest: it is
/// compiled at every start).
std::optional<std::vector<ManifestFile>> listReferenceFiles(const std::filesystem::path& folder);

/// The four library files of `folder` as they are now; empty when one of them is missing.
std::optional<std::vector<ManifestFile>> listLibraryFiles(const std::filesystem::path& folder);

/// The manifest as its file holds it.
std::string manifestText(const LibraryManifest& manifest);

/// Reads a manifest's text strictly: any line that is not exactly where and what the format
/// says, counts that do not match, names out of order, or an end line whose hash is not that of
/// the text before it give nothing.
std::optional<LibraryManifest> parseManifest(std::string_view text);

/// After a successful compilation of `folder` that wrote `entries` entries from
/// `referenceFiles` (listed before the files were read, so that a file changed during the pass
/// shows as changed): writes the manifest atomically, with the library files as they are now.
/// Without a listing, or when it cannot be written, the old manifest is removed instead (the
/// next start compiles). False when no manifest was written.
bool writeLibraryManifest(const std::filesystem::path& folder,
                          const std::optional<std::vector<ManifestFile>>& referenceFiles,
                          int entries);

/// The number of entries of the library in `folder` when its manifest is whole and the folder
/// holds exactly the reference files and the four library files it records, each with its
/// size and modification time; otherwise (a changed folder, a missing, truncated or damaged
/// manifest, a missing library file) nothing.
std::optional<int> upToDateLibraryEntries(const std::filesystem::path& folder);

} // namespace quarvex
