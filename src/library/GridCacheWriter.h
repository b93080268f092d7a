// Writing the grid cache entry by entry: from the library text files, or straight from the grids
// of a compilation, with the same bytes either way.
#pragma once

#include "common/AtomicFile.h"
#include "common/ReadableFile.h"
#include "library/GridCache.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// A new grid cache of a library folder. The coarse values go straight into the cache (under a
/// temporary name), the fine ones into an anonymous temporary file that commit() appends: the
/// cache keeps all coarse values in one run, which the coarse pass reads through, and the
/// compilation holds no grid in memory.
class GridCacheWriter {
public:
    explicit GridCacheWriter(const std::filesystem::path& folder);

    /// False when the temporary files could not be created.
    bool isOpen() const { return cache_.isOpen() && fine_ != nullptr; }

    /// Appends the next entry of `grid`: its positions `x` and intensities `y` as a search reads
    /// them from the text file; `fineName` is a fine entry's name as the fine pass compares it
    /// (see fineNameOf).
    void add(CacheGrid grid, std::span<const float> x, std::span<const float> y,
             std::string_view fineName = {});

    /// Completes the cache for the library files of `fingerprint` and puts it in place; false,
    /// with no cache written, when a write failed.
    bool commit(const LibraryFingerprint& fingerprint);

private:
    AtomicFile cache_;
    FilePointer fine_;
    std::array<std::vector<CachedEntry>, 2> tables_;
    std::array<std::uint64_t, 2> valueBytes_{}; // of each grid so far
    std::vector<std::string> fineNames_;
    bool failed_ = false;
};

} // namespace quarvex
