// A window that shows a text report inside the program, with Find, Copy and Save As.
#pragma once

#include "ui/UserInteraction.h"

#include <QDialog>

#include <filesystem>
#include <memory>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace quarvex::ui {

/// Read-only, resizable, in a fixed-width font. Find looks for the next occurrence (Enter in
/// the field, wrapping at the end); Copy copies the selection, or all of it; Save As writes a
/// copy where the user chooses.
class TextViewer : public QDialog {
    Q_OBJECT

public:
    TextViewer(const QString& title, std::shared_ptr<UserInteraction> interaction,
               QWidget* parent = nullptr);

    /// Shows the text; `fileName` is the name Save As proposes.
    void setText(const QString& text, const QString& fileName);
    QString text() const;

    /// Selects the next occurrence of `needle` after the cursor, from the top again at the
    /// end; false (and a note) when there is none.
    bool find(const QString& needle);
    /// The selection, or the whole text when nothing is selected, to the clipboard.
    void copy();
    /// Asks for a file name and writes the text there; throws QuarvexError when it cannot.
    void saveAs();

    QPlainTextEdit* textEdit() const { return text_; }
    QLineEdit* findField() const { return findField_; }

private:
    std::shared_ptr<UserInteraction> interaction_;
    QPlainTextEdit* text_ = nullptr;
    QLineEdit* findField_ = nullptr;
    QLabel* note_ = nullptr;
    QString fileName_;
};

/// Shows `text` in a new viewer window of `parent` (closed and deleted by the user); `fileName`
/// is the name Save As proposes.
TextViewer* showText(QWidget* parent, const QString& text, const QString& fileName,
                     const QString& title, std::shared_ptr<UserInteraction> interaction);

/// Reads `file` and shows it in a new viewer window of `parent` (closed and deleted by the
/// user). Throws QuarvexError (`title`) when the file cannot be read.
TextViewer* showTextFile(QWidget* parent, const std::filesystem::path& file, const QString& title,
                         std::shared_ptr<UserInteraction> interaction);

} // namespace quarvex::ui
