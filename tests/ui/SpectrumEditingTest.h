// The editing commands of the main window: cosmic rays, background, trimming, undo and redo,
// saving and the recent-file list, driven by their command numbers.
#pragma once

#include <QObject>

namespace quarvex::test {

class SpectrumEditingTest : public QObject {
    Q_OBJECT

private slots:
    void undoRestoresEveryEditBitForBitAndRedoReapplies();
    void backgroundDialogDrawsTheProposedBaselineBeforeApply();
    void saveAsWritesWhatReadsBackAndSaveAsksBeforeOverwriting();
    void editDataFileReadsTheSpectrumAgainOrKeepsIt();
    void recentFilesListOpenedFilesAndDropAMissingOne();
};

} // namespace quarvex::test
