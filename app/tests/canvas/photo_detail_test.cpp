// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"

#include <QPainter>
#include <QTest>
#include <cstdlib>

namespace tessary::test {
namespace {

using dravik::PhotoScale;

// How far the pane's picture is from the photo drawn independently where the canvas places it,
// once both are shrunk enough that the blocks of an enlarged picture no longer count: the mean
// difference per colour channel.
double offThePhoto(QWidget* pane, const JointCanvasView& canvas, const FramePhoto& photo,
                   const dravik::PixelRect& panel) {
    const QImage shown = pane->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QImage expected(shown.size(), QImage::Format_RGB32);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPointF origin = canvas.mapTo(pane, QPointF(0, 0));
    const double scale = canvas.scale();
    painter.drawImage(QRectF(origin.x() + (photo.covers.x - panel.x) * scale,
                             origin.y() + (photo.covers.y - panel.y) * scale,
                             photo.covers.width * scale, photo.covers.height * scale),
                      photo.image);
    painter.end();
    const QSize shrunk = shown.size() / 8;
    const QImage x = shown.scaled(shrunk, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage y = expected.scaled(shrunk, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row)
        for (int column = 0; column < x.width(); ++column) {
            const QRgb p = x.pixel(column, row), q = y.pixel(column, row);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
                   std::abs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * x.width() * x.height());
}

TEST_F(CanvasTest, AZoomDrawsTheCoarsePictureAtOnceAndTheSharperOneWhenItArrives) {
    // A small pane shows the 1200-pixel panel fitted at about a quarter of its pixels; reopened,
    // the session's first frame is decoded for the pane it will be framed in.
    showFrame(alex3, {300, 200});
    model.load(session.manifest, session.results);
    auto shown = showFrame(alex3, {300, 200});
    JointCanvasView* canvas = shown->canvas();
    QWidget* pane = shown->scrollView()->viewport();
    ASSERT_TRUE(QTest::qWaitFor([&] { return canvas->painted().fromCopy; }));
    const FramePhoto coarse = model.images().at(alex3);
    EXPECT_EQ(coarse.scale, PhotoScale::quarter);

    Presentation zoomed = model.settings(alex3);
    zoomed.autoFrame = false;
    zoomed.zoom = 4;
    model.setSettings(alex3, zoomed);
    canvas->repaint();
    // Back in the event loop with the coarse picture drawn enlarged and the sharp one asked for.
    EXPECT_EQ(canvas->painted().photoKey, coarse.image.cacheKey());
    EXPECT_FALSE(canvas->painted().detailed);
    EXPECT_TRUE(model.isDecodingPhotos());
    // Meanwhile the display copy made for the fitted view stands in, enlarged in its place.
    const dravik::PixelRect panel = frameOf(alex3).panel;
    const double standIn = offThePhoto(pane, *canvas, coarse, panel);

    // Nobody asks again: its arrival repaints the canvas.
    ASSERT_TRUE(QTest::qWaitFor([&] { return canvas->painted().detailed; }));
    EXPECT_EQ(model.images().at(alex3).scale, PhotoScale::full);
    EXPECT_EQ(canvas->painted().photoKey, model.images().at(alex3).image.cacheKey());
    ASSERT_TRUE(QTest::qWaitFor([&] { return canvas->painted().fromCopy; }));
    const double sharp = offThePhoto(pane, *canvas, model.images().at(alex3), panel);
    EXPECT_LT(standIn, 8);
    EXPECT_LT(sharp, 8);
}

} // namespace
} // namespace tessary::test
