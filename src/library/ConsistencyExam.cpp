#include "library/ConsistencyExam.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/LibraryGrids.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <exception>
#include <mutex>
#include <thread>

namespace quarvex {

namespace {

// One thread's scores and ranking of the search of one entry's spectrum.
struct SearchScratch {
    std::vector<double> scores;
    std::vector<int> ranking;
};

// Searches the entry's own reference file against the library held in memory, exactly as
// READ_LIBRARY would, and records where the entry and its closest rival stand.
void examineEntry(const std::filesystem::path& folder, ExaminedEntry& exam,
                  const LibraryGrids& grids, const TextColumn& names, SearchScratch& search) {
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
        search.scores.assign(names.size(), 0.0);
        scoreLibraryGrids(grids, names, unknownOnSearchGrids(spectrum.x, spectrum.y), search.scores,
                          search.ranking);
    } catch (const QuarvexError& error) {
        exam.problem = error.text();
        return;
    }
    const auto own = static_cast<std::size_t>(exam.entry - 1);
    exam.selfScore = search.scores[own];
    for (std::size_t r = 0; r < search.ranking.size(); ++r) {
        const auto k = static_cast<std::size_t>(search.ranking[r]);
        if (k == own) {
            exam.rank = static_cast<int>(r) + 1;
        } else if (exam.closest == 0) {
            exam.closest = static_cast<int>(k) + 1;
            exam.closestScore = search.scores[k];
        }
    }
}

// Examines every entry on `workers` threads while the calling thread reports progress after
// each entry examined: a GUI's callback need not be thread-safe. When the callback throws (a
// cancel), the workers stop after their current entry and the exception goes on once they have.
class ParallelExam {
public:
    ParallelExam(const std::filesystem::path& folder, std::vector<ExaminedEntry>& entries,
                 const LibraryGrids& grids, const TextColumn& names)
        : folder_(folder), entries_(entries), grids_(grids), names_(names) {}

    void run(const ProgressCallback& progress, unsigned workers) {
        {
            std::vector<std::jthread> threads;
            for (unsigned w = 0; w < workers; ++w) {
                threads.emplace_back([this] { work(); });
            }
            try {
                reportUntilDone(progress, workers);
            } catch (...) {
                stop_ = true;
                throw; // after the threads joined
            }
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

private:
    void work() {
        try {
            SearchScratch search;
            for (std::size_t k = 0; !stop_ && (k = next_++) < entries_.size();) {
                examineEntry(folder_, entries_[k], grids_, names_, search);
                const std::lock_guard lock(guard_);
                ++done_;
                changed_.notify_one();
            }
        } catch (...) {
            stop_ = true;
            const std::lock_guard lock(guard_);
            if (!failure_) {
                failure_ = std::current_exception();
            }
        }
        const std::lock_guard lock(guard_);
        ++finishedWorkers_;
        changed_.notify_one();
    }

    void reportUntilDone(const ProgressCallback& progress, unsigned workers) {
        std::size_t reported = 0;
        std::unique_lock lock(guard_);
        while (finishedWorkers_ < workers) {
            changed_.wait(lock, [&] { return done_ != reported || finishedWorkers_ == workers; });
            reported = done_;
            lock.unlock();
            reportProgress(progress, kConsistencyStatus,
                           static_cast<double>(reported) / static_cast<double>(entries_.size()));
            lock.lock();
        }
    }

    const std::filesystem::path& folder_;
    std::vector<ExaminedEntry>& entries_;
    const LibraryGrids& grids_;
    const TextColumn& names_;
    std::atomic<std::size_t> next_{0};
    std::atomic<bool> stop_{false};
    std::mutex guard_;
    std::condition_variable changed_;
    std::size_t done_ = 0;
    unsigned finishedWorkers_ = 0;
    std::exception_ptr failure_;
};

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
                                         const ProgressCallback& progress, unsigned workers) {
    ConsistencyExamResult result;
    result.compilation = compileLibraryWhenMissing(home, progress);
    result.libraryFolder = ramanLibraryFolder(home);
    result.report = home / kSearchRecordsFolder / kConsistencyReportFile;

    const LIBRARY_GLOBALS library = loadLibraryEntries(result.libraryFolder);
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
    const LibraryGrids grids = LibraryGrids::load(result.libraryFolder);
    if (workers == 0) {
        workers = std::max(1U, std::thread::hardware_concurrency());
    }
    ParallelExam(result.libraryFolder, result.entries, grids, library.MI_FILENAMES)
        .run(progress, workers);
    reportProgress(progress, kConsistencyStatus, 1.0);
    writeReport(result);
    return result;
}

} // namespace quarvex
