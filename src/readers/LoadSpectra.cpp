#include "readers/LoadSpectra.h"

#include "common/QuarvexError.h"
#include "readers/RecordNotes.h"
#include "readers/SpectrumFormats.h"

namespace quarvex {

namespace {

void collectNotes(const SpectrumRecord& record, std::vector<std::string>& notes) {
    for (const std::string& line : record.comments) {
        if (line.starts_with(kReadNoteKey)) {
            notes.push_back(line.substr(kReadNoteKey.size()));
        }
    }
}

} // namespace

LoadedFile loadSpectrumFile(SPECDATA_GLOBALS& specdata, MINERALINFO& mineralInfo,
                            const std::filesystem::path& path, const ReadOptions& options) {
    const SpectrumFileBytes file = readSpectrumFileBytes(path);
    const SpectrumFormat& format = detectSpectrumFormat(path, file);
    LoadedFile loaded;
    loaded.format = format.name;
    if (format.name == kTextFormatName) {
        // As READ_SPECDATA_FILE, on the bytes already read.
        SpectrumRecord record = file.whole ? READ_SPECDATA_RECORD(path, file.bytes, &loaded.skipped)
                                           : READ_SPECDATA_RECORD(path, &loaded.skipped);
        mineralInfo = record.header;
        loaded.first = appendSpectrum(specdata, std::move(record));
        loaded.count = 1;
        return loaded;
    }
    std::vector<SpectrumRecord> spectra = readSpectra(format, path, file, options);
    for (const SpectrumRecord& record : spectra) {
        if (record.x.empty()) {
            throw QuarvexError("No data points found in " + path.string() +
                                   (spectra.size() > 1 ? " (" + record.name + ")" : ""),
                               std::string(kDataFileErrorTitle));
        }
        collectNotes(record, loaded.notes);
    }
    loaded.first = specdata.count();
    loaded.count = static_cast<int>(spectra.size());
    for (SpectrumRecord& record : spectra) {
        mineralInfo = record.header;
        appendSpectrum(specdata, std::move(record));
    }
    return loaded;
}

std::string describeLoad(const LoadedFile& loaded) {
    std::string text = describeSkipped(loaded.skipped);
    for (const std::string& note : loaded.notes) {
        text += (text.empty() ? "" : "; ") + note;
    }
    return text;
}

} // namespace quarvex
