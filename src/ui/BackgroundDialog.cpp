#include "ui/BackgroundDialog.h"

#include "common/QuarvexError.h"
#include "ui/PreviewPlot.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <qcustomplot.h>

namespace quarvex::ui {

BackgroundDialog::BackgroundDialog(std::span<const float> x, std::span<const float> y,
                                   QWidget* parent)
    : QDialog(parent), xValues_(x.begin(), x.end()), yValues_(y.begin(), y.end()) {
    setWindowTitle(QStringLiteral("Auto Remove Background"));
    const BaselineEdit defaults;
    method_ = new QComboBox(this);
    method_->addItems({QStringLiteral("ALS (asymmetric least squares)"), QStringLiteral("arPLS"),
                       QStringLiteral("SNIP (peak clipping)")});
    penalty_ = new QDoubleSpinBox(this);
    penalty_->setRange(1.0, 1.0e12);
    penalty_->setDecimals(0);
    penalty_->setValue(defaults.als.penalty);
    asymmetry_ = new QDoubleSpinBox(this);
    asymmetry_->setRange(0.0001, 0.4999);
    asymmetry_->setDecimals(4);
    asymmetry_->setSingleStep(0.001);
    asymmetry_->setValue(defaults.als.asymmetry);
    halfWidth_ = new QDoubleSpinBox(this);
    halfWidth_->setRange(0.001, 1.0e6);
    halfWidth_->setValue(defaults.snip.halfWidth);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Method"), method_);
    form->addRow(QStringLiteral("Penalty (per x unit^4)"), penalty_);
    form->addRow(QStringLiteral("Asymmetry (ALS)"), asymmetry_);
    form->addRow(QStringLiteral("Half-width (SNIP, x units)"), halfWidth_);

    plot_ = makePreviewPlot(x, y, QStringLiteral("proposed baseline"), this);
    message_ = layOutPreviewDialog(*this, form, plot_).message;

    connect(method_, &QComboBox::currentIndexChanged, this, &BackgroundDialog::propose);
    for (QDoubleSpinBox* box : {penalty_, asymmetry_, halfWidth_}) {
        connect(box, &QDoubleSpinBox::valueChanged, this, &BackgroundDialog::propose);
    }
    propose();
}

BaselineEdit BackgroundDialog::edit() const {
    BaselineEdit edit;
    const int method = method_->currentIndex();
    edit.method = method == 1   ? BaselineMethod::Arpls
                  : method == 2 ? BaselineMethod::Snip
                                : BaselineMethod::Als;
    edit.als.penalty = penalty_->value();
    edit.als.asymmetry = asymmetry_->value();
    edit.arpls.penalty = penalty_->value();
    edit.snip.halfWidth = halfWidth_->value();
    return edit;
}

QString BackgroundDialog::message() const {
    return message_->text();
}

// Draws the baseline the present parameters give; refused parameters clear it and say why.
void BackgroundDialog::propose() {
    if (method_->currentIndex() == 1 && sender() == method_) {
        penalty_->blockSignals(true);
        penalty_->setValue(ArplsParameters{}.penalty);
        penalty_->blockSignals(false);
    }
    try {
        int passes = 0;
        const std::vector<float> baseline = proposedBaseline(xValues_, yValues_, edit(), &passes);
        showProposal(*plot_, xValues_, baseline);
        message_->setText(
            QStringLiteral("Proposed baseline: %1 passes. Apply subtracts it.").arg(passes));
    } catch (const QuarvexError& error) {
        showProposal(*plot_, xValues_, {});
        message_->setText(QString::fromStdString(error.text()));
    }
}

} // namespace quarvex::ui
