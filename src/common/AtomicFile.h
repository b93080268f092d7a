// Safe writing of the program's own files: write to a temporary file, then rename it into place.
#pragma once

#include <filesystem>
#include <fstream>

namespace quarvex {

/// Writes a file under a temporary name beside its destination. `commit()` flushes it and
/// renames it over the destination; if the writer is destroyed without a successful commit, the
/// temporary file is removed and the destination is left as it was.
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

    const std::filesystem::path& destination() const { return destination_; }

private:
    std::filesystem::path destination_;
    std::filesystem::path temporary_;
    std::ofstream stream_;
    bool committed_ = false;
};

} // namespace quarvex
