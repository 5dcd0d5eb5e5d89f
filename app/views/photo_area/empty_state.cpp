#include "photo_area/empty_state.h"

#include <QPainter>
#include <QPainterPath>

namespace tessary {

EmptyState::EmptyState(const QString& title, QWidget* parent) : QWidget(parent), title_(title) {
    setAccessibleName(title);
    setMinimumHeight(160);
}

void EmptyState::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ink = palette().color(QPalette::PlaceholderText);

    QFont font = painter.font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    const QFontMetrics metrics(font);
    const QSizeF symbol(64, 52);
    const double gap = 14;
    const double top = (height() - symbol.height() - gap - metrics.height()) / 2.0;
    const QRectF frame(QPointF((width() - symbol.width()) / 2.0, top), symbol);

    painter.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, 8, 8);
    // Head and shoulders, cropped by the frame's bottom edge.
    const QPointF center = frame.center();
    painter.drawEllipse(QPointF(center.x(), center.y() - 6), 8, 8);
    QPainterPath shoulders;
    shoulders.moveTo(center.x() - 18, frame.bottom());
    shoulders.cubicTo(center.x() - 18, center.y() + 6, center.x() + 18, center.y() + 6,
                      center.x() + 18, frame.bottom());
    painter.drawPath(shoulders);

    painter.setFont(font);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRectF(0, frame.bottom() + gap, width(), metrics.height()), Qt::AlignCenter,
                     title_);
}

} // namespace tessary
