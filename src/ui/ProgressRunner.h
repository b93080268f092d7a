// Running a long core operation (library compilation, search, refinement) without freezing
// the window.
#pragma once

#include "common/Progress.h"

#include <QString>

#include <functional>

class QWidget;

namespace quarvex::ui {

/// Runs `job` on a worker thread while a window-modal progress dialog titled `title` shows the
/// status text and fraction the job reports. The window keeps painting, but the dialog keeps
/// the user away from the program state, which the job alone touches until it ends (the core is
/// single-threaded). Returns when the job has ended; an exception of the job is rethrown here,
/// on the window's thread.
void runWithProgress(QWidget* parent, const QString& title,
                     const std::function<void(const ProgressCallback&)>& job);

} // namespace quarvex::ui
