// Writing a set of files all or nothing, even across a kill or a power cut: each goes to a
// temporary file; when every one is on disk, a journal naming the renames is put in place (the
// moment the new set counts as written), then the renames are made and the journal removed.
// Whoever next uses the files completes renames that a kill cut short (finishInterruptedCommit).
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace quarvex {

class AtomicFile;

/// Called before each step of a commit with the step's number (tests make the commit fail or
/// the process end there): steps 0 to n-1 write the n files out, step n puts the journal in
/// place, steps n+1 to 2n rename the files, step 2n+1 removes the journal.
using CommitStepHook = std::function<void(int step)>;

/// A set of files written together (an X-ray project, the Raman library).
class StagedFiles {
public:
    /// `journal` is the file that records the renames while they are made; it lies in the
    /// folder that holds every file of the set or above it. `errorTitle` is the title of the
    /// QuarvexError thrown on failure.
    StagedFiles(std::filesystem::path journal, std::string errorTitle,
                CommitStepHook beforeStep = {});
    ~StagedFiles();
    StagedFiles(const StagedFiles&) = delete;
    StagedFiles& operator=(const StagedFiles&) = delete;

    /// A new file of the set, open for writing under a temporary name. Throws QuarvexError when
    /// it cannot be created or a folder stands in its place (the files staged so far are then
    /// dropped when the set is destroyed).
    std::ostream& add(const std::filesystem::path& destination);

    /// Writes every file to disk, then the journal, then renames them into place in the order
    /// they were added. Throws QuarvexError when a file could not be written (then no file has
    /// been replaced) or renamed (then the journal stays for finishInterruptedCommit).
    void commitAll();

private:
    void step(int number) const;
    [[noreturn]] void fail(const std::string& text) const;

    std::filesystem::path journal_;
    std::string errorTitle_;
    CommitStepHook beforeStep_;
    std::vector<std::unique_ptr<AtomicFile>> files_;
};

/// Completes the commit whose journal is `journal`, if a kill cut it short: every staged file
/// still there is renamed into place, then the journal is removed. Throws QuarvexError (with
/// `errorTitle`) when the journal cannot be read or a rename fails.
void finishInterruptedCommit(const std::filesystem::path& journal, const std::string& errorTitle);

} // namespace quarvex
