#include "specdata/RecentFiles.h"

#include "common/AtomicFile.h"
#include "common/LineReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"

#include <algorithm>

namespace quarvex {

namespace {

constexpr std::size_t kPathWidth = 4096;

std::filesystem::path listFile(const std::filesystem::path& home) {
    return home / kRecentFilesFolder / kRecentFileListName;
}

void writeList(const RecentFileList& list, const std::filesystem::path& home) {
    std::error_code ignored;
    std::filesystem::create_directories(home / kRecentFilesFolder, ignored);
    AtomicFile file(listFile(home));
    if (!file.isOpen()) {
        return;
    }
    for (const std::filesystem::path& path : list.paths) {
        file.stream() << path.string() << '\n';
    }
    file.commit();
}

} // namespace

void RECENT_FILES(RecentFileList& list, const std::filesystem::path& home) {
    list.paths.clear();
    LineReader reader(listFile(home), kPathWidth);
    std::string_view line;
    while (list.paths.size() < kRecentFileCount && reader.next(line)) {
        const std::string_view path = trimmed(line);
        if (!path.empty()) {
            list.paths.emplace_back(path);
        }
    }
}

void rememberRecentFile(RecentFileList& list, const std::filesystem::path& home,
                        const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path full = std::filesystem::absolute(path, error);
    if (error) {
        full = path;
    }
    std::erase(list.paths, full);
    list.paths.insert(list.paths.begin(), full);
    if (list.paths.size() > kRecentFileCount) {
        list.paths.resize(kRecentFileCount);
    }
    writeList(list, home);
}

std::filesystem::path recentFileToOpen(RecentFileList& list, const std::filesystem::path& home,
                                       std::size_t entry) {
    if (entry >= list.paths.size()) {
        throw QuarvexError("There is no recent file " + std::to_string(entry + 1) + ".",
                           std::string(kRecentFilesTitle));
    }
    const std::filesystem::path path = list.paths[entry];
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        list.paths.erase(list.paths.begin() + static_cast<std::ptrdiff_t>(entry));
        writeList(list, home);
        throw QuarvexError("The file " + path.string() +
                               " no longer exists. It was removed from the list of recent files.",
                           std::string(kRecentFilesTitle));
    }
    return path;
}

} // namespace quarvex
