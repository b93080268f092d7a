#include "library/CreateLibraryFile.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/StagedFiles.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/GridCache.h"
#include "library/GridCacheWriter.h"
#include "library/LibraryManifest.h"
#include "library/RobustGridCache.h"
#include "library/RobustLibrary.h"
#include "processing/InterpAndNorm.h"
#include "readers/SpectrumFormats.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <future>
#include <memory>
#include <optional>
#include <thread>

namespace quarvex {

namespace {

// Header lines of a reference file are read into a buffer of this width, so a value holds at
// most the rest of such a line after its key.
constexpr std::size_t kReferenceLineWidth = 150;
constexpr std::string_view kNamesKey = "##NAMES=";
constexpr std::string_view kLocalityKey = "##LOCALITY=";
constexpr std::string_view kGreltIdKey = "##GRELTID=";
constexpr std::string_view kChemistryKey = "##CHEMISTRY=";
constexpr std::string_view kSeparatorLine = "==\n";

// A header value as a 150-character line buffer holds it, trimmed to its last non-blank.
std::string_view headerValue(const std::string& value, std::string_view key) {
    return trimmedRight(std::string_view(value).substr(0, kReferenceLineWidth - key.size()));
}

// A value line of the name information: the trimmed value, or one blank for a missing value.
void appendValueLine(std::string& out, std::string_view value) {
    value = trimmedRight(value);
    out.append(value.empty() ? std::string_view(" ") : value);
    out.push_back('\n');
}

// The three characters after the first "_7" of the file name (else after the first "_5"); with
// neither, the name's own first three characters.
std::string_view wavelengthCode(std::string_view fileName) {
    std::size_t underscore = fileName.find("_7");
    if (underscore == std::string_view::npos) {
        underscore = fileName.find("_5");
    }
    const std::size_t start = underscore == std::string_view::npos ? 0 : underscore + 1;
    return fileName.substr(std::min(start, fileName.size()), 3);
}

// Below this magnitude a whole number's shortest text is its integer digits (from 1e5 on the
// exponent form is shorter).
constexpr float kIntegerTextLimit = 100000.0F;

char* writeNumber(char* first, char* last, float value) {
    // Grid positions are whole numbers: integer formatting gives the same text, faster.
    if (std::fabs(value) < kIntegerTextLimit && value == std::trunc(value) &&
        !(value == 0.0F && std::signbit(value))) {
        return std::to_chars(first, last, static_cast<int>(value)).ptr;
    }
    return std::to_chars(first, last, value).ptr;
}

} // namespace

void appendGridPoint(std::string& out, float x, float y) {
    std::array<char, 40> text{};
    char* end = writeNumber(text.data(), text.data() + text.size(), x);
    *end++ = ' ';
    end = writeNumber(end, text.data() + text.size(), y);
    *end++ = '\n';
    out.append(text.data(), end);
}

namespace {

void appendBlock(std::string& out, std::string_view name, const InterpData& grid) {
    out.append(kSeparatorLine);
    out.append(name);
    out.push_back('\n');
    for (int i = 0; i < grid.capacity(); ++i) {
        appendGridPoint(out, grid.x[i], grid.y[i]);
    }
}

void writeText(std::ostream& out, const std::string& text) {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void appendPreparedEntry(const PreparedEntry& entry, SearchFileStreams files) {
    if (entry.outcome == AppendOutcome::Appended) {
        writeText(files.slow, entry.slow);
        writeText(files.fast, entry.fast);
        writeText(files.nameInfo, entry.nameInfo);
    }
}

// Files prepared together, then written in folder order: the memory of one batch at a time.
constexpr std::size_t kBatchSize = 64;

// The entries of names[first, last), prepared by `workers` threads (the calling one among them),
// each on a contiguous share, in the order of the names.
std::vector<PreparedEntry> prepareBatch(const std::filesystem::path& folder,
                                        const std::vector<std::string>& names, std::size_t first,
                                        std::size_t last, unsigned workers) {
    std::vector<PreparedEntry> entries(last - first);
    const auto prepareShare = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            entries[i - first] = prepareSearchEntry(folder, names[i]);
        }
    };
    const std::size_t share = (last - first + workers - 1) / workers;
    std::vector<std::future<void>> others;
    for (std::size_t from = first + share; from < last; from += share) {
        others.push_back(
            std::async(std::launch::async, prepareShare, from, std::min(from + share, last)));
    }
    prepareShare(first, std::min(first + share, last));
    for (std::future<void>& other : others) {
        other.get();
    }
    return entries;
}

// The files of the folder in byte order of their names, so the library is the same everywhere.
std::vector<std::string> sortedFileNames(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::directory_iterator listing(folder, error);
    if (error) {
        throw QuarvexError("The Raman library folder " + folder.string() +
                               " cannot be listed: " + error.message(),
                           std::string(kLibraryErrorTitle));
    }
    std::vector<std::string> names;
    for (const auto& file : listing) {
        if (file.is_regular_file(error)) {
            names.push_back(file.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The four library files under temporary names until commit(), which puts them in place
// together: a search never reads files of two compilations.
class LibraryFiles {
public:
    LibraryFiles(const std::filesystem::path& folder, const CommitStepHook& beforeStep)
        : folder_(folder),
          files_(folder / kLibraryJournalFile, std::string(kLibraryErrorTitle), beforeStep),
          slow_(files_.add(folder / kSlowLibraryFile)),
          fast_(files_.add(folder / kFastLibraryFile)),
          nameList_(files_.add(folder / kNameListFile)),
          nameInfo_(files_.add(folder / kNameInfoFile)) {}

    SearchFileStreams entryStreams() { return {slow_, fast_, nameInfo_}; }
    std::ostream& nameList() { return nameList_; }

    void commit() {
        // The robust file is derived from the Slow file: the next robust search derives it anew.
        std::error_code ignored;
        std::filesystem::remove(folder_ / kRobustLibraryFile, ignored);
        std::filesystem::remove(gridCachePath(folder_), ignored);
        std::filesystem::remove(robustCachePath(folder_), ignored);
        files_.commitAll();
    }

private:
    std::filesystem::path folder_;
    StagedFiles files_;
    std::ostream& slow_;
    std::ostream& fast_;
    std::ostream& nameList_;
    std::ostream& nameInfo_;
};

// A reference spectrum in another format is read by its reader (the first spectrum of a file
// of several); the program's own text, and whatever no reader takes, by the text reader as ever.
// The file is read once; its bytes serve the sniffs and the reader.
SpectrumRecord readReferenceSpectrum(const std::filesystem::path& path) {
    const SpectrumFileBytes file = readSpectrumFileBytes(path);
    const SpectrumFormat* format = findSpectrumFormat(path, file);
    if (format == nullptr || format->name == kTextFormatName) {
        return file.whole ? FILL_IN_SPECDATA_ARRAYS(path, file.bytes, 0)
                          : FILL_IN_SPECDATA_ARRAYS(path, 0);
    }
    return readSpectra(*format, path, file, {}).front();
}

} // namespace

void finishInterruptedCompilation(const std::filesystem::path& libraryFolder) {
    finishInterruptedCommit(libraryFolder / kLibraryJournalFile, std::string(kLibraryErrorTitle));
}

bool isNotASpectrumFile(std::string_view fileName) {
    return fileName.starts_with(kLibraryFilePrefix) || fileName.starts_with(kConsistencyFilePrefix);
}

PreparedEntry prepareSearchEntry(const std::filesystem::path& folder, const std::string& fileName) {
    PreparedEntry entry;
    if (isNotASpectrumFile(fileName)) {
        entry.outcome = AppendOutcome::NotASpectrum;
        return entry;
    }
    entry.outcome = AppendOutcome::Skipped;
    if (fileName.find_first_of("\r\n") != std::string::npos) {
        entry.reason = "its name holds a line break";
        return entry;
    }
    SpectrumRecord spectrum;
    InterpData& fine = entry.fineGrid;
    InterpData& coarse = entry.coarseGrid;
    try {
        // The spectrum readers put the points in ascending x and merge duplicate x.
        spectrum = readReferenceSpectrum(folder / fileName);
        if (spectrum.x.empty()) {
            entry.reason = "no data lines";
            return entry;
        }
        fine = resampleSpectrum(spectrum.x, spectrum.y, kFineStep, true);
        coarse = resampleSpectrum(spectrum.x, spectrum.y, kCoarseStep, true);
    } catch (const QuarvexError& error) {
        entry.reason = error.text();
        return entry;
    }
    // Normalising an all-zero grid divides by zero: such an entry could never be matched.
    if (!hasFiniteValues(fine) || !hasFiniteValues(coarse)) {
        entry.reason = "no intensity on the resampling grid (fewer than two points, or all zero)";
        return entry;
    }

    const std::string_view name = trimmed(fileName);
    entry.slow.reserve(static_cast<std::size_t>(fine.capacity()) * 24 + 256);
    entry.fast.reserve(static_cast<std::size_t>(coarse.capacity()) * 24 + 256);
    appendBlock(entry.slow, name, fine);
    appendBlock(entry.fast, name, coarse);
    const MINERALINFO& header = spectrum.header;
    appendValueLine(entry.nameInfo, headerValue(header.id, kGreltIdKey));
    appendValueLine(entry.nameInfo, headerValue(header.names, kNamesKey));
    appendValueLine(entry.nameInfo, headerValue(header.locality, kLocalityKey));
    appendValueLine(entry.nameInfo, headerValue(header.chemistry, kChemistryKey));
    appendValueLine(entry.nameInfo, wavelengthCode(fileName));
    entry.outcome = AppendOutcome::Appended;
    return entry;
}

AppendOutcome READ_AND_APPEND_SEARCH_FILE(const std::filesystem::path& folder,
                                          const std::string& fileName, SearchFileStreams files,
                                          std::string& reason) {
    const PreparedEntry entry = prepareSearchEntry(folder, fileName);
    appendPreparedEntry(entry, files);
    if (entry.outcome == AppendOutcome::Skipped) {
        reason = entry.reason;
    }
    return entry.outcome;
}

LibraryCompilation CREATE_SEARCH_LIB(const std::filesystem::path& home,
                                     const ProgressCallback& progress,
                                     const CommitStepHook& beforeStep, unsigned workers) {
    LibraryCompilation result;
    result.folder = ramanLibraryFolder(home);
    SET_UP_FOLDERS(home);
    requireFolder(result.folder, kLibraryErrorTitle);
    finishInterruptedCompilation(result.folder);
    removeStaleTemporaryFiles(result.folder);
    reportProgress(progress, kCompilingStatus, 0.0);
    // Listed before any file is read: a file changed during the pass shows as changed next time.
    const auto listed = listReferenceFiles(result.folder);
    const std::vector<std::string> names = sortedFileNames(result.folder);
    LibraryFiles files(result.folder, beforeStep);
    // Written from the grids themselves: the same bytes as deriving it from the text files.
    GridCacheWriter cache(result.folder);
    if (workers == 0) {
        workers = std::max(1U, std::thread::hardware_concurrency());
    }
    // The next batch is prepared while this one is written: writing takes a quarter of the time.
    const auto prepare = [&](std::size_t first) {
        return std::async(std::launch::async, prepareBatch, std::cref(result.folder),
                          std::cref(names), first, std::min(first + kBatchSize, names.size()),
                          workers);
    };
    std::future<std::vector<PreparedEntry>> next;
    if (!names.empty()) {
        next = prepare(0);
    }
    for (std::size_t batch = 0; batch < names.size(); batch += kBatchSize) {
        const std::size_t end = std::min(batch + kBatchSize, names.size());
        const std::vector<PreparedEntry> entries = next.get();
        if (end < names.size()) {
            next = prepare(end);
        }
        for (std::size_t i = batch; i < end; ++i) {
            const std::string& name = names[i];
            const PreparedEntry& entry = entries[i - batch];
            if (name.starts_with(kLibraryFilePrefix)) {
                continue;
            }
            appendPreparedEntry(entry, files.entryStreams());
            if (entry.outcome == AppendOutcome::Appended) {
                cache.add(CacheGrid::Coarse, entry.coarseGrid.x, entry.coarseGrid.y);
                cache.add(CacheGrid::Fine, entry.fineGrid.x, entry.fineGrid.y,
                          fineNameOf(trimmed(name)));
            }
            if (entry.outcome == AppendOutcome::Skipped) {
                result.skipped.push_back({name, entry.reason});
            } else {
                // A "Consistency" report gets its name-list line too: from there on the name
                // list runs one line ahead of the other files, as the library has always done.
                files.nameList() << trimmed(name) << '\n';
                ++result.nameListLines;
                result.entries += entry.outcome == AppendOutcome::Appended ? 1 : 0;
            }
            reportProgress(progress, kCompilingStatus,
                           static_cast<double>(i + 1) / static_cast<double>(names.size()));
        }
    }
    files.commit();
    // Bound to the files just put in place by their fingerprint: without it (a read-only folder)
    // the search reads the text.
    if (const std::optional<LibraryFingerprint> fingerprint = libraryFingerprint(result.folder)) {
        cache.commit(*fingerprint);
    }
    writeLibraryManifest(result.folder, listed, result.entries);
    reportProgress(progress, kCompilingStatus, 1.0);
    return result;
}

} // namespace quarvex
