// The about box.
#include "ui/AboutDlgProc.h"

#include "shell/ReferenceFile.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace quarvex::ui {

AboutDlgProc::AboutDlgProc(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("About Quarvex"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout();
    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(64, 64));
    icon->setAlignment(Qt::AlignTop);
    top->addWidget(icon);
    auto* title = new QLabel(
        QStringLiteral("<h2>Quarvex %1</h2>"
                       "<p>Identifies minerals from their spectra: Raman library search, peak "
                       "fitting, and unit-cell refinement from X-ray powder patterns.</p>"
                       "<p>Please cite Quarvex as:</p>")
            .arg(QApplication::applicationVersion()),
        this);
    title->setWordWrap(true);
    top->addWidget(title, 1);
    layout->addLayout(top);

    QString citation;
    for (const std::string_view line : kReferenceLines) {
        citation += QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()));
        citation += QLatin1Char('\n');
    }
    auto* reference = new QPlainTextEdit(citation.trimmed(), this);
    reference->setReadOnly(true);
    reference->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    reference->setLineWrapMode(QPlainTextEdit::NoWrap);
    const QFontMetrics metrics(reference->font());
    reference->setMinimumWidth(metrics.horizontalAdvance(QString(74, QLatin1Char('M'))));
    reference->setFixedHeight(metrics.lineSpacing() * 6 + 2 * reference->frameWidth() + 8);
    layout->addWidget(reference);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
}

} // namespace quarvex::ui
