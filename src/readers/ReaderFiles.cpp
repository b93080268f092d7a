#include "readers/ReaderFiles.h"

#include "common/QuarvexError.h"
#include "common/ReadableFile.h"
#include "common/TextUtils.h"
#include "specdata/SpecDataManager.h"

#include <array>
#include <cstdio>

namespace quarvex {

std::string readFileBytes(const std::filesystem::path& path, std::size_t maxBytes) {
    const FilePointer file = openReadableFile(path);
    if (!file) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    std::string bytes;
    std::array<char, 1 << 16> chunk{};
    std::size_t got = 0;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), file.get())) > 0) {
        if (bytes.size() + got > maxBytes) {
            throw QuarvexError(path.string() + ": larger than " + std::to_string(maxBytes >> 20) +
                                   " MB, more than an instrument file of this kind holds",
                               std::string(kDataFileErrorTitle));
        }
        bytes.append(chunk.data(), got);
    }
    if (std::ferror(file.get()) != 0) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
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
