// SPDX-License-Identifier: Apache-2.0
#include "joint_canvas_view.h"

#include "canvas_drawing.h"
#include "dravik/joints.h"
#include "reviewer_model.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>
#include <utility>

namespace tessary {

namespace {

double distance(const dravik::Point2& a, const dravik::Point2& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

} // namespace

JointCanvasView::JointCanvasView(ReviewerModel& model, std::string frameID, dravik::Uuid generation,
                                 QWidget* parent)
    : QWidget(parent), model_(&model), frameID_(std::move(frameID)),
      generation_(std::move(generation)), photo_([this] { update(); }) {
    // Reachable with Tab, so the arrow keys nudge without a click first.
    setFocusPolicy(Qt::StrongFocus);
    // The line being placed follows the pointer between its two clicks.
    setMouseTracking(true);
    // Every pixel is painted from the photo, so Qt need not clear the background first.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

bool JointCanvasView::isStale() const {
    return !model_ || model_->canvasGeneration() != generation_;
}

void JointCanvasView::setScale(double scale) {
    if (scale == scale_)
        return;
    scale_ = scale;
    update();
}

dravik::Point2 JointCanvasView::sourcePoint(const QPointF& view,
                                            const dravik::ReviewFrame& frame) const {
    return dravik::ReviewCoordinates::source({view.x(), view.y()}, frame.panel, scale_);
}

dravik::Point2 JointCanvasView::draggedTo(const QPointF& view, const dravik::ReviewFrame& frame,
                                          const dravik::Point2& pressed,
                                          const dravik::Point2& grabbed) const {
    const dravik::Point2 mouse = sourcePoint(view, frame);
    return {grabbed.x + (mouse.x - pressed.x), grabbed.y + (mouse.y - pressed.y)};
}

void JointCanvasView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    // The canvas is as large as the zoomed photo; only what the scroll view shows is painted.
    const QRect exposed = event->rect() & visibleRegion().boundingRect();
    if (exposed.isEmpty())
        return;
    painter.setClipRect(exposed);
    const dravik::ReviewFrame* frame = model_ ? model_->frame(frameID_) : nullptr;
    auto held = frame ? model_->images().find(frameID_) : decltype(model_->images().end()){};
    if (!frame || held == model_->images().end() || held->second.image.isNull()) {
        painter.fillRect(exposed, palette().color(QPalette::Window));
        return;
    }

    // The picture shows what it covers, the panel grown to its decode's grid.
    const FramePhoto& photo = held->second;
    const qreal ratio = devicePixelRatioF();
    const QRectF target((photo.covers.x - frame->panel.x) * scale_,
                        (photo.covers.y - frame->panel.y) * scale_, photo.covers.width * scale_,
                        photo.covers.height * scale_);
    const QRectF covers(photo.covers.x, photo.covers.y, photo.covers.width, photo.covers.height);
    const bool fromCopy = photo_.paint(painter, exposed, photo.image, covers, target,
                                       visibleRegion().boundingRect(), size(), ratio);
    painted_ = {photo.image.cacheKey(),
                photo.scale == dravik::PhotoScale::full ||
                    photo.image.width() >= 0.99 * target.width() * ratio,
                fromCopy};
    // What is drawn decides what is wanted: a sharper picture arrives as imagesChanged.
    model_->requestPhotoDetail(frameID_, scale_ * ratio);

    painter.setRenderHint(QPainter::Antialiasing);
    std::optional<JointPreview> preview;
    if (const auto* drag = std::get_if<JointDrag>(&gesture_); drag && drag->dragged)
        preview = JointPreview{drag->target.joint, *drag->dragged};
    if (model_->showMarkers()) {
        const Presentation settings = model_->settings(frameID_);
        drawSkeleton(painter, *frame,
                     {settings.kind, settings.showRaw, model_->selected(),
                      model_->highlightedJoints(), preview},
                     scale_);
    }
    drawLean(painter, frame->panel, leanScene(), scale_);

    const QRectF shown = visibleRegion().boundingRect();
    if (preview)
        drawPreviewNotice(painter, *frame, *preview, scale_, shown);
    else if (!model_->showMarkers())
        // Kept off on purpose (lean review hides them): say so, or it looks like no detection.
        drawCanvasNote(painter, shown, QStringLiteral("Joint markers hidden"));
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(shown.adjusted(1, 1, -1, -1));
    }
}

LeanScene JointCanvasView::leanScene() const {
    LeanScene scene;
    scene.shown = visibleRegion().boundingRect();
    const bool active = model_->activeFrameID() == frameID_;
    scene.placing = active && model_->leanPlacement().has_value();
    scene.placementStart = model_->leanPlacementStart();
    if (active)
        scene.selectedHandle = model_->selectedLeanHandle();
    if (scene.placing)
        scene.pointer = pointer_;
    scene.previewing =
        model_->leanPreviewTarget() && model_->leanPreviewTarget()->frameID == frameID_;
    if (const auto* drag = std::get_if<LeanDrag>(&gesture_)) {
        scene.annotation = drag->dragged;
        scene.measurement = model_->measureLean(drag->dragged);
    } else if (model_->showLean()) {
        if (const dravik::LeanFrameEvidence* shown = model_->leanReport()->frame(frameID_)) {
            scene.annotation = shown->annotation;
            scene.measurement = shown->measurement;
        }
    }
    return scene;
}

void JointCanvasView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || isStale() || !model_->frame(frameID_)) {
        event->ignore();
        return;
    }
    // Activating another frame renews the model's canvas generation; this press goes on, the
    // wrapper swaps canvases once the button is up.
    tracking_ = true;
    QPointer<JointCanvasView> self(this);
    model_->activate(frameID_);
    if (!self || !model_)
        return;
    setFocus(Qt::MouseFocusReason);
    if (const dravik::ReviewFrame* frame = model_->frame(frameID_))
        gesture_ = startGesture({event->position().x(), event->position().y()}, *frame);
}

JointCanvasView::Gesture JointCanvasView::startGesture(const dravik::Point2& view,
                                                       const dravik::ReviewFrame& frame) {
    const dravik::Point2 source = sourcePoint({view.x, view.y}, frame);
    if (model_->leanMode() && model_->showLean() && model_->leanPlacement()) {
        model_->placeLean(source, frameID_);
        return PlacedLean{};
    }
    if (auto drag = grabLeanHandle(view, frame)) {
        model_->setSelectedLeanHandle(drag->handle);
        return *drag;
    }
    if (model_->placing()) {
        model_->edit(source, dravik::JointReviewState::corrected,
                     model_->target(frameID_, model_->selected()));
        return PlacedJoint{};
    }
    if (auto drag = grabJoint(view, frame)) {
        model_->setSelected(drag->target.joint);
        return *drag;
    }
    return NoGesture{};
}

std::optional<JointCanvasView::LeanDrag>
JointCanvasView::grabLeanHandle(const dravik::Point2& view, const dravik::ReviewFrame& frame) {
    if (!model_->leanMode())
        return std::nullopt;
    const auto annotation = model_->lean(frameID_);
    if (!annotation)
        return std::nullopt;
    std::optional<dravik::LeanHandle> nearest;
    double nearestDistance = 0;
    for (dravik::LeanHandle handle : dravik::allLeanHandles) {
        const auto point = annotation->point(handle);
        if (!point)
            continue;
        const double d =
            distance(view, dravik::ReviewCoordinates::display(*point, frame.panel, scale_));
        if (!nearest || d < nearestDistance) {
            nearest = handle;
            nearestDistance = d;
        }
    }
    if (!nearest || nearestDistance > handleReach)
        return std::nullopt;
    return LeanDrag{model_->leanTarget(frameID_), *nearest, sourcePoint({view.x, view.y}, frame),
                    *annotation->point(*nearest), *annotation};
}

std::optional<JointCanvasView::JointDrag>
JointCanvasView::grabJoint(const dravik::Point2& view, const dravik::ReviewFrame& frame) {
    if (!model_->showMarkers())
        return std::nullopt;
    const std::string kind = model_->settings(frameID_).kind;
    const std::string* nearest = nullptr;
    double nearestDistance = 0;
    // Strictly nearer only, so a tie goes to the joint listed first.
    for (const std::string& joint : dravik::InspectionRenderer::jointNames()) {
        const auto point = frame.displayPoint(joint, kind);
        if (!point)
            continue;
        const double d =
            distance(view, dravik::ReviewCoordinates::display(*point, frame.panel, scale_));
        if (!nearest || d < nearestDistance) {
            nearest = &joint;
            nearestDistance = d;
        }
    }
    if (!nearest || nearestDistance > jointReach)
        return std::nullopt;
    return JointDrag{model_->target(frameID_, *nearest), sourcePoint({view.x, view.y}, frame),
                     *frame.displayPoint(*nearest, kind), std::nullopt};
}

void JointCanvasView::mouseMoveEvent(QMouseEvent* event) {
    if (!model_)
        return;
    const dravik::ReviewFrame* frame = model_->frame(frameID_);
    if (!(event->buttons() & Qt::LeftButton)) {
        if (frame && model_->leanPlacementStart() && model_->activeFrameID() == frameID_) {
            pointer_ = sourcePoint(event->position(), *frame);
            update();
        }
        return;
    }
    if (auto* drag = std::get_if<LeanDrag>(&gesture_)) {
        if (!frame || !model_->validLean(drag->target)) {
            cancelGesture();
            return;
        }
        drag->dragged.move(drag->handle,
                           draggedTo(event->position(), *frame, drag->pressed, drag->grabbed));
        model_->setLeanPreviewTarget(drag->target);
        update();
    } else if (auto* joint = std::get_if<JointDrag>(&gesture_)) {
        if (!frame || !model_->valid(joint->target)) {
            cancelGesture();
            return;
        }
        joint->dragged = draggedTo(event->position(), *frame, joint->pressed, joint->grabbed);
        model_->setPreviewTarget(joint->target);
        update();
    }
}

void JointCanvasView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    QPointer<JointCanvasView> self(this);
    finishGesture();
    if (!self)
        return;
    tracking_ = false;
    emit trackingEnded();
}

void JointCanvasView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void JointCanvasView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

void JointCanvasView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    if (std::exchange(pointer_, std::nullopt))
        update();
}

void JointCanvasView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    // A hidden canvas gets no release: end the press here, or it would never be replaced.
    if (!tracking_)
        return;
    cancelGesture();
    tracking_ = false;
    emit trackingEnded();
}

void JointCanvasView::finishGesture() {
    // Taken first: committing redraws, and the redraw must show the document.
    const Gesture finished = std::exchange(gesture_, NoGesture{});
    if (!model_) {
        update();
        return;
    }
    if (const auto* drag = std::get_if<LeanDrag>(&finished)) {
        if (model_->validLean(drag->target) && drag->dragged != model_->lean(frameID_))
            model_->commitLean(drag->dragged, drag->target);
        // Nothing committed (or the commit was refused): the preview must not outlive the drag.
        if (model_ && model_->leanPreviewTarget() == drag->target)
            model_->setLeanPreviewTarget(std::nullopt);
    } else if (const auto* joint = std::get_if<JointDrag>(&finished)) {
        // A drag that comes back to where it started, or a click, changes nothing.
        const dravik::ReviewFrame* frame = model_->frame(frameID_);
        if (joint->dragged && frame && model_->valid(joint->target) &&
            joint->dragged !=
                frame->displayPoint(joint->target.joint, model_->settings(frameID_).kind))
            model_->edit(*joint->dragged, dravik::JointReviewState::corrected, joint->target);
        if (model_ && model_->previewTarget() == joint->target)
            model_->setPreviewTarget(std::nullopt);
    }
    update();
}

void JointCanvasView::cancelGesture() {
    const bool dragging =
        std::holds_alternative<JointDrag>(gesture_) || std::holds_alternative<LeanDrag>(gesture_);
    gesture_ = NoGesture{};
    if (model_ && dragging) {
        model_->setPreviewTarget(std::nullopt);
        model_->setLeanPreviewTarget(std::nullopt);
    }
    update();
}

void JointCanvasView::keyPressEvent(QKeyEvent* event) {
    if (!model_) {
        QWidget::keyPressEvent(event);
        return;
    }
    const double step = event->modifiers() & Qt::ShiftModifier ? 10.0 : 1.0;
    double dx = 0;
    double dy = 0;
    switch (event->key()) {
    case Qt::Key_Left:
        dx = -step;
        break;
    case Qt::Key_Right:
        dx = step;
        break;
    case Qt::Key_Down:
        dy = step;
        break;
    case Qt::Key_Up:
        dy = -step;
        break;
    case Qt::Key_Escape:
        cancelGesture();
        if (model_->leanMode())
            model_->cancelInteraction();
        else
            model_->setPlacing(false);
        return;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    cancelGesture();
    if (model_->leanMode())
        model_->nudgeLean(dx, dy);
    else
        model_->nudge(dx, dy, frameID_);
}

} // namespace tessary
