// SPDX-License-Identifier: Apache-2.0
#include "dravik/review.h"

namespace dravik::ReviewCoordinates {

Point2 display(const Point2& source, const PixelRect& panel, double scale) {
    return {(source.x - panel.x) * scale, (source.y - panel.y) * scale};
}

Point2 source(const Point2& view, const PixelRect& panel, double scale) {
    return {view.x / scale + panel.x, view.y / scale + panel.y};
}

} // namespace dravik::ReviewCoordinates
