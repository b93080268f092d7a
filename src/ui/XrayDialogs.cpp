// The text view, the reference table and the theoretical-pattern settings of the X-ray mode.
#include "ui/XrayDialogs.h"

#include "common/QuarvexError.h"
#include "specdata/SpecDataManager.h"
#include "ui/SpectrumDialogs.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace quarvex::ui {

namespace {

constexpr qint64 kLargestShownFile = 16 * 1024 * 1024; // bytes: beyond, the start is shown

QDialogButtonBox* closeButton(QDialog& dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

QDoubleSpinBox* field(QWidget* parent, double low, double high, int decimals, double step,
                      const QString& suffix, const QString& special = {}) {
    auto* box = new QDoubleSpinBox(parent);
    box->setRange(low, high);
    box->setDecimals(decimals);
    box->setSingleStep(step);
    box->setSuffix(suffix);
    box->setSpecialValueText(special);
    box->setMinimumWidth(130);
    return box;
}

QString number(double value, int decimals) {
    return QString::number(value, 'f', decimals);
}

} // namespace

TextViewDialog::TextViewDialog(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    view_ = new QPlainTextEdit(this);
    view_->setReadOnly(true);
    view_->setLineWrapMode(QPlainTextEdit::NoWrap);
    view_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view_->setPlainText(text);
    layout->addWidget(view_);
    layout->addWidget(closeButton(*this));
    resize(780, 560);
}

QString TextViewDialog::text() const {
    return view_->toPlainText();
}

QString readTextFile(const std::filesystem::path& path) {
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::ReadOnly)) {
        throw QuarvexError(std::string(kFileReadErrorText), std::string(kFileReadErrorTitle));
    }
    QString text = QString::fromUtf8(file.read(kLargestShownFile));
    if (!file.atEnd()) {
        text += QStringLiteral("\n[... the rest of the file is not shown]");
    }
    return text;
}

ReferenceTableDialog::ReferenceTableDialog(const DIFF_GLOBALS& diff, int reference, QWidget* parent)
    : QDialog(parent) {
    const auto r = static_cast<std::size_t>(reference);
    setWindowTitle(QStringLiteral("Reference %1").arg(QString::fromStdString(diff.NAME[r])));
    auto* layout = new QVBoxLayout(this);
    const std::array<float, 6>& cell = diff.CELL_PARAMS[r];
    QStringList waves;
    for (const double w : diff.WAVELENGTHS[r]) {
        if (w > 0.0) {
            waves.append(number(w, 6) + QStringLiteral(" Å"));
        }
    }
    QString header =
        QStringLiteral("<b>%1</b> &nbsp;%2<br>a %3, b %4, c %5 Å; α %6, β %7, γ %8°<br>"
                       "Space group %9; %10; wavelength %11; %12 reflections")
            .arg(QString::fromStdString(diff.TITLE[r]).toHtmlEscaped(),
                 QString::fromStdString(
                     (std::filesystem::path(diff.PATH[r]) / diff.NAME[r]).string())
                     .toHtmlEscaped())
            .arg(number(cell[0], 5), number(cell[1], 5), number(cell[2], 5), number(cell[3], 3),
                 number(cell[4], 3), number(cell[5], 3))
            .arg(diff.SPACE_GROUP[r].empty()
                     ? QStringLiteral("not given")
                     : QString::fromStdString(diff.SPACE_GROUP[r]).toHtmlEscaped(),
                 diff.SYM[r] == kSymUnknown
                     ? QStringLiteral("crystal system not known")
                     : QString::fromUtf8(
                           crystalSystemName(diff.SYM[r]).data(),
                           static_cast<qsizetype>(crystalSystemName(diff.SYM[r]).size())),
                 waves.isEmpty() ? QStringLiteral("not given") : waves.join(QStringLiteral(", ")))
            .arg(diff.NUMDATA[r]);
    for (const std::string& note : diff.NOTES[r]) {
        header += QStringLiteral("<br><i>%1</i>").arg(QString::fromStdString(note).toHtmlEscaped());
    }
    auto* heading = new QLabel(header, this);
    heading->setWordWrap(true);
    heading->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(heading);

    table_ = new QTreeWidget(this);
    const bool two = diff.MODE[r] == 2;
    QStringList labels{QStringLiteral("#"), QStringLiteral("2-theta"), QStringLiteral("Intensity"),
                       QStringLiteral("d / Å"), QStringLiteral("h k l")};
    if (two) {
        labels << QStringLiteral("2-theta (λ2)") << QStringLiteral("Intensity (λ2)");
    }
    table_->setHeaderLabels(labels);
    table_->setRootIsDecorated(false);
    table_->setUniformRowHeights(true);
    table_->setAlternatingRowColors(true);
    const auto twoTheta = diff.reflections(diff.TWO_THETA, reference);
    const auto intensity = diff.reflections(diff.INTENS, reference);
    const auto dSpacing = diff.reflections(diff.DSPACE, reference);
    const auto hkl = diff.reflections(diff.HKL, reference);
    for (std::size_t i = 0; i < twoTheta.size(); ++i) {
        QStringList row{QString::number(i + 1), number(twoTheta[i], 2), number(intensity[i], 2),
                        number(dSpacing[i], 4),
                        QStringLiteral("%1 %2 %3").arg(hkl[i][0]).arg(hkl[i][1]).arg(hkl[i][2])};
        if (two) {
            row << number(diff.reflections(diff.TWO_THETA2, reference)[i], 2)
                << number(diff.reflections(diff.INTENS2, reference)[i], 2);
        }
        auto* item = new QTreeWidgetItem(table_, row);
        for (int column = 0; column < row.size(); ++column) {
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    for (int column = 0; column < table_->columnCount(); ++column) {
        table_->resizeColumnToContents(column);
    }
    layout->addWidget(table_, 1);
    layout->addWidget(closeButton(*this));
    resize(620, 620);
}

TheoreticalPatternDialog::TheoreticalPatternDialog(const QString& referenceName,
                                                   const TheoreticalPatternSettings& settings,
                                                   QWidget* parent)
    : QDialog(parent), settings_(settings) {
    QFormLayout* form = makeForm(*this, QStringLiteral("Create Spectrum From DIF"),
                                 QStringLiteral("Theoretical pattern of %1").arg(referenceName));
    wavelength_ = field(this, 0.05, 5.0, 6, 0.001, QStringLiteral(" Å"));
    fwhm_ = field(this, 0.001, 5.0, 3, 0.01, QStringLiteral("°"));
    step_ = field(this, 0.001, 1.0, 3, 0.005, QStringLiteral("°"));
    from_ = field(this, 0.0, 179.0, 2, 1.0, QStringLiteral("°"), QStringLiteral("automatic"));
    to_ = field(this, 0.0, 179.99, 2, 1.0, QStringLiteral("°"), QStringLiteral("automatic"));
    zeroShift_ = field(this, -2.0, 2.0, 3, 0.01, QStringLiteral("°"));
    noise_ = field(this, 0.0, 1.0e9, 0, 1000.0, QStringLiteral(" counts"), QStringLiteral("none"));
    wavelength_->setValue(settings.wavelength);
    fwhm_->setValue(settings.fwhm);
    step_->setValue(settings.step);
    from_->setValue(settings.from.value_or(0.0));
    to_->setValue(settings.to.value_or(0.0));
    zeroShift_->setValue(settings.zeroShift);
    noise_->setValue(settings.noise.value_or(0.0));
    from_->setToolTip(QStringLiteral("Automatic: 2 degrees before the first reflection"));
    to_->setToolTip(QStringLiteral("Automatic: 2 degrees after the last reflection"));
    zeroShift_->setToolTip(QStringLiteral("Added to every peak position, as an instrument's zero "
                                          "error would shift it"));
    noise_->setToolTip(QStringLiteral("Counting noise: the strongest line gets this many counts "
                                      "over a background of 2% of them"));
    form->addRow(QStringLiteral("Wavelength:"), wavelength_);
    form->addRow(QStringLiteral("FWHM of every peak:"), fwhm_);
    form->addRow(QStringLiteral("Step:"), step_);
    form->addRow(QStringLiteral("From 2-theta:"), from_);
    form->addRow(QStringLiteral("To 2-theta:"), to_);
    form->addRow(QStringLiteral("Zero shift:"), zeroShift_);
    form->addRow(QStringLiteral("Strongest line:"), noise_);
}

TheoreticalPatternSettings TheoreticalPatternDialog::settings() const {
    TheoreticalPatternSettings s = settings_;
    s.wavelength = wavelength_->value();
    s.fwhm = fwhm_->value();
    s.step = step_->value();
    const auto optional = [](const QDoubleSpinBox* box) {
        return box->value() > box->minimum() ? std::optional<double>(box->value()) : std::nullopt;
    };
    s.from = optional(from_);
    s.to = optional(to_);
    s.zeroShift = zeroShift_->value();
    s.noise = optional(noise_);
    return s;
}

} // namespace quarvex::ui
