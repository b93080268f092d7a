// Formatting the fitted values with their standard errors, on screen and as copied text.
#include "ui/FitTable.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

namespace {

QString full(float value) {
    return std::isfinite(value) ? QString::number(static_cast<double>(value), 'g', 9)
                                : QStringLiteral("n/a");
}

QString full(double value) {
    return std::isfinite(value) ? QString::number(value, 'g', 10) : QStringLiteral("n/a");
}

} // namespace

QString valueWithError(double value, double error) {
    if (!std::isfinite(error) || !(error > 0.0)) {
        return QString::number(value, 'g', 6) +
               (std::isfinite(error) ? QStringLiteral(" ± 0") : QStringLiteral(" ± n/a"));
    }
    // Two significant digits of the error; above the decimal point the digits below them
    // are rounded away too (300088 ± 6343 reads 300100 ± 6300).
    const int decimals = std::min(1 - static_cast<int>(std::floor(std::log10(error))), 8);
    const auto rounded = [decimals](double v) {
        const double unit = std::pow(10.0, -decimals);
        return decimals >= 0 ? v : std::round(v / unit) * unit;
    };
    return QStringLiteral("%1 ± %2")
        .arg(rounded(value), 0, 'f', std::max(decimals, 0))
        .arg(rounded(error), 0, 'f', std::max(decimals, 0));
}

QString profileName(PeakProfile profile) {
    return profile == PeakProfile::gaussian ? QStringLiteral("Gaussian")
                                            : QStringLiteral("pseudo-Voigt");
}

QString fitTableText(const FitShown& shown, const QString& spectrum, const XRange& window) {
    const PeakFitResult& fit = shown.fit;
    QStringList lines;
    lines.append(QStringLiteral("Spectrum\t") + spectrum);
    lines.append(QStringLiteral("Window\t%1\t%2").arg(window.start).arg(window.end));
    lines.append(QStringLiteral("Profile\t") + profileName(fit.profile));
    lines.append(QStringLiteral("Peak\tCentre\tCentre error\tFWHM\tFWHM error\tHeight\t"
                                "Height error\tArea\tArea error\tMix\tMix error"));
    for (std::size_t k = 0; k < fit.peaks.size(); ++k) {
        const FittedPeak& p = fit.peaks[k];
        QStringList row{QString::number(k + 1)};
        for (const float value : {p.centre, p.centreError, p.fwhm, p.fwhmError, p.height,
                                  p.heightError, p.area, p.areaError, p.mix, p.mixError}) {
            row.append(full(value));
        }
        lines.append(row.join(QLatin1Char('\t')));
    }
    lines.append(
        QStringLiteral("Background\t%1\t%2").arg(full(fit.background), full(fit.backgroundError)));
    if (shown.line) {
        lines.append(QStringLiteral("Background slope\t") + full(shown.line->slope));
        lines.append(QStringLiteral("Background intercept\t") + full(shown.line->intercept));
    }
    lines.append(QStringLiteral("Chi-square\t") + full(fit.chisq));
    lines.append(QStringLiteral("Reduced chi-square\t") + full(shown.quality.reducedChisq));
    lines.append(QStringLiteral("R-squared\t") + full(shown.quality.rSquared));
    lines.append(QStringLiteral("Iterations\t%1").arg(fit.iterations));
    lines.append(QStringLiteral("Points\t%1").arg(fit.points));
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace quarvex::ui
