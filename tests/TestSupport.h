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

/// What a program run by `runProgram` printed, and its exit status.
struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs a shell command line and captures its stdout, stderr and exit status.
ProgramRun runProgram(const std::string& commandLine);

} // namespace quarvex::test
