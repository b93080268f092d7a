#include "library/GridCache.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "library/CreateLibraryFile.h"
#include "library/GridCacheFormat.h"
#include "library/GridCacheWriter.h"
#include "library/LibraryFileReader.h"

#include <bit>
#include <cstring>

namespace quarvex {

namespace {

using gridcache::Header;
using gridcache::valueCount;

// The name line of an entry is read into a buffer this wide (as the fine pass reads it).
constexpr std::size_t kNameLineWidth = 150;
constexpr std::size_t kReadBuffer = std::size_t{256} << 10;
constexpr std::array<std::string_view, 4> kFingerprintedFiles{kSlowLibraryFile, kFastLibraryFile,
                                                              kNameListFile, kNameInfoFile};

std::uint64_t hashOfFile(const std::filesystem::path& path, bool& readable) {
    std::uint64_t hash = 14695981039346656037ULL; // FNV-1a
    const FilePointer file = openReadableFile(path);
    readable = file != nullptr;
    if (!readable) {
        return 0;
    }
    std::array<unsigned char, 1 << 16> chunk;
    for (std::size_t got = 0; (got = std::fread(chunk.data(), 1, chunk.size(), file.get())) > 0;) {
        for (std::size_t i = 0; i < got; ++i) {
            hash = (hash ^ chunk[i]) * 1099511628211ULL;
        }
    }
    return hash;
}

bool readExactly(std::FILE* file, void* data, std::size_t size) {
    return std::fread(data, 1, size, file) == size;
}

} // namespace

namespace gridcache {

CachedEntry describeEntry(std::span<const float> x, std::uint64_t offset) {
    CachedEntry entry;
    entry.offset = offset;
    entry.count = static_cast<std::uint32_t>(x.size());
    entry.first = x.empty() ? 0.0F : x[0];
    entry.step = x.size() > 1 ? x[1] - x[0] : 0.0F;
    entry.regular = 1;
    for (std::uint32_t i = 0; i < x.size(); ++i) {
        if (std::bit_cast<std::uint32_t>(regularGridX(entry.first, entry.step, i)) !=
            std::bit_cast<std::uint32_t>(x[i])) {
            entry.regular = 0;
            break;
        }
    }
    return entry;
}

} // namespace gridcache

std::string fineNameOf(std::string_view nameLine) {
    return std::string(trimmed(nameLine.substr(0, std::min(nameLine.size(), kNameLineWidth))));
}

bool forEachTextEntry(const std::filesystem::path& path, const TextEntryVisitor& visit) {
    LibraryFileReader file(path);
    if (!file.isOpen()) {
        return false;
    }
    std::vector<float> x;
    std::vector<float> y;
    for (bool more = file.skipPastSeparator(); more;) {
        std::string_view nameLine;
        if (!file.next(nameLine, kNameLineWidth)) {
            break;
        }
        const std::string name = fineNameOf(nameLine);
        x.clear();
        y.clear();
        float lx = 0.0F;
        float ly = 0.0F;
        LibraryFileReader::Line line = LibraryFileReader::Line::End;
        while ((line = file.nextPair(lx, ly)) == LibraryFileReader::Line::Pair) {
            x.push_back(lx);
            y.push_back(ly);
        }
        more = line == LibraryFileReader::Line::Separator ||
               (line == LibraryFileReader::Line::Unreadable && file.skipPastSeparator());
        visit(name, x, y);
    }
    return true;
}

std::filesystem::path gridCachePath(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::path normal = std::filesystem::absolute(folder, error).lexically_normal();
    if (!normal.has_filename()) {
        normal = normal.parent_path(); // "a/b/" names the folder b
    }
    return normal.parent_path() / (normal.filename().string() + std::string(kGridCacheExtension));
}

std::optional<LibraryFingerprint> libraryFingerprint(const std::filesystem::path& folder) {
    LibraryFingerprint fingerprint;
    for (std::size_t k = 0; k < kFingerprintedFiles.size(); ++k) {
        const std::filesystem::path path = folder / kFingerprintedFiles[k];
        std::error_code error;
        fingerprint.sizes[k] = std::filesystem::file_size(path, error);
        if (error) {
            return std::nullopt;
        }
        fingerprint.modified[k] =
            std::filesystem::last_write_time(path, error).time_since_epoch().count();
        if (error) {
            return std::nullopt;
        }
    }
    bool readable = false;
    fingerprint.nameListHash = hashOfFile(folder / kNameListFile, readable);
    return readable ? std::optional(fingerprint) : std::nullopt;
}

double FIND_MATCH(const CachedGridEntry& cached, const InterpData& INTERP_DATA, int NINT) {
    const CachedEntry& entry = cached.entry;
    const float* y = cached.values.data() + (entry.regular != 0 ? 0 : entry.count);
    std::uint32_t next = 0;
    const auto readPair = [&](float& lx, float& ly) {
        if (next >= entry.count) {
            return false;
        }
        lx = entry.regular != 0 ? regularGridX(entry.first, entry.step, next) : cached.values[next];
        ly = y[next];
        ++next;
        return true;
    };
    return matchScore(readPair, INTERP_DATA, NINT);
}

bool writeGridCache(const std::filesystem::path& folder) {
    try {
        const std::optional<LibraryFingerprint> before = libraryFingerprint(folder);
        if (!before) {
            return false;
        }
        GridCacheWriter cache(folder);
        for (const CacheGrid grid : {CacheGrid::Coarse, CacheGrid::Fine}) {
            const bool read = forEachTextEntry(
                folder / (grid == CacheGrid::Coarse ? kFastLibraryFile : kSlowLibraryFile),
                [&](std::string_view name, std::span<const float> x, std::span<const float> y) {
                    cache.add(grid, x, y, name);
                });
            if (!read) {
                return false;
            }
        }
        // Files replaced while they were read give a cache of neither library: drop it.
        return libraryFingerprint(folder) == before && cache.commit(*before);
    } catch (const QuarvexError&) {
        return false; // a library file that is a device or a pipe
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::optional<GridCache> GridCache::open(const std::filesystem::path& folder, std::string& whyNot) {
    const std::filesystem::path path = gridCachePath(folder);
    GridCache cache;
    try {
        cache.file_ = openReadableFile(path);
    } catch (const QuarvexError&) {
        cache.file_.reset();
    }
    if (!cache.file_) {
        whyNot = "the library has no grid cache";
        return std::nullopt;
    }
    std::setvbuf(cache.file_.get(), nullptr, _IOFBF, kReadBuffer);
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(path, error);
    Header header;
    if (error || !readExactly(cache.file_.get(), &header, sizeof header) ||
        header.magic != gridcache::kMagic) {
        whyNot = "the grid cache is not a grid cache file";
        return std::nullopt;
    }
    if (header.version != kGridCacheVersion || header.byteOrder != gridcache::kByteOrderMark) {
        whyNot = "the grid cache is of another format version";
        return std::nullopt;
    }
    if (header.fileSize != size) {
        whyNot = "the grid cache is truncated";
        return std::nullopt;
    }
    if (libraryFingerprint(folder) != header.fingerprint) {
        whyNot = "the library files changed after the grid cache was made";
        return std::nullopt;
    }
    whyNot = "the grid cache is damaged";
    // Values lie one entry after the other, first the coarse grid then the fine one, before the
    // tables; the names follow the tables up to the end.
    std::uint64_t expected = sizeof header;
    if (header.tableOffsets[0] < expected) {
        return std::nullopt;
    }
    for (std::size_t g = 0; g < 2; ++g) {
        const std::uint64_t entries = header.entryCounts[g];
        if (header.tableOffsets[g] > size ||
            entries > (size - header.tableOffsets[g]) / sizeof(CachedEntry)) {
            return std::nullopt;
        }
        std::vector<CachedEntry>& table = cache.tables_[g];
        table.resize(entries);
        if (std::fseek(cache.file_.get(), static_cast<long>(header.tableOffsets[g]), SEEK_SET) !=
                0 ||
            !readExactly(cache.file_.get(), table.data(), entries * sizeof(CachedEntry))) {
            return std::nullopt;
        }
        for (const CachedEntry& entry : table) {
            if (entry.offset != expected || entry.regular > 1 ||
                valueCount(entry) > (header.tableOffsets[0] - expected) / sizeof(float)) {
                return std::nullopt;
            }
            expected += valueCount(entry) * sizeof(float);
        }
    }
    if (header.tableOffsets[0] != expected ||
        header.tableOffsets[1] != expected + header.entryCounts[0] * sizeof(CachedEntry) ||
        header.namesOffset !=
            header.tableOffsets[1] + header.entryCounts[1] * sizeof(CachedEntry)) {
        return std::nullopt;
    }
    std::string names(size - header.namesOffset, '\0');
    if (std::fseek(cache.file_.get(), static_cast<long>(header.namesOffset), SEEK_SET) != 0 ||
        !readExactly(cache.file_.get(), names.data(), names.size())) {
        return std::nullopt;
    }
    // The names take the buffer less their 4-byte lengths: room for exactly that, no growth.
    const std::uint64_t lengthBytes = header.entryCounts[1] * sizeof(std::uint32_t);
    if (lengthBytes > names.size()) {
        return std::nullopt;
    }
    cache.fineNames_.reserve(header.entryCounts[1], names.size() - lengthBytes);
    std::size_t at = 0;
    for (std::uint64_t k = 0; k < header.entryCounts[1]; ++k) {
        std::uint32_t length = 0;
        if (names.size() - at < sizeof length) {
            return std::nullopt;
        }
        std::memcpy(&length, names.data() + at, sizeof length);
        at += sizeof length;
        if (names.size() - at < length) {
            return std::nullopt;
        }
        cache.fineNames_.push_back(std::string_view(names).substr(at, length));
        at += length;
    }
    if (at != names.size()) {
        return std::nullopt;
    }
    cache.position_ = size; // where the names left the file
    cache.valuesEnd_ = header.tableOffsets[0];
    whyNot.clear();
    return cache;
}

std::optional<CachedGridEntry> GridCache::read(CacheGrid grid, std::size_t k,
                                               std::vector<float>& values) {
    const CachedEntry& entry = tables_[index(grid)][k];
    if (entry.offset != position_ &&
        std::fseek(file_.get(), static_cast<long>(entry.offset), SEEK_SET) != 0) {
        return std::nullopt;
    }
    values.resize(valueCount(entry));
    const std::size_t bytes = values.size() * sizeof(float);
    if (!readExactly(file_.get(), values.data(), bytes)) {
        position_ = ~std::uint64_t{0};
        return std::nullopt;
    }
    position_ = entry.offset + bytes;
    return CachedGridEntry{entry, values};
}

std::uint64_t GridCache::valuesBegin() const {
    return sizeof(Header);
}

bool GridCache::readAllValues(std::vector<float>& values) {
    values.resize((valuesEnd_ - valuesBegin()) / sizeof(float));
    position_ = ~std::uint64_t{0};
    return std::fseek(file_.get(), static_cast<long>(valuesBegin()), SEEK_SET) == 0 &&
           readExactly(file_.get(), values.data(), values.size() * sizeof(float));
}

} // namespace quarvex
