#include "specdata/UndoRecords.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumFileWriter.h"
#include "specdata/SpectrumRecords.h"

#include <cstdio>

namespace quarvex {

namespace {

constexpr std::string_view kRecordPrefix = "UNDO";
constexpr std::string_view kRecordExtension = ".txt";

std::filesystem::path undoFolder(const std::filesystem::path& home) {
    return home / kUndoRecordsFolder;
}

void removeFile(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

void dropEntries(std::vector<UndoEntry>& entries) {
    for (const UndoEntry& entry : entries) {
        removeFile(entry.file);
    }
    entries.clear();
}

// Writes the current state of spectrum `index` as a new record.
UndoEntry writeRecord(UndoHistory& history, const std::filesystem::path& home,
                      const SPECDATA_GLOBALS& specdata, int index, std::string label,
                      std::string_view title) {
    std::error_code ignored;
    std::filesystem::create_directories(undoFolder(home), ignored);
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "%06d", history.nextRecord);
    UndoEntry entry;
    entry.file = undoFolder(home) /
                 (std::string(kRecordPrefix) + number.data() + std::string(kRecordExtension));
    entry.spectrum = index;
    entry.spectrumPath = specdata.PATH[static_cast<std::size_t>(index)];
    entry.label = std::move(label);
    const SpectrumRecord record = spectrumRecord(specdata, index);
    entry.points = record.x.size();
    try {
        writeSpectrumFile(entry.file, record);
    } catch (const QuarvexError& error) {
        throw QuarvexError("The undo record could not be written: " + error.text(),
                           std::string(title));
    }
    ++history.nextRecord;
    return entry;
}

// Reads a record back; throws when it is missing, damaged or its spectrum is gone.
SpectrumRecord readRecord(const UndoEntry& entry, const SPECDATA_GLOBALS& specdata,
                          std::string_view title) {
    if (entry.spectrum >= specdata.count() ||
        specdata.PATH[static_cast<std::size_t>(entry.spectrum)] != entry.spectrumPath) {
        throw QuarvexError("The spectrum of this step (" + entry.label + ") is no longer loaded.",
                           std::string(title));
    }
    SpectrumRecord record;
    try {
        record = FILL_IN_SPECDATA_ARRAYS(entry.file, static_cast<std::int64_t>(entry.points));
    } catch (const QuarvexError& error) {
        throw QuarvexError("The undo record " + entry.file.string() +
                               " cannot be read: " + error.text(),
                           std::string(title));
    }
    if (record.x.size() != entry.points) {
        throw QuarvexError("The undo record " + entry.file.string() + " is damaged: it holds " +
                               std::to_string(record.x.size()) + " points instead of " +
                               std::to_string(entry.points) + ".",
                           std::string(title));
    }
    return record;
}

// Moves the newest entry of `from` to `to`: the spectrum takes the recorded state, and its
// current state becomes the new entry of `to`. A failure ends the chain of `from`.
std::string step(std::vector<UndoEntry>& from, std::vector<UndoEntry>& to, UndoHistory& history,
                 const std::filesystem::path& home, SPECDATA_GLOBALS& specdata,
                 std::string_view title) {
    if (from.empty()) {
        throw QuarvexError(std::string("Nothing to ") + (title == kUndoTitle ? "undo." : "redo."),
                           std::string(title));
    }
    const UndoEntry entry = from.back();
    SpectrumRecord record;
    try {
        record = readRecord(entry, specdata, title);
    } catch (const QuarvexError&) {
        dropEntries(from);
        throw;
    }
    to.push_back(writeRecord(history, home, specdata, entry.spectrum, entry.label, title));
    replaceSpectrum(specdata, entry.spectrum, record);
    removeFile(entry.file);
    from.pop_back();
    return entry.label;
}

} // namespace

void CREATE_APPEND_UNDO_FILE(UndoHistory& history, const std::filesystem::path& home) {
    history = UndoHistory{};
    std::error_code error;
    std::filesystem::directory_iterator files(undoFolder(home), error);
    if (error) {
        return;
    }
    for (const auto& file : files) {
        const std::string name = file.path().filename().string();
        if (name.starts_with(kRecordPrefix) && name.ends_with(kRecordExtension)) {
            removeFile(file.path());
        }
    }
}

void appendUndoRecord(UndoHistory& history, const std::filesystem::path& home,
                      const SPECDATA_GLOBALS& specdata, int index, std::string label) {
    UndoEntry entry = writeRecord(history, home, specdata, index, std::move(label), kUndoTitle);
    dropEntries(history.redo);
    history.undo.push_back(std::move(entry));
}

std::string undoLastEdit(UndoHistory& history, const std::filesystem::path& home,
                         SPECDATA_GLOBALS& specdata) {
    return step(history.undo, history.redo, history, home, specdata, kUndoTitle);
}

std::string redoLastEdit(UndoHistory& history, const std::filesystem::path& home,
                         SPECDATA_GLOBALS& specdata) {
    return step(history.redo, history.undo, history, home, specdata, "Redo");
}

} // namespace quarvex
