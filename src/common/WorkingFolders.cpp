#include "common/WorkingFolders.h"

#include "common/QuarvexError.h"

#include <string>

namespace quarvex {

std::filesystem::path executableFolder() {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return std::filesystem::current_path(error);
    }
    return self.parent_path();
}

std::filesystem::path ramanLibraryFolder(const std::filesystem::path& home) {
    return home / kSearchRecordsFolder / kRamanLibFolder;
}

std::filesystem::path xrayLibraryFolder(const std::filesystem::path& home) {
    return home / kSearchRecordsFolder / kXrayLibFolder;
}

std::array<std::filesystem::path, 6> workingFolders(const std::filesystem::path& home) {
    return {home / kUndoRecordsFolder, home / kSearchRecordsFolder, ramanLibraryFolder(home),
            xrayLibraryFolder(home),   home / kRecentFilesFolder,   home / kTempFolder};
}

void SET_UP_FOLDERS(const std::filesystem::path& home) {
    for (const auto& folder : workingFolders(home)) {
        std::error_code error;
        if (!std::filesystem::is_directory(folder, error)) {
            std::filesystem::create_directory(folder, error); // failures stay silent
        }
    }
}

void requireFolder(const std::filesystem::path& folder, std::string_view title) {
    std::error_code error;
    if (std::filesystem::is_directory(folder, error)) {
        return;
    }
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder, error)) {
        throw QuarvexError("The folder " + folder.string() + " cannot be created" +
                               (error ? ": " + error.message() : std::string()) +
                               ". Choose a home folder where the program may write.",
                           std::string(title));
    }
}

} // namespace quarvex
