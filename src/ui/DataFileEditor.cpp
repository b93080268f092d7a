#include "ui/DataFileEditor.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace quarvex::ui {

DataFileEditor::DataFileEditor(const QString& path, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Edit Data File - ") + path);
    editor_ = new QPlainTextEdit(this);
    editor_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    editor_->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFile file(path);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        editor_->setPlainText(QString::fromUtf8(file.readAll()));
    }
    editor_->setMinimumSize(640, 480);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(editor_, 1);
    layout->addWidget(buttons);
}

QString DataFileEditor::text() const {
    return editor_->toPlainText();
}

} // namespace quarvex::ui
