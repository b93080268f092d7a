// The grids of the whole library held once in memory, for work that scores every entry many
// times over (the consistency exam): 10,000 entries take about 80 MB.
#pragma once

#include "library/GridCache.h"
#include "library/TextColumn.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Both grids of every entry of a compiled library, as the grid cache lays them out.
class LibraryGrids {
public:
    /// The grids of the library in `folder`: from its grid cache when it was made for the library
    /// files beside it, else from the text files (the same scores either way). Throws
    /// "Library File Needs To Be Compiled" when a library text file is missing.
    static LibraryGrids load(const std::filesystem::path& folder);

    /// Entries of a grid (those of its ".rsf" file, in file order).
    std::size_t count(CacheGrid grid) const { return tables_[index(grid)].size(); }
    /// Trimmed name line of entry `k` of the fine grid, as the fine pass compares it.
    std::string_view fineName(std::size_t k) const { return fineNames_.view(k); }
    /// Entry `k` of `grid`, valid as long as the grids are.
    CachedGridEntry entry(CacheGrid grid, std::size_t k) const;
    /// True when the grids were read from the grid cache.
    bool fromCache() const { return fromCache_; }

private:
    static std::size_t index(CacheGrid grid) { return static_cast<std::size_t>(grid); }
    void add(CacheGrid grid, std::span<const float> x, std::span<const float> y,
             std::string_view name);

    std::array<std::vector<CachedEntry>, 2> tables_;
    TextColumn fineNames_;
    std::vector<float> values_;
    std::uint64_t valuesBegin_ = 0; // byte offset of values_[0] in the cache's layout
    bool fromCache_ = false;
};

} // namespace quarvex
