// SPDX-License-Identifier: Apache-2.0
#include "photo_viewport.h"

#include <gtest/gtest.h>

namespace tessary {
namespace {

using dravik::PixelRect;
using dravik::Point2;

const PixelRect panel{100, 50, 1200, 800};
const ViewSize window{1400, 900};

TEST(PhotoViewport, ZoomFramesTheRegionWithinOneToFourAndTinyViewsStayUsable) {
    const double fit = 884.0 / 800.0; // height decides, 8 points of inset on each side
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, std::nullopt, window).scale(), fit);
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, panel, window).zoom(), 1.0);

    const PhotoViewport framed(panel, PixelRect{600, 300, 300, 200}, window);
    EXPECT_DOUBLE_EQ(framed.zoom(), 884 / (200 * 1.12) / fit);
    EXPECT_EQ(framed.targetCenter(), (Point2{750, 400}));

    const PixelRect tenth{panel.x, panel.y, panel.width / 10, panel.height / 10};
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, tenth, window).zoom(), 4.0);
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, PixelRect{100, 50, 1199, 800}, window).zoom(), 1.0);
    // A requested zoom wins over the region, clamped.
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, tenth, window, 0.5).zoom(), 1.0);
    EXPECT_DOUBLE_EQ(PhotoViewport(panel, std::nullopt, window, 7.0).scale(), fit * 4);

    EXPECT_EQ(PhotoViewport(panel, std::nullopt, {0, 0}),
              PhotoViewport(panel, std::nullopt, {17, 17}));
    EXPECT_DOUBLE_EQ(PhotoViewport({0, 0, 5e9, 5e9}, std::nullopt, window).scale(), 0.001);
}

TEST(PhotoViewport, ATargetAtThePanelsEdgeCanStillBeCentred) {
    // Without the margins the corner would be pinned to the view's edge at zoom 4.
    const PhotoViewport zoomed(panel, PixelRect{panel.x, panel.y, 40, 40}, window, 4.0);
    const Point2 scroll = zoomed.scrollOrigin(zoomed.targetCenter());
    EXPECT_NEAR(zoomed.imageOrigin().x + 20 * zoomed.scale() - scroll.x, window.width / 2, 1e-9);
    EXPECT_NEAR(zoomed.imageOrigin().y + 20 * zoomed.scale() - scroll.y, window.height / 2, 1e-9);

    // Margins never shrink below 8 points.
    const PhotoViewport middle(panel, PixelRect{600, 400, 200, 100}, window, 4.0);
    EXPECT_DOUBLE_EQ(middle.documentSize().width, middle.imageSize().width + 16);
}

TEST(PhotoViewport, ScrollingPastTheDocumentClampsAndVisibleRectFollowsTheClamp) {
    const PhotoViewport zoomed(panel, std::nullopt, window, 3.0);
    const ViewSize document = zoomed.documentSize();
    EXPECT_EQ(zoomed.scrollOrigin({1e6, 1e6}),
              (Point2{document.width - window.width, document.height - window.height}));
    EXPECT_EQ(zoomed.scrollOrigin({-1e6, -1e6}), (Point2{0, 0}));

    const PixelRect seen = zoomed.visibleRect({1e6, 1e6});
    EXPECT_DOUBLE_EQ(seen.width, window.width / zoomed.scale());
    EXPECT_NEAR(seen.maxX(), panel.maxX() + 8 / zoomed.scale(), 1e-9);
    EXPECT_NEAR(seen.maxY(), panel.maxY() + 8 / zoomed.scale(), 1e-9);
    // A reachable centre comes back as the middle of what is seen.
    const PixelRect around = zoomed.visibleRect({500, 400});
    EXPECT_NEAR(around.x + around.width / 2, 500, 1e-9);
    EXPECT_NEAR(around.y + around.height / 2, 400, 1e-9);
}

} // namespace
} // namespace tessary
