// The results of a peak fit as the user reads and copies them.
#pragma once

#include "processing/FitQuality.h"
#include "processing/LinearBackground.h"
#include "processing/PeakFitting.h"
#include "ui/ViewOverlays.h"

#include <QString>

#include <optional>

namespace quarvex::ui {

/// "value ± error" with the error to two significant digits and the value to the same
/// decimal place ("1086.12 ± 0.03"); "value ± n/a" when the error is not available.
QString valueWithError(double value, double error);

/// A fit with what is shown beside it: the background line taken off before it (none: the
/// constant background only) and its quality.
struct FitShown {
    const PeakFitResult& fit;
    const std::optional<StraightLine>& line;
    FitQuality quality;
};

/// The fit as tab-separated text for a spreadsheet: spectrum, window and profile, one row per
/// peak (centre, FWHM, height, area and mix, each followed by its standard error), then the
/// background with its error, the background line's slope and intercept (rows of their own, when
/// there is one), chi-square, reduced chi-square, R², iterations and points. Values in full single
/// precision (9 significant digits; the line, the reduced chi-square and R² in double, 10); an
/// error or figure that is not available is "n/a".
QString fitTableText(const FitShown& shown, const QString& spectrum, const XRange& window);

/// "Gaussian" or "pseudo-Voigt".
QString profileName(PeakProfile profile);

} // namespace quarvex::ui
