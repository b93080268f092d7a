// Round intensities of one spectrum as the y axis's ticks, wherever it is stacked and scaled.
#include "ui/IntensityTicker.h"

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

void IntensityTicker::setMapping(double offset, double factor, QCPRange span) {
    offset_ = offset;
    factor_ = std::isfinite(factor) ? factor : 0.0;
    const double margin = 0.1 * span.size();
    span_ = QCPRange(span.lower - margin, span.upper + margin);
}

QCPRange IntensityTicker::intensities(const QCPRange& drawn) const {
    QCPRange range(intensityOf(drawn.lower), intensityOf(drawn.upper));
    range.normalize();
    return QCPRange(std::max(range.lower, span_.lower), std::min(range.upper, span_.upper));
}

// The step is chosen among round intensities, then given in drawn units as the caller expects.
double IntensityTicker::getTickStep(const QCPRange& range) {
    if (!mapped()) {
        return QCPAxisTicker::getTickStep(range);
    }
    const QCPRange shown = intensities(range);
    // Zoomed away from the spectrum: steps as for the whole axis, and no tick will fall inside.
    intensityStep_ = QCPAxisTicker::getTickStep(
        shown.lower < shown.upper ? shown
                                  : QCPRange(intensityOf(range.lower), intensityOf(range.upper)));
    return intensityStep_ * std::abs(factor_);
}

int IntensityTicker::getSubTickCount(double tickStep) {
    return QCPAxisTicker::getSubTickCount(mapped() ? intensityStep_ : tickStep);
}

QString IntensityTicker::getTickLabel(double tick, const QLocale& locale, QChar formatChar,
                                      int precision) {
    if (!mapped()) {
        return QCPAxisTicker::getTickLabel(tick, locale, formatChar, precision);
    }
    // Mapping there and back leaves a rounding residue where the intensity is 0.
    double intensity = intensityOf(tick);
    if (std::abs(intensity) < 1e-9 * intensityStep_) {
        intensity = 0.0;
    }
    return QCPAxisTicker::getTickLabel(intensity, locale, formatChar, precision);
}

QVector<double> IntensityTicker::createTickVector(double tickStep, const QCPRange& range) {
    if (!mapped()) {
        return QCPAxisTicker::createTickVector(tickStep, range);
    }
    const QCPRange shown = intensities(range);
    QVector<double> ticks;
    if (!(shown.lower < shown.upper)) {
        return ticks;
    }
    for (const double intensity : QCPAxisTicker::createTickVector(intensityStep_, shown)) {
        if (span_.contains(intensity)) {
            ticks.append(offset_ + factor_ * intensity);
        }
    }
    if (factor_ < 0.0) {
        std::reverse(ticks.begin(), ticks.end());
    }
    return ticks;
}

} // namespace quarvex::ui
