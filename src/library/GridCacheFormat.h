// The layout of the grid cache file, shared by its reader and its writer: a header, the values
// of every coarse entry then of every fine entry, the two tables of entries, the fine names.
#pragma once

#include "library/GridCache.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace quarvex::gridcache {

inline constexpr std::array<char, 8> kMagic{'Q', 'V', 'X', 'G', 'R', 'I', 'D', '\n'};
// Written as is: a cache of the other byte order reads this reversed and is refused.
inline constexpr std::uint32_t kByteOrderMark = 0x01020304U;

struct Header {
    std::array<char, 8> magic{};
    std::uint32_t version = 0;
    std::uint32_t byteOrder = 0;
    std::uint64_t fileSize = 0;
    LibraryFingerprint fingerprint;
    std::array<std::uint64_t, 2> entryCounts{};
    std::array<std::uint64_t, 2> tableOffsets{};
    std::uint64_t namesOffset = 0;
};
static_assert(std::is_trivially_copyable_v<Header> && sizeof(Header) == 136);
static_assert(std::is_trivially_copyable_v<CachedEntry> && sizeof(CachedEntry) == 24);
static_assert(offsetof(Header, fingerprint) == kGridCacheFingerprintOffset);

/// Floats an entry takes in the file: its intensities, and its positions when not regular.
inline std::size_t valueCount(const CachedEntry& entry) {
    return entry.regular != 0 ? entry.count : std::size_t{2} * entry.count;
}

/// The table entry of an entry with positions `x` whose values begin at byte `offset`: its
/// positions as a regular run when they are one bit for bit. The values to store are then the
/// positions (unless regular), followed by the intensities.
CachedEntry describeEntry(std::span<const float> x, std::uint64_t offset);

} // namespace quarvex::gridcache
