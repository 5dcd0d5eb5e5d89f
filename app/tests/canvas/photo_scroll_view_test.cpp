// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"
#include "wheel.h"

#include <QScrollBar>
#include <QTest>

namespace tessary::test {
namespace {

using dravik::Point2;

// Where the middle of the clip view falls on the photo, in source pixels.
Point2 middleOf(const FramedPhotoCanvas& shown, const dravik::PixelRect& panel) {
    const QWidget* clip = shown.scrollView()->viewport();
    const QPointF onCanvas = shown.canvas()->mapFrom(clip, QPointF(clip->rect().center()));
    return dravik::ReviewCoordinates::source({onCanvas.x() + 0.5, onCanvas.y() + 0.5}, panel,
                                             shown.canvas()->scale());
}

void expectNear(const Point2& actual, const Point2& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

void setZoom(ReviewerModel& model, const std::string& frameID, double zoom) {
    Presentation settings = model.settings(frameID);
    settings.autoFrame = false;
    settings.zoom = zoom;
    model.setSettings(frameID, settings);
}

TEST_F(CanvasTest, TheViewOpensOnTheRiderAndKeepsWhereTheReviewerLooked) {
    openWithCompanions();
    auto shown = showFrame(alex3);
    const dravik::PixelRect panel = frameOf(alex3).panel;
    const dravik::PixelRect region = model.framingRegions().at(alex3);
    const Point2 rider{region.x + region.width / 2, region.y + region.height / 2};
    const double pixel = 1.5 / shown->canvas()->scale();
    const double fitScale = shown->canvas()->scale() / shown->displayedZoom();
    EXPECT_GT(shown->displayedZoom(), 1.0);
    expectNear(middleOf(*shown, panel), rider, pixel);
    expectNear(model.viewportCenters().at(alex3), rider, pixel);

    // Scrolled away, closed and shown again: back where the reviewer looked.
    QScrollBar* across = shown->scrollView()->horizontalScrollBar();
    across->setValue(across->value() - 150);
    const Point2 lookingAt = model.viewportCenters().at(alex3);
    EXPECT_NEAR(lookingAt.x, rider.x - 150 / shown->canvas()->scale(), pixel);
    shown.reset();
    shown = showFrame(alex3);
    expectNear(middleOf(*shown, panel), lookingAt, pixel);

    std::vector<double> reported;
    QObject::connect(shown.get(), &FramedPhotoCanvas::zoomChanged,
                     [&](double zoom) { reported.push_back(zoom); });
    setZoom(model, alex3, 3.0);
    EXPECT_EQ(reported, std::vector<double>{3.0});
    EXPECT_NEAR(shown->canvas()->scale(), 3 * fitScale, 1e-9);
    expectNear(middleOf(*shown, panel), lookingAt, 1.0 / shown->canvas()->scale() + 0.5);

    // A smaller window fits the panel at a smaller scale, at the same relative zoom.
    shown->resize(700, 450);
    EXPECT_DOUBLE_EQ(shown->displayedZoom(), 3.0);
    EXPECT_LT(shown->canvas()->scale(), 2 * fitScale);

    Presentation framed = model.settings(alex3);
    framed.autoFrame = true;
    framed.framingRequest += 1;
    model.setSettings(alex3, framed);
    expectNear(middleOf(*shown, panel), rider, 1.5 / shown->canvas()->scale());

    // Scrolled past the far corner, the clamped centre is the one remembered.
    setZoom(model, alex3, 4.0);
    PhotoScrollView* scroll = shown->scrollView();
    scroll->horizontalScrollBar()->setValue(scroll->horizontalScrollBar()->maximum() + 500);
    scroll->verticalScrollBar()->setValue(scroll->verticalScrollBar()->maximum() + 500);
    const PhotoViewport& geometry = scroll->geometry().value();
    const dravik::PixelRect seen = geometry.visibleRect({1e6, 1e6});
    const Point2 remembered = model.viewportCenters().at(alex3);
    expectNear(remembered, {seen.x + seen.width / 2, seen.y + seen.height / 2},
               1.5 / geometry.scale());
    EXPECT_GT(remembered.x, panel.maxX() - seen.width / 2);
}

// The photo tools' habits: Ctrl + wheel zooms around the pointer, the plain wheel scrolls, the
// middle button pans; none of them edits anything.
TEST_F(CanvasTest, CtrlWheelZoomsAroundThePointerAndTheMiddleButtonPans) {
    auto shown = showFrame(alex3, {900, 600});
    // Zoomed in, so that no edge of the photo stops the view from following the pointer.
    setZoom(model, alex3, 1.6);
    QApplication::processEvents();
    JointCanvasView* canvas = shown->canvas();
    QScrollBar* down = shown->scrollView()->verticalScrollBar();
    for (const QPointF pointer : {QPointF(600, 150), QPointF(200, 450), QPointF(450, 300)}) {
        const QPointF onCanvas = shown->canvas()->mapFrom(shown.get(), pointer);
        const Point2 under = sourceOf(*canvas, onCanvas);
        const double zoom = shown->displayedZoom();
        wheelAt(canvas, onCanvas, 120, Qt::ControlModifier);
        canvas = shown->canvas();
        EXPECT_NEAR(shown->displayedZoom(), std::min(zoom * PhotoScrollView::zoomStep, 4.0), 1e-9);
        const QPointF now = viewOf(*canvas, under);
        const QPointF still = canvas->mapTo(shown.get(), now);
        EXPECT_NEAR(still.x(), pointer.x(), 1.0);
        EXPECT_NEAR(still.y(), pointer.y(), 1.0);
    }
    const double zoom = shown->displayedZoom();
    const int top = down->value();
    wheelAt(canvas, {300, 300}, -120, Qt::NoModifier);
    EXPECT_GT(down->value(), top) << "the plain wheel scrolls";
    EXPECT_DOUBLE_EQ(shown->displayedZoom(), zoom);

    const int left = shown->scrollView()->horizontalScrollBar()->value();
    QTest::mousePress(canvas, Qt::MiddleButton, {}, {400, 300});
    QMouseEvent move(QEvent::MouseMove, QPointF(340, 300), canvas->mapToGlobal(QPointF(340, 300)),
                     Qt::NoButton, Qt::MiddleButton, Qt::NoModifier);
    QApplication::sendEvent(canvas, &move);
    QTest::mouseRelease(canvas, Qt::MiddleButton, {}, {340, 300});
    EXPECT_EQ(shown->scrollView()->horizontalScrollBar()->value(), left + 60);
    EXPECT_TRUE(model.undoStack().empty());
}

// The photo pane's scroll bars are drawn flat, without arrow buttons; they still page on a click
// beside the handle and follow a dragged handle to the end.
TEST_F(CanvasTest, ThePaneScrollBarsPageAndFollowTheirHandle) {
    auto shown = showFrame(alex3, {900, 600});
    setZoom(model, alex3, 4.0);
    QApplication::processEvents();
    QScrollBar* bar = shown->scrollView()->verticalScrollBar();
    ASSERT_TRUE(bar->isVisible());
    ASSERT_GT(bar->maximum(), 2 * bar->pageStep());
    bar->setValue(bar->maximum() - bar->pageStep());
    const int middle = bar->value();
    // Where the handle is, from the share of the range the page takes.
    const int length = bar->height();
    const int handle = length * bar->pageStep() / (bar->maximum() + bar->pageStep());
    const int handleTop = (length - handle) * bar->value() / bar->maximum();

    QTest::mouseClick(bar, Qt::LeftButton, {}, {bar->width() / 2, 1});
    EXPECT_EQ(bar->value(), middle - bar->pageStep()) << "the top end pages, it is no arrow";
    bar->setValue(middle);
    const QPoint grip(bar->width() / 2, handleTop + handle / 2);
    QTest::mousePress(bar, Qt::LeftButton, {}, grip);
    QMouseEvent drag(QEvent::MouseMove, QPointF(grip.x(), length + 50),
                     bar->mapToGlobal(QPointF(grip.x(), length + 50)), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(bar, &drag);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, {grip.x(), length + 50});
    EXPECT_EQ(bar->value(), bar->maximum());
}

} // namespace
} // namespace tessary::test
