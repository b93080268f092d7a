// The spectrum the modes work on, and the points of a selected x-range.
#include "ui/ModeContext.h"

#include <QLabel>

#include <algorithm>

namespace quarvex::ui {

int activeSpectrum(const SPECDATA_GLOBALS& specdata) {
    for (int k = 0; k < specdata.count(); ++k) {
        if (specdata.ACTIVE[static_cast<std::size_t>(k)]) {
            return k;
        }
    }
    return specdata.count() - 1;
}

QString spectrumCaption(const SPECDATA_GLOBALS& specdata, int spectrum) {
    const auto k = static_cast<std::size_t>(spectrum);
    return QStringLiteral("<b>%1</b>&nbsp; %2 points")
        .arg(QString::fromStdString(specdata.NAME[k]).toHtmlEscaped())
        .arg(specdata.NUMDATA[k]);
}

QLabel* noteLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

PeakFitSettings peakFitSettings(const Preferences& preferences) {
    PeakFitSettings settings;
    settings.profile =
        preferences.profileSetting == 1 ? PeakProfile::gaussian : PeakProfile::pseudoVoigt;
    settings.search = {preferences.noiseSegments, static_cast<float>(preferences.peakThreshold),
                       preferences.peakSmoothingPoints, preferences.peakMinSeparation};
    return settings;
}

PointRun pointsWithin(std::span<const float> x, double low, double high) {
    const auto first =
        std::lower_bound(x.begin(), x.end(), low, [](float a, double b) { return a < b; });
    const auto last =
        std::upper_bound(first, x.end(), high, [](double a, float b) { return a < b; });
    return {static_cast<std::size_t>(first - x.begin()), static_cast<std::size_t>(last - first)};
}

} // namespace quarvex::ui
