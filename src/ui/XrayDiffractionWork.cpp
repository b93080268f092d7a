// What the X-ray Diffraction dock does: opening and arranging references, finding and indexing
// the peaks, the user's edits and the refinement.
#include "ui/XrayDiffractionDock.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "ui/ProgressRunner.h"
#include "ui/QtText.h"
#include "ui/SpectrumView.h"
#include "ui/XrayPeakTable.h"
#include "xray/FiguresOfMerit.h"
#include "xray/JointRefineReport.h"
#include "xray/Refine.h"
#include "xray/RefineInputWriter.h"
#include "xray/XrayDataAndFileManager.h"
#include "xray/XrayMessages.h"
#include "xray/XrayPeakFit.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QTabWidget>

#include <algorithm>
#include <cmath>
#include <span>
#include <stdexcept>

namespace quarvex::ui {

namespace {

constexpr double kNearbyDegrees = 1.0;    // the h k l list offers reflections this near a peak...
constexpr std::size_t kFewestChoices = 6; // ...and at least this many

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kXrayDiffractionTitle));
}

} // namespace

void XrayDiffractionDock::openReference() {
    const QStringList files = context_.interaction->askOpenFileNames(
        this, qText(kDiffFileDialogTitle),
        QString::fromStdString(GET_IMPDIFF_PATH(context_.home).string()),
        qtFileFilter(std::string(kDiffFileDialogFilter) + std::string(kCifFileDialogFilter)));
    openReferences(files);
}

int XrayDiffractionDock::openReferences(const QStringList& paths) {
    DIFF_GLOBALS& diff = context_.state.diff;
    const std::string before = referenceSource(firstActive());
    int opened = 0;
    for (const QString& path : paths) {
        try {
            const int k =
                OPEN_AND_READ_DIFF_FILE(diff, path.toStdString(), GET_IMPDIFF_PATH(context_.home));
            ++opened;
            QString text = QStringLiteral("Opened %1: %2 reflections")
                               .arg(QString::fromStdString(diff.NAME[at(k)]))
                               .arg(diff.NUMDATA[at(k)]);
            for (const std::string& line : diff.NOTES[at(k)]) {
                text += QStringLiteral("; ") + QString::fromStdString(line);
            }
            emit statusMessage(text);
        } catch (const QuarvexError& error) {
            context_.interaction->showError(this, QString::fromStdString(error.text()),
                                            QString::fromStdString(error.title()));
        }
    }
    if (opened > 0) {
        afterListChange(before);
        selectReference(diff.count() - 1);
    }
    return opened;
}

void XrayDiffractionDock::moveReference(int from, int to) {
    DIFF_GLOBALS& diff = context_.state.diff;
    if (from < 0 || to < 0 || from >= diff.count() || to >= diff.count()) {
        return;
    }
    const std::string before = referenceSource(firstActive());
    SORT_DIFF_FILE_ORDER(diff, from, to);
    afterListChange(before);
    selectReference(to);
}

void XrayDiffractionDock::deleteReference(int reference) {
    DIFF_GLOBALS& diff = context_.state.diff;
    if (reference < 0 || reference >= diff.count()) {
        return;
    }
    const std::string before = referenceSource(firstActive());
    const int selected[] = {reference};
    DELETE_DIFF_FILES(diff, selected);
    afterListChange(before);
}

void XrayDiffractionDock::setReferenceActive(int reference, bool active) {
    DIFF_GLOBALS& diff = context_.state.diff;
    if (reference < 0 || reference >= diff.count()) {
        return;
    }
    const std::string before = referenceSource(firstActive());
    diff.ACTIVE[at(reference)] = active;
    afterListChange(before);
    selectReference(reference);
}

// The peaks are indexed anew when the first active reference is another one than before.
void XrayDiffractionDock::afterListChange(const std::string& indexedBefore) {
    const int first = firstActive();
    if (phase() != nullptr && first >= 0 && referenceSource(first) != indexedBefore) {
        indexFromFirstActive();
    }
    refreshPattern();
    refreshReferences();
    refreshPhase();
    refreshResults();
}

void XrayDiffractionDock::indexFromFirstActive() {
    XrayPhase* current = phase();
    XrayPhase next = phaseFromReference(context_.state.diff, firstActive());
    next.peaks = std::move(current->peaks);
    next.USEIINTS = current->USEIINTS;
    *current = std::move(next);
    refined_.reset();
    applyWavelengths(phaseWavelengths());
}

WavelengthChoice XrayDiffractionDock::phaseWavelengths() const {
    WavelengthChoice choice = wavelengthChoice(context_.state.xrayPeak.pattern);
    if (peaksStripped_) {
        choice.wavelengths.resize(1); // the K-alpha2 peaks were stripped before the search
    }
    return choice;
}

void XrayDiffractionDock::applyWavelengths(const WavelengthChoice& choice) {
    context_.state.xrayPeak.wavelengths = choice.wavelengths;
    wavelengthSource_ = choice.source;
    if (XrayPhase* p = phase()) {
        setPeakDSpacings(p->peaks, choice.wavelengths.front());
        rematch();
    }
}

void XrayDiffractionDock::rematch() {
    XrayPhase* p = phase();
    matchNote_.clear();
    if (p == nullptr) {
        return;
    }
    if (p->NUMINP() == 0) {
        p->assignments.clear();
        return;
    }
    const float tolerance = context_.state.quarvex.preferences.matchTolerance;
    if (matchPhase(*p, context_.state.diff, context_.state.xrayPeak.wavelengths, tolerance)
            .empty()) {
        matchNote_ = QStringLiteral("No peak lies within %1° of a reflection: check the "
                                    "wavelength and the reference.")
                         .arg(static_cast<double>(tolerance));
    }
}

void XrayDiffractionDock::clearPattern() {
    context_.state.xrayPeak = {};
    peaksStripped_ = false;
    refined_.reset();
    patternPath_.clear();
    matchNote_.clear();
}

void XrayDiffractionDock::requireDiffractionPattern(int spectrum) const {
    if (spectrum < 0) {
        fail("Open a diffraction pattern first.");
    }
    if (!isDiffractionPattern(spectrum)) {
        const auto k = at(spectrum);
        fail(context_.state.specdata.NAME[k] + " is not a diffraction pattern (data type " +
             context_.state.specdata.DTYPE[k] +
             "). Make a pattern primary, or change the data type with Adjust Data Type.");
    }
    requireTwoThetaPattern(context_.state.specdata, spectrum);
}

void XrayDiffractionDock::findPeaks() {
    ProgramState& state = context_.state;
    const SPECDATA_GLOBALS& s = state.specdata;
    const int k = activeSpectrum(s);
    requireDiffractionPattern(k);
    WavelengthChoice choice = wavelengthChoice(k);
    std::vector<float> stripped;
    std::span<const float> intensities = s.yValues(k);
    if (stripKAlpha2_->isChecked()) {
        stripped = alpha1Intensities(s.xValues(k), intensities, choice);
        intensities = stripped;
    }
    const PeakFitSettings settings = peakFitSettings(state.quarvex.preferences);
    XrayPeakList peaks;
    runWithProgress(this, QStringLiteral("Fitting Peaks..."), [&](const ProgressCallback&) {
        peaks = fitPatternPeaks(s.xValues(k), intensities, settings, choice.wavelengths.front());
    });
    if (peaks.count() == 0) {
        fail("No peak of " + s.NAME[at(k)] + " stands out of its noise: nothing to match.");
    }
    XRAY_PEAK_GLOBALS& x = state.xrayPeak;
    XrayPhase next;
    if (firstActive() >= 0) {
        next = phaseFromReference(state.diff, firstActive());
    } else if (phase() != nullptr && x.pattern == k) {
        next = *phase(); // the input reflections of a project's phase stay
    } else {
        next.name =
            QFileInfo(QString::fromStdString(s.NAME[at(k)])).completeBaseName().toStdString();
    }
    next.peaks = std::move(peaks);
    next.assignments.clear();
    if (s.PATH[at(k)] != patternPath_) {
        x.projectFile.clear(); // a project belongs to its pattern
    }
    x.phases = {std::move(next)};
    x.pattern = k;
    patternPath_ = s.PATH[at(k)];
    peaksStripped_ = !stripped.empty();
    refined_.reset();
    applyWavelengths(choice);
    tabs_->setCurrentIndex(0);
    refreshPattern();
    refreshPhase();
    refreshResults();
}

void XrayDiffractionDock::setStripKAlpha2(bool strip) {
    stripKAlpha2_->setChecked(strip);
}

void XrayDiffractionDock::showStripPreview() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    if (isHidden() || !stripKAlpha2_->isChecked() || k < 0 || !isDiffractionPattern(k)) {
        if (stripPreviewShown_) {
            context_.view.setFitOverlay(std::nullopt);
            stripPreviewShown_ = false;
        }
        return;
    }
    WavelengthChoice choice = wavelengthChoice(k);
    FitOverlay preview;
    try {
        preview.fitted = alpha1Intensities(s.xValues(k), s.yValues(k), choice);
    } catch (const QuarvexError& error) {
        const QSignalBlocker quiet(stripKAlpha2_);
        stripKAlpha2_->setChecked(false);
        showStripPreview();
        context_.interaction->showError(this, QString::fromStdString(error.text()),
                                        QString::fromStdString(error.title()));
        return;
    }
    preview.spectrum = k;
    preview.legend = QStringLiteral("Kα2 stripped (preview)");
    preview.x.assign(s.xValues(k).begin(), s.xValues(k).end());
    preview.measured.assign(s.yValues(k).begin(), s.yValues(k).end());
    context_.view.setFitOverlay(std::move(preview));
    stripPreviewShown_ = true;
}

void XrayDiffractionDock::refine() {
    ProgramState& state = context_.state;
    XrayPhase* p = phase();
    if (p == nullptr) {
        fail("Find & Fit Peaks first: there are no peaks to refine from.");
    }
    const int k = state.xrayPeak.pattern;
    const std::filesystem::path input = refineInputPath(state.specdata.PATH[at(k)]);
    const std::string from =
        p->source.empty() ? p->name : std::filesystem::path(p->source).filename().string();
    const PhaseRefineSettings settings{state.specdata.NAME[at(k)] + " indexed from " + from,
                                       state.quarvex.preferences.machineErrorSearch,
                                       state.quarvex.preferences.reportIterations};
    bool refined = false;
    runWithProgress(this, QStringLiteral("Refining Cell..."), [&](const ProgressCallback&) {
        refined = refinePhase(*p, state.xrayPeak.wavelengths, input, settings, state.inoutparms,
                              state.datastff);
    });
    JointRefineSettings joint;
    joint.refineZero = refineZero_->isChecked();
    joint.refineDisplacement = refineDisplacement_->isChecked();
    JointRefineResult& jointResult = joint_;
    jointResult = {};
    if (refined && (joint.refineZero || joint.refineDisplacement)) {
        const int reference = firstActive();
        joint.centring =
            latticeCentring(reference < 0 ? std::string() : state.diff.SPACE_GROUP[at(reference)]);
        jointResult = refineJoint(jointInputFrom(state.datastff), joint);
        jointResult.settings = joint;
        appendToReport(state.inoutparms.reportPath, jointReportSection(jointResult));
    }
    lastInput_ = input;
    refined_.reset();
    if (refined) {
        refined_ = refinedCellRecord(state.inoutparms, state.datastff, input);
    }
    refreshResults();
    if (refined && (joint.refineZero || joint.refineDisplacement) && !jointResult.ok) {
        tabs_->setCurrentIndex(1);
        fail(jointResult.message);
    }
    if (!refined) {
        tabs_->setCurrentIndex(1);
        fail(state.inoutparms.message.empty()
                 ? "The refinement ended without results; the report tells why."
                 : state.inoutparms.message);
    }
    emit statusMessage(QStringLiteral("Refined from %1 lines; input %2, report %3")
                           .arg(state.datastff.NREF)
                           .arg(QString::fromStdString(input.string()),
                                QString::fromStdString(state.inoutparms.reportPath.string())));
}

void XrayDiffractionDock::editHkl(int peak, const QString& text) {
    XrayPhase* p = phase();
    if (p == nullptr || peak < 0 || peak >= p->peaks.count()) {
        return;
    }
    const QString trimmed = text.trimmed();
    std::array<int, 3> hkl{};
    int wave = 1;
    try {
        if (trimmed.isEmpty() || trimmed == QString::fromUtf8(XrayPeakTable::kNone) ||
            trimmed == QStringLiteral("-")) {
            unassignPeak(*p, peak);
        } else if (parseHkl(trimmed, hkl, wave)) {
            assignPeak(*p, peak, hkl, wave, context_.state.xrayPeak.wavelengths);
        } else {
            context_.interaction->showError(
                this, QStringLiteral("Give h k l as three whole numbers, such as 1 0 1."),
                qText(kXrayDiffractionTitle));
        }
    } catch (const std::out_of_range&) {
        context_.interaction->showError(
            this, QStringLiteral("The pattern has no wavelength λ%1.").arg(wave),
            qText(kXrayDiffractionTitle));
    }
    refreshPhase();
}

void XrayDiffractionDock::setPeakUsed(int peak, bool use) {
    XrayPhase* p = phase();
    if (p != nullptr && peak >= 0 && peak < p->peaks.count()) {
        p->peaks.USEPK[at(peak)] = use;
        refreshPhase();
        // With the joint refinement on, taking a line out (or back) refines again at once.
        if (refined_ && (refineZero_->isChecked() || refineDisplacement_->isChecked())) {
            emit commandRequested(kCmdRefineCell);
        }
    }
}

namespace {

// The peak whose fitted position and h k l a refined line carries (the input holds the peak's
// 2-theta as written), or -1.
int peakOfLine(const XrayPhase& phase, const std::array<int, 3>& hkl, double twoTheta) {
    for (const PeakAssignment& a : phase.assignments) {
        if (a.hkl == hkl && std::abs(phase.peaks.twoTheta(a.peak) - twoTheta) <= 1e-3) {
            return a.peak;
        }
    }
    return -1;
}

} // namespace

void XrayDiffractionDock::showLineFits() {
    const XrayPhase* p = phase();
    std::vector<std::optional<LineFit>> fits;
    // The refinement arrays are this phase's only after a Refine of this session.
    if (p == nullptr || !refined_ || lastInput_.empty()) {
        peakTable_->showLineFits(std::move(fits));
        showLineResiduals({});
        return;
    }
    fits.resize(static_cast<std::size_t>(p->peaks.count()));
    const DATASTFF& run = context_.state.datastff;
    for (std::size_t r = 0; r < static_cast<std::size_t>(run.NREF); ++r) {
        const int peak = peakOfLine(*p, {run.h[r], run.k[r], run.l[r]}, run.TTHETAORIGINAL[r]);
        if (peak >= 0) {
            fits[at(peak)] = LineFit{};
            fits[at(peak)]->obsMinusCalc = run.TTHETA[r] - run.TTHETAC[r];
        }
    }
    for (const JointLineResult& line : joint_.ok ? joint_.lines : std::vector<JointLineResult>{}) {
        const int peak = peakOfLine(*p, {line.h, line.k, line.l}, line.twoThetaObsDeg);
        if (peak < 0) {
            continue;
        }
        LineFit& fit = fits[at(peak)].emplace();
        fit.obsMinusCalc = line.residualDeg;
        fit.hat = line.hat;
        fit.rstudent = line.rstudent;
        fit.dffits = line.dffits;
        fit.flagged = line.highLeverage || line.outlier;
        fit.why = QStringLiteral("Flagged by the joint refinement: hat %1%2, Rstudent %3")
                      .arg(line.hat, 0, 'f', 3)
                      .arg(line.highLeverage ? QStringLiteral(" (above 2p/n)") : QString())
                      .arg(line.rstudent, 0, 'f', 2);
    }
    LineResiduals residuals;
    residuals.spectrum = context_.state.xrayPeak.pattern;
    for (std::size_t peak = 0; peak < fits.size(); ++peak) {
        if (fits[peak]) {
            residuals.twoTheta.push_back(p->peaks.twoTheta(static_cast<int>(peak)));
            residuals.obsMinusCalc.push_back(fits[peak]->obsMinusCalc);
        }
    }
    peakTable_->showLineFits(std::move(fits));
    showLineResiduals(std::move(residuals));
    widenForTable();
}

// The refinement's columns are what the user refined for: the dock widens to show them all
// rather than hiding them behind a scroll bar.
void XrayDiffractionDock::widenForTable() {
    const int deficit = peakTable_->widthForAllColumns() - peakTable_->width();
    if (isHidden() || deficit <= 0) {
        return;
    }
    auto* window = qobject_cast<QMainWindow*>(parentWidget());
    if (window != nullptr && !isFloating()) {
        window->resizeDocks({this}, {width() + deficit}, Qt::Horizontal);
    } else {
        resize(width() + deficit, height());
    }
}

void XrayDiffractionDock::showLineResiduals(LineResiduals residuals) {
    if (isHidden()) {
        residuals = {};
    }
    if (!residuals.twoTheta.empty() || !context_.view.lineResiduals().twoTheta.empty()) {
        context_.view.setLineResiduals(std::move(residuals));
    }
}

void XrayDiffractionDock::setCrystalSystem(int sym) {
    if (XrayPhase* p = phase()) {
        p->SYM = sym;
        refreshPhase();
    }
}

void XrayDiffractionDock::setWavelength(double wavelength) {
    typedWavelength_ = wavelength;
    if (phase() != nullptr) {
        applyWavelengths(phaseWavelengths());
    }
    refreshPattern();
    refreshPhase();
    showTicks();
}

QStringList XrayDiffractionDock::hklChoices(int peak) const {
    const XrayPhase* p = phase();
    if (p == nullptr) {
        return {};
    }
    std::vector<ReflectionCandidate> candidates =
        candidatesFromInput(*p, context_.state.xrayPeak.wavelengths);
    const double centre = p->peaks.twoTheta(peak);
    const auto distance = [centre](const ReflectionCandidate& c) {
        return std::abs(c.twoTheta - centre);
    };
    std::sort(candidates.begin(), candidates.end(),
              [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    QStringList choices;
    for (const ReflectionCandidate& c : candidates) {
        if (choices.size() >= static_cast<qsizetype>(kFewestChoices) &&
            distance(c) > kNearbyDegrees) {
            break;
        }
        choices.append(QStringLiteral("%1    %2°   I %3")
                           .arg(hklText(c.hkl, c.wave))
                           .arg(c.twoTheta, 0, 'f', 3)
                           .arg(static_cast<double>(c.intensity), 0, 'f', 1));
    }
    return choices;
}

} // namespace quarvex::ui
