// Printing the view and saving it as PDF or PNG.
#pragma once

#include <QString>

class QPrinter;

namespace quarvex::ui {

class SpectrumView;

/// Prints the view on one landscape page: a header line (`caption`) above the view scaled to
/// the page width, drawn as vectors.
void PRINTOUTMAINSCREEN(SpectrumView& view, QPrinter& printer, const QString& caption);

/// Saves the view as it is shown: PDF (vectors) when `path` ends in ".pdf", else PNG at twice
/// the screen resolution. False when the file could not be written.
bool exportView(SpectrumView& view, const QString& path);

} // namespace quarvex::ui
