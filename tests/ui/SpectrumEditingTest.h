// The editing commands of the main window: cosmic rays (also by hand on the view), background,
// smoothing, trimming, undo and redo, saving and the recent-file list, driven by their command
// numbers and the mouse.
#pragma once

#include <QObject>

namespace quarvex::test {

class SpectrumEditingTest : public QObject {
    Q_OBJECT

private slots:
    void undoRestoresEveryEditBitForBitAndRedoReapplies();
    void backgroundDialogDrawsTheProposedBaselineBeforeApply();
    void clicksRemoveSpikesByHandUntilEscape();
    void smoothingDialogPreviewsTheCurveBeforeApply();
    void saveAsWritesWhatReadsBackAndSaveAsksBeforeOverwriting();
    void editDataFileReadsTheSpectrumAgainOrKeepsIt();
    void editDataFileRereadsOtherFormatsAndRefusesBinaryFiles();
    void recentFilesListOpenedFilesAndDropAMissingOne();
};

} // namespace quarvex::test
