#include "widgets/icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace widgets {

namespace {

constexpr int canvas = 128; // units of the drawing, the same as in resources/icons/org.quillon.Shell.svg

void draw_page(QPainter &painter) {
    QPainterPath page(QPointF(24, 12));
    for (const QPointF &corner : {QPointF(78, 12), QPointF(100, 34), QPointF(100, 116), QPointF(24, 116)})
        page.lineTo(corner);
    page.closeSubpath();
    painter.setPen(QPen(QColor(0x5b6770), 3));
    painter.setBrush(QColor(0xfbfaf5));
    painter.drawPath(page);
    QPainterPath fold(QPointF(78, 12));
    fold.lineTo(78, 34);
    fold.lineTo(100, 34);
    fold.closeSubpath();
    painter.setBrush(QColor(0xdcd9cc));
    painter.drawPath(fold);
    painter.setPen(QPen(QColor(0xa9b0b5), 4, Qt::SolidLine, Qt::RoundCap));
    for (const QLineF &line : {QLineF(36, 48, 84, 48), QLineF(36, 62, 76, 62), QLineF(36, 76, 58, 76)})
        painter.drawLine(line);
}

void draw_quill(QPainter &painter) {
    QPainterPath feather(QPointF(54, 96));
    feather.cubicTo(58, 62, 84, 30, 120, 20);
    feather.cubicTo(120, 56, 98, 88, 66, 92);
    feather.closeSubpath();
    painter.setPen(QPen(QColor(0x123a52), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(0x2a7fae));
    painter.drawPath(feather);
    QPainterPath shaft(QPointF(44, 108));
    shaft.cubicTo(58, 84, 80, 56, 106, 34);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0x123a52), 4, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(shaft);
}

QPixmap drawn(int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(static_cast<qreal>(size) / canvas, static_cast<qreal>(size) / canvas);
    draw_page(painter);
    draw_quill(painter);
    return pixmap;
}

} // namespace

QIcon shell_icon() {
    const QIcon installed = QIcon::fromTheme(QStringLiteral("org.quillon.Shell"));
    if (!installed.isNull() && !installed.availableSizes().isEmpty())
        return installed;
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128})
        icon.addPixmap(drawn(size));
    return icon;
}

} // namespace widgets
