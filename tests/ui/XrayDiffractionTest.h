// The X-ray Diffraction mode: the workflow in five actions to a refined cell, the reference
// list, edits of the assignments, projects, the theoretical pattern and the pop-up commands.
#pragma once

#include <QObject>

namespace quarvex::test {

class XrayDiffractionTest : public QObject {
    Q_OBJECT

private slots:
    void workflowTakesFiveActions();
    void referenceListOrdersDeletesAndTicks();
    void openReferenceComputesACif();
    void assignmentEditsChangeTheRefinementInput();
    void projectReopensWithPeaksAndAssignments();
    void projectReopensWithItsLastRefinement();
    void createSpectrumFromDifAddsAPattern();
    void popupCommandsDispatchOnTheSelectedReference();
    void unattendedRunsNeverWait();
    void refineZeroAddsTheJointSection();
    void onlyRealEditsOfARowAreSignalled();
    void matchedTableShowsTheFitOfEachLine();
    void lineResidualsArePlottedUnderThePattern();
    void peakLabelsInTightClustersDoNotOverlap();
    void matchedTableShowsEveryColumnWithoutScrolling();
    void typedWavelengthKeepsKAlpha2Stripped();
    void stripKAlpha2IsPreviewedAndFittedPeaksAreMarked();
};

} // namespace quarvex::test
