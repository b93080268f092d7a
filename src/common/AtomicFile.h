// Safe writing of the program's own files: write to a temporary file, then rename it into place.
#pragma once

#include <filesystem>
#include <fstream>
#include <string_view>

namespace quarvex {

/// Every temporary file of the program has this in its name: "<destination>.quarvex-tmp-<process
/// id>-<count>", so that the leftovers of a killed process can be told apart and removed.
inline constexpr std::string_view kTemporaryMarker = ".quarvex-tmp-";

/// Writes a file under a temporary name beside its destination. `commit()` flushes it, forces it
/// to disk and renames it over the destination, then forces the folder to disk: after a power
/// cut the destination is either the old file or the new one, never empty or partial. A commit
/// also removes what killed writers of the same destination left (removeStaleTemporaryFiles). If
/// the writer is destroyed without a successful commit (or keepTemporary), the temporary file is
/// removed and the destination is left as it was.
class AtomicFile {
public:
    explicit AtomicFile(std::filesystem::path destination);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// False when the temporary file could not be created.
    bool isOpen() const { return stream_.is_open(); }

    std::ofstream& stream() { return stream_; }

    /// Flushes, closes and renames; false (destination untouched) when any write failed.
    bool commit();

    /// Flushes, closes and forces the temporary file to disk without renaming it; false when any
    /// write failed. For writers of several files that rename them together (StagedFiles).
    bool writeOut();

    /// The temporary file is no longer removed at destruction: its rename is recorded elsewhere.
    void keepTemporary() { committed_ = true; }

    const std::filesystem::path& destination() const { return destination_; }
    const std::filesystem::path& temporary() const { return temporary_; }

private:
    std::filesystem::path destination_;
    std::filesystem::path temporary_;
    std::ofstream stream_;
    bool committed_ = false;
};

/// Forces a file or folder to disk (fsync); false when it could not be opened or synced.
bool syncToDisk(const std::filesystem::path& path);

/// Removes the temporary files in `folder` (only those of destinations whose names begin with
/// `namePrefix`, when given) left by processes that no longer run (a killed compilation or
/// save); the temporary files of running processes stay.
void removeStaleTemporaryFiles(const std::filesystem::path& folder,
                               std::string_view namePrefix = {});

} // namespace quarvex
