// The main view: every loaded, visible spectrum stacked and scaled in its colour, with a
// cross-hair, zoom and an x-range selection.
#pragma once

#include "shell/ProgramState.h"
#include "ui/IntensityTicker.h"
#include "ui/ViewOverlays.h"

#include <qcustomplot.h>

#include <optional>
#include <vector>

namespace quarvex::ui {

/// The colour-table entry of a spectrum (0-based); numbers beyond the table start over.
QColor spectrumColour(const PAINTINGGLOBALS& painting, int spectrum);

/// The x-axis title of a data type: "Raman shift / cm-1", "Energy" or "2-theta / deg".
QString xAxisTitleFor(const std::string& dataType);

/// The unit suffix of x values of a data type: " cm-1", " deg", or empty for energy.
QString xUnitFor(const std::string& dataType);

/// Mouse and keys: moving the mouse moves the cross-hair along the cross-hair spectrum (the
/// primary one unless Up/Down chose another); Left/Right move it one point. Left-drag zooms into
/// a box, the wheel zooms x (with Ctrl: y), middle-drag pans, a double click zooms full.
/// Shift+left-drag (or any left-drag in range-selection mode) selects an x-range; a click
/// without dragging clears it, and so does Escape. The right button asks for a pop-up menu.
/// In peak-placing mode a left click (without Shift) places a peak instead of zooming. While
/// manual cosmic-ray removal is on (`MANCRE_GLOBALS`), a left click asks for the spike under it
/// to be removed instead, and Escape ends that mode.
class SpectrumView : public QCustomPlot {
    Q_OBJECT

public:
    explicit SpectrumView(ProgramState& state, QWidget* parent = nullptr);

    /// Creates the view's regions: the layers of the spectra, the primary spectrum, and the
    /// cross-hair and selection above them, with their items.
    void HOLD_SPECRGN_ARRAYS();

    /// No drag in progress; a plain left-drag zooms.
    void INI_DRAG();

    /// Draws every visible spectrum from the program state (STACK_BUFF, SCALE_FACT, ABS_SCALE
    /// as left by RESETSTACK), applies the view preferences (reverse x, grid) and takes the
    /// x-axis title from the primary spectrum's data type. A range the user zoomed into is kept.
    void ORGANIZE_PAINTING();

    /// Shows the whole of every visible spectrum.
    void ZOOM_OUT();

    /// Shows `range` with half its width to spare on either side (within the spectra), the y
    /// axis fitted to what is drawn there.
    void zoomTo(const XRange& range);

    /// Moves the cross-hair for an arrow key: Left/Right one point (in screen direction, also
    /// with a reversed axis), Up/Down to the next visible spectrum above or below. False for any
    /// other key or when nothing is drawn.
    bool CROSSHAIR_MOVE(int key);

    /// Shows or hides what belongs to the screen only (cross-hair, selection shading), for a
    /// figure or a printed page.
    void setInteractionShown(bool shown);

    std::optional<XRange> selectedRange() const { return selection_; }
    void setSelectedRange(std::optional<XRange> range);

    void setRangeSelectionMode(bool on) { rangeSelectionMode_ = on; }
    bool rangeSelectionMode() const { return rangeSelectionMode_; }

    /// The spectrum (0-based) the cross-hair is on and its point, -1 when none.
    int crosshairSpectrum() const { return crosshairSpectrum_; }
    int crosshairPoint() const { return crosshairPoint_; }

    /// The visible spectrum whose drawing passes within a few pixels of `pos`; -1 when none.
    int spectrumAt(const QPointF& pos) const;

    /// Visible spectra not drawn because their data type's x axis is not the primary one's
    /// (a diffraction pattern beside a Raman spectrum); the view says how many.
    int hiddenOfOtherType() const { return hiddenOfOtherType_; }

    /// Spectrum numbers (0-based) of the drawn curves, in drawing order.
    const std::vector<int>& drawnSpectra() const { return graphSpectrum_; }

    /// The overlays of the modes (ViewOverlays.cpp); each redraws at once and is kept until
    /// replaced or cleared. Overlays of a spectrum that is no longer drawn are not shown.
    void setReferenceOverlay(std::optional<ReferenceOverlay> overlay);
    const std::optional<ReferenceOverlay>& referenceOverlay() const { return reference_; }
    void setFitOverlay(std::optional<FitOverlay> overlay);
    const std::optional<FitOverlay>& fitOverlay() const { return fit_; }
    void setPeakMarks(PeakMarks marks);
    const PeakMarks& peakMarks() const { return marks_; }
    void setReflectionTicks(ReflectionTicks ticks);
    const ReflectionTicks& reflectionTicks() const { return ticks_; }
    void setLineResiduals(LineResiduals residuals);
    const LineResiduals& lineResiduals() const { return lineResiduals_; }
    /// The strips below the view: the residual of a fit, the refinement's line residuals, the
    /// reflection ticks; null while not shown.
    QCPAxisRect* residualRect() const { return shown(residualRect_) ? residualRect_ : nullptr; }
    QCPAxisRect* lineResidualRect() const {
        return shown(lineResidualRect_) ? lineResidualRect_ : nullptr;
    }
    QCPAxisRect* tickRect() const { return shown(tickRect_) ? tickRect_ : nullptr; }

    void setPeakPlacingMode(bool on) { peakPlacingMode_ = on; }
    bool peakPlacingMode() const { return peakPlacingMode_; }

    /// Where a click at pixel x places a peak on `spectrum`: the highest point within a few
    /// pixels (a click beside a top still means that top).
    double peakPositionAt(int spectrum, double pixelX) const;

signals:
    void crosshairMoved(int spectrum, int point);
    void selectionChanged();
    /// The right button was pressed over a spectrum (its index) or the empty view (-1).
    void popupRequested(const QPoint& globalPos, int spectrum);
    /// A left click in peak-placing mode, at this x (data units).
    void peakPlaced(double x);
    /// A left click in manual cosmic-ray removal: the highest point near it on the cross-hair
    /// spectrum (the primary one when the cross-hair is on none), at this x (data units).
    void spikeClicked(int spectrum, double x);
    /// Escape on the view ended manual cosmic-ray removal.
    void spikeRemovalEnded();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    struct Ranges {
        QCPRange x;
        QCPRange y;
    };
    Ranges fullRanges() const;
    void setRanges(const Ranges& ranges);
    void placeCrosshair(int spectrum, int point);
    void moveCrosshairToPixel(double pixelX);
    void showSelection();
    int nearestPoint(int spectrum, double x) const;
    int primaryVisibleSpectrum() const;
    /// The y axis with the intensities of `spectrum` (the view setting), or without numbers.
    void showIntensityNumbers(int spectrum);
    // Overlays (ViewOverlays.cpp), drawn by ORGANIZE_PAINTING after the spectra.
    void drawOverlays();
    void drawReference();
    void drawFit();
    void drawPeakMarks();
    void arrangePeakLabels();
    void drawTicks();
    void drawLineResiduals();
    QCPAxisRect* makeStrip();
    QCPAxisRect* makeResidualStrip(const QString& title);
    void arrangeStrips(bool ticks, bool residual, bool lineResiduals);
    bool shown(const QCPAxisRect* strip) const;
    bool isDrawn(int spectrum) const;

    ProgramState& state_;
    std::vector<int> graphSpectrum_;
    QCPLayer* primaryLayer_ = nullptr;
    QCPLayer* interactionLayer_ = nullptr;
    QCPItemStraightLine* crossVertical_ = nullptr;
    QCPItemStraightLine* crossHorizontal_ = nullptr;
    QCPItemTracer* crossMarker_ = nullptr;
    QCPItemRect* selectionBox_ = nullptr;
    QCPItemText* emptyHint_ = nullptr;
    QCPItemText* otherTypeNote_ = nullptr;
    QSharedPointer<QCPAxisTicker> plainYTicker_;
    QSharedPointer<IntensityTicker> intensityTicker_;
    int hiddenOfOtherType_ = 0;
    int crosshairSpectrum_ = -1;
    int crosshairPoint_ = -1;
    std::optional<XRange> selection_;
    bool rangeSelectionMode_ = false;
    bool peakPlacingMode_ = false;
    std::optional<ReferenceOverlay> reference_;
    std::optional<FitOverlay> fit_;
    PeakMarks marks_;
    std::vector<QCPAbstractItem*> markItems_;
    std::vector<QCPItemText*> foundLabels_; ///< among markItems_: the labels of found peaks
    ReflectionTicks ticks_;
    LineResiduals lineResiduals_;
    QCPAxisRect* residualRect_ = nullptr;
    QCPAxisRect* lineResidualRect_ = nullptr;
    QCPAxisRect* tickRect_ = nullptr;
    std::vector<QCPAxisRect*> strips_; ///< the strips shown, top to bottom
    QCPMarginGroup* marginGroup_ = nullptr;
    bool userZoomed_ = false;
    bool settingRanges_ = false;
    enum class Drag { None, Selecting, Panning, Placing } drag_ = Drag::None;
    QPointF dragStart_;
    Ranges dragStartRanges_;
};

} // namespace quarvex::ui
