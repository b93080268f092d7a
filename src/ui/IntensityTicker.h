// Tick marks of the view's y axis in the primary spectrum's own intensities.
#pragma once

#include <qcustomplot.h>

namespace quarvex::ui {

/// The view draws each spectrum scaled and stacked: drawn = offset + factor · intensity. This
/// ticker puts its ticks at round intensities of one spectrum, at their drawn heights, and labels
/// them with the intensities. Ticks stay within the spectrum's own span (a tenth to spare): in
/// a stack, the heights of the other spectra are no intensities of this one. A factor of 0 (a
/// flat spectrum) gives the plain ticks.
class IntensityTicker : public QCPAxisTicker {
public:
    void setMapping(double offset, double factor, QCPRange span);

protected:
    double getTickStep(const QCPRange& range) override;
    int getSubTickCount(double tickStep) override;
    QString getTickLabel(double tick, const QLocale& locale, QChar formatChar,
                         int precision) override;
    QVector<double> createTickVector(double tickStep, const QCPRange& range) override;

private:
    bool mapped() const { return factor_ != 0.0; }
    double intensityOf(double drawn) const { return (drawn - offset_) / factor_; }
    QCPRange intensities(const QCPRange& drawn) const;

    double offset_ = 0.0;
    double factor_ = 0.0;
    QCPRange span_;              ///< the spectrum's intensities with their margins
    double intensityStep_ = 1.0; ///< of the ticks last made
};

} // namespace quarvex::ui
