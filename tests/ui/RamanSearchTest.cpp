// The Raman Search mode through the main window's dispatch and the dock's own controls.
#include "RamanSearchTest.h"

#include "UiTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"
#include "specdata/SpecDataArrange.h"
#include "ui/Commands.h"
#include "ui/RamanSearchDock.h"
#include "ui/SpectrumView.h"

#include <QComboBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTreeWidget>

#include <algorithm>
#include <cstdlib>

namespace quarvex::test {

namespace {

constexpr int kMineralColumn = 2;
constexpr const char* kCalcite = "calcite_bwtek_785nm_icv.txt";

QString mineralOfRow(const ui::RamanSearchDock& dock, int row) {
    return dock.results()->topLevelItem(row)->text(kMineralColumn);
}

QPushButton* buttonNamed(const QWidget& parent, const QString& text) {
    for (QPushButton* button : parent.findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

QStringList componentNames(const ProgramState& state, const ui::RamanSearchDock& dock) {
    QStringList names;
    for (const MixtureComponent& component : dock.mixture()->components) {
        names.append(QString::fromStdString(state.library.MINAMES[component.entry]));
    }
    return names;
}

const QCPGraph* graphNamed(const ui::SpectrumView& view, const QString& name) {
    for (int g = 0; g < view.graphCount(); ++g) {
        if (view.graph(g)->name() == name) {
            return view.graph(g);
        }
    }
    return nullptr;
}

} // namespace

void RamanSearchTest::startUpCompilesTheLibraryQuietly() {
    // A file of the library folder that is no spectrum: left out, told in the status bar only.
    TempFolder home;
    const std::filesystem::path library = ramanLibraryFolder(home.path());
    std::filesystem::create_directories(library);
    std::filesystem::copy_file(sourcePath("data/raman/model_library/Calcite_M00014_532.txt"),
                               library / "Calcite_M00014_532.txt");
    home.write("SearchRecords/RamanLib/Notes_785.txt", "no data here\n");
    ProgramState state;
    auto interaction = std::make_shared<RecordingInteraction>();
    ui::MainWndProc window(state, {home.path(), sourcePath("docs"), interaction});
    window.startUp();
    QVERIFY(std::filesystem::exists(library / kSlowLibraryFile));
    QVERIFY(interaction->errors.empty());
    QCOMPARE(window.statusBar()->currentMessage(),
             QStringLiteral("Raman library compiled: 1 entry, 1 file left out (see Raman Search)"));

    // Without the preference, start-up compiles only a library that is missing.
    const ui::CoreHooks hooks = ui::defaultCoreHooks();
    state.quarvex.preferences.compileLibraryAtStart = false;
    QVERIFY(!hooks.compileLibraryAtStart(state, {}).has_value());
    std::filesystem::remove(library / kSlowLibraryFile);
    QCOMPARE(hooks.compileLibraryAtStart(state, {})->entries, 1);
    state.quarvex.preferences.compileLibraryAtStart = true;
    QVERIFY(hooks.compileLibraryAtStart(state, {}).has_value());
}

void RamanSearchTest::searchRanksTheExampleMineralFirst() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({kCalcite});
    QCOMPARE(fixture.window->dispatch(ui::kCmdSearchLibrary), ui::DispatchResult::Done);
    QVERIFY(fixture.interaction->errors.empty());
    const ui::RamanSearchDock& dock = *fixture.window->ramanSearch();
    QVERIFY2(dock.isVisible(), "searching opens the mode");
    // The preferences' range (100 to 4000) clipped to the spectrum: its whole range.
    const auto x = fixture.state.specdata.xValues(0);
    QCOMPARE(dock.searchRange()->start, static_cast<double>(x.front()));
    QCOMPARE(dock.searchRange()->end, static_cast<double>(x.back()));

    QCOMPARE(mineralOfRow(dock, 0), QStringLiteral("Calcite"));
    QCOMPARE(dock.results()->topLevelItem(0)->text(1), QStringLiteral("96.00"));
    QCOMPARE(mineralOfRow(dock, 1), QStringLiteral("Rhodochrosite"));
    QCOMPARE(dock.results()->topLevelItemCount(), fixture.state.quarvex.preferences.resultsShown);
    fixture.window->ramanSearch()->showMore();
    QCOMPARE(dock.results()->topLevelItemCount(), 50);
    fixture.window->ramanSearch()->showMore();
    QCOMPARE(dock.results()->topLevelItemCount(), fixture.state.library.count());
}

void RamanSearchTest::selectingAResultOverlaysItsReference() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({kCalcite});
    ui::SpectrumView& view = *fixture.window->view();
    view.setSelectedRange(ui::XRange{150.0, 1200.0});
    fixture.window->dispatch(ui::kCmdSearchLibrary);
    QVERIFY2(view.referenceOverlay().has_value(), "the best match is drawn at once");
    QVERIFY(view.referenceOverlay()->legend.startsWith(QStringLiteral("Calcite")));

    QTreeWidget* results = fixture.window->ramanSearch()->results();
    results->setCurrentItem(results->topLevelItem(2));
    const ui::ReferenceOverlay& overlay = *view.referenceOverlay();
    QVERIFY(overlay.legend.startsWith(mineralOfRow(*fixture.window->ramanSearch(), 2)));
    QCOMPARE(fixture.state.specdata.count(), 1); // not one of the loaded spectra
    QCOMPARE(overlay.range.start, 150.0);

    // Drawn over the searched area, its highest and lowest points on those of the unknown.
    const QCPGraph* drawn = graphNamed(view, overlay.legend);
    QVERIFY(drawn != nullptr);
    QCOMPARE(drawn->pen().style(), Qt::DashLine);
    double unknownLow = 1e30;
    double unknownHigh = -1e30;
    const auto x = fixture.state.specdata.xValues(0);
    const auto y = fixture.state.specdata.yValues(0);
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (x[i] >= 150.0F && x[i] <= 1200.0F) {
            const double value = drawnY(fixture.state.specdata, 0, y[i]);
            unknownLow = std::min(unknownLow, value);
            unknownHigh = std::max(unknownHigh, value);
        }
    }
    bool found = false;
    const QCPRange values = drawn->data()->valueRange(found);
    QVERIFY(found);
    QVERIFY(drawn->data()->constBegin()->key >= 150.0);
    QVERIFY(std::abs(values.lower - unknownLow) < 1e-6);
    QVERIFY(std::abs(values.upper - unknownHigh) < 1e-6);

    fixture.window->ramanSearch()->close();
    QVERIFY2(!view.referenceOverlay().has_value(), "closing the mode takes the overlay away");
}

void RamanSearchTest::missingLibraryNeedsCompiling() {
    WindowFixture fixture;
    const std::filesystem::path library = ramanLibraryFolder(fixture.home.path());
    std::filesystem::remove_all(library);
    // A compilation that cannot write its files: a folder where one of them belongs.
    std::filesystem::create_directories(library / "RamanSearchFileFast.rsf");
    fixture.open({kCalcite});
    fixture.window->dispatch(ui::kCmdSearchLibrary);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].text,
             QStringLiteral("Library File Needs To Be Compiled"));
    QCOMPARE(fixture.interaction->errors[0].title, QStringLiteral("Raman Library"));
    QCOMPARE(fixture.window->ramanSearch()->results()->topLevelItemCount(), 0);

    // A library folder that cannot be created: the message names it.
    std::filesystem::remove_all(library);
    fixture.home.write("SearchRecords/RamanLib", "a file where the library folder belongs");
    fixture.window->dispatch(ui::kCmdSearchLibrary);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{2});
    QVERIFY(fixture.interaction->errors[1].text.startsWith(
        QString::fromStdString("The folder " + library.string() + " cannot be created")));
}

// Open the file (1), open the mode (2), drag the range on the view (3), press Search (4), and
// the best match is there to see, drawn over the unknown (5).
void RamanSearchTest::workflowTakesFiveActions() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.interaction->filesToOpen = {QString::fromStdString(
        sourcePath(std::string("data/raman/examples/") + kCalcite).string())};
    fixture.window->actionsFor(ui::kCmdOpen).front()->trigger();            // 1
    fixture.window->actionsFor(ui::kCmdRamanSearchMode).front()->trigger(); // 2
    ui::SpectrumView* view = fixture.window->view();
    const QRect plot = view->axisRect()->rect();
    const QPoint from(static_cast<int>(view->xAxis->coordToPixel(140.0)), plot.center().y());
    const QPoint to(static_cast<int>(view->xAxis->coordToPixel(1250.0)), plot.center().y());
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, from); // 3: a plain drag selects
    QTest::mouseMove(view, to);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, to);
    QVERIFY(view->selectedRange().has_value());
    QCOMPARE(fixture.window->ramanSearch()->searchRange()->end, view->xAxis->pixelToCoord(to.x()));
    const auto buttons = fixture.window->ramanSearch()->findChildren<QPushButton*>();
    const auto search = std::find_if(buttons.begin(), buttons.end(), [](QPushButton* button) {
        return button->text() == QStringLiteral("Search");
    });
    QVERIFY(search != buttons.end());
    QTest::mouseClick(*search, Qt::LeftButton); // 4
    QVERIFY(fixture.interaction->errors.empty());
    QVERIFY(view->referenceOverlay().has_value()); // 5
    QVERIFY(view->referenceOverlay()->legend.startsWith(QStringLiteral("Calcite")));
}

// The mode selector driven by keys, Search and Search Residual by mouse on the shipped
// three-mineral mixture (calcite, dolomite, quartz).
void RamanSearchTest::modeSelectorAndSearchResidual() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({"mixture_calcite_dolomite_quartz.txt"});
    fixture.window->dispatch(ui::kCmdRamanSearchMode);
    ui::RamanSearchDock& dock = *fixture.window->ramanSearch();
    QComboBox* mode = dock.modeSelector();
    QCOMPARE(mode->currentText(), QStringLiteral("Dot product"));
    QPushButton* search = buttonNamed(dock, QStringLiteral("Search"));
    QPushButton* residual = buttonNamed(dock, QStringLiteral("Search Residual"));
    QVERIFY(search != nullptr && residual != nullptr);
    QVERIFY2(!residual->isEnabled(), "nothing searched yet");

    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_Down);
    QTest::keyClick(mode, Qt::Key_Down);
    QCOMPARE(mode->currentText(), QStringLiteral("Mixture"));
    QTest::mouseClick(search, Qt::LeftButton);
    QVERIFY(fixture.interaction->errors.empty());
    QVERIFY(dock.mixture().has_value());
    const QStringList stated{QStringLiteral("Calcite"), QStringLiteral("Dolomite"),
                             QStringLiteral("Quartz")};
    QStringList found = componentNames(fixture.state, dock);
    found.sort();
    QCOMPARE(found, stated);
    ui::SpectrumView& view = *fixture.window->view();
    QVERIFY2(view.fitOverlay().has_value(), "the sum of the components is drawn");

    // A robust search ranks calcite first and takes the drawing of the sum away.
    QTest::keyClick(mode, Qt::Key_Up);
    QCOMPARE(mode->currentText(), QStringLiteral("Robust"));
    QTest::mouseClick(search, Qt::LeftButton);
    QVERIFY(!dock.mixture().has_value());
    QVERIFY(!view.fitOverlay().has_value());
    QVERIFY(view.peakMarks().spectrum == 0);
    QCOMPARE(mineralOfRow(dock, 0), QStringLiteral("Calcite"));
    // Calcite's bands at 281 and 1086 cm-1, moved by the mixture's +2, are marked.
    const std::vector<float>& marked = view.peakMarks().found;
    for (const float band : {283.0F, 1088.0F}) {
        QVERIFY2(std::any_of(marked.begin(), marked.end(),
                             [band](float x) { return std::abs(x - band) < 2.0F; }),
                 qPrintable(QString::number(band)));
    }

    // Search Residual: the best entry and the best of what is left, then one more.
    QVERIFY(residual->isEnabled());
    QTest::mouseClick(residual, Qt::LeftButton);
    QCOMPARE(componentNames(fixture.state, dock),
             (QStringList{QStringLiteral("Calcite"), QStringLiteral("Dolomite")}));
    QTest::mouseClick(residual, Qt::LeftButton);
    QCOMPARE(componentNames(fixture.state, dock).size(), 3);
    QVERIFY(view.fitOverlay().has_value());

    // QUARVEX_SCREENSHOT names a PNG file: the window as it stands, for a look under a display.
    if (const char* screenshot = std::getenv("QUARVEX_SCREENSHOT")) {
        fixture.window->resize(1500, 950);
        fixture.window->show();
        QTest::qWait(200);
        QVERIFY(fixture.window->grab().save(QString::fromLocal8Bit(screenshot)));
    }
}

} // namespace quarvex::test
