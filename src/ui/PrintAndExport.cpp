// The view on paper, in a PDF or in a PNG image.
#include "ui/PrintAndExport.h"

#include "ui/SpectrumView.h"

#include <QPrinter>

namespace quarvex::ui {

void PRINTOUTMAINSCREEN(SpectrumView& view, QPrinter& printer, const QString& caption) {
    QCPPainter painter(&printer);
    if (!painter.isActive()) {
        return;
    }
    painter.setMode(QCPPainter::pmVectorized);
    painter.setMode(QCPPainter::pmNoCaching);
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    const QRectF area(0.0, 0.0, page.width(), page.height());

    QFont captionFont = view.font();
    captionFont.setPointSizeF(10.0);
    painter.setFont(captionFont);
    const double captionHeight = painter.fontMetrics().height() * 1.8;
    painter.drawText(QRectF(area.left(), area.top(), area.width(), captionHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, caption);

    // Lay the view out at a screen-like size, then scale it onto the rest of the page.
    const int plotWidth = 1100;
    const double scale = area.width() / plotWidth;
    const int plotHeight = static_cast<int>((area.height() - captionHeight) / scale);
    painter.translate(area.left(), area.top() + captionHeight);
    painter.scale(scale, scale);
    view.toPainter(&painter, plotWidth, plotHeight);
}

bool exportView(SpectrumView& view, const QString& path) {
    if (path.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
        return view.savePdf(path);
    }
    return view.savePng(path, 0, 0, 2.0);
}

} // namespace quarvex::ui
