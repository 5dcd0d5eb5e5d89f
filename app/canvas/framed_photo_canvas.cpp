// SPDX-License-Identifier: Apache-2.0
#include "framed_photo_canvas.h"

#include "joint_canvas_view.h"
#include "photo_scroll_view.h"
#include "reviewer_model.h"

#include <QVBoxLayout>
#include <utility>

namespace tessary {

FramedPhotoCanvas::FramedPhotoCanvas(ReviewerModel& model, std::string frameID, QWidget* parent)
    : QWidget(parent), model_(model), frameID_(std::move(frameID)),
      scrollView_(new PhotoScrollView(model, frameID_, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scrollView_);
    scrollView_->onZoom = [this](double zoom) {
        if (zoom == displayedZoom_)
            return;
        displayedZoom_ = zoom;
        emit zoomChanged(zoom);
    };
    rebuildCanvas();

    for (auto redraw : {&ReviewerModel::imagesChanged, &ReviewerModel::viewOptionsChanged,
                        &ReviewerModel::selectionChanged, &ReviewerModel::navigationChanged})
        connect(&model_, redraw, this, &FramedPhotoCanvas::refresh);
    // These can move the photo as well as change what is drawn on it.
    for (auto relayout : {&ReviewerModel::snapshotChanged, &ReviewerModel::presentationChanged,
                          &ReviewerModel::sessionChanged})
        connect(&model_, relayout, this, [this] {
            scrollView_->configure();
            refresh();
        });
    connect(&model_, &ReviewerModel::interactionChanged, this, [this] {
        JointCanvasView* canvas = scrollView_->canvas();
        if (canvas && canvas->generation() != model_.canvasGeneration() && !canvas->isTracking())
            rebuildCanvas();
        refresh();
    });
}

FramedPhotoCanvas::~FramedPhotoCanvas() = default;

JointCanvasView* FramedPhotoCanvas::canvas() const {
    return scrollView_->canvas();
}

PhotoScrollView* FramedPhotoCanvas::scrollView() const {
    return scrollView_;
}

void FramedPhotoCanvas::rebuildCanvas() {
    JointCanvasView* old = scrollView_->canvas();
    const bool hadFocus = old && old->hasFocus();
    auto* canvas = new JointCanvasView(model_, frameID_, model_.canvasGeneration());
    // A press that straddled the generation change finishes on the old canvas first.
    connect(canvas, &JointCanvasView::trackingEnded, this, [this, canvas] {
        if (scrollView_->canvas() == canvas && canvas->generation() != model_.canvasGeneration())
            rebuildCanvas();
    });
    scrollView_->setCanvas(canvas);
    if (hadFocus)
        canvas->setFocus(Qt::OtherFocusReason);
    if (old) {
        old->hide();
        old->deleteLater(); // it may be the one whose event is being handled
    }
}

void FramedPhotoCanvas::refresh() {
    if (JointCanvasView* canvas = scrollView_->canvas())
        canvas->update();
}

} // namespace tessary
