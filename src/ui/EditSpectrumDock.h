// The "Edit Spectrum" mode: the peaks of the active spectrum found and marked, and the peaks of
// a selected window fitted, drawn on the view and tabulated with their standard errors.
#pragma once

#include "processing/FitQuality.h"
#include "processing/LinearBackground.h"
#include "processing/PeakFitting.h"
#include "ui/ModeContext.h"
#include "ui/ViewOverlays.h"

#include <QDockWidget>

#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;
class QTreeWidget;

namespace quarvex::ui {

class RangeEditor;

/// The window is the view's selection or typed in (default: the x-range the view shows). The
/// starting peaks are those the peak search finds in the window, or those placed by clicking
/// on the view while "Place Peaks" is on. Find Peaks, Fit and Copy are dispatched through the
/// main window like every command.
class EditSpectrumDock : public QDockWidget {
    Q_OBJECT

public:
    EditSpectrumDock(ModeContext context, QWidget* parent = nullptr);

    /// After spectra, the primary spectrum or the preferences changed; a fit or marks of a
    /// spectrum that is gone are cleared.
    void spectraChanged();

    /// The mode was opened (again): its fit and marks are drawn again.
    void activate();

    /// Finds the peaks of the active spectrum in the window, lists and marks them.
    void findPeaks();

    /// Fits the window (ORGANIZE_PEAKFITTING with the profile chosen here; with "Linear
    /// background" ticked, over the line through the window's end regions) and shows the result
    /// with its reduced chi-square and R². Throws QuarvexError: bad input, or "Did not converge.
    /// Resize window and try again." (title "Error"); the previous fit stays.
    void fit();

    /// Ticks or clears "Linear background" (for the next fit).
    void setLinearBackground(bool on);

    /// Puts the fit table on the clipboard as tab-separated text.
    void copyTable();
    /// Asks for a file name and saves the fit table there as CSV. Throws QuarvexError.
    void exportTableCsv();

    /// The last fit, if any, and its table as copied.
    const std::optional<PeakFitResult>& lastFit() const { return fit_; }
    /// The background line taken off before the last fit; none for the constant background.
    const std::optional<StraightLine>& lastLine() const { return line_; }
    /// How well the last fit describes the spectrum's values in its window.
    FitQuality lastQuality() const;
    QString tableText() const;

    /// Starting peaks placed by the user (x units, ascending).
    const std::vector<float>& placedPeaks() const { return placed_; }
    void placePeak(double x);
    void clearPeaks();

    /// The window the next fit covers; nullopt when nothing is loaded.
    std::optional<XRange> window() const;

    QTreeWidget* fitTable() const { return fitTable_; }
    QTreeWidget* peakTable() const { return peakTable_; }

    /// Lower than kPeakFitIterations only where a test needs a fit that runs out of steps.
    void setIterationLimit(int iterations) { iterationLimit_ = iterations; }

signals:
    void commandRequested(int command);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void enableFitExports(bool on);
    std::optional<XRange> defaultWindow(QString& note) const;
    PeakFitSettings fitSettings() const;
    void showFit();
    /// The spectrum's values at the fit's abscissae; empty when they no longer line up.
    std::vector<float> measuredValues() const;
    void clearFit();
    void showMarks();
    void updatePeakNote();

    ModeContext context_;
    QLabel* spectrumLabel_ = nullptr;
    RangeEditor* window_ = nullptr;
    QComboBox* profile_ = nullptr;
    QCheckBox* linearBackground_ = nullptr;
    QPushButton* placeButton_ = nullptr;
    QLabel* peakNote_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    QTreeWidget* fitTable_ = nullptr;
    QLabel* fitSummary_ = nullptr;
    QTreeWidget* peakTable_ = nullptr;
    QLabel* peakSummary_ = nullptr;
    std::vector<QPushButton*> spectrumButtons_; ///< enabled while a spectrum is loaded
    QPushButton* copyButton_ = nullptr;
    QPushButton* csvButton_ = nullptr;
    std::optional<PeakFitResult> fit_;
    std::optional<StraightLine> line_;
    XRange fitWindow_;
    std::vector<float> found_;
    std::vector<float> placed_;
    int spectrum_ = -1; ///< the spectrum the fit, found and placed peaks belong to
    std::string spectrumPath_;
    int iterationLimit_ = kPeakFitIterations;
};

} // namespace quarvex::ui
