// The Edit Spectrum dock: window, starting peaks, peak search, fit, tables and copy.
#include "ui/EditSpectrumDock.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "processing/PeakSearch.h"
#include "ui/Commands.h"
#include "ui/CsvExport.h"
#include "ui/FitTable.h"
#include "ui/ProgressRunner.h"
#include "ui/QtText.h"
#include "ui/RangeEditor.h"
#include "ui/SpectrumView.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

namespace {

QTreeWidget* table(const QStringList& headers, QWidget* parent) {
    auto* tree = new QTreeWidget(parent);
    tree->setColumnCount(static_cast<int>(headers.size()));
    tree->setHeaderLabels(headers);
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->setAlternatingRowColors(true);
    tree->setSelectionMode(QAbstractItemView::NoSelection);
    tree->header()->setStretchLastSection(false);
    return tree;
}

void fitColumns(QTreeWidget* tree) {
    for (int column = 0; column < tree->columnCount(); ++column) {
        tree->resizeColumnToContents(column);
    }
}

QString positionList(const std::vector<float>& positions) {
    QStringList texts;
    for (const float x : positions) {
        texts.append(QString::number(static_cast<double>(x), 'f', 1));
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace

EditSpectrumDock::EditSpectrumDock(ModeContext context, QWidget* parent)
    : QDockWidget(QStringLiteral("Edit Spectrum"), parent), context_(std::move(context)) {
    setObjectName(QStringLiteral("EditSpectrumDock"));
    auto* body = new QWidget(this);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(6, 4, 6, 6);

    auto* windowBox = new QGroupBox(QStringLiteral("Window"), body);
    auto* windowLayout = new QVBoxLayout(windowBox);
    spectrumLabel_ = noteLabel(windowBox);
    windowLayout->addWidget(spectrumLabel_);
    window_ = new RangeEditor(
        context_.view, [this](QString& text) { return defaultWindow(text); }, windowBox);
    windowLayout->addWidget(window_);
    layout->addWidget(windowBox);

    auto* peaksBox = new QGroupBox(QStringLiteral("Peaks"), body);
    auto* peaksLayout = new QGridLayout(peaksBox);
    profile_ = new QComboBox(peaksBox);
    profile_->addItems({QStringLiteral("1: Gaussian"), QStringLiteral("2: pseudo-Voigt")});
    profile_->setToolTip(QStringLiteral("The peak profile of the fit (a preference)"));
    auto* findButton = new QPushButton(QStringLiteral("Find Peaks"), peaksBox);
    findButton->setToolTip(QStringLiteral("Find the peaks in the window and mark them"));
    placeButton_ = new QPushButton(QStringLiteral("Place Peaks"), peaksBox);
    placeButton_->setCheckable(true);
    placeButton_->setToolTip(
        QStringLiteral("On: each click on the view places a starting peak for the fit"));
    auto* clearPeaks = new QPushButton(QStringLiteral("Clear Peaks"), peaksBox);
    linearBackground_ = new QCheckBox(QStringLiteral("Linear background"), peaksBox);
    linearBackground_->setToolTip(
        QStringLiteral("Take the straight line through the window's end regions (a tenth of "
                       "its points at each end) off before the fit, for peaks on a slope"));
    peaksLayout->addWidget(new QLabel(QStringLiteral("Profile:"), peaksBox), 0, 0);
    peaksLayout->addWidget(profile_, 0, 1, 1, 2);
    peaksLayout->addWidget(linearBackground_, 1, 0, 1, 3);
    peaksLayout->addWidget(findButton, 2, 0);
    peaksLayout->addWidget(placeButton_, 2, 1);
    peaksLayout->addWidget(clearPeaks, 2, 2);
    peakNote_ = noteLabel(peaksBox);
    peaksLayout->addWidget(peakNote_, 3, 0, 1, 3);
    layout->addWidget(peaksBox);

    auto* actions = new QHBoxLayout();
    auto* fitButton = new QPushButton(QStringLiteral("Fit"), body);
    fitButton->setDefault(true);
    fitButton->setToolTip(QStringLiteral("Fit the peaks of the window"));
    copyButton_ = new QPushButton(QStringLiteral("Copy"), body);
    copyButton_->setToolTip(QStringLiteral("Copy the fit table as tab-separated text"));
    csvButton_ = new QPushButton(QStringLiteral("Export CSV..."), body);
    csvButton_->setToolTip(QStringLiteral("Save the fit table as a CSV file"));
    auto* clearFitButton = new QPushButton(QStringLiteral("Clear Fit"), body);
    actions->addWidget(fitButton, 1);
    actions->addWidget(copyButton_);
    actions->addWidget(csvButton_);
    actions->addWidget(clearFitButton);
    layout->addLayout(actions);

    tabs_ = new QTabWidget(body);
    auto* fitPage = new QWidget(tabs_);
    auto* fitLayout = new QVBoxLayout(fitPage);
    fitLayout->setContentsMargins(4, 4, 4, 4);
    fitTable_ = table({QStringLiteral("#"), QStringLiteral("Centre"), QStringLiteral("FWHM"),
                       QStringLiteral("Height"), QStringLiteral("Area"), QStringLiteral("Mix")},
                      fitPage);
    fitLayout->addWidget(fitTable_, 1);
    fitSummary_ = noteLabel(fitPage);
    fitLayout->addWidget(fitSummary_);
    tabs_->addTab(fitPage, QStringLiteral("Fit Results"));
    auto* peakPage = new QWidget(tabs_);
    auto* peakLayout = new QVBoxLayout(peakPage);
    peakLayout->setContentsMargins(4, 4, 4, 4);
    peakTable_ = table({QStringLiteral("#"), QStringLiteral("Position"), QStringLiteral("Height")},
                       peakPage);
    peakLayout->addWidget(peakTable_, 1);
    peakSummary_ = noteLabel(peakPage);
    peakLayout->addWidget(peakSummary_);
    tabs_->addTab(peakPage, QStringLiteral("Peaks Found"));
    layout->addWidget(tabs_, 1);
    setWidget(body);

    spectrumButtons_ = {findButton, placeButton_, clearPeaks, fitButton, clearFitButton};
    const std::pair<QPushButton*, int> commands[] = {
        {findButton, kCmdFindPeaks}, {fitButton, kCmdFitPeaks}, {copyButton_, kCmdCopyFitTable}};
    for (const auto& [button, command] : commands) {
        connect(button, &QPushButton::clicked, this,
                [this, command] { emit commandRequested(command); });
    }
    connect(profile_, &QComboBox::activated, this,
            [this](int index) { context_.state.quarvex.preferences.profileSetting = index + 1; });
    connect(placeButton_, &QPushButton::toggled, this, [this](bool on) {
        context_.view.setPeakPlacingMode(on);
        updatePeakNote();
    });
    connect(clearPeaks, &QPushButton::clicked, this, &EditSpectrumDock::clearPeaks);
    connect(clearFitButton, &QPushButton::clicked, this, &EditSpectrumDock::clearFit);
    connect(csvButton_, &QPushButton::clicked, this, [this] {
        try {
            exportTableCsv();
        } catch (const QuarvexError& error) {
            context_.interaction->showError(this, QString::fromStdString(error.text()),
                                            QString::fromStdString(error.title()));
        }
    });
    connect(&context_.view, &SpectrumView::peakPlaced, this, &EditSpectrumDock::placePeak);
    connect(context_.view.xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), window_,
            &RangeEditor::showCurrent);
    spectraChanged();
}

std::optional<XRange> EditSpectrumDock::defaultWindow(QString& text) const {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    if (k < 0 || s.NUMDATA[at(k)] == 0) {
        return std::nullopt;
    }
    const auto x = s.xValues(k);
    const QCPRange shown = context_.view.xAxis->range();
    text = QStringLiteral("The x-range the view shows. Drag on the view to select a "
                          "window around the peaks to fit.");
    return XRange{std::max<double>(shown.lower, x.front()),
                  std::min<double>(shown.upper, x.back())};
}

std::optional<XRange> EditSpectrumDock::window() const {
    return window_->range();
}

void EditSpectrumDock::spectraChanged() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    spectrumLabel_->setText(k < 0 ? QStringLiteral("Open a spectrum to fit its peaks.")
                                  : spectrumCaption(s, k));
    window_->refresh(s, k);
    profile_->setCurrentIndex(context_.state.quarvex.preferences.profileSetting == 1 ? 0 : 1);
    if (spectrum_ >= 0 &&
        (spectrum_ >= s.count() || s.PATH[at(spectrum_)] != spectrumPath_ || spectrum_ != k)) {
        // The work belongs to a spectrum that is gone or no longer the active one.
        clearFit();
        found_.clear();
        peakTable_->clear();
        peakSummary_->clear();
        placed_.clear();
        spectrum_ = -1;
        showMarks();
    }
    for (QPushButton* button : spectrumButtons_) {
        button->setEnabled(k >= 0);
    }
    if (k < 0) {
        placeButton_->setChecked(false);
    }
    enableFitExports(fit_.has_value());
    updatePeakNote();
}

void EditSpectrumDock::activate() {
    context_.view.setPeakPlacingMode(placeButton_->isChecked());
    showFit();
    showMarks();
}

PeakFitSettings EditSpectrumDock::fitSettings() const {
    PeakFitSettings settings = peakFitSettings(context_.state.quarvex.preferences);
    settings.maxIterations = iterationLimit_;
    return settings;
}

void EditSpectrumDock::findPeaks() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    const auto range = window_->range();
    if (k < 0 || !range) {
        return;
    }
    const PeakSearchResult result =
        quarvex::findPeaks(s.xValues(k), s.yValues(k), fitSettings().search,
                           static_cast<float>(range->start), static_cast<float>(range->end));
    spectrum_ = k;
    spectrumPath_ = s.PATH[at(k)];
    found_.clear();
    peakTable_->clear();
    for (std::size_t i = 0; i < result.peaks.size(); ++i) {
        const FoundPeak& peak = result.peaks[i];
        found_.push_back(peak.x);
        auto* item = new QTreeWidgetItem(peakTable_);
        item->setText(0, QString::number(i + 1));
        item->setText(1, QString::number(static_cast<double>(peak.x), 'f', 2));
        item->setText(2, QString::number(static_cast<double>(peak.height), 'g', 6));
        for (int column = 0; column < 3; ++column) {
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    fitColumns(peakTable_);
    peakSummary_->setText(
        QStringLiteral("%1 between %2 and %3. Noise level %4; a peak stands at least %5 "
                       "above its surroundings.")
            .arg(countOf(static_cast<long long>(result.peaks.size()), QStringLiteral("peak"),
                         QStringLiteral("peaks")))
            .arg(range->start, 0, 'f', 1)
            .arg(range->end, 0, 'f', 1)
            .arg(static_cast<double>(result.noise), 0, 'g', 4)
            .arg(static_cast<double>(result.threshold), 0, 'g', 4));
    tabs_->setCurrentIndex(1);
    showMarks();
}

void EditSpectrumDock::fit() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    const auto range = window_->range();
    if (k < 0 || !range) {
        return;
    }
    const auto low = static_cast<float>(range->start);
    const auto high = static_cast<float>(range->end);
    const bool overLine = linearBackground_->isChecked();
    PeakFitResult result;
    std::optional<StraightLine> line;
    runWithProgress(this, QStringLiteral("Fitting Peaks..."), [&](const ProgressCallback&) {
        if (overLine) {
            LineBackgroundFit levelled =
                fitPeaksOverLine(s.xValues(k), s.yValues(k), low, high, placed_, fitSettings());
            result = std::move(levelled.fit);
            line = levelled.line;
        } else {
            result =
                ORGANIZE_PEAKFITTING(s.xValues(k), s.yValues(k), low, high, placed_, fitSettings());
        }
    });
    if (!result.converged) {
        throw QuarvexError(std::string(kDidNotConvergeText), std::string(kPeakFitErrorTitle));
    }
    spectrum_ = k;
    spectrumPath_ = s.PATH[at(k)];
    fit_ = std::move(result);
    line_ = line;
    fitWindow_ = *range;
    tabs_->setCurrentIndex(0);
    context_.view.zoomTo(fitWindow_);
    showFit();
    showMarks();
    enableFitExports(true);
}

void EditSpectrumDock::showFit() {
    fitTable_->clear();
    if (!fit_ || spectrum_ < 0) {
        fitSummary_->clear();
        context_.view.setFitOverlay(std::nullopt);
        return;
    }
    const PeakFitResult& f = *fit_;
    for (std::size_t i = 0; i < f.peaks.size(); ++i) {
        const FittedPeak& p = f.peaks[i];
        auto* item = new QTreeWidgetItem(fitTable_);
        item->setText(0, QString::number(i + 1));
        item->setText(1, valueWithError(p.centre, p.centreError));
        item->setText(2, valueWithError(p.fwhm, p.fwhmError));
        item->setText(3, valueWithError(p.height, p.heightError));
        item->setText(4, valueWithError(p.area, p.areaError));
        item->setText(5, f.profile == PeakProfile::gaussian ? QStringLiteral("0")
                                                            : valueWithError(p.mix, p.mixError));
        for (int column = 0; column < fitTable_->columnCount(); ++column) {
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    fitColumns(fitTable_);
    const FitQuality quality = lastQuality();
    const QString background =
        line_ ? QStringLiteral("Background line y = %1·x %2 %3, plus %4")
                    .arg(line_->slope, 0, 'g', 5)
                    .arg(line_->intercept < 0.0 ? QStringLiteral("−") : QStringLiteral("+"))
                    .arg(std::abs(line_->intercept), 0, 'g', 6)
                    .arg(valueWithError(f.background, f.backgroundError))
              : QStringLiteral("Background ") + valueWithError(f.background, f.backgroundError);
    fitSummary_->setText(QStringLiteral("%1 profile over %2 to %3 (%4 points). %5; chi-square "
                                        "%6, reduced chi-square %7, R² %8; %9 iterations%10.")
                             .arg(profileName(f.profile))
                             .arg(fitWindow_.start, 0, 'f', 1)
                             .arg(fitWindow_.end, 0, 'f', 1)
                             .arg(f.points)
                             .arg(background)
                             .arg(static_cast<double>(f.chisq), 0, 'g', 5)
                             .arg(quality.reducedChisq, 0, 'g', 5)
                             .arg(quality.rSquared, 0, 'f', 5)
                             .arg(f.iterations)
                             .arg(f.retried ? QStringLiteral(" (restarted once)") : QString()));

    FitOverlay overlay{
        spectrum_,
        QStringLiteral("Fit: %1 %2")
            .arg(f.peaks.size())
            .arg(f.peaks.size() == 1 ? QStringLiteral("peak") : QStringLiteral("peaks")),
        f.x,
        measuredValues(),
        f.fitted,
        f.components,
        f.background,
        {}};
    if (overlay.measured.empty()) {
        overlay.measured = overlay.fitted; // no residual rather than a misaligned one
    }
    if (line_) {
        for (const float x : f.x) {
            overlay.line.push_back(static_cast<float>(line_->at(x)));
        }
    }
    context_.view.setFitOverlay(std::move(overlay));
}

std::vector<float> EditSpectrumDock::measuredValues() const {
    const PeakFitResult& f = *fit_;
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const auto x = s.xValues(spectrum_);
    const auto y = s.yValues(spectrum_);
    const PointRun run = pointsWithin(x, f.x.front(), f.x.back());
    if (run.count != f.x.size()) {
        return {};
    }
    return {y.begin() + static_cast<std::ptrdiff_t>(run.first),
            y.begin() + static_cast<std::ptrdiff_t>(run.first + run.count)};
}

FitQuality EditSpectrumDock::lastQuality() const {
    if (!fit_ || spectrum_ < 0) {
        return {};
    }
    const std::vector<float> measured = measuredValues();
    // The line's slope and intercept were fitted to the data too.
    return measured.empty()
               ? FitQuality{}
               : fitQuality(measured, fit_->fitted, fit_->parameters.size() + (line_ ? 2 : 0));
}

void EditSpectrumDock::setLinearBackground(bool on) {
    linearBackground_->setChecked(on);
}

void EditSpectrumDock::clearFit() {
    fit_.reset();
    line_.reset();
    enableFitExports(false);
    showFit();
}

void EditSpectrumDock::placePeak(double x) {
    const int k = activeSpectrum(context_.state.specdata);
    if (k != spectrum_) {
        placed_.clear();
        spectrum_ = k;
        spectrumPath_ = context_.state.specdata.PATH[at(k)];
    }
    placed_.insert(std::upper_bound(placed_.begin(), placed_.end(), static_cast<float>(x)),
                   static_cast<float>(x));
    showMarks();
    updatePeakNote();
}

void EditSpectrumDock::clearPeaks() {
    placed_.clear();
    found_.clear();
    peakTable_->clear();
    peakSummary_->clear();
    showMarks();
    updatePeakNote();
}

void EditSpectrumDock::showMarks() {
    context_.view.setPeakMarks({spectrum_, found_, placed_});
}

void EditSpectrumDock::updatePeakNote() {
    if (!placed_.empty()) {
        peakNote_->setText(
            QStringLiteral("The fit starts from the %1 placed %2: %3.")
                .arg(placed_.size())
                .arg(placed_.size() == 1 ? QStringLiteral("peak") : QStringLiteral("peaks"))
                .arg(positionList(placed_)));
    } else if (placeButton_->isChecked()) {
        peakNote_->setText(QStringLiteral("Click on the view at each peak to fit."));
    } else {
        peakNote_->setText(QStringLiteral("The fit starts from the peaks found in the window; "
                                          "Place Peaks to choose them yourself."));
    }
}

QString EditSpectrumDock::tableText() const {
    if (!fit_ || spectrum_ < 0) {
        return {};
    }
    return fitTableText({*fit_, line_, lastQuality()},
                        QString::fromStdString(context_.state.specdata.NAME[at(spectrum_)]),
                        fitWindow_);
}

void EditSpectrumDock::copyTable() {
    if (fit_) {
        QApplication::clipboard()->setText(tableText());
    }
}

void EditSpectrumDock::exportTableCsv() {
    if (!fit_) {
        return;
    }
    const QFileInfo spectrum(QString::fromStdString(context_.state.specdata.PATH[at(spectrum_)]));
    const QString path = context_.interaction->askSaveFileName(
        this, QStringLiteral("Export Fit Table"),
        spectrum.dir().filePath(spectrum.completeBaseName() + QStringLiteral("_fit.csv")),
        QStringLiteral("CSV (*.csv)"));
    if (!path.isEmpty()) {
        saveText(path, csvFromTabs(tableText()), "Export Fit Table");
    }
}

void EditSpectrumDock::enableFitExports(bool on) {
    copyButton_->setEnabled(on);
    csvButton_->setEnabled(on);
}

void EditSpectrumDock::closeEvent(QCloseEvent* event) {
    placeButton_->setChecked(false);
    context_.view.setFitOverlay(std::nullopt); // the results stay for the next opening
    context_.view.setPeakMarks({});
    QDockWidget::closeEvent(event);
}

} // namespace quarvex::ui
