#include "specdata/SpectrumFileWriter.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "specdata/SpectrumFileKeys.h"

namespace quarvex {

namespace {

using namespace spectrum_file;

void writeProgramFormat(std::ostream& out, const SpectrumRecord& record) {
    out << kNamesKey << record.header.names << '\n'
        << kLocalityKey << record.header.locality << '\n'
        << kGreltIdKey << record.header.id << '\n'
        << kChemistryKey << record.header.chemistry << '\n'
        << kCommentStart << '\n';
    out << kDataTypeKey << ' ' << record.dtype << '\n'
        << kWaveKey << ' ' << record.waveInfo << '\n';
    for (const std::string& line : record.comments) {
        out << line << '\n';
    }
    out << kCommentEnd << '\n';
    for (std::size_t i = 0; i < record.x.size(); ++i) {
        out << shortestText(record.x[i]) << ", " << shortestText(record.y[i]) << '\n';
    }
}

void writeCsv(std::ostream& out, const SpectrumRecord& record) {
    out << "x,y\n";
    for (std::size_t i = 0; i < record.x.size(); ++i) {
        out << shortestText(record.x[i]) << ',' << shortestText(record.y[i]) << '\n';
    }
}

} // namespace

void writeSpectrumText(std::ostream& out, const SpectrumRecord& record, SpectrumFileFormat format) {
    if (format == SpectrumFileFormat::Csv) {
        writeCsv(out, record);
    } else {
        writeProgramFormat(out, record);
    }
}

void writeSavedFile(const std::filesystem::path& path,
                    const std::function<void(std::ostream&)>& write) {
    AtomicFile file(path);
    if (file.isOpen()) {
        write(file.stream());
        if (file.commit()) {
            return;
        }
    }
    throw QuarvexError("Cannot write " + path.string() +
                           ": the folder does not exist, is read-only or is full. Nothing was "
                           "written.",
                       "Save");
}

void writeSpectrumFile(const std::filesystem::path& path, const SpectrumRecord& record,
                       SpectrumFileFormat format) {
    writeSavedFile(path, [&](std::ostream& out) { writeSpectrumText(out, record, format); });
}

} // namespace quarvex
