// Fuzz target: the grid cache of the library, read by GridCache::open and every entry scored.
// The input is the cache file; its fingerprint field is set to that of the small library files
// written beside it, so that the mutations reach the tables and values behind it. Every score is
// NaN or within +-100 (Cauchy-Schwarz over the shared points, up to single-precision rounding).
#include "FuzzSupport.h"

#include "library/GridCache.h"

#include <cmath>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder() / "lib";
    std::filesystem::create_directories(folder);
    fuzz::writeOneEntryLibrary(folder);
    std::string cache(fuzz::asText(data, size));
    const auto fingerprint = libraryFingerprint(folder);
    if (fingerprint && cache.size() >= kGridCacheFingerprintOffset + sizeof *fingerprint) {
        std::memcpy(cache.data() + kGridCacheFingerprintOffset, &*fingerprint, sizeof *fingerprint);
    }
    fuzz::writeFile(gridCachePath(folder), cache);

    std::string whyNot;
    std::optional<GridCache> grids = GridCache::open(folder, whyNot);
    if (!grids) {
        return 0;
    }
    InterpData unknown;
    for (int i = 0; i < 64; ++i) {
        unknown.x.push_back(100.0F + static_cast<float>(i));
        unknown.y.push_back(i == 3 ? 10.0F : 0.0F); // norm 10
    }
    std::vector<float> values;
    for (const CacheGrid grid : {CacheGrid::Coarse, CacheGrid::Fine}) {
        for (std::size_t k = 0; k < grids->count(grid); ++k) {
            const auto entry = grids->read(grid, k, values);
            if (!entry) {
                fuzz::fail("an entry of a validated cache could not be read");
            }
            const double score = FIND_MATCH(*entry, unknown, unknown.capacity());
            if (!std::isnan(score) && std::fabs(score) > 100.01) {
                fuzz::fail("a score beyond 100");
            }
        }
    }
    for (std::size_t k = 0; k < grids->count(CacheGrid::Fine); ++k) {
        static_cast<void>(grids->fineName(k).size());
    }
    return 0;
}
