// The main window's construction, start-up, menus, tool bar, status bar and events.
#include "ui/MainWndProc.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/LibraryManifest.h"
#include "shell/ColourTable.h"
#include "shell/ReferenceFile.h"
#include "shell/StartUp.h"
#include "specdata/SpecDataArrange.h"
#include "ui/BackgroundCompilation.h"
#include "ui/Commands.h"
#include "ui/EditSpectrumDock.h"
#include "ui/FileManagerDock.h"
#include "ui/MenuResource.h"
#include "ui/ProgressRunner.h"
#include "ui/QtText.h"
#include "ui/RamanSearchDock.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"
#include "ui/XrayDiffractionDock.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QPrinter>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>

namespace quarvex::ui {

namespace {

// An item text "Text\tAccelerator": the text before the tab, the accelerator as the shortcut.
void applyItemText(QAction* action, std::string_view itemText) {
    const QString text = qText(itemText);
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    action->setText(tab < 0 ? text : text.left(tab));
    action->setShortcut(tab < 0 ? QKeySequence() : QKeySequence(text.mid(tab + 1)));
}

} // namespace

void CENTERWINDOW(QWidget& window) {
    const QScreen* screen = window.screen();
    if (screen == nullptr) {
        return;
    }
    const QRect available = screen->availableGeometry();
    QRect frame = window.frameGeometry();
    frame.moveCenter(available.center());
    window.move(frame.topLeft());
}

MainWndProc::MainWndProc(ProgramState& state, MainWindowOptions options, QWidget* parent)
    : QMainWindow(parent), state_(state), options_(std::move(options)) {
    if (!options_.interaction) {
        options_.interaction = std::make_shared<UserInteraction>();
    }
    setWindowTitle(QStringLiteral("Quarvex"));
    setObjectName(QStringLiteral("MainWndProc"));
    view_ = new SpectrumView(state_, this);
    setCentralWidget(view_);
    hooks_ = defaultCoreHooks();
    libraryCompilation_ = new BackgroundCompilation(this);
    connect(libraryCompilation_, &BackgroundCompilation::finished, this,
            &MainWndProc::startUpCompilationEnded);
    fileManager_ = new FileManagerDock(state_, this);
    const ModeContext modes{state_, *view_, options_.home, options_.interaction,
                            libraryCompilation_};
    ramanSearch_ = new RamanSearchDock(modes, this);
    editSpectrum_ = new EditSpectrumDock(modes, this);
    addDockWidget(Qt::RightDockWidgetArea, fileManager_);
    tabifyDockWidget(fileManager_, ramanSearch_);
    tabifyDockWidget(ramanSearch_, editSpectrum_);
    for (QDockWidget* dock :
         {static_cast<QDockWidget*>(fileManager_), static_cast<QDockWidget*>(ramanSearch_),
          static_cast<QDockWidget*>(editSpectrum_)}) {
        dock->hide();
    }
    buildMenus();
    xray_ = new XrayDiffractionDock(modes, *diffractionFilePopup_, *referencePopup_, this);
    tabifyDockWidget(editSpectrum_, xray_);
    xray_->hide();

    // The window's creation: colours, drag state, preferences.
    SET_UP_RAND_BRUSHES(state_.painting);
    view_->INI_DRAG();
    state_.quarvex.programFolder = options_.home;
    std::error_code ignored;
    std::filesystem::create_directories(options_.home, ignored); // a --home that does not exist
    INI_PREF_SETUP(2, options_.home, state_.quarvex.preferences);

    connect(view_, &SpectrumView::crosshairMoved, this, &MainWndProc::updateStatus);
    connect(view_, &SpectrumView::selectionChanged, this, &MainWndProc::updateStatus);
    connect(view_, &SpectrumView::popupRequested, this, &MainWndProc::HANDLE_POPUP_MENU);
    connect(view_, &SpectrumView::spikeClicked, this, &MainWndProc::removeSpikeAt);
    connect(view_, &SpectrumView::spikeRemovalEnded, this,
            [this] { setSpikeRemovalByHand(false); });
    connect(fileManager_, &FileManagerDock::popupRequested, this, &MainWndProc::HANDLE_POPUP_MENU);
    connect(fileManager_, &FileManagerDock::commandRequested, this,
            [this](int command, int spectrum) {
                setTargetSpectrum(spectrum);
                dispatch(command);
                setTargetSpectrum(-1);
            });
    connect(ramanSearch_, &RamanSearchDock::commandRequested, this, &MainWndProc::dispatch);
    connect(editSpectrum_, &EditSpectrumDock::commandRequested, this, &MainWndProc::dispatch);
    connect(xray_, &XrayDiffractionDock::commandRequested, this, &MainWndProc::dispatch);
    connect(xray_, &XrayDiffractionDock::spectraAdded, this, [this] {
        refreshAfterSpectrumChange();
        view_->ZOOM_OUT();
    });
    connect(xray_, &XrayDiffractionDock::statusMessage, this,
            [this](const QString& text) { statusBar()->showMessage(text, 10000); });
}

MainWndProc::~MainWndProc() = default;

void MainWndProc::startUp() {
    const QRect available = screen()->availableGeometry();
    resize(std::min(1440, available.width() * 9 / 10), std::min(900, available.height() * 9 / 10));
    CENTERWINDOW(*this);
    view_->HOLD_SPECRGN_ARRAYS();
    PREPARE_TOOLBAR();
    SET_UP_STATUS_BAR();
    SET_UP_FOLDERS(options_.home);
    startEditing(); // CREATE_APPEND_UNDO_FILE, RECENT_FILES
    QString compileSummary;
    const std::optional<int> upToDate =
        hooks_.compileLibraryAtStart ? upToDateLibraryEntries(ramanLibraryFolder(options_.home))
                                     : std::nullopt;
    const bool inBackground =
        hooks_.compileLibraryAtStart && !upToDate && options_.compileLibraryInBackground;
    if (upToDate) {
        ramanSearch_->showUpToDate(*upToDate);
        compileSummary = QString::fromStdString(upToDateSummary(*upToDate));
    } else if (hooks_.compileLibraryAtStart && !inBackground) {
        compileSummary = compileLibraryAtStart();
    }
    SET_UP_REF_FILE(1, options_.home);
    setAcceptDrops(true);
    AFTERUPDATESP();
    show();
    view_->setFocus();
    if (!compileSummary.isEmpty()) {
        statusBar()->showMessage(compileSummary, 15000); // once the window shows
    }
    if (inBackground) {
        // The hook works on a copy of the general values (folder, preferences): the window's
        // state stays the window thread's alone.
        auto copy = std::make_shared<ProgramState>();
        copy->quarvex = state_.quarvex;
        libraryCompilation_->start(
            [hook = hooks_.compileLibraryAtStart, copy](const ProgressCallback& progress) {
                return hook(*copy, progress);
            });
        statusBar()->showMessage(QString::fromUtf8(kCompilingStatus));
    }
}

// The hook behind a progress dialog, before the window shows; the summary for the status bar.
QString MainWndProc::compileLibraryAtStart() {
    try {
        std::optional<LibraryCompilation> compiled;
        if (!runCancellableWithProgress(this, QStringLiteral("Compiling Library..."),
                                        [this, &compiled](const ProgressCallback& progress) {
                                            compiled =
                                                hooks_.compileLibraryAtStart(state_, progress);
                                        })) {
            return QStringLiteral("Library compilation cancelled: the library stays as it was");
        }
        if (compiled) {
            // Files left out are told in the status bar and the Raman Search mode, not in a box
            // at every start.
            ramanSearch_->showCompilation(*compiled);
            return QString::fromStdString(compilationSummary(*compiled));
        }
    } catch (const QuarvexError& error) {
        showError(error);
    }
    return {};
}

// A failure is told in the status bar and the Raman Search mode, not in a box: a box could
// come up while another job's progress dialog holds the user's input back. A search started
// next compiles a missing library again and reports as ever.
void MainWndProc::startUpCompilationEnded() {
    try {
        const std::optional<LibraryCompilation> compiled = libraryCompilation_->result();
        statusBar()->clearMessage();
        if (compiled) {
            ramanSearch_->showCompilation(*compiled);
            statusBar()->showMessage(QString::fromStdString(compilationSummary(*compiled)), 15000);
        }
    } catch (const QuarvexError& error) {
        const QString text = QString::fromStdString(error.text());
        ramanSearch_->showCompilationFailure(text);
        statusBar()->showMessage(
            QStringLiteral("%1: %2").arg(QString::fromStdString(error.title()), text));
    }
}

QMenu* MainWndProc::buildMenu(const MenuResource& resource, QWidget* parent, bool dispatched) {
    auto* menu = new QMenu(qText(resource.title), parent);
    fillMenu(menu, resource, dispatched);
    return menu;
}

// Items of the main window's menus dispatch their command; the X-ray Diffraction mode's pop-ups
// are built greyed here and handled by that mode's own dispatch.
void MainWndProc::fillMenu(QMenu* menu, const MenuResource& resource, bool dispatched) {
    for (const MenuEntry& entry : resource.items) {
        if (entry.isSeparator()) {
            menu->addSeparator();
            continue;
        }
        if (entry.isSubMenu()) {
            menu->addMenu(buildMenu({entry.text, entry.items}, menu, dispatched));
            continue;
        }
        QAction* action = menu->addAction(QString());
        applyItemText(action, entry.text);
        action->setData(entry.command);
        if (!dispatched) {
            action->setEnabled(false);
            continue;
        }
        actions_.emplace(entry.command, action);
        const int command = entry.command;
        connect(action, &QAction::triggered, this, [this, command] { dispatch(command); });
    }
    if (dispatched) {
        connect(menu, &QMenu::aboutToShow, this, &MainWndProc::SETUP_ANDADJUST_MENUS);
    }
}

void MainWndProc::buildMenus() {
    for (const MenuResource& resource : mainMenuResource()) {
        QMenu* menu = buildMenu(resource, menuBar(), true);
        menuBar()->addMenu(menu);
        if (resource.title == "&File") {
            // Room for the ten entries of the recent-file list, above Exit; unused rows hide.
            QAction* exitItem = menu->actions().back();
            for (int command = kCmdRecentFileFirst; command <= kCmdRecentFileLast; ++command) {
                auto* recent = new QAction(menu);
                recent->setData(command);
                recent->setVisible(false);
                menu->insertAction(exitItem, recent);
                actions_.emplace(command, recent);
                connect(recent, &QAction::triggered, this, [this, command] { dispatch(command); });
            }
        }
    }
    viewPopup_ = buildMenu(viewPopupResource(), this, true);
    spectrumPopup_ = buildMenu(spectrumPopupResource(), this, true);
    diffractionFilePopup_ = buildMenu(diffractionFilePopupResource(), this, false);
    referencePopup_ = buildMenu(referencePopupResource(), this, false);

    // Tool-bar commands beyond the menus.
    const struct {
        int command;
        const char* text;
        const char* tip;
        bool checkable;
    } tools[] = {
        {kCmdExportView, "Export View...", "Save the view as a PDF document or PNG image", false},
        {kCmdSelectRangeMode, "Select Range",
         "Dragging selects an x-range (also Shift+drag at any time)", true},
        {kCmdStackSpectra, "Stack Spectra", "Stack the spectra (off: overlay them)", true},
        {kCmdRemoveSpikesByHand, "Remove Spikes",
         "Click on a cosmic-ray spike to remove it (Escape ends)", true},
        {kCmdSmooth, "Smooth...", "Savitzky-Golay smoothing, previewed before it applies", false},
    };
    for (const auto& tool : tools) {
        auto* action = new QAction(QString::fromUtf8(tool.text), this);
        action->setToolTip(QString::fromUtf8(tool.tip));
        action->setCheckable(tool.checkable);
        action->setData(tool.command);
        actions_.emplace(tool.command, action);
        const int command = tool.command;
        connect(action, &QAction::triggered, this, [this, command] { dispatch(command); });
    }
    for (const int command : {kCmdReverseXAxis, kCmdMakeInvisible}) {
        for (QAction* action : actionsFor(command)) {
            action->setCheckable(true);
        }
    }
    const std::pair<int, ToolIcon> icons[] = {
        {kCmdOpen, ToolIcon::Open},
        {kCmdPrint, ToolIcon::Print},
        {kCmdExportView, ToolIcon::Export},
        {kCmdZoomFull, ToolIcon::ZoomFull},
        {kCmdReverseXAxis, ToolIcon::ReverseXAxis},
        {kCmdSelectRangeMode, ToolIcon::SelectRange},
        {kCmdStackSpectra, ToolIcon::StackSpectra},
        {kCmdFileManager, ToolIcon::FileManager},
        {kCmdEditSpectrumMode, ToolIcon::EditSpectrum},
        {kCmdRamanSearchMode, ToolIcon::RamanSearch},
        {kCmdXrayMode, ToolIcon::XrayDiffraction},
        {kCmdPreferences, ToolIcon::Preferences},
        {kCmdRemoveSpikesByHand, ToolIcon::RemoveSpike},
        {kCmdSmooth, ToolIcon::Smooth},
    };
    for (const auto& [command, icon] : icons) {
        for (QAction* action : actionsFor(command)) {
            action->setIcon(toolIcon(icon));
        }
    }
}

QList<QAction*> MainWndProc::actionsFor(int command) const {
    QList<QAction*> found;
    const auto [first, last] = actions_.equal_range(command);
    for (auto it = first; it != last; ++it) {
        found.append(it->second);
    }
    return found;
}

QAction* MainWndProc::commandAction(int command) const {
    const auto it = actions_.find(command);
    return it == actions_.end() ? nullptr : it->second;
}

// The tool bar is made once; later calls bring its toggles up to date.
void MainWndProc::PREPARE_TOOLBAR() {
    if (toolBar_ == nullptr) {
        toolBar_ = addToolBar(QStringLiteral("Tools"));
        toolBar_->setObjectName(QStringLiteral("Tools"));
        toolBar_->setMovable(false);
        toolBar_->setIconSize(QSize(24, 24));
        toolBar_->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        const int groups[][4] = {
            {kCmdOpen, kCmdPrint, kCmdExportView, 0},
            {kCmdZoomFull, kCmdReverseXAxis, kCmdStackSpectra, kCmdSelectRangeMode},
            {kCmdFileManager, kCmdRamanSearchMode, kCmdEditSpectrumMode, kCmdXrayMode},
            {kCmdRemoveSpikesByHand, kCmdSmooth, 0, 0},
            {kCmdPreferences, 0, 0, 0},
        };
        for (const auto& group : groups) {
            if (!toolBar_->actions().isEmpty()) {
                toolBar_->addSeparator();
            }
            for (const int command : group) {
                if (command != 0) {
                    toolBar_->addAction(commandAction(command));
                }
            }
        }
    }
    const Preferences& preferences = state_.quarvex.preferences;
    for (QAction* action : actionsFor(kCmdReverseXAxis)) {
        action->setChecked(preferences.reverseXAxis);
    }
    commandAction(kCmdStackSpectra)->setChecked(preferences.stackSpectra);
    commandAction(kCmdSelectRangeMode)->setChecked(view_->rangeSelectionMode());
    commandAction(kCmdRemoveSpikesByHand)->setChecked(state_.mancre.active);
}

void MainWndProc::SET_UP_STATUS_BAR() {
    crosshairLabel_ = new QLabel(this);
    selectionLabel_ = new QLabel(this);
    countLabel_ = new QLabel(this);
    crosshairLabel_->setMinimumWidth(
        fontMetrics().horizontalAdvance(QString(52, QLatin1Char('0'))));
    statusBar()->addWidget(crosshairLabel_, 1);
    statusBar()->addPermanentWidget(selectionLabel_);
    statusBar()->addPermanentWidget(countLabel_);
    updateStatus();
}

int MainWndProc::targetSpectrum() const {
    const SPECDATA_GLOBALS& s = state_.specdata;
    if (targetSpectrum_ >= 0 && targetSpectrum_ < s.count()) {
        return targetSpectrum_;
    }
    return activeSpectrum(s);
}

bool MainWndProc::canRun(int command) const {
    if (isXrayButtonCommand(command)) {
        return xray_->canRun(command);
    }
    const bool loaded = state_.specdata.count() > 0;
    switch (command) {
    case kCmdOpen:
    case kCmdExit:
    case kCmdPrintSetup:
    case kCmdPreferences:
    case kCmdFileManager:
    case kCmdHelpContents:
    case kCmdHelpSearch:
    case kCmdHelpOnHelp:
    case kCmdAbout:
    case kCmdConsistencyExam:
    case kCmdReverseXAxis:
    case kCmdStackSpectra:
    case kCmdCompileLibrary:
    case kCmdXrayMode: // its dock holds Open Project..., which needs nothing loaded
        return true;
    case kCmdCopyFitTable:
        return editSpectrum_->lastFit().has_value();
    case kCmdOpen2:
    case kCmdPrint:
    case kCmdZoomFull:
    case kCmdExportView:
    case kCmdSelectRangeMode:
    case kCmdMakeInvisible:
    case kCmdMakePrimary:
    case kCmdAdjustScale:
    case kCmdAdjustDataType:
    case kCmdDelete:
    case kCmdSpectrumName:
    case kCmdRamanSearchMode:
    case kCmdEditSpectrumMode:
    case kCmdSearchLibrary:
    case kCmdFindPeaks:
    case kCmdFitPeaks:
        return loaded;
    default:
        return canRunEditCommand(command);
    }
}

void MainWndProc::SETUP_ANDADJUST_MENUS() {
    for (const auto& [command, action] : actions_) {
        action->setEnabled(canRun(command));
    }
    const bool loaded = state_.specdata.count() > 0;
    applyItemText(actionsFor(kCmdOpen).front(), kOpenText);
    QAction* openAnother = actionsFor(kCmdOpen2).front();
    applyItemText(openAnother, kOpenAnotherText);
    openAnother->setVisible(loaded);
    const int target = targetSpectrum();
    for (QAction* action : actionsFor(kCmdMakeInvisible)) {
        action->setChecked(target >= 0 && !state_.specdata.VISIBLE[at(target)]);
    }
    PREPARE_TOOLBAR();
}

void MainWndProc::HANDLE_POPUP_MENU(const QPoint& globalPos, int spectrum) {
    setTargetSpectrum(spectrum);
    SETUP_ANDADJUST_MENUS();
    if (spectrum >= 0) {
        spectrumPopup_->actions().front()->setText(
            QString::fromStdString(state_.specdata.NAME[at(spectrum)]));
        spectrumPopup_->exec(globalPos);
    } else {
        viewPopup_->exec(globalPos);
    }
    setTargetSpectrum(-1);
}

QString MainWndProc::crosshairText() const {
    return crosshairLabel_ == nullptr ? QString() : crosshairLabel_->text();
}

void MainWndProc::updateStatus() {
    if (crosshairLabel_ == nullptr) {
        return;
    }
    const SPECDATA_GLOBALS& s = state_.specdata;
    const int k = view_->crosshairSpectrum();
    const int point = view_->crosshairPoint();
    const QString unit = k >= 0 ? xUnitFor(s.DTYPE[at(k)]) : QString();
    crosshairLabel_->setText(k < 0 ? QString()
                                   : QStringLiteral("%1  %2    x = %3%4    y = %5")
                                         .arg(k + 1)
                                         .arg(QString::fromStdString(s.NAME[at(k)]))
                                         .arg(s.xValues(k)[at(point)], 0, 'f', 2)
                                         .arg(unit)
                                         .arg(s.yValues(k)[at(point)], 0, 'g', 6));
    const auto range = view_->selectedRange();
    selectionLabel_->setText(range ? QStringLiteral("Selected %1 to %2")
                                         .arg(range->start, 0, 'f', 1)
                                         .arg(range->end, 0, 'f', 1)
                                   : QString());
    countLabel_->setText(s.count() == 1 ? QStringLiteral("1 spectrum")
                                        : QStringLiteral("%1 spectra").arg(s.count()));
}

void MainWndProc::updateTitle() {
    const int primary = activeSpectrum(state_.specdata); // not the File Manager's selection
    setWindowTitle(primary < 0
                       ? QStringLiteral("Quarvex")
                       : QStringLiteral("%1 - Quarvex")
                             .arg(QString::fromStdString(state_.specdata.NAME[at(primary)])));
}

void MainWndProc::closeEvent(QCloseEvent* event) {
    if (!shutDownDone_) {
        shutDown(state_); // INI_PREF_SETUP(1), FREE_SPECDATA_POINTERS
        endEditing();     // CREATE_APPEND_UNDO_FILE
        shutDownDone_ = true;
    }
    event->accept();
}

void MainWndProc::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
    }
}

void MainWndProc::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) {
            paths.append(url.toLocalFile());
        }
    }
    event->acceptProposedAction();
    openFiles(paths);
}

void MainWndProc::keyPressEvent(QKeyEvent* event) {
    if (!view_->CROSSHAIR_MOVE(event->key())) {
        QMainWindow::keyPressEvent(event);
    }
}

} // namespace quarvex::ui
