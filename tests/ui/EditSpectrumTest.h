// The Edit Spectrum mode: peak search, fitting a window, the table and its copy, placed peaks
// and the message of a fit that does not converge.
#pragma once

#include <QObject>

namespace quarvex::test {

class EditSpectrumTest : public QObject {
    Q_OBJECT

private slots:
    void findPeaksMarksTheCalciteBands();
    void fittingTheMainBandFillsTheTable();
    void copyGivesTheTableAsText();
    void clicksPlaceStartingPeaks();
    void nonConvergenceShowsItsMessage();
    void linearBackgroundIsTakenOffAndReported();
};

} // namespace quarvex::test
