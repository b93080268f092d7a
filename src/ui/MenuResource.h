// The menus of the main window as data: every item's command number and text, separators and
// the one sub-menu, in the order they are shown.
#pragma once

#include <span>
#include <string_view>

namespace quarvex::ui {

/// One menu row: a command with its text, a separator (command 0, no items) or a sub-menu
/// (command 0 with items). A tab in the text separates the accelerator ("&Open...\tCtrl+O").
struct MenuEntry {
    int command = 0;
    std::string_view text;
    std::span<const MenuEntry> items;

    bool isSeparator() const { return command == 0 && items.empty(); }
    bool isSubMenu() const { return !items.empty(); }
};

struct MenuResource {
    std::string_view title;
    std::span<const MenuEntry> items;
};

/// The four drop-down menus: "&File", "&Edit", "Mode", "&Help".
std::span<const MenuResource> mainMenuResource();

/// The pop-up menus: of the view, of a spectrum (its first item is renamed to the spectrum),
/// of a diffraction file and of a reference (both shown by the X-ray Diffraction mode).
const MenuResource& viewPopupResource();
const MenuResource& spectrumPopupResource();
const MenuResource& diffractionFilePopupResource();
const MenuResource& referencePopupResource();

/// Item texts set at run time on the two open items.
inline constexpr std::string_view kOpenText = "&Open...\tCtrl+O";
inline constexpr std::string_view kOpenAnotherText = "Open &Another...\tCtrl+Shift+O";

} // namespace quarvex::ui
