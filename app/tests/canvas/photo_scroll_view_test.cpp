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

TEST_F(CanvasTest, OpensOnTheRiderAndComesBackWhereTheReviewerLooked) {
    openWithCompanions();
    auto shown = showFrame(alex3);
    const dravik::PixelRect panel = frameOf(alex3).panel;
    const dravik::PixelRect region = model.framingRegions().at(alex3);
    const Point2 rider{region.x + region.width / 2, region.y + region.height / 2};
    const double pixel = 1.5 / shown->canvas()->scale();
    EXPECT_GT(shown->displayedZoom(), 1.0);
    expectNear(middleOf(*shown, panel), rider, pixel);
    expectNear(model.viewportCenters().at(alex3), rider, pixel);

    QScrollBar* across = shown->scrollView()->horizontalScrollBar();
    across->setValue(across->value() - 150);
    const Point2 moved = model.viewportCenters().at(alex3);
    EXPECT_NEAR(moved.x, rider.x - 150 / shown->canvas()->scale(), pixel);
    shown.reset();
    expectNear(middleOf(*showFrame(alex3), panel), moved, pixel);
}

TEST_F(CanvasTest, ZoomingKeepsTheCentreAndFramingAgainReturnsToTheRider) {
    openWithCompanions();
    auto shown = showFrame(alex3);
    const dravik::PixelRect panel = frameOf(alex3).panel;
    const double framedZoom = shown->displayedZoom();
    const double fitScale = shown->canvas()->scale() / framedZoom;
    QScrollBar* down = shown->scrollView()->verticalScrollBar();
    down->setValue(down->value() + 60);
    const Point2 lookingAt = model.viewportCenters().at(alex3);

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
    const dravik::PixelRect region = model.framingRegions().at(alex3);
    expectNear(middleOf(*shown, panel), {region.x + region.width / 2, region.y + region.height / 2},
               1.5 / shown->canvas()->scale());
}

TEST_F(CanvasTest, TheFarCornerClampsAndTheClampedCentreIsRemembered) {
    auto shown = showFrame(alex3);
    setZoom(model, alex3, 4.0);
    PhotoScrollView* scroll = shown->scrollView();
    scroll->horizontalScrollBar()->setValue(scroll->horizontalScrollBar()->maximum() + 500);
    scroll->verticalScrollBar()->setValue(scroll->verticalScrollBar()->maximum() + 500);

    const PhotoViewport& geometry = scroll->geometry().value();
    const dravik::PixelRect seen = geometry.visibleRect({1e6, 1e6});
    const Point2 remembered = model.viewportCenters().at(alex3);
    expectNear(remembered, {seen.x + seen.width / 2, seen.y + seen.height / 2},
               1.5 / geometry.scale());
    EXPECT_GT(remembered.x, frameOf(alex3).panel.maxX() - seen.width / 2);
}

} // namespace
} // namespace tessary::test
