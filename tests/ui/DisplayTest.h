// What the user sees agrees with the data: each case drives the widgets as a user would and
// checks a defect a user once saw.
#pragma once

#include <QObject>

namespace quarvex::test {

class DisplayTest : public QObject {
    Q_OBJECT

private slots:
    void searchResultsDescribeOneSearchOfOneSpectrum();
    void popupMenuLeavesNoZoomBox();
    void fileManagerHeadersMatchTheirCells();
    void skippedLinesAreToldInTheStatusBar();
    void titleFollowsThePrimarySpectrum();
    void reversedBoundsAreToldNotSwapped();
    void hintsOfferThePlainDrag();
    void oneFoundPeakIsOnePeak();
    void arrowKeysMoveTheCrosshairAfterOpening();
    void panningStopsAtTheData();
    void peakLabelsNeitherCollideNorLeaveThePlot();
    void laterSpectraHaveDistinctColours();
    void printedPageLooksLikeTheScreen();
    void helpShowsInsideTheProgram();
    void reportViewerFindsCopiesAndSaves();
    void openProjectIsReachableWithNothingLoaded();
    void spectraOfAnotherTypeAreHiddenAndCounted();
    void rankingAndFitTableExportAsCsv();
    void intensityNumbersAreAPreference();
};

} // namespace quarvex::test
