// SPDX-License-Identifier: Apache-2.0
#include "photo_scroll_view.h"

#include "flat_scroll_bars.h"
#include "joint_canvas_view.h"
#include "reviewer_model.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tessary {

namespace {

const QColor documentBackground{40, 40, 40};

// Appearing scroll bars shrink the clip view and ask for another layout; two more passes
// settle it, and a bound keeps a size on the edge from flipping them for ever.
constexpr int maximumLayoutPasses = 3;

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

} // namespace

PhotoDocumentView::PhotoDocumentView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PhotoDocumentView::paintEvent(QPaintEvent* event) {
    QPainter(this).fillRect(event->rect() & visibleRegion().boundingRect(), documentBackground);
}

PhotoScrollView::PhotoScrollView(ReviewerModel& model, std::string frameID, QWidget* parent)
    : QAbstractScrollArea(parent), model_(&model), frameID_(std::move(frameID)),
      document_(new PhotoDocumentView(viewport())) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    horizontalScrollBar()->setSingleStep(20);
    verticalScrollBar()->setSingleStep(20);
    QPalette background = viewport()->palette();
    background.setColor(QPalette::Window, documentBackground);
    viewport()->setPalette(background);
    viewport()->setAutoFillBackground(true);
    useFlatScrollBars(*this, documentBackground.darker(130));
}

void PhotoScrollView::setCanvas(JointCanvasView* canvas) {
    if (canvas_ != canvas && canvas)
        canvas->installEventFilter(this);
    canvas_ = canvas;
    if (!canvas_)
        return;
    canvas_->setParent(document_);
    if (geometry_) {
        const dravik::Point2 origin = geometry_->imageOrigin();
        const ViewSize image = geometry_->imageSize();
        canvas_->setGeometry(rounded(origin.x), rounded(origin.y), rounded(image.width),
                             rounded(image.height));
        canvas_->setScale(geometry_->scale());
    }
    canvas_->show();
}

std::optional<PhotoScrollView::Configuration> PhotoScrollView::configuration() const {
    if (!model_ || !model_->frame(frameID_))
        return std::nullopt;
    const Presentation settings = model_->settings(frameID_);
    const auto& regions = model_->framingRegions();
    auto region = regions.find(frameID_);
    return Configuration{
        frameID_,
        model_->sessionID(),
        {static_cast<double>(viewport()->width()), static_cast<double>(viewport()->height())},
        settings.autoFrame,
        settings.zoom,
        settings.framingRequest,
        region == regions.end() ? std::nullopt : std::optional(region->second)};
}

void PhotoScrollView::configure() {
    layoutDocument();
}

void PhotoScrollView::layoutDocument() {
    // Laid out at the size it is shown at; a hidden view's size means nothing yet, and a centre
    // remembered from it would be off.
    if (!isVisible())
        return;
    for (int pass = 0; pass < maximumLayoutPasses; ++pass) {
        const auto wanted = configuration();
        if (!wanted || wanted == applied_)
            return;
        const dravik::ReviewFrame* frame = model_->frame(frameID_);
        // Auto-framing frames the region at the zoom that fits it; otherwise the chosen zoom
        // applies to the whole panel.
        const PhotoViewport geometry(
            frame->panel, wanted->autoFrame ? wanted->region : std::nullopt, wanted->viewport,
            wanted->autoFrame ? std::nullopt : std::optional(wanted->zoom));

        // A new framing request of the frame on show asks for the target again; otherwise the
        // reviewer keeps looking where they were.
        const bool reframed = applied_ && applied_->frameID == wanted->frameID &&
                              applied_->request != wanted->request;
        const auto& centers = model_->viewportCenters();
        auto remembered = centers.find(frameID_);
        const dravik::Point2 center =
            remembered != centers.end() && !reframed ? remembered->second : geometry.targetCenter();

        applying_ = true;
        resizedWhileApplying_ = false;
        geometry_ = geometry;
        const ViewSize documentSize = geometry.documentSize();
        document_->resize(rounded(documentSize.width), rounded(documentSize.height));
        setCanvas(canvas_);
        if (canvas_)
            canvas_->update();
        const dravik::Point2 scroll = geometry.scrollOrigin(center);
        horizontalScrollBar()->setPageStep(viewport()->width());
        verticalScrollBar()->setPageStep(viewport()->height());
        horizontalScrollBar()->setRange(0, std::max(0, document_->width() - viewport()->width()));
        verticalScrollBar()->setRange(0, std::max(0, document_->height() - viewport()->height()));
        horizontalScrollBar()->setValue(rounded(scroll.x));
        verticalScrollBar()->setValue(rounded(scroll.y));
        placeDocument();
        applying_ = false;

        applied_ = wanted;
        currentZoom_ = geometry.zoom();
        rememberCenter();
        if (onZoom)
            onZoom(currentZoom_);
        if (!resizedWhileApplying_)
            return;
    }
}

void PhotoScrollView::placeDocument() {
    document_->move(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
}

void PhotoScrollView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (applying_) {
        resizedWhileApplying_ = true;
        return;
    }
    layoutDocument();
}

void PhotoScrollView::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    layoutDocument();
}

void PhotoScrollView::scrollContentsBy(int, int) {
    placeDocument();
    // Lean labels are kept inside the visible part, so moving it moves them: repaint, not blit.
    canvas_->update();
    rememberCenter();
}

void PhotoScrollView::zoomAround(QPointF at, double zoom) {
    const dravik::ReviewFrame* frame = model_ ? model_->frame(frameID_) : nullptr;
    if (!frame || !canvas_ || !geometry_)
        return;
    zoom = std::clamp(zoom, PhotoViewport::minimumZoom, PhotoViewport::maximumZoom);
    if (std::abs(zoom - currentZoom_) < 1e-9)
        return;
    const QPointF scrolled(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const QPointF inCanvas = at + scrolled - QPointF(canvas_->pos());
    const dravik::Point2 under = dravik::ReviewCoordinates::source({inCanvas.x(), inCanvas.y()},
                                                                   frame->panel, canvas_->scale());
    // The scale follows the zoom, so the new centre is known before the layout.
    const double scale = canvas_->scale() * zoom / currentZoom_;
    const QPointF toMiddle = QPointF(viewport()->width(), viewport()->height()) / 2.0 - at;
    model_->setViewportCenter(frameID_,
                              {under.x + toMiddle.x() / scale, under.y + toMiddle.y() / scale});
    Presentation settings = model_->settings(frameID_);
    settings.zoom = zoom;
    settings.autoFrame = false;
    model_->setSettings(frameID_, settings);
}

void PhotoScrollView::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    const double notches = event->angleDelta().y() / 120.0;
    if (notches != 0)
        zoomAround(event->position(), currentZoom_ * std::pow(zoomStep, notches));
    event->accept();
}

bool PhotoScrollView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            zoomAround(viewport()->mapFromGlobal(gesture->globalPosition()),
                       currentZoom_ * (1.0 + gesture->value()));
            return true;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

bool PhotoScrollView::eventFilter(QObject* watched, QEvent* event) {
    if (watched != canvas_)
        return QAbstractScrollArea::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() != Qt::Key_Space || key->isAutoRepeat())
            break;
        spaceHeld_ = event->type() == QEvent::KeyPress;
        canvas_->setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
        return true;
    }
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::MiddleButton ||
            (mouse->button() == Qt::LeftButton && spaceHeld_)) {
            panFrom_ = mouse->globalPosition();
            canvas_->setCursor(Qt::ClosedHandCursor);
            return true;
        }
        break;
    }
    case QEvent::MouseMove:
        if (panFrom_) {
            const QPointF at = static_cast<QMouseEvent*>(event)->globalPosition();
            const QPointF moved = at - *panFrom_;
            panFrom_ = at;
            horizontalScrollBar()->setValue(horizontalScrollBar()->value() -
                                            static_cast<int>(std::lround(moved.x())));
            verticalScrollBar()->setValue(verticalScrollBar()->value() -
                                          static_cast<int>(std::lround(moved.y())));
            return true;
        }
        break;
    case QEvent::MouseButtonRelease:
        if (panFrom_) {
            panFrom_.reset();
            canvas_->setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
            return true;
        }
        break;
    case QEvent::FocusOut:
        spaceHeld_ = false;
        break;
    default:
        break;
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

void PhotoScrollView::rememberCenter() {
    if (applying_ || !applied_ || applied_->frameID != frameID_ || !canvas_ || !model_)
        return;
    const dravik::ReviewFrame* frame = model_->frame(frameID_);
    if (!frame)
        return;
    const QPointF middle(horizontalScrollBar()->value() + viewport()->width() / 2.0,
                         verticalScrollBar()->value() + viewport()->height() / 2.0);
    const QPointF inCanvas = middle - QPointF(canvas_->pos());
    model_->setViewportCenter(frameID_,
                              dravik::ReviewCoordinates::source({inCanvas.x(), inCanvas.y()},
                                                                frame->panel, canvas_->scale()));
}

} // namespace tessary
