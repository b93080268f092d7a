#include "readers/SpcReader.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "readers/ReaderFiles.h"
#include "specdata/PointOrder.h"
#include "specdata/SpecDataManager.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace quarvex {

namespace {

constexpr std::uint8_t kNewFormat = 0x4B;
constexpr std::uint8_t kOldFormat = 0x4D;

// Bits of the file-type flag byte (the first byte of the file).
constexpr std::uint8_t kShortIntegers = 0x01; // y as 16-bit integers instead of 32-bit
constexpr std::uint8_t kMultiFile = 0x04;     // several subfiles
constexpr std::uint8_t kXyPerSubfile = 0x40;  // each subfile has its own x array
constexpr std::uint8_t kXValues = 0x80;       // x given explicitly instead of evenly spaced

constexpr std::size_t kNewHeaderBytes = 512;
constexpr std::size_t kOldHeaderBytes = 256;
constexpr std::size_t kSubheaderBytes = 32;
constexpr std::size_t kOldFirstSubheader = 224; // the old layout keeps it inside the header
constexpr std::int32_t kFloatExponent = -128;   // exponent byte 0x80: y are 32-bit floats
constexpr std::int64_t kMaxSubfiles = 100000;

// x unit codes the program knows an axis for; every other unit keeps its x as read.
constexpr std::uint8_t kUnitWavenumber = 1;
constexpr std::uint8_t kUnitRamanShift = 13;
constexpr std::uint8_t kUnitDegrees = 18;
constexpr std::uint8_t kExperimentDiffraction = 8;

constexpr std::array<const char*, 31> kUnitNames = {"arbitrary",
                                                    "wavenumber (cm-1)",
                                                    "micrometres",
                                                    "nanometres",
                                                    "seconds",
                                                    "minutes",
                                                    "hertz",
                                                    "kilohertz",
                                                    "megahertz",
                                                    "mass (m/z)",
                                                    "ppm",
                                                    "days",
                                                    "years",
                                                    "Raman shift",
                                                    "electron volts",
                                                    "text labels",
                                                    "diode number",
                                                    "channel",
                                                    "degrees",
                                                    "degrees Fahrenheit",
                                                    "degrees Celsius",
                                                    "kelvin",
                                                    "data points",
                                                    "milliseconds",
                                                    "microseconds",
                                                    "nanoseconds",
                                                    "gigahertz",
                                                    "centimetres",
                                                    "metres",
                                                    "millimetres",
                                                    "hours"};

// Little-endian fields of the file, each checked against its length by the caller.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }
    std::uint8_t u8(std::size_t at) const { return static_cast<std::uint8_t>(bytes_[at]); }
    std::uint16_t u16(std::size_t at) const {
        return static_cast<std::uint16_t>(u8(at) | (u8(at + 1) << 8));
    }
    std::uint32_t u32(std::size_t at) const {
        return static_cast<std::uint32_t>(u16(at)) |
               (static_cast<std::uint32_t>(u16(at + 2)) << 16);
    }
    std::int32_t i32(std::size_t at) const { return static_cast<std::int32_t>(u32(at)); }
    float f32(std::size_t at) const { return std::bit_cast<float>(u32(at)); }
    double f64(std::size_t at) const {
        return std::bit_cast<double>(static_cast<std::uint64_t>(u32(at)) |
                                     (static_cast<std::uint64_t>(u32(at + 4)) << 32));
    }
    // Text of a fixed-width field, up to its first NUL.
    std::string text(std::size_t at, std::size_t width) const {
        const std::string_view field = bytes_.substr(at, width);
        return std::string(trimmed(field.substr(0, field.find('\0'))));
    }

private:
    std::string_view bytes_;
};

[[noreturn]] void unsupported(const std::filesystem::path& path, std::uint8_t type) {
    std::array<char, 8> hex{};
    std::snprintf(hex.data(), hex.size(), "%02X", static_cast<unsigned>(type));
    throw QuarvexError(path.string() + ": SPC file type 0x" + hex.data() + " is not supported",
                       std::string(kDataFileErrorTitle));
}

// How one file lays out its subfiles.
struct Layout {
    std::uint8_t flags = 0;
    bool oldFormat = false;
    std::int64_t points = 0; // per subfile (unused when each subfile gives its own count)
    std::int64_t subfiles = 1;
    double firstX = 0.0;
    double lastX = 0.0;
    std::int32_t exponent = 0;
    std::uint8_t xUnit = 0;
    std::uint8_t experiment = 0;
    std::string memo;
    std::size_t dataStart = 0; // the first subheader
};

// Reads the y values of one subfile at `at` and moves `at` past them; false when the file
// ends before them.
bool readY(const Bytes& bytes, std::size_t& at, std::int64_t count, std::int32_t exponent,
           const Layout& layout, std::vector<float>& y) {
    const bool asFloat = exponent == kFloatExponent;
    const bool asShort = !asFloat && (layout.flags & kShortIntegers) != 0;
    const std::size_t width = asShort ? 2 : 4;
    if (at > bytes.size() || static_cast<std::uint64_t>(count) > (bytes.size() - at) / width) {
        return false;
    }
    y.resize(static_cast<std::size_t>(count));
    for (std::size_t k = 0; k < y.size(); ++k, at += width) {
        if (asFloat) {
            y[k] = bytes.f32(at);
        } else if (asShort) {
            y[k] = static_cast<float>(
                std::ldexp(static_cast<std::int16_t>(bytes.u16(at)), exponent - 16));
        } else {
            // The old layout stores the high 16-bit word of a 32-bit value first.
            const std::uint32_t raw =
                layout.oldFormat
                    ? (static_cast<std::uint32_t>(bytes.u16(at)) << 16) | bytes.u16(at + 2)
                    : bytes.u32(at);
            y[k] = static_cast<float>(
                std::ldexp(static_cast<double>(static_cast<std::int32_t>(raw)), exponent - 32));
        }
    }
    return true;
}

// Reads an explicit x array at `at` and moves `at` past it; false when the file ends before it.
bool readXArray(const Bytes& bytes, std::size_t& at, std::int64_t count, std::vector<float>& x) {
    if (at > bytes.size() || static_cast<std::uint64_t>(count) > (bytes.size() - at) / 4) {
        return false;
    }
    x.resize(static_cast<std::size_t>(count));
    for (float& value : x) {
        value = bytes.f32(at);
        at += 4;
    }
    return true;
}

std::vector<float> evenlySpacedX(const Layout& layout) {
    std::vector<float> x(static_cast<std::size_t>(layout.points));
    const double step =
        x.size() > 1 ? (layout.lastX - layout.firstX) / static_cast<double>(x.size() - 1) : 0.0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        x[k] = static_cast<float>(layout.firstX + step * static_cast<double>(k));
    }
    return x;
}

Layout newLayout(const Bytes& bytes, const std::filesystem::path& path) {
    Layout layout;
    layout.flags = bytes.u8(0);
    if (bytes.size() < kNewHeaderBytes) {
        unsupported(path, layout.flags);
    }
    layout.experiment = bytes.u8(2);
    layout.exponent = static_cast<std::int8_t>(bytes.u8(3));
    layout.points = bytes.i32(4);
    layout.firstX = bytes.f64(8);
    layout.lastX = bytes.f64(16);
    layout.subfiles = (layout.flags & kMultiFile) != 0 ? bytes.i32(24) : 1;
    layout.xUnit = bytes.u8(28);
    layout.memo = bytes.text(88, 130);
    layout.dataStart = kNewHeaderBytes;
    const bool xyPerSubfile = (layout.flags & kXyPerSubfile) != 0;
    if (xyPerSubfile && (layout.flags & (kMultiFile | kXValues)) != (kMultiFile | kXValues)) {
        unsupported(path, layout.flags);
    }
    // With an x array per subfile the point count field is the offset of a directory.
    if ((!xyPerSubfile && layout.points < 1) || layout.subfiles < 1) {
        unsupported(path, layout.flags);
    }
    return layout;
}

Layout oldLayout(const Bytes& bytes, const std::filesystem::path& path) {
    Layout layout;
    layout.flags = bytes.u8(0);
    layout.oldFormat = true;
    if (bytes.size() < kOldHeaderBytes ||
        (layout.flags & (kMultiFile | kXValues | kXyPerSubfile)) != 0) {
        unsupported(path, layout.flags);
    }
    layout.exponent = static_cast<std::int16_t>(bytes.u16(2));
    const float points = bytes.f32(4);
    if (!(points >= 1.0F && points <= static_cast<float>(bytes.size())) ||
        points != std::floor(points) || layout.exponent < -128 || layout.exponent > 127) {
        unsupported(path, layout.flags);
    }
    layout.points = static_cast<std::int64_t>(points);
    layout.firstX = bytes.f32(8);
    layout.lastX = bytes.f32(12);
    layout.xUnit = bytes.u8(16);
    layout.memo = bytes.text(64, 130);
    layout.dataStart = kOldFirstSubheader;
    return layout;
}

void describeUnits(const Layout& layout, SpectrumRecord& record) {
    if (layout.xUnit == kUnitDegrees || layout.experiment == kExperimentDiffraction) {
        record.dtype = "XRD";
    } else {
        record.dtype = std::string(kDefaultDataType);
        if (layout.xUnit != kUnitWavenumber && layout.xUnit != kUnitRamanShift) {
            record.comments.push_back(
                std::string("SPC x unit: ") +
                (layout.xUnit < kUnitNames.size() ? kUnitNames[layout.xUnit] : "unknown") +
                " (x kept as read)");
        }
    }
}

bool allFinite(const std::vector<float>& values) {
    for (const float value : values) {
        if (!std::isfinite(value)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool looksLikeSpc(std::string_view head, std::string_view extensionLower) {
    if (extensionLower == "spc") {
        return true;
    }
    // The binary counts and coordinates of the header hold zero bytes, which no text has: a
    // text line whose second letter is 'K' or 'M' is not taken for a version byte.
    constexpr std::size_t kCountFields = 32;
    if (head.size() < kOldHeaderBytes ||
        head.substr(0, kCountFields).find('\0') == std::string_view::npos) {
        return false;
    }
    const auto version = static_cast<std::uint8_t>(head[1]);
    if (version == kOldFormat) {
        return true;
    }
    // The new layout: an exponent byte of 0x80 or a small integer.
    if (version != kNewFormat || head.size() < kNewHeaderBytes) {
        return false;
    }
    const std::int32_t exponent = static_cast<std::int8_t>(head[3]);
    return exponent == kFloatExponent || (exponent >= -64 && exponent <= 64);
}

std::vector<SpectrumRecord> readSpcFile(const std::filesystem::path& path) {
    return readSpcBytes(path, readFileBytes(path));
}

std::vector<SpectrumRecord> readSpcBytes(const std::filesystem::path& path,
                                         std::string_view content) {
    const Bytes bytes(content);
    if (bytes.size() < 2) {
        unsupported(path, bytes.size() == 0 ? 0 : bytes.u8(0));
    }
    const std::uint8_t version = bytes.u8(1);
    if (version != kNewFormat && version != kOldFormat) {
        unsupported(path, version);
    }
    const Layout layout = version == kNewFormat ? newLayout(bytes, path) : oldLayout(bytes, path);
    // x is single precision: ends beyond its range are as meaningless as infinite ones.
    constexpr double kLargestX = std::numeric_limits<float>::max();
    if (!(std::abs(layout.firstX) <= kLargestX) || !(std::abs(layout.lastX) <= kLargestX)) {
        unsupported(path, layout.flags);
    }
    const bool xyPerSubfile = (layout.flags & kXyPerSubfile) != 0;
    std::size_t at = layout.dataStart;
    std::vector<float> sharedX;
    if (!xyPerSubfile) {
        if ((layout.flags & kXValues) != 0) {
            if (!readXArray(bytes, at, layout.points, sharedX)) {
                unsupported(path, layout.flags);
            }
        } else if (static_cast<std::uint64_t>(layout.points) > bytes.size()) {
            unsupported(path, layout.flags); // more points than the file has bytes
        } else {
            sharedX = evenlySpacedX(layout);
        }
    }
    // Each subfile must hold at least its subheader, so the count is bounded by the file; more
    // spectra than kMaxSubfiles are beyond what the program can hold loaded at once.
    if (static_cast<std::uint64_t>(layout.subfiles) > bytes.size() / kSubheaderBytes ||
        layout.subfiles > kMaxSubfiles) {
        unsupported(path, layout.flags);
    }
    const std::string fileName = path.filename().string();
    const std::string baseName = layout.memo.empty() ? fileName : layout.memo;
    std::vector<SpectrumRecord> records;
    for (std::int64_t sub = 0; sub < layout.subfiles; ++sub) {
        if (at + kSubheaderBytes > bytes.size()) {
            unsupported(path, layout.flags);
        }
        const std::int32_t subExponent = static_cast<std::int8_t>(bytes.u8(at + 1));
        const std::int64_t subPoints = bytes.i32(at + 16);
        // The old layout's first subheader lies inside the file header, its data after it.
        at = layout.oldFormat && sub == 0 ? kOldHeaderBytes : at + kSubheaderBytes;
        SpectrumRecord record;
        if (xyPerSubfile) {
            if (subPoints < 1 || !readXArray(bytes, at, subPoints, record.x)) {
                unsupported(path, layout.flags);
            }
        } else {
            record.x = sharedX;
        }
        // A multi-file gives each subfile its own exponent; a single one uses the header's.
        const std::int32_t exponent =
            (layout.flags & kMultiFile) != 0 ? subExponent : layout.exponent;
        if (!readY(bytes, at, static_cast<std::int64_t>(record.x.size()), exponent, layout,
                   record.y)) {
            unsupported(path, layout.flags);
        }
        if (!allFinite(record.x) || !allFinite(record.y)) {
            throw QuarvexError(path.string() + ": subfile " + std::to_string(sub + 1) +
                                   " holds a value that is not a finite number",
                               std::string(kDataFileErrorTitle));
        }
        orderByAscendingX(record.x, record.y);
        nameRecord(record, path, baseName, static_cast<std::size_t>(sub),
                   static_cast<std::size_t>(layout.subfiles));
        describeUnits(layout, record);
        if (!layout.memo.empty()) {
            record.comments.push_back("SPC memo: " + layout.memo);
        }
        records.push_back(std::move(record));
    }
    return records;
}

} // namespace quarvex
