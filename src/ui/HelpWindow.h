// The help window: the documentation's pages shown inside the program, with links, history and
// a search box.
#pragma once

#include <QWidget>

#include <filesystem>

class QLabel;
class QLineEdit;
class QTextBrowser;

namespace quarvex::ui {

/// A browser of the help pages (HTML made from the documentation by prepareHelpPage): links
/// lead between the pages, Back and Forward retrace them, Contents returns to the guide. The
/// search box finds text in the page shown, then in the other pages.
class HelpWindow : public QWidget {
    Q_OBJECT

public:
    explicit HelpWindow(QWidget* parent = nullptr);

    /// Shows a page (an HTML file of the help folder) and brings the window forward.
    void showPage(const std::filesystem::path& page);

    /// Selects the next occurrence of `text` in the page shown; when there is none, opens the
    /// first other page of the folder that holds it. False (and a note) when no page does.
    bool search(const QString& text);

    QTextBrowser* browser() const { return browser_; }
    QLineEdit* searchField() const { return searchField_; }

private:
    bool searchOtherPages(const QString& text);

    QTextBrowser* browser_ = nullptr;
    QLineEdit* searchField_ = nullptr;
    QLabel* note_ = nullptr;
    std::filesystem::path contents_;
};

} // namespace quarvex::ui
