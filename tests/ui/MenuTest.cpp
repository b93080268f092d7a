// The menus and pop-ups of the main window, item by item, and which commands can run when.
#include "MenuTest.h"

#include "UiTestSupport.h"

#include "ui/Commands.h"
#include "ui/HelpWindow.h"
#include "ui/MenuResource.h"
#include "ui/TextViewer.h"

#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QTextBrowser>

namespace quarvex::test {

namespace {

// One line per row: "30003 &Open...\tCtrl+O", "---" for a separator, ">Trim" ... "<" around a
// sub-menu. The hidden rows of the recent-file list are left out.
void describe(const QMenu* menu, QStringList& lines) {
    for (const QAction* action : menu->actions()) {
        const int command = action->data().toInt();
        if (command >= ui::kCmdRecentFileFirst && command <= ui::kCmdRecentFileLast &&
            !action->isVisible()) {
            continue;
        }
        if (action->isSeparator()) {
            lines.append(QStringLiteral("---"));
        } else if (action->menu() != nullptr) {
            lines.append(QLatin1Char('>') + action->text());
            describe(action->menu(), lines);
            lines.append(QStringLiteral("<"));
        } else {
            QString line = QString::number(command) + QLatin1Char(' ') + action->text();
            if (!action->shortcut().isEmpty()) {
                line += QLatin1Char('\t') + action->shortcut().toString();
            }
            lines.append(line);
        }
    }
}

QStringList describe(const QMenu* menu) {
    QStringList lines;
    describe(menu, lines);
    return lines;
}

void describe(std::span<const ui::MenuEntry> entries, QStringList& lines) {
    for (const ui::MenuEntry& entry : entries) {
        const QString text = QString::fromUtf8(entry.text.data(), entry.text.size());
        if (entry.isSeparator()) {
            lines.append(QStringLiteral("---"));
        } else if (entry.isSubMenu()) {
            lines.append(QLatin1Char('>') + text);
            describe(entry.items, lines);
            lines.append(QStringLiteral("<"));
        } else {
            lines.append(QString::number(entry.command) + QLatin1Char(' ') + text);
        }
    }
}

QStringList describe(const ui::MenuResource& resource) {
    QStringList lines;
    describe(resource.items, lines);
    return lines;
}

// The menus as the program's documentation of its window lists them.
const QStringList kFileMenu = {"30003 &Open...\tCtrl+O",
                               "30019 Open2",
                               "---",
                               "30004 &Save\tCtrl+S",
                               "30005 Save &As...\tCtrl+Shift+S",
                               "---",
                               "30006 &Print...\tCtrl+P",
                               "30007 P&rint Setup...\tCtrl+Shift+P",
                               "---",
                               "30001 E&xit\tCtrl+Q"};
const QStringList kEditMenu = {"30008 &Undo\tCtrl+Z", "30032 &Redo\tCtrl+Y", "---",
                               "30062 Preferences"};
const QStringList kModeMenu = {"30033 File Manager", "30050 Edit Spectrum", "30034 Raman Search",
                               "30017 X-ray Diffraction"};
const QStringList kHelpMenu = {"30012 &Contents", "30013 &Search for Help On...",
                               "30014 &How to Use Help", "---", "30015 &About Quarvex..."};
const QStringList kViewPopup = {"30003 Open...",
                                "---",
                                "30008 Undo",
                                "30032 Redo",
                                "---",
                                "30031 Zoom Full",
                                "---",
                                "30018 Reverse X-Axis",
                                "30016 Auto Remove Background",
                                "30035 Auto Remove CRE",
                                "---",
                                ">Trim",
                                "30028 left of cursor",
                                "30029 right of cursor",
                                "<"};
const QStringList kSpectrumPopup = {
    "30059 NAME",         "---", "30054 Make Invisible", "30055 Make Primary",     "---",
    "30056 Adjust Scale", "---", "30057 Edit Data File", "30060 Adjust Data Type", "---",
    "30058 Delete"};
const QStringList kDiffractionFilePopup = {"30038 Open Original...", "30040 Open Adjusted...",
                                           "30046 Create Spectrum From DIF"};
const QStringList kReferencePopup = {"30043 View...", "30044 Open GRELT Database...."};

} // namespace

void MenuTest::menusMatchTheirTable() {
    WindowFixture fixture;
    const QList<QAction*> menus = fixture.window->menuBar()->actions();
    const struct {
        const char* title;
        const QStringList* items;
    } expected[] = {
        {"&File", &kFileMenu}, {"&Edit", &kEditMenu}, {"Mode", &kModeMenu}, {"&Help", &kHelpMenu}};
    QCOMPARE(menus.size(), 4);
    for (int m = 0; m < 4; ++m) {
        QCOMPARE(menus[m]->text(), QString::fromUtf8(expected[m].title));
        QCOMPARE(describe(ui::mainMenuResource()[static_cast<std::size_t>(m)]), *expected[m].items);
        // At run time the second open item carries its own text.
        QStringList shown = *expected[m].items;
        shown.replaceInStrings(QStringLiteral("30019 Open2"),
                               QStringLiteral("30019 Open &Another...\tCtrl+Shift+O"));
        QCOMPARE(describe(menus[m]->menu()), shown);
    }
}

void MenuTest::popupsMatchTheirTable() {
    WindowFixture fixture;
    const ui::MainWndProc& window = *fixture.window;
    const struct {
        const QMenu* menu;
        const ui::MenuResource& resource;
        const QStringList& items;
    } popups[] = {
        {window.viewPopup(), ui::viewPopupResource(), kViewPopup},
        {window.spectrumPopup(), ui::spectrumPopupResource(), kSpectrumPopup},
        {window.diffractionFilePopup(), ui::diffractionFilePopupResource(), kDiffractionFilePopup},
        {window.referencePopup(), ui::referencePopupResource(), kReferencePopup}};
    for (const auto& popup : popups) {
        QCOMPARE(describe(popup.resource), popup.items);
        QCOMPARE(describe(popup.menu), popup.items);
    }
}

void MenuTest::openItemsFollowTheState() {
    WindowFixture fixture;
    const auto open = fixture.window->actionsFor(ui::kCmdOpen);
    const auto another = fixture.window->actionsFor(ui::kCmdOpen2);
    QCOMPARE(another.size(), 1);
    QVERIFY2(!another.front()->isVisible(), "nothing loaded: only Open");
    QVERIFY(open.front()->isEnabled());
    QCOMPARE(open.front()->shortcut(), QKeySequence(QStringLiteral("Ctrl+O")));
    fixture.open({"calcite_bwtek_532nm_icv.txt"});
    QVERIFY(another.front()->isVisible());
    QVERIFY(another.front()->isEnabled());
    QCOMPARE(another.front()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+O")));
}

void MenuTest::everyCommandDispatchesOrIsGreyed() {
    using ui::DispatchResult;
    constexpr auto done = DispatchResult::Done;
    constexpr auto greyed = DispatchResult::Greyed;
    const struct {
        int command;
        DispatchResult empty;  // nothing loaded
        DispatchResult loaded; // two spectra loaded
    } rows[] = {
        {30003, done, done},
        {30019, greyed, done},
        {30004, greyed, done},
        {30005, greyed, done},
        {30006, greyed, done},
        {30007, done, done},
        {30008, greyed, greyed},
        {30032, greyed, greyed},
        {30062, done, done},
        {30033, done, done},
        {30050, greyed, done},
        {30034, greyed, done},
        {30017, done, done},
        {30012, done, done},
        {30013, done, done},
        {30014, done, done},
        {30015, done, done},
        {30031, greyed, done},
        {30018, done, done},
        {30016, greyed, done},
        {30035, greyed, done},
        {30028, greyed, done},
        {30029, greyed, done},
        {30039, greyed, done},
        {30048, greyed, greyed},
        {30059, greyed, done},
        {30054, greyed, done},
        {30055, greyed, done},
        {30056, greyed, done},
        {30057, greyed, done},
        {30060, greyed, done},
        {30052, done, done},
        {30070, greyed, done},
        {30071, greyed, done},
        {30072, done, done},
        {30090, greyed, done},
        {30091, greyed, done},
        {30058, greyed, done},
        // The X-ray mode's buttons; the spectra loaded are Raman spectra, not patterns.
        {30078, greyed, done},
        {30079, greyed, greyed},
        {30080, greyed, greyed},
        {30081, greyed, greyed},
        {30082, done, done},
        {30083, greyed, greyed},
    };
    WindowFixture fixture;
    fixture.interaction->saveName =
        QString::fromStdString((fixture.home.path() / "v.png").string());
    for (const bool loaded : {false, true}) {
        if (loaded) {
            fixture.open({"calcite_bwtek_532nm_icv.txt", "mixture_calcite_dolomite_quartz.txt"});
        }
        for (const auto& row : rows) {
            const DispatchResult expected = loaded ? row.loaded : row.empty;
            const QByteArray what =
                QByteArray::number(row.command) + (loaded ? " loaded" : " empty");
            QVERIFY2(fixture.window->dispatch(row.command) == expected, what.constData());
            for (const QAction* action : fixture.window->actionsFor(row.command)) {
                QVERIFY2(action->isEnabled() == (expected == done), what.constData());
            }
        }
    }
    for (const auto& error : fixture.interaction->errors) {
        // A machine without printers answers Print Setup with a message; nothing else may fail.
        QVERIFY2(error.title == QStringLiteral("Print Setup"),
                 qPrintable(error.title + QStringLiteral(": ") + error.text));
    }
    QCOMPARE(fixture.window->dispatch(30038), DispatchResult::Unknown);
    QCOMPARE(fixture.window->dispatch(12345), DispatchResult::Unknown);
}

void MenuTest::consistencyExamAsksItsQuestion() {
    WindowFixture fixture(WindowFixture::DefaultLibrary{});
    fixture.window->dispatch(ui::kCmdConsistencyExam);
    QCOMPARE(fixture.interaction->questions.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->questions[0].text,
             QStringLiteral("Run Consistency Exam? The Process Can Take Several Hours!"));
    QCOMPARE(fixture.interaction->questions[0].title,
             QStringLiteral("Raman Library Consistency Exam"));
    QVERIFY(fixture.interaction->informations.empty());
    QVERIFY(fixture.interaction->openedUrls.empty());

    // Yes examines the library and opens the report.
    fixture.interaction->answerYes = true;
    fixture.window->dispatch(ui::kCmdConsistencyExam);
    QCOMPARE(fixture.interaction->informations.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->informations[0].title,
             QStringLiteral("Raman Library Consistency Exam"));
    QVERIFY2(
        fixture.interaction->informations[0].text.startsWith(QStringLiteral("67 entries examined")),
        qPrintable(fixture.interaction->informations[0].text));
    // The report shows in the program's own viewer, no outside program needed.
    QVERIFY(fixture.interaction->openedUrls.empty());
    const auto viewers = fixture.window->findChildren<ui::TextViewer*>();
    QCOMPARE(viewers.size(), 1);
    QVERIFY(viewers[0]->isVisible());
    QCOMPARE(viewers[0]->text(),
             QString::fromStdString(
                 readFile(fixture.home.path() / "SearchRecords" / "ConsistencyReport.txt")));
    QVERIFY(fixture.interaction->errors.empty());
}

void MenuTest::helpOpensTheShippedDocumentation() {
    const struct {
        int command;
        const char* page;
    } rows[] = {{ui::kCmdHelpContents, "desktop.html"},
                {ui::kCmdHelpSearch, "index.html"},
                {ui::kCmdHelpOnHelp, "help.html"}};
    WindowFixture fixture;
    fixture.interaction->openSucceeds = false; // no browser on this machine: help still shows
    for (const auto& row : rows) {
        fixture.window->dispatch(row.command);
        const ui::HelpWindow* help = fixture.window->helpWindow();
        QVERIFY2(help != nullptr && help->isVisible(), row.page);
        const QString shown = help->browser()->source().toLocalFile();
        QVERIFY2(shown.endsWith(QString::fromUtf8(row.page)), row.page);
        QVERIFY2(!help->browser()->toPlainText().isEmpty(), row.page);
    }
    QVERIFY(fixture.interaction->errors.empty());
    QVERIFY(fixture.interaction->openedUrls.empty());

    WindowFixture withoutDocs(fixture.home.path() / "no-docs");
    withoutDocs.window->dispatch(ui::kCmdHelpContents);
    QCOMPARE(withoutDocs.interaction->errors.size(), std::size_t{1});
    QVERIFY(withoutDocs.interaction->openedUrls.empty());
}

} // namespace quarvex::test
