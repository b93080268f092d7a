#include "ui/SmoothDialog.h"

#include "common/QuarvexError.h"
#include "processing/SpectrumChecks.h"
#include "ui/PreviewPlot.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <qcustomplot.h>

#include <cmath>

namespace quarvex::ui {

namespace {

constexpr int kProposedWindowPoints = 5;

} // namespace

SmoothDialog::SmoothDialog(std::span<const float> x, std::span<const float> y, QWidget* parent)
    : QDialog(parent), xValues_(x.begin(), x.end()), yValues_(y.begin(), y.end()) {
    setWindowTitle(QStringLiteral("Smooth"));
    const double spacing = x.size() > 1 ? meanSpacing(x) : 1.0;
    width_ = new QDoubleSpinBox(this);
    // Two decimals would round a fine spacing away: show three significant figures of it.
    const int decimals = std::clamp(2 - static_cast<int>(std::floor(std::log10(spacing))), 1, 6);
    width_->setDecimals(decimals);
    width_->setRange(0.0, 1.0e7);
    width_->setSingleStep(spacing * 2.0);
    width_->setValue(spacing * kProposedWindowPoints);
    order_ = new QSpinBox(this);
    order_->setRange(0, 6);
    order_->setValue(SmoothEdit{}.order);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Window (x units)"), width_);
    form->addRow(QStringLiteral("Polynomial order"), order_);

    plot_ = makePreviewPlot(x, y, QStringLiteral("smoothed"), this);
    const PreviewControls controls = layOutPreviewDialog(*this, form, plot_);
    message_ = controls.message;
    apply_ = controls.apply;

    connect(width_, &QDoubleSpinBox::valueChanged, this, &SmoothDialog::preview);
    connect(order_, &QSpinBox::valueChanged, this, &SmoothDialog::preview);
    preview();
}

SmoothEdit SmoothDialog::edit() const {
    return {width_->value(), 0, order_->value()};
}

QString SmoothDialog::message() const {
    return message_->text();
}

// Draws the smoothed values the present parameters give; refused parameters clear them, say why
// and grey Apply.
void SmoothDialog::preview() {
    try {
        int windowPoints = 0;
        const std::vector<float> smoothed =
            smoothedValues(xValues_, yValues_, edit(), &windowPoints);
        showProposal(*plot_, xValues_, smoothed);
        message_->setText(
            QStringLiteral("Window of %1 points, order %2. Apply smooths the spectrum.")
                .arg(windowPoints)
                .arg(order_->value()));
        apply_->setEnabled(true);
    } catch (const QuarvexError& error) {
        showProposal(*plot_, xValues_, {});
        message_->setText(QString::fromStdString(error.text()));
        apply_->setEnabled(false);
    }
}

} // namespace quarvex::ui
