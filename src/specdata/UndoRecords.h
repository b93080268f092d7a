// Undo and redo of spectrum edits through undo records: plain-text files in the spectrum format
// in "UndoRecords/", so that an edited spectrum's earlier states survive a crash.
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kUndoTitle = "Undo";

/// One recorded state of one spectrum.
struct UndoEntry {
    std::filesystem::path file; ///< the record in "UndoRecords/"
    int spectrum = 0;           ///< index (0-based) of the spectrum it belongs to
    std::string spectrumPath;   ///< that spectrum's PATH, to tell a moved or deleted one
    std::size_t points = 0;     ///< points of the record, to tell a damaged record
    std::string label;          ///< the edit it undoes, e.g. "Background (ALS)"
};

/// The undo and redo stacks of a program run, newest last. Redo is possible until a new edit.
struct UndoHistory {
    std::vector<UndoEntry> undo;
    std::vector<UndoEntry> redo;
    int nextRecord = 1; ///< number of the next record file
};

/// Clears the undo records (called at start-up and at shut-down of the desktop program): every
/// "UNDO*.txt" in "UndoRecords/" below `home` is removed and the history emptied (at start-up,
/// records left by a crashed run; at shut-down, the run's own). Files that cannot be removed are
/// ignored.
void CREATE_APPEND_UNDO_FILE(UndoHistory& history, const std::filesystem::path& home);

/// Records the state of spectrum `index` before an edit named `label` and ends the redo chain.
/// Throws QuarvexError ("Undo") when the record cannot be written; nothing is then recorded.
void appendUndoRecord(UndoHistory& history, const std::filesystem::path& home,
                      const SPECDATA_GLOBALS& specdata, int index, std::string label);

/// Restores the state before the last edit and makes it redoable; returns its label. Throws
/// QuarvexError ("Undo") when there is nothing to undo, or when the record is missing, damaged
/// or its spectrum no longer loaded: the spectrum is then unchanged and the undo chain ends
/// there (the older records are dropped).
std::string undoLastEdit(UndoHistory& history, const std::filesystem::path& home,
                         SPECDATA_GLOBALS& specdata);

/// Re-applies the last undone edit; returns its label. Failures as undoLastEdit ("Redo").
std::string redoLastEdit(UndoHistory& history, const std::filesystem::path& home,
                         SPECDATA_GLOBALS& specdata);

} // namespace quarvex
