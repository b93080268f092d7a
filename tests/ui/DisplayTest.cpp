// What the user sees agrees with the data: the views, docks and status bar after real use.
#include "DisplayTest.h"

#include "UiTestSupport.h"

#include "specdata/SpecDataArrange.h"
#include "ui/Commands.h"
#include "ui/CsvExport.h"
#include "ui/EditSpectrumDock.h"
#include "ui/FileManagerDock.h"
#include "ui/HelpWindow.h"
#include "ui/PreferencesDialog.h"
#include "ui/RamanSearchDock.h"
#include "ui/SpectrumView.h"
#include "ui/TextViewer.h"
#include "ui/XrayDiffractionDock.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <map>

namespace quarvex::test {

namespace {

constexpr const char* kCalcite = "calcite_bwtek_785nm_icv.txt";
constexpr const char* kAnatase = "anatase_in_matrix_bwtek_785nm_icv.txt";
constexpr int kMineralColumn = 2;

QPushButton* buttonNamed(QWidget& parent, const QString& text) {
    for (QPushButton* button : parent.findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

// The first label of `parent` whose text starts with `start`; null when none does.
const QLabel* labelStartingWith(const QWidget& parent, const QString& start) {
    for (const QLabel* label : parent.findChildren<QLabel*>()) {
        if (label->text().startsWith(start)) {
            return label;
        }
    }
    return nullptr;
}

QPoint plotCentre(const ui::SpectrumView& view) {
    return view.axisRect()->rect().center();
}

} // namespace

// Overlay, details and list describe the last search of the spectrum searched, also when the
// best match of the new search sits in the row selected before.
void DisplayTest::searchResultsDescribeOneSearchOfOneSpectrum() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({kCalcite, kAnatase});
    ui::MainWndProc& window = *fixture.window;
    window.setTargetSpectrum(0);
    window.dispatch(ui::kCmdMakePrimary);
    window.setTargetSpectrum(-1);
    window.dispatch(ui::kCmdSearchLibrary);
    ui::RamanSearchDock& dock = *window.ramanSearch();
    QTreeWidget& results = *dock.results();
    QCOMPARE(results.topLevelItem(0)->text(kMineralColumn), QStringLiteral("Calcite"));

    window.setTargetSpectrum(1);
    window.dispatch(ui::kCmdMakePrimary);
    window.setTargetSpectrum(-1);
    QCOMPARE(results.topLevelItemCount(), 0); // no calcite results under the anatase's name
    QVERIFY(!window.view()->referenceOverlay().has_value());

    QPushButton* search = buttonNamed(dock, QStringLiteral("Search"));
    QVERIFY(search != nullptr);
    QTest::mouseClick(search, Qt::LeftButton);
    const QString best = results.topLevelItem(0)->text(kMineralColumn);
    QCOMPARE(best, QStringLiteral("Anatase"));
    QCOMPARE(results.currentItem(), results.topLevelItem(0));
    const auto& overlay = window.view()->referenceOverlay();
    QVERIFY(overlay.has_value());
    QCOMPARE(overlay->spectrum, 1);
    QVERIFY2(overlay->legend.startsWith(best), qPrintable(overlay->legend));
    QVERIFY(labelStartingWith(dock, QStringLiteral("<b>%1</b>").arg(best)) != nullptr);
}

// The right button opens a pop-up menu, which takes the button's release: no zoom box may stay
// attached to the mouse afterwards.
void DisplayTest::popupMenuLeavesNoZoomBox() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    ui::SpectrumView& view = *fixture.window->view();
    const QPoint centre = plotCentre(view);
    QTest::mousePress(&view, Qt::RightButton, Qt::NoModifier, centre);
    QTest::mouseMove(&view, centre + QPoint(80, 40));
    QVERIFY(!view.selectionRect()->isActive());

    // Escape gives up a zoom box being dragged.
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, centre);
    QTest::mouseMove(&view, centre + QPoint(60, 30));
    QVERIFY(view.selectionRect()->isActive());
    QTest::keyClick(&view, Qt::Key_Escape);
    QVERIFY(!view.selectionRect()->isActive());
}

void DisplayTest::fileManagerHeadersMatchTheirCells() {
    WindowFixture fixture;
    const auto file = fixture.home.write("known.txt", "##NAMES=Quartz\n"
                                                      "##LOCALITY=Lake Toxaway\n"
                                                      "##GRELTID=R040031\n"
                                                      "##CHEMISTRY=SiO2\n"
                                                      "<COM>\ndtype: XRD\n</COM>\n"
                                                      "20 1\n21 5\n22 2\n");
    fixture.window->openFiles({QString::fromStdString(file.string())});
    const QAbstractItemModel& model = *fixture.window->fileManager()->table()->model();
    const std::map<QString, QString> expected = {{"#", "1"},
                                                 {"Name", "known.txt"},
                                                 {"Mineral", "Quartz"},
                                                 {"Chemistry", "SiO2"},
                                                 {"Locality", "Lake Toxaway"},
                                                 {"ID", "R040031"},
                                                 {"Type", "XRD"},
                                                 {"Points", "3"}};
    QCOMPARE(model.columnCount(), static_cast<int>(expected.size()));
    for (int column = 0; column < model.columnCount(); ++column) {
        const QString header = model.headerData(column, Qt::Horizontal).toString();
        QVERIFY2(expected.count(header) == 1, qPrintable(header));
        QCOMPARE(model.index(0, column).data().toString(), expected.at(header));
    }
}

void DisplayTest::skippedLinesAreToldInTheStatusBar() {
    WindowFixture fixture;
    const auto file =
        fixture.home.write("letters.txt", "##NAMES=Quartz\n100 2\n12x3 5\n101 3\nO3 7\n102 4\n");
    fixture.window->openFiles({QString::fromStdString(file.string())});
    QCOMPARE(fixture.state.specdata.NUMDATA[0], 3);
    QCOMPARE(fixture.window->statusBar()->currentMessage(),
             QStringLiteral("letters.txt: 2 lines skipped (not two numbers), first at line 3"));
}

// The File Manager's selection is not the primary spectrum: the title stays with the primary.
void DisplayTest::titleFollowsThePrimarySpectrum() {
    WindowFixture fixture;
    fixture.open({kCalcite, kAnatase});
    const QString anatase = QStringLiteral("%1 - Quarvex").arg(QString::fromUtf8(kAnatase));
    QCOMPARE(fixture.window->windowTitle(), anatase);
    fixture.window->dispatch(ui::kCmdFileManager);
    ui::FileManagerDock& manager = *fixture.window->fileManager();
    manager.selectSpectrum(0);
    QPushButton* invisible = buttonNamed(manager, QStringLiteral("Make Invisible"));
    QPushButton* primary = buttonNamed(manager, QStringLiteral("Make Primary"));
    QVERIFY(invisible != nullptr && primary != nullptr);
    QTest::mouseClick(invisible, Qt::LeftButton);
    QVERIFY(!fixture.state.specdata.VISIBLE[0]);
    QCOMPARE(fixture.window->windowTitle(), anatase);
    QTest::mouseClick(primary, Qt::LeftButton);
    QCOMPARE(fixture.window->windowTitle(),
             QStringLiteral("%1 - Quarvex").arg(QString::fromUtf8(kCalcite)));
}

// A From above To is neither swapped nor clamped behind the user's back.
void DisplayTest::reversedBoundsAreToldNotSwapped() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    fixture.window->dispatch(ui::kCmdRamanSearchMode);
    ui::SpectrumView& view = *fixture.window->view();
    view.setSelectedRange(ui::XRange{300.0, 900.0});
    ui::RamanSearchDock& dock = *fixture.window->ramanSearch();
    const auto fields = dock.findChildren<QDoubleSpinBox*>(); // From, then To
    QCOMPARE(fields.size(), 2);
    QDoubleSpinBox* from = fields[0];
    from->setFocus();
    from->selectAll();
    QTest::keyClicks(from, QStringLiteral("1000"));
    QTest::keyClick(from, Qt::Key_Return);
    QCOMPARE(view.selectedRange()->start, 300.0);
    QCOMPARE(view.selectedRange()->end, 900.0);
    QVERIFY(labelStartingWith(dock, QStringLiteral("From 1000.0 is not below To 900.0")) !=
            nullptr);
}

// Opening a mode switches Select Range on, so the hints speak of a plain drag.
void DisplayTest::hintsOfferThePlainDrag() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    for (const int mode : {ui::kCmdRamanSearchMode, ui::kCmdEditSpectrumMode}) {
        fixture.window->dispatch(mode);
        fixture.window->view()->setSelectedRange(std::nullopt);
        QVERIFY(fixture.window->view()->rangeSelectionMode());
        for (const QLabel* label : fixture.window->findChildren<QLabel*>()) {
            QVERIFY2(!label->text().contains(QStringLiteral("Shift+drag")),
                     qPrintable(label->text()));
        }
        fixture.window->view()->setSelectedRange(ui::XRange{300.0, 900.0});
        for (const QLabel* label : fixture.window->findChildren<QLabel*>()) {
            QVERIFY2(!label->text().contains(QStringLiteral("Shift+drag")),
                     qPrintable(label->text()));
        }
    }
}

void DisplayTest::oneFoundPeakIsOnePeak() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    fixture.window->view()->setSelectedRange(ui::XRange{1040.0, 1130.0});
    fixture.window->dispatch(ui::kCmdFindPeaks);
    QCOMPARE(fixture.window->view()->peakMarks().found.size(), std::size_t{1});
    bool told = false;
    for (const QLabel* label : fixture.window->editSpectrum()->findChildren<QLabel*>()) {
        QVERIFY2(!label->text().contains(QStringLiteral("1 peaks")), qPrintable(label->text()));
        told = told || label->text().startsWith(QStringLiteral("1 peak between"));
    }
    QVERIFY(told);
}

// After opening through the tool bar, the arrow keys move the cross-hair without a click on
// the view first, wherever the keyboard focus was before.
void DisplayTest::arrowKeysMoveTheCrosshairAfterOpening() {
    WindowFixture fixture;
    fixture.window->dispatch(ui::kCmdFileManager);
    fixture.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(fixture.window.get()));
    fixture.window->fileManager()->table()->setFocus();
    fixture.interaction->filesToOpen = {QString::fromStdString(
        sourcePath(std::string("data/raman/examples/") + kCalcite).string())};
    fixture.window->actionsFor(ui::kCmdOpen).front()->trigger();
    const int point = fixture.window->view()->crosshairPoint();
    QVERIFY(point > 0);
    QWidget* focus = QApplication::focusWidget();
    QVERIFY(focus != nullptr);
    QTest::keyClick(focus, Qt::Key_Right);
    QCOMPARE(fixture.window->view()->crosshairPoint(), point + 1);
}

// Middle-drag pans, but never past the ends of the data.
void DisplayTest::panningStopsAtTheData() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    ui::SpectrumView& view = *fixture.window->view();
    const auto x = fixture.state.specdata.xValues(0);
    const double first = x.front();
    const double last = x.back();
    view.zoomTo(ui::XRange{200.0, 400.0});
    const QPoint centre = plotCentre(view);
    QTest::mousePress(&view, Qt::MiddleButton, Qt::NoModifier, centre);
    QTest::mouseMove(&view, centre + QPoint(view.axisRect()->width() * 3, 0));
    QTest::mouseRelease(&view, Qt::MiddleButton, Qt::NoModifier,
                        centre + QPoint(view.axisRect()->width() * 3, 0));
    QVERIFY2(view.xAxis->range().lower >= first - 1e-6,
             qPrintable(QString::number(view.xAxis->range().lower)));
    QTest::mousePress(&view, Qt::MiddleButton, Qt::NoModifier, centre);
    QTest::mouseMove(&view, centre - QPoint(view.axisRect()->width() * 3, 0));
    QTest::mouseRelease(&view, Qt::MiddleButton, Qt::NoModifier,
                        centre - QPoint(view.axisRect()->width() * 3, 0));
    QVERIFY2(view.xAxis->range().upper <= last + 1e-6,
             qPrintable(QString::number(view.xAxis->range().upper)));
    QVERIFY(view.xAxis->range().size() > 100.0); // it did pan, it did not squeeze
}

void DisplayTest::peakLabelsNeitherCollideNorLeaveThePlot() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    ui::SpectrumView& view = *fixture.window->view();
    view.setSelectedRange(ui::XRange{120.0, 1800.0});
    fixture.window->dispatch(ui::kCmdFindPeaks);
    view.ZOOM_OUT();
    const std::vector<QRectF> labels = peakLabelRects(view);
    QVERIFY(labels.size() >= 4);
    const QRectF plot = view.axisRect()->rect();
    for (std::size_t i = 0; i < labels.size(); ++i) {
        QVERIFY(labels[i].left() >= plot.left() - 0.5 && labels[i].right() <= plot.right() + 0.5);
        for (std::size_t j = 0; j < i; ++j) {
            QVERIFY2(!labels[i].intersects(labels[j]), qPrintable(QString::number(i)));
        }
    }
}

// From number 7 on the colours are drawn at random, yet every curve can be told apart.
void DisplayTest::laterSpectraHaveDistinctColours() {
    WindowFixture fixture;
    fixture.open({kCalcite, kCalcite, kCalcite, kCalcite, kCalcite, kCalcite, kCalcite, kCalcite,
                  kCalcite, kCalcite});
    const ui::SpectrumView& view = *fixture.window->view();
    QCOMPARE(view.graphCount(), 10);
    for (int a = 0; a < view.graphCount(); ++a) {
        for (int b = 0; b < a; ++b) {
            const QColor first = view.graph(a)->pen().color();
            const QColor second = view.graph(b)->pen().color();
            const double distance =
                std::hypot(first.redF() - second.redF(), first.greenF() - second.greenF(),
                           first.blueF() - second.blueF());
            QVERIFY2(distance >= 0.2, qPrintable(QStringLiteral("%1 %2").arg(a).arg(b)));
        }
    }
}

// Print... to a PDF: the names of the legend are there as text, and no word is taller than 3%
// of the page (the text once ran off the page).
void DisplayTest::printedPageLooksLikeTheScreen() {
    if (runProgram("command -v pdftotext").status != 0) {
        QSKIP("pdftotext (poppler-utils) is not installed");
    }
    WindowFixture fixture;
    fixture.open({kCalcite, kAnatase});
    const std::filesystem::path pdf = fixture.home.path() / "page.pdf";
    fixture.interaction->onDialog = [&pdf](QDialog& dialog) {
        QPrinter* printer = static_cast<QPrintDialog&>(dialog).printer();
        printer->setOutputFormat(QPrinter::PdfFormat);
        printer->setOutputFileName(QString::fromStdString(pdf.string()));
        return static_cast<int>(QDialog::Accepted);
    };
    QCOMPARE(fixture.window->dispatch(ui::kCmdPrint), ui::DispatchResult::Done);
    const ProgramRun text = runProgram("pdftotext -layout '" + pdf.string() + "' -");
    QCOMPARE(text.status, 0);
    for (const char* wanted : {"Raman shift / cm-1", kCalcite, kAnatase}) {
        QVERIFY2(text.out.find(wanted) != std::string::npos, wanted);
    }
    const ProgramRun boxes = runProgram("pdftotext -bbox '" + pdf.string() + "' -");
    const QString html = QString::fromStdString(boxes.out);
    const QRegularExpression pageHeight(
        QStringLiteral(R"re(<page width="[0-9.]+" height="([0-9.]+)")re"));
    const double height = pageHeight.match(html).captured(1).toDouble();
    QVERIFY(height > 0.0);
    // A word's size is its extent across the line: the width of a word written upwards.
    const QRegularExpression word(QStringLiteral(
        R"re(xMin="([0-9.]+)" yMin="([0-9.]+)" xMax="([0-9.]+)" yMax="([0-9.]+)")re"));
    int words = 0;
    for (auto match = word.globalMatch(html); match.hasNext(); ++words) {
        const auto box = match.next();
        const double wide = box.captured(3).toDouble() - box.captured(1).toDouble();
        const double tall = box.captured(4).toDouble() - box.captured(2).toDouble();
        QVERIFY2(std::min(wide, tall) <= 0.03 * height, qPrintable(box.captured(0)));
    }
    QVERIFY(words > 10);
}

void DisplayTest::helpShowsInsideTheProgram() {
    WindowFixture fixture;
    fixture.interaction->openSucceeds = false; // a machine without a browser
    fixture.window->actionsFor(ui::kCmdHelpContents).front()->trigger();
    QVERIFY(fixture.interaction->errors.empty());
    ui::HelpWindow* help = fixture.window->helpWindow();
    QVERIFY(help != nullptr && help->isVisible());
    QVERIFY(help->browser()->toPlainText().startsWith(QStringLiteral("The desktop program")));
    // A word of another page: the search box goes there.
    QTest::keyClicks(help->searchField(), QStringLiteral("Levenberg"));
    QTest::keyClick(help->searchField(), Qt::Key_Return);
    QVERIFY2(!help->browser()->source().toLocalFile().endsWith(QStringLiteral("desktop.html")),
             qPrintable(help->browser()->source().toString()));
    QCOMPARE(help->browser()->textCursor().selectedText(), QStringLiteral("Levenberg"));
    // A click on a link of the guide opens the linked page.
    fixture.window->dispatch(ui::kCmdHelpContents);
    QTextBrowser& browser = *help->browser();
    const QTextCursor link = browser.document()->find(QStringLiteral("preferences.md"));
    QVERIFY(!link.isNull());
    QTextCursor inside(browser.document());
    inside.setPosition(link.selectionStart() + 3);
    browser.setTextCursor(inside);
    browser.ensureCursorVisible();
    const QPoint at = browser.cursorRect(inside).center() + QPoint(2, 0);
    QTest::mouseClick(browser.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QVERIFY2(browser.source().toLocalFile().endsWith(QStringLiteral("preferences.html")),
             qPrintable(browser.source().toString()));
    QVERIFY(fixture.interaction->openedUrls.empty());
}

void DisplayTest::reportViewerFindsCopiesAndSaves() {
    WindowFixture fixture;
    const auto report = fixture.home.write("Refine.out", "REFINED CELL\na = 4.9134\nMACHINE "
                                                         "ERROR 0.01\n");
    ui::TextViewer* viewer = ui::showTextFile(
        fixture.window.get(), report, QStringLiteral("Refinement Report"), fixture.interaction);
    QVERIFY(viewer->isVisible());
    QTest::keyClicks(viewer->findField(), QStringLiteral("machine"));
    QTest::keyClick(viewer->findField(), Qt::Key_Return);
    QCOMPARE(viewer->textEdit()->textCursor().selectedText(), QStringLiteral("MACHINE"));
    QPushButton* copy = buttonNamed(*viewer, QStringLiteral("Copy"));
    QPushButton* save = buttonNamed(*viewer, QStringLiteral("Save As..."));
    QVERIFY(copy != nullptr && save != nullptr);
    QTest::mouseClick(copy, Qt::LeftButton);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("MACHINE"));
    fixture.interaction->saveName =
        QString::fromStdString((fixture.home.path() / "copy.txt").string());
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(readFile(fixture.home.path() / "copy.txt"), readFile(report));
    QVERIFY(fixture.interaction->errors.empty());
}

// The guide says Open Project... is always there: the X-ray mode opens with nothing loaded.
void DisplayTest::openProjectIsReachableWithNothingLoaded() {
    WindowFixture fixture;
    QAction* mode = fixture.window->actionsFor(ui::kCmdXrayMode).front();
    fixture.window->SETUP_ANDADJUST_MENUS();
    QVERIFY(mode->isEnabled());
    mode->trigger();
    ui::XrayDiffractionDock& dock = *fixture.window->xrayDiffraction();
    QVERIFY(dock.isVisible());
    QPushButton* project = buttonNamed(dock, QStringLiteral("Project"));
    QVERIFY(project != nullptr && project->isVisible() && project->isEnabled());
    emit project->menu()->aboutToShow();
    const QList<QAction*> items = project->menu()->actions();
    const auto open = std::find_if(items.begin(), items.end(), [](const QAction* item) {
        return item->text() == QStringLiteral("Open Project...");
    });
    QVERIFY(open != items.end() && (*open)->isEnabled());
}

// A diffraction pattern is never drawn on one x axis with a Raman spectrum: the view shows
// the primary spectrum's type and says how many of the other type it hides.
void DisplayTest::spectraOfAnotherTypeAreHiddenAndCounted() {
    WindowFixture fixture;
    fixture.open({kCalcite});
    const auto pattern =
        fixture.home.write("pattern.txt", "<COM>\ndtype: XRD\n</COM>\n20 1\n21 5\n22 2\n");
    fixture.window->openFiles({QString::fromStdString(pattern.string())});
    const ui::SpectrumView& view = *fixture.window->view();
    QCOMPARE(view.drawnSpectra(), std::vector<int>{1});
    QCOMPARE(view.hiddenOfOtherType(), 1);
    QCOMPARE(view.xAxis->label(), QStringLiteral("2-theta / deg"));
    QVERIFY(view.xAxis->range().upper < 100.0);
    fixture.window->setTargetSpectrum(0);
    fixture.window->dispatch(ui::kCmdMakePrimary);
    QCOMPARE(view.drawnSpectra(), std::vector<int>{0});
    QCOMPARE(view.xAxis->label(), QStringLiteral("Raman shift / cm-1"));
}

void DisplayTest::rankingAndFitTableExportAsCsv() {
    QCOMPARE(ui::csvField(QStringLiteral("Ca(Mg,Fe)")), QStringLiteral("\"Ca(Mg,Fe)\""));
    QCOMPARE(ui::csvField(QStringLiteral("say \"hi\"")), QStringLiteral("\"say \"\"hi\"\"\""));
    QCOMPARE(ui::csvFromTabs(QStringLiteral("a\tb,c\n1\t2\n")), QStringLiteral("a,\"b,c\"\n1,2\n"));

    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({kCalcite});
    fixture.window->dispatch(ui::kCmdSearchLibrary);
    const std::filesystem::path ranking = fixture.home.path() / "ranking.csv";
    fixture.interaction->saveName = QString::fromStdString(ranking.string());
    QPushButton* exportRanking =
        buttonNamed(*fixture.window->ramanSearch(), QStringLiteral("Export CSV..."));
    QVERIFY(exportRanking != nullptr);
    QTest::mouseClick(exportRanking, Qt::LeftButton);
    const QStringList rows = QString::fromStdString(readFile(ranking)).split(QLatin1Char('\n'));
    QCOMPARE(rows[0], QStringLiteral("rank,score,mineral,id,laser,chemistry,locality,file"));
    QVERIFY2(rows[1].startsWith(QStringLiteral("1,96.00,Calcite,")), qPrintable(rows[1]));
    QCOMPARE(rows.size(), fixture.state.library.count() + 2); // header, entries, final newline

    fixture.window->view()->setSelectedRange(ui::XRange{1040.0, 1130.0});
    fixture.window->dispatch(ui::kCmdFitPeaks);
    const std::filesystem::path table = fixture.home.path() / "fit.csv";
    fixture.interaction->saveName = QString::fromStdString(table.string());
    QPushButton* exportTable =
        buttonNamed(*fixture.window->editSpectrum(), QStringLiteral("Export CSV..."));
    QVERIFY(exportTable != nullptr);
    QTest::mouseClick(exportTable, Qt::LeftButton);
    const QString csv = QString::fromStdString(readFile(table));
    QVERIFY2(csv.startsWith(QStringLiteral("Spectrum,%1\n").arg(QString::fromUtf8(kCalcite))),
             qPrintable(csv));
    QVERIFY(!csv.contains(QLatin1Char('\t')));
    QVERIFY(fixture.interaction->errors.empty());
}

// Ticked in the Preferences dialog, the y axis carries numbers: the primary spectrum's own
// intensities, each at the height where the view draws that intensity. The choice is kept in a
// file of its own, and QV.ini keeps its fixed set of values. Unticked, as before: no numbers.
void DisplayTest::intensityNumbersAreAPreference() {
    WindowFixture fixture;
    fixture.open({kCalcite, kAnatase});
    ui::SpectrumView& view = *fixture.window->view();
    QVERIFY(!view.yAxis->tickLabels());
    QVERIFY(!view.yAxis->ticks());

    const auto toggleNumbers = [](QDialog& dialog) {
        for (QCheckBox* box : dialog.findChildren<QCheckBox*>()) {
            if (box->text().startsWith(QStringLiteral("Intensity numbers"))) {
                QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
            }
        }
        return int{QDialog::Accepted};
    };
    fixture.interaction->onDialog = toggleNumbers;
    fixture.window->dispatch(ui::kCmdPreferences);
    QVERIFY(fixture.state.quarvex.view.intensityNumbers);
    QVERIFY(view.yAxis->tickLabels());
    view.replot();
    const QVector<double> ticks = view.yAxis->tickVector();
    const QVector<QString> labels = view.yAxis->tickVectorLabels();
    QVERIFY(ticks.size() >= 3);
    QCOMPARE(labels.size(), ticks.size());
    const SPECDATA_GLOBALS& s = fixture.state.specdata;
    const int primary = 1; // the last opened
    QVERIFY(s.ACTIVE[primary]);
    const double span = s.Y_EXTREMES[primary][1] - s.Y_EXTREMES[primary][0];
    for (qsizetype i = 0; i < ticks.size(); ++i) {
        bool number = false;
        const double intensity = QLocale().toDouble(labels[i], &number);
        QVERIFY2(number, qPrintable(labels[i]));
        // The label is rounded to 6 digits: its drawn height to that share of the span.
        QVERIFY2(std::abs(drawnY(s, primary, static_cast<float>(intensity)) - ticks[i]) <
                     1e-5 * (1.0 + std::abs(ticks[i])),
                 qPrintable(labels[i]));
        // Only the primary's own span, a tenth to spare: not down over the spectrum below it.
        QVERIFY(intensity >= s.Y_EXTREMES[primary][0] - 0.1 * span - 1e-6 * span &&
                intensity <= s.Y_EXTREMES[primary][1] + 0.1 * span + 1e-6 * span);
    }
    const std::string kept = readFile(fixture.home.path() / kViewSettingsFileName);
    QVERIFY2(kept.find("intensity_numbers=1\n") != std::string::npos, kept.c_str());
    const auto preferences = fixture.home.path() / kPreferencesFileName;
    QVERIFY(!std::filesystem::exists(preferences) ||
            readFile(preferences).find("intensity") == std::string::npos);

    {
        ProgramState restarted;
        const ui::MainWndProc window(
            restarted, ui::MainWindowOptions{fixture.home.path(), sourcePath("docs"),
                                             std::make_shared<RecordingInteraction>()});
        QVERIFY(restarted.quarvex.view.intensityNumbers); // read at the next start
    }

    fixture.window->dispatch(ui::kCmdPreferences); // untick
    QVERIFY(!view.yAxis->tickLabels());
    QVERIFY(!view.yAxis->ticks());
    QVERIFY(!readViewSettings(fixture.home.path()).intensityNumbers);
}

} // namespace quarvex::test
