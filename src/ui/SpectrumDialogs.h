// The "Adjust Scale" and "Adjust Data Type" dialogs of one spectrum.
#pragma once

#include <QDialog>

class QComboBox;
class QDoubleSpinBox;

namespace quarvex::ui {

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
