// Drawing the loaded spectra with QCustomPlot, and the view's mouse and keys.
#include "ui/SpectrumView.h"

#include "common/IndexCast.h"
#include "specdata/SpecDataArrange.h"

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

namespace {

constexpr double kRangeMargin = 0.04;  // empty fraction below the drawings
constexpr double kTopMargin = 0.09;    // and above them: room for the labels of peak marks
constexpr double kHitDistance = 6.0;   // pixels within which a click hits a curve
constexpr double kClickDistance = 3.0; // pixels a drag must exceed to be a drag
const char* const kPrimaryLayer = "primary";
const char* const kInteractionLayer = "interaction";

QCPRange padded(double low, double high) {
    if (!(high > low)) {
        return {low - 0.5, low + 0.5};
    }
    return {low - (high - low) * kRangeMargin, high + (high - low) * kTopMargin};
}

} // namespace

QColor spectrumColour(const PAINTINGGLOBALS& painting, int spectrum) {
    const SpectrumColour& c = painting.RAND_BRUSH[at(spectrum % kColourTableSize)];
    return QColor::fromRgbF(c.red, c.green, c.blue);
}

QString xAxisTitleFor(const std::string& dataType) {
    switch (xAxisKindOf(dataType)) {
    case XAxisKind::RamanShift:
        return QStringLiteral("Raman shift / cm-1");
    case XAxisKind::Energy:
        return QStringLiteral("Energy");
    case XAxisKind::TwoTheta:
        break;
    }
    return QStringLiteral("2-theta / deg");
}

QString xUnitFor(const std::string& dataType) {
    switch (xAxisKindOf(dataType)) {
    case XAxisKind::RamanShift:
        return QStringLiteral(" cm-1");
    case XAxisKind::TwoTheta:
        return QStringLiteral(" deg");
    case XAxisKind::Energy:
        break;
    }
    return {};
}

SpectrumView::SpectrumView(ProgramState& state, QWidget* parent)
    : QCustomPlot(parent), state_(state) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setInteraction(QCP::iRangeZoom, true);
    setSelectionRectMode(QCP::srmZoom);
    selectionRect()->setPen(QPen(QColor(60, 60, 60), 1.0, Qt::DashLine));
    selectionRect()->setBrush(QColor(60, 60, 60, 25));
    setAntialiasedElements(QCP::aePlottables);
    setMinimumSize(480, 320);

    const QColor axisColour(70, 70, 70);
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->setBasePen(QPen(axisColour));
        axis->setTickPen(QPen(axisColour));
        axis->setSubTickPen(QPen(axisColour));
        axis->setTickLabelColor(axisColour);
        axis->setLabelColor(QColor(30, 30, 30));
        axis->grid()->setPen(QPen(QColor(222, 222, 222), 1.0, Qt::SolidLine));
        axis->grid()->setZeroLinePen(Qt::NoPen);
    }
    QFont labelFont = font();
    labelFont.setPointSizeF(labelFont.pointSizeF() + 1.0);
    xAxis->setLabelFont(labelFont);
    yAxis->setLabelFont(labelFont);
    // Drawn heights are relative (stacked and scaled), so the y axis carries no numbers; the
    // status bar tells the real value under the cross-hair.
    yAxis->setLabel(QStringLiteral("Intensity / a.u."));
    yAxis->setTicks(false);
    yAxis->setTickLabels(false);
    plainYTicker_ = yAxis->ticker();
    intensityTicker_ = QSharedPointer<IntensityTicker>::create();
    xAxis->ticker()->setTickCount(9);
    xAxis2->setVisible(true);
    xAxis2->setTicks(false);
    xAxis2->setTickLabels(false);
    yAxis2->setVisible(true);
    yAxis2->setTicks(false);
    yAxis2->setTickLabels(false);
    xAxis2->setBasePen(QPen(axisColour));
    yAxis2->setBasePen(QPen(axisColour));

    legend->setBrush(QColor(255, 255, 255, 215));
    legend->setBorderPen(QPen(QColor(200, 200, 200)));
    QFont legendFont = font();
    legendFont.setPointSizeF(std::max(7.0, legendFont.pointSizeF() - 0.5));
    legend->setFont(legendFont);
    axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignRight);

    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), xAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(yAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), yAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(this, &QCustomPlot::beforeReplot, this, &SpectrumView::arrangePeakLabels);
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this, [this] {
        if (!settingRanges_) {
            userZoomed_ = true;
        }
    });
}

void SpectrumView::HOLD_SPECRGN_ARRAYS() {
    addLayer(kPrimaryLayer, layer("main"), QCustomPlot::limAbove);
    addLayer(kInteractionLayer, layer(kPrimaryLayer), QCustomPlot::limAbove);
    primaryLayer_ = layer(kPrimaryLayer);
    interactionLayer_ = layer(kInteractionLayer);
    interactionLayer_->setMode(QCPLayer::lmBuffered); // the cross-hair repaints alone

    const QPen crossPen(QColor(90, 90, 90), 1.0, Qt::DashLine);
    crossVertical_ = new QCPItemStraightLine(this);
    crossHorizontal_ = new QCPItemStraightLine(this);
    for (QCPItemStraightLine* line : {crossVertical_, crossHorizontal_}) {
        line->setPen(crossPen);
        line->setLayer(interactionLayer_);
        line->setSelectable(false);
        line->setVisible(false);
    }
    crossMarker_ = new QCPItemTracer(this);
    crossMarker_->setStyle(QCPItemTracer::tsCircle);
    crossMarker_->setSize(9.0);
    crossMarker_->setPen(QPen(QColor(20, 20, 20), 1.5));
    crossMarker_->setBrush(Qt::NoBrush);
    crossMarker_->setLayer(interactionLayer_);
    crossMarker_->setVisible(false);

    selectionBox_ = new QCPItemRect(this);
    selectionBox_->topLeft->setTypeY(QCPItemPosition::ptAxisRectRatio);
    selectionBox_->bottomRight->setTypeY(QCPItemPosition::ptAxisRectRatio);
    selectionBox_->setPen(QPen(QColor(0, 110, 200, 160)));
    selectionBox_->setBrush(QColor(0, 120, 215, 28));
    selectionBox_->setLayer(interactionLayer_);
    selectionBox_->setVisible(false);

    emptyHint_ = new QCPItemText(this);
    emptyHint_->position->setType(QCPItemPosition::ptAxisRectRatio);
    emptyHint_->position->setCoords(0.5, 0.5);
    emptyHint_->setText(QStringLiteral("Open a spectrum with File > Open (Ctrl+O),\n"
                                       "or drop spectrum files onto this window."));
    emptyHint_->setTextAlignment(Qt::AlignCenter);
    emptyHint_->setColor(QColor(120, 120, 120));
    QFont hintFont = font();
    hintFont.setPointSizeF(hintFont.pointSizeF() + 2.0);
    emptyHint_->setFont(hintFont);

    otherTypeNote_ = new QCPItemText(this);
    otherTypeNote_->position->setType(QCPItemPosition::ptAxisRectRatio);
    otherTypeNote_->position->setCoords(0.01, 0.01);
    otherTypeNote_->setPositionAlignment(Qt::AlignTop | Qt::AlignLeft);
    otherTypeNote_->setColor(QColor(150, 60, 0));
    otherTypeNote_->setVisible(false);
}

void SpectrumView::INI_DRAG() {
    drag_ = Drag::None;
    rangeSelectionMode_ = false;
}

int SpectrumView::primaryVisibleSpectrum() const {
    const SPECDATA_GLOBALS& s = state_.specdata;
    int firstVisible = -1;
    for (int k = 0; k < s.count(); ++k) {
        if (!s.VISIBLE[at(k)]) {
            continue;
        }
        if (s.ACTIVE[at(k)]) {
            return k;
        }
        if (firstVisible < 0) {
            firstVisible = k;
        }
    }
    return firstVisible;
}

void SpectrumView::ORGANIZE_PAINTING() {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const Preferences& preferences = state_.quarvex.preferences;
    clearGraphs();
    graphSpectrum_.clear();
    const int primary = primaryVisibleSpectrum();
    hiddenOfOtherType_ = 0;
    for (int k = 0; k < s.count(); ++k) {
        if (!s.VISIBLE[at(k)]) {
            continue;
        }
        // One x axis, one kind of x: 2-theta is never drawn over wavenumbers.
        if (xAxisKindOf(s.DTYPE[at(k)]) != xAxisKindOf(s.DTYPE[at(primary)])) {
            ++hiddenOfOtherType_;
            continue;
        }
        const auto x = s.xValues(k);
        const auto y = s.yValues(k);
        QVector<QCPGraphData> points(static_cast<qsizetype>(x.size()));
        for (std::size_t p = 0; p < x.size(); ++p) {
            points[static_cast<qsizetype>(p)] = {x[p], drawnY(s, k, y[p])};
        }
        QCPGraph* graph = addGraph();
        graph->data()->set(points, true); // the reader stores points in ascending x
        graph->setPen(QPen(spectrumColour(state_.painting, k), k == primary ? 1.8 : 1.2));
        graph->setName(
            QStringLiteral("%1  %2").arg(k + 1).arg(QString::fromStdString(s.NAME[at(k)])));
        graph->setSelectable(QCP::stNone);
        if (k == primary) {
            graph->setLayer(primaryLayer_); // the primary spectrum is drawn over the others
        }
        graphSpectrum_.push_back(k);
    }

    legend->setVisible(!graphSpectrum_.empty());
    emptyHint_->setVisible(graphSpectrum_.empty());
    otherTypeNote_->setVisible(hiddenOfOtherType_ > 0);
    otherTypeNote_->setText(
        QStringLiteral("%1 of another data type hidden: make one primary to see its type")
            .arg(hiddenOfOtherType_ == 1 ? QStringLiteral("1 spectrum")
                                         : QStringLiteral("%1 spectra").arg(hiddenOfOtherType_)));
    xAxis->setRangeReversed(preferences.reverseXAxis);
    xAxis2->setRangeReversed(preferences.reverseXAxis);
    xAxis->grid()->setVisible(preferences.showGrid);
    yAxis->grid()->setVisible(preferences.showGrid);
    xAxis->setLabel(primary >= 0 ? xAxisTitleFor(s.DTYPE[at(primary)]) : QString());
    showIntensityNumbers(primary);

    if (crosshairSpectrum_ != primary) {
        crosshairSpectrum_ = primary;
        crosshairPoint_ = primary >= 0 ? s.NUMDATA[at(primary)] / 2 : -1;
    }
    if (!userZoomed_) {
        setRanges(fullRanges());
    }
    placeCrosshair(crosshairSpectrum_, crosshairPoint_);
    if (selection_) {
        showSelection();
    }
    drawOverlays();
    replot();
}

// With the numbers on, the y axis speaks for the spectrum drawn in bold: the others are scaled
// and stacked each their own way, so its status-bar values remain theirs.
void SpectrumView::showIntensityNumbers(int spectrum) {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const bool on = state_.quarvex.view.intensityNumbers && spectrum >= 0 && isDrawn(spectrum);
    yAxis->setTicks(on);
    yAxis->setTickLabels(on);
    if (!on) {
        yAxis->setTicker(plainYTicker_);
        yAxis->setLabel(QStringLiteral("Intensity / a.u."));
        return;
    }
    // Mapped through the spectrum's extremes: two far points keep the factor's float error
    // relative to the spectrum's span.
    const auto [low, high] = s.Y_EXTREMES[at(spectrum)];
    const double drawnLow = drawnY(s, spectrum, low);
    const double drawnHigh = drawnY(s, spectrum, high);
    const double factor =
        high > low ? (drawnHigh - drawnLow) / (static_cast<double>(high) - low) : 0.0;
    intensityTicker_->setMapping(drawnLow - factor * low, factor, QCPRange(low, high));
    yAxis->setTicker(intensityTicker_);
    yAxis->setLabel(QStringLiteral("Intensity of spectrum %1").arg(spectrum + 1));
}

SpectrumView::Ranges SpectrumView::fullRanges() const {
    const SPECDATA_GLOBALS& s = state_.specdata;
    double xLow = 0.0;
    double xHigh = 0.0;
    double yLow = 0.0;
    double yHigh = 0.0;
    bool any = false;
    for (int k : graphSpectrum_) {
        const auto x = s.xValues(k);
        if (x.empty()) {
            continue;
        }
        const double base = s.STACK_BUFF[at(k)];
        const double top = base + static_cast<double>(drawnHeight(s, k));
        if (!any) {
            xLow = x.front();
            xHigh = x.back();
            yLow = base;
            yHigh = top;
            any = true;
        }
        xLow = std::min<double>(xLow, x.front());
        xHigh = std::max<double>(xHigh, x.back());
        yLow = std::min(yLow, base);
        yHigh = std::max(yHigh, top);
    }
    if (!any) {
        return {QCPRange(0.0, 1.0), QCPRange(0.0, 1.0)};
    }
    return {QCPRange(xLow, xHigh == xLow ? xLow + 1.0 : xHigh), padded(yLow, yHigh)};
}

void SpectrumView::setRanges(const Ranges& ranges) {
    settingRanges_ = true;
    xAxis->setRange(ranges.x);
    yAxis->setRange(ranges.y);
    settingRanges_ = false;
}

void SpectrumView::ZOOM_OUT() {
    userZoomed_ = false;
    setRanges(fullRanges());
    replot();
}

void SpectrumView::zoomTo(const XRange& range) {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const QCPRange full = fullRanges().x;
    const double spare = (range.end - range.start) / 2.0;
    const QCPRange x(std::max(full.lower, range.start - spare),
                     std::min(full.upper, range.end + spare));
    double low = 0.0;
    double high = 0.0;
    bool any = false;
    for (const int k : graphSpectrum_) {
        const auto xs = s.xValues(k);
        const auto ys = s.yValues(k);
        const auto first = std::lower_bound(xs.begin(), xs.end(), x.lower,
                                            [](float a, double b) { return a < b; });
        for (auto p = static_cast<std::size_t>(first - xs.begin());
             p < xs.size() && xs[p] <= x.upper; ++p) {
            const double y = drawnY(s, k, ys[p]);
            low = any ? std::min(low, y) : y;
            high = any ? std::max(high, y) : y;
            any = true;
        }
    }
    if (!any || !(x.upper > x.lower)) {
        return;
    }
    setRanges({x, padded(low, high)});
    userZoomed_ = true;
    replot();
}

int SpectrumView::nearestPoint(int spectrum, double x) const {
    const auto values = state_.specdata.xValues(spectrum);
    if (values.empty()) {
        return -1;
    }
    const auto after = std::lower_bound(values.begin(), values.end(), static_cast<float>(x));
    if (after == values.begin()) {
        return 0;
    }
    if (after == values.end()) {
        return static_cast<int>(values.size()) - 1;
    }
    const auto before = after - 1;
    const bool afterCloser = static_cast<double>(*after) - x < x - static_cast<double>(*before);
    return static_cast<int>((afterCloser ? after : before) - values.begin());
}

void SpectrumView::placeCrosshair(int spectrum, int point) {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const bool valid = spectrum >= 0 && spectrum < s.count() && point >= 0 &&
                       point < s.NUMDATA[at(spectrum)] && s.VISIBLE[at(spectrum)];
    crossVertical_->setVisible(valid);
    crossHorizontal_->setVisible(valid);
    crossMarker_->setVisible(valid);
    crosshairSpectrum_ = valid ? spectrum : -1;
    crosshairPoint_ = valid ? point : -1;
    if (valid) {
        const double x = s.xValues(spectrum)[at(point)];
        const double y = drawnY(s, spectrum, s.yValues(spectrum)[at(point)]);
        crossVertical_->point1->setCoords(x, 0.0);
        crossVertical_->point2->setCoords(x, 1.0);
        crossHorizontal_->point1->setCoords(0.0, y);
        crossHorizontal_->point2->setCoords(1.0, y);
        crossMarker_->position->setCoords(x, y);
        crossMarker_->setPen(QPen(spectrumColour(state_.painting, spectrum).darker(140), 1.5));
    }
    emit crosshairMoved(crosshairSpectrum_, crosshairPoint_);
}

void SpectrumView::moveCrosshairToPixel(double pixelX) {
    if (crosshairSpectrum_ < 0) {
        return;
    }
    const int point = nearestPoint(crosshairSpectrum_, xAxis->pixelToCoord(pixelX));
    if (point != crosshairPoint_) {
        placeCrosshair(crosshairSpectrum_, point);
        interactionLayer_->replot();
    }
}

bool SpectrumView::CROSSHAIR_MOVE(int key) {
    if (crosshairSpectrum_ < 0 || graphSpectrum_.empty()) {
        return false;
    }
    const int points = state_.specdata.NUMDATA[at(crosshairSpectrum_)];
    int spectrum = crosshairSpectrum_;
    int point = crosshairPoint_;
    const int towardsRight = xAxis->rangeReversed() ? -1 : 1;
    switch (key) {
    case Qt::Key_Left:
        point = std::clamp(point - towardsRight, 0, points - 1);
        break;
    case Qt::Key_Right:
        point = std::clamp(point + towardsRight, 0, points - 1);
        break;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const auto here = std::find(graphSpectrum_.begin(), graphSpectrum_.end(), spectrum);
        const auto place = here - graphSpectrum_.begin();
        const auto next = key == Qt::Key_Up ? place + 1 : place - 1;
        if (next < 0 || next >= static_cast<std::ptrdiff_t>(graphSpectrum_.size())) {
            return true;
        }
        const double x = state_.specdata.xValues(spectrum)[at(point)];
        spectrum = graphSpectrum_[static_cast<std::size_t>(next)];
        point = nearestPoint(spectrum, x);
        break;
    }
    default:
        return false;
    }
    placeCrosshair(spectrum, point);
    interactionLayer_->replot();
    return true;
}

int SpectrumView::spectrumAt(const QPointF& pos) const {
    int best = -1;
    double bestDistance = kHitDistance;
    for (int g = 0; g < static_cast<int>(graphSpectrum_.size()); ++g) { // overlays come later
        const double distance = graph(g)->selectTest(pos, false);
        if (distance >= 0.0 && distance < bestDistance) {
            bestDistance = distance;
            best = graphSpectrum_[at(g)];
        }
    }
    return best;
}

void SpectrumView::setInteractionShown(bool shown) {
    interactionLayer_->setVisible(shown);
}

void SpectrumView::setSelectedRange(std::optional<XRange> range) {
    if (range && range->start > range->end) {
        std::swap(range->start, range->end);
    }
    selection_ = range;
    showSelection();
    interactionLayer_->replot();
    emit selectionChanged();
}

void SpectrumView::showSelection() {
    selectionBox_->setVisible(selection_.has_value());
    if (selection_) {
        selectionBox_->topLeft->setCoords(selection_->start, 0.0);
        selectionBox_->bottomRight->setCoords(selection_->end, 1.0);
    }
}

void SpectrumView::mousePressEvent(QMouseEvent* event) {
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool clicksPlace = peakPlacingMode_ || state_.mancre.active;
    if (event->button() == Qt::LeftButton && !graphSpectrum_.empty() &&
        (rangeSelectionMode_ || shift || clicksPlace)) {
        // While placing peaks or removing spikes a click places one or removes one; a drag still
        // selects in range mode.
        drag_ = clicksPlace && !shift ? Drag::Placing : Drag::Selecting;
        dragStart_ = event->position();
        return;
    }
    if (event->button() == Qt::MiddleButton) {
        drag_ = Drag::Panning;
        dragStart_ = event->position();
        dragStartRanges_ = {xAxis->range(), yAxis->range()};
        return;
    }
    if (event->button() != Qt::LeftButton) {
        // The right button opens a pop-up menu, which takes the release: a zoom box started
        // here would stay attached to the mouse.
        event->accept();
        return;
    }
    QCustomPlot::mousePressEvent(event);
}

void SpectrumView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF pos = event->position();
    if (drag_ == Drag::Placing && rangeSelectionMode_ &&
        std::abs(pos.x() - dragStart_.x()) > kClickDistance) {
        drag_ = Drag::Selecting;
    }
    if (drag_ == Drag::Selecting) {
        const double a = xAxis->pixelToCoord(dragStart_.x());
        const double b = xAxis->pixelToCoord(pos.x());
        selection_ = XRange{std::min(a, b), std::max(a, b)};
        showSelection();
    } else if (drag_ == Drag::Panning) {
        userZoomed_ = true;
        settingRanges_ = true;
        // Pan along the data, never past its ends: x stays where there is something to see.
        const QCPRange full = fullRanges().x;
        const QCPRange& start = dragStartRanges_.x;
        const double towardsFirst = full.lower - start.lower;
        const double towardsLast = full.upper - start.upper;
        const double dx =
            std::clamp(xAxis->pixelToCoord(dragStart_.x()) - xAxis->pixelToCoord(pos.x()),
                       std::min(towardsFirst, towardsLast), std::max(towardsFirst, towardsLast));
        const double dy = yAxis->pixelToCoord(dragStart_.y()) - yAxis->pixelToCoord(pos.y());
        xAxis->setRange(dragStartRanges_.x.lower + dx, dragStartRanges_.x.upper + dx);
        yAxis->setRange(dragStartRanges_.y.lower + dy, dragStartRanges_.y.upper + dy);
        settingRanges_ = false;
        replot(QCustomPlot::rpQueuedReplot);
    } else {
        QCustomPlot::mouseMoveEvent(event);
    }
    moveCrosshairToPixel(pos.x());
}

void SpectrumView::mouseReleaseEvent(QMouseEvent* event) {
    if (drag_ == Drag::Selecting) {
        drag_ = Drag::None;
        const bool dragged = std::abs(event->position().x() - dragStart_.x()) > kClickDistance;
        setSelectedRange(dragged ? selection_ : std::nullopt);
        return;
    }
    if (drag_ == Drag::Panning) {
        drag_ = Drag::None;
        return;
    }
    if (drag_ == Drag::Placing) {
        drag_ = Drag::None;
        const double pixelX = event->position().x();
        if (std::abs(pixelX - dragStart_.x()) > kClickDistance) {
            return;
        }
        if (state_.mancre.active) {
            const int spectrum =
                isDrawn(crosshairSpectrum_) ? crosshairSpectrum_ : primaryVisibleSpectrum();
            if (spectrum >= 0) {
                emit spikeClicked(spectrum, peakPositionAt(spectrum, pixelX));
            }
        } else if (const int spectrum = primaryVisibleSpectrum(); spectrum >= 0) {
            emit peakPlaced(peakPositionAt(spectrum, pixelX));
        }
        return;
    }
    QCustomPlot::mouseReleaseEvent(event);
}

void SpectrumView::mouseDoubleClickEvent(QMouseEvent* event) {
    QCustomPlot::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton) {
        ZOOM_OUT();
    }
}

void SpectrumView::wheelEvent(QWheelEvent* event) {
    const bool vertical = event->modifiers() & Qt::ControlModifier;
    axisRect()->setRangeZoom(vertical ? Qt::Vertical : Qt::Horizontal);
    QCustomPlot::wheelEvent(event);
    userZoomed_ = true;
}

void SpectrumView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && selectionRect()->isActive()) {
        selectionRect()->cancel();
        return;
    }
    if (event->key() == Qt::Key_Escape && state_.mancre.active) {
        state_.mancre.active = false;
        emit spikeRemovalEnded();
        return;
    }
    if (event->key() == Qt::Key_Escape && selection_) {
        setSelectedRange(std::nullopt);
        return;
    }
    if (!CROSSHAIR_MOVE(event->key())) {
        QCustomPlot::keyPressEvent(event);
    }
}

void SpectrumView::contextMenuEvent(QContextMenuEvent* event) {
    if (selectionRect()->isActive()) {
        selectionRect()->cancel();
    }
    emit popupRequested(event->globalPos(), spectrumAt(event->pos()));
}

} // namespace quarvex::ui
