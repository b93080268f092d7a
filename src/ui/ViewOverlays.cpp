// Drawing the modes' overlays on the view: a reference spectrum matched to the unknown, a peak
// fit with its components and residual, and peak marks.
#include "ui/SpectrumView.h"

#include "common/IndexCast.h"
#include "specdata/SpecDataArrange.h"
#include "ui/ModeContext.h"

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

namespace {

constexpr double kSnapPixels = 6.0; // a placing click means the highest point this near
const QColor kReferenceColour(33, 33, 33);
const QColor kFitColour(20, 20, 20);
const QColor kComponentColour(0, 137, 123);
const QColor kBackgroundColour(120, 120, 120);
const QColor kResidualColour(84, 110, 122);
const QColor kFoundColour(55, 71, 79);
const QColor kPlacedColour(30, 136, 229);

// The smallest and largest of values[first, first + count).
std::pair<double, double> extremes(std::span<const float> values, PointRun run) {
    const auto part = values.subspan(run.first, run.count);
    const auto [low, high] = std::minmax_element(part.begin(), part.end());
    return {*low, *high};
}

QCPGraph* addCurve(QCustomPlot& plot, QCPAxis* x, QCPAxis* y, const QPen& pen,
                   const QString& legend) {
    QCPGraph* graph = plot.addGraph(x, y);
    graph->setPen(pen);
    graph->setSelectable(QCP::stNone);
    graph->setName(legend);
    if (legend.isEmpty()) {
        graph->removeFromLegend();
    }
    return graph;
}

} // namespace

bool SpectrumView::isDrawn(int spectrum) const {
    return std::find(graphSpectrum_.begin(), graphSpectrum_.end(), spectrum) !=
           graphSpectrum_.end();
}

void SpectrumView::setReferenceOverlay(std::optional<ReferenceOverlay> overlay) {
    reference_ = std::move(overlay);
    ORGANIZE_PAINTING();
}

void SpectrumView::setFitOverlay(std::optional<FitOverlay> overlay) {
    fit_ = std::move(overlay);
    ORGANIZE_PAINTING();
}

void SpectrumView::setPeakMarks(PeakMarks marks) {
    marks_ = std::move(marks);
    ORGANIZE_PAINTING();
}

void SpectrumView::setReflectionTicks(ReflectionTicks ticks) {
    ticks_ = std::move(ticks);
    ORGANIZE_PAINTING();
}

void SpectrumView::setLineResiduals(LineResiduals residuals) {
    lineResiduals_ = std::move(residuals);
    ORGANIZE_PAINTING();
}

double SpectrumView::peakPositionAt(int spectrum, double pixelX) const {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const double a = xAxis->pixelToCoord(pixelX - kSnapPixels);
    const double b = xAxis->pixelToCoord(pixelX + kSnapPixels);
    const auto x = s.xValues(spectrum);
    const PointRun run = pointsWithin(x, std::min(a, b), std::max(a, b));
    if (run.count == 0) {
        return xAxis->pixelToCoord(pixelX);
    }
    const auto y = s.yValues(spectrum).subspan(run.first, run.count);
    return x[run.first +
             static_cast<std::size_t>(std::max_element(y.begin(), y.end()) - y.begin())];
}

void SpectrumView::drawOverlays() {
    for (QCPAbstractItem* item : markItems_) {
        removeItem(item);
    }
    markItems_.clear();
    foundLabels_.clear();
    const bool fitShown = fit_ && isDrawn(fit_->spectrum) && !fit_->x.empty();
    const bool lineResidualsShown =
        isDrawn(lineResiduals_.spectrum) && !lineResiduals_.twoTheta.empty();
    arrangeStrips(!ticks_.rows.empty() && !graphSpectrum_.empty(), fitShown, lineResidualsShown);
    drawReference();
    if (fitShown) {
        drawFit();
    }
    if (lineResidualsShown) {
        drawLineResiduals();
    }
    drawPeakMarks();
    drawTicks();
}

void SpectrumView::drawReference() {
    if (!reference_ || !isDrawn(reference_->spectrum) || reference_->x.empty()) {
        return;
    }
    const SPECDATA_GLOBALS& s = state_.specdata;
    const ReferenceOverlay& r = *reference_;
    const int k = r.spectrum;
    PointRun unknown = pointsWithin(s.xValues(k), r.range.start, r.range.end);
    PointRun reference = pointsWithin(r.x, r.range.start, r.range.end);
    if (unknown.count == 0 || reference.count < 2) {
        return;
    }
    auto [uLow, uHigh] = extremes(s.yValues(k), unknown);
    uLow = drawnY(s, k, static_cast<float>(uLow));
    uHigh = drawnY(s, k, static_cast<float>(uHigh));
    const auto [rLow, rHigh] = extremes(r.y, reference);
    if (!(rHigh > rLow)) {
        return;
    }
    const double factor = (uHigh - uLow) / (rHigh - rLow);
    QVector<QCPGraphData> points;
    points.reserve(static_cast<qsizetype>(reference.count));
    for (std::size_t i = reference.first; i < reference.first + reference.count; ++i) {
        points.append({r.x[i], uLow + (r.y[i] - rLow) * factor});
    }
    QCPGraph* graph = addCurve(*this, xAxis, yAxis,
                               QPen(kReferenceColour, 1.4, Qt::DashLine, Qt::FlatCap), r.legend);
    graph->data()->set(points, true);
    graph->setLayer(primaryLayer_); // over the unknown
}

void SpectrumView::drawFit() {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const FitOverlay& f = *fit_;
    const int k = f.spectrum;
    const auto drawn = [&](float value) { return static_cast<double>(drawnY(s, k, value)); };
    const auto curve = [&f](const auto& value) {
        QVector<QCPGraphData> points(static_cast<qsizetype>(f.x.size()));
        for (std::size_t i = 0; i < f.x.size(); ++i) {
            points[static_cast<qsizetype>(i)] = {f.x[i], value(i)};
        }
        return points;
    };

    const auto backgroundAt = [&f](std::size_t i) {
        return f.line.empty() ? f.background : f.background + f.line[i];
    };
    QCPGraph* background =
        addCurve(*this, xAxis, yAxis, QPen(kBackgroundColour, 1.0, Qt::DotLine), QString());
    background->data()->set(curve([&](std::size_t i) { return drawn(backgroundAt(i)); }), true);
    QColor fill = kComponentColour;
    fill.setAlpha(46);
    for (std::size_t c = 0; c < f.components.size(); ++c) {
        const auto& component = f.components[c];
        QCPGraph* graph = addCurve(*this, xAxis, yAxis, QPen(kComponentColour, 1.2),
                                   c == 0 ? QStringLiteral("Fitted peaks") : QString());
        graph->data()->set(
            curve([&](std::size_t i) { return drawn(backgroundAt(i) + component[i]); }), true);
        graph->setBrush(fill);
        graph->setChannelFillGraph(background);
    }
    QCPGraph* fitted = addCurve(*this, xAxis, yAxis, QPen(kFitColour, 1.6), f.legend);
    fitted->data()->set(curve([&](std::size_t i) { return drawn(f.fitted[i]); }), true);
    fitted->setLayer(primaryLayer_);

    QCPAxis* rx = residualRect_->axis(QCPAxis::atBottom);
    QCPAxis* ry = residualRect_->axis(QCPAxis::atLeft);
    addCurve(*this, rx, ry, QPen(kBackgroundColour, 1.0, Qt::DashLine), QString())
        ->data()
        ->set(curve([](std::size_t) { return 0.0; }), true);
    double largest = 0.0;
    QCPGraph* residual = addCurve(*this, rx, ry, QPen(kResidualColour, 1.2), QString());
    residual->data()->set(curve([&](std::size_t i) {
                              const double r = f.measured[i] - f.fitted[i];
                              largest = std::max(largest, std::abs(r));
                              return r;
                          }),
                          true);
    const double half = largest > 0.0 ? largest * 1.15 : 1.0;
    ry->setRange(-half, half);
}

// Points rather than a curve: the lines are separate measurements, and joining them would
// suggest a trend between them.
void SpectrumView::drawLineResiduals() {
    QCPAxis* x = lineResidualRect_->axis(QCPAxis::atBottom);
    QCPAxis* y = lineResidualRect_->axis(QCPAxis::atLeft);
    auto* zero = new QCPItemStraightLine(this);
    zero->setClipAxisRect(lineResidualRect_);
    for (QCPItemPosition* end : {zero->point1, zero->point2}) {
        end->setAxes(x, y);
    }
    zero->point1->setCoords(0.0, 0.0);
    zero->point2->setCoords(1.0, 0.0);
    zero->setPen(QPen(kBackgroundColour, 1.0, Qt::DashLine));
    markItems_.push_back(zero);

    const LineResiduals& r = lineResiduals_;
    QVector<QCPGraphData> points;
    double largest = 0.0;
    for (std::size_t i = 0; i < r.twoTheta.size(); ++i) {
        points.append({r.twoTheta[i], r.obsMinusCalc[i]});
        largest = std::max(largest, std::abs(r.obsMinusCalc[i]));
    }
    QCPGraph* graph = addCurve(*this, x, y, QPen(kResidualColour, 1.2), QString());
    graph->setLineStyle(QCPGraph::lsImpulse);
    graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, kResidualColour, 5.0));
    graph->data()->set(points, false);
    const double half = largest > 0.0 ? largest * 1.25 : 0.01;
    y->setRange(-half, half);
}

void SpectrumView::drawPeakMarks() {
    const int k = marks_.spectrum;
    if (!isDrawn(k)) {
        return;
    }
    const SPECDATA_GLOBALS& s = state_.specdata;
    QFont labelFont = font();
    labelFont.setPointSizeF(std::max(7.0, labelFont.pointSizeF() - 1.0));
    for (const float x : marks_.found) {
        const int point = nearestPoint(k, x);
        auto* top = new QCPItemTracer(this);
        top->setStyle(QCPItemTracer::tsNone);
        top->position->setCoords(x, drawnY(s, k, s.yValues(k)[at(point)]));
        auto* label = new QCPItemText(this);
        label->position->setType(QCPItemPosition::ptAbsolute);
        label->position->setParentAnchor(top->position);
        label->position->setCoords(0.0, -22.0);
        label->setPositionAlignment(Qt::AlignBottom | Qt::AlignHCenter);
        label->setText(QString::number(x, 'f', 1));
        label->setFont(labelFont);
        label->setColor(kFoundColour);
        auto* arrow = new QCPItemLine(this);
        arrow->start->setParentAnchor(label->bottom);
        arrow->end->setParentAnchor(top->position);
        arrow->end->setCoords(0.0, -3.0);
        arrow->setPen(QPen(kFoundColour, 1.0));
        arrow->setHead(QCPLineEnding(QCPLineEnding::esSpikeArrow, 6.0, 8.0));
        markItems_.insert(markItems_.end(), {top, label, arrow});
        foundLabels_.push_back(label);
    }
    for (const float x : marks_.placed) {
        auto* line = new QCPItemStraightLine(this);
        line->point1->setCoords(x, 0.0);
        line->point2->setCoords(x, 1.0);
        line->setPen(QPen(kPlacedColour, 1.2, Qt::DashLine));
        auto* label = new QCPItemText(this);
        label->position->setTypeX(QCPItemPosition::ptPlotCoords);
        label->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
        label->position->setCoords(x, 0.0);
        label->setPositionAlignment(Qt::AlignTop | Qt::AlignHCenter);
        label->setText(QString::number(x, 'f', 1));
        label->setFont(labelFont);
        label->setColor(kPlacedColour);
        label->setBrush(QColor(255, 255, 255, 220));
        label->setPadding(QMargins(3, 1, 3, 1));
        markItems_.insert(markItems_.end(), {line, label});
    }
    for (QCPAbstractItem* item : markItems_) {
        item->setSelectable(false);
        item->setLayer(primaryLayer_);
    }
    arrangePeakLabels();
}

// A label that would overlap one already placed goes up a row (up to kLabelRows), and a label at
// an edge of the plot is moved inwards instead of being cut. Each label stands over its own
// peak, so rows of neighbours of different heights are at different places: the overlaps are
// tested between the labels' rectangles on screen. Run before every replot: the pixels between
// the peaks change with the zoom.
void SpectrumView::arrangePeakLabels() {
    constexpr double kBaseOffset = 22.0; // pixels between a peak's top and its label
    constexpr double kGap = 3.0;
    constexpr int kLabelRows = 6;
    std::vector<std::pair<QPointF, QCPItemText*>> byPixel;
    for (QCPItemText* label : foundLabels_) {
        byPixel.emplace_back(label->position->parentAnchor()->pixelPosition(), label);
    }
    std::sort(byPixel.begin(), byPixel.end(),
              [](const auto& a, const auto& b) { return a.first.x() < b.first.x(); });
    const QRect plot = axisRect()->rect();
    struct PlacedLabel {
        QRectF label;
        QRectF arrow; ///< from the label down to its peak
    };
    std::vector<PlacedLabel> placed;
    const auto arrowUnder = [](const QRectF& rect, const QPointF& top) {
        return QRectF(top.x() - 1.0, rect.bottom(), 2.0, std::max(0.0, top.y() - rect.bottom()));
    };
    for (const auto& [top, label] : byPixel) {
        const QFontMetricsF metrics(label->font());
        const double width = metrics.horizontalAdvance(label->text()) + label->padding().left() +
                             label->padding().right();
        const double height = metrics.height();
        const double centred = top.x() - width / 2.0;
        const double left =
            std::max<double>(plot.left(), std::min<double>(centred, plot.right() - width));
        const auto rectAt = [&](int row) {
            const double bottom = top.y() - kBaseOffset - row * height;
            return QRectF(left - kGap, bottom - height - kGap, width + 2.0 * kGap,
                          height + 2.0 * kGap);
        };
        // Clear of labels and arrows if a row allows, else clear of labels at least.
        const auto blocked = [&](int row, bool arrows) {
            const QRectF rect = rectAt(row);
            const QRectF arrow = arrowUnder(rect, top);
            return std::any_of(placed.begin(), placed.end(), [&](const PlacedLabel& other) {
                return other.label.intersects(rect) ||
                       (arrows && (other.arrow.intersects(rect) || other.label.intersects(arrow)));
            });
        };
        int row = 0;
        while (row < kLabelRows && blocked(row, true)) {
            ++row;
        }
        if (row == kLabelRows) {
            row = 0;
            while (row + 1 < kLabelRows && blocked(row, false)) {
                ++row;
            }
        }
        placed.push_back({rectAt(row), arrowUnder(rectAt(row), top)});
        label->position->setCoords(left - centred, -(kBaseOffset + row * height));
    }
}

} // namespace quarvex::ui
