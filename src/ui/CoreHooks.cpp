// The start-up library compilation and the consistency exam of the desktop program.
#include "ui/CoreHooks.h"

#include "common/WorkingFolders.h"

namespace quarvex::ui {

CoreHooks defaultCoreHooks() {
    CoreHooks hooks;
    hooks.compileLibraryAtStart = [](ProgramState& state, const ProgressCallback& progress) {
        const std::filesystem::path& home = state.quarvex.programFolder;
        std::error_code ignored;
        std::optional<LibraryCompilation> compiled;
        if (state.quarvex.preferences.compileLibraryAtStart ||
            !std::filesystem::exists(ramanLibraryFolder(home) / kSlowLibraryFile, ignored)) {
            compiled = CREATE_SEARCH_LIB(home, progress);
        }
        return compiled;
    };
    hooks.consistencyExam = [](ProgramState& state, const ProgressCallback& progress) {
        return runConsistencyExam(state.quarvex.programFolder, progress);
    };
    return hooks;
}

namespace {

std::string entryCount(int entries) {
    return std::to_string(entries) + (entries == 1 ? " entry" : " entries");
}

} // namespace

std::string compilationSummary(const LibraryCompilation& compilation) {
    std::string text = "Raman library compiled: " + entryCount(compilation.entries);
    const std::size_t skipped = compilation.skipped.size();
    if (skipped > 0) {
        text += ", " + std::to_string(skipped) + (skipped == 1 ? " file" : " files") +
                " left out (see Raman Search)";
    }
    return text;
}

std::string upToDateSummary(int entries) {
    return "Library up to date (" + entryCount(entries) + ")";
}

} // namespace quarvex::ui
