// Everything the desktop program asks of the user or the desktop (message boxes, file dialogs,
// modal dialogs, opening documents), behind one class so that tests can answer in its place.
#pragma once

#include <QString>
#include <QStringList>

#include <string_view>

class QDialog;
class QUrl;
class QWidget;

namespace quarvex::ui {

/// The default implementation talks to the user through Qt; a test derives from it and records
/// the questions and answers them itself.
class UserInteraction {
public:
    virtual ~UserInteraction() = default;

    /// A message box with a stop icon and an OK button.
    virtual void showError(QWidget* parent, const QString& text, const QString& title);

    /// A message box with an information icon and an OK button.
    virtual void showInformation(QWidget* parent, const QString& text, const QString& title);

    /// A question with the buttons Yes and No; true for Yes.
    virtual bool askYesNo(QWidget* parent, const QString& question, const QString& title);

    /// The open-file dialog; `filters` in the dialog's ";;"-separated form. Empty when cancelled.
    virtual QStringList askOpenFileNames(QWidget* parent, const QString& caption,
                                         const QString& folder, const QString& filters);

    /// The save-file dialog; empty when cancelled.
    virtual QString askSaveFileName(QWidget* parent, const QString& caption,
                                    const QString& proposed, const QString& filters);

    /// Runs a modal dialog; QDialog::Accepted or QDialog::Rejected.
    virtual int execDialog(QDialog& dialog);

    /// Opens a document or folder in the desktop's viewer; false when that failed.
    virtual bool openUrl(const QUrl& url);
};

/// For runs without a user (screenshots of the documentation): every message and question is
/// written to stderr and answered at once: No, cancelled file dialogs, rejected dialogs,
/// documents not opened. Nothing waits for a hand that will not come.
class UnattendedInteraction : public UserInteraction {
public:
    void showError(QWidget* parent, const QString& text, const QString& title) override;
    void showInformation(QWidget* parent, const QString& text, const QString& title) override;
    bool askYesNo(QWidget* parent, const QString& question, const QString& title) override;
    QStringList askOpenFileNames(QWidget* parent, const QString& caption, const QString& folder,
                                 const QString& filters) override;
    QString askSaveFileName(QWidget* parent, const QString& caption, const QString& proposed,
                            const QString& filters) override;
    int execDialog(QDialog& dialog) override;
    bool openUrl(const QUrl& url) override;

    /// When set, the first dialog is shown and saved to this image before it is rejected.
    QString dialogPicture;
};

/// A "|"-separated filter list of the program's file dialogs ("Text (*.txt)|*.txt|") in the
/// form of Qt's file dialogs ("Text (*.txt);;..."). "*.*" becomes "*", so that files without an
/// extension are listed too.
QString qtFileFilter(std::string_view filters);

} // namespace quarvex::ui
