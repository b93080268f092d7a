// The x-range a mode works on, shown and typed in two fields and kept in step with the view's
// selection.
#pragma once

#include "specdata/SpecDataGlobals.h"
#include "ui/ViewOverlays.h"

#include <QWidget>

#include <functional>
#include <optional>

class QDoubleSpinBox;
class QLabel;

namespace quarvex::ui {

class SpectrumView;

/// "From [ ] to [ ] cm-1": the view's selection when there is one, else the mode's default
/// range. Typing a bound selects the typed range in the view, so the two always agree; Reset
/// clears the selection and returns to the default.
class RangeEditor : public QWidget {
    Q_OBJECT

public:
    /// `fallback` gives the default range (nullopt: nothing loaded) and a note saying where it
    /// comes from.
    using Fallback = std::function<std::optional<XRange>(QString& note)>;

    RangeEditor(SpectrumView& view, Fallback fallback, QWidget* parent = nullptr);

    /// Shows the selection or the default again, after spectra or preferences changed, with
    /// the unit and x extent of `spectrum` (0-based; -1: nothing loaded).
    void refresh(const SPECDATA_GLOBALS& specdata, int spectrum);

    /// Shows the selection, or the default range as it is now.
    void showCurrent();

    /// The range shown; nullopt when nothing is loaded.
    std::optional<XRange> range() const;

signals:
    void rangeChanged();

private:
    void typed();

    SpectrumView& view_;
    Fallback fallback_;
    QDoubleSpinBox* from_ = nullptr;
    QDoubleSpinBox* to_ = nullptr;
    QLabel* source_ = nullptr;
    std::optional<XRange> limits_;
    std::optional<XRange> current_; ///< the range shown, unrounded (the fields show 0.1)
};

} // namespace quarvex::ui
