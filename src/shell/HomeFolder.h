// Which folder is the program's home, and how a new home receives the shipped library and
// reference files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Environment variable that names the home folder when no --home option is given.
inline constexpr std::string_view kHomeEnvironmentVariable = "QUARVEX_HOME";
/// The home's record of the shipped files it has received, one relative path a line.
inline constexpr std::string_view kShippedFilesRecord = "ShippedFiles.txt";
/// The folders of the shipped data that are copied into a home, relative to both.
inline constexpr std::string_view kSeededFolders[] = {"SearchRecords/RamanLib",
                                                      "SearchRecords/XrayLib"};

/// Where the home folder came from, in the order the sources are tried.
enum class HomeSource {
    Option,           ///< --home DIR
    Environment,      ///< $QUARVEX_HOME
    ExecutableFolder, ///< a portable copy or the build tree
    UserData          ///< $XDG_DATA_HOME/quarvex, default ~/.local/share/quarvex
};

/// What the choice of the home folder looks at; empty texts count as unset.
struct HomeLookup {
    std::optional<std::filesystem::path> option; ///< --home
    std::string quarvexHome;                     ///< $QUARVEX_HOME
    std::string xdgDataHome;                     ///< $XDG_DATA_HOME
    std::string userHome;                        ///< $HOME, else the account's home directory
    std::filesystem::path executableFolder;
};

struct HomeChoice {
    std::filesystem::path folder;
    HomeSource source = HomeSource::Option;
};

/// The lookup of this process: its environment and executable.
HomeLookup homeLookupOfThisProcess(const std::optional<std::filesystem::path>& option);

/// The home folder: the option, else $QUARVEX_HOME, else the executable's folder when it is
/// writable and already holds "SearchRecords" (the working folders of a portable copy or the
/// build tree), else "quarvex" below $XDG_DATA_HOME when that is an absolute path, else
/// ~/.local/share/quarvex.
HomeChoice chooseHomeFolder(const HomeLookup& lookup);

/// How `quarvex-cli home` names a source ("the --home option", ...).
std::string_view describeHomeSource(HomeSource source);

/// The data the program ships (share/quarvex beside the executable's bin folder): the default
/// library and references in "SearchRecords/", the documentation in "docs/", the examples.
std::filesystem::path shippedDataFolder();

/// Brings the shipped library and reference files into `home`. A new home (no "SearchRecords"
/// yet) is created with its working folders and receives every shipped file of
/// `kSeededFolders`. A home seeded before receives the shipped files it has not received yet
/// (those of a later install), unless a file of that name is already there. A file, once
/// received, is never copied again: the user's edits and deletions stand. A home that was never
/// seeded (a build tree, a portable copy) is left alone. When the Raman library folder receives
/// files, its compiled library is removed so that the next search compiles it anew. Returns the
/// relative paths copied. Failures are silent, as for the working folders.
std::vector<std::filesystem::path> seedHomeFolder(const std::filesystem::path& home,
                                                  const std::filesystem::path& shipped);

/// The home of this process (chooseHomeFolder), seeded from shippedDataFolder().
HomeChoice openHomeFolder(const std::optional<std::filesystem::path>& option);

} // namespace quarvex
