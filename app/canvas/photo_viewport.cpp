// SPDX-License-Identifier: Apache-2.0
#include "photo_viewport.h"

#include <algorithm>

namespace tessary {

namespace {

// Points of space around the image on one axis, enough to scroll the target centre to the
// middle of the viewport even when it lies near the panel's edge.
double margin(double viewportSide, double scale, double center, double panelStart,
              double panelLength) {
    const double nearest = std::min(center - panelStart, panelStart + panelLength - center);
    return std::max(8.0, viewportSide / 2 - nearest * scale);
}

double documentSide(double viewportSide, double imageSide, double margin) {
    return std::max(viewportSide, imageSide + 2 * margin);
}

double clampedScroll(double wanted, double documentSide, double viewportSide) {
    return std::min(std::max(wanted, 0.0), documentSide - viewportSide);
}

} // namespace

PhotoViewport::PhotoViewport(const dravik::PixelRect& panel,
                             const std::optional<dravik::PixelRect>& region, ViewSize viewport,
                             std::optional<double> zoom)
    : panel_(panel), viewport_{std::max(minimumSide, viewport.width),
                               std::max(minimumSide, viewport.height)} {
    const double usableWidth = viewport_.width - inset;
    const double usableHeight = viewport_.height - inset;
    const double fit =
        std::max(std::min(usableWidth / panel.width, usableHeight / panel.height), minimumScale);

    const dravik::PixelRect target = region.value_or(panel);
    double automatic = 1.0;
    if (target != panel)
        automatic = std::min(usableWidth / (target.width * framingAir),
                             usableHeight / (target.height * framingAir)) /
                    fit;
    zoom_ = std::min(std::max(zoom.value_or(automatic), minimumZoom), maximumZoom);
    scale_ = fit * zoom_;
    targetCenter_ = {target.x + target.width / 2, target.y + target.height / 2};
}

ViewSize PhotoViewport::imageSize() const {
    return {panel_.width * scale_, panel_.height * scale_};
}

ViewSize PhotoViewport::documentSize() const {
    const ViewSize image = imageSize();
    return {
        documentSide(viewport_.width, image.width,
                     margin(viewport_.width, scale_, targetCenter_.x, panel_.x, panel_.width)),
        documentSide(viewport_.height, image.height,
                     margin(viewport_.height, scale_, targetCenter_.y, panel_.y, panel_.height))};
}

dravik::Point2 PhotoViewport::imageOrigin() const {
    const ViewSize document = documentSize();
    const ViewSize image = imageSize();
    return {(document.width - image.width) / 2, (document.height - image.height) / 2};
}

dravik::Point2 PhotoViewport::scrollOrigin(const dravik::Point2& center) const {
    const ViewSize document = documentSize();
    const dravik::Point2 origin = imageOrigin();
    return {clampedScroll(origin.x + (center.x - panel_.x) * scale_ - viewport_.width / 2,
                          document.width, viewport_.width),
            clampedScroll(origin.y + (center.y - panel_.y) * scale_ - viewport_.height / 2,
                          document.height, viewport_.height)};
}

dravik::PixelRect PhotoViewport::visibleRect(const dravik::Point2& center) const {
    const dravik::Point2 scroll = scrollOrigin(center);
    const dravik::Point2 origin = imageOrigin();
    return {panel_.x + (scroll.x - origin.x) / scale_, panel_.y + (scroll.y - origin.y) / scale_,
            viewport_.width / scale_, viewport_.height / scale_};
}

} // namespace tessary
