// The command numbers of the desktop program: one number per operation, shared by menus,
// accelerators, the tool bar, the File Manager's buttons and the tests.
#pragma once

namespace quarvex::ui {

inline constexpr int kCmdExit = 30001;
inline constexpr int kCmdOpen = 30003;
inline constexpr int kCmdSave = 30004;
inline constexpr int kCmdSaveAs = 30005;
inline constexpr int kCmdPrint = 30006;
inline constexpr int kCmdPrintSetup = 30007;
inline constexpr int kCmdUndo = 30008;
inline constexpr int kCmdHelpContents = 30012;
inline constexpr int kCmdHelpSearch = 30013;
inline constexpr int kCmdHelpOnHelp = 30014;
inline constexpr int kCmdAbout = 30015;
inline constexpr int kCmdAutoRemoveBackground = 30016;
inline constexpr int kCmdXrayMode = 30017;
inline constexpr int kCmdReverseXAxis = 30018;
inline constexpr int kCmdOpen2 = 30019;
inline constexpr int kCmdTrimLeft = 30028;
inline constexpr int kCmdTrimRight = 30029;
inline constexpr int kCmdZoomFull = 30031;
inline constexpr int kCmdRedo = 30032;
inline constexpr int kCmdFileManager = 30033;
inline constexpr int kCmdRamanSearchMode = 30034;
inline constexpr int kCmdAutoRemoveCre = 30035;
inline constexpr int kCmdRecentFileFirst = 30039;
inline constexpr int kCmdRecentFileLast = 30048;
inline constexpr int kCmdEditSpectrumMode = 30050;
inline constexpr int kCmdConsistencyExam = 30052;
inline constexpr int kCmdMakeInvisible = 30054;
inline constexpr int kCmdMakePrimary = 30055;
inline constexpr int kCmdAdjustScale = 30056;
inline constexpr int kCmdEditDataFile = 30057;
inline constexpr int kCmdDelete = 30058;
inline constexpr int kCmdSpectrumName = 30059;
inline constexpr int kCmdAdjustDataType = 30060;
inline constexpr int kCmdPreferences = 30062;

// Commands of the tool bar beyond the menus.
inline constexpr int kCmdExportView = 30070;      ///< save the view as PDF or PNG
inline constexpr int kCmdSelectRangeMode = 30071; ///< plain left-drag selects an x-range
inline constexpr int kCmdStackSpectra = 30072;    ///< stack or overlay (preference 5)

// Editing commands of the tool bar.
inline constexpr int kCmdRemoveSpikesByHand = 30090; ///< clicks on the view remove spikes
inline constexpr int kCmdSmooth = 30091;             ///< Savitzky-Golay smoothing, previewed

// Commands of the mode docks' buttons (the docks ask the main window to dispatch them).
inline constexpr int kCmdSearchLibrary = 30073;   ///< Raman Search: search the selected area
inline constexpr int kCmdCompileLibrary = 30074;  ///< Raman Search: compile the library
inline constexpr int kCmdFindPeaks = 30075;       ///< Edit Spectrum: find and mark the peaks
inline constexpr int kCmdFitPeaks = 30076;        ///< Edit Spectrum: fit the selected window
inline constexpr int kCmdCopyFitTable = 30077;    ///< Edit Spectrum: the table to the clipboard
inline constexpr int kCmdOpenReference = 30078;   ///< X-ray Diffraction: open reference files
inline constexpr int kCmdFindXrayPeaks = 30079;   ///< X-ray Diffraction: find, fit and match peaks
inline constexpr int kCmdRefineCell = 30080;      ///< X-ray Diffraction: refine the cell
inline constexpr int kCmdNewXrayProject = 30081;  ///< X-ray Diffraction: a new project
inline constexpr int kCmdOpenXrayProject = 30082; ///< X-ray Diffraction: open a project
inline constexpr int kCmdSaveXrayProject = 30083; ///< X-ray Diffraction: save the project

/// The buttons of the X-ray Diffraction mode (Open Reference... to Save Project).
constexpr bool isXrayButtonCommand(int command) {
    return command >= kCmdOpenReference && command <= kCmdSaveXrayProject;
}

// The X-ray Diffraction mode's own pop-up commands (its dialog dispatches them; their numbers
// overlap the recent-file range of the main window).
inline constexpr int kCmdOpenOriginalDif = 30038;
inline constexpr int kCmdOpenAdjustedDif = 30040;
inline constexpr int kCmdViewReference = 30043;
inline constexpr int kCmdOpenGreltDatabase = 30044;
inline constexpr int kCmdCreateSpectrumFromDif = 30046;

/// What a dispatch did with a command.
enum class DispatchResult {
    Done,   ///< the operation ran (an error it raised was shown in a message box)
    Greyed, ///< the command exists but cannot run now (its items are greyed)
    Unknown ///< not a command of this dispatcher
};

} // namespace quarvex::ui
