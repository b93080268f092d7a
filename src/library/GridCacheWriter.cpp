#include "library/GridCacheWriter.h"

#include "library/GridCacheFormat.h"

#include <cstdio>
#include <memory>

namespace quarvex {

namespace {

constexpr std::size_t kCopyChunk = std::size_t{1} << 20;

void writeBytes(std::ostream& out, const void* data, std::size_t size) {
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

} // namespace

GridCacheWriter::GridCacheWriter(const std::filesystem::path& folder)
    : cache_(gridCachePath(folder)), fine_(std::tmpfile()) {
    const gridcache::Header placeholder; // filled in by commit()
    writeBytes(cache_.stream(), &placeholder, sizeof placeholder);
}

void GridCacheWriter::add(CacheGrid grid, std::span<const float> x, std::span<const float> y,
                          std::string_view fineName) {
    const auto g = static_cast<std::size_t>(grid);
    // Fine offsets are counted from the end of the coarse run until commit() knows where it is.
    const std::uint64_t start = grid == CacheGrid::Coarse ? sizeof(gridcache::Header) : 0;
    const CachedEntry entry = gridcache::describeEntry(x, start + valueBytes_[g]);
    const auto write = [this, grid](const void* data, std::size_t bytes) {
        if (bytes == 0) {
            return; // an empty grid's data() may be null, which fwrite must not get
        }
        if (grid == CacheGrid::Coarse) {
            writeBytes(cache_.stream(), data, bytes);
        } else if (fine_ && std::fwrite(data, 1, bytes, fine_.get()) != bytes) {
            failed_ = true;
        }
    };
    if (entry.regular == 0) {
        write(x.data(), x.size_bytes());
    }
    write(y.data(), y.size_bytes());
    valueBytes_[g] += gridcache::valueCount(entry) * sizeof(float);
    tables_[g].push_back(entry);
    if (grid == CacheGrid::Fine) {
        fineNames_.emplace_back(fineName);
    }
}

bool GridCacheWriter::commit(const LibraryFingerprint& fingerprint) {
    if (!isOpen() || failed_ || std::fflush(fine_.get()) != 0) {
        return false;
    }
    std::ostream& out = cache_.stream();
    const std::uint64_t fineStart = sizeof(gridcache::Header) + valueBytes_[0];
    std::rewind(fine_.get());
    const auto chunk = std::make_unique_for_overwrite<char[]>(kCopyChunk);
    std::uint64_t copied = 0;
    for (std::size_t got = 0; (got = std::fread(chunk.get(), 1, kCopyChunk, fine_.get())) > 0;) {
        writeBytes(out, chunk.get(), got);
        copied += got;
    }
    if (copied != valueBytes_[1]) {
        return false;
    }
    for (CachedEntry& entry : tables_[1]) {
        entry.offset += fineStart;
    }
    gridcache::Header header;
    std::uint64_t position = fineStart + valueBytes_[1];
    for (std::size_t g = 0; g < tables_.size(); ++g) {
        header.entryCounts[g] = tables_[g].size();
        header.tableOffsets[g] = position;
        writeBytes(out, tables_[g].data(), tables_[g].size() * sizeof(CachedEntry));
        position += tables_[g].size() * sizeof(CachedEntry);
    }
    header.namesOffset = position;
    for (const std::string& name : fineNames_) {
        const auto length = static_cast<std::uint32_t>(name.size());
        writeBytes(out, &length, sizeof length);
        out << name;
        position += sizeof length + name.size();
    }
    header.magic = gridcache::kMagic;
    header.version = kGridCacheVersion;
    header.byteOrder = gridcache::kByteOrderMark;
    header.fileSize = position;
    header.fingerprint = fingerprint;
    out.seekp(0);
    writeBytes(out, &header, sizeof header);
    return cache_.commit();
}

} // namespace quarvex
