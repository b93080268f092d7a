// The X-ray Diffraction dock: its layout, the reference list, the ticks on the view, and how
// the pattern, the peaks and the results are shown.
#include "ui/XrayDiffractionDock.h"

#include "specdata/SpecDataArrange.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"
#include "ui/XrayPeakTable.h"
#include "ui/XrayResults.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace quarvex::ui {

namespace {

enum ReferenceColumn { kRefNumber, kRefMineral, kRefFile, kRefSystem, kRefLines, kRefColumns };

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QToolButton* toolButton(QWidget* parent, const QString& text, const QString& tip) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tip);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return button;
}

} // namespace

XrayDiffractionDock::XrayDiffractionDock(ModeContext context, QMenu& diffractionFilePopup,
                                         QMenu& referencePopup, QWidget* parent)
    : QDockWidget(QStringLiteral("X-ray Diffraction"), parent), context_(std::move(context)) {
    setObjectName(QStringLiteral("XrayDiffractionDock"));
    auto* body = new QWidget(this);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(6, 4, 6, 6);
    layout->addWidget(buildPatternBox());
    layout->addWidget(buildReferenceBox());
    layout->addWidget(buildPeakBox(), 1);
    layout->addWidget(buildRefineBox());
    setWidget(body);

    viewButton_->setMenu(&referencePopup);
    connectPopup(diffractionFilePopup);
    connectPopup(referencePopup);
    connect(references_, &QTreeWidget::customContextMenuRequested, this,
            [this, &diffractionFilePopup](const QPoint& pos) {
                const int reference = references_->indexOfTopLevelItem(references_->itemAt(pos));
                if (reference >= 0) {
                    selectReference(reference);
                    diffractionFilePopup.exec(references_->viewport()->mapToGlobal(pos));
                }
            });
    spectraChanged();
}

QWidget* XrayDiffractionDock::buildPatternBox() {
    auto* box = new QGroupBox(QStringLiteral("Pattern"), this);
    auto* grid = new QGridLayout(box);
    patternLabel_ = noteLabel(box);
    projectButton_ = new QPushButton(QStringLiteral("Project"), box);
    projectButton_->setToolTip(
        QStringLiteral("Keep the pattern, its peaks and their h k l as an X-ray project"));
    auto* projects = new QMenu(projectButton_);
    const std::pair<const char*, int> items[] = {{"New Project...", kCmdNewXrayProject},
                                                 {"Open Project...", kCmdOpenXrayProject},
                                                 {"Save Project", kCmdSaveXrayProject}};
    for (const auto& [text, command] : items) {
        QAction* action = projects->addAction(QString::fromUtf8(text));
        action->setData(command);
        connect(action, &QAction::triggered, this,
                [this, c = command] { emit commandRequested(c); });
    }
    connect(projects, &QMenu::aboutToShow, this, [this, projects] {
        for (QAction* action : projects->actions()) {
            action->setEnabled(canRun(action->data().toInt()));
        }
    });
    projectButton_->setMenu(projects);
    wavelength_ = new QDoubleSpinBox(box);
    wavelength_->setRange(0.05, 5.0);
    wavelength_->setDecimals(6);
    wavelength_->setSingleStep(0.0001);
    wavelength_->setSuffix(QStringLiteral(" Å"));
    wavelength_->setKeyboardTracking(false);
    wavelength_->setToolTip(QStringLiteral("The X-ray wavelength of the pattern (K-alpha1)"));
    wavelengthNote_ = noteLabel(box);
    grid->addWidget(patternLabel_, 0, 0, 1, 3);
    grid->addWidget(projectButton_, 0, 3, Qt::AlignTop);
    grid->addWidget(new QLabel(QStringLiteral("Wavelength:"), box), 1, 0);
    grid->addWidget(wavelength_, 1, 1);
    grid->addWidget(wavelengthNote_, 1, 2, 1, 2);
    grid->setColumnStretch(2, 1);
    connect(wavelength_, &QDoubleSpinBox::editingFinished, this, [this] {
        if (std::abs(wavelength_->value() - wavelengths().front()) > 5.0e-7) {
            setWavelength(wavelength_->value());
        }
    });
    return box;
}

QWidget* XrayDiffractionDock::buildReferenceBox() {
    auto* box = new QGroupBox(QStringLiteral("References"), this);
    auto* layout = new QVBoxLayout(box);
    references_ = new QTreeWidget(box);
    references_->setColumnCount(kRefColumns);
    references_->setHeaderLabels({QStringLiteral("#"), QStringLiteral("Mineral"),
                                  QStringLiteral("File"), QStringLiteral("System"),
                                  QStringLiteral("Lines")});
    references_->setRootIsDecorated(false);
    references_->setUniformRowHeights(true);
    references_->setAlternatingRowColors(true);
    references_->setSelectionMode(QAbstractItemView::SingleSelection);
    references_->setContextMenuPolicy(Qt::CustomContextMenu);
    references_->setIconSize(QSize(28, 12));
    references_->setToolTip(QStringLiteral(
        "Tick to show a reference's reflections; the first ticked one indexes the peaks. "
        "Double-click to view its reflections, right-click for its file"));
    references_->setMinimumHeight(references_->fontMetrics().height() * 4);
    references_->setMaximumHeight(references_->fontMetrics().height() * 5);
    layout->addWidget(references_);

    auto* buttons = new QHBoxLayout();
    openButton_ = new QPushButton(QStringLiteral("Open Reference..."), box);
    openButton_->setToolTip(QStringLiteral("Open reference diffraction-data files (.out)"));
    viewButton_ = toolButton(box, QStringLiteral("View..."),
                             QStringLiteral("The reflections of the selected reference"));
    viewButton_->setPopupMode(QToolButton::MenuButtonPopup);
    upButton_ = toolButton(box, QStringLiteral("Up"), QStringLiteral("Move the reference up"));
    downButton_ =
        toolButton(box, QStringLiteral("Down"), QStringLiteral("Move the reference down"));
    deleteButton_ = toolButton(box, QStringLiteral("Delete"),
                               QStringLiteral("Remove the reference from the list"));
    buttons->addWidget(openButton_);
    buttons->addWidget(viewButton_);
    buttons->addStretch(1);
    buttons->addWidget(upButton_);
    buttons->addWidget(downButton_);
    buttons->addWidget(deleteButton_);
    layout->addLayout(buttons);
    indexNote_ = noteLabel(box);
    layout->addWidget(indexNote_);

    connect(openButton_, &QPushButton::clicked, this,
            [this] { emit commandRequested(kCmdOpenReference); });
    connect(viewButton_, &QToolButton::clicked, this, [this] { dispatch(kCmdViewReference); });
    connect(upButton_, &QToolButton::clicked, this,
            [this] { moveReference(selectedReference(), selectedReference() - 1); });
    connect(downButton_, &QToolButton::clicked, this,
            [this] { moveReference(selectedReference(), selectedReference() + 1); });
    connect(deleteButton_, &QToolButton::clicked, this,
            [this] { deleteReference(selectedReference()); });
    connect(references_, &QTreeWidget::itemSelectionChanged, this,
            &XrayDiffractionDock::updateButtons);
    connect(references_, &QTreeWidget::itemDoubleClicked, this,
            [this] { dispatch(kCmdViewReference); });
    connect(references_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int) {
        const int reference = references_->indexOfTopLevelItem(item);
        const bool ticked = item->checkState(kRefNumber) == Qt::Checked;
        if (reference >= 0 && ticked != context_.state.diff.ACTIVE[at(reference)]) {
            setReferenceActive(reference, ticked);
        }
    });
    return box;
}

QWidget* XrayDiffractionDock::buildPeakBox() {
    auto* box = new QGroupBox(QStringLiteral("Peaks"), this);
    auto* layout = new QVBoxLayout(box);
    auto* row = new QHBoxLayout();
    findButton_ = new QPushButton(QStringLiteral("Find && Fit Peaks"), box);
    findButton_->setToolTip(QStringLiteral("Find the pattern's peaks, fit them and index them "
                                           "from the first ticked reference"));
    peakSummary_ = noteLabel(box);
    row->addWidget(findButton_);
    row->addWidget(peakSummary_, 1);
    layout->addLayout(row);
    tabs_ = new QTabWidget(box);
    peakTable_ = new XrayPeakTable(tabs_);
    peakTable_->choices = [this](int peak) { return hklChoices(peak); };
    tabs_->addTab(peakTable_, QStringLiteral("Matched Peaks"));
    report_ = new QPlainTextEdit(tabs_);
    report_->setReadOnly(true);
    report_->setLineWrapMode(QPlainTextEdit::NoWrap);
    report_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    report_->setPlaceholderText(QStringLiteral("The report of the refinement appears here."));
    tabs_->addTab(report_, QStringLiteral("Report"));
    layout->addWidget(tabs_, 1);

    connect(findButton_, &QPushButton::clicked, this,
            [this] { emit commandRequested(kCmdFindXrayPeaks); });
    connect(peakTable_, &XrayPeakTable::hklEdited, this, &XrayDiffractionDock::editHkl);
    connect(peakTable_, &XrayPeakTable::useToggled, this, &XrayDiffractionDock::setPeakUsed);
    return box;
}

QWidget* XrayDiffractionDock::buildRefineBox() {
    auto* box = new QGroupBox(QStringLiteral("Cell Refinement"), this);
    auto* layout = new QVBoxLayout(box);
    auto* settings = new QGridLayout();
    system_ = new QComboBox(box);
    system_->addItem(QStringLiteral("not known"));
    for (const std::string_view name : kCrystalSystemNames) {
        system_->addItem(qText(name));
    }
    system_->setToolTip(QStringLiteral("The crystal system of the refinement (from the "
                                       "reference's space group or cell)"));
    machineError_ = new QCheckBox(QStringLiteral("Correct the zero error"), box);
    machineError_->setToolTip(QStringLiteral("Search the 2-theta zero shift of the instrument "
                                             "(machine error); a preference"));
    startFromCell_ = new QCheckBox(QStringLiteral("Start from the reference cell"), box);
    startFromCell_->setToolTip(QStringLiteral("Iterate from the reference's cell instead of the "
                                              "linear estimate"));
    settings->addWidget(new QLabel(QStringLiteral("Crystal system:"), box), 0, 0);
    settings->addWidget(system_, 0, 1);
    settings->addWidget(machineError_, 0, 2);
    settings->addWidget(startFromCell_, 1, 2);
    settings->setColumnStretch(3, 1);
    layout->addLayout(settings);
    auto* buttons = new QHBoxLayout();
    refineButton_ = new QPushButton(QStringLiteral("Refine"), box);
    refineButton_->setDefault(true);
    refineButton_->setToolTip(QStringLiteral("Refine the cell from the indexed peaks in use"));
    reportButton_ = new QPushButton(QStringLiteral("Open Report"), box);
    reportButton_->setToolTip(QStringLiteral("Open the report file in the desktop's viewer"));
    buttons->addWidget(refineButton_, 1);
    buttons->addWidget(reportButton_);
    layout->addLayout(buttons);
    cell_ = new QLabel(box);
    cell_->setTextFormat(Qt::RichText);
    cell_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    cell_->setWordWrap(true);
    layout->addWidget(cell_);

    connect(system_, &QComboBox::activated, this, &XrayDiffractionDock::setCrystalSystem);
    connect(machineError_, &QCheckBox::toggled, this,
            [this](bool on) { context_.state.quarvex.preferences.machineErrorSearch = on; });
    connect(startFromCell_, &QCheckBox::toggled, this, [this](bool on) {
        if (XrayPhase* p = phase()) {
            p->USEICP = on;
        }
    });
    connect(refineButton_, &QPushButton::clicked, this,
            [this] { emit commandRequested(kCmdRefineCell); });
    connect(reportButton_, &QPushButton::clicked, this, [this] {
        const QString path = QString::fromStdString(context_.state.inoutparms.reportPath.string());
        if (!context_.interaction->openUrl(QUrl::fromLocalFile(path))) {
            context_.interaction->showError(this,
                                            QStringLiteral("No Program Could Show %1").arg(path),
                                            QStringLiteral("Open Report"));
        }
    });
    return box;
}

// The pop-ups are the main window's: their items are enabled here as they open, and what they
// trigger is dispatched here.
void XrayDiffractionDock::connectPopup(QMenu& popup) {
    connect(&popup, &QMenu::aboutToShow, this, [this, &popup] {
        for (QAction* action : popup.actions()) {
            action->setEnabled(canRun(action->data().toInt()));
        }
    });
    connect(&popup, &QMenu::triggered, this,
            [this](QAction* action) { dispatch(action->data().toInt()); });
}

XrayPhase* XrayDiffractionDock::phase() {
    XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    return x.pattern >= 0 && !x.phases.empty() ? &x.phases.front() : nullptr;
}

const XrayPhase* XrayDiffractionDock::phase() const {
    const XRAY_PEAK_GLOBALS& x = context_.state.xrayPeak;
    return x.pattern >= 0 && !x.phases.empty() ? &x.phases.front() : nullptr;
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
}

void XrayDiffractionDock::activate() {
    showTicks();
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
        references_->clear();
        for (int k = 0; k < diff.count(); ++k) {
            const auto r = at(k);
            auto* item = new QTreeWidgetItem(references_);
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
            if (k == indexing) {
                QFont bold = item->font(kRefMineral);
                bold.setBold(true);
                item->setFont(kRefMineral, bold);
                item->setFont(kRefFile, bold);
            }
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
        QString text = QStringLiteral("%1 peaks of %2, %3 in use, %4 indexed")
                           .arg(p->peaks.count())
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
    updateButtons();
}

void XrayDiffractionDock::refreshResults() {
    const XrayPhase* p = phase();
    if (resultsShown_ && p != nullptr) {
        cell_->setText(refinedCellHtml(context_.state.inoutparms, context_.state.datastff, p->ICP));
    } else {
        cell_->setText(QStringLiteral("<span style='color:#777'>Refine to see the cell with its "
                                      "standard errors.</span>"));
    }
    QString report;
    const std::filesystem::path& path = context_.state.inoutparms.reportPath;
    QFile file(QString::fromStdString(path.string()));
    if (!lastInput_.empty() && file.open(QIODevice::ReadOnly)) {
        report = QString::fromUtf8(file.readAll());
    }
    if (report != report_->toPlainText()) {
        report_->setPlainText(report); // only a new report moves the reader back to its top
    }
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
    reportButton_->setEnabled(!lastInput_.empty());
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

void XrayDiffractionDock::closeEvent(QCloseEvent* event) {
    context_.view.setReflectionTicks({}); // the list stays for the next opening
    QDockWidget::closeEvent(event);
}

} // namespace quarvex::ui
