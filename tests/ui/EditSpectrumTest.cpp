// The Edit Spectrum mode on the calcite example (bands near 155, 282, 712 and 1086 cm-1).
#include "EditSpectrumTest.h"

#include "UiTestSupport.h"

#include "ui/Commands.h"
#include "ui/EditSpectrumDock.h"
#include "ui/FitTable.h"
#include "ui/SpectrumView.h"

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

} // namespace quarvex::test
