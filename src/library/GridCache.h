// The grid cache of the compiled library: the values of every entry of the Fast and Slow files
// as single-precision binary with a table of offsets, so that a search reads no text. It is
// derived from the ".rsf" files and carries their fingerprint; a cache that does not match the
// files beside it is never used.
#pragma once

#include "common/ReadableFile.h"
#include "library/MatchScore.h"
#include "library/TextColumn.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Extension of a grid cache file; the cache of a library folder lies beside the folder.
inline constexpr std::string_view kGridCacheExtension = ".quarvex-grids";

/// The grid cache of the library folder `folder`: "<parent>/<folder name>.quarvex-grids" (outside
/// the folder, whose every file the compilation lists).
std::filesystem::path gridCachePath(const std::filesystem::path& folder);
/// Format version of the cache; a cache of any other version is not read.
inline constexpr std::uint32_t kGridCacheVersion = 1;

/// Sizes and modification times of the four library files and a hash of the name list.
struct LibraryFingerprint {
    std::array<std::uint64_t, 4> sizes{};
    std::array<std::int64_t, 4> modified{};
    std::uint64_t nameListHash = 0;
    bool operator==(const LibraryFingerprint&) const = default;
};

/// The fingerprint of the library files in `folder`; empty when one of them is missing.
std::optional<LibraryFingerprint> libraryFingerprint(const std::filesystem::path& folder);

/// Where the fingerprint lies in the cache file (tools that make a cache for given files).
inline constexpr std::size_t kGridCacheFingerprintOffset = 24;

/// The grids of the cache: the Fast file's (step 2.0) and the Slow file's (step 1.0).
enum class CacheGrid { Coarse = 0, Fine = 1 };

/// Grid position `index` of an entry stored as a regular run from `first` by `step`: the cache
/// keeps such an entry's positions only when this gives every one of them bit for bit.
inline float regularGridX(float first, float step, std::uint32_t index) {
    return first + static_cast<float>(index) * step;
}

/// Where one entry's values lie in the cache and how its positions are stored.
struct CachedEntry {
    std::uint64_t offset = 0;  ///< first byte of the values
    std::uint32_t count = 0;   ///< data pairs of the entry
    std::uint32_t regular = 0; ///< 1: positions from first and step; 0: positions stored
    float first = 0.0F;
    float step = 0.0F;
};

/// One entry's data pairs as the cache holds them.
struct CachedGridEntry {
    const CachedEntry& entry;
    std::span<const float> values; ///< intensities, after the positions when not regular
};

/// FIND_MATCH over a cached entry: the same score as over the entry's lines of the text file.
double FIND_MATCH(const CachedGridEntry& cached, const InterpData& INTERP_DATA, int NINT);

/// An entry's name as the fine pass compares it: its name line cut to the width of the line
/// buffer it is read into, trimmed.
std::string fineNameOf(std::string_view nameLine);

/// Receives an entry of a library text file: its name (fineNameOf), positions and intensities.
using TextEntryVisitor =
    std::function<void(std::string_view name, std::span<const float> x, std::span<const float> y)>;

/// Passes the entries of the library text file `path` in file order as the search passes read
/// them: after each "==" line the name line, then the data pairs up to the first line that is
/// not one; the next entry begins after the next "==" line. False when the file cannot be
/// opened; throws QuarvexError for a device or a pipe.
bool forEachTextEntry(const std::filesystem::path& path, const TextEntryVisitor& visit);

/// Writes the cache of the library files in `folder` (atomically). False, with no cache
/// written, when the files cannot be read, the cache cannot be written (a read-only folder), or
/// the files changed while they were read.
bool writeGridCache(const std::filesystem::path& folder);

/// The opened grid cache of a library folder.
class GridCache {
public:
    /// The cache of `folder` when it exists, is whole, of this version and made for the library
    /// files now in `folder`; otherwise empty, with `whyNot` saying why.
    static std::optional<GridCache> open(const std::filesystem::path& folder, std::string& whyNot);

    /// Entries of a grid (those of its ".rsf" file, in file order).
    std::size_t count(CacheGrid grid) const { return tables_[index(grid)].size(); }
    /// Trimmed name line of entry `k` of the fine grid, as the fine pass compares it.
    std::string_view fineName(std::size_t k) const { return fineNames_.view(k); }

    /// Reads entry `k` of `grid` into `values`; reading entries in order streams the file.
    /// Empty when the file cannot be read any more (changed under the search).
    std::optional<CachedGridEntry> read(CacheGrid grid, std::size_t k, std::vector<float>& values);

    /// The table of entries of a grid.
    const std::vector<CachedEntry>& table(CacheGrid grid) const { return tables_[index(grid)]; }
    /// Reads the values of every entry of both grids, in file order, into `values` (the float at
    /// byte offset o of the file is values[(o - valuesBegin()) / 4]); false when they cannot be
    /// read.
    bool readAllValues(std::vector<float>& values);
    std::uint64_t valuesBegin() const;

private:
    static std::size_t index(CacheGrid grid) { return static_cast<std::size_t>(grid); }

    FilePointer file_;
    std::uint64_t position_ = 0;
    std::array<std::vector<CachedEntry>, 2> tables_;
    TextColumn fineNames_;
    std::uint64_t valuesEnd_ = 0;
};

} // namespace quarvex
