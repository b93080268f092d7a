// Writing a set of files all or nothing: each goes to a temporary file, and only when every one
// of them has been written are they renamed into place.
#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace quarvex {

class AtomicFile;

/// A set of files written together (an X-ray project).
class StagedFiles {
public:
    /// `errorTitle` is the title of the QuarvexError thrown on failure.
    explicit StagedFiles(std::string errorTitle);
    ~StagedFiles();
    StagedFiles(const StagedFiles&) = delete;
    StagedFiles& operator=(const StagedFiles&) = delete;

    /// A new file of the set, open for writing under a temporary name. Throws QuarvexError when
    /// it cannot be created or a folder stands in its place (the files staged so far are then
    /// dropped when the set is destroyed).
    std::ostream& add(const std::filesystem::path& destination);

    /// Flushes every file and checks that each was written, then renames them into place in
    /// the order they were added. Throws QuarvexError when a file could not be written (then no
    /// file has been replaced) or renamed.
    void commitAll();

private:
    std::string errorTitle_;
    std::vector<std::unique_ptr<AtomicFile>> files_;
};

} // namespace quarvex
