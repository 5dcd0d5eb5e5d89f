// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"

#include <QTest>

namespace tessary::test {
namespace {

using dravik::PhotoScale;

TEST_F(CanvasTest, AZoomDrawsTheCoarsePictureAtOnceAndTheSharperOneWhenItArrives) {
    // A small pane shows the 1200-pixel panel fitted at about a quarter of its pixels; reopened,
    // the session's first frame is decoded for the pane it will be framed in.
    showFrame(alex3, {300, 200});
    model.load(session.manifest, session.results);
    auto shown = showFrame(alex3, {300, 200});
    JointCanvasView* canvas = shown->canvas();
    ASSERT_TRUE(QTest::qWaitFor([&] { return canvas->painted().detailed; }));
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

    // Nobody asks again: its arrival repaints the canvas.
    ASSERT_TRUE(QTest::qWaitFor([&] { return canvas->painted().detailed; }));
    EXPECT_EQ(model.images().at(alex3).scale, PhotoScale::full);
    EXPECT_EQ(canvas->painted().photoKey, model.images().at(alex3).image.cacheKey());
}

} // namespace
} // namespace tessary::test
