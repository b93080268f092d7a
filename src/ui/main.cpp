// quarvex: the desktop program. `quarvex [--home DIR] [FILE...]` opens the files at start.
#include "shell/HomeFolder.h"
#include "shell/Version.h"
#include "ui/HelpPages.h"
#include "ui/MainWndProc.h"
#include "ui/PrintAndExport.h"
#include "ui/QtText.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"
#include "ui/XrayDiffractionDock.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMouseEvent>
#include <QPrinter>
#include <QTimer>

#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

namespace {

// Answers that need no window are drawn offscreen: a figure (--export, --print-pdf) always
// unless a platform is named, --help and --version when there is no display to open.
void drawOffscreenWhenNoWindowIsNeeded(int argc, char** argv) {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        return;
    }
    const bool noDisplay =
        qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    for (int k = 1; k < argc; ++k) {
        const std::string_view argument = argv[k];
        const bool figure = argument.starts_with("--export") || argument.starts_with("--print-pdf");
        const bool textAnswer =
            argument == "--help" || argument == "-h" || argument == "--version" || argument == "-v";
        if (figure || (textAnswer && noDisplay)) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            return;
        }
    }
}

// --export OUT [--size WxH] and --print-pdf OUT: the figures of the files given, then exit.
int writeFigures(quarvex::ui::MainWndProc& window, const QString& exportPath, const QString& size,
                 const QString& printPath) {
    QApplication::processEvents(); // the window laid out as shown
    int status = 0;
    if (!exportPath.isEmpty()) {
        const QStringList sides = size.split(QLatin1Char('x'));
        const QSize pixels =
            sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize(1100, 700);
        if (pixels.isEmpty() || !quarvex::ui::exportView(*window.view(), exportPath, pixels)) {
            std::cerr << "quarvex: the view could not be saved as " << exportPath.toStdString()
                      << '\n';
            status = 1;
        }
    }
    if (!printPath.isEmpty()) {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(printPath);
        printer.setPageOrientation(QPageLayout::Landscape);
        window.printTo(printer);
        if (!QFileInfo(printPath).isFile()) {
            std::cerr << "quarvex: " << printPath.toStdString() << " could not be written\n";
            status = 1;
        }
    }
    return status;
}

// A left click on the view at data x, half-way up: what a user's click on a spike does.
void clickView(quarvex::ui::SpectrumView& view, double x) {
    const QPointF at(view.xAxis->coordToPixel(x), view.axisRect()->rect().center().y());
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, at, view.mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
    }
}

} // namespace

int main(int argc, char** argv) {
    using namespace quarvex;
    QElapsedTimer sinceStart;
    sinceStart.start();
    drawOffscreenWhenNoWindowIsNeeded(argc, argv);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quarvex"));
    QApplication::setApplicationVersion(ui::qText(kQuarvexVersion));
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setWindowIcon(ui::toolIcon(ui::ToolIcon::Program));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Quarvex: identify minerals from their Raman spectra and refine unit cells from X-ray "
        "powder patterns."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption homeOption(
        QStringLiteral("home"),
        QStringLiteral(
            "Home folder of the program (working folders, QV.ini, the Raman library); "
            "default $QUARVEX_HOME, else the folder of this executable when it holds the "
            "working folders, else $XDG_DATA_HOME/quarvex (~/.local/share/quarvex)."),
        QStringLiteral("DIR"));
    // For documentation and checks: run commands after start-up, then save the window as an
    // image and quit.
    QCommandLineOption commandOption(QStringLiteral("run-command"),
                                     QStringLiteral("Dispatch a command number after start-up."),
                                     QStringLiteral("NUMBER"));
    commandOption.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
                                        QStringLiteral("Save the window as an image and quit."),
                                        QStringLiteral("FILE"));
    screenshotOption.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption rangeOption(QStringLiteral("select-range"),
                                   QStringLiteral("Select the x-range LO:HI before the commands."),
                                   QStringLiteral("LO:HI"));
    rangeOption.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption referenceOption(
        QStringLiteral("open-reference"),
        QStringLiteral("Open a reference diffraction file in the X-ray mode before the commands."),
        QStringLiteral("FILE"));
    referenceOption.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption exportOption(
        QStringLiteral("export"),
        QStringLiteral("Render the view of the FILEs as Export View does (PNG, PDF or SVG by the "
                       "extension of OUT) and exit."),
        QStringLiteral("OUT"));
    const QCommandLineOption sizeOption(
        QStringLiteral("size"), QStringLiteral("Size of the --export figure (default 1100x700)."),
        QStringLiteral("WxH"));
    const QCommandLineOption printPdfOption(
        QStringLiteral("print-pdf"),
        QStringLiteral("Print the view of the FILEs to a one-page PDF as Print... does, and exit."),
        QStringLiteral("OUT.pdf"));
    QCommandLineOption dialogOption(QStringLiteral("dialog-screenshot"),
                                    QStringLiteral("Save the first dialog as an image."),
                                    QStringLiteral("FILE"));
    dialogOption.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption clickOption(
        QStringLiteral("click-at"),
        QStringLiteral("Left-click the view at this x, half-way up, after the commands."),
        QStringLiteral("X"));
    clickOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({homeOption, commandOption, screenshotOption, rangeOption, referenceOption,
                       exportOption, sizeOption, printPdfOption, dialogOption});
    parser.addOption(clickOption);
    // For the start-up benchmark: the time until the window is shown and painted, then quit.
    QCommandLineOption quitAfterShowOption(
        QStringLiteral("quit-after-show"),
        QStringLiteral("Print the milliseconds until the window shows, then quit."));
    quitAfterShowOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(quitAfterShowOption);
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Spectrum files to open."),
                                 QStringLiteral("[FILE...]"));
    parser.process(application);

    std::optional<std::filesystem::path> home;
    if (parser.isSet(homeOption)) {
        home = parser.value(homeOption).toStdString();
    }
    // A picture is taken without a user: messages go to stderr instead of waiting for a hand.
    std::shared_ptr<ui::UserInteraction> interaction;
    const bool figures = parser.isSet(exportOption) || parser.isSet(printPdfOption);
    if (parser.isSet(screenshotOption) || figures) {
        auto unattended = std::make_shared<ui::UnattendedInteraction>();
        unattended->dialogPicture = parser.value(dialogOption);
        interaction = unattended;
    }
    ProgramState state;
    // A user's start shows the window before compiling a changed library; runs that take
    // pictures compile first, so that the pictures show the library as compiled.
    const bool pictures = parser.isSet(screenshotOption) || figures;
    ui::MainWndProc window(
        state, {openHomeFolder(home).folder, ui::shippedDocsFolder(), interaction, !pictures});
    window.startUp();
    if (parser.isSet(quitAfterShowOption)) {
        QApplication::processEvents(); // the window exposed and painted
        std::cout << "window shown after " << sinceStart.elapsed() << " ms\n";
        window.close();
        return 0;
    }
    window.openFiles(parser.positionalArguments());
    if (parser.isSet(rangeOption)) {
        const QStringList bounds = parser.value(rangeOption).split(QLatin1Char(':'));
        if (bounds.size() == 2) {
            window.view()->setSelectedRange(ui::XRange{bounds[0].toDouble(), bounds[1].toDouble()});
        }
    }
    window.xrayDiffraction()->openReferences(parser.values(referenceOption));
    for (const QString& command : parser.values(commandOption)) {
        window.dispatch(command.toInt());
    }
    for (const QString& x : parser.values(clickOption)) {
        clickView(*window.view(), x.toDouble());
    }
    if (figures) {
        return writeFigures(window, parser.value(exportOption), parser.value(sizeOption),
                            parser.value(printPdfOption));
    }
    if (parser.isSet(screenshotOption)) {
        const QString file = parser.value(screenshotOption);
        QTimer::singleShot(800, &window, [&window, file] {
            window.grab().save(file);
            window.close();
        });
    }
    return QApplication::exec();
}
