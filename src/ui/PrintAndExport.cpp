// The view on paper, in a PDF, an SVG or a PNG image.
#include "ui/PrintAndExport.h"

#include "ui/SpectrumView.h"

#include <QPrinter>
#include <QSvgGenerator>

namespace quarvex::ui {

namespace {

// The printer's unit while the page is drawn: the screen's, so that point sizes of fonts and
// pixel widths of lines come out on paper as they look on the screen.
constexpr int kPageDotsPerInch = 96;

// Leaves out what belongs to the screen only while a figure is drawn; the view is laid out for
// the screen again afterwards.
class FigureScope {
public:
    explicit FigureScope(SpectrumView& view) : view_(view) { view_.setInteractionShown(false); }
    ~FigureScope() {
        view_.setInteractionShown(true);
        view_.replot();
    }
    FigureScope(const FigureScope&) = delete;
    FigureScope& operator=(const FigureScope&) = delete;

private:
    SpectrumView& view_;
};

bool exportSvg(SpectrumView& view, const QString& path, QSize size) {
    QSvgGenerator svg;
    svg.setFileName(path);
    svg.setSize(size);
    svg.setViewBox(QRect(QPoint(0, 0), size));
    svg.setResolution(kPageDotsPerInch);
    svg.setTitle(QStringLiteral("Quarvex view"));
    QCPPainter painter(&svg);
    if (!painter.isActive()) {
        return false;
    }
    painter.setMode(QCPPainter::pmVectorized);
    view.toPainter(&painter, size.width(), size.height());
    return painter.end();
}

} // namespace

void PRINTOUTMAINSCREEN(SpectrumView& view, QPrinter& printer, const QString& caption) {
    printer.setResolution(kPageDotsPerInch);
    QCPPainter painter(&printer);
    if (!painter.isActive()) {
        return;
    }
    painter.setMode(QCPPainter::pmVectorized);
    painter.setMode(QCPPainter::pmNoCaching);
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());

    QFont captionFont = view.font();
    captionFont.setPointSizeF(10.0);
    painter.setFont(captionFont);
    const double captionHeight = painter.fontMetrics().height() * 1.8;
    painter.drawText(QRectF(0.0, 0.0, page.width(), captionHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, caption);

    const FigureScope figure(view);
    painter.translate(0.0, captionHeight);
    view.toPainter(&painter, static_cast<int>(page.width()),
                   static_cast<int>(page.height() - captionHeight));
}

bool exportView(SpectrumView& view, const QString& path, QSize size) {
    if (size.isEmpty()) {
        size = view.size();
    }
    const FigureScope figure(view);
    if (path.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
        return view.savePdf(path, size.width(), size.height());
    }
    if (path.endsWith(QStringLiteral(".svg"), Qt::CaseInsensitive)) {
        return exportSvg(view, path, size);
    }
    return view.savePng(path, size.width(), size.height(), 2.0);
}

} // namespace quarvex::ui
