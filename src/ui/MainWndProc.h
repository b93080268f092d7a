// The main window: menus, tool bar, status bar, the spectrum view and the mode docks, and the
// one dispatch function from command number to operation.
#pragma once

#include "readers/ReadOptions.h"
#include "shell/ProgramState.h"
#include "specdata/SpectrumEdits.h"
#include "ui/Commands.h"
#include "ui/CoreHooks.h"
#include "ui/UserInteraction.h"

#include <QMainWindow>

#include <filesystem>
#include <map>
#include <memory>

class QDialog;
class QLabel;
class QPrinter;

namespace quarvex {
class QuarvexError;
}

namespace quarvex::ui {

class BackgroundCompilation;
class EditSpectrumDock;
class FileManagerDock;
class HelpWindow;
class RamanSearchDock;
class SpectrumView;
class XrayDiffractionDock;
struct MenuResource;

/// Where the window finds its files, and who answers its questions.
struct MainWindowOptions {
    std::filesystem::path home;       ///< the program's home folder (working folders, QV.ini)
    std::filesystem::path docsFolder; ///< the Markdown documentation opened by Help
    /// Message boxes, file dialogs, modal dialogs, opening documents; null: Qt's own.
    std::shared_ptr<UserInteraction> interaction;
    /// A library that changed since its last compilation is compiled after the window shows,
    /// on a worker thread, instead of before (the program's interactive start; runs that take
    /// pictures or check the start-up order compile in order).
    bool compileLibraryInBackground = false;
};

/// Start-up is split as the window's life is: the constructor is the window's creation (menus,
/// view, then SET_UP_RAND_BRUSHES, INI_DRAG, INI_PREF_SETUP(2)); `startUp()` runs the rest in
/// order (CENTERWINDOW, HOLD_SPECRGN_ARRAYS, PREPARE_TOOLBAR, SET_UP_STATUS_BAR, SET_UP_FOLDERS,
/// the library compilation hook, SET_UP_REF_FILE(1), drops accepted, shown). Closing the window
/// is its destruction: INI_PREF_SETUP(1) and FREE_SPECDATA_POINTERS. The library compilation
/// hook is skipped when the library folder is as its last compilation left it (its manifest),
/// and runs after the window shows when `compileLibraryInBackground` is set.
class MainWndProc : public QMainWindow {
    Q_OBJECT

public:
    MainWndProc(ProgramState& state, MainWindowOptions options, QWidget* parent = nullptr);
    ~MainWndProc() override;

    /// The core operations of start-up and the consistency exam (default: defaultCoreHooks()).
    void setCoreHooks(CoreHooks hooks) { hooks_ = std::move(hooks); }

    /// Start-up after the window's creation; shows the window.
    void startUp();

    /// Runs the operation of a command: menus, accelerators, the tool bar, the File Manager and
    /// the tests all come through here. A spectrum command applies to the target spectrum.
    DispatchResult dispatch(int command);

    /// True when the command can run in the present state (otherwise its items are greyed).
    bool canRun(int command) const;

    /// Enables and greys every item for the present state and sets the run-time texts of the
    /// open items: "&Open...\tCtrl+O" always, "Open &Another...\tCtrl+Shift+O" on the second
    /// open item, shown only once a spectrum is loaded.
    void SETUP_ANDADJUST_MENUS();

    /// Reads each file in the format its content shows (loadSpectrumFile; a delimited file of
    /// more than two columns asks for its columns; a file that fails shows its message and is
    /// skipped), then redraws. Returns the number of spectra added.
    int openFiles(const QStringList& paths);

    /// The spectrum (0-based) that spectrum commands apply to; -1 means the primary one.
    void setTargetSpectrum(int spectrum) { targetSpectrum_ = spectrum; }
    int targetSpectrum() const;

    SpectrumView* view() const { return view_; }
    FileManagerDock* fileManager() const { return fileManager_; }
    RamanSearchDock* ramanSearch() const { return ramanSearch_; }
    EditSpectrumDock* editSpectrum() const { return editSpectrum_; }
    XrayDiffractionDock* xrayDiffraction() const { return xray_; }
    /// The help window; null until help was asked for.
    HelpWindow* helpWindow() const { return helpWindow_; }
    QMenu* viewPopup() const { return viewPopup_; }
    QMenu* spectrumPopup() const { return spectrumPopup_; }
    QMenu* diffractionFilePopup() const { return diffractionFilePopup_; }
    QMenu* referencePopup() const { return referencePopup_; }
    /// Every menu and tool-bar action of a command.
    QList<QAction*> actionsFor(int command) const;
    /// Prints the view on `printer` with its header line: what Print... does after its dialog.
    void printTo(QPrinter& printer);

    /// The status bar's cross-hair field ("x = ..., y = ...").
    QString crosshairText() const;

    /// The start-up compilation of a changed library, when it runs after the window shows.
    const BackgroundCompilation& libraryCompilation() const { return *libraryCompilation_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Window (MainWndProc.cpp)
    void buildMenus();
    QMenu* buildMenu(const MenuResource& resource, QWidget* parent, bool dispatched);
    void fillMenu(QMenu* menu, const MenuResource& resource, bool dispatched);
    QAction* commandAction(int command) const;
    void PREPARE_TOOLBAR();
    void SET_UP_STATUS_BAR();
    void HANDLE_POPUP_MENU(const QPoint& globalPos, int spectrum);
    void updateStatus();
    void updateTitle();
    QString compileLibraryAtStart();
    void startUpCompilationEnded();

    // Commands (MainCommands.cpp)
    void runCommand(int command);
    void READ_SPECDATA_FILE(bool another);
    void refreshAfterSpectrumChange();
    void AFTERUPDATESP();
    /// Shows a mode's dock (raised among the tabbed docks), at a third of the window's width.
    void showMode(QDockWidget* dock);
    void runModeCommand(int command);
    void runXrayCommand(int command);
    /// Runs a modal dialog centred on the screen; true when accepted.
    bool runCentred(QDialog& dialog);
    void editPreferences();
    void adjustScale();
    void adjustDataType();
    void print();
    void printSetup();
    void exportView();
    void openHelp(int command);
    void consistencyExam();
    void showError(const QuarvexError& error);
    QPrinter& printer();

    // Editing, undo, saving and recent files (SpectrumEditCommands.cpp)
    void startEditing();
    void endEditing();
    bool canRunEditCommand(int command) const;
    void runEditCommand(int command);
    void applySpectrumEdit(const SpectrumEdit& edit);
    void ORGANIZE_TRIMMING(int command);
    void ORGANIZE_SAVEFILE(int command);
    void EDIT_SPECDATA_FILE();
    /// Read options that ask for the x and y columns of a delimited file of `path` in the
    /// column dialog.
    ReadOptions columnDialogOptions(const QString& path);
    void applySpectrumRecord(int spectrum, const SpectrumRecord& record);
    void setSpikeRemovalByHand(bool on);
    void removeSpikeAt(int spectrum, double x);
    void smooth();
    void openRecentFile(std::size_t entry);
    void updateRecentFileItems();

    ProgramState& state_;
    MainWindowOptions options_;
    CoreHooks hooks_;
    SpectrumView* view_ = nullptr;
    FileManagerDock* fileManager_ = nullptr;
    RamanSearchDock* ramanSearch_ = nullptr;
    EditSpectrumDock* editSpectrum_ = nullptr;
    XrayDiffractionDock* xray_ = nullptr;
    BackgroundCompilation* libraryCompilation_ = nullptr;
    HelpWindow* helpWindow_ = nullptr;
    QMenu* viewPopup_ = nullptr;
    QMenu* spectrumPopup_ = nullptr;
    QMenu* diffractionFilePopup_ = nullptr;
    QMenu* referencePopup_ = nullptr;
    QToolBar* toolBar_ = nullptr;
    QLabel* crosshairLabel_ = nullptr;
    QLabel* selectionLabel_ = nullptr;
    QLabel* countLabel_ = nullptr;
    std::multimap<int, QAction*> actions_;
    std::unique_ptr<QPrinter> printer_;
    QString lastOpenedPath_;
    int targetSpectrum_ = -1;
    bool shutDownDone_ = false;
};

/// Moves a window so that it is centred on its screen.
void CENTERWINDOW(QWidget& window);

} // namespace quarvex::ui
