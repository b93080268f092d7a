// quarvex: the desktop program. `quarvex [--home DIR] [FILE...]` opens the files at start.
#include "common/WorkingFolders.h"
#include "ui/HelpPages.h"
#include "ui/MainWndProc.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"
#include "ui/XrayDiffractionDock.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <memory>
#include <optional>

int main(int argc, char** argv) {
    using namespace quarvex;
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quarvex"));
    QApplication::setApplicationVersion(QStringLiteral(QUARVEX_VERSION));
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
        QStringLiteral("Home folder of the program (working folders, QV.ini, the Raman library); "
                       "default $QUARVEX_HOME, else the folder of this executable."),
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
    QCommandLineOption dialogOption(QStringLiteral("dialog-screenshot"),
                                    QStringLiteral("Save the first dialog as an image."),
                                    QStringLiteral("FILE"));
    dialogOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({homeOption, commandOption, screenshotOption, rangeOption, referenceOption});
    parser.addOption(dialogOption);
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Spectrum files to open."),
                                 QStringLiteral("[FILE...]"));
    parser.process(application);

    std::optional<std::filesystem::path> home;
    if (parser.isSet(homeOption)) {
        home = parser.value(homeOption).toStdString();
    }
    // A picture is taken without a user: messages go to stderr instead of waiting for a hand.
    std::shared_ptr<ui::UserInteraction> interaction;
    if (parser.isSet(screenshotOption)) {
        auto unattended = std::make_shared<ui::UnattendedInteraction>();
        unattended->dialogPicture = parser.value(dialogOption);
        interaction = unattended;
    }
    ProgramState state;
    ui::MainWndProc window(state, {resolveHomeFolder(home), ui::shippedDocsFolder(), interaction});
    window.startUp();
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
    if (parser.isSet(screenshotOption)) {
        const QString file = parser.value(screenshotOption);
        QTimer::singleShot(800, &window, [&window, file] {
            window.grab().save(file);
            window.close();
        });
    }
    return QApplication::exec();
}
