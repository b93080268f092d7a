// The results of a peak fit as the user reads and copies them.
#pragma once

#include "processing/PeakFitting.h"
#include "ui/ViewOverlays.h"

#include <QString>

namespace quarvex::ui {

/// "value ± error" with the error to two significant digits and the value to the same
/// decimal place ("1086.12 ± 0.03"); "value ± n/a" when the error is not available.
QString valueWithError(double value, double error);

/// The fit as tab-separated text for a spreadsheet: spectrum, window and profile, one row per
/// peak (centre, FWHM, height, area and mix, each followed by its standard error), then the
/// background with its error, chi-square, iterations and points. Values in full single
/// precision (9 significant digits); an error that is not available is "n/a".
QString fitTableText(const PeakFitResult& fit, const QString& spectrum, const XRange& window);

/// "Gaussian" or "pseudo-Voigt".
QString profileName(PeakProfile profile);

} // namespace quarvex::ui
