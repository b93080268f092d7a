// The about box: the program, its version and how to cite it.
#pragma once

#include <QDialog>

namespace quarvex::ui {

/// Shows the program's name, version and purpose, and the citation of "ForReference.txt"
/// (kReferenceLines) in selectable text.
class AboutDlgProc : public QDialog {
    Q_OBJECT

public:
    explicit AboutDlgProc(QWidget* parent = nullptr);
};

} // namespace quarvex::ui
