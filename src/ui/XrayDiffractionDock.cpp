// The X-ray Diffraction dock: its layout and how its controls are wired to the mode.
#include "ui/XrayDiffractionDock.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "ui/QtText.h"
#include "ui/SpectrumView.h"
#include "ui/TextViewer.h"
#include "ui/XrayPeakTable.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace quarvex::ui {

namespace {

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
    // The boxes share the height through handles: the matched table and the report can be
    // given as much of it as the user wants.
    auto* panes = new QSplitter(Qt::Vertical, body);
    panes->setChildrenCollapsible(false);
    for (QWidget* box :
         {buildPatternBox(), buildReferenceBox(), buildPeakBox(), buildRefineBox()}) {
        panes->addWidget(box);
    }
    panes->setStretchFactor(2, 1);
    layout->addWidget(panes);
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
    stripKAlpha2_ = new QCheckBox(QStringLiteral("Strip Kα2"), box);
    stripKAlpha2_->setToolTip(
        QStringLiteral("Remove the K-alpha2 part of a K-alpha1 + K-alpha2 pattern before the "
                       "peak search (Rachinger); the peaks are then matched with K-alpha1 only. "
                       "The stripped pattern is drawn over the pattern while this is ticked."));
    row->addWidget(findButton_);
    row->addWidget(stripKAlpha2_);
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
    connect(stripKAlpha2_, &QCheckBox::toggled, this, [this] { showStripPreview(); });
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
    refineZero_ = new QCheckBox(QStringLiteral("Refine zero"), box);
    refineZero_->setToolTip(QStringLiteral("Also refine the 2-theta zero shift jointly with the "
                                           "cell, in 2-theta, with diagnostics per line and "
                                           "figures of merit at the end of the report"));
    refineDisplacement_ = new QCheckBox(QStringLiteral("Refine displacement"), box);
    refineDisplacement_->setToolTip(QStringLiteral("Also refine the sample displacement "
                                                   "(-2 s cos(theta) / R, R = 240 mm)"));
    settings->addWidget(refineZero_, 0, 3);
    settings->addWidget(refineDisplacement_, 1, 3);
    settings->setColumnStretch(4, 1);
    layout->addLayout(settings);
    auto* buttons = new QHBoxLayout();
    refineButton_ = new QPushButton(QStringLiteral("Refine"), box);
    refineButton_->setDefault(true);
    refineButton_->setToolTip(QStringLiteral("Refine the cell from the indexed peaks in use"));
    reportButton_ = new QPushButton(QStringLiteral("Open Report"), box);
    reportButton_->setToolTip(QStringLiteral("Show the report with Find, Copy and Save As"));
    summaryButton_ = new QPushButton(QStringLiteral("Save Cell..."), box);
    summaryButton_->setToolTip(QStringLiteral("Save the refined cell as a short text"));
    buttons->addWidget(refineButton_, 1);
    buttons->addWidget(reportButton_);
    buttons->addWidget(summaryButton_);
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
    connect(summaryButton_, &QPushButton::clicked, this, [this] {
        try {
            saveCellSummary();
        } catch (const QuarvexError& error) {
            context_.interaction->showError(this, QString::fromStdString(error.text()),
                                            QString::fromStdString(error.title()));
        }
    });
    connect(reportButton_, &QPushButton::clicked, this, [this] {
        // The report as the pane shows it: a reopened project's is the one it was saved with.
        const std::filesystem::path& path =
            refined_ ? refined_->report : context_.state.inoutparms.reportPath;
        showText(this, report_->toPlainText(), QString::fromStdString(path.string()),
                 QStringLiteral("Refinement Report"), context_.interaction);
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

void XrayDiffractionDock::closeEvent(QCloseEvent* event) {
    context_.view.setReflectionTicks({}); // the list stays for the next opening
    context_.view.setLineResiduals({});
    if (stripPreviewShown_) {
        context_.view.setFitOverlay(std::nullopt);
        stripPreviewShown_ = false;
    }
    if (peakMarksShown_) {
        context_.view.setPeakMarks({});
        peakMarksShown_ = false;
    }
    QDockWidget::closeEvent(event);
}

} // namespace quarvex::ui
