// Bringing the program's core up and down.
#pragma once

#include "shell/ProgramState.h"

#include <filesystem>

namespace quarvex {

/// Start-up of the core for a home folder: SET_UP_FOLDERS, SET_UP_REF_FILE(1), INI_PREF_SETUP(2),
/// the view settings (readViewSettings), SET_UP_RAND_BRUSHES. The home folder itself is created
/// when missing.
void startUp(ProgramState& state, const std::filesystem::path& home);

/// Shut-down: INI_PREF_SETUP(1), then FREE_SPECDATA_POINTERS.
void shutDown(ProgramState& state);

} // namespace quarvex
