#include "library/RobustGridCache.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "library/GridCache.h"
#include "library/GridCacheFormat.h"

#include <array>
#include <cstddef>
#include <type_traits>

namespace quarvex {

namespace {

constexpr std::array<char, 8> kMagic{'Q', 'V', 'X', 'R', 'O', 'B', 'S', '\n'};

struct Header {
    std::array<char, 8> magic{};
    std::uint32_t version = 0;
    std::uint32_t byteOrder = 0;
    std::uint64_t fileSize = 0;
    LibraryFingerprint library;
    std::uint64_t robustSize = 0;
    std::int64_t robustModified = 0;
    std::uint64_t blockCount = 0;
    std::uint64_t tableOffset = 0;
};
static_assert(std::is_trivially_copyable_v<Header> && sizeof(Header) == 128);
static_assert(offsetof(Header, library) == kRobustCacheFingerprintOffset &&
              offsetof(Header, blockCount) == kRobustCacheFingerprintOffset + 88);
static_assert(std::is_trivially_copyable_v<RobustCache::Block> && sizeof(RobustCache::Block) == 16);

// The library's fingerprint and the robust file's size and modification time.
std::optional<Header> fingerprintOf(const std::filesystem::path& folder) {
    const std::optional<LibraryFingerprint> library = libraryFingerprint(folder);
    std::error_code error;
    const std::filesystem::path robust = folder / kRobustLibraryFile;
    Header header;
    header.robustSize = std::filesystem::file_size(robust, error);
    if (!library || error) {
        return std::nullopt;
    }
    header.robustModified =
        std::filesystem::last_write_time(robust, error).time_since_epoch().count();
    if (error) {
        return std::nullopt;
    }
    header.library = *library;
    return header;
}

bool sameFiles(const Header& a, const Header& b) {
    return a.library == b.library && a.robustSize == b.robustSize &&
           a.robustModified == b.robustModified;
}

void writeBytes(std::ostream& out, const void* data, std::size_t size) {
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

bool readExactly(std::FILE* file, void* data, std::size_t size) {
    return std::fread(data, 1, size, file) == size;
}

} // namespace

std::filesystem::path robustCachePath(const std::filesystem::path& folder) {
    std::filesystem::path path = gridCachePath(folder);
    return path.replace_extension(kRobustCacheExtension);
}

std::optional<std::string> robustCacheFingerprint(const std::filesystem::path& folder) {
    const std::optional<Header> header = fingerprintOf(folder);
    if (!header) {
        return std::nullopt;
    }
    const auto* bytes = reinterpret_cast<const char*>(&*header);
    return std::string(bytes + kRobustCacheFingerprintOffset, bytes + offsetof(Header, blockCount));
}

bool writeRobustCache(const std::filesystem::path& folder) {
    try {
        std::optional<Header> header = fingerprintOf(folder);
        if (!header) {
            return false;
        }
        AtomicFile cache(robustCachePath(folder));
        if (!cache.isOpen()) {
            return false;
        }
        std::ostream& out = cache.stream();
        writeBytes(out, &*header, sizeof *header); // completed at the end
        std::uint64_t position = sizeof *header;
        std::vector<RobustCache::Block> table;
        forEachLibraryBlock(folder / kRobustLibraryFile, [&](RobustSpectrum& block, double) {
            table.push_back(
                {position, static_cast<std::uint32_t>(block.values.size()), block.first});
            writeBytes(out, block.values.data(), block.values.size() * sizeof(float));
            position += block.values.size() * sizeof(float);
        });
        header->magic = kMagic;
        header->version = kRobustCacheVersion;
        header->byteOrder = gridcache::kByteOrderMark;
        header->blockCount = table.size();
        header->tableOffset = position;
        writeBytes(out, table.data(), table.size() * sizeof(RobustCache::Block));
        header->fileSize = position + table.size() * sizeof(RobustCache::Block);
        out.seekp(0);
        writeBytes(out, &*header, sizeof *header);
        const std::optional<Header> after = fingerprintOf(folder);
        return after && sameFiles(*after, *header) && cache.commit();
    } catch (const QuarvexError&) {
        return false; // a library file missing, a device or a pipe
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::optional<RobustCache> RobustCache::open(const std::filesystem::path& folder,
                                             std::string& whyNot) {
    const std::filesystem::path path = robustCachePath(folder);
    RobustCache cache;
    try {
        cache.file_ = openReadableFile(path);
    } catch (const QuarvexError&) {
        cache.file_.reset();
    }
    Header header;
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(path, error);
    if (!cache.file_ || error || !readExactly(cache.file_.get(), &header, sizeof header) ||
        header.magic != kMagic || header.version != kRobustCacheVersion ||
        header.byteOrder != gridcache::kByteOrderMark || header.fileSize != size) {
        whyNot = "the library has no robust cache of this version, or it is damaged";
        return std::nullopt;
    }
    const std::optional<Header> files = fingerprintOf(folder);
    if (!files || !sameFiles(*files, header)) {
        whyNot = "the library files changed after the robust cache was made";
        return std::nullopt;
    }
    whyNot = "the robust cache is damaged";
    if (header.tableOffset < sizeof header || header.tableOffset > size ||
        header.blockCount != (size - header.tableOffset) / sizeof(Block) ||
        (size - header.tableOffset) % sizeof(Block) != 0) {
        return std::nullopt;
    }
    cache.table_.resize(header.blockCount);
    if (std::fseek(cache.file_.get(), static_cast<long>(header.tableOffset), SEEK_SET) != 0 ||
        !readExactly(cache.file_.get(), cache.table_.data(), size - header.tableOffset)) {
        return std::nullopt;
    }
    // The values lie block after block between the header and the table.
    std::uint64_t expected = sizeof header;
    for (const Block& block : cache.table_) {
        if (block.offset != expected ||
            block.count > (header.tableOffset - expected) / sizeof(float)) {
            return std::nullopt;
        }
        expected += std::uint64_t{block.count} * sizeof(float);
    }
    if (expected != header.tableOffset ||
        std::fseek(cache.file_.get(), sizeof header, SEEK_SET) != 0) {
        return std::nullopt;
    }
    whyNot.clear();
    return cache;
}

bool RobustCache::forEachBlock(const std::function<void(RobustSpectrum&, double)>& use) {
    RobustSpectrum block;
    for (std::size_t k = 0; k < table_.size(); ++k) {
        block.first = table_[k].first;
        block.values.resize(table_[k].count);
        if (!readExactly(file_.get(), block.values.data(), block.values.size() * sizeof(float))) {
            return false;
        }
        use(block, static_cast<double>(k + 1) / static_cast<double>(table_.size()));
    }
    return true;
}

} // namespace quarvex
