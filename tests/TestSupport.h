// Helpers shared by the tests: fresh temporary folders, small files, the repository's data.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quarvex::test {

/// A new empty folder below the system's temporary folder, removed again at destruction.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Writes `content` to a file of that name in the folder and returns its path.
    std::filesystem::path write(std::string_view name, std::string_view content) const;

private:
    std::filesystem::path path_;
};

/// The whole content of a file.
std::string readFile(const std::filesystem::path& path);

/// A path below the repository's root (QUARVEX_SOURCE_DIR).
std::filesystem::path sourcePath(std::string_view relative);

} // namespace quarvex::test
