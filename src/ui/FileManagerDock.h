// The "File Manager" mode: the loaded spectra as a table beside the view, with the buttons of
// the spectrum operations.
#pragma once

#include "shell/ProgramState.h"

#include <QDockWidget>

#include <vector>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace quarvex::ui {

/// Lists number, visibility, colour, name, the four header values, data type and points of
/// every loaded spectrum; the primary one is bold. Its buttons and the row's pop-up menu ask the
/// main window to run a spectrum command on the selected spectrum.
class FileManagerDock : public QDockWidget {
    Q_OBJECT

public:
    explicit FileManagerDock(ProgramState& state, QWidget* parent = nullptr);

    /// Fills the table from the loaded spectra, keeping the selection where possible.
    void HANDLE_FILEMANAGER_LISTVIEW();

    /// Enables the buttons that apply to the selected spectrum and names the visibility button.
    void SET_UP_SPECDATA_BUTTONS();

    /// The selected spectrum (0-based), -1 when none.
    int selectedSpectrum() const;
    void selectSpectrum(int spectrum);

    /// The table of the loaded spectra, one row per spectrum.
    QTreeWidget* table() const { return table_; }

signals:
    /// A spectrum command (Make Invisible, Make Primary, ...) for one spectrum.
    void commandRequested(int command, int spectrum);
    void popupRequested(const QPoint& globalPos, int spectrum);
    void selectionChanged(int spectrum);

private:
    void showDetails();

    ProgramState& state_;
    QTreeWidget* table_ = nullptr;
    std::vector<QLabel*> details_;
    QPushButton* visibilityButton_ = nullptr;
    QPushButton* primaryButton_ = nullptr;
    QPushButton* scaleButton_ = nullptr;
    QPushButton* dataTypeButton_ = nullptr;
    QPushButton* deleteButton_ = nullptr;
    bool filling_ = false;
};

} // namespace quarvex::ui
