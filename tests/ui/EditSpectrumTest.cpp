// The Edit Spectrum mode on the calcite example (bands near 155, 282, 712 and 1086 cm-1).
#include "EditSpectrumTest.h"

#include "UiTestSupport.h"

#include "ui/Commands.h"
#include "ui/EditSpectrumDock.h"
#include "ui/FitTable.h"
#include "ui/SpectrumView.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <cmath>

namespace quarvex::test {

namespace {

constexpr const char* kCalcite = "calcite_bwtek_785nm_icv.txt";

// The calcite example loaded, the window around its main band selected, the mode open.
struct BandFixture : WindowFixture {
    BandFixture() {
        open({kCalcite});
        window->view()->setSelectedRange(ui::XRange{1040.0, 1130.0});
        window->dispatch(ui::kCmdEditSpectrumMode);
    }
    ui::EditSpectrumDock& dock() { return *window->editSpectrum(); }
};

// The value of the row `name` of the copied fit table.
double tableValue(const QString& table, const QString& name) {
    for (const QString& line : table.split(QLatin1Char('\n'))) {
        const QStringList cells = line.split(QLatin1Char('\t'));
        if (cells.size() == 2 && cells[0] == name) {
            return cells[1].toDouble();
        }
    }
    return std::nan("");
}

} // namespace

void EditSpectrumTest::findPeaksMarksTheCalciteBands() {
    BandFixture fixture;
    fixture.window->view()->setSelectedRange(ui::XRange{120.0, 1200.0});
    fixture.window->dispatch(ui::kCmdFindPeaks);
    const std::vector<float>& found = fixture.window->view()->peakMarks().found;
    for (const float band : {155.0F, 282.0F, 712.0F, 1086.0F}) {
        const bool marked = std::any_of(found.begin(), found.end(),
                                        [band](float x) { return std::abs(x - band) < 3.0F; });
        QVERIFY2(marked, qPrintable(QString::number(band)));
    }
    QCOMPARE(fixture.dock().peakTable()->topLevelItemCount(), static_cast<int>(found.size()));
}

void EditSpectrumTest::fittingTheMainBandFillsTheTable() {
    BandFixture fixture;
    QCOMPARE(fixture.window->dispatch(ui::kCmdCopyFitTable), ui::DispatchResult::Greyed);
    QCOMPARE(fixture.window->dispatch(ui::kCmdFitPeaks), ui::DispatchResult::Done);
    QVERIFY(fixture.interaction->errors.empty());
    const auto& fit = fixture.dock().lastFit();
    QVERIFY(fit.has_value());
    QCOMPARE(fit->peaks.size(), std::size_t{1});
    QVERIFY(std::abs(fit->peaks[0].centre - 1086.0F) < 1.5F);
    QVERIFY(fit->peaks[0].centreError > 0.0F && fit->peaks[0].centreError < 0.5F);
    QCOMPARE(fixture.dock().fitTable()->topLevelItemCount(), 1);
    QCOMPARE(fixture.dock().fitTable()->topLevelItem(0)->text(1),
             ui::valueWithError(fit->peaks[0].centre, fit->peaks[0].centreError));

    // Drawn: the curve over the window, and the residual (data minus fit) in its strip.
    const ui::SpectrumView& view = *fixture.window->view();
    QVERIFY(view.fitOverlay().has_value());
    QVERIFY(view.residualRect() != nullptr);
    const ui::FitOverlay& overlay = *view.fitOverlay();
    QCOMPARE(overlay.x.size(), overlay.measured.size());
    QCOMPARE(overlay.x.front(), fit->x.front());
    QVERIFY(overlay.x.front() >= 1040.0F && overlay.x.back() <= 1130.0F);
    QVERIFY2(view.xAxis->range().lower > 900.0, "the view shows the fitted window");

    fixture.dock().close();
    QVERIFY(!view.fitOverlay().has_value());
    QVERIFY(view.residualRect() == nullptr);
}

void EditSpectrumTest::copyGivesTheTableAsText() {
    QCOMPARE(ui::valueWithError(1086.0743F, 0.02534F), QStringLiteral("1086.074 ± 0.025"));
    QCOMPARE(ui::valueWithError(300088.0F, 6343.0F), QStringLiteral("300100 ± 6300"));

    BandFixture fixture;
    fixture.window->dispatch(ui::kCmdFitPeaks);
    QCOMPARE(fixture.window->dispatch(ui::kCmdCopyFitTable), ui::DispatchResult::Done);
    const QString copied = QGuiApplication::clipboard()->text();
    QCOMPARE(copied, fixture.dock().tableText());
    const QStringList lines = copied.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines[0], QStringLiteral("Spectrum\t") + QString::fromUtf8(kCalcite));
    QCOMPARE(lines[3].split(QLatin1Char('\t')).size(), 11); // peak, 5 values with their errors
    const QStringList peak = lines[4].split(QLatin1Char('\t'));
    QCOMPARE(peak[0], QStringLiteral("1"));
    QCOMPARE(peak[1].toFloat(), fixture.dock().lastFit()->peaks[0].centre);
    QVERIFY(lines[5].startsWith(QStringLiteral("Background\t")));
}

void EditSpectrumTest::clicksPlaceStartingPeaks() {
    BandFixture fixture;
    ui::SpectrumView* view = fixture.window->view();
    view->zoomTo(ui::XRange{1040.0, 1130.0});
    const auto buttons = fixture.dock().findChildren<QPushButton*>();
    const auto place = std::find_if(buttons.begin(), buttons.end(), [](QPushButton* button) {
        return button->text() == QStringLiteral("Place Peaks");
    });
    QVERIFY(place != buttons.end());
    (*place)->click();
    QVERIFY(view->peakPlacingMode());
    // A click two points beside the top means the top.
    const QPoint beside(static_cast<int>(view->xAxis->coordToPixel(1084.5)),
                        view->axisRect()->rect().center().y());
    QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, beside);
    QCOMPARE(fixture.dock().placedPeaks().size(), std::size_t{1});
    const float placed = fixture.dock().placedPeaks()[0];
    QVERIFY2(std::abs(placed - 1086.0F) < 1.5F, qPrintable(QString::number(placed)));
    QCOMPARE(view->peakMarks().placed, fixture.dock().placedPeaks());
    fixture.window->dispatch(ui::kCmdFitPeaks);
    QCOMPARE(fixture.dock().lastFit()->peaks.size(), std::size_t{1});
    fixture.dock().clearPeaks();
    QVERIFY(view->peakMarks().placed.empty());
}

void EditSpectrumTest::nonConvergenceShowsItsMessage() {
    BandFixture fixture;
    fixture.dock().setIterationLimit(2); // far too few from a start 6 cm-1 off the band
    fixture.dock().placePeak(1080.0);
    fixture.window->dispatch(ui::kCmdFitPeaks);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].text,
             QStringLiteral("Did not converge. Resize window and try again."));
    QCOMPARE(fixture.interaction->errors[0].title, QStringLiteral("Error"));
    QVERIFY(!fixture.dock().lastFit().has_value());
    QVERIFY(!fixture.window->view()->fitOverlay().has_value());
}

// Ticked, the straight line through the window's end regions lies under the fit: it is the
// least-squares line of those points (their residuals from it and the residuals times x both
// sum to zero), drawn under the peaks, and reported with the fit's reduced chi-square and R²,
// which the test works out from the drawn data and curve.
void EditSpectrumTest::linearBackgroundIsTakenOffAndReported() {
    BandFixture fixture;
    QCheckBox* box = nullptr;
    for (QCheckBox* candidate : fixture.dock().findChildren<QCheckBox*>()) {
        if (candidate->text() == QStringLiteral("Linear background")) {
            box = candidate;
        }
    }
    QVERIFY(box != nullptr);
    QVERIFY(!box->isChecked());
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    QVERIFY(box->isChecked());
    QCOMPARE(fixture.window->dispatch(ui::kCmdFitPeaks), ui::DispatchResult::Done);
    QVERIFY(fixture.interaction->errors.empty());
    const auto& line = fixture.dock().lastLine();
    QVERIFY(line.has_value());

    const ui::FitOverlay& overlay = *fixture.window->view()->fitOverlay();
    const std::size_t n = overlay.x.size();
    QCOMPARE(overlay.line.size(), n);
    const std::size_t region = std::max<std::size_t>(3, std::lround(0.1 * static_cast<double>(n)));
    double sum = 0.0;
    double moment = 0.0;
    double scale = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        QVERIFY(std::abs(overlay.line[i] - (line->slope * overlay.x[i] + line->intercept)) <
                1e-6 * std::abs(overlay.line[i]) + 1e-3);
        if (i < region || i >= n - region) {
            const double residual = overlay.measured[i] - line->at(overlay.x[i]);
            sum += residual;
            moment += residual * (overlay.x[i] - overlay.x.front());
            scale += std::abs(overlay.measured[i]);
        }
    }
    // Float data summed in double: zero to a millionth of the values' size.
    QVERIFY2(std::abs(sum) < 1e-6 * scale, qPrintable(QString::number(sum)));
    QVERIFY2(std::abs(moment) < 1e-6 * scale * (overlay.x.back() - overlay.x.front()),
             qPrintable(QString::number(moment)));

    double mean = 0.0;
    for (const float y : overlay.measured) {
        mean += y;
    }
    mean /= static_cast<double>(n);
    double residualSum = 0.0;
    double totalSum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        residualSum += std::pow(static_cast<double>(overlay.measured[i]) - overlay.fitted[i], 2);
        totalSum += std::pow(overlay.measured[i] - mean, 2);
    }
    const std::size_t parameters = fixture.dock().lastFit()->parameters.size() + 2;
    const QString table = fixture.dock().tableText();
    QVERIFY(std::abs(tableValue(table, QStringLiteral("Reduced chi-square")) -
                     residualSum / static_cast<double>(n - parameters)) < 1e-8 * residualSum);
    QVERIFY(std::abs(tableValue(table, QStringLiteral("R-squared")) -
                     (1.0 - residualSum / totalSum)) < 1e-8);
    // Copied to 10 significant digits.
    QVERIFY(std::abs(tableValue(table, QStringLiteral("Background slope")) - line->slope) <=
            1e-9 * std::abs(line->slope));

    // Cleared: the next fit has the constant background only.
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    fixture.window->dispatch(ui::kCmdFitPeaks);
    QVERIFY(!fixture.dock().lastLine().has_value());
    QVERIFY(fixture.window->view()->fitOverlay()->line.empty());
    QVERIFY(!fixture.dock().tableText().contains(QStringLiteral("Background slope")));
    QVERIFY(std::isfinite(tableValue(fixture.dock().tableText(), QStringLiteral("R-squared"))));
}

} // namespace quarvex::test
