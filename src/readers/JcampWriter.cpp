#include "readers/JcampWriter.h"

#include "common/TextUtils.h"
#include "specdata/SpectrumFileWriter.h"

#include <algorithm>
#include <cctype>

namespace quarvex {

namespace {

std::string dataTypeText(const std::string& dtype) {
    if (dtype == "RAMAN") {
        return "RAMAN SPECTRUM";
    }
    if (dtype == "IR") {
        return "INFRARED SPECTRUM";
    }
    if (dtype == "XRD") {
        return "X-RAY DIFFRACTION";
    }
    return dtype + " SPECTRUM";
}

// A value on one labelled line: line breaks would start a new label.
std::string oneLine(std::string_view value) {
    std::string line(value);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line;
}

} // namespace

void writeJcampDx(std::ostream& out, const SpectrumRecord& record) {
    out << "##TITLE=" << oneLine(record.name) << '\n'
        << "##JCAMP-DX=5.01\n"
        << "##DATA TYPE=" << oneLine(dataTypeText(record.dtype)) << '\n'
        << "##ORIGIN=Quarvex\n"
        << "##OWNER=\n"
        << "##NAMES=" << oneLine(record.header.names) << '\n'
        << "##MOLFORM=" << oneLine(record.header.chemistry) << '\n'
        << "##$LOCALITY=" << oneLine(record.header.locality) << '\n'
        << "##$ID=" << oneLine(record.header.id) << '\n'
        << "##$WAVE INFO=" << oneLine(record.waveInfo) << '\n'
        << "##XUNITS=" << (record.dtype == "RAMAN" ? "1/CM" : "ARBITRARY UNITS") << '\n'
        << "##YUNITS=ARBITRARY UNITS\n"
        << "##XFACTOR=1\n"
        << "##YFACTOR=1\n";
    if (!record.x.empty()) {
        out << "##FIRSTX=" << shortestText(record.x.front()) << '\n'
            << "##LASTX=" << shortestText(record.x.back()) << '\n'
            << "##FIRSTY=" << shortestText(record.y.front()) << '\n';
    }
    out << "##NPOINTS=" << record.x.size() << '\n' << "##XYPOINTS=(XY..XY)\n";
    for (std::size_t i = 0; i < record.x.size(); ++i) {
        out << shortestText(record.x[i]) << ", " << shortestText(record.y[i]) << '\n';
    }
    out << "##END=\n";
}

bool isJcampDxName(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jdx" || extension == ".dx";
}

void writeJcampDxFile(const std::filesystem::path& path, const SpectrumRecord& record) {
    writeSavedFile(path, [&](std::ostream& out) { writeJcampDx(out, record); });
}

} // namespace quarvex
