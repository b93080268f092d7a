// Running a long core operation (library compilation, search, refinement) without freezing
// the window.
#pragma once

#include "common/Progress.h"

#include <QString>

#include <functional>

class QWidget;

namespace quarvex::ui {

/// Runs `job` on a worker thread while a window-modal progress dialog titled `title` shows the
/// status text and fraction the job reports; the dialog appears only when the job lasts longer
/// than 0.4 s. The window keeps painting, but the user's input is held back meanwhile, so the
/// job alone touches the program state until it ends (the core is single-threaded). Returns
/// when the job has ended; an exception of the job is rethrown here, on the window's thread.
void runWithProgress(QWidget* parent, const QString& title,
                     const std::function<void(const ProgressCallback&)>& job);

/// As runWithProgress, with a Cancel button on the dialog (Escape and closing it cancel too):
/// the job's next progress report after a cancel throws OperationCancelled. Returns false when
/// the job ended so, true when it ran to its end.
[[nodiscard]] bool
runCancellableWithProgress(QWidget* parent, const QString& title,
                           const std::function<void(const ProgressCallback&)>& job);

} // namespace quarvex::ui
