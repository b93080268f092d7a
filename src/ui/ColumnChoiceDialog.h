// The dialog that asks which columns of a delimited text file hold x and y, when it has more
// than two.
#pragma once

#include "readers/ReadOptions.h"

#include <QDialog>

#include <string>
#include <vector>

class QComboBox;

namespace quarvex::ui {

class ColumnChoiceDialog : public QDialog {
    Q_OBJECT

public:
    /// Offers `titles` (one per column) for x and for y; proposes the first two.
    ColumnChoiceDialog(const QString& fileName, const std::vector<std::string>& titles,
                       QWidget* parent);

    /// The chosen columns, numbered from 1.
    ColumnChoice choice() const;

    QComboBox* xColumn() const { return x_; }
    QComboBox* yColumn() const { return y_; }

private:
    QComboBox* x_;
    QComboBox* y_;
};

} // namespace quarvex::ui
