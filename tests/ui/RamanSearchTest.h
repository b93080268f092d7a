// The Raman Search mode: start-up compilation, search, result list, reference overlay, the
// missing library, and the whole workflow in five user actions.
#pragma once

#include <QObject>

namespace quarvex::test {

class RamanSearchTest : public QObject {
    Q_OBJECT

private slots:
    void startUpCompilesTheLibraryQuietly();
    void searchRanksTheExampleMineralFirst();
    void selectingAResultOverlaysItsReference();
    void missingLibraryNeedsCompiling();
    void workflowTakesFiveActions();
    void modeSelectorAndSearchResidual();
};

} // namespace quarvex::test
