#include "canvas_fixture.h"

#include <QScrollBar>

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

} // namespace
} // namespace tessary::test
