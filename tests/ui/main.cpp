// Runs the desktop program's test classes in one executable (offscreen platform).
#include "DisplayTest.h"
#include "EditSpectrumTest.h"
#include "FileFormatsTest.h"
#include "LibraryStartUpTest.h"
#include "MenuTest.h"
#include "RamanSearchTest.h"
#include "SpectrumEditingTest.h"
#include "WindowTest.h"
#include "XrayDiffractionTest.h"

#include <QApplication>
#include <QTest>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    int failures = 0;
    quarvex::test::MenuTest menus;
    failures += QTest::qExec(&menus, argc, argv);
    quarvex::test::WindowTest window;
    failures += QTest::qExec(&window, argc, argv);
    quarvex::test::RamanSearchTest ramanSearch;
    failures += QTest::qExec(&ramanSearch, argc, argv);
    quarvex::test::EditSpectrumTest editSpectrum;
    failures += QTest::qExec(&editSpectrum, argc, argv);
    quarvex::test::SpectrumEditingTest spectrumEditing;
    failures += QTest::qExec(&spectrumEditing, argc, argv);
    quarvex::test::XrayDiffractionTest xrayDiffraction;
    failures += QTest::qExec(&xrayDiffraction, argc, argv);
    quarvex::test::FileFormatsTest fileFormats;
    failures += QTest::qExec(&fileFormats, argc, argv);
    quarvex::test::DisplayTest display;
    failures += QTest::qExec(&display, argc, argv);
    quarvex::test::LibraryStartUpTest libraryStartUp;
    failures += QTest::qExec(&libraryStartUp, argc, argv);
    return failures == 0 ? 0 : 1;
}
