#pragma once

#include "dravik/lean.h"
#include "dravik/review.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QString>
#include <optional>
#include <string>

class QPainter;

namespace tessary {

class ReviewerModel;

// A joint being dragged, shown at the mouse instead of where the document has it.
struct JointPreview {
    std::string joint;
    dravik::Point2 point;
};

inline QPointF viewPoint(const dravik::Point2& source, const dravik::PixelRect& panel,
                         double scale) {
    const dravik::Point2 p = dravik::ReviewCoordinates::display(source, panel, scale);
    return {p.x, p.y};
}

QFont tagFont(int pixels, bool bold);

// Text on a dark plate, so it reads on any photo; `anchor` is the plate's top-left corner.
void drawTag(QPainter& painter, const QPointF& anchor, const QString& text, const QColor& colour,
             const QFont& font);

// Raw comparison points, bones, joint markers and their numbers, and while `preview` is set a
// notice that the drag is not saved yet.
void drawSkeleton(QPainter& painter, const ReviewerModel& model, const dravik::ReviewFrame& frame,
                  double scale, const std::optional<JointPreview>& preview);

// The wheel axis and reference lines with their handles, labels and the angle between them;
// `dragged` replaces the frame's annotation while a handle is being dragged.
void drawLean(QPainter& painter, const ReviewerModel& model, const dravik::ReviewFrame& frame,
              double scale, const std::optional<dravik::LeanAnnotation>& dragged);

} // namespace tessary
