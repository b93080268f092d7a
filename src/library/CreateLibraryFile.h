// Compilation of the Raman library: every reference spectrum of the library folder resampled,
// normalised and appended to the four ".rsf" library files that the search reads.
#pragma once

#include "common/Progress.h"
#include "common/StagedFiles.h"
#include "processing/InterpAndNorm.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kSlowLibraryFile = "RamanSearchFileSlow.rsf";
inline constexpr std::string_view kFastLibraryFile = "RamanSearchFileFast.rsf";
inline constexpr std::string_view kNameListFile = "RamanSearchNameList.rsf";
inline constexpr std::string_view kNameInfoFile = "RamanSearchNameInfo.rsf";
/// The journal of a compilation putting its four files in place (see StagedFiles).
inline constexpr std::string_view kLibraryJournalFile = "RamanSearchFiles.quarvex-journal";

/// Files whose names begin with this are the library's own files, never reference spectra.
inline constexpr std::string_view kLibraryFilePrefix = "RamanSearch";
/// Report files of the library consistency exam: listed in the name list, not compiled.
inline constexpr std::string_view kConsistencyFilePrefix = "Consistency";

/// True for the library's own files and consistency reports: never read as spectra.
bool isNotASpectrumFile(std::string_view fileName);

/// Status text of a compilation.
inline constexpr std::string_view kCompilingStatus = "Compiling Library...";
/// Title of the library's error messages (compilation and search).
inline constexpr std::string_view kLibraryErrorTitle = "Raman Library";

/// Grid steps of the fine ("Slow") and coarse ("Fast") library files, in cm-1.
inline constexpr float kFineStep = 1.0F;
inline constexpr float kCoarseStep = 2.0F;

/// A file of the library folder that was left out of the library, and why.
struct SkippedFile {
    std::string name;
    std::string reason;
};

/// What a compilation did.
struct LibraryCompilation {
    std::filesystem::path folder; ///< the library folder
    int entries = 0;              ///< entries of the Slow, Fast and name-information files
    int nameListLines = 0;        ///< lines of the name list (entries + "Consistency" files)
    std::vector<SkippedFile> skipped;
};

/// Compiles the library of `home`: creates the working folders when missing, lists the files
/// of "SearchRecords/RamanLib/" sorted by name (byte order, the same on every machine) and, for
/// every file whose name does not begin with "RamanSearch", writes its name to the name list and
/// appends its entry to the other three files. A file that cannot be read as a spectrum or has
/// nothing to put on the grid is skipped in all four files alike and reported. The four files
/// are written under temporary names and put in place only after the whole pass, so a failed or
/// interrupted compilation leaves the previous library whole (after a kill, the four files are
/// all old or, once finishInterruptedCompilation ran, all new). It first removes the temporary
/// files of killed compilations. Progress: "Compiling Library...". Throws QuarvexError (title
/// "Raman Library") when the folder cannot be created or listed or the files cannot be
/// written. The reference files are read by `workers` threads (0: one per core), a batch at a
/// time, and their entries written in folder order: the files are the same whatever the number.
/// `beforeStep` is for tests (see StagedFiles).
LibraryCompilation CREATE_SEARCH_LIB(const std::filesystem::path& home,
                                     const ProgressCallback& progress = {},
                                     const CommitStepHook& beforeStep = {}, unsigned workers = 0);

/// Completes the putting in place of the library files that a killed compilation cut short;
/// every reader of the library calls it first.
void finishInterruptedCompilation(const std::filesystem::path& libraryFolder);

/// The three files an entry is appended to (the caller writes the name-list line).
struct SearchFileStreams {
    std::ostream& slow;
    std::ostream& fast;
    std::ostream& nameInfo;
};

/// Appends the data line "x y" of one grid point: each float in its shortest text, which reads
/// back bit for bit.
void appendGridPoint(std::string& out, float x, float y);

/// What READ_AND_APPEND_SEARCH_FILE did with one file.
enum class AppendOutcome {
    Appended,     ///< one entry added to each of the three files
    NotASpectrum, ///< a "RamanSearch" or "Consistency" file: nothing written
    Skipped       ///< unreadable, no data, or nothing on the grid: nothing written, see `reason`
};

/// One reference file's entry ready to be appended: what READ_AND_APPEND_SEARCH_FILE would write.
struct PreparedEntry {
    AppendOutcome outcome = AppendOutcome::Skipped;
    std::string reason; ///< why it was skipped
    std::string slow;
    std::string fast;
    std::string nameInfo;
    InterpData fineGrid; ///< the grid the Slow entry was written from (the grid cache's)
    InterpData coarseGrid;
};

/// The entry of the reference file `fileName` of `folder`, written to no file (safe to call from
/// several threads at once).
PreparedEntry prepareSearchEntry(const std::filesystem::path& folder, const std::string& fileName);

/// Reads the reference spectrum `fileName` of `folder` and appends its entry: to the Slow and
/// Fast streams a block of "==", the trimmed file name and one "x y" line per grid point (steps
/// 1.0 and 2.0, normalised; each float in its shortest text, which reads back bit for bit), to
/// the name information the identifier, names, locality, chemistry (blank when missing) and the
/// wavelength code taken from the file name. Nothing is written unless all of it can be.
AppendOutcome READ_AND_APPEND_SEARCH_FILE(const std::filesystem::path& folder,
                                          const std::string& fileName, SearchFileStreams files,
                                          std::string& reason);

} // namespace quarvex
