// The robust view of the library in binary: the values of every block of the robust file as
// single precision with a table of offsets, so that a robust search reads no text. It lies
// beside the grid cache, carries the fingerprint of the library files and of the robust file it
// was made from, and is never used for other files.
#pragma once

#include "common/ReadableFile.h"
#include "library/RobustLibrary.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Extension of the robust cache of a library folder: "<parent>/<folder name>.quarvex-robust".
inline constexpr std::string_view kRobustCacheExtension = ".quarvex-robust";
/// Format version of the robust cache; a cache of any other version is not read.
inline constexpr std::uint32_t kRobustCacheVersion = 1;

std::filesystem::path robustCachePath(const std::filesystem::path& folder);

/// Where the fingerprint of the library files and the robust file lies in the robust cache, and
/// its bytes for the files now in `folder` (empty when one is missing): for tools that make a
/// cache for given files.
inline constexpr std::size_t kRobustCacheFingerprintOffset = 24;
std::optional<std::string> robustCacheFingerprint(const std::filesystem::path& folder);

/// Writes the robust cache of the library in `folder` from its robust file, block by block as
/// forEachLibraryBlock reads them (atomically). False, with no cache written, when the files
/// cannot be read or the cache cannot be written, or a file changed while it was read.
bool writeRobustCache(const std::filesystem::path& folder);

/// The opened robust cache of a library folder.
class RobustCache {
public:
    /// The robust cache of `folder` when it is whole, of this version and made for the library
    /// files and robust file now in `folder`; otherwise empty, with `whyNot` saying why.
    static std::optional<RobustCache> open(const std::filesystem::path& folder,
                                           std::string& whyNot);

    /// Passes the blocks in file order (first grid position and values; no name) with the
    /// fraction passed, as forEachLibraryBlock does; false when the file could not be read to
    /// its end (the blocks passed so far stand).
    bool forEachBlock(const std::function<void(RobustSpectrum&, double)>& use);

    struct Block {
        std::uint64_t offset = 0;
        std::uint32_t count = 0;
        std::int32_t first = 0;
    };

private:
    FilePointer file_;
    std::vector<Block> table_;
};

} // namespace quarvex
