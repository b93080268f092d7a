// Fuzz target: the library manifest. Whatever reads writes back the same text, and a manifest
// file never makes a library folder it does not describe count as up to date.
#include "FuzzSupport.h"

#include "common/WorkingFolders.h"
#include "library/LibraryManifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const std::string_view text = fuzz::asText(data, size);
    if (const std::optional<LibraryManifest> manifest = parseManifest(text)) {
        if (manifestText(*manifest) != text) {
            fuzz::fail("a manifest read back differently");
        }
    }
    // An empty library folder without library files: no manifest can match it.
    const auto home = fuzz::freshFolder();
    const auto folder = ramanLibraryFolder(home);
    std::filesystem::create_directories(folder);
    fuzz::writeFile(libraryManifestPath(folder), text);
    if (upToDateLibraryEntries(folder)) {
        fuzz::fail("a folder without library files counted as up to date");
    }
    return 0;
}
