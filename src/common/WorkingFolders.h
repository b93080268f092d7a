// The program's home folder and the working folders below it.
#pragma once

#include <array>
#include <filesystem>
#include <string_view>

namespace quarvex {

inline constexpr std::string_view kUndoRecordsFolder = "UndoRecords";
inline constexpr std::string_view kSearchRecordsFolder = "SearchRecords";
inline constexpr std::string_view kRamanLibFolder = "RamanLib";
inline constexpr std::string_view kXrayLibFolder = "XrayLib";
inline constexpr std::string_view kRecentFilesFolder = "RecentFiles";
inline constexpr std::string_view kTempFolder = "TempFold";

/// The folder that holds the running executable.
std::filesystem::path executableFolder();

/// The six working folders below `home`, in the order they are created.
std::array<std::filesystem::path, 6> workingFolders(const std::filesystem::path& home);

/// "SearchRecords/RamanLib/" and "SearchRecords/XrayLib/" below `home`.
std::filesystem::path ramanLibraryFolder(const std::filesystem::path& home);
std::filesystem::path xrayLibraryFolder(const std::filesystem::path& home);

/// Creates the working folders that are missing; a folder that cannot be created is ignored.
void SET_UP_FOLDERS(const std::filesystem::path& home);

/// Creates `folder` (and its parents) when missing. Throws QuarvexError (with `title`) saying
/// that the folder cannot be created, where, and the system's reason.
void requireFolder(const std::filesystem::path& folder, std::string_view title);

} // namespace quarvex
