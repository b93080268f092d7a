// Line icons on a 24-unit grid, stroked in one ink colour with a blue accent.
#include "ui/ToolIcons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>
#include <cmath>
#include <tuple>

namespace quarvex::ui {

namespace {

const QColor kInk(55, 71, 79);
const QColor kAccent(30, 136, 229);
const QColor kWarm(229, 57, 53);

// A peak-shaped curve from x0 to x1 along a baseline, peaks given as (centre, height, width).
QPainterPath spectrumPath(double x0, double x1, double base,
                          std::initializer_list<std::array<double, 3>> peaks) {
    QPainterPath path;
    for (double x = x0; x <= x1 + 1e-9; x += 0.25) {
        double y = base;
        for (const auto& peak : peaks) {
            const double d = (x - peak[0]) / peak[2];
            y -= peak[1] / (1.0 + d * d);
        }
        if (x == x0) {
            path.moveTo(x, y);
        } else {
            path.lineTo(x, y);
        }
    }
    return path;
}

void arrowHead(QPainter& p, QPointF tip, double direction) {
    const double size = 3.0;
    p.drawLine(tip, tip + QPointF(-direction * size, -size));
    p.drawLine(tip, tip + QPointF(-direction * size, size));
}

void draw(QPainter& p, ToolIcon icon) {
    const QPen ink(kInk, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    const QPen accent(kAccent, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(ink);
    p.setBrush(Qt::NoBrush);
    switch (icon) {
    case ToolIcon::Program:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(38, 50, 56));
        p.drawRoundedRect(QRectF(1, 1, 22, 22), 5, 5);
        p.setPen(QPen(QColor(100, 181, 246), 1.8, Qt::SolidLine, Qt::RoundCap));
        p.setBrush(Qt::NoBrush);
        p.drawPath(spectrumPath(3, 21, 19, {{9, 12, 0.9}, {15, 6, 1.2}}));
        break;
    case ToolIcon::Open:
        p.drawPath([] {
            QPainterPath folder;
            folder.moveTo(3, 19);
            folder.lineTo(3, 6);
            folder.lineTo(9, 6);
            folder.lineTo(11, 8);
            folder.lineTo(19, 8);
            folder.lineTo(19, 11);
            return folder;
        }());
        p.setPen(accent);
        p.drawPolygon(QPolygonF({{3, 19}, {6.5, 11}, {22, 11}, {18.5, 19}}));
        break;
    case ToolIcon::Print:
        p.drawRect(QRectF(7, 3, 10, 6));
        p.drawRoundedRect(QRectF(3, 9, 18, 8), 2, 2);
        p.setPen(accent);
        p.drawRect(QRectF(7, 14, 10, 7));
        break;
    case ToolIcon::Export:
        p.drawPolyline(QPolygonF({{14, 3}, {5, 3}, {5, 21}, {19, 21}, {19, 9}}));
        p.setPen(accent);
        p.drawLine(QPointF(12, 12), QPointF(21, 3));
        p.drawPolyline(QPolygonF({{15, 3}, {21, 3}, {21, 9}}));
        break;
    case ToolIcon::ZoomFull:
        p.drawRect(QRectF(3, 3, 18, 18));
        p.setPen(accent);
        for (const auto& [corner, dx, dy] :
             {std::tuple{QPointF(7, 7), 1, 1}, std::tuple{QPointF(17, 7), -1, 1},
              std::tuple{QPointF(7, 17), 1, -1}, std::tuple{QPointF(17, 17), -1, -1}}) {
            p.drawLine(corner, corner + QPointF(3.0 * dx, 0));
            p.drawLine(corner, corner + QPointF(0, 3.0 * dy));
        }
        break;
    case ToolIcon::ReverseXAxis:
        p.drawLine(QPointF(3, 20), QPointF(21, 20));
        p.setPen(accent);
        p.drawLine(QPointF(4, 8), QPointF(20, 8));
        arrowHead(p, {4, 8}, -1);
        p.drawLine(QPointF(4, 14), QPointF(20, 14));
        arrowHead(p, {20, 14}, 1);
        break;
    case ToolIcon::SelectRange:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(30, 136, 229, 60));
        p.drawRect(QRectF(8, 3, 8, 18));
        p.setBrush(Qt::NoBrush);
        p.setPen(ink);
        p.drawPath(spectrumPath(2, 22, 20, {{12, 12, 1.2}}));
        p.setPen(QPen(kAccent, 1.4, Qt::DashLine));
        p.drawLine(QPointF(8, 3), QPointF(8, 21));
        p.drawLine(QPointF(16, 3), QPointF(16, 21));
        break;
    case ToolIcon::StackSpectra:
        p.drawPath(spectrumPath(2, 22, 20, {{9, 5, 1.0}}));
        p.setPen(accent);
        p.drawPath(spectrumPath(2, 22, 13, {{13, 5, 1.0}}));
        p.setPen(QPen(kWarm, 1.6, Qt::SolidLine, Qt::RoundCap));
        p.drawPath(spectrumPath(2, 22, 6, {{16, 3.5, 1.0}}));
        break;
    case ToolIcon::FileManager:
        for (int row = 0; row < 3; ++row) {
            const double y = 6.0 + 6.0 * row;
            p.setPen(Qt::NoPen);
            p.setBrush(row == 0 ? kWarm : (row == 1 ? kAccent : QColor(67, 160, 71)));
            p.drawRoundedRect(QRectF(3, y - 2, 5, 4), 1, 1);
            p.setBrush(Qt::NoBrush);
            p.setPen(ink);
            p.drawLine(QPointF(11, y), QPointF(21, y));
        }
        break;
    case ToolIcon::EditSpectrum:
        p.drawPath(spectrumPath(2, 22, 20, {{12, 13, 2.0}}));
        p.setPen(QPen(kAccent, 1.4, Qt::DashLine));
        p.drawPath(spectrumPath(2, 22, 20, {{10.5, 9, 1.6}}));
        break;
    case ToolIcon::RamanSearch:
        p.drawPath(spectrumPath(2, 14, 12, {{6, 6, 0.8}, {10, 4, 0.8}}));
        p.setPen(accent);
        p.drawEllipse(QPointF(14, 12), 5.5, 5.5);
        p.drawLine(QPointF(18, 16), QPointF(22, 20));
        break;
    case ToolIcon::XrayDiffraction:
        p.drawLine(QPointF(3, 20), QPointF(21, 20));
        for (const auto& [x, h] : {std::pair{6.0, 10.0}, {10.0, 16.0}, {15.0, 7.0}, {19.0, 12.0}}) {
            p.setPen(x == 10.0 ? accent : ink);
            p.drawLine(QPointF(x, 20), QPointF(x, 20 - h));
        }
        break;
    case ToolIcon::Preferences:
        for (int row = 0; row < 3; ++row) {
            const double y = 6.0 + 6.0 * row;
            const double knob = row == 1 ? 15.0 : 8.0 + 3.0 * row;
            p.setPen(ink);
            p.drawLine(QPointF(3, y), QPointF(21, y));
            p.setPen(accent);
            p.setBrush(Qt::white);
            p.drawEllipse(QPointF(knob, y), 2.4, 2.4);
            p.setBrush(Qt::NoBrush);
        }
        break;
    case ToolIcon::RemoveSpike:
        p.drawPath(spectrumPath(2, 22, 20, {{8, 6, 1.6}}));
        p.setPen(QPen(kWarm, 1.4, Qt::DashLine));
        p.drawPolyline(QPolygonF({QPointF(15, 19.6), QPointF(16, 3), QPointF(17, 19.6)}));
        p.setPen(accent);
        p.drawLine(QPointF(12, 8), QPointF(20, 12));
        break;
    case ToolIcon::Smooth: {
        // A noisy trace and the smooth curve through it.
        QPainterPath noisy;
        QPainterPath smooth;
        for (int k = 0; k <= 20; ++k) {
            const double trend = 13.0 - 6.0 * std::sin(k * 0.3);
            const QPointF rough(2.0 + k, trend + (k % 2 == 0 ? 2.5 : -2.5));
            const QPointF even(2.0 + k, trend);
            if (k == 0) {
                noisy.moveTo(rough);
                smooth.moveTo(even);
            } else {
                noisy.lineTo(rough);
                smooth.lineTo(even);
            }
        }
        p.setPen(QPen(kInk, 1.0));
        p.drawPath(noisy);
        p.setPen(accent);
        p.drawPath(smooth);
        break;
    }
    }
}

} // namespace

QIcon toolIcon(ToolIcon icon) {
    QIcon result;
    for (const int size : {16, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 24.0, size / 24.0);
        draw(painter, icon);
        result.addPixmap(pixmap);
    }
    return result;
}

QIcon colourSwatch(const QColor& colour) {
    QPixmap pixmap(28, 12);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour.darker(130), 1.0));
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(0.5, 0.5, 27.0, 11.0), 3.0, 3.0);
    return QIcon(pixmap);
}

} // namespace quarvex::ui
