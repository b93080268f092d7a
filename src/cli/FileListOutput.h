// The common shape of commands that read a list of files and describe what was loaded.
#pragma once

#include "cli/CliCommand.h"
#include "cli/JsonOutput.h"

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex::cli {

/// Options of a command that reads files and describes them.
struct FileListOptions {
    std::vector<std::string> files;
    bool json = false;
};

/// Adds the FILE... argument and the --json flag to `command`.
void addFileListOptions(CLI::App& command, FileListOptions& options, const std::string& what);

/// Loads every file with `load(file)`; a failure is printed and makes the exit status 1, and the
/// other files are still read. Then describes the `count()` loaded items, each made into JSON by
/// `describe(k)`: as {"<key>": [...]} with --json, else through `print(json)` as text.
template <class Load, class Count, class Describe, class Print>
int loadFilesAndDescribe(const FileListOptions& options, std::string_view key, Load load,
                         Count count, Describe describe, Print print) {
    int status = 0;
    for (const std::string& file : options.files) {
        try {
            load(file);
        } catch (const std::exception& error) {
            printError(error);
            status = 1;
        }
    }
    Json items = Json::array();
    for (int k = 0; k < count(); ++k) {
        items.push_back(describe(k));
    }
    if (options.json) {
        std::cout << Json{{std::string(key), items}}.dump(2) << '\n';
    } else {
        for (const Json& item : items) {
            print(item);
        }
    }
    return status;
}

} // namespace quarvex::cli
