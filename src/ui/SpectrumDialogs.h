// The "Adjust Scale" and "Adjust Data Type" dialogs of one spectrum, and the form they share.
#pragma once

#include <QDialog>

class QComboBox;
class QDoubleSpinBox;
class QFormLayout;

namespace quarvex::ui {

/// Lays out a dialog of one form: its title, a bold heading line (the spectrum or file it is
/// about), the form (returned, for the caller's rows) and OK/Cancel.
QFormLayout* makeForm(QDialog& dialog, const QString& title, const QString& spectrumName);

/// Edits SCALE_FACT (the factor the spectrum is drawn with) and ABS_SCALE (the y range drawn as
/// full height, 0 = the spectrum's own range).
class AdjustScaleDialog : public QDialog {
    Q_OBJECT

public:
    AdjustScaleDialog(const QString& spectrumName, float scaleFactor, float absoluteScale,
                      QWidget* parent = nullptr);

    float scaleFactor() const;
    float absoluteScale() const;
    void setValues(float scaleFactor, float absoluteScale);

private:
    QDoubleSpinBox* factor_ = nullptr;
    QDoubleSpinBox* absolute_ = nullptr;
};

/// Edits DTYPE: "RAMAN", "XRD", "ENERGY" or another one-word type.
class AdjustDataTypeDialog : public QDialog {
    Q_OBJECT

public:
    AdjustDataTypeDialog(const QString& spectrumName, const QString& dataType,
                         QWidget* parent = nullptr);

    QString dataType() const;
    void setDataType(const QString& dataType);

private:
    QComboBox* type_ = nullptr;
};

} // namespace quarvex::ui
