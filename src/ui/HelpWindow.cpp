// The help pages inside the program.
#include "ui/HelpWindow.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolButton>
#include <QVBoxLayout>

namespace quarvex::ui {

namespace {

QUrl pageUrl(const std::filesystem::path& page) {
    return QUrl::fromLocalFile(QString::fromStdString(page.string()));
}

// The text a reader sees on a page, without its markup.
QString pageText(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QTextDocument document;
    document.setHtml(QString::fromUtf8(file.readAll()));
    return document.toPlainText();
}

} // namespace

HelpWindow::HelpWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    setWindowTitle(QStringLiteral("Quarvex Help"));
    auto* layout = new QVBoxLayout(this);
    auto* bar = new QHBoxLayout();
    auto* back = new QToolButton(this);
    back->setText(QStringLiteral("Back"));
    auto* forward = new QToolButton(this);
    forward->setText(QStringLiteral("Forward"));
    auto* contents = new QToolButton(this);
    contents->setText(QStringLiteral("Contents"));
    searchField_ = new QLineEdit(this);
    searchField_->setPlaceholderText(QStringLiteral("Search the help (Enter: next)"));
    searchField_->setClearButtonEnabled(true);
    note_ = new QLabel(this);
    note_->setForegroundRole(QPalette::PlaceholderText);
    for (QWidget* widget : {static_cast<QWidget*>(back), static_cast<QWidget*>(forward),
                            static_cast<QWidget*>(contents)}) {
        bar->addWidget(widget);
    }
    bar->addWidget(searchField_, 1);
    bar->addWidget(note_);
    layout->addLayout(bar);
    browser_ = new QTextBrowser(this);
    browser_->setOpenLinks(true);
    browser_->setOpenExternalLinks(true); // web addresses go to the desktop's browser
    layout->addWidget(browser_, 1);
    resize(900, 720);

    back->setEnabled(false);
    forward->setEnabled(false);
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QToolButton::setEnabled);
    connect(browser_, &QTextBrowser::forwardAvailable, forward, &QToolButton::setEnabled);
    connect(back, &QToolButton::clicked, browser_, &QTextBrowser::backward);
    connect(forward, &QToolButton::clicked, browser_, &QTextBrowser::forward);
    connect(contents, &QToolButton::clicked, this, [this] {
        if (!contents_.empty()) {
            browser_->setSource(pageUrl(contents_));
        }
    });
    connect(searchField_, &QLineEdit::returnPressed, this,
            [this] { search(searchField_->text()); });
}

void HelpWindow::showPage(const std::filesystem::path& page) {
    if (contents_.empty() || page.filename() == "desktop.html") {
        contents_ = page.parent_path() / "desktop.html";
    }
    browser_->setSource(pageUrl(page));
    show();
    raise();
    activateWindow();
}

bool HelpWindow::search(const QString& text) {
    if (text.isEmpty()) {
        note_->clear();
        return false;
    }
    bool found = browser_->find(text);
    if (!found) {
        found = searchOtherPages(text);
    }
    if (!found) { // from the top of this page again
        QTextCursor top = browser_->textCursor();
        top.movePosition(QTextCursor::Start);
        browser_->setTextCursor(top);
        found = browser_->find(text);
    }
    note_->setText(found ? QString() : QStringLiteral("Not in the help"));
    return found;
}

// The pages after the one shown, in name order and round again, until one holds the text.
bool HelpWindow::searchOtherPages(const QString& text) {
    const QString current = browser_->source().toLocalFile();
    const QDir folder = QFileInfo(current).dir();
    QStringList pages = folder.entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name);
    const qsizetype here = pages.indexOf(QFileInfo(current).fileName());
    for (qsizetype step = 1; step <= pages.size(); ++step) {
        const qsizetype index = (here + step) % pages.size();
        const QString path = folder.filePath(pages[index]);
        if (index != here && pageText(path).contains(text, Qt::CaseInsensitive)) {
            browser_->setSource(QUrl::fromLocalFile(path));
            return browser_->find(text);
        }
    }
    return false;
}

} // namespace quarvex::ui
