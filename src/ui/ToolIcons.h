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
    RemoveSpike,
    Smooth,
};

QIcon toolIcon(ToolIcon icon);

/// A small rounded swatch of a colour (28 x 12 pixels): a spectrum's or a pattern's colour in
/// a list.
QIcon colourSwatch(const QColor& colour);

} // namespace quarvex::ui
