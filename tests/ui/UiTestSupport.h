// A main window on a fresh home folder, with a user whose answers the test sets.
#pragma once

#include "TestSupport.h"

#include "shell/ProgramState.h"
#include "ui/MainWndProc.h"
#include "ui/SpectrumView.h"
#include "ui/UserInteraction.h"

#include <QDialog>
#include <QRectF>
#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

namespace quarvex::test {

/// Records every message and question; answers from its fields. Modal dialogs are handed to
/// `onDialog` (default: rejected without being shown).
class RecordingInteraction : public ui::UserInteraction {
public:
    struct Message {
        QString text;
        QString title;
    };
    std::vector<Message> errors;
    std::vector<Message> informations;
    std::vector<Message> questions;
    std::vector<QString> dialogs; ///< window titles of the modal dialogs run
    std::vector<QUrl> openedUrls;
    bool answerYes = false;
    bool openSucceeds = true;
    QStringList filesToOpen;
    QString openFilter; ///< the filter of the last open dialog
    QString saveName;
    std::function<int(QDialog&)> onDialog;

    void showError(QWidget*, const QString& text, const QString& title) override {
        errors.push_back({text, title});
    }
    void showInformation(QWidget*, const QString& text, const QString& title) override {
        informations.push_back({text, title});
    }
    bool askYesNo(QWidget*, const QString& question, const QString& title) override {
        questions.push_back({question, title});
        return answerYes;
    }
    QStringList askOpenFileNames(QWidget*, const QString&, const QString&,
                                 const QString& filter) override {
        openFilter = filter;
        return filesToOpen;
    }
    QString askSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return saveName;
    }
    int execDialog(QDialog& dialog) override {
        dialogs.push_back(dialog.windowTitle());
        return onDialog ? onDialog(dialog) : QDialog::Rejected;
    }
    bool openUrl(const QUrl& url) override {
        openedUrls.push_back(url);
        return openSucceeds;
    }
};

/// A started main window over a fresh state and home folder; its library folder is empty, or
/// holds the default library (compiled at start).
struct WindowFixture {
    struct DefaultLibrary {};

    explicit WindowFixture(std::filesystem::path docs = sourcePath("docs")) {
        start(std::move(docs));
    }
    explicit WindowFixture(DefaultLibrary) {
        const std::filesystem::path library = home.path() / "SearchRecords" / "RamanLib";
        std::filesystem::create_directories(library);
        for (const auto& file :
             std::filesystem::directory_iterator(sourcePath("data/raman/model_library"))) {
            std::filesystem::copy_file(file.path(), library / file.path().filename());
        }
        start(sourcePath("docs"));
    }

    void start(std::filesystem::path docs) {
        window = std::make_unique<ui::MainWndProc>(
            state, ui::MainWindowOptions{home.path(), std::move(docs), interaction});
        window->startUp();
    }

    /// Opens shipped example spectra through the window.
    void open(std::initializer_list<const char*> names) {
        QStringList paths;
        for (const char* name : names) {
            paths.append(QString::fromStdString(
                sourcePath(std::string("data/raman/examples/") + name).string()));
        }
        window->openFiles(paths);
    }

    TempFolder home;
    ProgramState state;
    std::shared_ptr<RecordingInteraction> interaction = std::make_shared<RecordingInteraction>();
    std::unique_ptr<ui::MainWndProc> window;
};

/// Where the view shows the labels of found peaks (its visible texts that are numbers), after a
/// replot, in pixels.
inline std::vector<QRectF> peakLabelRects(ui::SpectrumView& view) {
    view.replot();
    std::vector<QRectF> labels;
    for (int i = 0; i < view.itemCount(); ++i) {
        auto* label = qobject_cast<QCPItemText*>(view.item(i));
        bool number = false;
        if (label != nullptr && label->visible()) {
            label->text().toDouble(&number);
        }
        if (number) {
            labels.emplace_back(label->topLeft->pixelPosition(),
                                label->bottomRight->pixelPosition());
        }
    }
    return labels;
}

} // namespace quarvex::test
