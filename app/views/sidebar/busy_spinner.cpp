// SPDX-License-Identifier: Apache-2.0
#include "sidebar/busy_spinner.h"

#include <QPainter>

namespace tessary {

namespace {

constexpr int spokes = 8;

} // namespace

BusySpinner::BusySpinner(QWidget* parent) : QWidget(parent) {
    setFixedSize(sizeHint());
    timer_.setInterval(100);
    connect(&timer_, &QTimer::timeout, this, [this] {
        step_ = (step_ + 1) % spokes;
        update();
    });
}

void BusySpinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = std::min(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        // The newest spoke is the darkest; the trail fades behind it.
        const int age = (step_ - spoke + spokes) % spokes;
        color.setAlphaF(1.0 - age / double(spokes));
        painter.setPen(QPen(color, radius / 4.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.45), QPointF(0, -radius * 0.9));
        painter.rotate(360.0 / spokes);
    }
}

void BusySpinner::showEvent(QShowEvent*) {
    timer_.start();
}

void BusySpinner::hideEvent(QHideEvent*) {
    timer_.stop();
}

} // namespace tessary
