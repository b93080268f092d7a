// The program-wide state: every state group, owned by the application and passed by reference.
#pragma once

#include "library/LibraryGlobals.h"
#include "processing/ProcessingGlobals.h"
#include "shell/ColourTable.h"
#include "shell/ShellGlobals.h"
#include "specdata/MineralInfo.h"
#include "specdata/RecentFiles.h"
#include "specdata/SpecDataGlobals.h"
#include "specdata/UndoRecords.h"
#include "xray/XrayGlobals.h"

namespace quarvex {

/// All state groups, created zeroed (at their defaults). A test makes a fresh one in one line.
struct ProgramState {
    QUARVEXGLOBALS quarvex;
    SPECDATA_GLOBALS specdata;
    REGION_GLOBALS region;
    PAINTINGGLOBALS painting;
    DIFF_GLOBALS diff;
    XRAY_PEAK_GLOBALS xrayPeak;
    RAMAN_PEAK_GLOBALS ramanPeak;
    PEAK_ROUTINES_GLOBALS peakRoutines;
    MAINDIALOG_GLOBALS mainDialog;
    MANCRE_GLOBALS mancre;
    INTERP_AND_NORM_GLOBALS interpAndNorm;
    LIBRARY_GLOBALS library;
    PARMMAX parmmax;
    INOUTPARMS inoutparms;
    DATASTFF datastff;
    DLGBOX dlgbox;
    MINERALINFO mineralInfo;
    UndoHistory undoHistory;    ///< the undo and redo records of this run's edits
    RecentFileList recentFiles; ///< the files last opened, newest first
};

} // namespace quarvex
