// How the X-ray Diffraction dock shows the mode's state: the pattern, the reference list, the
// ticks on the view, the peaks and the refined cell, and what can run now.
#include "ui/XrayDiffractionDock.h"

#include "common/IndexCast.h"
#include "specdata/SpecDataArrange.h"
#include "ui/QtText.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"
#include "ui/XrayPeakTable.h"
#include "ui/XrayResults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>

namespace quarvex::ui {

XrayPhase* XrayDiffractionDock::phase() {
    XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    return x.pattern >= 0 && !x.phases.empty() ? &x.phases.front() : nullptr;
}

const XrayPhase* XrayDiffractionDock::phase() const {
    const XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    return x.pattern >= 0 && !x.phases.empty() ? &x.phases.front() : nullptr;
}

std::string XrayDiffractionDock::referenceSource(int reference) const {
    if (reference < 0) {
        return {};
    }
    const DIFF_GLOBALS& diff = context_.state.diff;
    return (std::filesystem::path(diff.PATH[at(reference)]) / diff.NAME[at(reference)]).string();
}

int XrayDiffractionDock::firstActive() const {
    const std::vector<int> active = context_.state.diff.ACTIVE_ARRAY();
    return active.empty() ? -1 : active.front();
}

bool XrayDiffractionDock::isDiffractionPattern(int spectrum) const {
    return xAxisKindOf(context_.state.specdata.DTYPE[at(spectrum)]) == XAxisKind::TwoTheta;
}

WavelengthChoice XrayDiffractionDock::wavelengthChoice(int spectrum) const {
    const std::string wave =
        spectrum >= 0 ? context_.state.specdata.WAVE_INFO[at(spectrum)] : std::string();
    return chooseWavelengths(typedWavelength_, wave, context_.state.diff, firstActive(),
                             context_.state.quarvex.preferences.xrayWavelength);
}

std::vector<double> XrayDiffractionDock::wavelengths() const {
    const XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    if (phase() != nullptr && !x.wavelengths.empty()) {
        return x.wavelengths;
    }
    return wavelengthChoice(activeSpectrum(context_.state.specdata)).wavelengths;
}

bool XrayDiffractionDock::canRun(int command) const {
    const int k = activeSpectrum(context_.state.specdata);
    const bool pattern = k >= 0 && isDiffractionPattern(k);
    switch (command) {
    case kCmdOpenReference:
        return k >= 0;
    case kCmdFindXrayPeaks:
        return pattern;
    case kCmdRefineCell:
        return phase() != nullptr && !phase()->assignments.empty();
    case kCmdNewXrayProject:
    case kCmdSaveXrayProject:
        return pattern || phase() != nullptr;
    case kCmdOpenXrayProject:
        return true;
    case kCmdOpenOriginalDif:
    case kCmdOpenAdjustedDif:
    case kCmdViewReference:
    case kCmdCreateSpectrumFromDif:
        return selectedReference() >= 0;
    default:
        // Open GRELT Database.... queries an online database that this version does not reach.
        return false;
    }
}

void XrayDiffractionDock::spectraChanged() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    if (x.pattern >= 0) {
        // The peaks' pattern moves down when a spectrum before it is deleted, or is gone.
        const auto found = std::find(s.PATH.begin(), s.PATH.end(), patternPath_);
        if (found == s.PATH.end()) {
            clearPattern();
        } else {
            x.pattern = static_cast<int>(found - s.PATH.begin());
        }
    }
    const int k = activeSpectrum(s);
    const std::string shown = k >= 0 ? s.PATH[at(k)] : std::string();
    if (shown != shownPath_) {
        shownPath_ = shown;
        typedWavelength_.reset();
    }
    const QSignalBlocker quiet(machineError_);
    machineError_->setChecked(context_.state.quarvex.preferences.machineErrorSearch);
    refreshPattern();
    refreshReferences();
    refreshPhase();
    refreshResults();
    showStripPreview();
}

void XrayDiffractionDock::activate() {
    showTicks();
    showPeakMarks();
    showStripPreview();
    showLineFits();
}

void XrayDiffractionDock::refreshPattern() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    if (k < 0) {
        patternLabel_->setText(QStringLiteral("Open a diffraction pattern: File > Open."));
    } else if (!isDiffractionPattern(k)) {
        patternLabel_->setText(
            QStringLiteral("<b>%1</b> is not a diffraction pattern (data type %2). Make a "
                           "pattern primary in the File Manager, or give this spectrum a "
                           "diffraction data type with Adjust Data Type.")
                .arg(QString::fromStdString(s.NAME[at(k)]).toHtmlEscaped(),
                     QString::fromStdString(s.DTYPE[at(k)])));
    } else {
        patternLabel_->setText(spectrumCaption(s, k) +
                               QStringLiteral(" &nbsp;· %1")
                                   .arg(QString::fromStdString(s.DTYPE[at(k)]).toHtmlEscaped()));
    }
    const std::vector<double> waves = wavelengths();
    const QSignalBlocker quiet(wavelength_);
    wavelength_->setValue(waves.front());
    wavelength_->setEnabled(k >= 0 && isDiffractionPattern(k));
    const std::string source = phase() != nullptr ? wavelengthSource_ : wavelengthChoice(k).source;
    QString from = QStringLiteral("from the preferences");
    if (source == "option") {
        from = QStringLiteral("as typed");
    } else if (source == "pattern") {
        from = QStringLiteral("from the pattern's file");
    } else if (source == "project") {
        from = QStringLiteral("from the project");
    } else if (source == "reference" && firstActive() >= 0) {
        from = QStringLiteral("from ") +
               QString::fromStdString(context_.state.diff.NAME[at(firstActive())]);
    }
    if (waves.size() > 1) {
        from += QStringLiteral(", with λ2 = %1 Å").arg(waves[1], 0, 'f', 6);
    }
    wavelengthNote_->setText(from);
}

void XrayDiffractionDock::refreshReferences() {
    const DIFF_GLOBALS& diff = context_.state.diff;
    const int selected = selectedReference();
    const int indexing = firstActive();
    {
        const QSignalBlocker quiet(references_);
        // Rows are updated in place while their number stays: a tick box's change arrives here
        // while its row is still being changed.
        const bool sameRows = references_->topLevelItemCount() == diff.count();
        if (!sameRows) {
            references_->clear();
        }
        for (int k = 0; k < diff.count(); ++k) {
            const auto r = at(k);
            QTreeWidgetItem* item =
                sameRows ? references_->topLevelItem(k) : new QTreeWidgetItem(references_);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setCheckState(kRefNumber, diff.ACTIVE[r] ? Qt::Checked : Qt::Unchecked);
            item->setIcon(kRefNumber, colourSwatch(QColor::fromRgb(diff.BRUSH[r])));
            item->setText(kRefNumber, QString::number(k + 1));
            item->setText(kRefMineral, QString::fromStdString(diff.TITLE[r]));
            item->setText(kRefFile, QString::fromStdString(diff.NAME[r]));
            item->setToolTip(kRefFile,
                             QString::fromStdString(
                                 (std::filesystem::path(diff.PATH[r]) / diff.NAME[r]).string()));
            item->setText(kRefSystem, qText(crystalSystemName(diff.SYM[r])).toLower());
            item->setText(kRefLines, QString::number(diff.NUMDATA[r]));
            item->setTextAlignment(kRefLines, Qt::AlignRight | Qt::AlignVCenter);
            QFont font = item->font(kRefMineral);
            font.setBold(k == indexing);
            item->setFont(kRefMineral, font);
            item->setFont(kRefFile, font);
        }
        for (int column = 0; column < kRefColumns; ++column) {
            references_->resizeColumnToContents(column);
        }
        if (diff.count() > 0) {
            references_->setCurrentItem(
                references_->topLevelItem(std::clamp(selected, 0, diff.count() - 1)));
        }
    }
    if (diff.count() == 0) {
        indexNote_->setText(QStringLiteral("Open the reference file of the mineral you expect; "
                                           "its reflections are drawn under the pattern."));
    } else if (indexing < 0) {
        indexNote_->setText(QStringLiteral("Tick a reference to draw its reflections and index "
                                           "the peaks from it."));
    } else {
        indexNote_->setText(
            QStringLiteral("The peaks are indexed from the first ticked "
                           "reference, <b>%1</b>.")
                .arg(QString::fromStdString(diff.NAME[at(indexing)]).toHtmlEscaped()));
    }
    showTicks();
    updateButtons();
}

void XrayDiffractionDock::refreshPhase() {
    const XrayPhase* p = phase();
    peakTable_->showPhase(p);
    if (p == nullptr) {
        peakSummary_->setText(QStringLiteral("Finds the pattern's peaks, fits them and indexes "
                                             "them at once."));
    } else {
        const auto usable = std::count(p->peaks.USEPK.begin(), p->peaks.USEPK.end(), true);
        const std::string& name = context_.state.specdata.NAME[at(context_.state.xrayPeak.pattern)];
        QString text =
            QStringLiteral("%1 of %2, %3 in use, %4 indexed")
                .arg(countOf(p->peaks.count(), QStringLiteral("peak"), QStringLiteral("peaks")))
                .arg(QString::fromStdString(name).toHtmlEscaped())
                .arg(usable)
                .arg(p->assignments.size());
        if (!p->source.empty()) {
            text += QStringLiteral(" from %1")
                        .arg(QString::fromStdString(
                                 std::filesystem::path(p->source).filename().string())
                                 .toHtmlEscaped());
        }
        peakSummary_->setText(text + QStringLiteral(". ") + matchNote_);
    }
    const QSignalBlocker quietSystem(system_);
    const QSignalBlocker quietStart(startFromCell_);
    system_->setCurrentIndex(p != nullptr ? std::clamp(p->SYM, 0, 9) : 0);
    system_->setEnabled(p != nullptr);
    startFromCell_->setChecked(p != nullptr && p->USEICP);
    startFromCell_->setEnabled(p != nullptr);
    showPeakMarks();
    updateButtons();
}

void XrayDiffractionDock::showPeakMarks() {
    const XrayPhase* p = phase();
    if (isHidden() || p == nullptr) {
        if (peakMarksShown_) {
            context_.view.setPeakMarks({});
            peakMarksShown_ = false;
        }
        return;
    }
    PeakMarks marks;
    marks.spectrum = context_.state.xrayPeak.pattern;
    for (int k = 0; k < p->peaks.count(); ++k) {
        marks.found.push_back(p->peaks.twoTheta(k));
    }
    context_.view.setPeakMarks(std::move(marks));
    peakMarksShown_ = true;
}

void XrayDiffractionDock::refreshResults() {
    const XrayPhase* p = phase();
    if (refined_ && p != nullptr) {
        cell_->setText(refinedCellHtml(*refined_, p->ICP));
    } else {
        cell_->setText(QStringLiteral("<span style='color:#777'>Refine to see the cell with its "
                                      "standard errors.</span>"));
    }
    // The kept report of the refinement shown; after a run without results, the report that
    // tells why.
    QString report;
    QFile file(QString::fromStdString(context_.state.inoutparms.reportPath.string()));
    if (refined_) {
        report = QString::fromStdString(refined_->reportText);
    } else if (!lastInput_.empty() && file.open(QIODevice::ReadOnly)) {
        report = QString::fromUtf8(file.readAll());
    }
    if (report != report_->toPlainText()) {
        report_->setPlainText(report); // only a new report moves the reader back to its top
    }
    showLineFits();
    updateButtons();
}

// Each ticked reference as a row of ticks at its reflections' positions for the pattern's
// wavelength, while the active spectrum is a diffraction pattern.
void XrayDiffractionDock::showTicks() {
    ReflectionTicks ticks;
    const DIFF_GLOBALS& diff = context_.state.diff;
    const int k = activeSpectrum(context_.state.specdata);
    if (!isHidden() && k >= 0 && isDiffractionPattern(k)) {
        const std::vector<int> active = diff.ACTIVE_ARRAY();
        for (const int p : active) {
            ticks.rows.push_back({QString::fromStdString(diff.NAME[at(p)]),
                                  QColor::fromRgb(diff.BRUSH[at(p)]),
                                  {},
                                  {}});
        }
        const std::vector<double> first{wavelengths().front()};
        std::vector<float> strongest(ticks.rows.size(), 0.0F);
        const auto candidates = candidatesFromPatterns(diff, first);
        for (const ReflectionCandidate& c : candidates) {
            const auto row = at(static_cast<int>(
                std::find(active.begin(), active.end(), c.pattern) - active.begin()));
            ticks.rows[row].position.push_back(c.twoTheta);
            ticks.rows[row].height.push_back(c.intensity);
            strongest[row] = std::max(strongest[row], c.intensity);
        }
        for (std::size_t r = 0; r < ticks.rows.size(); ++r) {
            for (double& height : ticks.rows[r].height) {
                height = strongest[r] > 0.0F ? height / static_cast<double>(strongest[r]) : 1.0;
            }
        }
    }
    if (!ticks.rows.empty() || !context_.view.reflectionTicks().rows.empty()) {
        context_.view.setReflectionTicks(std::move(ticks));
    }
}

void XrayDiffractionDock::updateButtons() {
    const int selected = selectedReference();
    const int count = context_.state.diff.count();
    openButton_->setEnabled(canRun(kCmdOpenReference));
    viewButton_->setEnabled(selected >= 0);
    upButton_->setEnabled(selected > 0);
    downButton_->setEnabled(selected >= 0 && selected + 1 < count);
    deleteButton_->setEnabled(selected >= 0);
    findButton_->setEnabled(canRun(kCmdFindXrayPeaks));
    refineButton_->setEnabled(canRun(kCmdRefineCell));
    reportButton_->setEnabled(!report_->toPlainText().isEmpty());
    summaryButton_->setEnabled(refined_.has_value());
}

int XrayDiffractionDock::selectedReference() const {
    return references_->indexOfTopLevelItem(references_->currentItem());
}

void XrayDiffractionDock::selectReference(int reference) {
    if (reference >= 0 && reference < references_->topLevelItemCount()) {
        references_->setCurrentItem(references_->topLevelItem(reference));
    }
}

QString XrayDiffractionDock::cellText() const {
    return cell_->text();
}

QString XrayDiffractionDock::reportText() const {
    return report_->toPlainText();
}

} // namespace quarvex::ui
