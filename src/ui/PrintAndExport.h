// Printing the view and saving it as a figure (PDF, SVG, PNG).
#pragma once

#include <QSize>
#include <QString>

class QPrinter;

namespace quarvex::ui {

class SpectrumView;

/// Prints the view on one page: a header line (`caption`) above the view laid out at the
/// page's size, as vectors. Fonts keep their point sizes and lines their widths, so the page
/// looks like the screen; the cross-hair and the selection shading are left out.
void PRINTOUTMAINSCREEN(SpectrumView& view, QPrinter& printer, const QString& caption);

/// Saves the view as a figure without cross-hair and selection shading: PDF or SVG (vectors)
/// by the extension, else PNG at twice the resolution. `size` in pixels; empty: as shown.
/// False when the file could not be written.
bool exportView(SpectrumView& view, const QString& path, QSize size = {});

} // namespace quarvex::ui
