// Opening and saving files in the further formats through the main window.
#pragma once

#include <QObject>

namespace quarvex::test {

class FileFormatsTest : public QObject {
    Q_OBJECT

private slots:
    void openDialogListsTheFormats();
    void wideCsvAsksForItsColumns();
    void cancelledColumnsLoadNothing();
    void unknownFileShowsItsMessage();
    void saveAsJcampReadsBack();
};

} // namespace quarvex::test
