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
      generation_(std::move(generation)) {
    setFocusPolicy(Qt::ClickFocus);
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

dravik::Point2 JointCanvasView::draggedTo(const QPointF& view,
                                          const dravik::ReviewFrame& frame) const {
    const dravik::Point2 mouse = sourcePoint(view, frame);
    return {grabbed_.x + (mouse.x - pressSource_.x), grabbed_.y + (mouse.y - pressSource_.y)};
}

void JointCanvasView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    // The canvas is as large as the zoomed photo; only what the scroll view shows is painted.
    const QRect exposed = event->rect() & visibleRegion().boundingRect();
    if (exposed.isEmpty())
        return;
    painter.setClipRect(exposed);
    const dravik::ReviewFrame* frame = model_ ? model_->frame(frameID_) : nullptr;
    if (!frame || !model_->images().count(frameID_)) {
        painter.fillRect(exposed, palette().color(QPalette::Window));
        return;
    }

    const qreal ratio = devicePixelRatioF();
    const QImage& photo = photo_.at(model_->images().at(frameID_),
                                    QSize(qRound(width() * ratio), qRound(height() * ratio)));
    if (photo.isNull()) {
        painter.fillRect(exposed, palette().color(QPalette::Window));
    } else {
        // Only the exposed part is copied, 1:1 from the pre-scaled photo.
        const QRectF source(exposed.x() * ratio, exposed.y() * ratio, exposed.width() * ratio,
                            exposed.height() * ratio);
        painter.drawImage(QRectF(exposed), photo, source);
    }

    painter.setRenderHint(QPainter::Antialiasing);
    if (model_->showMarkers()) {
        std::optional<JointPreview> preview;
        if (dragTarget_ && dragged_)
            preview = JointPreview{dragTarget_->joint, *dragged_};
        drawSkeleton(painter, *model_, *frame, scale_, preview);
    }
    drawLean(painter, *model_, *frame, scale_, leanDragged_);
}

void JointCanvasView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || isStale()) {
        event->ignore();
        return;
    }
    if (!model_->frame(frameID_)) {
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
    const dravik::ReviewFrame* frame = model_->frame(frameID_);
    if (!frame)
        return;
    const dravik::Point2 view{event->position().x(), event->position().y()};

    if (model_->leanMode() && model_->showLean() && model_->leanPlacement()) {
        model_->placeLean(sourcePoint(event->position(), *frame), frameID_);
        return;
    }
    if (pressLean(view, *frame))
        return;
    if (model_->placing()) {
        model_->edit(sourcePoint(event->position(), *frame), dravik::allJointReviewStates[0],
                     model_->target(frameID_, model_->selected()));
        return;
    }
    pressJoint(view, *frame);
}

bool JointCanvasView::pressLean(const dravik::Point2& view, const dravik::ReviewFrame& frame) {
    if (!model_->leanMode())
        return false;
    const auto annotation = model_->lean(frameID_);
    if (!annotation)
        return false;
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
        return false;
    model_->setSelectedLeanHandle(*nearest);
    pressSource_ = sourcePoint({view.x, view.y}, frame);
    grabbed_ = *annotation->point(*nearest);
    leanHandle_ = *nearest;
    leanDragTarget_ = model_->leanTarget(frameID_);
    leanDragged_ = annotation;
    return true;
}

bool JointCanvasView::pressJoint(const dravik::Point2& view, const dravik::ReviewFrame& frame) {
    if (!model_->showMarkers())
        return false;
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
        return false;
    model_->setSelected(*nearest);
    pressSource_ = sourcePoint({view.x, view.y}, frame);
    grabbed_ = *frame.displayPoint(*nearest, kind);
    dragTarget_ = model_->target(frameID_, *nearest);
    dragged_.reset();
    return true;
}

void JointCanvasView::mouseMoveEvent(QMouseEvent* event) {
    if (!model_ || !(event->buttons() & Qt::LeftButton))
        return;
    const dravik::ReviewFrame* frame = model_->frame(frameID_);
    if (leanDragTarget_ && leanDragged_) {
        if (!frame || !model_->validLean(*leanDragTarget_)) {
            cancelDrag();
            return;
        }
        leanDragged_->move(leanHandle_, draggedTo(event->position(), *frame));
        model_->setLeanPreviewTarget(leanDragTarget_);
        update();
    } else if (dragTarget_) {
        if (!frame || !model_->valid(*dragTarget_)) {
            cancelDrag();
            return;
        }
        dragged_ = draggedTo(event->position(), *frame);
        model_->setPreviewTarget(dragTarget_);
        update();
    }
}

void JointCanvasView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    QPointer<JointCanvasView> self(this);
    finishDrag();
    if (!self)
        return;
    tracking_ = false;
    emit trackingEnded();
}

void JointCanvasView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    // A hidden canvas gets no release: end the press here, or it would never be replaced.
    if (!tracking_)
        return;
    cancelDrag();
    tracking_ = false;
    emit trackingEnded();
}

void JointCanvasView::finishDrag() {
    if (!model_) {
        cancelDrag();
        return;
    }
    // Take the drag state first: committing redraws, and the redraw must show the document.
    auto leanTarget = std::exchange(leanDragTarget_, std::nullopt);
    auto leanMoved = std::exchange(leanDragged_, std::nullopt);
    auto target = std::exchange(dragTarget_, std::nullopt);
    auto point = std::exchange(dragged_, std::nullopt);

    if (leanTarget && leanMoved && model_->validLean(*leanTarget) &&
        leanMoved != model_->lean(frameID_))
        model_->commitLean(*leanMoved, *leanTarget);
    if (target && point && model_->valid(*target)) {
        const dravik::ReviewFrame* frame = model_->frame(frameID_);
        const auto shown = frame
                               ? frame->displayPoint(target->joint, model_->settings(frameID_).kind)
                               : std::nullopt;
        if (point != shown)
            model_->edit(*point, dravik::allJointReviewStates[0], *target);
    }
    // Nothing committed (or the commit was refused): the preview must not outlive the drag.
    if (model_ && leanTarget && model_->leanPreviewTarget() == leanTarget)
        model_->setLeanPreviewTarget(std::nullopt);
    if (model_ && target && model_->previewTarget() == target)
        model_->setPreviewTarget(std::nullopt);
    update();
}

void JointCanvasView::cancelDrag() {
    const bool dragging = dragTarget_ || leanDragTarget_;
    dragTarget_.reset();
    dragged_.reset();
    leanDragTarget_.reset();
    leanDragged_.reset();
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
        cancelDrag();
        if (model_->leanMode())
            model_->cancelInteraction();
        else
            model_->setPlacing(false);
        return;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    cancelDrag();
    if (model_->leanMode())
        model_->nudgeLean(dx, dy);
    else
        model_->nudge(dx, dy, frameID_);
}

} // namespace tessary
