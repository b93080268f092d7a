#include "FileFormatsTest.h"

#include "UiTestSupport.h"
#include "readers/SpectrumFormats.h"
#include "specdata/SpecDataManager.h"
#include "ui/ColumnChoiceDialog.h"
#include "ui/Commands.h"

#include <QComboBox>
#include <QStatusBar>
#include <QTest>

namespace quarvex::test {

namespace {

QString readerFile(const char* name) {
    return QString::fromStdString(sourcePath(std::string("tests/readers/data/") + name).string());
}

} // namespace

void FileFormatsTest::openDialogListsTheFormats() {
    // The program's own filter order first, unchanged, then the further formats.
    const QString filters = ui::qtFileFilter(openDialogFilter(""));
    QVERIFY2(filters.startsWith(ui::qtFileFilter(fileFilterForPreviousExtension(""))),
             qPrintable(filters));
    QVERIFY(filters.contains(QStringLiteral("JCAMP-DX Files (*.jdx *.dx *.jcm)")));
    QVERIFY(filters.contains(QStringLiteral("Delimited Text Files (*.csv *.tsv)")));
    WindowFixture fixture;
    fixture.interaction->filesToOpen = {readerFile("link.jdx")};
    fixture.window->dispatch(ui::kCmdOpen);
    QCOMPARE(fixture.state.specdata.count(), 2); // both spectra of the LINK block
    QCOMPARE(fixture.state.specdata.NAME[1], std::string("sticks"));
}

void FileFormatsTest::wideCsvAsksForItsColumns() {
    WindowFixture fixture;
    fixture.interaction->onDialog = [](QDialog& dialog) {
        auto& columns = dynamic_cast<ui::ColumnChoiceDialog&>(dialog);
        if (columns.xColumn()->count() != 3 || columns.yColumn()->currentIndex() != 1) {
            return int{QDialog::Rejected};
        }
        columns.yColumn()->setCurrentIndex(2); // "3: background"
        return int{QDialog::Accepted};
    };
    QCOMPARE(fixture.window->openFiles({readerFile("three_columns.tsv")}), 1);
    QCOMPARE(fixture.interaction->dialogs, std::vector<QString>{QStringLiteral("Choose Columns")});
    const auto y = fixture.state.specdata.yValues(0);
    QCOMPARE(std::vector<float>(y.begin(), y.end()), (std::vector<float>{1, 2, 3, 4}));
}

void FileFormatsTest::cancelledColumnsLoadNothing() {
    WindowFixture fixture;
    QCOMPARE(fixture.window->openFiles({readerFile("three_columns.tsv")}), 0);
    QCOMPARE(fixture.state.specdata.count(), 0);
    QVERIFY(fixture.interaction->errors.empty());
}

void FileFormatsTest::unknownFileShowsItsMessage() {
    WindowFixture fixture;
    const auto file = fixture.home.write("picture.png", std::string_view("\x89PNG\0\0\0", 7));
    QCOMPARE(fixture.window->openFiles({QString::fromStdString(file.string())}), 0);
    QCOMPARE(fixture.interaction->errors.size(), std::size_t{1});
    QCOMPARE(fixture.interaction->errors[0].text,
             QString::fromStdString(file.string()) +
                 QStringLiteral(": not a spectrum file Quarvex can read (tried: text, CSV, "
                                "JCAMP-DX, SPC, diffraction formats)"));
}

void FileFormatsTest::saveAsJcampReadsBack() {
    WindowFixture fixture;
    fixture.window->openFiles({readerFile("comma_header.csv")});
    const auto saved = fixture.home.path() / "saved.jdx";
    fixture.interaction->saveName = QString::fromStdString(saved.string());
    fixture.window->dispatch(ui::kCmdSaveAs);
    const SpectrumFileContents back = readSpectrumFile(saved);
    QCOMPARE(back.format, std::string_view("JCAMP-DX"));
    const auto x = fixture.state.specdata.xValues(0);
    QCOMPARE(back.spectra.at(0).x, std::vector<float>(x.begin(), x.end()));
    QVERIFY(fixture.window->statusBar()->currentMessage().startsWith(QStringLiteral("Saved ")));
}

} // namespace quarvex::test
