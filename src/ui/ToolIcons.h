// The icons of the tool bar and the program, drawn in code so that they look the same on every
// desktop, with or without an icon theme.
#pragma once

#include <QIcon>

namespace quarvex::ui {

enum class ToolIcon {
    Program,
    Open,
    Print,
    Export,
    ZoomFull,
    ReverseXAxis,
    SelectRange,
    StackSpectra,
    FileManager,
    EditSpectrum,
    RamanSearch,
    XrayDiffraction,
    Preferences,
};

QIcon toolIcon(ToolIcon icon);

} // namespace quarvex::ui
