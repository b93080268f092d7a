// The shell's own state groups: general program values, the view regions and the main dialog.
#pragma once

#include "shell/HomeFolder.h"
#include "shell/Preferences.h"
#include "shell/ViewSettings.h"

#include <filesystem>

namespace quarvex {

/// General program-wide values shared by all subsystems.
struct QUARVEXGLOBALS {
    std::filesystem::path programFolder; ///< the home folder: working folders, QV.ini, library
    HomeSource homeSource = HomeSource::Option; ///< how the home folder was chosen
    Preferences preferences;
    ViewSettings view; ///< the view's settings beyond QV.ini (read at start, written on change)
};

/// View regions of the main window (filled by the desktop program).
struct REGION_GLOBALS {};

/// State of the main dialog and its controls (filled by the desktop program).
struct MAINDIALOG_GLOBALS {};

/// Shared block of the dialog code of the refinement.
struct DLGBOX {};

} // namespace quarvex
