#include "shell/HomeFolder.h"

#include "common/AtomicFile.h"
#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <pwd.h>
#include <set>
#include <unistd.h>

namespace quarvex {

namespace {

std::string environmentValue(std::string_view name) {
    const char* value = std::getenv(std::string(name).c_str());
    return value != nullptr ? value : "";
}

std::string accountHomeDirectory() {
    if (std::string home = environmentValue("HOME"); !home.empty()) {
        return home;
    }
    const passwd* account = ::getpwuid(::getuid());
    return account != nullptr && account->pw_dir != nullptr ? account->pw_dir : "";
}

// A portable copy or build tree keeps its home beside the program only where it can write.
bool holdsWritableWorkingFolders(const std::filesystem::path& folder) {
    std::error_code error;
    return !folder.empty() && std::filesystem::is_directory(folder / kSearchRecordsFolder, error) &&
           ::access(folder.c_str(), W_OK) == 0;
}

// Relative paths of the regular files of the seeded folders, in byte order.
std::vector<std::filesystem::path> shippedFiles(const std::filesystem::path& shipped) {
    std::vector<std::filesystem::path> files;
    for (const std::string_view folder : kSeededFolders) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(shipped / folder, error)) {
            if (entry.is_regular_file(error)) {
                files.push_back(std::filesystem::path(folder) / entry.path().filename());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::set<std::string> readRecord(const std::filesystem::path& record) {
    std::set<std::string> received;
    std::ifstream in(record);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty()) {
            received.insert(line);
        }
    }
    return received;
}

void writeRecord(const std::filesystem::path& record, const std::set<std::string>& received) {
    AtomicFile file(record);
    for (const std::string& line : received) {
        file.stream() << line << '\n';
    }
    file.commit(); // a record that cannot be written means the next start offers the files again
}

} // namespace

HomeLookup homeLookupOfThisProcess(const std::optional<std::filesystem::path>& option) {
    return {option, environmentValue(kHomeEnvironmentVariable), environmentValue("XDG_DATA_HOME"),
            accountHomeDirectory(), executableFolder()};
}

HomeChoice chooseHomeFolder(const HomeLookup& lookup) {
    if (lookup.option && !lookup.option->empty()) {
        return {*lookup.option, HomeSource::Option};
    }
    if (!lookup.quarvexHome.empty()) {
        return {lookup.quarvexHome, HomeSource::Environment};
    }
    if (holdsWritableWorkingFolders(lookup.executableFolder)) {
        return {lookup.executableFolder, HomeSource::ExecutableFolder};
    }
    // The XDG base-directory rules ignore a relative $XDG_DATA_HOME.
    const std::filesystem::path dataHome =
        std::filesystem::path(lookup.xdgDataHome).is_absolute()
            ? std::filesystem::path(lookup.xdgDataHome)
            : std::filesystem::path(lookup.userHome) / ".local" / "share";
    return {dataHome / "quarvex", HomeSource::UserData};
}

std::string_view describeHomeSource(HomeSource source) {
    switch (source) {
    case HomeSource::Option:
        return "the --home option";
    case HomeSource::Environment:
        return "the environment variable QUARVEX_HOME";
    case HomeSource::ExecutableFolder:
        return "the folder of the executable (a portable copy or the build tree)";
    case HomeSource::UserData:
        return "the per-user data folder ($XDG_DATA_HOME/quarvex, default ~/.local/share/quarvex)";
    }
    return "";
}

std::filesystem::path shippedDataFolder() {
    return (executableFolder() / ".." / "share" / "quarvex").lexically_normal();
}

std::vector<std::filesystem::path> seedHomeFolder(const std::filesystem::path& home,
                                                  const std::filesystem::path& shipped) {
    std::error_code error;
    const bool isNew = !std::filesystem::is_directory(home / kSearchRecordsFolder, error);
    const std::filesystem::path record = home / kShippedFilesRecord;
    if (!isNew && !std::filesystem::is_regular_file(record, error)) {
        return {}; // never seeded: the user's own arrangement
    }
    const std::vector<std::filesystem::path> offered = shippedFiles(shipped);
    if (offered.empty()) {
        return {};
    }
    std::filesystem::create_directories(home, error);
    SET_UP_FOLDERS(home);

    std::set<std::string> received = readRecord(record);
    std::vector<std::filesystem::path> copied;
    bool recordChanged = isNew;
    for (const std::filesystem::path& file : offered) {
        if (received.contains(file.generic_string())) {
            continue;
        }
        const bool present = std::filesystem::exists(home / file, error);
        const bool copiedNow =
            !present && std::filesystem::copy_file(shipped / file, home / file, error);
        if (present || copiedNow) {
            received.insert(file.generic_string()); // a failed copy is offered again next start
            recordChanged = true;
        }
        if (copiedNow) {
            copied.push_back(file);
        }
    }
    if (recordChanged) {
        writeRecord(record, received);
    }
    const std::filesystem::path ramanLib =
        std::filesystem::path(kSearchRecordsFolder) / kRamanLibFolder;
    if (std::any_of(copied.begin(), copied.end(),
                    [&](const auto& file) { return file.parent_path() == ramanLib; })) {
        std::filesystem::remove(ramanLibraryFolder(home) / kSlowLibraryFile, error);
    }
    return copied;
}

HomeChoice openHomeFolder(const std::optional<std::filesystem::path>& option) {
    const HomeChoice choice = chooseHomeFolder(homeLookupOfThisProcess(option));
    seedHomeFolder(choice.folder, shippedDataFolder());
    return choice;
}

} // namespace quarvex
