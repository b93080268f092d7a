// Fuzz target: the robust cache of the library, read by RobustCache::open and every block scored
// against a small unknown. The input is the cache file; its fingerprint field is set to that of
// the small library and robust files written beside it, so that the mutations reach the table
// and values behind it. Every score lies within 0..100 or is NaN.
#include "FuzzSupport.h"

#include "library/RobustGridCache.h"
#include "library/RobustSearch.h"

#include <cmath>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto folder = fuzz::freshFolder() / "lib";
    std::filesystem::create_directories(folder);
    fuzz::writeOneEntryLibrary(folder);
    fuzz::writeFile(folder / kRobustLibraryFile, "==\na\n100 1\n101 2\n");
    std::string cache(fuzz::asText(data, size));
    const std::optional<std::string> fingerprint = robustCacheFingerprint(folder);
    if (fingerprint && cache.size() >= kRobustCacheFingerprintOffset + fingerprint->size()) {
        cache.replace(kRobustCacheFingerprintOffset, fingerprint->size(), *fingerprint);
    }
    fuzz::writeFile(robustCachePath(folder), cache);

    std::string whyNot;
    std::optional<RobustCache> robust = RobustCache::open(folder, whyNot);
    if (!robust) {
        return 0;
    }
    RobustSpectrum unknown{"u", 100, std::vector<float>(40, 0.0F)};
    unknown.values[5] = 1.0F;
    robust->forEachBlock([&](RobustSpectrum& block, double fraction) {
        const RobustMatch match = robustMatch(unknown, block);
        if (!(std::isnan(match.score) || (match.score >= 0.0 && match.score <= 100.01)) ||
            fraction < 0.0 || fraction > 1.0) {
            fuzz::fail("a robust score or fraction out of range");
        }
    });
    return 0;
}
