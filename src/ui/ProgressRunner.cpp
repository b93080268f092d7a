// A worker thread for one long operation, with a progress dialog fed from it.
#include "ui/ProgressRunner.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <memory>

namespace quarvex::ui {

namespace {

constexpr int kProgressSteps = 1000;
constexpr int kDialogDelayMs = 400; // quicker jobs end before any dialog flashes up

// Keeps the user's hands off the program while a job runs: input and close requests are
// dropped until the job ends (the dialog, once shown, is window-modal as well), except those to
// a dialog that can be cancelled.
class InputBlocker : public QObject {
public:
    explicit InputBlocker(const QWidget* cancellable) : cancellable_(cancellable) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::Drop:
        case QEvent::Close:
            return !isForTheDialog(watched);
        default:
            return false;
        }
    }

private:
    bool isForTheDialog(QObject* watched) const {
        const auto* widget = qobject_cast<const QWidget*>(watched);
        return cancellable_ != nullptr && widget != nullptr &&
               (widget == cancellable_ || cancellable_->isAncestorOf(widget));
    }

    const QWidget* cancellable_;
};

// The job on a worker thread behind the dialog; false when it was cancelled.
bool runJob(QWidget* parent, const QString& title,
            const std::function<void(const ProgressCallback&)>& job, bool cancellable) {
    QProgressDialog dialog(parent);
    dialog.setWindowTitle(title);
    dialog.setLabelText(title);
    if (!cancellable) {
        dialog.setCancelButton(nullptr); // such core operations run to their end
    }
    dialog.setRange(0, kProgressSteps);
    dialog.setMinimumDuration(0);
    dialog.setAutoReset(false);
    dialog.setAutoClose(false);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumWidth(420);

    std::atomic<bool> cancelRequested = false;
    QObject::connect(&dialog, &QProgressDialog::canceled,
                     [&cancelRequested] { cancelRequested = true; });

    // Reports cross to the window's thread as queued calls; ones still queued when the dialog
    // is gone are dropped with it.
    const ProgressCallback progress = [&dialog, &cancelRequested](std::string_view status,
                                                                  double fraction) {
        if (cancelRequested) {
            throw OperationCancelled();
        }
        const QString text =
            QString::fromUtf8(status.data(), static_cast<qsizetype>(status.size()));
        const int value = static_cast<int>(
            std::lround(std::clamp(fraction, 0.0, 1.0) * static_cast<double>(kProgressSteps)));
        QMetaObject::invokeMethod(
            &dialog,
            [&dialog, text, value] {
                dialog.setLabelText(text);
                dialog.setValue(value);
            },
            Qt::QueuedConnection);
    };

    std::exception_ptr failure;
    bool cancelled = false;
    QEventLoop loop;
    std::unique_ptr<QThread> worker(QThread::create([&job, &progress, &failure, &cancelled] {
        try {
            job(progress);
        } catch (const OperationCancelled&) {
            cancelled = true;
        } catch (...) {
            failure = std::current_exception();
        }
    }));
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    InputBlocker blocker(cancellable ? &dialog : nullptr);
    QApplication::instance()->installEventFilter(&blocker);
    worker->start();
    QTimer::singleShot(kDialogDelayMs, &dialog, [&dialog] { dialog.show(); });
    loop.exec();
    worker->wait();
    QApplication::instance()->removeEventFilter(&blocker);
    if (failure) {
        std::rethrow_exception(failure);
    }
    return !cancelled;
}

} // namespace

void runWithProgress(QWidget* parent, const QString& title,
                     const std::function<void(const ProgressCallback&)>& job) {
    runJob(parent, title, job, false);
}

bool runCancellableWithProgress(QWidget* parent, const QString& title,
                                const std::function<void(const ProgressCallback&)>& job) {
    return runJob(parent, title, job, true);
}

} // namespace quarvex::ui
