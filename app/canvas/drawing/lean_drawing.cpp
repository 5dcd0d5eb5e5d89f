// SPDX-License-Identifier: Apache-2.0
#include "canvas_drawing.h"
#include "canvas_palette.h"

#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessary {

namespace {

constexpr double placementDot = 12.0;
constexpr double handleDiameter = 16.0;
constexpr double lineWidth = 2.0;
constexpr double rayLength = 30.0;
constexpr double indicatorWidth = 2.0;
constexpr double tagPadding = 3.0;

} // namespace

QFont tagFont(int pixels, bool bold) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

void drawTag(QPainter& painter, const QPointF& anchor, const QString& text, const QColor& colour,
             const QFont& font, const QRectF& shown) {
    painter.setFont(font);
    QRectF bounds = painter.boundingRect(QRectF(anchor, QSizeF(1000, 1000)),
                                         Qt::AlignLeft | Qt::AlignTop, text);
    QRectF plate = bounds.adjusted(-tagPadding, -tagPadding, tagPadding, tagPadding);
    // Kept in sight: a line near the edge of the photo or of the scrolled view would otherwise
    // push its text out of it.
    if (!shown.isEmpty()) {
        const QPointF shift(
            std::max(shown.left() - plate.left(), std::min(0.0, shown.right() - plate.right())),
            std::max(shown.top() - plate.top(), std::min(0.0, shown.bottom() - plate.bottom())));
        bounds.translate(shift);
        plate.translate(shift);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette::withAlpha(palette::black, 0.6));
    painter.drawRoundedRect(plate, 4, 4);
    painter.setPen(colour);
    painter.setBrush(Qt::NoBrush);
    painter.drawText(bounds, Qt::AlignLeft | Qt::AlignTop, text);
}

namespace {

QPointF midpoint(const QPointF& a, const QPointF& b) {
    return (a + b) / 2;
}

// A unit direction in view points for an orientation in degrees, counter-clockwise as seen.
QPointF direction(double degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    return {std::cos(radians), -std::sin(radians)};
}

struct ViewLine {
    QPointF a;
    QPointF b;
};

ViewLine viewLine(const dravik::LeanLine& line, const dravik::PixelRect& panel, double scale) {
    return {viewPoint(line.a, panel, scale), viewPoint(line.b, panel, scale)};
}

void drawLine(QPainter& painter, const ViewLine& line, const QColor& colour, const QString& label,
              const QFont& font, const QRectF& shown) {
    painter.setPen(QPen(colour, lineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(line.a, line.b);
    drawTag(painter, midpoint(line.a, line.b) + QPointF(12, 6), label, colour, font, shown);
}

void drawAngle(QPainter& painter, const dravik::LeanMeasurement& measurement, const ViewLine& wheel,
               bool previewing, const QRectF& shown) {
    // The upright of the reference, and the wheel axis turned from it by the measured angle.
    const double upright = measurement.referenceOrientation + 90.0;
    const double axis = upright - measurement.angle;
    const QPointF vertex = midpoint(wheel.a, wheel.b);
    painter.setPen(QPen(palette::yellow, indicatorWidth, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(vertex, vertex + direction(upright) * rayLength);
    painter.drawLine(vertex, vertex + direction(axis) * rayLength);
    const double arcRadius = rayLength * 0.6;
    QPainterPath arc;
    arc.arcMoveTo(
        QRectF(vertex.x() - arcRadius, vertex.y() - arcRadius, 2 * arcRadius, 2 * arcRadius),
        upright);
    arc.arcTo(QRectF(vertex.x() - arcRadius, vertex.y() - arcRadius, 2 * arcRadius, 2 * arcRadius),
              upright, -measurement.angle);
    painter.drawPath(arc);

    const QString status = previewing             ? QStringLiteral("Preview · release to save")
                           : measurement.reviewed ? QStringLiteral("Reviewed")
                                                  : QStringLiteral("Draft · correct the handles");
    const QString text = QString::asprintf("%.0f", measurement.angle) + QStringLiteral("° ") +
                         QString::fromUtf8(measurement.title().data(),
                                           static_cast<qsizetype>(measurement.title().size())) +
                         '\n' + status;
    drawTag(painter, vertex + QPointF(rayLength + 6, -rayLength), text, palette::yellow,
            tagFont(12, true), shown);
}

QString lineLabel(std::string_view prefix, bool reviewed) {
    return QString::fromUtf8(prefix.data(), static_cast<qsizetype>(prefix.size())) +
           (reviewed ? QStringLiteral("reviewed") : QStringLiteral("draft"));
}

} // namespace

void drawLean(QPainter& painter, const dravik::PixelRect& panel, const LeanScene& scene,
              double scale) {
    const auto& annotation = scene.annotation;
    if (!scene.placing && !annotation)
        return;

    if (scene.placing && scene.placementStart) {
        if (scene.pointer) {
            // The line to be placed follows the pointer until the second click.
            QPen band(palette::yellow, 1.5, Qt::DashLine, Qt::RoundCap);
            painter.setPen(band);
            painter.drawLine(viewPoint(*scene.placementStart, panel, scale),
                             viewPoint(*scene.pointer, panel, scale));
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette::yellow);
        painter.drawEllipse(viewPoint(*scene.placementStart, panel, scale), placementDot / 2,
                            placementDot / 2);
    }

    const QFont small = tagFont(11, false);
    std::optional<ViewLine> wheel, reference;
    if (annotation && annotation->wheel) {
        wheel = viewLine(*annotation->wheel, panel, scale);
        drawLine(painter, *wheel, palette::yellow, lineLabel({}, annotation->wheelReviewed), small,
                 scene.shown);
    }
    if (annotation && annotation->reference) {
        reference = viewLine(*annotation->reference, panel, scale);
        drawLine(painter, *reference, palette::cyan,
                 lineLabel(dravik::prefix(annotation->basis), annotation->referenceReviewed), small,
                 scene.shown);
    }

    if (annotation)
        for (dravik::LeanHandle handle : dravik::allLeanHandles) {
            const auto point = annotation->point(handle);
            if (!point)
                continue;
            const bool selected = scene.selectedHandle == handle;
            painter.setPen(QPen(dravik::isReference(handle) ? palette::cyan : palette::yellow,
                                selected ? 4.0 : 2.0));
            painter.setBrush(palette::black);
            painter.drawEllipse(viewPoint(*point, panel, scale), handleDiameter / 2,
                                handleDiameter / 2);
        }
    painter.setBrush(Qt::NoBrush);

    if (scene.measurement && wheel && reference) {
        drawAngle(painter, *scene.measurement, *wheel, scene.previewing, scene.shown);
        return;
    }
    const QString advice = wheel
                               ? QStringLiteral("Place valid wheel/reference lines; angle "
                                                "unavailable.")
                               : QStringLiteral("Place the front-wheel axis using Lean controls.");
    QPointF anchor(12, 12);
    if (wheel)
        anchor = midpoint(wheel->a, wheel->b) + QPointF(12, -40);
    else if (reference)
        anchor = midpoint(reference->a, reference->b) + QPointF(12, -40);
    else if (scene.placing && scene.placementStart)
        anchor = viewPoint(*scene.placementStart, panel, scale) + QPointF(12, -40);
    drawTag(painter, anchor, QStringLiteral("Wheel lean unavailable\n") + advice, palette::yellow,
            tagFont(12, true), scene.shown);
}

} // namespace tessary
