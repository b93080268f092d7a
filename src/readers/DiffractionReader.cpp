#include "readers/DiffractionReader.h"

#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/DiffractionWavelength.h"
#include "readers/ReaderFiles.h"
#include "readers/XyColumns.h"
#include "specdata/PointOrder.h"
#include "specdata/SpecDataManager.h"
#include "specdata/XrayWavelengthRange.h"

#include <xylib/xylib.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <clocale>
#include <cmath>
#include <istream>
#include <limits>
#include <locale.h>
#include <memory>
#include <optional>
#include <sstream>
#include <streambuf>
#include <string>

namespace quarvex {

namespace {

constexpr std::string_view kDiffractionType = "XRD";
constexpr std::size_t kMaxMetaComments = 64;

// Formats xylib tells apart by their content, tried in this order.
constexpr std::array<const char*, 8> kContentFormats = {
    "bruker_raw", "philips_rd", "xrdml", "philips_udf", "uxd", "rigaku_dat", "cpi", "pdcif"};

// Formats whose check would also take ordinary number columns: only with their extensions.
struct ExtensionFormat {
    std::string_view extension;
    const char* format;
};
constexpr std::array<ExtensionFormat, 4> kExtensionFormats = {
    {{"dat", "riet7"}, {"dbw", "dbws"}, {"rit", "dbws"}, {"neu", "dbws"}}};

// Column files are read by our own reader: xylib's text reader can loop for ever on a mangled
// one (found by fuzzing).
constexpr std::array<std::string_view, 2> kColumnExtensions = {"xy", "xye"};

constexpr std::array<std::string_view, 11> kClaimedExtensions = {
    "raw", "rd", "sd", "xrdml", "udf", "uxd", "cpi", "dbw", "rit", "neu", "brml"};

// Bruker's version 4 files (and the zipped .brml) are beyond xylib.
constexpr std::string_view kRawVersion4Magic = "RAW4.00";
constexpr std::string_view kZipMagic = "PK\x03\x04";

const xylib::FormatInfo* formatNamed(const char* name) {
    return static_cast<const xylib::FormatInfo*>(xylib_get_format_by_name(name));
}

// A read-only stream buffer over bytes held elsewhere: each format's check reads the file's head
// without a copy of it.
class ViewBuffer : public std::streambuf {
public:
    explicit ViewBuffer(std::string_view bytes) {
        // The get area is only read; std::streambuf takes it as char* all the same.
        char* begin = const_cast<char*>(bytes.data());
        setg(begin, begin, begin + bytes.size());
    }

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir way,
                     std::ios_base::openmode /*which*/) override {
        const off_type base = way == std::ios_base::beg   ? 0
                              : way == std::ios_base::cur ? gptr() - eback()
                                                          : egptr() - eback();
        return seekpos(base + offset, std::ios_base::in);
    }

    pos_type seekpos(pos_type position, std::ios_base::openmode /*which*/) override {
        const off_type at = position;
        if (at < 0 || at > egptr() - eback()) {
            return pos_type(off_type(-1));
        }
        setg(eback(), eback() + at, egptr());
        return position;
    }
};

// xylib's own check of a format on `bytes`; a check that throws is a "no".
bool passesCheck(const char* format, std::string_view bytes) {
    const xylib::FormatInfo* info = formatNamed(format);
    if (info == nullptr) {
        return false;
    }
    ViewBuffer buffer(bytes);
    std::istream stream(&buffer);
    try {
        return xylib::check_format(info, stream, nullptr);
    } catch (const std::exception&) {
        return false;
    }
}

// A structure CIF has no measured pattern: only CIFs with powder-data items are patterns.
bool isPatternCif(std::string_view bytes) {
    return bytes.find("_pd_meas_") != std::string_view::npos ||
           bytes.find("_pd_proc_") != std::string_view::npos;
}

// The xylib format of `bytes`, null when none fits.
const char* formatOf(std::string_view bytes, std::string_view extension) {
    for (const char* format : kContentFormats) {
        if (std::string_view(format) == "pdcif" && !isPatternCif(bytes)) {
            continue;
        }
        if (passesCheck(format, bytes)) {
            return format;
        }
    }
    for (const ExtensionFormat& entry : kExtensionFormats) {
        if (entry.extension == extension && passesCheck(entry.format, bytes)) {
            return entry.format;
        }
    }
    return nullptr;
}

std::string lowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& what) {
    throw QuarvexError(path.string() + ": " + what, std::string(kDataFileErrorTitle));
}

// xylib reads numbers with the C library, which follows LC_NUMERIC; the GUI toolkit sets it
// from the user's locale, where a decimal comma would split every number. "C" for this thread
// while xylib reads.
class ClassicNumbers {
public:
    ClassicNumbers() : classic_(::newlocale(LC_NUMERIC_MASK, "C", nullptr)) {
        if (classic_ != nullptr) {
            previous_ = ::uselocale(classic_);
        }
    }
    ~ClassicNumbers() {
        if (classic_ != nullptr) {
            ::uselocale(previous_);
            ::freelocale(classic_);
        }
    }
    ClassicNumbers(const ClassicNumbers&) = delete;
    ClassicNumbers& operator=(const ClassicNumbers&) = delete;

private:
    locale_t classic_ = nullptr;
    locale_t previous_ = nullptr;
};

std::optional<double> wavelengthIn(const xylib::MetaData& meta) {
    for (std::size_t k = 0; k < meta.size(); ++k) {
        std::string key = meta.get_key(k);
        std::transform(key.begin(), key.end(), key.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (key.find("alpha1") == std::string::npos && key != "wl1" &&
            key.find("wavelength") == std::string::npos) {
            continue;
        }
        double value = 0.0;
        if (readAll(trimmed(meta.get(meta.get_key(k))), value) && value >= kMinXrayWavelength &&
            value <= kMaxXrayWavelength) {
            return value;
        }
    }
    return std::nullopt;
}

void addMetaComments(const xylib::MetaData& meta, SpectrumRecord& record) {
    for (std::size_t k = 0; k < meta.size() && record.comments.size() < kMaxMetaComments; ++k) {
        const std::string& key = meta.get_key(k);
        std::string line = key + ": " + meta.get(key);
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        record.comments.push_back(fitted(line, kMineralInfoWidth));
    }
}

// A value xylib read, as a float; false when it is not finite as one.
bool asFiniteFloat(double value, float& result) {
    if (!(std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()))) {
        return false; // also NaN; converting beyond the float range is undefined
    }
    result = static_cast<float>(value);
    return true;
}

enum class BlockRead { Read, NoPair, NotFinite };

// The x (column 1) and y (column 2) of a block.
BlockRead readBlock(const xylib::Block& block, SpectrumRecord& record) {
    const int points = block.get_point_count();
    if (block.get_column_count() < 2 || points < 1) {
        return BlockRead::NoPair;
    }
    const xylib::Column& x = block.get_column(1);
    const xylib::Column& y = block.get_column(2);
    record.x.resize(static_cast<std::size_t>(points));
    record.y.resize(static_cast<std::size_t>(points));
    for (int k = 0; k < points; ++k) {
        const auto at = static_cast<std::size_t>(k);
        if (!asFiniteFloat(x.get_value(k), record.x[at]) ||
            !asFiniteFloat(y.get_value(k), record.y[at])) {
            return BlockRead::NotFinite;
        }
    }
    return BlockRead::Read;
}

// xylib gives every UXD data section the block of the last _DRIVE header; a second section
// under one header adds that block twice, and freeing the data set then crashes. True when
// every section has a _DRIVE of its own.
bool uxdSectionsSeparate(std::string_view bytes) {
    // xylib starts a section at any key beginning "_COUNT" ("_COUNTS", but also "_COUNTRY").
    constexpr std::array<std::string_view, 4> kDataStarts = {"_COUNT", "_CPS", "_2THETACOUNTS",
                                                             "_2THETACPS"};
    const auto startsWithKey = [](std::string_view line, std::string_view key) {
        return line.size() >= key.size() &&
               std::equal(key.begin(), key.end(), line.begin(), [](char a, char b) {
                   return std::toupper(static_cast<unsigned char>(a)) ==
                          std::toupper(static_cast<unsigned char>(b));
               });
    };
    bool headerOpen = false;
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        end = end == std::string_view::npos ? bytes.size() : end;
        const std::string_view line = trimmed(bytes.substr(start, end - start));
        start = end + 1;
        // xylib matches the keys case by case: a "_DRiVE" opens no section for it, so none
        // here either (the data keys are matched in any case: that only refuses more).
        if (line.starts_with("_DRIVE")) {
            headerOpen = true;
        } else if (std::any_of(kDataStarts.begin(), kDataStarts.end(),
                               [&](std::string_view key) { return startsWithKey(line, key); })) {
            if (!headerOpen) {
                return false;
            }
            headerOpen = false;
        }
    }
    return true;
}

// xylib reads a Philips UDF scan up to where the text ends; a whole one closes with '/'.
bool udfScanClosed(std::string_view bytes) {
    const std::size_t last = bytes.find_last_not_of(" \t\r\n");
    return last != std::string_view::npos && bytes[last] == '/';
}

// The scans of a file in one of xylib's formats, with the wavelength and the metadata; x and
// y as read.
std::vector<SpectrumRecord> readXylibFile(const std::string& bytes,
                                          const std::filesystem::path& path,
                                          const std::string& extension) {
    const ClassicNumbers classic;
    const char* format = formatOf(bytes, extension);
    if (format == nullptr) {
        fail(path, "not in a diffraction format Quarvex reads");
    }
    if (std::string_view(format) == "uxd" && !uxdSectionsSeparate(bytes)) {
        fail(path, "a UXD data section without a _DRIVE header of its own, which xylib cannot "
                   "read safely");
    }
    if (std::string_view(format) == "philips_udf" && !udfScanClosed(bytes)) {
        fail(path, "the Philips UDF scan is cut short (no closing '/')");
    }
    // A data set whose reading threw is left to xylib, which drops it: freeing it could free its
    // blocks twice (see readers/XylibLeaks.h).
    const xylib::FormatInfo* info = formatNamed(format);
    std::unique_ptr<xylib::DataSet> dataSet;
    try {
        dataSet.reset(xylib::load_string(bytes, format));
    } catch (const std::exception& error) {
        fail(path, std::string("cannot be read as ") + info->desc + ": " + error.what());
    }
    const std::optional<double> fileWavelength = wavelengthIn(dataSet->meta);
    const std::optional<std::string> ownWavelength = wavelengthFromBytes(format, bytes);
    // xylib passes the RAW wavelengths on rounded to six digits: the file's own field wins.
    const bool ownWavelengthFirst = std::string_view(format) == "bruker_raw";
    std::vector<SpectrumRecord> records;
    for (int b = 0; b < dataSet->get_block_count(); ++b) {
        const xylib::Block& block = *dataSet->get_block(b);
        SpectrumRecord record;
        const BlockRead read = readBlock(block, record);
        if (read == BlockRead::NoPair) {
            continue;
        }
        if (read == BlockRead::NotFinite) {
            fail(path,
                 "scan " + std::to_string(b + 1) + " holds a value that is not a finite number");
        }
        std::optional<double> keyed = wavelengthIn(block.meta);
        keyed = keyed ? keyed : fileWavelength;
        record.waveInfo =
            keyed && !ownWavelengthFirst ? shortestText(*keyed) : ownWavelength.value_or("");
        record.comments.push_back(std::string("format: ") + info->desc);
        addMetaComments(dataSet->meta, record);
        addMetaComments(block.meta, record);
        records.push_back(std::move(record));
    }
    if (records.empty()) {
        fail(path, "no scan with 2-theta and counts in this " + std::string(info->desc) + " file");
    }
    return records;
}

} // namespace

bool looksLikeDiffractionFile(std::string_view head, std::string_view extensionLower) {
    if (std::find(kClaimedExtensions.begin(), kClaimedExtensions.end(), extensionLower) !=
            kClaimedExtensions.end() ||
        std::find(kColumnExtensions.begin(), kColumnExtensions.end(), extensionLower) !=
            kColumnExtensions.end()) {
        return true;
    }
    const ClassicNumbers classic;
    return head.starts_with(kRawVersion4Magic) || formatOf(head, extensionLower) != nullptr;
}

std::vector<SpectrumRecord> readDiffractionFile(const std::filesystem::path& path) {
    return readDiffractionBytes(path, readFileBytes(path));
}

std::vector<SpectrumRecord> readDiffractionBytes(const std::filesystem::path& path,
                                                 std::string_view bytes) {
    const std::string extension = lowerExtension(path);
    if (std::string_view(bytes).starts_with(kRawVersion4Magic)) {
        fail(path, "Bruker RAW version 4 is not supported (versions 1 to 3 are)");
    }
    if (extension == "brml" || (extension == "raw" && bytes.starts_with(kZipMagic))) {
        fail(path, "Bruker .brml files are not supported: export the scan as RAW version 3, "
                   "UXD or XY");
    }
    std::vector<SpectrumRecord> records;
    if (std::find(kColumnExtensions.begin(), kColumnExtensions.end(), extension) !=
        kColumnExtensions.end()) {
        records.push_back(readXyColumns(bytes, path));
    } else {
        records = readXylibFile(std::string(bytes), path, extension);
    }
    const std::string base = path.filename().string();
    for (std::size_t k = 0; k < records.size(); ++k) {
        SpectrumRecord& record = records[k];
        const std::string scan = "scan " + std::to_string(k + 1);
        const auto notFinite = [](float v) { return !std::isfinite(v); };
        if (std::any_of(record.x.begin(), record.x.end(), notFinite) ||
            std::any_of(record.y.begin(), record.y.end(), notFinite)) {
            fail(path, scan + " holds a value that is not a finite number");
        }
        const auto [least, most] = std::minmax_element(record.x.begin(), record.x.end());
        if (record.x.size() > 1 && *least == *most) {
            fail(path, scan + ": 2-theta does not advance (a step of 0)");
        }
        orderByAscendingX(record.x, record.y);
        record.dtype = std::string(kDiffractionType);
        nameRecord(record, path, base, k, records.size());
    }
    return records;
}

} // namespace quarvex
