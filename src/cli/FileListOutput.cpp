#include "cli/FileListOutput.h"

namespace quarvex::cli {

void addFileListOptions(CLI::App& command, FileListOptions& options, const std::string& what) {
    command.add_option("files", options.files, what)->required();
    command.add_flag("--json", options.json, "Print JSON instead of text");
}

} // namespace quarvex::cli
