#include "library/LibraryGrids.h"

#include "common/QuarvexError.h"
#include "library/CreateLibraryFile.h"
#include "library/DotProdSearch.h"
#include "library/GridCacheFormat.h"

namespace quarvex {

LibraryGrids LibraryGrids::load(const std::filesystem::path& folder) {
    LibraryGrids grids;
    std::string whyNot;
    if (std::optional<GridCache> cache = GridCache::open(folder, whyNot);
        cache && cache->readAllValues(grids.values_)) {
        for (const CacheGrid grid : {CacheGrid::Coarse, CacheGrid::Fine}) {
            grids.tables_[index(grid)] = cache->table(grid);
        }
        for (std::size_t k = 0; k < cache->count(CacheGrid::Fine); ++k) {
            grids.fineNames_.push_back(cache->fineName(k));
        }
        grids.valuesBegin_ = cache->valuesBegin();
        grids.fromCache_ = true;
        return grids;
    }
    grids.values_.clear();
    grids.valuesBegin_ = sizeof(gridcache::Header);
    // The Fast file first: the values then lie as in the cache.
    for (const CacheGrid grid : {CacheGrid::Coarse, CacheGrid::Fine}) {
        const bool read = forEachTextEntry(
            folder / (grid == CacheGrid::Coarse ? kFastLibraryFile : kSlowLibraryFile),
            [&](std::string_view name, std::span<const float> x, std::span<const float> y) {
                grids.add(grid, x, y, name);
            });
        if (!read) {
            throw QuarvexError(std::string(kNeedsCompilingText), std::string(kLibraryErrorTitle));
        }
    }
    return grids;
}

void LibraryGrids::add(CacheGrid grid, std::span<const float> x, std::span<const float> y,
                       std::string_view name) {
    const CachedEntry entry =
        gridcache::describeEntry(x, valuesBegin_ + values_.size() * sizeof(float));
    if (entry.regular == 0) {
        values_.insert(values_.end(), x.begin(), x.end());
    }
    values_.insert(values_.end(), y.begin(), y.end());
    tables_[index(grid)].push_back(entry);
    if (grid == CacheGrid::Fine) {
        fineNames_.push_back(name);
    }
}

CachedGridEntry LibraryGrids::entry(CacheGrid grid, std::size_t k) const {
    const CachedEntry& entry = tables_[index(grid)][k];
    const std::size_t first = (entry.offset - valuesBegin_) / sizeof(float);
    return {entry, std::span<const float>(values_).subspan(first, gridcache::valueCount(entry))};
}

} // namespace quarvex
