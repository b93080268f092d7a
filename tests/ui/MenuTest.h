// The menus and pop-ups of the main window, and which commands can run when.
#pragma once

#include <QObject>

namespace quarvex::test {

class MenuTest : public QObject {
    Q_OBJECT

private slots:
    void menusMatchTheirTable();
    void popupsMatchTheirTable();
    void openItemsFollowTheState();
    void everyCommandDispatchesOrIsGreyed();
    void consistencyExamAsksItsQuestion();
    void helpOpensTheShippedDocumentation();
};

} // namespace quarvex::test
