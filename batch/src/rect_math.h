// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <algorithm>

namespace dravik::batch {

inline double area(const PixelRect& r) {
    return r.width * r.height;
}

inline Point2 centreOf(const PixelRect& r) {
    return {r.x + r.width / 2, r.y + r.height / 2};
}

// The part of `a` inside `b`; empty (zero size) when they do not meet.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const double right = std::min(a.maxX(), b.maxX());
    const double bottom = std::min(a.maxY(), b.maxY());
    return {left, top, std::max(0.0, right - left), std::max(0.0, bottom - top)};
}

inline PixelRect unite(const PixelRect& a, const PixelRect& b) {
    const double left = std::min(a.x, b.x);
    const double top = std::min(a.y, b.y);
    return {left, top, std::max(a.maxX(), b.maxX()) - left, std::max(a.maxY(), b.maxY()) - top};
}

// Intersection over union, 0 for boxes without area.
inline double overlap(const PixelRect& a, const PixelRect& b) {
    const double shared = area(intersection(a, b));
    const double total = area(a) + area(b) - shared;
    return total > 0 ? shared / total : 0;
}

// `r` grown by the given fractions of its width and height on each side.
inline PixelRect grown(const PixelRect& r, double sides, double top, double bottom) {
    return {r.x - sides * r.width, r.y - top * r.height, r.width * (1 + 2 * sides),
            r.height * (1 + top + bottom)};
}

} // namespace dravik::batch
