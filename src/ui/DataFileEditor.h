// Edit Data File (30057): the spectrum's file in a plain-text editor window inside the program.
#pragma once

#include <QDialog>

class QPlainTextEdit;

namespace quarvex::ui {

class DataFileEditor : public QDialog {
    Q_OBJECT

public:
    /// An editor over the text of `path` (read when the dialog is made).
    DataFileEditor(const QString& path, QWidget* parent);

    QPlainTextEdit* editor() const { return editor_; }
    /// The edited text, to be written back on Save.
    QString text() const;

private:
    QPlainTextEdit* editor_ = nullptr;
};

} // namespace quarvex::ui
