// The user's side of the desktop program's questions, through Qt's standard dialogs.
#include "ui/UserInteraction.h"

#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QUrl>

namespace quarvex::ui {

void UserInteraction::showError(QWidget* parent, const QString& text, const QString& title) {
    QMessageBox::critical(parent, title, text);
}

void UserInteraction::showInformation(QWidget* parent, const QString& text, const QString& title) {
    QMessageBox::information(parent, title, text);
}

bool UserInteraction::askYesNo(QWidget* parent, const QString& question, const QString& title) {
    return QMessageBox::question(parent, title, question, QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

QStringList UserInteraction::askOpenFileNames(QWidget* parent, const QString& caption,
                                              const QString& folder, const QString& filters) {
    return QFileDialog::getOpenFileNames(parent, caption, folder, filters);
}

QString UserInteraction::askSaveFileName(QWidget* parent, const QString& caption,
                                         const QString& proposed, const QString& filters) {
    return QFileDialog::getSaveFileName(parent, caption, proposed, filters);
}

int UserInteraction::execDialog(QDialog& dialog) {
    return dialog.exec();
}

bool UserInteraction::openUrl(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

} // namespace quarvex::ui
