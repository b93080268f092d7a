// The strips under the view: the residual of a fit, the residuals of a refinement's lines and
// the reflection ticks of reference patterns, sharing the view's x axis, which carries its numbers
// and title under the lowest strip.
#include "ui/SpectrumView.h"

#include <algorithm>

namespace quarvex::ui {

namespace {

constexpr int kTickRowPixels = 22;
constexpr int kTickStripMargin = 6;  // pixels above and below the rows
constexpr double kLowestTick = 0.12; // of a row: even the weakest reflection shows
constexpr double kTickBase = 0.1;    // of a row: where the ticks stand
constexpr double kTickReach = 0.8;   // of a row: the strongest reflection's tick

} // namespace

bool SpectrumView::shown(const QCPAxisRect* strip) const {
    return strip != nullptr && std::find(strips_.begin(), strips_.end(), strip) != strips_.end();
}

// A strip framed and styled like the view, its x axis moving with the view's.
QCPAxisRect* SpectrumView::makeStrip() {
    if (marginGroup_ == nullptr) {
        marginGroup_ = new QCPMarginGroup(this);
        axisRect()->setMarginGroup(QCP::msLeft | QCP::msRight, marginGroup_);
    }
    auto* strip = new QCPAxisRect(this);
    strip->setMarginGroup(QCP::msLeft | QCP::msRight, marginGroup_);
    for (QCPAxis* axis : strip->axes()) {
        axis->setBasePen(xAxis->basePen());
        axis->setTickPen(xAxis->tickPen());
        axis->setSubTickPen(xAxis->subTickPen());
        axis->setTickLabelColor(xAxis->tickLabelColor());
        axis->setLabelColor(xAxis->labelColor());
        axis->setLabelFont(xAxis->labelFont());
        axis->grid()->setPen(xAxis->grid()->pen());
        axis->grid()->setZeroLinePen(Qt::NoPen);
    }
    for (QCPAxis* frame : {strip->axis(QCPAxis::atTop), strip->axis(QCPAxis::atRight)}) {
        frame->setVisible(true);
        frame->setTicks(false);
        frame->setTickLabels(false);
    }
    QCPAxis* x = strip->axis(QCPAxis::atBottom);
    x->ticker()->setTickCount(9);
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), x,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(x, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), xAxis,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    return strip;
}

// A strip of residuals about zero: it pans and zooms along x with the view.
QCPAxisRect* SpectrumView::makeResidualStrip(const QString& title) {
    QCPAxisRect* strip = makeStrip();
    strip->setRangeDrag(Qt::Horizontal);
    strip->setRangeZoom(Qt::Horizontal);
    strip->setMinimumSize(0, 70);
    QCPAxis* y = strip->axis(QCPAxis::atLeft);
    y->setLabel(title);
    y->ticker()->setTickCount(3);
    return strip;
}

void SpectrumView::arrangeStrips(bool ticks, bool residual, bool lineResiduals) {
    std::vector<QCPAxisRect*> wanted;
    if (ticks) {
        if (tickRect_ == nullptr) {
            tickRect_ = makeStrip();
            tickRect_->setRangeDrag(Qt::Orientations());
            tickRect_->setRangeZoom(Qt::Orientations());
            // Each row is named at its left, where the view's y axis has its title.
            QCPAxis* y = tickRect_->axis(QCPAxis::atLeft);
            y->setTicker(QSharedPointer<QCPAxisTickerText>::create());
            y->setTickLength(0, 0);
            y->setSubTicks(false);
            y->grid()->setVisible(false);
        }
        wanted.push_back(tickRect_);
    }
    if (residual) {
        if (residualRect_ == nullptr) {
            residualRect_ = makeResidualStrip(QStringLiteral("Residual"));
        }
        wanted.push_back(residualRect_);
    }
    if (lineResiduals) {
        if (lineResidualRect_ == nullptr) {
            lineResidualRect_ = makeResidualStrip(QStringLiteral("obs − calc / °"));
        }
        wanted.push_back(lineResidualRect_);
    }
    if (wanted != strips_) {
        // A strip out of the layout would still draw its axes where it was: hide it.
        for (QCPAxisRect* strip : strips_) {
            plotLayout()->take(strip);
            strip->setVisible(false);
        }
        plotLayout()->simplify();
        QList<double> stretch{4.0};
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            plotLayout()->addElement(static_cast<int>(i) + 1, 0, wanted[i]);
            wanted[i]->setVisible(true);
            stretch.append(wanted[i] == tickRect_ ? 0.01 : 1.0);
        }
        plotLayout()->setRowStretchFactors(stretch);
        plotLayout()->setRowSpacing(0);
        strips_ = wanted;
    }
    if (ticks) {
        const int height =
            2 * kTickStripMargin + kTickRowPixels * static_cast<int>(ticks_.rows.size());
        tickRect_->setMinimumSize(0, height);
        tickRect_->setMaximumSize(QWIDGETSIZE_MAX, height);
        QCPAxis* y = tickRect_->axis(QCPAxis::atLeft);
        y->setRange(0.0, static_cast<double>(ticks_.rows.size()));
        auto names = qSharedPointerCast<QCPAxisTickerText>(y->ticker());
        names->clear();
        for (std::size_t r = 0; r < ticks_.rows.size(); ++r) {
            names->addTick(static_cast<double>(ticks_.rows.size() - r) - 0.5,
                           ticks_.rows[r].legend);
        }
    }
    // The x axis with its numbers and title goes under the lowest strip.
    xAxis->setTickLabels(strips_.empty());
    for (QCPAxisRect* strip : strips_) {
        QCPAxis* x = strip->axis(QCPAxis::atBottom);
        const bool lowest = strip == strips_.back();
        x->setTickLabels(lowest);
        x->setLabel(lowest ? xAxis->label() : QString());
        x->setRangeReversed(xAxis->rangeReversed());
        x->setRange(xAxis->range());
        x->grid()->setVisible(xAxis->grid()->visible() && strip != tickRect_);
        strip->axis(QCPAxis::atLeft)->grid()->setVisible(false);
    }
    if (!strips_.empty()) {
        xAxis->setLabel(QString());
    }
}

void SpectrumView::drawTicks() {
    if (!shown(tickRect_)) {
        return;
    }
    QCPAxis* x = tickRect_->axis(QCPAxis::atBottom);
    QCPAxis* y = tickRect_->axis(QCPAxis::atLeft);
    const auto rows = static_cast<double>(ticks_.rows.size());
    for (std::size_t r = 0; r < ticks_.rows.size(); ++r) {
        const TickRow& row = ticks_.rows[r];
        const double base = rows - 1.0 - static_cast<double>(r) + kTickBase;
        for (std::size_t t = 0; t < row.position.size(); ++t) {
            auto* tick = new QCPItemLine(this);
            tick->setClipAxisRect(tickRect_);
            for (QCPItemPosition* end : {tick->start, tick->end}) {
                end->setAxes(x, y);
            }
            tick->start->setCoords(row.position[t], base);
            tick->end->setCoords(row.position[t],
                                 base + kTickReach * std::max(kLowestTick, row.height[t]));
            tick->setPen(QPen(row.colour, 1.6));
            markItems_.push_back(tick);
        }
    }
    for (QCPAbstractItem* item : markItems_) {
        item->setSelectable(false);
    }
}

} // namespace quarvex::ui
