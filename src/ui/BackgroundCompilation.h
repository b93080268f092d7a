// The start-up compilation of a changed library, run on a worker thread once the window shows.
#pragma once

#include "common/Progress.h"
#include "library/CreateLibraryFile.h"

#include <QObject>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

class QThread;

namespace quarvex::ui {

/// Whatever reads or writes the library (a search, Compile Library, the consistency exam) first
/// waits for it in its own job (wait()), so that it never meets files being written.
class BackgroundCompilation : public QObject {
    Q_OBJECT

public:
    using Job = std::function<std::optional<LibraryCompilation>(const ProgressCallback&)>;

    explicit BackgroundCompilation(QObject* parent = nullptr);
    /// A compilation still running is cancelled (the library stays as it was) and waited for.
    ~BackgroundCompilation() override;

    /// Runs `job` on a worker thread; `finished` follows on this object's thread.
    void start(Job job);

    /// True from start() until the job has ended.
    bool isRunning() const;

    /// From a worker thread: returns once the compilation has ended (at once when none runs),
    /// passing its status and fraction on to `progress` meanwhile. An exception thrown by
    /// `progress` (OperationCancelled) ends the waiting, not the compilation.
    void wait(const ProgressCallback& progress) const;

    /// Once finished: what the job gave (nullopt when it did not compile); rethrows its
    /// QuarvexError.
    std::optional<LibraryCompilation> result() const;

signals:
    void finished();

private:
    void report(std::string_view status, double fraction);

    std::unique_ptr<QThread> thread_;
    std::atomic<bool> cancelled_ = false;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool running_ = false;
    std::string status_;
    double fraction_ = 0.0;
    std::optional<LibraryCompilation> result_;
    std::exception_ptr failure_;
};

} // namespace quarvex::ui
