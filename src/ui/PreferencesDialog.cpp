// The preferences form, grouped by the part of the program each value steers.
#include "ui/PreferencesDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

namespace quarvex::ui {

namespace {

QSpinBox* spinBox(QWidget* parent, int low, int high, const QString& suffix = {}) {
    auto* box = new QSpinBox(parent);
    box->setRange(low, high);
    box->setSuffix(suffix);
    return box;
}

QDoubleSpinBox* realBox(QWidget* parent, double low, double high, int decimals,
                        const QString& suffix) {
    auto* box = new QDoubleSpinBox(parent);
    box->setRange(low, high);
    box->setDecimals(decimals);
    box->setSingleStep(std::pow(10.0, -(decimals - 1)));
    box->setSuffix(suffix);
    return box;
}

QFormLayout* group(QGridLayout* grid, const QString& title, int row, int column) {
    auto* box = new QGroupBox(title);
    auto* form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    grid->addWidget(box, row, column);
    return form;
}

} // namespace

PreferencesDialog::PreferencesDialog(const Preferences& preferences, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(QStringLiteral("Preferences"));
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout();
    layout->addLayout(grid);

    QFormLayout* view = group(grid, QStringLiteral("View"), 0, 0);
    stackSpectra_ = new QCheckBox(QStringLiteral("Stack spectra (off: overlay them)"), this);
    reverseXAxis_ = new QCheckBox(QStringLiteral("Reverse the x axis (x grows to the left)"), this);
    showGrid_ = new QCheckBox(QStringLiteral("Show the grid"), this);
    view->addRow(stackSpectra_);
    view->addRow(reverseXAxis_);
    view->addRow(showGrid_);

    QFormLayout* library = group(grid, QStringLiteral("Raman search"), 1, 0);
    compileLibraryAtStart_ =
        new QCheckBox(QStringLiteral("Compile the library at every start"), this);
    compileLibraryAtStart_->setToolTip(
        QStringLiteral("Skipped while the library folder is as its last compilation left it"));
    searchRangeStart_ = spinBox(this, 0, 10000, QStringLiteral(" cm-1"));
    searchRangeEnd_ = spinBox(this, 1, 10000, QStringLiteral(" cm-1"));
    resultsShown_ = spinBox(this, 1, 1000);
    library->addRow(compileLibraryAtStart_);
    library->addRow(QStringLiteral("Search range start:"), searchRangeStart_);
    library->addRow(QStringLiteral("Search range end:"), searchRangeEnd_);
    library->addRow(QStringLiteral("Results listed:"), resultsShown_);

    QFormLayout* peaks = group(grid, QStringLiteral("Peak search and fitting"), 0, 1);
    profileSetting_ = new QComboBox(this);
    profileSetting_->addItems({QStringLiteral("1: Gaussian"), QStringLiteral("2: pseudo-Voigt")});
    noiseSegments_ = spinBox(this, 1, 10000);
    peakThreshold_ = spinBox(this, 1, 1000, QStringLiteral(" × noise"));
    peakSmoothingPoints_ = spinBox(this, 1, 999, QStringLiteral(" points"));
    peakMinSeparation_ = spinBox(this, 1, 10000, QStringLiteral(" points"));
    peaks->addRow(QStringLiteral("Peak profile:"), profileSetting_);
    peaks->addRow(QStringLiteral("Noise segments:"), noiseSegments_);
    peaks->addRow(QStringLiteral("Peak threshold:"), peakThreshold_);
    peaks->addRow(QStringLiteral("Smoothing window:"), peakSmoothingPoints_);
    peaks->addRow(QStringLiteral("Least peak distance:"), peakMinSeparation_);

    QFormLayout* xray = group(grid, QStringLiteral("X-ray refinement"), 1, 1);
    machineErrorSearch_ =
        new QCheckBox(QStringLiteral("Refine the 2-theta zero shift (machine error)"), this);
    reportIterations_ =
        new QCheckBox(QStringLiteral("Write the number of iterations into reports"), this);
    matchTolerance_ = realBox(this, 0.001, 5.0, 4, QStringLiteral(" deg 2-theta"));
    xrayWavelength_ = realBox(this, 0.01, 10.0, 6, QStringLiteral(" Å"));
    xray->addRow(machineErrorSearch_);
    xray->addRow(reportIterations_);
    xray->addRow(QStringLiteral("Peak match tolerance:"), matchTolerance_);
    xray->addRow(QStringLiteral("Default wavelength:"), xrayWavelength_);

    // The search range cannot end before it starts.
    connect(searchRangeStart_, &QSpinBox::valueChanged, this,
            [this](int start) { searchRangeEnd_->setMinimum(start + 1); });

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    setValues(preferences);
}

void PreferencesDialog::setValues(const Preferences& p) {
    compileLibraryAtStart_->setChecked(p.compileLibraryAtStart);
    profileSetting_->setCurrentIndex(p.profileSetting == 1 ? 0 : 1);
    machineErrorSearch_->setChecked(p.machineErrorSearch);
    reportIterations_->setChecked(p.reportIterations);
    stackSpectra_->setChecked(p.stackSpectra);
    noiseSegments_->setValue(p.noiseSegments);
    peakThreshold_->setValue(p.peakThreshold);
    matchTolerance_->setValue(static_cast<double>(p.matchTolerance));
    xrayWavelength_->setValue(static_cast<double>(p.xrayWavelength));
    searchRangeEnd_->setMinimum(1);
    searchRangeStart_->setValue(p.searchRangeStart);
    searchRangeEnd_->setValue(p.searchRangeEnd);
    resultsShown_->setValue(p.resultsShown);
    peakSmoothingPoints_->setValue(p.peakSmoothingPoints);
    peakMinSeparation_->setValue(p.peakMinSeparation);
    reverseXAxis_->setChecked(p.reverseXAxis);
    showGrid_->setChecked(p.showGrid);
}

Preferences PreferencesDialog::values() const {
    Preferences p;
    p.compileLibraryAtStart = compileLibraryAtStart_->isChecked();
    p.profileSetting = profileSetting_->currentIndex() + 1;
    p.machineErrorSearch = machineErrorSearch_->isChecked();
    p.reportIterations = reportIterations_->isChecked();
    p.stackSpectra = stackSpectra_->isChecked();
    p.noiseSegments = noiseSegments_->value();
    p.peakThreshold = peakThreshold_->value();
    p.matchTolerance = static_cast<float>(matchTolerance_->value());
    p.xrayWavelength = static_cast<float>(xrayWavelength_->value());
    p.searchRangeStart = searchRangeStart_->value();
    p.searchRangeEnd = searchRangeEnd_->value();
    p.resultsShown = resultsShown_->value();
    p.peakSmoothingPoints = peakSmoothingPoints_->value();
    p.peakMinSeparation = peakMinSeparation_->value();
    p.reverseXAxis = reverseXAxis_->isChecked();
    p.showGrid = showGrid_->isChecked();
    return p;
}

} // namespace quarvex::ui
