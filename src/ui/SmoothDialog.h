// The smoothing dialog: Savitzky-Golay window (in x units) and order, with the smoothed curve
// drawn over the spectrum before the user applies it.
#pragma once

#include "specdata/SpectrumEdits.h"

#include <QDialog>

#include <span>
#include <vector>

class QCustomPlot;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace quarvex::ui {

class SmoothDialog : public QDialog {
    Q_OBJECT

public:
    /// The dialog for the spectrum (x, y); it proposes a window of five points, order 2.
    SmoothDialog(std::span<const float> x, std::span<const float> y, QWidget* parent);

    /// The edit that Apply stands for.
    SmoothEdit edit() const;

    /// The plot: graph 0 the spectrum, graph 1 the smoothed values (empty when the parameters
    /// are refused; the message tells why, and Apply is greyed).
    QCustomPlot* plot() const { return plot_; }
    QDoubleSpinBox* width() const { return width_; }
    QSpinBox* order() const { return order_; }
    QPushButton* applyButton() const { return apply_; }
    QString message() const;

private:
    void preview();

    std::vector<float> xValues_;
    std::vector<float> yValues_;
    QDoubleSpinBox* width_ = nullptr;
    QSpinBox* order_ = nullptr;
    QCustomPlot* plot_ = nullptr;
    QLabel* message_ = nullptr;
    QPushButton* apply_ = nullptr;
};

} // namespace quarvex::ui
