// What the modes draw over and under the loaded spectra: a reference spectrum, a peak fit with
// its residual, marks at peak positions, a refinement's residuals of its lines, and reflection
// ticks of reference patterns.
#pragma once

#include <QColor>
#include <QString>

#include <vector>

namespace quarvex::ui {

/// An x-range of the view in data units, start <= end.
struct XRange {
    double start = 0.0;
    double end = 0.0;
};

/// A reference spectrum drawn over an unknown (dashed, with a legend entry). It is not one of
/// the loaded spectra: its values are mapped so that over `range` its lowest and highest points
/// meet those of the unknown as drawn, wherever the unknown is stacked and however scaled.
struct ReferenceOverlay {
    QString legend;
    std::vector<float> x; ///< ascending, as read from the reference file
    std::vector<float> y;
    int spectrum = -1; ///< the unknown (0-based)
    XRange range;      ///< where the two are matched (the searched area)
};

/// A peak fit of a window of one spectrum, in the spectrum's own units: drawn with the
/// spectrum's scaling, the residual in a strip below the view.
struct FitOverlay {
    int spectrum = -1;
    QString legend;
    std::vector<float> x;                       ///< the window's abscissae
    std::vector<float> measured;                ///< the spectrum's values at x
    std::vector<float> fitted;                  ///< the fitted curve (with the background)
    std::vector<std::vector<float>> components; ///< each peak alone, without the background
    float background = 0.0F;
    std::vector<float> line; ///< a background line under the constant, at x; empty: none
};

/// Marks on one spectrum: peaks found by the peak search (labelled arrows) and the starting
/// positions the user placed for a fit (vertical lines).
struct PeakMarks {
    int spectrum = -1;
    std::vector<float> found;
    std::vector<float> placed;
};

/// One row of reflection ticks: a reference pattern's reflections at their positions (x units),
/// each tick as high as the reflection's share of the strongest (0 to 1).
struct TickRow {
    QString legend;
    QColor colour;
    std::vector<double> position;
    std::vector<double> height;
};

/// What a cell refinement says of each line it used: observed minus calculated 2-theta at the
/// line's fitted 2-theta, drawn as points about a zero line in a strip under the pattern.
struct LineResiduals {
    int spectrum = -1;                ///< the pattern (0-based)
    std::vector<double> twoTheta;     ///< the peaks' fitted 2-theta, degrees
    std::vector<double> obsMinusCalc; ///< degrees, one per twoTheta
};

/// Reflections of reference patterns, drawn as ticks in a strip under the view: one row per
/// pattern, the first row on top.
struct ReflectionTicks {
    std::vector<TickRow> rows;
};

} // namespace quarvex::ui
