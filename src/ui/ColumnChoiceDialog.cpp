#include "ui/ColumnChoiceDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>

namespace quarvex::ui {

ColumnChoiceDialog::ColumnChoiceDialog(const QString& fileName,
                                       const std::vector<std::string>& titles, QWidget* parent)
    : QDialog(parent), x_(new QComboBox(this)), y_(new QComboBox(this)) {
    setWindowTitle(QStringLiteral("Choose Columns"));
    for (std::size_t c = 0; c < titles.size(); ++c) {
        const QString item =
            QStringLiteral("%1: %2").arg(c + 1).arg(QString::fromStdString(titles[c]));
        x_->addItem(item);
        y_->addItem(item);
    }
    y_->setCurrentIndex(1);
    auto* layout = new QFormLayout(this);
    layout->addRow(
        new QLabel(QStringLiteral("%1 has %2 columns.").arg(fileName).arg(titles.size()), this));
    layout->addRow(QStringLiteral("&x column:"), x_);
    layout->addRow(QStringLiteral("&y column:"), y_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addRow(buttons);
}

ColumnChoice ColumnChoiceDialog::choice() const {
    return {x_->currentIndex() + 1, y_->currentIndex() + 1};
}

} // namespace quarvex::ui
