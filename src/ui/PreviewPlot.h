// The plot of an editing dialog's preview: the spectrum, and over it what the edit proposes.
#pragma once

#include <QString>

#include <span>

class QCustomPlot;
class QDialog;
class QLabel;
class QLayout;
class QPushButton;
class QWidget;

namespace quarvex::ui {

/// A plot with graph 0 the spectrum (x, y) and graph 1, empty until shown, named `proposal`.
/// The wheel zooms and a drag pans, so that a band can be looked at closely.
QCustomPlot* makePreviewPlot(std::span<const float> x, std::span<const float> y,
                             const QString& proposal, QWidget* parent);

/// Draws `values` over x as graph 1 (empty `values` clear it), fits the axes to both curves and
/// redraws.
void showProposal(QCustomPlot& plot, std::span<const float> x, std::span<const float> values);

/// The widgets an editing dialog keeps of its preview layout.
struct PreviewControls {
    QLabel* message = nullptr;    ///< what the proposal is, or why it is refused
    QPushButton* apply = nullptr; ///< accepts the dialog; greyed while the parameters are refused
};

/// Lays out an editing dialog: its parameters, the preview plot, a message line and Apply/Cancel
/// (Apply accepts, Cancel rejects).
PreviewControls layOutPreviewDialog(QDialog& dialog, QLayout* parameters, QCustomPlot* plot);

} // namespace quarvex::ui
