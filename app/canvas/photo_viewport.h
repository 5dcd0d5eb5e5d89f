// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <optional>

namespace tessary {

// A size in view points.
struct ViewSize {
    double width = 0;
    double height = 0;
    bool operator==(const ViewSize&) const = default;
};

// Where a panel of the source photo sits in a scrollable document of view points: the scale
// that fits it (times the relative zoom), the margins that let any target centre reach the
// middle of the viewport, and the scroll origin for a centre. A pure value.
class PhotoViewport {
  public:
    // Without a region the whole panel is the target; without a zoom the target is framed.
    PhotoViewport(const dravik::PixelRect& panel, const std::optional<dravik::PixelRect>& region,
                  ViewSize viewport, std::optional<double> zoom = std::nullopt);

    static constexpr double minimumSide = 17.0;
    static constexpr double inset = 16.0; // 8 points on each side
    static constexpr double minimumScale = 0.001;
    static constexpr double minimumZoom = 1.0;
    static constexpr double maximumZoom = 4.0;
    static constexpr double framingAir = 1.12;

    const dravik::PixelRect& panel() const { return panel_; }
    ViewSize viewport() const { return viewport_; }
    double scale() const { return scale_; }
    double zoom() const { return zoom_; }
    dravik::Point2 targetCenter() const { return targetCenter_; }

    ViewSize imageSize() const;
    ViewSize documentSize() const;
    dravik::Point2 imageOrigin() const;
    // Top-left of the visible part of the document that puts `center` (source pixels) in the
    // middle, clamped to the document.
    dravik::Point2 scrollOrigin(const dravik::Point2& center) const;
    // The source pixels seen from that scroll origin.
    dravik::PixelRect visibleRect(const dravik::Point2& center) const;

    bool operator==(const PhotoViewport&) const = default;

  private:
    dravik::PixelRect panel_;
    ViewSize viewport_;
    double scale_ = 1;
    double zoom_ = 1;
    dravik::Point2 targetCenter_;
};

} // namespace tessary
