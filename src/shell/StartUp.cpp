#include "shell/StartUp.h"

#include "common/WorkingFolders.h"
#include "shell/ReferenceFile.h"

namespace quarvex {

void startUp(ProgramState& state, const std::filesystem::path& home) {
    state.quarvex.programFolder = home;
    std::error_code ignored;
    std::filesystem::create_directories(home, ignored); // a --home that does not exist yet
    SET_UP_FOLDERS(home);
    SET_UP_REF_FILE(1, home);
    INI_PREF_SETUP(2, home, state.quarvex.preferences);
    state.quarvex.view = readViewSettings(home);
    SET_UP_RAND_BRUSHES(state.painting);
}

void shutDown(ProgramState& state) {
    INI_PREF_SETUP(1, state.quarvex.programFolder, state.quarvex.preferences);
    FREE_SPECDATA_POINTERS(state.specdata);
}

} // namespace quarvex
