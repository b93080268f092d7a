// Start-up and the Raman library: an unchanged library is not compiled again, a changed one is
// compiled after the window shows while a search waits for it, and the search tells when it
// had to read the library's text files.
#pragma once

#include <QObject>

namespace quarvex::test {

class LibraryStartUpTest : public QObject {
    Q_OBJECT

private slots:
    void unchangedLibraryIsNotCompiledAgain();
    void changedLibraryCompilesAfterTheWindowShows();
    void searchTellsWhyItReadTheTextFiles();
};

} // namespace quarvex::test
