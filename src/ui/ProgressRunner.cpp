// A worker thread for one long operation, with a progress dialog fed from it.
#include "ui/ProgressRunner.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>

namespace quarvex::ui {

namespace {

constexpr int kProgressSteps = 1000;
constexpr int kDialogDelayMs = 400; // quicker jobs end before any dialog flashes up

// Keeps the user's hands off the program while a job runs: input and close requests are
// dropped until the job ends (the dialog, once shown, is window-modal as well).
class InputBlocker : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
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
            return true;
        default:
            return false;
        }
    }
};

} // namespace

void runWithProgress(QWidget* parent, const QString& title,
                     const std::function<void(const ProgressCallback&)>& job) {
    QProgressDialog dialog(parent);
    dialog.setWindowTitle(title);
    dialog.setLabelText(title);
    dialog.setCancelButton(nullptr); // core operations run to their end
    dialog.setRange(0, kProgressSteps);
    dialog.setMinimumDuration(0);
    dialog.setAutoReset(false);
    dialog.setAutoClose(false);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumWidth(420);

    // Reports cross to the window's thread as queued calls; ones still queued when the dialog
    // is gone are dropped with it.
    const ProgressCallback progress = [&dialog](std::string_view status, double fraction) {
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
    QEventLoop loop;
    std::unique_ptr<QThread> worker(QThread::create([&job, &progress, &failure] {
        try {
            job(progress);
        } catch (...) {
            failure = std::current_exception();
        }
    }));
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    InputBlocker blocker;
    QApplication::instance()->installEventFilter(&blocker);
    worker->start();
    QTimer::singleShot(kDialogDelayMs, &dialog, [&dialog] { dialog.show(); });
    loop.exec();
    worker->wait();
    QApplication::instance()->removeEventFilter(&blocker);
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace quarvex::ui
