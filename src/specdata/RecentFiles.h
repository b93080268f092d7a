// The list of recently opened spectrum files, kept in "RecentFiles/RCNTFILE.rfl" (one path a
// line, newest first) and offered in the File menu.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kRecentFileListName = "RCNTFILE.rfl";
/// Entries the list keeps (commands 30039 to 30048).
inline constexpr std::size_t kRecentFileCount = 10;
inline constexpr std::string_view kRecentFilesTitle = "Recent Files";

/// The recent files, newest first.
struct RecentFileList {
    std::vector<std::filesystem::path> paths;
};

/// Reads the list from "RecentFiles/RCNTFILE.rfl" below `home` (empty when the file is missing;
/// blank lines are skipped, at most ten entries are kept).
void RECENT_FILES(RecentFileList& list, const std::filesystem::path& home);

/// Puts `path` at the top of the list (removing an older entry of it, keeping ten) and writes
/// the list back atomically; a list that cannot be written is kept in memory only.
void rememberRecentFile(RecentFileList& list, const std::filesystem::path& home,
                        const std::filesystem::path& path);

/// The path of entry `entry` (0-based) to open. When its file no longer exists, the entry is
/// removed from the list (written back) and QuarvexError ("Recent Files") says so.
std::filesystem::path recentFileToOpen(RecentFileList& list, const std::filesystem::path& home,
                                       std::size_t entry);

} // namespace quarvex
