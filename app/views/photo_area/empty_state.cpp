// SPDX-License-Identifier: Apache-2.0
#include "photo_area/empty_state.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessary {

namespace {

constexpr double symbolHeight = 52;
constexpr double gap = 14;

QFont titleFont(QFont font) {
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    return font;
}

} // namespace

EmptyState::EmptyState(const QString& title, const std::function<void()>& importFolder,
                       QWidget* parent)
    : QWidget(parent), title_(title), import_(new QPushButton("Import Photo Folder\u2026", this)) {
    setAccessibleName(title);
    setMinimumHeight(200);
    import_->setToolTip("Copy a folder of JPEG or PNG photos into Tessary's data folder and "
                        "analyse it");
    connect(import_, &QPushButton::clicked, this, [importFolder] { importFolder(); });

    // The symbol and the title are painted above the button, centred with it.
    auto* column = new QVBoxLayout(this);
    column->addStretch(1);
    column->addSpacing(static_cast<int>(symbolHeight + gap + gap) +
                       QFontMetrics(titleFont(font())).height());
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(import_);
    row->addStretch(1);
    column->addLayout(row);
    column->addStretch(1);
}

void EmptyState::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ink = palette().color(QPalette::PlaceholderText);

    const QFont font = titleFont(painter.font());
    const QFontMetrics metrics(font);
    const QSizeF symbol(64, symbolHeight);
    const double top = import_->geometry().top() - gap - metrics.height() - gap - symbol.height();
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
