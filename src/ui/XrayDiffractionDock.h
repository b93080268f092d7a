// The "X-ray Diffraction" mode: reference patterns with their reflections as ticks under the
// view, the pattern's peaks found, fitted and indexed, the cell refined, and X-ray projects.
#pragma once

#include "ui/Commands.h"
#include "ui/ModeContext.h"
#include "ui/ViewOverlays.h"
#include "xray/JointRefine.h"
#include "xray/RefinedCellRecord.h"
#include "xray/XrayWorkflow.h"

#include <QDockWidget>

#include <filesystem>
#include <optional>
#include <string>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QToolButton;
class QTreeWidget;

namespace quarvex::ui {

class XrayPeakTable;

/// The pattern is the active spectrum when it is a diffraction pattern (a data type other than
/// RAMAN and ENERGY); the peaks, once found, stay with their pattern. The peaks are indexed from
/// the first active reference of the list: opening the first reference, or changing which one
/// is first (reorder, untick, delete), indexes them anew; further references are there to
/// compare. Its buttons ask the main window to dispatch their commands (Open Reference..., Find
/// & Fit Peaks, Refine, the project commands); the diffraction-file and reference pop-ups, whose
/// numbers the main window uses otherwise, are dispatched here.
class XrayDiffractionDock : public QDockWidget {
    Q_OBJECT

public:
    /// The two pop-up menus are the main window's (built from its menu tables, greyed there).
    XrayDiffractionDock(ModeContext context, QMenu& diffractionFilePopup, QMenu& referencePopup,
                        QWidget* parent = nullptr);

    /// After spectra, the primary spectrum or the preferences changed; peaks of a pattern that
    /// is gone are cleared.
    void spectraChanged();

    /// The mode was opened (again): the reflection ticks are drawn again.
    void activate();

    /// True when a command of this mode (dispatched by the main window or here) can run now.
    bool canRun(int command) const;

    // The commands of the buttons. Each throws QuarvexError with the message for the user.
    /// The dialog "Diffraction Data File", starting in SearchRecords/XrayLib/ of the home folder.
    void openReference();
    /// Opens reference files into the list; a file that fails shows its message and the others
    /// are still read. Returns the number opened.
    int openReferences(const QStringList& paths);
    /// Finds and fits the peaks of the active pattern (worker thread, progress dialog) and
    /// indexes them from the first active reference at once.
    void findPeaks();
    /// Ticks or clears "Strip Kα2" (previewed at once).
    void setStripKAlpha2(bool strip);
    /// Writes <pattern>_refine.DAT beside the pattern and refines (worker thread); shows the
    /// cell and the report.
    void refine();
    /// Asks for a file (proposed: <pattern>_cell.txt beside the pattern) and writes the refined
    /// cell's summary (refinedCellSummary) there.
    void saveCellSummary();
    void newProject();
    void openProject();
    void saveProject();

    /// Runs a pop-up command (30038, 30040, 30043, 30044, 30046) on the selected reference.
    DispatchResult dispatch(int command);

    // The reference list (indices 0-based).
    int selectedReference() const;
    void selectReference(int reference);
    void moveReference(int from, int to);
    void deleteReference(int reference);
    void setReferenceActive(int reference, bool active);

    // Edits of the phase.
    /// "h k l" (or "h k l (λ2)") assigns peak `peak`; "none" or an empty text unassigns it.
    void editHkl(int peak, const QString& text);
    void setPeakUsed(int peak, bool use);
    void setCrystalSystem(int sym);
    void setWavelength(double wavelength);

    QTreeWidget* references() const { return references_; }
    XrayPeakTable* peakTable() const { return peakTable_; }
    /// The refined cell as shown (rich text), and the report.
    QString cellText() const;
    QString reportText() const;
    /// The refinement input written by the last Refine of this session.
    const std::filesystem::path& lastInput() const { return lastInput_; }

signals:
    void commandRequested(int command);
    /// A spectrum was added (Create Spectrum From DIF, Open Project).
    void spectraAdded();
    void statusMessage(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    enum ReferenceColumn { kRefNumber, kRefMineral, kRefFile, kRefSystem, kRefLines, kRefColumns };

    // Layout (XrayDiffractionDock.cpp)
    QWidget* buildPatternBox();
    QWidget* buildReferenceBox();
    QWidget* buildPeakBox();
    QWidget* buildRefineBox();
    void connectPopup(QMenu& popup);
    // State of the mode, and showing it (XrayDiffractionView.cpp)
    XrayPhase* phase();
    const XrayPhase* phase() const;
    int firstActive() const;
    /// The file of reference `reference` (0-based; -1: none), as a phase names its source.
    std::string referenceSource(int reference) const;
    bool isDiffractionPattern(int spectrum) const;
    WavelengthChoice wavelengthChoice(int spectrum) const;
    std::vector<double> wavelengths() const;
    void refreshPattern();
    void refreshReferences();
    void refreshPhase();
    void refreshResults();
    /// The refinement's word on each matched peak in the table: observed minus calculated
    /// 2-theta, the joint refinement's diagnostics, the flagged lines marked.
    void showLineFits();
    /// The same observed minus calculated 2-theta as points under the pattern, while the mode
    /// is open; none clears them.
    void showLineResiduals(LineResiduals residuals);
    /// Widens the dock when the matched table's columns do not fit.
    void widenForTable();
    void showTicks();
    /// The fitted peaks of the phase marked on the pattern while the mode is open.
    void showPeakMarks();
    /// While "Strip Kα2" is ticked, the active pattern with K-alpha2 stripped over it (the part
    /// removed in the strip below); an error unticks it.
    void showStripPreview();
    void updateButtons();
    // Working on it (XrayDiffractionWork.cpp, XrayDiffractionFiles.cpp)
    void afterListChange(const std::string& indexedBefore);
    void indexFromFirstActive();
    void applyWavelengths(const WavelengthChoice& choice);
    /// The wavelengths of the phase's peaks: the pattern's, K-alpha1 alone when the peaks were
    /// found on the pattern with K-alpha2 stripped.
    WavelengthChoice phaseWavelengths() const;
    void rematch();
    void clearPattern();
    void createSpectrumFromDif();
    void viewReferenceFile(bool adjusted);
    QStringList hklChoices(int peak) const;
    void requireDiffractionPattern(int spectrum) const;

    ModeContext context_;
    QLabel* patternLabel_ = nullptr;
    QDoubleSpinBox* wavelength_ = nullptr;
    QLabel* wavelengthNote_ = nullptr;
    QPushButton* projectButton_ = nullptr;
    QTreeWidget* references_ = nullptr;
    QPushButton* openButton_ = nullptr;
    QToolButton* viewButton_ = nullptr;
    QToolButton* upButton_ = nullptr;
    QToolButton* downButton_ = nullptr;
    QToolButton* deleteButton_ = nullptr;
    QLabel* indexNote_ = nullptr;
    QPushButton* findButton_ = nullptr;
    QCheckBox* stripKAlpha2_ = nullptr; ///< strip K-alpha2 before the peak search
    bool stripPreviewShown_ = false;    ///< the view's fit overlay is the stripped pattern
    bool peaksStripped_ = false;        ///< the peaks were found with K-alpha2 stripped
    bool peakMarksShown_ = false;       ///< the view's peak marks are the fitted peaks
    QLabel* peakSummary_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    XrayPeakTable* peakTable_ = nullptr;
    QPlainTextEdit* report_ = nullptr;
    QComboBox* system_ = nullptr;
    QCheckBox* machineError_ = nullptr;
    QCheckBox* startFromCell_ = nullptr;
    QCheckBox* refineZero_ = nullptr;         ///< the joint refinement with the zero shift
    QCheckBox* refineDisplacement_ = nullptr; ///< ... and/or the sample displacement
    JointRefineResult joint_;                 ///< the last joint refinement (ok false: none)
    QPushButton* refineButton_ = nullptr;
    QPushButton* reportButton_ = nullptr;
    QPushButton* summaryButton_ = nullptr;
    QLabel* cell_ = nullptr;
    std::string patternPath_; ///< the file of the pattern the peaks belong to
    std::string shownPath_;   ///< the file of the active spectrum as last shown
    std::optional<double> typedWavelength_;
    std::string wavelengthSource_; ///< where the phase's wavelengths came from
    std::filesystem::path lastInput_;
    /// The last refinement of the phase's peaks (this session's, or the one an opened project
    /// kept); empty when there is none or the peaks were found anew.
    std::optional<RefinedCellRecord> refined_;
    QString matchNote_;
};

} // namespace quarvex::ui
