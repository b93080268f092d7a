// A worker thread for the start-up compilation, and the waiting of the library's other users.
#include "ui/BackgroundCompilation.h"

#include <QThread>

#include <chrono>

namespace quarvex::ui {

namespace {

// How often a waiter passes the compilation's progress on (and can be cancelled).
constexpr std::chrono::milliseconds kWaitingStep{50};

} // namespace

BackgroundCompilation::BackgroundCompilation(QObject* parent) : QObject(parent) {}

BackgroundCompilation::~BackgroundCompilation() {
    if (thread_) {
        cancelled_ = true; // the next progress report ends the compilation
        thread_->wait();
    }
}

void BackgroundCompilation::start(Job job) {
    if (thread_) {
        thread_->wait();
    }
    {
        const std::lock_guard lock(mutex_);
        running_ = true;
        status_ = kCompilingStatus;
        fraction_ = 0.0;
        result_.reset();
        failure_ = nullptr;
    }
    thread_.reset(QThread::create([this, job = std::move(job)] {
        std::optional<LibraryCompilation> compiled;
        std::exception_ptr failure;
        try {
            compiled =
                job([this](std::string_view status, double fraction) { report(status, fraction); });
        } catch (const OperationCancelled&) {
            // only the window's end cancels: nobody is left to tell
        } catch (...) {
            failure = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        running_ = false;
        result_ = std::move(compiled);
        failure_ = failure;
        changed_.notify_all();
    }));
    connect(thread_.get(), &QThread::finished, this, &BackgroundCompilation::finished,
            Qt::QueuedConnection);
    thread_->start(QThread::LowPriority); // the window's first paint comes first
}

void BackgroundCompilation::report(std::string_view status, double fraction) {
    if (cancelled_) {
        throw OperationCancelled();
    }
    const std::lock_guard lock(mutex_);
    status_ = status;
    fraction_ = fraction;
}

bool BackgroundCompilation::isRunning() const {
    const std::lock_guard lock(mutex_);
    return running_;
}

void BackgroundCompilation::wait(const ProgressCallback& progress) const {
    for (;;) {
        std::string status;
        double fraction = 0.0;
        bool running = false;
        {
            std::unique_lock lock(mutex_);
            changed_.wait_for(lock, kWaitingStep, [this] { return !running_; });
            running = running_;
            status = status_;
            fraction = fraction_;
        }
        if (!running) {
            return;
        }
        reportProgress(progress, status, fraction);
    }
}

std::optional<LibraryCompilation> BackgroundCompilation::result() const {
    const std::lock_guard lock(mutex_);
    if (failure_) {
        std::rethrow_exception(failure_);
    }
    return result_;
}

} // namespace quarvex::ui
