// The consistency exam of the Raman library: every reference spectrum is read again and searched
// against the library, as a user's search of it would run, to find entries that do not find
// themselves first, near duplicates, and reference files that changed or broke since the
// library was compiled.
#pragma once

#include "common/Progress.h"
#include "library/CreateLibraryFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Status text of the exam.
inline constexpr std::string_view kConsistencyStatus = "Running Consistency Exam...";
/// The report, in "SearchRecords/" of the home folder. Not in the library folder: a file there
/// whose name begins with "Consistency" takes a line of the name list at the next compilation.
inline constexpr std::string_view kConsistencyReportFile = "ConsistencyReport.txt";
/// An entry whose own search scores less than this has changed since the library was compiled.
inline constexpr double kSelfScoreFloor = 99.99;
/// Another entry scoring at least this against an entry's spectrum is reported as close to it.
inline constexpr double kCloseEntryScore = 95.0;

/// The exam of one name-list line.
struct ExaminedEntry {
    int entry = 0;        ///< its place in the library, from 1
    std::string fileName; ///< its name-list line
    std::string names;    ///< its mineral name from the name information
    /// Why the entry's spectrum could not be searched (not read, no intensity, a report file of
    /// an earlier exam in the library folder); empty when it was.
    std::string problem;
    double selfScore = 0.0; ///< the entry's own score in the search of its spectrum
    int rank = 0;           ///< the entry's own rank in that search, from 1
    int closest = 0;        ///< the best-scoring other entry, from 1 (0: none)
    double closestScore = 0.0;

    bool ranksFirst() const { return problem.empty() && rank == 1; }
    bool scoresFull() const { return problem.empty() && selfScore >= kSelfScoreFloor; }
    bool hasCloseEntry() const { return problem.empty() && closestScore >= kCloseEntryScore; }
    bool passes() const { return ranksFirst() && scoresFull() && !hasCloseEntry(); }
};

/// What the exam found, and where its report is.
struct ConsistencyExamResult {
    std::filesystem::path libraryFolder;
    std::filesystem::path report;
    std::optional<LibraryCompilation> compilation; ///< set when the library was compiled first
    std::vector<ExaminedEntry> entries;

    int notFirst() const;
    int notFull() const;
    int withCloseEntry() const;
    int withProblem() const;
    /// One sentence of counts, for the report, a message box or a terminal.
    std::string summary() const;
};

/// Examines the library of `home` (compiled first when "RamanSearchFileSlow.rsf" is missing):
/// for every name-list line the reference file of that name is read from the library folder and
/// its whole range searched as READ_LIBRARY searches it; its own score and rank and the best
/// other entry are recorded. Writes the report (through a temporary file) to
/// "SearchRecords/ConsistencyReport.txt". The library's grids are held in memory once (see
/// LibraryGrids) and the entries searched on `workers` threads (0: one per core), with the
/// scores of separate searches bit for bit. Progress: "Running Consistency Exam...", reported
/// from the calling thread only. Throws QuarvexError: "Library File Needs To Be Compiled", an
/// empty library, or a report that cannot be written (title "Raman Library").
ConsistencyExamResult runConsistencyExam(const std::filesystem::path& home,
                                         const ProgressCallback& progress = {},
                                         unsigned workers = 0);

} // namespace quarvex
