// Working with the main window: opening and dropping files, spectrum commands, preferences,
// cross-hair, printing and export, long operations and shut-down.
#pragma once

#include <QObject>

namespace quarvex::test {

class WindowTest : public QObject {
    Q_OBJECT

private slots:
    void startUpRunsInItsOrder();
    void openingAndDroppingFilesLoadSpectra();
    void missingFileShowsTheSharingError();
    void preferencesRoundTrip();
    void preferencesDriveTheView();
    void spectrumCommandsChangeTheSpectra();
    void crosshairMovesOnePointPerArrowKey();
    void rangeSelectionIsExposed();
    void dragZoomsAndZoomFullRestores();
    void printAndExportWriteFiles();
    void longOperationsKeepTheWindowAlive();
    void exitWritesPreferencesAndFreesSpectra();
};

} // namespace quarvex::test
