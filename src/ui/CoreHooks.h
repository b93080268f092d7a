// The core operations the main window runs at start-up and for the consistency exam, behind
// replaceable functions so that tests can watch the start-up order.
#pragma once

#include "common/Progress.h"
#include "library/ConsistencyExam.h"
#include "library/CreateLibraryFile.h"
#include "shell/ProgramState.h"

#include <functional>
#include <optional>

namespace quarvex::ui {

/// Run by the window in a worker thread behind a progress dialog; an empty function is skipped.
struct CoreHooks {
    /// The library compilation of start-up (progress "Compiling Library..."); nullopt when it
    /// did not compile.
    std::function<std::optional<LibraryCompilation>(ProgramState&, const ProgressCallback&)>
        compileLibraryAtStart;
    /// What follows a Yes to the consistency-exam question (progress "Running Consistency
    /// Exam...").
    std::function<ConsistencyExamResult(ProgramState&, const ProgressCallback&)> consistencyExam;
};

/// The program's own: at start the library of the home folder is compiled when the preference
/// `compileLibraryAtStart` is set, or else only when "RamanSearchFileSlow.rsf" is missing; the
/// consistency exam examines the library of the home folder.
CoreHooks defaultCoreHooks();

/// One line on a compilation for the status bar: entries, and the files left out.
std::string compilationSummary(const LibraryCompilation& compilation);

/// The status bar's line when start-up found the library as its last compilation left it:
/// "Library up to date (N entries)".
std::string upToDateSummary(int entries);

} // namespace quarvex::ui
