// The background dialog of Auto Remove Background: method and parameters, with the proposed
// baseline drawn over the spectrum before the user applies it.
#pragma once

#include "specdata/SpectrumEdits.h"

#include <QDialog>

#include <span>
#include <vector>

class QComboBox;
class QCustomPlot;
class QDoubleSpinBox;
class QLabel;

namespace quarvex::ui {

class BackgroundDialog : public QDialog {
    Q_OBJECT

public:
    /// The dialog for the spectrum (x, y); it proposes the ALS baseline with its defaults.
    BackgroundDialog(std::span<const float> x, std::span<const float> y, QWidget* parent);

    /// The edit that Apply stands for.
    BaselineEdit edit() const;

    /// The plot: graph 0 the spectrum, graph 1 the proposed baseline (empty when the parameters
    /// are refused; the message tells why).
    QCustomPlot* plot() const { return plot_; }
    QComboBox* method() const { return method_; }
    QDoubleSpinBox* penalty() const { return penalty_; }
    QString message() const;

private:
    void propose();

    std::vector<float> xValues_;
    std::vector<float> yValues_;
    QComboBox* method_ = nullptr;
    QDoubleSpinBox* penalty_ = nullptr;
    QDoubleSpinBox* asymmetry_ = nullptr;
    QDoubleSpinBox* halfWidth_ = nullptr;
    QCustomPlot* plot_ = nullptr;
    QLabel* message_ = nullptr;
};

} // namespace quarvex::ui
