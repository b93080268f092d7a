// The program's own viewer of reports.
#include "ui/TextViewer.h"

#include "common/QuarvexError.h"
#include "ui/CsvExport.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace quarvex::ui {

TextViewer::TextViewer(const QString& title, std::shared_ptr<UserInteraction> interaction,
                       QWidget* parent)
    : QDialog(parent), interaction_(std::move(interaction)) {
    setWindowTitle(title);
    setModal(false);
    setSizeGripEnabled(true);
    auto* layout = new QVBoxLayout(this);
    auto* bar = new QHBoxLayout();
    findField_ = new QLineEdit(this);
    findField_->setPlaceholderText(QStringLiteral("Find (Enter: next)"));
    findField_->setClearButtonEnabled(true);
    auto* findButton = new QPushButton(QStringLiteral("Find"), this);
    auto* copyButton = new QPushButton(QStringLiteral("Copy"), this);
    auto* saveButton = new QPushButton(QStringLiteral("Save As..."), this);
    note_ = new QLabel(this);
    note_->setForegroundRole(QPalette::PlaceholderText);
    bar->addWidget(findField_, 1);
    bar->addWidget(findButton);
    bar->addWidget(note_);
    bar->addStretch();
    bar->addWidget(copyButton);
    bar->addWidget(saveButton);
    layout->addLayout(bar);
    text_ = new QPlainTextEdit(this);
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    layout->addWidget(text_, 1);
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
    layout->addWidget(close);
    resize(820, 600);

    const auto findNext = [this] { find(findField_->text()); };
    connect(findField_, &QLineEdit::returnPressed, this, findNext);
    connect(findButton, &QPushButton::clicked, this, findNext);
    connect(copyButton, &QPushButton::clicked, this, &TextViewer::copy);
    connect(saveButton, &QPushButton::clicked, this, [this] {
        try {
            saveAs();
        } catch (const QuarvexError& error) {
            interaction_->showError(this, QString::fromStdString(error.text()),
                                    QString::fromStdString(error.title()));
        }
    });
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::close);
}

void TextViewer::setText(const QString& text, const QString& fileName) {
    text_->setPlainText(text);
    fileName_ = fileName;
}

QString TextViewer::text() const {
    return text_->toPlainText();
}

bool TextViewer::find(const QString& needle) {
    if (needle.isEmpty()) {
        note_->clear();
        return false;
    }
    bool found = text_->find(needle);
    if (!found) { // wrap round to the top
        QTextCursor top = text_->textCursor();
        top.movePosition(QTextCursor::Start);
        text_->setTextCursor(top);
        found = text_->find(needle);
    }
    note_->setText(found ? QString() : QStringLiteral("Not found"));
    return found;
}

void TextViewer::copy() {
    const QString selected = text_->textCursor().selectedText();
    // A selection holds paragraph separators (U+2029) where the lines break.
    QApplication::clipboard()->setText(
        selected.isEmpty() ? text() : QString(selected).replace(QChar(0x2029), QLatin1Char('\n')));
    note_->setText(selected.isEmpty() ? QStringLiteral("All of it copied")
                                      : QStringLiteral("Selection copied"));
}

void TextViewer::saveAs() {
    const QString path = interaction_->askSaveFileName(this, QStringLiteral("Save As"), fileName_,
                                                       QStringLiteral("Text (*.txt *.out);;All "
                                                                      "files (*)"));
    if (path.isEmpty()) {
        return;
    }
    saveText(path, text(), windowTitle().toStdString());
    note_->setText(QStringLiteral("Saved"));
}

TextViewer* showTextFile(QWidget* parent, const std::filesystem::path& file, const QString& title,
                         std::shared_ptr<UserInteraction> interaction) {
    const QString path = QString::fromStdString(file.string());
    QFile input(path);
    if (!input.open(QIODevice::ReadOnly | QIODevice::Text)) {
        throw QuarvexError("The File Could Not Be Read: " + file.string(), title.toStdString());
    }
    return showText(parent, QString::fromUtf8(input.readAll()), path, title,
                    std::move(interaction));
}

TextViewer* showText(QWidget* parent, const QString& text, const QString& fileName,
                     const QString& title, std::shared_ptr<UserInteraction> interaction) {
    auto* viewer = new TextViewer(title, std::move(interaction), parent);
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->setText(text, fileName);
    viewer->show();
    viewer->raise();
    return viewer;
}

} // namespace quarvex::ui
