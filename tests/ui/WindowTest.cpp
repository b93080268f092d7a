// Working with the main window through its dispatch, as menus and tool bar do.
#include "WindowTest.h"

#include "UiTestSupport.h"

#include "common/QuarvexError.h"
#include "shell/Preferences.h"
#include "ui/Commands.h"
#include "ui/PreferencesDialog.h"
#include "ui/PrintAndExport.h"
#include "ui/ProgressRunner.h"
#include "ui/SpectrumDialogs.h"
#include "ui/SpectrumView.h"

#include <QLineEdit>
#include <QMimeData>
#include <QPrinter>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

namespace quarvex::test {

namespace {

// Every value away from its default, each exactly representable in the dialog's fields.
Preferences changedPreferences() {
    Preferences p;
    p.compileLibraryAtStart = false;
    p.profileSetting = 1;
    p.machineErrorSearch = false;
    p.reportIterations = false;
    p.stackSpectra = false;
    p.noiseSegments = 17;
    p.peakThreshold = 9;
    p.matchTolerance = 0.25F;
    p.xrayWavelength = 0.709319F;
    p.searchRangeStart = 150;
    p.searchRangeEnd = 1800;
    p.resultsShown = 40;
    p.peakSmoothingPoints = 7;
    p.peakMinSeparation = 4;
    p.reverseXAxis = true;
    p.showGrid = false;
    return p;
}

// The preferences as their file holds them: two sets are equal when their files are.
std::string asFile(Preferences p) {
    TempFolder folder;
    INI_PREF_SETUP(1, folder.path(), p);
    return readFile(folder.path() / "QV.ini");
}

QString example(const char* name) {
    return QString::fromStdString(sourcePath(std::string("data/raman/examples/") + name).string());
}

} // namespace

void WindowTest::startUpRunsInItsOrder() {
    TempFolder home;
    Preferences stored;
    stored.reverseXAxis = true;
    INI_PREF_SETUP(1, home.path(), stored);
    ProgramState state;
    ui::MainWndProc window(state, {home.path(), sourcePath("docs"), nullptr});
    QVERIFY2(state.quarvex.preferences.reverseXAxis,
             "preferences are read at the window's creation");
    QCOMPARE(state.painting.RAND_BRUSH[1].green * 255.0F, 144.0F);

    bool foldersMade = false;
    bool referenceWritten = true;
    std::string status;
    window.setCoreHooks({[&](ProgramState&, const ProgressCallback& progress) {
                             foldersMade = std::filesystem::is_directory(
                                 home.path() / "SearchRecords" / "RamanLib");
                             referenceWritten =
                                 std::filesystem::exists(home.path() / "ForReference.txt");
                             reportProgress(progress, "Compiling Library...", 1.0);
                             return std::optional<LibraryCompilation>();
                         },
                         {}});
    window.startUp();
    QVERIFY2(foldersMade, "the folders exist before the library is compiled");
    QVERIFY2(!referenceWritten, "the reference file is written after the compilation");
    QVERIFY(std::filesystem::exists(home.path() / "ForReference.txt"));
    QVERIFY(window.acceptDrops());
    QVERIFY(window.isVisible());
}

void WindowTest::openingAndDroppingFilesLoadSpectra() {
    WindowFixture fixture;
    fixture.interaction->filesToOpen = {example("calcite_bwtek_532nm_icv.txt")};
    fixture.window->dispatch(ui::kCmdOpen);
    QCOMPARE(fixture.state.specdata.count(), 1);
    QCOMPARE(fixture.state.specdata.NAME[0], std::string("calcite_bwtek_532nm_icv.txt"));

    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(example("mixture_calcite_dolomite_quartz.txt")),
                     QUrl::fromLocalFile(example("silicon_horiba_633nm_top.txt"))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(fixture.window.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(fixture.window.get(), &drop);
    QCOMPARE(fixture.state.specdata.count(), 3);
    QCOMPARE(fixture.window->view()->drawnSpectra(), (std::vector<int>{0, 1, 2}));
    QVERIFY2(fixture.state.specdata.ACTIVE[2], "the last file read is primary");
    QVERIFY(fixture.interaction->errors.empty());
}

void WindowTest::missingFileShowsTheSharingError() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    fixture.interaction->filesToOpen = {
        QString::fromStdString((fixture.home.path() / "missing.txt").string())};
    fixture.window->dispatch(ui::kCmdOpen);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].text,
             QStringLiteral("ERROR WITH INCOMING DATA, FILE READ"));
    QCOMPARE(fixture.interaction->errors[0].title, QStringLiteral("SHARING ERROR"));
    QCOMPARE(fixture.state.specdata.count(), 1);
}

void WindowTest::preferencesRoundTrip() {
    const Preferences changed = changedPreferences();
    QVERIFY(asFile(changed) != asFile(Preferences{}));
    ui::PreferencesDialog dialog(changed);
    QCOMPARE(asFile(dialog.values()), asFile(changed));
    dialog.setValues(Preferences{});
    QCOMPARE(asFile(dialog.values()), asFile(Preferences{}));
}

void WindowTest::preferencesDriveTheView() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt", "mixture_calcite_dolomite_quartz.txt"});
    const ui::SpectrumView& view = *fixture.window->view();
    QVERIFY(!view.xAxis->rangeReversed());
    QVERIFY(fixture.state.specdata.STACK_BUFF[1] > 0.0F);

    fixture.interaction->onDialog = [](QDialog& dialog) {
        dynamic_cast<ui::PreferencesDialog&>(dialog).setValues(changedPreferences());
        return int{QDialog::Accepted};
    };
    fixture.window->dispatch(ui::kCmdPreferences);
    QCOMPARE(fixture.interaction->dialogs.back(), QStringLiteral("Preferences"));
    QCOMPARE(asFile(fixture.state.quarvex.preferences), asFile(changedPreferences()));
    QVERIFY(view.xAxis->rangeReversed());
    QVERIFY(!view.xAxis->grid()->visible());
    QCOMPARE(fixture.state.specdata.STACK_BUFF[1], 0.0F); // overlaid
}

void WindowTest::spectrumCommandsChangeTheSpectra() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt", "mixture_calcite_dolomite_quartz.txt"});
    const SPECDATA_GLOBALS& s = fixture.state.specdata;
    ui::MainWndProc& window = *fixture.window;

    window.setTargetSpectrum(0);
    window.dispatch(ui::kCmdMakeInvisible);
    QVERIFY(!s.VISIBLE[0]);
    QCOMPARE(window.view()->drawnSpectra(), std::vector<int>{1});
    window.dispatch(ui::kCmdMakeInvisible);
    QVERIFY(s.VISIBLE[0]);

    window.dispatch(ui::kCmdMakePrimary);
    QCOMPARE(s.ACTIVE, (std::vector<bool>{true, false}));

    fixture.interaction->onDialog = [](QDialog& dialog) {
        if (auto* scale = dynamic_cast<ui::AdjustScaleDialog*>(&dialog)) {
            scale->setValues(2.5F, 0.0F);
        } else {
            dynamic_cast<ui::AdjustDataTypeDialog&>(dialog).setDataType(QStringLiteral("xrd"));
        }
        return int{QDialog::Accepted};
    };
    window.dispatch(ui::kCmdAdjustScale);
    QCOMPARE(s.SCALE_FACT[0], 2.5F);
    QCOMPARE(s.STACK_BUFF[1], 2.5F + 0.1F); // spectrum 2 sits on the rescaled spectrum 1
    QCOMPARE(window.view()->xAxis->label(), QStringLiteral("Raman shift / cm-1"));
    window.dispatch(ui::kCmdAdjustDataType);
    QCOMPARE(s.DTYPE[0], std::string("XRD"));
    QCOMPARE(window.view()->xAxis->label(), QStringLiteral("2-theta / deg"));

    window.dispatch(ui::kCmdDelete);
    window.setTargetSpectrum(-1);
    QCOMPARE(s.count(), 1);
    QCOMPARE(s.NAME[0], std::string("mixture_calcite_dolomite_quartz.txt"));
    QVERIFY2(s.ACTIVE[0], "the spectrum left becomes primary");
    QCOMPARE(
        fixture.interaction->dialogs,
        (std::vector<QString>{QStringLiteral("Adjust Scale"), QStringLiteral("Adjust Data Type")}));
}

void WindowTest::crosshairMovesOnePointPerArrowKey() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::SpectrumView* view = fixture.window->view();
    const int start = view->crosshairPoint();
    QVERIFY(start > 0);
    QTest::keyClick(view, Qt::Key_Right);
    QCOMPARE(view->crosshairPoint(), start + 1);
    QTest::keyClick(view, Qt::Key_Left);
    QTest::keyClick(view, Qt::Key_Left);
    QCOMPARE(view->crosshairPoint(), start - 1);
    const float x = fixture.state.specdata.xValues(0)[static_cast<std::size_t>(start - 1)];
    QVERIFY2(fixture.window->crosshairText().contains(QString::number(x, 'f', 2)),
             qPrintable(fixture.window->crosshairText()));

    fixture.window->dispatch(ui::kCmdReverseXAxis);
    QTest::keyClick(view, Qt::Key_Right); // reversed: right is towards smaller x
    QCOMPARE(view->crosshairPoint(), start - 2);
}

void WindowTest::rangeSelectionIsExposed() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::SpectrumView* view = fixture.window->view();
    QSignalSpy changed(view, &ui::SpectrumView::selectionChanged);
    const QRect plot = view->axisRect()->rect();
    const QPoint from(plot.left() + plot.width() / 4, plot.center().y());
    const QPoint to(plot.left() + plot.width() / 2, plot.center().y());
    QTest::mousePress(view, Qt::LeftButton, Qt::ShiftModifier, from);
    QTest::mouseMove(view, to);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::ShiftModifier, to);
    QCOMPARE(changed.count(), 1);
    const auto range = view->selectedRange();
    QVERIFY(range.has_value());
    QCOMPARE(range->start, view->xAxis->pixelToCoord(from.x()));
    QCOMPARE(range->end, view->xAxis->pixelToCoord(to.x()));
    QTest::keyClick(view, Qt::Key_Escape);
    QVERIFY(!view->selectedRange().has_value());
}

void WindowTest::dragZoomsAndZoomFullRestores() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::SpectrumView* view = fixture.window->view();
    const QCPRange full = view->xAxis->range();
    const QRect plot = view->axisRect()->rect();
    const QPoint from(plot.left() + plot.width() / 4, plot.top() + plot.height() / 4);
    const QPoint to(plot.left() + plot.width() / 2, plot.bottom() - plot.height() / 4);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(view, to);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, to);
    QVERIFY2(view->xAxis->range().size() < full.size() / 3.0, "zoomed into the box");
    fixture.window->dispatch(ui::kCmdZoomFull);
    QCOMPARE(view->xAxis->range().lower, full.lower);
    QCOMPARE(view->xAxis->range().upper, full.upper);
}

void WindowTest::printAndExportWriteFiles() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    const auto printed = fixture.home.path() / "printed.pdf";
    printer.setOutputFileName(QString::fromStdString(printed.string()));
    ui::PRINTOUTMAINSCREEN(*fixture.window->view(), printer, QStringLiteral("caption"));
    QVERIFY(std::filesystem::file_size(printed) > 1000);
    for (const char* name : {"view.pdf", "view.png"}) {
        const auto path = fixture.home.path() / name;
        fixture.interaction->saveName = QString::fromStdString(path.string());
        fixture.window->dispatch(ui::kCmdExportView);
        QVERIFY2(std::filesystem::file_size(path) > 1000, name);
    }
    QVERIFY(readFile(fixture.home.path() / "view.pdf").starts_with("%PDF"));
    QVERIFY(readFile(fixture.home.path() / "view.png").starts_with("\x89PNG"));
}

void WindowTest::longOperationsKeepTheWindowAlive() {
    QWidget window;
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&ticks] { ++ticks; });
    timer.start(5);
    bool ranElsewhere = false;
    auto* field = new QLineEdit(&window);
    window.show();
    QTimer::singleShot(20, field, [field] { QTest::keyClick(field, Qt::Key_A); });
    ui::runWithProgress(&window, QStringLiteral("Working"), [&](const ProgressCallback& progress) {
        ranElsewhere = QThread::currentThread() != window.thread();
        for (int step = 1; step <= 10; ++step) {
            reportProgress(progress, "Compiling Library...", step / 10.0);
            QThread::msleep(15);
        }
    });
    QVERIFY(ranElsewhere);
    QVERIFY2(ticks > 3, "the window's event loop ran during the job");
    QVERIFY2(field->text().isEmpty(), "the user's input waits until the job has ended");

    bool thrown = false;
    try {
        ui::runWithProgress(&window, QStringLiteral("Failing"),
                            [](const ProgressCallback&) { throw QuarvexError("text", "title"); });
    } catch (const QuarvexError& error) {
        thrown = error.title() == "title";
    }
    QVERIFY2(thrown, "the job's error arrives on the window's thread");

    // Cancel, clicked once the dialog shows, ends a cancellable job at its next report.
    QTimer::singleShot(700, &window, [&window] {
        auto* dialog = window.findChild<QProgressDialog*>();
        QVERIFY(dialog != nullptr && dialog->isVisible());
        auto* cancel = dialog->findChild<QPushButton*>();
        QVERIFY(cancel != nullptr);
        QTest::mouseClick(cancel, Qt::LeftButton);
    });
    int reports = 0;
    const bool finished = ui::runCancellableWithProgress(
        &window, QStringLiteral("Long"), [&reports](const ProgressCallback& progress) {
            for (; reports < 1000; ++reports) { // ten seconds unless cancelled
                reportProgress(progress, "Running Consistency Exam...", reports / 1000.0);
                QThread::msleep(10);
            }
        });
    QVERIFY(!finished);
    QVERIFY2(reports < 1000, "the job stopped at the report after the click");
    QVERIFY(ui::runCancellableWithProgress(&window, QStringLiteral("Short"),
                                           [](const ProgressCallback&) {}));
}

void WindowTest::exitWritesPreferencesAndFreesSpectra() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    fixture.window->dispatch(ui::kCmdReverseXAxis);
    fixture.window->dispatch(ui::kCmdExit);
    QCOMPARE(fixture.state.specdata.count(), 0);
    Preferences reread;
    INI_PREF_SETUP(2, fixture.home.path(), reread);
    QVERIFY(reread.reverseXAxis);
}

} // namespace quarvex::test
