#include "FuzzSupport.h"

// Every target that reaches the readers' entry point may reach xylib and its leaks.
#include "readers/XylibLeaks.h"

#include "library/CreateLibraryFile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace quarvex::fuzz {

namespace {

// Removes the process's folder when the process ends normally.
struct ProcessFolder {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("quarvex-fuzz-" + std::to_string(::getpid()));
    ~ProcessFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

} // namespace

std::filesystem::path freshFolder() {
    static const ProcessFolder folder;
    std::error_code ignored;
    std::filesystem::remove_all(folder.path, ignored);
    std::filesystem::create_directories(folder.path);
    return folder.path;
}

std::filesystem::path writeFile(const std::filesystem::path& path, std::string_view content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
    return path;
}

std::vector<std::string_view> splitParts(std::string_view input, std::size_t count) {
    std::vector<std::string_view> parts(count);
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t at = k + 1 < count ? input.find(kPartSeparator) : std::string_view::npos;
        parts[k] = input.substr(0, at);
        if (at == std::string_view::npos) {
            break;
        }
        input.remove_prefix(at + kPartSeparator.size());
    }
    return parts;
}

std::vector<std::pair<std::string, std::string>>
folderContent(const std::filesystem::path& folder) {
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::ifstream in(entry.path(), std::ios::binary);
            std::ostringstream text;
            text << in.rdbuf();
            files.emplace_back(entry.path().lexically_relative(folder).generic_string(),
                               text.str());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void writeOneEntryLibrary(const std::filesystem::path& folder) {
    writeFile(folder / kSlowLibraryFile, "==\na\n100 1\n101 2\n");
    writeFile(folder / kFastLibraryFile, "==\na\n100 1\n");
    writeFile(folder / kNameListFile, "a\n");
    writeFile(folder / kNameInfoFile, "i\nn\nl\nc\n785\n");
}

void fail(std::string_view what) {
    std::fprintf(stderr, "fuzz property failed: %.*s\n", static_cast<int>(what.size()),
                 what.data());
    std::abort();
}

} // namespace quarvex::fuzz
