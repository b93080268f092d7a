// The editing commands of the main window, driven by command number as the menus do.
#include "SpectrumEditingTest.h"

#include "UiTestSupport.h"

#include "specdata/SpectrumRecords.h"
#include "ui/BackgroundDialog.h"
#include "ui/Commands.h"
#include "ui/DataFileEditor.h"
#include "ui/SmoothDialog.h"
#include "ui/SpectrumView.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <qcustomplot.h>

#include <algorithm>

#include <cstring>

namespace quarvex::test {

namespace {

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

bool sameSpectrum(const SpectrumRecord& a, const SpectrumRecord& b) {
    return sameBits(a.x, b.x) && sameBits(a.y, b.y) && a.comments == b.comments;
}

std::vector<double> curve(const QCustomPlot& plot, int graph) {
    std::vector<double> values;
    for (const auto& point : *plot.graph(graph)->data()) {
        values.push_back(point.value);
    }
    return values;
}

} // namespace

void SpectrumEditingTest::undoRestoresEveryEditBitForBitAndRedoReapplies() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::MainWndProc& window = *fixture.window;
    fixture.state.specdata.yColumn(0)[300] += 1.0e6F; // a cosmic ray
    QCOMPARE(window.dispatch(ui::kCmdUndo), ui::DispatchResult::Greyed);
    fixture.interaction->onDialog = [](QDialog&) { return QDialog::Accepted; };

    std::vector<SpectrumRecord> states{spectrumRecord(fixture.state.specdata, 0)};
    for (const int command : {ui::kCmdAutoRemoveCre, ui::kCmdAutoRemoveBackground}) {
        QCOMPARE(window.dispatch(command), ui::DispatchResult::Done);
        states.push_back(spectrumRecord(fixture.state.specdata, 0));
        QVERIFY(!sameBits(states.back().y, states[states.size() - 2].y));
    }
    QVERIFY(fixture.interaction->errors.empty());
    QVERIFY(states[1].y[300] < 1.0e5F); // the spike is gone
    QVERIFY(QString::fromStdString(states[2].comments.back()).startsWith("processing: background"));

    for (int k = 1; k >= 0; --k) {
        QCOMPARE(window.dispatch(ui::kCmdUndo), ui::DispatchResult::Done);
        QVERIFY2(sameSpectrum(spectrumRecord(fixture.state.specdata, 0),
                              states[static_cast<std::size_t>(k)]),
                 "undo restores the state bit for bit");
    }
    QCOMPARE(window.dispatch(ui::kCmdUndo), ui::DispatchResult::Greyed);
    QCOMPARE(window.dispatch(ui::kCmdRedo), ui::DispatchResult::Done);
    QVERIFY(sameSpectrum(spectrumRecord(fixture.state.specdata, 0), states[1]));
    // A new edit ends redo.
    QCOMPARE(window.dispatch(ui::kCmdAutoRemoveBackground), ui::DispatchResult::Done);
    QCOMPARE(window.dispatch(ui::kCmdRedo), ui::DispatchResult::Greyed);

    // Closing the window clears the undo records.
    window.close();
    QVERIFY(std::filesystem::is_empty(fixture.home.path() / "UndoRecords"));
}

void SpectrumEditingTest::backgroundDialogDrawsTheProposedBaselineBeforeApply() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    const SpectrumRecord original = spectrumRecord(fixture.state.specdata, 0);
    std::vector<double> alsBaseline;
    std::vector<double> snipBaseline;
    QString message;
    fixture.interaction->onDialog = [&](QDialog& dialog) {
        auto& background = dynamic_cast<ui::BackgroundDialog&>(dialog);
        const auto points = [&background] {
            std::vector<double> values;
            for (const auto& point : *background.plot()->graph(1)->data()) {
                values.push_back(point.value);
            }
            return values;
        };
        alsBaseline = points();
        background.method()->setCurrentIndex(2); // SNIP
        snipBaseline = points();
        message = background.message();
        return QDialog::Rejected; // Cancel
    };
    QCOMPARE(fixture.window->dispatch(ui::kCmdAutoRemoveBackground), ui::DispatchResult::Done);
    QCOMPARE(fixture.interaction->dialogs.size(), std::size_t{1});
    QCOMPARE(alsBaseline.size(), original.y.size());
    QCOMPARE(snipBaseline.size(), original.y.size());
    QVERIFY(alsBaseline != snipBaseline);
    QVERIFY(message.startsWith("Proposed baseline"));
    // The proposed baseline lies under the 1086 cm-1 band and near the spectrum between bands.
    const auto band = static_cast<std::size_t>(
        std::max_element(original.y.begin(), original.y.end()) - original.y.begin());
    QVERIFY(alsBaseline[band] < 0.2 * original.y[band]);
    QVERIFY(std::abs(alsBaseline[400] - original.y[400]) < 0.05 * original.y[400]);
    // Cancel leaves the spectrum and the undo list as they were.
    QVERIFY(sameSpectrum(spectrumRecord(fixture.state.specdata, 0), original));
    QCOMPARE(fixture.window->dispatch(ui::kCmdUndo), ui::DispatchResult::Greyed);
}

void SpectrumEditingTest::clicksRemoveSpikesByHandUntilEscape() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::MainWndProc& window = *fixture.window;
    ui::SpectrumView& view = *window.view();
    SPECDATA_GLOBALS& specdata = fixture.state.specdata;
    constexpr std::size_t kSpike = 400; // between the bands
    const SpectrumRecord clean = spectrumRecord(specdata, 0);
    const float highest = *std::max_element(clean.y.begin(), clean.y.end());
    specdata.yColumn(0)[kSpike] += 10.0F * highest; // a one-point cosmic ray
    view.ORGANIZE_PAINTING();
    view.ZOOM_OUT();
    const SpectrumRecord spiked = spectrumRecord(specdata, 0);
    // Two points beside the spike, in the middle of the plot's height.
    const QPoint beside(static_cast<int>(view.xAxis->coordToPixel(clean.x[kSpike + 2])),
                        view.axisRect()->rect().center().y());
    const auto modeShown = [&window] {
        return window.actionsFor(ui::kCmdRemoveSpikesByHand).front()->isChecked();
    };

    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, beside);
    QVERIFY2(sameSpectrum(spectrumRecord(specdata, 0), spiked),
             "outside the mode a click edits nothing");

    QCOMPARE(window.dispatch(ui::kCmdRemoveSpikesByHand), ui::DispatchResult::Done);
    QVERIFY(fixture.state.mancre.active);
    QVERIFY(modeShown());
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, beside);
    const SpectrumRecord removed = spectrumRecord(specdata, 0);
    // The spike point ends within 5% of the peak height of its clean value; no other point moves.
    QVERIFY2(std::abs(removed.y[kSpike] - clean.y[kSpike]) < 0.05F * highest,
             qPrintable(QString::number(removed.y[kSpike])));
    for (std::size_t i = 0; i < removed.y.size(); ++i) {
        QVERIFY(i == kSpike || removed.y[i] == spiked.y[i]);
    }
    QVERIFY(QString::fromStdString(removed.comments.back()).contains("spike removed by hand"));
    QVERIFY(fixture.interaction->errors.empty());

    // Undoable like the other edits, bit for bit; redo removes it again.
    QCOMPARE(window.dispatch(ui::kCmdUndo), ui::DispatchResult::Done);
    QVERIFY(sameSpectrum(spectrumRecord(specdata, 0), spiked));
    QCOMPARE(window.dispatch(ui::kCmdRedo), ui::DispatchResult::Done);
    QVERIFY(sameSpectrum(spectrumRecord(specdata, 0), removed));
    QCOMPARE(window.dispatch(ui::kCmdUndo), ui::DispatchResult::Done);

    // Escape ends the mode: a click edits nothing any more.
    QTest::keyClick(&view, Qt::Key_Escape);
    QVERIFY(!fixture.state.mancre.active);
    QVERIFY(!modeShown());
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, beside);
    QVERIFY(sameSpectrum(spectrumRecord(specdata, 0), spiked));

    // So does changing to another mode.
    QCOMPARE(window.dispatch(ui::kCmdRemoveSpikesByHand), ui::DispatchResult::Done);
    QVERIFY(fixture.state.mancre.active);
    QCOMPARE(window.dispatch(ui::kCmdFileManager), ui::DispatchResult::Done);
    QVERIFY(!fixture.state.mancre.active);
    QVERIFY(!modeShown());
}

void SpectrumEditingTest::smoothingDialogPreviewsTheCurveBeforeApply() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    const SpectrumRecord original = spectrumRecord(fixture.state.specdata, 0);
    std::vector<double> proposed;
    bool tooWideRefused = false;
    QString message;
    fixture.interaction->onDialog = [&](QDialog& dialog) {
        auto& smooth = dynamic_cast<ui::SmoothDialog&>(dialog);
        // A window wider than the spectrum: no curve, its message, and Apply greyed.
        smooth.width()->setValue(1.0e6);
        tooWideRefused = curve(*smooth.plot(), 1).empty() && !smooth.applyButton()->isEnabled() &&
                         smooth.message().contains("wider");
        smooth.width()->setValue(5.0 * (original.x.back() - original.x.front()) /
                                 static_cast<double>(original.x.size() - 1));
        smooth.order()->setValue(2);
        proposed = curve(*smooth.plot(), 1);
        message = smooth.message();
        return int{QDialog::Accepted};
    };
    QCOMPARE(fixture.window->dispatch(ui::kCmdSmooth), ui::DispatchResult::Done);
    QVERIFY(fixture.interaction->errors.empty());
    QVERIFY(tooWideRefused);
    QCOMPARE(message, QStringLiteral("Window of 5 points, order 2. Apply smooths the spectrum."));
    // The preview is the 5-point quadratic Savitzky-Golay filter, (-3, 12, 17, 12, -3) / 35.
    QCOMPARE(proposed.size(), original.y.size());
    const float highest = *std::max_element(original.y.begin(), original.y.end());
    for (const std::size_t i : {std::size_t{2}, original.y.size() / 2, original.y.size() - 3}) {
        const auto& y = original.y;
        const double expected =
            (-3.0 * y[i - 2] + 12.0 * y[i - 1] + 17.0 * y[i] + 12.0 * y[i + 1] - 3.0 * y[i + 2]) /
            35.0;
        QVERIFY2(std::abs(proposed[i] - expected) < 1.0e-5 * highest, // single-precision sums
                 qPrintable(QString::number(i)));
    }
    // Apply puts the previewed curve in place; undo brings the original back bit for bit.
    const SpectrumRecord smoothed = spectrumRecord(fixture.state.specdata, 0);
    QCOMPARE(std::vector<double>(smoothed.y.begin(), smoothed.y.end()), proposed);
    QVERIFY(QString::fromStdString(smoothed.comments.back()).contains("Savitzky-Golay"));
    QCOMPARE(fixture.window->dispatch(ui::kCmdUndo), ui::DispatchResult::Done);
    QVERIFY(sameSpectrum(spectrumRecord(fixture.state.specdata, 0), original));
}

void SpectrumEditingTest::saveAsWritesWhatReadsBackAndSaveAsksBeforeOverwriting() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::MainWndProc& window = *fixture.window;
    fixture.interaction->onDialog = [](QDialog&) { return QDialog::Accepted; };
    QCOMPARE(window.dispatch(ui::kCmdAutoRemoveBackground), ui::DispatchResult::Done);
    const SpectrumRecord edited = spectrumRecord(fixture.state.specdata, 0);

    const auto saved = fixture.home.path() / "cleaned.txt";
    fixture.interaction->saveName = QString::fromStdString(saved.string());
    QCOMPARE(window.dispatch(ui::kCmdSaveAs), ui::DispatchResult::Done);
    QVERIFY(fixture.interaction->errors.empty());
    QCOMPARE(QString::fromStdString(fixture.state.specdata.NAME[0]), QStringLiteral("cleaned.txt"));
    fixture.window->openFiles({QString::fromStdString(saved.string())});
    QVERIFY(sameSpectrum(spectrumRecord(fixture.state.specdata, 1), edited));

    // Save over the spectrum's own file asks first; No leaves the file as it is.
    const std::string before = readFile(saved);
    QCOMPARE(window.dispatch(ui::kCmdAutoRemoveCre), ui::DispatchResult::Done);
    fixture.interaction->answerYes = false;
    window.setTargetSpectrum(0);
    QCOMPARE(window.dispatch(ui::kCmdSave), ui::DispatchResult::Done);
    QCOMPARE(fixture.interaction->questions.size(), std::size_t{1});
    QVERIFY(fixture.interaction->questions[0].text.contains("cleaned.txt"));
    QCOMPARE(readFile(saved), before);

    // A folder that does not exist: the message, and nothing written.
    fixture.interaction->saveName =
        QString::fromStdString((fixture.home.path() / "missing" / "x.txt").string());
    window.dispatch(ui::kCmdSaveAs);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].title, QStringLiteral("Save"));
    QVERIFY(!std::filesystem::exists(fixture.home.path() / "missing"));
}

void SpectrumEditingTest::editDataFileReadsTheSpectrumAgainOrKeepsIt() {
    WindowFixture fixture;
    const auto copy = fixture.home.path() / "edited.txt";
    std::filesystem::copy_file(sourcePath("data/raman/examples/calcite_bwtek_532nm_icv.txt"), copy);
    fixture.window->openFiles({QString::fromStdString(copy.string())});
    const SpectrumRecord original = spectrumRecord(fixture.state.specdata, 0);
    fixture.interaction->onDialog = [](QDialog& dialog) {
        auto& editor = dynamic_cast<ui::DataFileEditor&>(dialog);
        if (!editor.text().contains("102.8400, 494.000")) {
            return int{QDialog::Rejected};
        }
        editor.editor()->setPlainText(
            editor.text().replace("102.8400, 494.000", "102.8400, 999.000"));
        return int{QDialog::Accepted};
    };
    QCOMPARE(fixture.window->dispatch(ui::kCmdEditDataFile), ui::DispatchResult::Done);
    QCOMPARE(fixture.state.specdata.yValues(0)[0], 999.0F);
    QCOMPARE(fixture.state.specdata.NUMDATA[0], static_cast<int>(original.x.size()));

    // A text that no longer reads: the message, and the spectrum keeps its values.
    fixture.interaction->onDialog = [](QDialog& dialog) {
        dynamic_cast<ui::DataFileEditor&>(dialog).editor()->setPlainText(
            QStringLiteral("no numbers at all\n"));
        return int{QDialog::Accepted};
    };
    QCOMPARE(fixture.window->dispatch(ui::kCmdEditDataFile), ui::DispatchResult::Done);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QVERIFY(fixture.interaction->errors[0].text.contains("No data points"));
    QCOMPARE(fixture.state.specdata.yValues(0)[0], 999.0F);

    // Undo brings the values before the first edit back.
    QCOMPARE(fixture.window->dispatch(ui::kCmdUndo), ui::DispatchResult::Done);
    QVERIFY(sameSpectrum(spectrumRecord(fixture.state.specdata, 0), original));
}

// A delimited file is read again as delimited text (the program's own reader finds no points in
// "100,5;1,25"); a binary file never reaches the text editor, and stays as it was.
void SpectrumEditingTest::editDataFileRereadsOtherFormatsAndRefusesBinaryFiles() {
    WindowFixture fixture;
    const auto delimited = fixture.home.path() / "decimal_comma.txt";
    std::filesystem::copy_file(sourcePath("tests/readers/data/semicolon_decimal_comma.txt"),
                               delimited);
    const auto binary = fixture.home.path() / "scan.spc";
    std::filesystem::copy_file(sourcePath("tests/readers/data/spc/new_float.spc"), binary);
    fixture.window->openFiles(
        {QString::fromStdString(delimited.string()), QString::fromStdString(binary.string())});
    QCOMPARE(fixture.state.specdata.count(), 2);
    int editorsShown = 0;
    fixture.interaction->onDialog = [&](QDialog& dialog) {
        ++editorsShown;
        auto& editor = dynamic_cast<ui::DataFileEditor&>(dialog);
        editor.editor()->setPlainText(editor.text().replace("200,5;-3,5", "200,5;7,75"));
        return int{QDialog::Accepted};
    };
    fixture.window->setTargetSpectrum(0);
    QCOMPARE(fixture.window->dispatch(ui::kCmdEditDataFile), ui::DispatchResult::Done);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{0});
    QCOMPARE(fixture.state.specdata.NUMDATA[0], 3);
    QCOMPARE(fixture.state.specdata.yValues(0)[1], 7.75F);

    const std::string spcBefore = readFile(binary);
    fixture.window->setTargetSpectrum(1);
    QCOMPARE(fixture.window->dispatch(ui::kCmdEditDataFile), ui::DispatchResult::Done);
    QCOMPARE(editorsShown, 1);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QVERIFY(fixture.interaction->errors[0].text.contains("binary file"));
    QCOMPARE(readFile(binary), spcBefore);
}

void SpectrumEditingTest::recentFilesListOpenedFilesAndDropAMissingOne() {
    WindowFixture fixture;
    const auto copy = fixture.home.path() / "copy.txt";
    std::filesystem::copy_file(sourcePath("data/raman/examples/calcite_horiba_633nm_top.txt"),
                               copy);
    fixture.window->openFiles({QString::fromStdString(copy.string())});
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    ui::MainWndProc& window = *fixture.window;
    const QList<QAction*> first = window.actionsFor(ui::kCmdRecentFileFirst);
    QVERIFY(first.front()->isVisible());
    QVERIFY(first.front()->text().endsWith("calcite_bwtek_532nm_icv.txt"));
    QVERIFY(window.actionsFor(ui::kCmdRecentFileFirst + 1).front()->text().endsWith("copy.txt"));
    QVERIFY(!window.actionsFor(ui::kCmdRecentFileFirst + 2).front()->isVisible());

    QCOMPARE(window.dispatch(ui::kCmdRecentFileFirst), ui::DispatchResult::Done);
    QCOMPARE(fixture.state.specdata.count(), 3);

    std::filesystem::remove(copy);
    QCOMPARE(window.dispatch(ui::kCmdRecentFileFirst + 1), ui::DispatchResult::Done);
    QCOMPARE(fixture.state.specdata.count(), 3);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QVERIFY(fixture.interaction->errors[0].text.contains("no longer exists"));
    QVERIFY(!window.actionsFor(ui::kCmdRecentFileFirst + 1).front()->isVisible());
}

} // namespace quarvex::test
