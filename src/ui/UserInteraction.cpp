// The user's side of the desktop program's questions, through Qt's standard dialogs.
#include "ui/UserInteraction.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QUrl>

#include <cstdio>

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

namespace {

void tell(const char* kind, const QString& title, const QString& text) {
    std::fprintf(stderr, "quarvex: %s \"%s\": %s\n", kind, qPrintable(title), qPrintable(text));
}

} // namespace

void UnattendedInteraction::showError(QWidget*, const QString& text, const QString& title) {
    tell("error", title, text);
}

void UnattendedInteraction::showInformation(QWidget*, const QString& text, const QString& title) {
    tell("information", title, text);
}

bool UnattendedInteraction::askYesNo(QWidget*, const QString& question, const QString& title) {
    tell("question answered No", title, question);
    return false;
}

QStringList UnattendedInteraction::askOpenFileNames(QWidget*, const QString& caption,
                                                    const QString& folder, const QString&) {
    tell("file dialog cancelled", caption, folder);
    return {};
}

QString UnattendedInteraction::askSaveFileName(QWidget*, const QString& caption,
                                               const QString& proposed, const QString&) {
    tell("file dialog cancelled", caption, proposed);
    return {};
}

int UnattendedInteraction::execDialog(QDialog& dialog) {
    if (!dialogPicture.isEmpty()) {
        dialog.show();
        QCoreApplication::processEvents();
        dialog.grab().save(dialogPicture);
        dialogPicture.clear();
    }
    tell("dialog rejected", dialog.windowTitle(), QString());
    return QDialog::Rejected;
}

bool UnattendedInteraction::openUrl(const QUrl& url) {
    tell("not opened", QStringLiteral("document"), url.toString());
    return false;
}

QString qtFileFilter(std::string_view filters) {
    const QStringList parts =
        QString::fromUtf8(filters.data(), static_cast<qsizetype>(filters.size()))
            .split(QLatin1Char('|'), Qt::SkipEmptyParts);
    QStringList qtFilters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString label = parts[i];
        if (parts[i + 1] == QStringLiteral("*.*")) {
            label.replace(QStringLiteral("(*.*)"), QStringLiteral("(*)"));
        }
        qtFilters.append(label);
    }
    return qtFilters.join(QStringLiteral(";;"));
}

} // namespace quarvex::ui
