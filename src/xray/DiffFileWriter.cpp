// The ".out" layout written with fixed columns, so that READ_DIFF_INFO reads every line back.
#include "xray/DiffFileWriter.h"

#include "common/AtomicFile.h"

#include <cstdio>

namespace quarvex {

namespace {

template <class... Values> std::string formatted(const char* format, Values... values) {
    char buffer[160];
    const int length = std::snprintf(buffer, sizeof buffer, format, values...);
    return length > 0 ? std::string(buffer, std::min<std::size_t>(static_cast<std::size_t>(length),
                                                                  sizeof buffer - 1))
                      : std::string{};
}

} // namespace

bool writeDiffFile(const std::filesystem::path& path, const DiffFileRecord& record,
                   const std::vector<std::string>& reference) {
    AtomicFile file(path);
    if (!file.isOpen()) {
        return false;
    }
    std::ostream& out = file.stream();
    const auto& c = record.cell;
    out << record.title << '\n'
        << formatted("CELL PARAMETERS:   %.5f  %.5f  %.5f  %.4f  %.4f  %.4f", c[0], c[1], c[2],
                     c[3], c[4], c[5])
        << '\n';
    if (!record.spaceGroup.empty()) {
        out << "SPACE GROUP: " << record.spaceGroup << '\n';
    }
    out << formatted("X-RAY WAVELENGTH:     %.6f", record.wavelengths[0]) << '\n'
        << "2-THETA      INTENSITY    D-SPACING   H   K   L\n";
    for (const DiffReflection& r : record.reflections) {
        out << formatted("%21.2f%14.2f%14.4f%5d%4d%4d", static_cast<double>(r.twoTheta),
                         static_cast<double>(r.intensity), static_cast<double>(r.dSpacing),
                         r.hkl[0], r.hkl[1], r.hkl[2])
            << '\n';
    }
    out << "For reference:";
    for (const std::string& line : reference) {
        out << ' ' << line << '\n';
    }
    if (reference.empty()) {
        out << '\n';
    }
    return file.commit();
}

} // namespace quarvex
