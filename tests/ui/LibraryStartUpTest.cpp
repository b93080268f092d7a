// Start-up of the main window over a library folder that did or did not change.
#include "LibraryStartUpTest.h"

#include "UiTestSupport.h"

#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/GridCache.h"
#include "ui/BackgroundCompilation.h"
#include "ui/Commands.h"
#include "ui/CoreHooks.h"
#include "ui/RamanSearchDock.h"

#include <QLabel>
#include <QProgressDialog>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

namespace quarvex::test {

namespace {

constexpr const char* kCalcite = "data/raman/examples/calcite_bwtek_785nm_icv.txt";

// The shipped model library in the library folder of `home`; its number of spectra.
int copyModelLibrary(const std::filesystem::path& home) {
    const std::filesystem::path library = ramanLibraryFolder(home);
    std::filesystem::create_directories(library);
    int spectra = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(sourcePath("data/raman/model_library"))) {
        std::filesystem::copy_file(file.path(), library / file.path().filename());
        spectra += file.path().extension() == ".txt" ? 1 : 0;
    }
    return spectra;
}

using LibraryTimes = std::array<std::filesystem::file_time_type, 4>;

LibraryTimes libraryFileTimes(const std::filesystem::path& home) {
    LibraryTimes times;
    const std::array<std::string_view, 4> names{kSlowLibraryFile, kFastLibraryFile, kNameListFile,
                                                kNameInfoFile};
    for (std::size_t k = 0; k < names.size(); ++k) {
        times[k] = std::filesystem::last_write_time(ramanLibraryFolder(home) / names[k]);
    }
    return times;
}

// A window over `home` started as the program starts it; its status bar's message.
QString startWindow(const std::filesystem::path& home) {
    ProgramState state;
    ui::MainWndProc window(state,
                           {home, sourcePath("docs"), std::make_shared<RecordingInteraction>()});
    window.startUp();
    return window.statusBar()->currentMessage();
}

// The dock's summary line of the last search.
QString searchSummary(const ui::RamanSearchDock& dock) {
    for (const QLabel* label : dock.findChildren<QLabel*>()) {
        if (label->text().contains(QStringLiteral("entries searched"))) {
            return label->text();
        }
    }
    return {};
}

} // namespace

void LibraryStartUpTest::unchangedLibraryIsNotCompiledAgain() {
    TempFolder home;
    const int spectra = copyModelLibrary(home.path());
    QCOMPARE(startWindow(home.path()),
             QStringLiteral("Raman library compiled: %1 entries").arg(spectra));
    const LibraryTimes compiled = libraryFileTimes(home.path());

    QCOMPARE(startWindow(home.path()),
             QStringLiteral("Library up to date (%1 entries)").arg(spectra));
    QVERIFY2(libraryFileTimes(home.path()) == compiled, "the library files were not written again");

    // One reference file edited (its time moved): compiled again at the next start.
    const auto edited = ramanLibraryFolder(home.path()) / "Calcite_M00014_532.txt";
    std::filesystem::last_write_time(edited, std::filesystem::last_write_time(edited) -
                                                 std::chrono::minutes(1));
    QCOMPARE(startWindow(home.path()),
             QStringLiteral("Raman library compiled: %1 entries").arg(spectra));
    QVERIFY(libraryFileTimes(home.path()) != compiled);
}

void LibraryStartUpTest::changedLibraryCompilesAfterTheWindowShows() {
    TempFolder home;
    const int spectra = copyModelLibrary(home.path());
    ProgramState state;
    auto interaction = std::make_shared<RecordingInteraction>();
    ui::MainWndProc window(state, {home.path(), sourcePath("docs"), interaction, true});
    // The program's own compilation, held back until the search below has started.
    std::atomic<bool> released = false;
    std::atomic<bool> compiled = false;
    const ui::CoreHooks program = ui::defaultCoreHooks();
    window.setCoreHooks({[&](ProgramState& copy, const ProgressCallback& progress) {
                             while (!released) {
                                 std::this_thread::sleep_for(std::chrono::milliseconds(5));
                             }
                             auto result = program.compileLibraryAtStart(copy, progress);
                             compiled = true;
                             return result;
                         },
                         program.consistencyExam});
    window.startUp();
    QVERIFY(window.isVisible());
    QVERIFY(window.libraryCompilation().isRunning());
    QVERIFY(!std::filesystem::exists(ramanLibraryFolder(home.path()) / kSlowLibraryFile));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("Compiling Library..."));

    window.openFiles({QString::fromStdString(sourcePath(kCalcite).string())});
    QString waitingText;
    QTimer::singleShot(700, &window, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            const auto* dialog = qobject_cast<QProgressDialog*>(widget);
            if (dialog != nullptr && dialog->isVisible()) {
                waitingText = dialog->labelText();
            }
        }
        released = true;
    });
    QCOMPARE(window.dispatch(ui::kCmdSearchLibrary), ui::DispatchResult::Done);
    QVERIFY2(compiled, "the search ended only after the start-up compilation");
    QCOMPARE(waitingText, QStringLiteral("Compiling Library..."));
    QVERIFY(interaction->errors.empty());

    // The normal result: the scores of a search of the compiled library over the same range.
    const ui::RamanSearchDock& dock = *window.ramanSearch();
    const auto x = state.specdata.xValues(0);
    const ui::PointRun run =
        ui::pointsWithin(x, dock.searchRange()->start, dock.searchRange()->end);
    LIBRARY_GLOBALS expected;
    READ_LIBRARY(ramanLibraryFolder(home.path()), x.subspan(run.first, run.count),
                 state.specdata.yValues(0).subspan(run.first, run.count), expected);
    QCOMPARE(state.library.PERC_MATCH, expected.PERC_MATCH);
    QCOMPARE(dock.results()->topLevelItem(0)->text(2), QStringLiteral("Calcite"));
    QTRY_COMPARE(window.statusBar()->currentMessage(),
                 QStringLiteral("Raman library compiled: %1 entries").arg(spectra));
}

void LibraryStartUpTest::searchTellsWhyItReadTheTextFiles() {
    WindowFixture fixture{WindowFixture::DefaultLibrary{}};
    fixture.open({"calcite_bwtek_785nm_icv.txt"});
    const std::filesystem::path library = ramanLibraryFolder(fixture.home.path());
    QVERIFY(std::filesystem::remove(gridCachePath(library)));
    QCOMPARE(fixture.window->dispatch(ui::kCmdSearchLibrary), ui::DispatchResult::Done);
    const ui::RamanSearchDock& dock = *fixture.window->ramanSearch();
    QVERIFY2(searchSummary(dock).endsWith(
                 QStringLiteral("\nSearched the library's text files: the library has no grid "
                                "cache; it was made anew.")),
             qPrintable(searchSummary(dock)));
    // The cache made anew serves the next search: nothing to tell.
    QCOMPARE(fixture.window->dispatch(ui::kCmdSearchLibrary), ui::DispatchResult::Done);
    QVERIFY2(!searchSummary(dock).contains(QStringLiteral("text files")),
             qPrintable(searchSummary(dock)));
}

} // namespace quarvex::test
