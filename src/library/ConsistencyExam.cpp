#include "library/ConsistencyExam.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace quarvex {

namespace {

// Searches the entry's own reference file and records where the entry and its closest rival
// stand; `library` keeps the descriptions between searches.
void examineEntry(const std::filesystem::path& folder, ExaminedEntry& exam,
                  LIBRARY_GLOBALS& library) {
    if (isNotASpectrumFile(exam.fileName)) {
        exam.problem = "not a spectrum: a report file in the library folder takes a name-list "
                       "line but no entry, so the entries that follow are listed one line late";
        return;
    }
    try {
        const SpectrumRecord spectrum = FILL_IN_SPECDATA_ARRAYS(folder / exam.fileName, 0);
        if (spectrum.x.empty()) {
            exam.problem = "no data lines";
            return;
        }
        READ_LIBRARY(folder, spectrum.x, spectrum.y, library);
    } catch (const QuarvexError& error) {
        exam.problem = error.text();
        return;
    }
    const auto own = static_cast<std::size_t>(exam.entry - 1);
    exam.selfScore = library.PERC_MATCH[own];
    const std::vector<int>& ranking = library.MI_SORTINDEXPERCENTS;
    for (std::size_t r = 0; r < ranking.size(); ++r) {
        const auto k = static_cast<std::size_t>(ranking[r]);
        if (k == own) {
            exam.rank = static_cast<int>(r) + 1;
        } else if (exam.closest == 0) {
            exam.closest = static_cast<int>(k) + 1;
            exam.closestScore = library.PERC_MATCH[k];
        }
    }
}

std::string formatted(const char* format, double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string findings(const ExaminedEntry& exam, const std::vector<ExaminedEntry>& entries) {
    if (!exam.problem.empty()) {
        return exam.problem;
    }
    std::vector<std::string> notes;
    if (!exam.ranksFirst()) {
        notes.push_back("ranked " + std::to_string(exam.rank) + ", behind entry " +
                        std::to_string(exam.closest));
    }
    if (!exam.scoresFull()) {
        notes.emplace_back("its own score is below 100: the file changed since the library was "
                           "compiled, or its entry is out of step");
    }
    if (exam.hasCloseEntry()) {
        const ExaminedEntry& other = entries[static_cast<std::size_t>(exam.closest - 1)];
        notes.push_back("close to entry " + std::to_string(exam.closest) + " (" + other.fileName +
                        ")");
    }
    std::string text;
    for (const std::string& note : notes) {
        text += (text.empty() ? "" : "; ") + note;
    }
    return text;
}

std::string rightAligned(int value, std::size_t width) {
    const std::string text = std::to_string(value);
    return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

std::string timestamp() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::array<char, 32> text{};
    std::tm local{};
    localtime_r(&now, &local); // the exam may run on a worker thread
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
    return text.data();
}

void writeReport(const ConsistencyExamResult& result) {
    AtomicFile file(result.report);
    std::ofstream& out = file.stream();
    out << "Raman Library Consistency Exam\n"
        << "Library: " << result.libraryFolder.string() << '\n'
        << "Examined: " << timestamp() << '\n'
        << "Each reference file was read again and its whole range searched against the "
           "library.\n"
        << "An entry passes when it ranks first, scores " << formatted("%.2f", kSelfScoreFloor)
        << " or more itself, and no other entry scores " << formatted("%.0f", kCloseEntryScore)
        << " or more.\n\n"
        << "Entry   Score  Rank  Closest   Score  File (names)\n";
    for (const ExaminedEntry& exam : result.entries) {
        const bool searched = exam.problem.empty();
        out << rightAligned(exam.entry, 5)
            << (searched ? formatted("%8.2f", exam.selfScore) : std::string(8, ' '))
            << (searched ? rightAligned(exam.rank, 6) : std::string(6, ' '))
            << (searched && exam.closest > 0
                    ? rightAligned(exam.closest, 9) + formatted("%8.2f", exam.closestScore)
                    : std::string(17, ' '))
            << "  " << exam.fileName << (exam.names.empty() ? "" : " (" + exam.names + ")") << '\n';
        if (!exam.passes()) {
            out << std::string(36, ' ') << "! " << findings(exam, result.entries) << '\n';
        }
    }
    out << '\n' << result.summary() << '\n';
    if (!file.commit()) {
        throw QuarvexError("The consistency report " + result.report.string() +
                               " could not be written.",
                           std::string(kLibraryErrorTitle));
    }
}

} // namespace

int ConsistencyExamResult::notFirst() const {
    return static_cast<int>(std::count_if(entries.begin(), entries.end(), [](const auto& e) {
        return e.problem.empty() && !e.ranksFirst();
    }));
}

int ConsistencyExamResult::notFull() const {
    return static_cast<int>(std::count_if(entries.begin(), entries.end(), [](const auto& e) {
        return e.problem.empty() && !e.scoresFull();
    }));
}

int ConsistencyExamResult::withCloseEntry() const {
    return static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                          [](const auto& e) { return e.hasCloseEntry(); }));
}

int ConsistencyExamResult::withProblem() const {
    return static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                          [](const auto& e) { return !e.problem.empty(); }));
}

std::string ConsistencyExamResult::summary() const {
    const auto passed =
        std::count_if(entries.begin(), entries.end(), [](const auto& e) { return e.passes(); });
    return std::to_string(entries.size()) + " entries examined, " + std::to_string(passed) +
           " passed: " + std::to_string(notFirst()) + " not ranked first, " +
           std::to_string(notFull()) + " not scoring 100 themselves, " +
           std::to_string(withCloseEntry()) + " with another entry scoring " +
           formatted("%.0f", kCloseEntryScore) + " or more, " + std::to_string(withProblem()) +
           " not searchable.";
}

ConsistencyExamResult runConsistencyExam(const std::filesystem::path& home,
                                         const ProgressCallback& progress) {
    ConsistencyExamResult result;
    result.compilation = compileLibraryWhenMissing(home, progress);
    result.libraryFolder = ramanLibraryFolder(home);
    result.report = home / kSearchRecordsFolder / kConsistencyReportFile;

    LIBRARY_GLOBALS library = loadLibraryEntries(result.libraryFolder);
    if (library.count() == 0) {
        throw QuarvexError("The Raman library in " + result.libraryFolder.string() +
                               " is empty: there is nothing to examine.",
                           std::string(kLibraryErrorTitle));
    }
    const std::size_t count = library.MI_FILENAMES.size();
    result.entries.resize(count);
    for (std::size_t k = 0; k < count; ++k) {
        result.entries[k].entry = static_cast<int>(k) + 1;
        result.entries[k].fileName = library.MI_FILENAMES[k];
        result.entries[k].names = library.MINAMES[k];
    }
    reportProgress(progress, kConsistencyStatus, 0.0);
    for (std::size_t k = 0; k < count; ++k) {
        examineEntry(result.libraryFolder, result.entries[k], library);
        reportProgress(progress, kConsistencyStatus,
                       static_cast<double>(k + 1) / static_cast<double>(count));
    }
    writeReport(result);
    return result;
}

} // namespace quarvex
