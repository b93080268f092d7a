// The scale and data-type dialogs: forms whose values the main window hands to the core.
#include "ui/SpectrumDialogs.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace quarvex::ui {

QFormLayout* makeForm(QDialog& dialog, const QString& title, const QString& spectrumName) {
    dialog.setWindowTitle(title);
    auto* layout = new QVBoxLayout(&dialog);
    auto* name = new QLabel(QStringLiteral("<b>%1</b>").arg(spectrumName.toHtmlEscaped()), &dialog);
    layout->addWidget(name);
    auto* form = new QFormLayout();
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    return form;
}

AdjustScaleDialog::AdjustScaleDialog(const QString& spectrumName, float scaleFactor,
                                     float absoluteScale, QWidget* parent)
    : QDialog(parent) {
    QFormLayout* form = makeForm(*this, QStringLiteral("Adjust Scale"), spectrumName);
    factor_ = new QDoubleSpinBox(this);
    factor_->setRange(0.001, 1000.0);
    factor_->setDecimals(3);
    factor_->setSingleStep(0.1);
    factor_->setToolTip(QStringLiteral("The spectrum is drawn this many times its height"));
    absolute_ = new QDoubleSpinBox(this);
    absolute_->setRange(0.0, 1.0e12);
    absolute_->setDecimals(2);
    absolute_->setSpecialValueText(QStringLiteral("Automatic"));
    absolute_->setToolTip(QStringLiteral("The intensity range drawn as full height; give several "
                                         "spectra the same value to compare their intensities. "
                                         "0 = the spectrum's own range"));
    form->addRow(QStringLiteral("Scale factor:"), factor_);
    form->addRow(QStringLiteral("Full-scale intensity:"), absolute_);
    setValues(scaleFactor, absoluteScale);
}

float AdjustScaleDialog::scaleFactor() const {
    return static_cast<float>(factor_->value());
}

float AdjustScaleDialog::absoluteScale() const {
    return static_cast<float>(absolute_->value());
}

void AdjustScaleDialog::setValues(float scaleFactor, float absoluteScale) {
    factor_->setValue(scaleFactor);
    absolute_->setValue(absoluteScale);
}

AdjustDataTypeDialog::AdjustDataTypeDialog(const QString& spectrumName, const QString& dataType,
                                           QWidget* parent)
    : QDialog(parent) {
    QFormLayout* form = makeForm(*this, QStringLiteral("Adjust Data Type"), spectrumName);
    type_ = new QComboBox(this);
    type_->setEditable(true);
    type_->addItems({QStringLiteral("RAMAN"), QStringLiteral("XRD"), QStringLiteral("ENERGY")});
    type_->setToolTip(QStringLiteral("RAMAN: Raman shift in cm-1; ENERGY: energy-calibrated; "
                                     "any other type: diffraction over 2-theta"));
    form->addRow(QStringLiteral("Data type:"), type_);
    setDataType(dataType);
}

QString AdjustDataTypeDialog::dataType() const {
    return type_->currentText();
}

void AdjustDataTypeDialog::setDataType(const QString& dataType) {
    type_->setCurrentText(dataType);
}

} // namespace quarvex::ui
