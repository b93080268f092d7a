#include "ui/PreviewPlot.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <qcustomplot.h>

namespace quarvex::ui {

namespace {

QVector<double> values(std::span<const float> data) {
    return QVector<double>(data.begin(), data.end());
}

} // namespace

QCustomPlot* makePreviewPlot(std::span<const float> x, std::span<const float> y,
                             const QString& proposal, QWidget* parent) {
    auto* plot = new QCustomPlot(parent);
    plot->setMinimumSize(640, 360);
    plot->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    plot->addGraph()->setPen(QPen(Qt::darkBlue));
    plot->addGraph()->setPen(QPen(Qt::red, 2.0));
    plot->graph(0)->setName(QStringLiteral("spectrum"));
    plot->graph(1)->setName(proposal);
    plot->legend->setVisible(true);
    plot->xAxis->setLabel(QStringLiteral("x"));
    plot->graph(0)->setData(values(x), values(y), true);
    return plot;
}

void showProposal(QCustomPlot& plot, std::span<const float> x, std::span<const float> values) {
    if (values.empty()) {
        plot.graph(1)->data()->clear();
    } else {
        plot.graph(1)->setData(ui::values(x), ui::values(values), true);
    }
    plot.rescaleAxes();
    plot.replot();
}

PreviewControls layOutPreviewDialog(QDialog& dialog, QLayout* parameters, QCustomPlot* plot) {
    PreviewControls controls;
    controls.message = new QLabel(&dialog);
    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Apply | QDialogButtonBox::Cancel, &dialog);
    controls.apply = buttons->button(QDialogButtonBox::Apply);
    QObject::connect(controls.apply, &QPushButton::clicked, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(parameters);
    layout->addWidget(plot, 1);
    layout->addWidget(controls.message);
    layout->addWidget(buttons);
    return controls;
}

} // namespace quarvex::ui
