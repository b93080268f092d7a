// The X-ray Diffraction mode through the main window's dispatch, the dock's buttons and its
// tables, on the shipped quartz example and reference files.
#include "XrayDiffractionTest.h"

#include "UiTestSupport.h"

#include "ui/Commands.h"
#include "ui/SpectrumView.h"
#include "ui/XrayDialogs.h"
#include "ui/XrayDiffractionDock.h"
#include "ui/XrayPeakTable.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <tuple>

namespace quarvex::test {

namespace {

// The reference cell of Quartz.out, which the example pattern was drawn from.
constexpr double kQuartzA = 4.91239;
constexpr double kQuartzC = 5.40385;
constexpr double kCellTolerance = 2e-4; // relative: 0.02%

using ui::XrayPeakTable;

QString reference(const char* name) {
    return QString::fromStdString(sourcePath(std::string("data/xray/reference/") + name).string());
}

// The shipped example, copied into the home folder: a refinement writes beside its pattern.
QString patternCopy(const WindowFixture& fixture) {
    const std::filesystem::path copy = fixture.home.path() / "quartz_pattern.txt";
    std::filesystem::copy_file(sourcePath("examples/quartz_pattern.txt"), copy,
                               std::filesystem::copy_options::overwrite_existing);
    return QString::fromStdString(copy.string());
}

QAbstractButton* button(const QWidget& parent, const char* text) {
    for (QAbstractButton* b : parent.findChildren<QAbstractButton*>()) {
        if (b->text() == QString::fromUtf8(text)) {
            return b;
        }
    }
    qFatal("no button %s", text);
    return nullptr;
}

ui::XrayDiffractionDock& dockOf(const WindowFixture& fixture) {
    return *fixture.window->xrayDiffraction();
}

// Pattern opened, mode opened, Quartz.out opened, peaks found and indexed.
void prepare(WindowFixture& fixture) {
    fixture.window->openFiles({patternCopy(fixture)});
    fixture.window->dispatch(ui::kCmdXrayMode);
    dockOf(fixture).openReferences({reference("Quartz.out")});
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
}

const XrayPhase& phaseOf(const WindowFixture& fixture) {
    return fixture.state.xrayPeak.phases.front();
}

using Assigned = std::tuple<int, int, int, int, int>;

std::vector<Assigned> assigned(const XrayPhase& phase) {
    std::vector<Assigned> rows;
    for (const PeakAssignment& a : phase.assignments) {
        rows.emplace_back(a.peak, a.hkl[0], a.hkl[1], a.hkl[2], a.wave);
    }
    return rows;
}

// The indexed lines of a refinement input: every line after the five of its header, up to
// "stop".
std::vector<std::string> inputLines(const std::filesystem::path& input) {
    std::ifstream in(input);
    std::vector<std::string> lines;
    std::string line;
    for (int n = 0; std::getline(in, line) && line != "stop"; ++n) {
        if (n >= 5) {
            lines.push_back(line);
        }
    }
    return lines;
}

bool cellNearQuartz(const DATASTFF& data) {
    return std::abs(data.CELL[0] - kQuartzA) < kQuartzA * kCellTolerance &&
           std::abs(data.CELL[2] - kQuartzC) < kQuartzC * kCellTolerance;
}

QStringList tickLegends(const ui::SpectrumView& view) {
    QStringList legends;
    for (const ui::TickRow& row : view.reflectionTicks().rows) {
        legends.append(row.legend);
    }
    return legends;
}

} // namespace

// Open the pattern (1), open the mode (2), open the reference (3), Find & Fit Peaks, which
// indexes them at once (4), Refine (5): the refined cell is the reference cell.
void XrayDiffractionTest::workflowTakesFiveActions() {
    WindowFixture fixture;
    fixture.interaction->filesToOpen = {patternCopy(fixture)};
    fixture.window->actionsFor(ui::kCmdOpen).front()->trigger();     // 1
    fixture.window->actionsFor(ui::kCmdXrayMode).front()->trigger(); // 2
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    QVERIFY(dock.isVisible());
    fixture.interaction->filesToOpen = {reference("Quartz.out")};
    button(dock, "Open Reference...")->click(); // 3
    const ui::SpectrumView& view = *fixture.window->view();
    QCOMPARE(tickLegends(view), QStringList{QStringLiteral("Quartz.out")});
    QCOMPARE(view.reflectionTicks().rows[0].position.size(), std::size_t{28});
    QVERIFY(view.tickRect() != nullptr);

    button(dock, "Find && Fit Peaks")->click(); // 4
    const XrayPhase& phase = phaseOf(fixture);
    QCOMPARE(dock.peakTable()->topLevelItemCount(), phase.peaks.count());
    QVERIFY(phase.assignments.size() >= 20);
    // The strongest line, 0 1 1 at 26.65 degrees, shifted by the example's +0.02.
    const auto strongest = std::find_if(
        phase.assignments.begin(), phase.assignments.end(), [&](const PeakAssignment& a) {
            return std::abs(phase.peaks.twoTheta(a.peak) - 26.665F) < 0.01F;
        });
    QVERIFY(strongest != phase.assignments.end());
    QCOMPARE(dock.peakTable()->topLevelItem(strongest->peak)->text(XrayPeakTable::kHkl),
             QStringLiteral("0 1 1"));

    button(dock, "Refine")->click(); // 5
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{0});
    QVERIFY(cellNearQuartz(fixture.state.datastff));
    QVERIFY(std::abs(fixture.state.inoutparms.machineError + 0.02) < 0.01);
    QVERIFY(dock.cellText().contains(QStringLiteral("4.9123")));
    QVERIFY(dock.reportText().contains(QStringLiteral("MACHINE ERROR")));
    QVERIFY(std::filesystem::exists(fixture.home.path() / "quartz_pattern_refine.DAT"));

    // Another wavelength: the peaks' d follow Bragg's law, and they are indexed anew from the
    // reflections' positions at that wavelength.
    const int peak = strongest->peak;
    constexpr double kMolybdenum = 0.709319;
    constexpr double kDegree = 3.141592653589793 / 180.0;
    dock.setWavelength(kMolybdenum);
    const double theta = 0.5 * phase.peaks.twoTheta(peak) * kDegree;
    QVERIFY(std::abs(phase.peaks.PKDSP[static_cast<std::size_t>(peak)] -
                     kMolybdenum / (2.0 * std::sin(theta))) < 1e-5);
    for (const PeakAssignment& a : phase.assignments) {
        const auto input = std::find(phase.IHKL.begin(), phase.IHKL.end(), a.hkl);
        const double d = phase.IDSP[static_cast<std::size_t>(input - phase.IHKL.begin())];
        const double expected = 2.0 * std::asin(kMolybdenum / (2.0 * d)) / kDegree;
        QVERIFY(std::abs(a.referenceTwoTheta - expected) < 1e-3);
        QVERIFY(std::abs(phase.peaks.twoTheta(a.peak) - expected) <= 0.1);
    }
}

// Open Reference... offers CIFs and lists a CIF's computed pattern like a ".out" file; a broken
// CIF gets its message and leaves the list alone.
void XrayDiffractionTest::openReferenceComputesACif() {
    WindowFixture fixture;
    fixture.window->openFiles({patternCopy(fixture)});
    fixture.window->dispatch(ui::kCmdXrayMode);
    const auto broken = fixture.home.write("Broken.cif", "data_x\n_cell_length_b 5\n");
    fixture.interaction->filesToOpen = {reference("cif/SiO2-Quartz-alpha.cif"),
                                        QString::fromStdString(broken.string())};
    fixture.window->dispatch(ui::kCmdOpenReference);
    QVERIFY(fixture.interaction->openFilter.contains(QStringLiteral("(*.cif)")));
    const DIFF_GLOBALS& diff = fixture.state.diff;
    QCOMPARE(diff.NAME, std::vector<std::string>{"SiO2-Quartz-alpha.cif"});
    QCOMPARE(diff.NUMDATA[0], 28); // as Quartz.out
    QCOMPARE(dockOf(fixture).references()->topLevelItem(0)->text(2),
             QStringLiteral("SiO2-Quartz-alpha.cif"));
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].title, QStringLiteral("CIF Reference"));
    QVERIFY(fixture.interaction->errors[0].text.contains(QStringLiteral("\"_cell_length_a\"")));

    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QVERIFY(phaseOf(fixture).source.ends_with("SiO2-Quartz-alpha.cif"));
    QVERIFY(!assigned(phaseOf(fixture)).empty());
}

void XrayDiffractionTest::referenceListOrdersDeletesAndTicks() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    const std::vector<Assigned> fromQuartz = assigned(phaseOf(fixture));
    QCOMPARE(dock.openReferences({reference("Calcite.out"), reference("Halite.out")}), 2);
    const DIFF_GLOBALS& diff = fixture.state.diff;
    QCOMPARE(diff.NAME, (std::vector<std::string>{"Quartz.out", "Calcite.out", "Halite.out"}));
    QCOMPARE(dock.references()->topLevelItem(2)->text(2), QStringLiteral("Halite.out"));
    QCOMPARE(assigned(phaseOf(fixture)), fromQuartz); // further references are to compare
    const ui::SpectrumView& view = *fixture.window->view();
    QCOMPARE(tickLegends(view), (QStringList{"Quartz.out", "Calcite.out", "Halite.out"}));

    // Calcite moved to the top indexes the peaks.
    dock.selectReference(1);
    button(dock, "Up")->click();
    QCOMPARE(diff.NAME, (std::vector<std::string>{"Calcite.out", "Quartz.out", "Halite.out"}));
    QCOMPARE(tickLegends(view), (QStringList{"Calcite.out", "Quartz.out", "Halite.out"}));
    QVERIFY(phaseOf(fixture).source.ends_with("Calcite.out"));
    QVERIFY(assigned(phaseOf(fixture)) != fromQuartz);

    // Its tick box cleared, Quartz is the first ticked again and indexes as before.
    dock.references()->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QVERIFY(!diff.ACTIVE[0]);
    QCOMPARE(tickLegends(view), (QStringList{"Quartz.out", "Halite.out"}));
    QVERIFY(phaseOf(fixture).source.ends_with("Quartz.out"));
    QCOMPARE(assigned(phaseOf(fixture)), fromQuartz);

    dock.selectReference(2);
    button(dock, "Delete")->click();
    QCOMPARE(diff.NAME, (std::vector<std::string>{"Calcite.out", "Quartz.out"}));
    QCOMPARE(dock.references()->topLevelItemCount(), 2);
    QCOMPARE(tickLegends(view), QStringList{QStringLiteral("Quartz.out")});
}

void XrayDiffractionTest::assignmentEditsChangeTheRefinementInput() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    fixture.window->dispatch(ui::kCmdRefineCell);
    const std::filesystem::path input = dock.lastInput();
    const std::vector<std::string> before = inputLines(input);
    const std::vector<PeakAssignment> assignments = phaseOf(fixture).assignments;
    QCOMPARE(before.size(), assignments.size());
    XrayPeakTable& table = *dock.peakTable();

    // "none" unassigns the first indexed peak: its line leaves the input.
    table.topLevelItem(assignments[0].peak)->setText(XrayPeakTable::kHkl, QStringLiteral("none"));
    fixture.window->dispatch(ui::kCmdRefineCell);
    std::vector<std::string> after = inputLines(input);
    QCOMPARE(after, std::vector<std::string>(before.begin() + 1, before.end()));

    // A typed h k l replaces the second peak's; the table shows it.
    QTreeWidgetItem* second = table.topLevelItem(assignments[1].peak);
    second->setText(XrayPeakTable::kHkl, QStringLiteral("2 0 1"));
    QCOMPARE(second->text(XrayPeakTable::kHkl), QStringLiteral("2 0 1"));
    fixture.window->dispatch(ui::kCmdRefineCell);
    after = inputLines(input);
    QCOMPARE(after.size(), before.size() - 1);
    QVERIFY(after[0].starts_with("2 0 1 1 "));
    QCOMPARE(after[0].substr(8), before[1].substr(8)); // the same peak, weight and all

    // A peak taken out of use leaves the input too.
    table.topLevelItem(assignments[2].peak)->setCheckState(XrayPeakTable::kUse, Qt::Unchecked);
    QVERIFY(!phaseOf(fixture).peaks.USEPK[static_cast<std::size_t>(assignments[2].peak)]);
    fixture.window->dispatch(ui::kCmdRefineCell);
    QCOMPARE(inputLines(input).size(), before.size() - 2);
    QVERIFY(fixture.interaction->errors.empty());
}

void XrayDiffractionTest::projectReopensWithPeaksAndAssignments() {
    WindowFixture fixture;
    prepare(fixture);
    XrayPeakTable& table = *dockOf(fixture).peakTable();
    table.topLevelItem(phaseOf(fixture).assignments[0].peak)
        ->setText(XrayPeakTable::kHkl, QStringLiteral("none")); // the user's edit is kept too
    const XrayPhase saved = phaseOf(fixture);
    fixture.interaction->saveName =
        QString::fromStdString((fixture.home.path() / "quartz.xproj").string());
    QCOMPARE(fixture.window->dispatch(ui::kCmdSaveXrayProject), ui::DispatchResult::Done);
    const std::filesystem::path mainFile = fixture.home.path() / "quartz" / "quartz.xproj";
    QVERIFY(std::filesystem::exists(mainFile));
    QCOMPARE(fixture.state.xrayPeak.projectFile, mainFile);

    WindowFixture reopened;
    reopened.interaction->filesToOpen = {QString::fromStdString(mainFile.string())};
    QCOMPARE(reopened.window->dispatch(ui::kCmdOpenXrayProject), ui::DispatchResult::Done);
    QVERIFY(reopened.interaction->errors.empty());
    QCOMPARE(reopened.state.specdata.count(), 1);
    QCOMPARE(reopened.state.specdata.NUMDATA[0], fixture.state.specdata.NUMDATA[0]);
    const XrayPhase& phase = phaseOf(reopened);
    QCOMPARE(phase.peaks.PKPRMS, saved.peaks.PKPRMS);
    QCOMPARE(phase.peaks.USEPK, saved.peaks.USEPK);
    QCOMPARE(assigned(phase), assigned(saved));
    QCOMPARE(dockOf(reopened).peakTable()->topLevelItemCount(), saved.peaks.count());
    QCOMPARE(tickLegends(*reopened.window->view()), QStringList{QStringLiteral("Quartz.out")});
    reopened.window->dispatch(ui::kCmdRefineCell);
    QVERIFY(cellNearQuartz(reopened.state.datastff));
}

void XrayDiffractionTest::projectReopensWithItsLastRefinement() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    button(dock, "Refine")->click();
    const QString cell = dock.cellText();
    const QString report = dock.reportText();
    QVERIFY(cell.contains(QStringLiteral("%1 lines").arg(fixture.state.datastff.NREF)));
    QVERIFY(report.contains(QStringLiteral("Refined cell:")));
    fixture.interaction->saveName =
        QString::fromStdString((fixture.home.path() / "quartz.xproj").string());
    QCOMPARE(fixture.window->dispatch(ui::kCmdSaveXrayProject), ui::DispatchResult::Done);
    const std::filesystem::path mainFile = fixture.home.path() / "quartz" / "quartz.xproj";
    // The run's own report may change or go: the project keeps its copy.
    std::filesystem::remove(fixture.state.inoutparms.reportPath);

    WindowFixture reopened;
    reopened.interaction->filesToOpen = {QString::fromStdString(mainFile.string())};
    QCOMPARE(reopened.window->dispatch(ui::kCmdOpenXrayProject), ui::DispatchResult::Done);
    QVERIFY(reopened.interaction->errors.empty());
    reopened.window->dispatch(ui::kCmdXrayMode);
    ui::XrayDiffractionDock& again = dockOf(reopened);
    QCOMPARE(again.cellText(), cell);
    QCOMPARE(again.reportText(), report);
    QVERIFY(button(again, "Open Report")->isEnabled());
    // The reopened cell saves as text too.
    const std::filesystem::path summary = reopened.home.path() / "cell.txt";
    reopened.interaction->saveName = QString::fromStdString(summary.string());
    button(again, "Save Cell...")->click();
    QVERIFY(reopened.interaction->errors.empty());
    QVERIFY(readFile(summary).starts_with(
        "Refined cell: HEXAGONAL, " + std::to_string(fixture.state.datastff.NREF) + " lines\n"));

    // Peaks found anew are not the refined ones: the cell goes, and so does the kept record.
    reopened.window->dispatch(ui::kCmdFindXrayPeaks);
    QVERIFY(again.cellText().contains(QStringLiteral("Refine to see the cell")));
    QCOMPARE(reopened.window->dispatch(ui::kCmdSaveXrayProject), ui::DispatchResult::Done);
    QVERIFY(!std::filesystem::exists(refinedRecordPath(mainFile)));
}

void XrayDiffractionTest::createSpectrumFromDifAddsAPattern() {
    WindowFixture fixture;
    fixture.window->openFiles({patternCopy(fixture)});
    fixture.window->dispatch(ui::kCmdXrayMode);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    dock.openReferences({reference("Halite.out")});
    fixture.interaction->onDialog = [](QDialog&) { return QDialog::Accepted; };
    QCOMPARE(dock.dispatch(ui::kCmdCreateSpectrumFromDif), ui::DispatchResult::Done);
    QCOMPARE(fixture.interaction->dialogs.back(), QStringLiteral("Create Spectrum From DIF"));
    const SPECDATA_GLOBALS& s = fixture.state.specdata;
    QCOMPARE(s.count(), 2);
    QCOMPARE(s.DTYPE[1], std::string("XRD"));
    QCOMPARE(std::filesystem::path(s.PATH[1]),
             fixture.home.path() / "TempFold" / "Halite_theoretical.txt");
    // Halite.out runs from 27.37 to 83.99 degrees: 25 to 86 in steps of 0.01.
    QCOMPARE(s.NUMDATA[1], 6101);
    QCOMPARE(fixture.window->view()->drawnSpectra().size(), std::size_t{2});

    // The new pattern is the active one, and a pattern like any other.
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QVERIFY(fixture.interaction->errors.empty());
    QCOMPARE(fixture.state.xrayPeak.pattern, 1);
    QCOMPARE(phaseOf(fixture).assignments.size(), std::size_t{9});
}

void XrayDiffractionTest::popupCommandsDispatchOnTheSelectedReference() {
    WindowFixture fixture;
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    // With a Raman spectrum the mode opens, but there is no pattern to fit.
    QCOMPARE(fixture.window->dispatch(ui::kCmdXrayMode), ui::DispatchResult::Done);
    QCOMPARE(fixture.window->dispatch(ui::kCmdFindXrayPeaks), ui::DispatchResult::Greyed);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    QCOMPARE(dock.dispatch(ui::kCmdOpenOriginalDif), ui::DispatchResult::Greyed);
    QCOMPARE(dock.dispatch(ui::kCmdFindPeaks), ui::DispatchResult::Unknown);

    dock.openReferences({reference("Quartz.out")});
    QString shown;
    int rows = -1;
    fixture.interaction->onDialog = [&](QDialog& dialog) {
        if (const auto* text = qobject_cast<ui::TextViewDialog*>(&dialog)) {
            shown = text->text();
        } else if (const auto* table = qobject_cast<ui::ReferenceTableDialog*>(&dialog)) {
            rows = table->table()->topLevelItemCount();
        }
        return QDialog::Rejected;
    };
    const auto& dialogs = fixture.interaction->dialogs;
    QCOMPARE(dock.dispatch(ui::kCmdOpenOriginalDif), ui::DispatchResult::Done);
    QCOMPARE(dialogs.back(), QStringLiteral("Quartz.out (original)"));
    QVERIFY(shown.contains(QStringLiteral("CELL PARAMETERS:")));
    QCOMPARE(dock.dispatch(ui::kCmdOpenAdjustedDif), ui::DispatchResult::Done);
    QVERIFY(shown.startsWith(QStringLiteral("PATH ")));
    QVERIFY(shown.contains(QStringLiteral("\nNAME Quartz.out\n")));
    QCOMPARE(dock.dispatch(ui::kCmdViewReference), ui::DispatchResult::Done);
    QCOMPARE(dialogs.back(), QStringLiteral("Reference Quartz.out"));
    QCOMPARE(rows, 28);
    QCOMPARE(dock.dispatch(ui::kCmdOpenGreltDatabase), ui::DispatchResult::Greyed);

    // The main window's pop-ups, as the list and the View... button show them.
    QMenu& files = *fixture.window->diffractionFilePopup();
    emit files.aboutToShow();
    for (const QAction* action : files.actions()) {
        QVERIFY(action->isEnabled());
    }
    files.actions().front()->trigger();
    QCOMPARE(dialogs.back(), QStringLiteral("Quartz.out (original)"));
    QMenu& references = *fixture.window->referencePopup();
    emit references.aboutToShow();
    QVERIFY(references.actions()[0]->isEnabled());
    QVERIFY(!references.actions()[1]->isEnabled());
    QVERIFY(fixture.interaction->errors.empty());
}

// Runs without a user (the screenshots of the documentation) answer every box at once.
void XrayDiffractionTest::unattendedRunsNeverWait() {
    TempFolder home;
    ProgramState state;
    ui::MainWndProc window(
        state, {home.path(), sourcePath("docs"), std::make_shared<ui::UnattendedInteraction>()});
    window.setCoreHooks({});
    window.startUp();
    bool waited = false;
    QTimer watchdog;
    watchdog.setSingleShot(true);
    QObject::connect(&watchdog, &QTimer::timeout, [&waited] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            waited = true;
            modal->close();
        }
    });
    watchdog.start(3000);
    QCOMPARE(window.dispatch(ui::kCmdConsistencyExam), ui::DispatchResult::Done);
    QCOMPARE(window.openFiles({QString::fromStdString((home.path() / "none.txt").string())}), 0);
    QCOMPARE(window.dispatch(ui::kCmdAbout), ui::DispatchResult::Done);
    QVERIFY(!waited);
}

// "Refine zero" beside "Correct the zero error": the refinement's report gains the joint section
// with the example's zero shift (+0.02 deg: a correction of -0.02) found again; without the
// tick the report ends where it did.
void XrayDiffractionTest::refineZeroAddsTheJointSection() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    button(dock, "Refine")->click();
    QVERIFY(!dock.reportText().contains(QStringLiteral("Joint refinement")));
    button(dock, "Refine zero")->click();
    button(dock, "Refine")->click();
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{0});
    const QString report = dock.reportText();
    QVERIFY(report.contains(QStringLiteral("Joint refinement in 2-theta")));
    const qsizetype at = report.indexOf(QStringLiteral("   Zero = "));
    QVERIFY(at > 0);
    const double zero = report.mid(at + 10, 12).trimmed().toDouble();
    QVERIFY2(std::abs(zero + 0.02) < 0.01, qPrintable(report.mid(at, 40)));

    // The lines the joint refinement flags are marked in the matched table.
    XrayPeakTable& table = *dock.peakTable();
    int marked = 0;
    for (int row = 0; row < table.topLevelItemCount(); ++row) {
        marked += table.topLevelItem(row)
                          ->toolTip(XrayPeakTable::kHkl)
                          .startsWith(QStringLiteral("Flagged by the joint refinement"))
                      ? 1
                      : 0;
    }
    QVERIFY(marked > 0);
    // Taking a line out of use refines again at once.
    const int lines = fixture.state.datastff.NREF;
    const PeakAssignment first = phaseOf(fixture).assignments.front();
    table.topLevelItem(first.peak)->setCheckState(XrayPeakTable::kUse, Qt::Unchecked);
    QCOMPARE(fixture.state.datastff.NREF, lines - 1);
    QVERIFY(dock.reportText().contains(QStringLiteral("Joint refinement in 2-theta")));
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{0});
}

// A colour or a tooltip set on a row is an item change too, but no edit: only a tick that really
// changes is a Use toggle, only a new text an h k l edit.
void XrayDiffractionTest::onlyRealEditsOfARowAreSignalled() {
    WindowFixture fixture;
    prepare(fixture);
    XrayPeakTable& table = *dockOf(fixture).peakTable();
    QSignalSpy toggled(&table, &XrayPeakTable::useToggled);
    QSignalSpy edited(&table, &XrayPeakTable::hklEdited);
    const int peak = phaseOf(fixture).assignments.front().peak;
    QTreeWidgetItem& row = *table.topLevelItem(peak);
    for (int column = 0; column < XrayPeakTable::kColumns; ++column) {
        row.setBackground(column, QColor(0xff, 0xe0, 0xe0));
        row.setToolTip(column, QStringLiteral("flagged"));
    }
    const Qt::CheckState shown = row.checkState(XrayPeakTable::kUse);
    row.setCheckState(XrayPeakTable::kUse, shown);
    row.setText(XrayPeakTable::kHkl, row.text(XrayPeakTable::kHkl));
    QCOMPARE(toggled.count(), 0);
    QCOMPARE(edited.count(), 0);

    const Qt::CheckState other = shown == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    table.topLevelItem(peak)->setCheckState(XrayPeakTable::kUse, other);
    QCOMPARE(toggled.count(), 1);
    QCOMPARE(toggled.front().at(1).toBool(), other == Qt::Checked);
    table.topLevelItem(peak)->setText(XrayPeakTable::kHkl, QStringLiteral("none"));
    QCOMPARE(edited.count(), 1);
}

// After Refine each refined line shows observed minus calculated 2-theta; after the joint
// refinement also its hat value, Rstudent and DFFITS, which obey the identities of the linear
// model: the hat values add up to the parameter count, DFFITS = Rstudent sqrt(h / (1 - h)).
void XrayDiffractionTest::matchedTableShowsTheFitOfEachLine() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    XrayPeakTable& table = *dock.peakTable();
    const auto filled = [&table](int column) {
        int rows = 0;
        for (int row = 0; row < table.topLevelItemCount(); ++row) {
            rows += table.topLevelItem(row)->text(column).isEmpty() ? 0 : 1;
        }
        return rows;
    };
    QCOMPARE(filled(XrayPeakTable::kObsMinusCalc), 0);
    button(dock, "Refine")->click();
    const int lines = fixture.state.datastff.NREF;
    QVERIFY(lines > 5);
    QCOMPARE(filled(XrayPeakTable::kObsMinusCalc), lines);
    QCOMPARE(filled(XrayPeakTable::kHat), 0);
    for (int row = 0; row < table.topLevelItemCount(); ++row) {
        const QString text = table.topLevelItem(row)->text(XrayPeakTable::kObsMinusCalc);
        QVERIFY2(text.isEmpty() || std::abs(text.toDouble()) < 0.02, qPrintable(text));
    }

    button(dock, "Refine zero")->click();
    button(dock, "Refine")->click();
    QCOMPARE(filled(XrayPeakTable::kHat), lines);
    QCOMPARE(filled(XrayPeakTable::kRstudent), lines);
    QCOMPARE(filled(XrayPeakTable::kDffits), lines);
    double hatSum = 0.0;
    for (int row = 0; row < table.topLevelItemCount(); ++row) {
        const QTreeWidgetItem& item = *table.topLevelItem(row);
        if (item.text(XrayPeakTable::kHat).isEmpty()) {
            continue;
        }
        const double hat = item.text(XrayPeakTable::kHat).toDouble();
        const double rstudent = item.text(XrayPeakTable::kRstudent).toDouble();
        hatSum += hat;
        // Both printed to 2 or 3 decimals: the identity holds to their rounding.
        QVERIFY(std::abs(item.text(XrayPeakTable::kDffits).toDouble() -
                         rstudent * std::sqrt(hat / (1.0 - hat))) < 0.02);
    }
    // Hexagonal quartz: a, c and the zero.
    QVERIFY2(std::abs(hatSum - 3.0) < 0.0005 * lines + 1e-9, qPrintable(QString::number(hatSum)));

    // Peaks found anew: no refinement speaks of them.
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QCOMPARE(filled(XrayPeakTable::kObsMinusCalc), 0);
    QCOMPARE(filled(XrayPeakTable::kHat), 0);
}

// The plot under the pattern holds one point per refined line, at the peak's 2-theta of the
// matched table and with the table's obs-calc (printed to 4 decimals); it follows the view's x
// range and goes when the refinement no longer speaks of the peaks.
void XrayDiffractionTest::lineResidualsArePlottedUnderThePattern() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    const ui::SpectrumView& view = *fixture.window->view();
    const XrayPeakTable& table = *dock.peakTable();
    QVERIFY(view.lineResidualRect() == nullptr);

    button(dock, "Refine")->click();
    QCPAxisRect* strip = view.lineResidualRect();
    QVERIFY(strip != nullptr);
    QCPGraph* points = nullptr;
    for (QCPGraph* graph : strip->graphs()) {
        if (graph->scatterStyle().shape() != QCPScatterStyle::ssNone) {
            points = graph;
        }
    }
    QVERIFY(points != nullptr);
    QCOMPARE(points->dataCount(), fixture.state.datastff.NREF);
    int matched = 0;
    for (int row = 0; row < table.topLevelItemCount(); ++row) {
        const QTreeWidgetItem& item = *table.topLevelItem(row);
        if (item.text(XrayPeakTable::kObsMinusCalc).isEmpty()) {
            continue;
        }
        const double twoTheta = item.text(XrayPeakTable::kTwoTheta).toDouble();
        const double obsMinusCalc = item.text(XrayPeakTable::kObsMinusCalc).toDouble();
        for (auto point = points->data()->constBegin(); point != points->data()->constEnd();
             ++point) {
            // The table prints 2-theta to 3 decimals and obs-calc to 4.
            if (std::abs(point->key - twoTheta) < 0.0005 + 1e-9 &&
                std::abs(point->value - obsMinusCalc) < 0.00005 + 1e-12) {
                ++matched;
                break;
            }
        }
    }
    QCOMPARE(matched, fixture.state.datastff.NREF);
    const QCPRange shown = strip->axis(QCPAxis::atBottom)->range();
    QCOMPARE(shown.lower, view.xAxis->range().lower);
    QCOMPARE(shown.upper, view.xAxis->range().upper);

    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QVERIFY(view.lineResidualRect() == nullptr);
}

// The quartz pattern's tight clusters (near 55 and 68 degrees) hold peaks of different heights:
// each label stands over its own peak, and none may cover another.
void XrayDiffractionTest::peakLabelsInTightClustersDoNotOverlap() {
    WindowFixture fixture;
    fixture.window->resize(1440, 900);
    prepare(fixture);
    ui::SpectrumView& view = *fixture.window->view();
    const std::vector<QRectF> labels = peakLabelRects(view);
    QCOMPARE(labels.size(), static_cast<std::size_t>(phaseOf(fixture).peaks.count()));
    for (std::size_t i = 0; i < labels.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            QVERIFY2(!labels[i].intersects(labels[j]),
                     qPrintable(QStringLiteral("labels %1 and %2").arg(j).arg(i)));
        }
    }
}

// Before a refinement its empty columns are out of the way; after the joint refinement every
// column of the matched table shows at once, without scrolling sideways.
void XrayDiffractionTest::matchedTableShowsEveryColumnWithoutScrolling() {
    WindowFixture fixture;
    fixture.window->resize(1440, 900);
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    XrayPeakTable& table = *dock.peakTable();
    QVERIFY(table.isColumnHidden(XrayPeakTable::kDffits));
    button(dock, "Refine zero")->click();
    button(dock, "Refine")->click();
    QApplication::processEvents();
    for (int column = 0; column < XrayPeakTable::kColumns; ++column) {
        QVERIFY2(!table.isColumnHidden(column), qPrintable(QString::number(column)));
    }
    QCOMPARE(table.horizontalScrollBar()->maximum(), 0);
    const int dffitsEnd = table.header()->sectionViewportPosition(XrayPeakTable::kDffits) +
                          table.header()->sectionSize(XrayPeakTable::kDffits);
    QVERIFY(dffitsEnd <= table.viewport()->width());
}

// Peaks found with K-alpha2 stripped stay matched with K-alpha1 alone when the user then types
// the wavelength (within the reference's K-alpha1, whose K-alpha2 would otherwise come back).
void XrayDiffractionTest::typedWavelengthKeepsKAlpha2Stripped() {
    WindowFixture fixture;
    // Quartz.out with both lines of copper: each reflection also at K-alpha2 (Bragg's law from
    // its d), at half the intensity.
    constexpr double kAlpha2 = 1.544390;
    std::ifstream in(reference("Quartz.out").toStdString());
    std::string two;
    for (std::string line; std::getline(in, line);) {
        std::istringstream fields(line);
        double twoTheta = 0.0;
        double intensity = 0.0;
        double d = 0.0;
        int h = 0;
        int k = 0;
        int l = 0;
        if (line.starts_with("X-RAY WAVELENGTH:")) {
            line = "X-RAY WAVELENGTHS: 1.540562 " + std::to_string(kAlpha2);
        } else if (fields >> twoTheta >> intensity >> d >> h >> k >> l) {
            const double twoTheta2 =
                2.0 * std::asin(kAlpha2 / (2.0 * d)) * 180.0 / std::numbers::pi;
            line = QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8")
                       .arg(twoTheta, 0, 'f', 2)
                       .arg(intensity, 0, 'f', 2)
                       .arg(d, 0, 'f', 4)
                       .arg(twoTheta2, 0, 'f', 2)
                       .arg(intensity / 2.0, 0, 'f', 2)
                       .arg(h)
                       .arg(k)
                       .arg(l)
                       .toStdString();
        }
        two += line + "\n";
    }
    const auto quartz = fixture.home.write("QuartzTwoLines.out", two);
    fixture.window->openFiles({patternCopy(fixture)});
    fixture.window->dispatch(ui::kCmdXrayMode);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    dock.openReferences({QString::fromStdString(quartz.string())});
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QCOMPARE(fixture.state.xrayPeak.wavelengths.size(), std::size_t{2});
    button(dock, "Strip Kα2")->click();
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QCOMPARE(fixture.state.xrayPeak.wavelengths.size(), std::size_t{1});

    auto* wavelength = dock.findChild<QDoubleSpinBox*>();
    QVERIFY(wavelength != nullptr);
    wavelength->setFocus();
    wavelength->selectAll();
    QTest::keyClicks(wavelength, QStringLiteral("1.5406"));
    QTest::keyClick(wavelength, Qt::Key_Return);
    QVERIFY(std::abs(fixture.state.xrayPeak.wavelengths.front() - 1.5406) < 1e-9);
    QCOMPARE(fixture.state.xrayPeak.wavelengths.size(), std::size_t{1});
    for (const PeakAssignment& a : phaseOf(fixture).assignments) {
        QCOMPARE(a.wave, 1);
    }
}

void XrayDiffractionTest::stripKAlpha2IsPreviewedAndFittedPeaksAreMarked() {
    WindowFixture fixture;
    prepare(fixture);
    ui::XrayDiffractionDock& dock = dockOf(fixture);
    const ui::SpectrumView& view = *fixture.window->view();
    QCOMPARE(view.peakMarks().spectrum, 0);
    QCOMPARE(view.peakMarks().found.size(),
             static_cast<std::size_t>(phaseOf(fixture).peaks.count()));
    QCOMPARE(view.peakMarks().found.front(), phaseOf(fixture).peaks.twoTheta(0));
    QVERIFY(!view.fitOverlay().has_value());

    button(dock, "Strip Kα2")->click();
    QVERIFY(view.fitOverlay().has_value());
    const ui::FitOverlay& preview = *view.fitOverlay();
    const auto y = fixture.state.specdata.yValues(0);
    QCOMPARE(preview.measured, std::vector<float>(y.begin(), y.end()));
    QCOMPARE(preview.fitted.size(), preview.measured.size());
    // Nothing lies below the first point to strip; past a peak, its K-alpha2 share comes off.
    QCOMPARE(preview.fitted.front(), preview.measured.front());
    QVERIFY(preview.fitted != preview.measured);
    fixture.window->dispatch(ui::kCmdFindXrayPeaks);
    QVERIFY(fixture.interaction->errors.empty());
    QCOMPARE(fixture.state.xrayPeak.wavelengths.size(), std::size_t{1});
    for (const PeakAssignment& a : phaseOf(fixture).assignments) {
        QCOMPARE(a.wave, 1);
    }
    button(dock, "Strip Kα2")->click();
    QVERIFY(!view.fitOverlay().has_value());

    dock.close(); // closing the mode takes its marks away
    QVERIFY(view.peakMarks().found.empty());
}

} // namespace quarvex::test
