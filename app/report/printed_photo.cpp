// SPDX-License-Identifier: Apache-2.0
#include "printed_photo.h"

#include "photos/image_conversion.h"

#include <algorithm>
#include <cmath>

namespace tessary {

namespace {

dravik::PixelRect intersected(const dravik::PixelRect& a, const dravik::PixelRect& b) {
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const double right = std::min(a.maxX(), b.maxX());
    const double bottom = std::min(a.maxY(), b.maxY());
    if (right <= left || bottom <= top)
        return {};
    return {left, top, right - left, bottom - top};
}

} // namespace

PrintedPhoto printedPhoto(const dravik::ReviewFrame& frame, const dravik::VerifiedPhoto& photo,
                          const dravik::PixelRect& region, const QSizeF& printed) {
    dravik::PixelRect wanted = intersected(region, photo.panel);
    if (wanted.width <= 0)
        wanted = photo.panel;
    const double neededWidth = printed.width() / 72 * printDpi;
    const double neededHeight = printed.height() / 72 * printDpi;
    const double factor =
        std::min(1.0, std::max(neededWidth / wanted.width, neededHeight / wanted.height));
    const dravik::ImageSize panelWanted{static_cast<int>(std::ceil(photo.panel.width * factor)),
                                        static_cast<int>(std::ceil(photo.panel.height * factor))};
    const dravik::ScaledPanel decoded =
        dravik::decodeFramePhoto(frame, photo, dravik::scaleCovering(photo, panelWanted));
    const QImage image = toQImage(decoded.image);

    // The wanted region in decoded pixels, rounded outwards.
    const double step = static_cast<double>(decoded.scale);
    const dravik::PixelRect& covers = decoded.covers;
    const int left = std::max(0, static_cast<int>(std::floor((wanted.x - covers.x) / step)));
    const int top = std::max(0, static_cast<int>(std::floor((wanted.y - covers.y) / step)));
    const int right =
        std::min(image.width(), static_cast<int>(std::ceil((wanted.maxX() - covers.x) / step)));
    const int bottom =
        std::min(image.height(), static_cast<int>(std::ceil((wanted.maxY() - covers.y) / step)));

    PrintedPhoto result;
    const double x = covers.x + left * step;
    const double y = covers.y + top * step;
    result.shows = {x, y, std::min(covers.maxX(), covers.x + right * step) - x,
                    std::min(covers.maxY(), covers.y + bottom * step) - y};
    result.image = image.copy(left, top, right - left, bottom - top);
    // A DCT scale is a power of two; the rest of the way down to print resolution is smoothed.
    if (result.image.width() > neededWidth * 1.1 && result.image.height() > neededHeight * 1.1)
        result.image = result.image.scaled(QSize(static_cast<int>(std::ceil(neededWidth)),
                                                 static_cast<int>(std::ceil(neededHeight))),
                                           Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return result;
}

} // namespace tessary
