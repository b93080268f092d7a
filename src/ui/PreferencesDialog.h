// The "Preferences" dialog: the sixteen values of "QV.ini", and the view's own settings.
#pragma once

#include "shell/Preferences.h"
#include "shell/ViewSettings.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QSpinBox;

namespace quarvex::ui {

/// Edits a copy of the preferences and of the view settings; `values()` and `viewSettings()`
/// return the edited copies, which the main window applies on OK.
class PreferencesDialog : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesDialog(const Preferences& preferences, const ViewSettings& view = {},
                               QWidget* parent = nullptr);

    Preferences values() const;
    void setValues(const Preferences& preferences);
    ViewSettings viewSettings() const;

private:
    QCheckBox* compileLibraryAtStart_ = nullptr;
    QComboBox* profileSetting_ = nullptr;
    QCheckBox* machineErrorSearch_ = nullptr;
    QCheckBox* reportIterations_ = nullptr;
    QCheckBox* stackSpectra_ = nullptr;
    QSpinBox* noiseSegments_ = nullptr;
    QSpinBox* peakThreshold_ = nullptr;
    QDoubleSpinBox* matchTolerance_ = nullptr;
    QDoubleSpinBox* xrayWavelength_ = nullptr;
    QSpinBox* searchRangeStart_ = nullptr;
    QSpinBox* searchRangeEnd_ = nullptr;
    QSpinBox* resultsShown_ = nullptr;
    QSpinBox* peakSmoothingPoints_ = nullptr;
    QSpinBox* peakMinSeparation_ = nullptr;
    QCheckBox* reverseXAxis_ = nullptr;
    QCheckBox* showGrid_ = nullptr;
    QCheckBox* intensityNumbers_ = nullptr; ///< a view setting, not in QV.ini
};

} // namespace quarvex::ui
