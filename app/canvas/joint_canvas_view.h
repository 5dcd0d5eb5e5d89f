// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "canvas_drawing.h"
#include "dravik/lean.h"
#include "dravik/review.h"
#include "dravik/uuid.h"
#include "scaled_photo.h"
#include "state/lean_edit_target.h"

#include <QPointer>
#include <QWidget>
#include <optional>
#include <string>
#include <variant>

namespace tessary {

class ReviewerModel;

// Draws one frame's photo with its skeleton and lean lines, and turns mouse and keys into the
// model's edits. Holds no review data: everything is read from the model at each redraw. Built
// for one canvas generation; once the model has moved on, it ignores new presses.
class JointCanvasView : public QWidget {
    Q_OBJECT

  public:
    JointCanvasView(ReviewerModel& model, std::string frameID, dravik::Uuid generation,
                    QWidget* parent = nullptr);

    const std::string& frameID() const { return frameID_; }
    const dravik::Uuid& generation() const { return generation_; }
    bool isStale() const;
    // View points per source pixel.
    double scale() const { return scale_; }
    void setScale(double scale);
    // A mouse button is down since a press this canvas took.
    bool isTracking() const { return tracking_; }

    // The photo as it was last painted: which picture, whether it had the detail the canvas
    // asked for, and whether it came from the display copy alone.
    struct PaintedPhoto {
        qint64 photoKey = 0;
        bool detailed = false;
        bool fromCopy = false;
    };
    const PaintedPhoto& painted() const { return painted_; }

    // Joint and lean handle hit radii, in view points.
    static constexpr double jointReach = 14.0;
    static constexpr double handleReach = 18.0;

  signals:
    void trackingEnded();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    // What the button held down since the last press is doing; decided once, at the press.
    struct NoGesture {};
    // A drag moves the grabbed point by the mouse's travel since the press, so grabbing a marker
    // off-centre does not make it jump, and a drag that comes back to where it started leaves
    // the point exactly where it was. Points are in source pixels.
    struct JointDrag {
        dravik::ReviewEditTarget target;
        dravik::Point2 pressed;
        dravik::Point2 grabbed;
        std::optional<dravik::Point2> dragged; // none until the mouse moves
    };
    struct LeanDrag {
        LeanEditTarget target;
        dravik::LeanHandle handle;
        dravik::Point2 pressed;
        dravik::Point2 grabbed;
        dravik::LeanAnnotation dragged;
    };
    // The press placed a joint or a lean endpoint; the release has nothing left to do.
    struct PlacedJoint {};
    struct PlacedLean {};
    using Gesture = std::variant<NoGesture, JointDrag, LeanDrag, PlacedJoint, PlacedLean>;

    LeanScene leanScene() const;
    Gesture startGesture(const dravik::Point2& view, const dravik::ReviewFrame& frame);
    std::optional<LeanDrag> grabLeanHandle(const dravik::Point2& view,
                                           const dravik::ReviewFrame& frame);
    std::optional<JointDrag> grabJoint(const dravik::Point2& view,
                                       const dravik::ReviewFrame& frame);
    void finishGesture();
    void cancelGesture();
    dravik::Point2 sourcePoint(const QPointF& view, const dravik::ReviewFrame& frame) const;
    dravik::Point2 draggedTo(const QPointF& view, const dravik::ReviewFrame& frame,
                             const dravik::Point2& pressed, const dravik::Point2& grabbed) const;

    QPointer<ReviewerModel> model_;
    std::string frameID_;
    dravik::Uuid generation_;
    double scale_ = 1.0;
    bool tracking_ = false;
    ScaledPhoto photo_;
    PaintedPhoto painted_;
    Gesture gesture_;
    std::optional<dravik::Point2> pointer_; // in source pixels, while the mouse is over the photo
};

} // namespace tessary
