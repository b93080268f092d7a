// The plot of an editing dialog's preview: the spectrum, and over it what the edit proposes.
#pragma once

#include <QString>

#include <span>

class QCustomPlot;
class QWidget;

namespace quarvex::ui {

/// A plot with graph 0 the spectrum (x, y) and graph 1, empty until shown, named `proposal`.
/// The wheel zooms and a drag pans, so that a band can be looked at closely.
QCustomPlot* makePreviewPlot(std::span<const float> x, std::span<const float> y,
                             const QString& proposal, QWidget* parent);

/// Draws `values` over x as graph 1 (empty `values` clear it), fits the axes to both curves and
/// redraws.
void showProposal(QCustomPlot& plot, std::span<const float> x, std::span<const float> values);

} // namespace quarvex::ui
