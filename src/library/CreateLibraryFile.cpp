#include "library/CreateLibraryFile.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/StagedFiles.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/RobustLibrary.h"
#include "processing/InterpAndNorm.h"
#include "readers/SpectrumFormats.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

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

// "x y": each float in its shortest decimal form, which a free-format reader reads back exactly.
void appendPoint(std::string& out, float x, float y) {
    std::array<char, 40> text{};
    char* end = std::to_chars(text.data(), text.data() + text.size(), x).ptr;
    *end++ = ' ';
    end = std::to_chars(end, text.data() + text.size(), y).ptr;
    *end++ = '\n';
    out.append(text.data(), end);
}

void appendBlock(std::string& out, std::string_view name, const InterpData& grid) {
    out.append(kSeparatorLine);
    out.append(name);
    out.push_back('\n');
    for (int i = 0; i < grid.capacity(); ++i) {
        appendPoint(out, grid.x[i], grid.y[i]);
    }
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
SpectrumRecord readReferenceSpectrum(const std::filesystem::path& path) {
    const SpectrumFormat* format = findSpectrumFormat(path);
    if (format == nullptr || format->name == kTextFormatName) {
        return FILL_IN_SPECDATA_ARRAYS(path, 0);
    }
    return format->read(path, {}).front();
}

} // namespace

void finishInterruptedCompilation(const std::filesystem::path& libraryFolder) {
    finishInterruptedCommit(libraryFolder / kLibraryJournalFile, std::string(kLibraryErrorTitle));
}

bool isNotASpectrumFile(std::string_view fileName) {
    return fileName.starts_with(kLibraryFilePrefix) || fileName.starts_with(kConsistencyFilePrefix);
}

AppendOutcome READ_AND_APPEND_SEARCH_FILE(const std::filesystem::path& folder,
                                          const std::string& fileName, SearchFileStreams files,
                                          std::string& reason) {
    if (isNotASpectrumFile(fileName)) {
        return AppendOutcome::NotASpectrum;
    }
    if (fileName.find_first_of("\r\n") != std::string::npos) {
        reason = "its name holds a line break";
        return AppendOutcome::Skipped;
    }
    SpectrumRecord spectrum;
    InterpData fine;
    InterpData coarse;
    try {
        // The spectrum readers put the points in ascending x and merge duplicate x.
        spectrum = readReferenceSpectrum(folder / fileName);
        if (spectrum.x.empty()) {
            reason = "no data lines";
            return AppendOutcome::Skipped;
        }
        fine = resampleSpectrum(spectrum.x, spectrum.y, kFineStep, true);
        coarse = resampleSpectrum(spectrum.x, spectrum.y, kCoarseStep, true);
    } catch (const QuarvexError& error) {
        reason = error.text();
        return AppendOutcome::Skipped;
    }
    // Normalising an all-zero grid divides by zero: such an entry could never be matched.
    if (!hasFiniteValues(fine) || !hasFiniteValues(coarse)) {
        reason = "no intensity on the resampling grid (fewer than two points, or all zero)";
        return AppendOutcome::Skipped;
    }

    const std::string_view name = trimmed(fileName);
    std::string text;
    text.reserve(static_cast<std::size_t>(fine.capacity()) * 24 + 256);
    appendBlock(text, name, fine);
    files.slow.write(text.data(), static_cast<std::streamsize>(text.size()));
    text.clear();
    appendBlock(text, name, coarse);
    files.fast.write(text.data(), static_cast<std::streamsize>(text.size()));
    text.clear();
    const MINERALINFO& header = spectrum.header;
    appendValueLine(text, headerValue(header.id, kGreltIdKey));
    appendValueLine(text, headerValue(header.names, kNamesKey));
    appendValueLine(text, headerValue(header.locality, kLocalityKey));
    appendValueLine(text, headerValue(header.chemistry, kChemistryKey));
    appendValueLine(text, wavelengthCode(fileName));
    files.nameInfo.write(text.data(), static_cast<std::streamsize>(text.size()));
    return AppendOutcome::Appended;
}

LibraryCompilation CREATE_SEARCH_LIB(const std::filesystem::path& home,
                                     const ProgressCallback& progress,
                                     const CommitStepHook& beforeStep) {
    LibraryCompilation result;
    result.folder = ramanLibraryFolder(home);
    SET_UP_FOLDERS(home);
    requireFolder(result.folder, kLibraryErrorTitle);
    finishInterruptedCompilation(result.folder);
    removeStaleTemporaryFiles(result.folder);
    reportProgress(progress, kCompilingStatus, 0.0);
    const std::vector<std::string> names = sortedFileNames(result.folder);
    LibraryFiles files(result.folder, beforeStep);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string& name = names[i];
        if (name.starts_with(kLibraryFilePrefix)) {
            continue;
        }
        std::string reason;
        const AppendOutcome outcome =
            READ_AND_APPEND_SEARCH_FILE(result.folder, name, files.entryStreams(), reason);
        if (outcome == AppendOutcome::Skipped) {
            result.skipped.push_back({name, reason});
        } else {
            // A "Consistency" report gets its name-list line too: from there on the name list
            // runs one line ahead of the other files, as the library has always done.
            files.nameList() << trimmed(name) << '\n';
            ++result.nameListLines;
            result.entries += outcome == AppendOutcome::Appended ? 1 : 0;
        }
        reportProgress(progress, kCompilingStatus,
                       static_cast<double>(i + 1) / static_cast<double>(names.size()));
    }
    files.commit();
    reportProgress(progress, kCompilingStatus, 1.0);
    return result;
}

} // namespace quarvex
