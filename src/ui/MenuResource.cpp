// The menu tables of the main window.
#include "ui/MenuResource.h"

#include "ui/Commands.h"

#include <array>
#include <string_view>

namespace quarvex::ui {

namespace {

constexpr MenuEntry kSeparator{0, {}, {}};

constexpr MenuEntry item(int command, std::string_view text) {
    return {command, text, {}};
}

constexpr std::array kFileMenu{
    item(kCmdOpen, "&Open...\tCtrl+O"),
    item(kCmdOpen2, "Open2"),
    kSeparator,
    item(kCmdSave, "&Save\tCtrl+S"),
    item(kCmdSaveAs, "Save &As...\tCtrl+Shift+S"),
    kSeparator,
    item(kCmdPrint, "&Print...\tCtrl+P"),
    item(kCmdPrintSetup, "P&rint Setup...\tCtrl+Shift+P"),
    kSeparator,
    item(kCmdExit, "E&xit\tCtrl+Q"),
};

constexpr std::array kEditMenu{
    item(kCmdUndo, "&Undo\tCtrl+Z"),
    item(kCmdRedo, "&Redo\tCtrl+Y"),
    kSeparator,
    item(kCmdPreferences, "Preferences"),
};

constexpr std::array kModeMenu{
    item(kCmdFileManager, "File Manager"),
    item(kCmdEditSpectrumMode, "Edit Spectrum"),
    item(kCmdRamanSearchMode, "Raman Search"),
    item(kCmdXrayMode, "X-ray Diffraction"),
};

constexpr std::array kHelpMenu{
    item(kCmdHelpContents, "&Contents"),      item(kCmdHelpSearch, "&Search for Help On..."),
    item(kCmdHelpOnHelp, "&How to Use Help"), kSeparator,
    item(kCmdAbout, "&About Quarvex..."),
};

constexpr std::array kMainMenu{
    MenuResource{"&File", kFileMenu},
    MenuResource{"&Edit", kEditMenu},
    MenuResource{"Mode", kModeMenu},
    MenuResource{"&Help", kHelpMenu},
};

constexpr std::array kTrimMenu{
    item(kCmdTrimLeft, "left of cursor"),
    item(kCmdTrimRight, "right of cursor"),
};

constexpr std::array kViewPopup{
    item(kCmdOpen, "Open..."),
    kSeparator,
    item(kCmdUndo, "Undo"),
    item(kCmdRedo, "Redo"),
    kSeparator,
    item(kCmdZoomFull, "Zoom Full"),
    kSeparator,
    item(kCmdReverseXAxis, "Reverse X-Axis"),
    item(kCmdAutoRemoveBackground, "Auto Remove Background"),
    item(kCmdAutoRemoveCre, "Auto Remove CRE"),
    kSeparator,
    MenuEntry{0, "Trim", kTrimMenu},
};

constexpr std::array kSpectrumPopup{
    item(kCmdSpectrumName, "NAME"),
    kSeparator,
    item(kCmdMakeInvisible, "Make Invisible"),
    item(kCmdMakePrimary, "Make Primary"),
    kSeparator,
    item(kCmdAdjustScale, "Adjust Scale"),
    kSeparator,
    item(kCmdEditDataFile, "Edit Data File"),
    item(kCmdAdjustDataType, "Adjust Data Type"),
    kSeparator,
    item(kCmdDelete, "Delete"),
};

constexpr std::array kDiffractionFilePopup{
    item(kCmdOpenOriginalDif, "Open Original..."),
    item(kCmdOpenAdjustedDif, "Open Adjusted..."),
    item(kCmdCreateSpectrumFromDif, "Create Spectrum From DIF"),
};

constexpr std::array kReferencePopup{
    item(kCmdViewReference, "View..."),
    item(kCmdOpenGreltDatabase, "Open GRELT Database...."),
};

constexpr MenuResource kViewPopupResource{"", kViewPopup};
constexpr MenuResource kSpectrumPopupResource{"", kSpectrumPopup};
constexpr MenuResource kDiffractionFilePopupResource{"", kDiffractionFilePopup};
constexpr MenuResource kReferencePopupResource{"", kReferencePopup};

} // namespace

std::span<const MenuResource> mainMenuResource() {
    return kMainMenu;
}

const MenuResource& viewPopupResource() {
    return kViewPopupResource;
}

const MenuResource& spectrumPopupResource() {
    return kSpectrumPopupResource;
}

const MenuResource& diffractionFilePopupResource() {
    return kDiffractionFilePopupResource;
}

const MenuResource& referencePopupResource() {
    return kReferencePopupResource;
}

} // namespace quarvex::ui
