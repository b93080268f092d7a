#include "readers/SpectrumFormats.h"

#include "common/QuarvexError.h"
#include "common/ReadableFile.h"
#include "readers/DelimitedText.h"
#include "readers/DiffractionReader.h"
#include "readers/JcampReader.h"
#include "readers/ReaderFiles.h"
#include "readers/SpcReader.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

namespace quarvex {

namespace {

bool isProgramText(std::string_view head, std::string_view /*extensionLower*/) {
    return head.find('\0') == std::string_view::npos;
}

std::vector<SpectrumRecord> readProgramText(const std::filesystem::path& path,
                                            const ReadOptions& /*options*/) {
    return {READ_SPECDATA_RECORD(path)};
}

std::vector<SpectrumRecord> readProgramTextBytes(const std::filesystem::path& path,
                                                 std::string_view bytes,
                                                 const ReadOptions& /*options*/) {
    return {READ_SPECDATA_RECORD(path, bytes)};
}

// The SPC and diffraction readers take extensions without the dot and need no options.
std::string_view withoutDot(std::string_view extensionLower) {
    return extensionLower.starts_with('.') ? extensionLower.substr(1) : extensionLower;
}

bool isSpc(std::string_view head, std::string_view extensionLower) {
    return looksLikeSpc(head, withoutDot(extensionLower));
}

std::vector<SpectrumRecord> readSpc(const std::filesystem::path& path,
                                    const ReadOptions& /*options*/) {
    return readSpcFile(path);
}

std::vector<SpectrumRecord> readSpcFromBytes(const std::filesystem::path& path,
                                             std::string_view bytes,
                                             const ReadOptions& /*options*/) {
    return readSpcBytes(path, bytes);
}

bool isDiffraction(std::string_view head, std::string_view extensionLower) {
    return looksLikeDiffractionFile(head, withoutDot(extensionLower));
}

std::vector<SpectrumRecord> readDiffraction(const std::filesystem::path& path,
                                            const ReadOptions& /*options*/) {
    return readDiffractionFile(path);
}

std::vector<SpectrumRecord> readDiffractionFromBytes(const std::filesystem::path& path,
                                                     std::string_view bytes,
                                                     const ReadOptions& /*options*/) {
    return readDiffractionBytes(path, bytes);
}

// Binary formats with a signature first, then text formats with a marked header; the delimited
// reader takes only text that the program's own reader would read wrongly or in part.
constexpr std::array kFormats{
    SpectrumFormat{"SPC", "SPC Files (*.spc)|*.spc|", isSpc, readSpc, readSpcFromBytes},
    SpectrumFormat{"JCAMP-DX", "JCAMP-DX Files (*.jdx *.dx *.jcm)|*.jdx;*.dx;*.jcm|", isJcampDx,
                   readJcampDx},
    SpectrumFormat{"diffraction",
                   "Diffraction Files (*.raw *.rd *.sd *.xrdml *.udf *.uxd *.cpi *.dbw *.rit *.neu "
                   "*.xy *.xye)|*.raw;*.rd;*.sd;*.xrdml;*.udf;*.uxd;*.cpi;*.dbw;*.rit;*.neu;*.xy;"
                   "*.xye|",
                   isDiffraction, readDiffraction, readDiffractionFromBytes},
    SpectrumFormat{"CSV", "Delimited Text Files (*.csv *.tsv)|*.csv;*.tsv|", isDelimitedText,
                   readDelimitedText},
    SpectrumFormat{kTextFormatName, "", isProgramText, readProgramText, readProgramTextBytes},
};

std::string lowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

} // namespace

std::string readFileHead(const std::filesystem::path& path) {
    FilePointer file = openReadableFile(path);
    if (file == nullptr) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    std::string head(kSniffBytes, '\0');
    head.resize(std::fread(head.data(), 1, head.size(), file.get()));
    return head;
}

std::span<const SpectrumFormat> spectrumFormats() {
    return kFormats;
}

SpectrumFileBytes readSpectrumFileBytes(const std::filesystem::path& path) {
    std::error_code error;
    const bool regular = std::filesystem::is_regular_file(path, error);
    if (regular && std::filesystem::file_size(path, error) > kWholeFileBytes && !error) {
        return {readFileHead(path), false};
    }
    SpectrumFileBytes file{readFileUpTo(path, kWholeFileBytes, PipeReading::ReadOnce), true};
    if (file.bytes.size() > kWholeFileBytes) {
        if (!regular) {
            throw QuarvexError(path.string() + ": a pipe of more than " +
                                   std::to_string(kWholeFileBytes >> 20) +
                                   " MB: save it to a file first",
                               std::string(kDataFileErrorTitle));
        }
        file.bytes.resize(kSniffBytes);
        file.whole = false;
    }
    return file;
}

const SpectrumFormat* findSpectrumFormat(const std::filesystem::path& path,
                                         const SpectrumFileBytes& file) {
    const std::string_view head = std::string_view(file.bytes).substr(0, kSniffBytes);
    const std::string extension = lowerExtension(path);
    for (const SpectrumFormat& format : kFormats) {
        if (format.sniff(head, extension)) {
            return &format;
        }
    }
    return nullptr;
}

const SpectrumFormat* findSpectrumFormat(const std::filesystem::path& path) {
    return findSpectrumFormat(path, SpectrumFileBytes{readFileHead(path), false});
}

std::vector<SpectrumRecord> readSpectra(const SpectrumFormat& format,
                                        const std::filesystem::path& path,
                                        const SpectrumFileBytes& file, const ReadOptions& options) {
    if (file.whole && format.readBytes != nullptr) {
        return format.readBytes(path, file.bytes, options);
    }
    return format.read(path, options);
}

namespace {

const SpectrumFormat& knownFormat(const std::filesystem::path& path, const SpectrumFormat* format) {
    if (format != nullptr) {
        return *format;
    }
    throw QuarvexError(path.string() + ": not a spectrum file Quarvex can read (tried: text, CSV, "
                                       "JCAMP-DX, SPC, diffraction formats)",
                       std::string(kDataFileErrorTitle));
}

} // namespace

const SpectrumFormat& detectSpectrumFormat(const std::filesystem::path& path) {
    return knownFormat(path, findSpectrumFormat(path));
}

const SpectrumFormat& detectSpectrumFormat(const std::filesystem::path& path,
                                           const SpectrumFileBytes& file) {
    return knownFormat(path, findSpectrumFormat(path, file));
}

SpectrumFileContents readSpectrumFile(const std::filesystem::path& path,
                                      const ReadOptions& options) {
    const SpectrumFileBytes file = readSpectrumFileBytes(path);
    const SpectrumFormat& format = detectSpectrumFormat(path, file);
    return {format.name, readSpectra(format, path, file, options)};
}

std::string openDialogFilter(std::string_view previousExtension) {
    std::string filter(fileFilterForPreviousExtension(previousExtension));
    for (const SpectrumFormat& format : kFormats) {
        filter += format.dialogFilter;
    }
    return filter;
}

} // namespace quarvex
