#include "readers/ReaderFiles.h"

#include "common/QuarvexError.h"
#include "common/ReadableFile.h"
#include "common/TextUtils.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <cstdio>

namespace quarvex {

std::string readFileUpTo(const std::filesystem::path& path, std::size_t maxBytes,
                         PipeReading pipes) {
    const FilePointer file = openReadableFile(path, pipes);
    if (!file) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    // Read straight into the string, a chunk at a time: no second copy.
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    std::string bytes;
    std::size_t size = 0;
    while (size <= maxBytes) {
        bytes.resize(size + kChunk);
        const std::size_t got = std::fread(bytes.data() + size, 1, kChunk, file.get());
        size += got;
        if (got < kChunk) {
            break;
        }
    }
    bytes.resize(std::min(size, maxBytes + 1));
    if (std::ferror(file.get()) != 0) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    return bytes;
}

std::string readFileBytes(const std::filesystem::path& path, std::size_t maxBytes) {
    std::string bytes = readFileUpTo(path, maxBytes);
    if (bytes.size() > maxBytes) {
        throw QuarvexError(path.string() + ": larger than " + std::to_string(maxBytes >> 20) +
                               " MB, more than an instrument file of this kind holds",
                           std::string(kDataFileErrorTitle));
    }
    return bytes;
}

void nameRecord(SpectrumRecord& record, const std::filesystem::path& path, const std::string& base,
                std::size_t index, std::size_t count) {
    constexpr std::size_t kNameWidth = 256; // as the program's own reader keeps them
    record.name = fitted(count > 1 ? base + " #" + std::to_string(index + 1) : base, kNameWidth);
    record.path = fitted(path.string(), kNameWidth);
}

} // namespace quarvex
