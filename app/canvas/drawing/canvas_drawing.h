// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/lean_report.h"
#include "dravik/review.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <optional>
#include <set>
#include <string>

class QPainter;

namespace tessary {

// A joint being dragged, shown at the mouse instead of where the document has it.
struct JointPreview {
    std::string joint;
    dravik::Point2 point;
};

// What the skeleton of one photo shows: the canvas fills it from the model, a printed report from
// the saved review.
struct SkeletonScene {
    std::string kind = "3D";
    bool showRaw = false;
    std::optional<std::string> selected;
    std::set<std::string> highlighted;
    std::optional<JointPreview> preview;
};

// What the lean overlay of one photo shows.
struct LeanScene {
    std::optional<dravik::LeanAnnotation> annotation;
    std::optional<dravik::LeanMeasurement> measurement;
    std::optional<dravik::LeanHandle> selectedHandle;
    bool placing = false; // a line is being placed on this photo
    std::optional<dravik::Point2> placementStart;
    bool previewing = false; // a handle is being dragged
    // Where the pointer is while a line is being placed: the line follows it from its start.
    std::optional<dravik::Point2> pointer;
    // The part of the view in sight, where the labels are kept: the scrolled canvas's visible
    // part, or a printed photo's crop.
    QRectF shown;
};

inline QPointF viewPoint(const dravik::Point2& source, const dravik::PixelRect& panel,
                         double scale) {
    const dravik::Point2 p = dravik::ReviewCoordinates::display(source, panel, scale);
    return {p.x, p.y};
}

QFont tagFont(int pixels, bool bold);

// Text on a dark plate, so it reads on any photo; `anchor` is the plate's top-left corner. The
// plate is moved inside `shown`, the part of the view in sight, unless that is empty.
void drawTag(QPainter& painter, const QPointF& anchor, const QString& text, const QColor& colour,
             const QFont& font, const QRectF& shown);

// Raw comparison points, bones, joint markers and their numbers. A number is left out where it
// would overlap a marker already numbered, the selected joint's first.
void drawSkeleton(QPainter& painter, const dravik::ReviewFrame& frame, const SkeletonScene& scene,
                  double scale);

// The notice that a dragged joint is not saved yet, beside it; drawn over everything else.
void drawPreviewNotice(QPainter& painter, const dravik::ReviewFrame& frame,
                       const JointPreview& preview, double scale, const QRectF& shown);

// A short note at the top left of `shown`, for a state of the canvas the photo cannot show.
void drawCanvasNote(QPainter& painter, const QRectF& shown, const QString& text);

// The wheel axis and reference lines with their handles, labels and the angle between them.
void drawLean(QPainter& painter, const dravik::PixelRect& panel, const LeanScene& scene,
              double scale);

} // namespace tessary
