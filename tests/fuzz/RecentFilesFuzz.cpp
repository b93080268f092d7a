// Fuzz target: the recent-file list "RCNTFILE.rfl". What was read keeps at most ten non-blank
// entries, and a list written back reads back the same.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "specdata/RecentFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto home = fuzz::freshFolder();
    std::filesystem::create_directories(home / kRecentFilesFolder);
    fuzz::writeFile(home / kRecentFilesFolder / kRecentFileListName, fuzz::asText(data, size));
    RecentFileList list;
    RECENT_FILES(list, home);
    if (list.paths.size() > kRecentFileCount) {
        fuzz::fail("more than ten recent files");
    }
    for (const auto& path : list.paths) {
        if (path.empty()) {
            fuzz::fail("a blank recent file");
        }
    }
    rememberRecentFile(list, home, "/opened/last.txt");
    RecentFileList again;
    RECENT_FILES(again, home);
    if (again.paths != list.paths) {
        fuzz::fail("the list written back reads back differently");
    }
    // None of the listed files exists: opening one drops it with a message.
    try {
        recentFileToOpen(list, home, 0);
        fuzz::fail("a file that does not exist was opened");
    } catch (const QuarvexError&) {
    }
    if (list.paths.size() + 1 != again.paths.size()) {
        fuzz::fail("the missing file stayed in the list");
    }
    return 0;
}
