// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace dravik {

// A point in pixels of the source photo (origin top-left, y down) unless said otherwise.
struct Point2 {
    double x = 0;
    double y = 0;
    bool operator==(const Point2&) const = default;
};

struct PixelRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const PixelRect&) const = default;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    bool contains(const Point2& p) const {
        return p.x >= x && p.y >= y && p.x <= maxX() && p.y <= maxY();
    }
    bool contains(const PixelRect& r) const {
        return r.x >= x && r.y >= y && r.maxX() <= maxX() && r.maxY() <= maxY();
    }
};

struct ImageSize {
    int width = 0;
    int height = 0;
    bool operator==(const ImageSize&) const = default;
};

} // namespace dravik
