// SPDX-License-Identifier: Apache-2.0
#include "square_region.h"

#include <algorithm>
#include <cmath>

namespace dravik::batch {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;

// How much wider than the square its upright bounds are.
double spread(double tilt) {
    return std::abs(std::cos(tilt * degree)) + std::abs(std::sin(tilt * degree));
}

} // namespace

SquareRegion SquareRegion::around(const PixelRect& rect, double tilt) {
    double side = std::max(rect.width, rect.height);
    return {rect.x + (rect.width - side) / 2, rect.y + (rect.height - side) / 2, side, tilt};
}

SquareRegion SquareRegion::centred(Point2 centre, double side, double tilt) {
    return {centre.x - side / 2, centre.y - side / 2, side, tilt};
}

// The square's x axis runs along (cos t, sin t) in the photo, its y axis along (-sin t, cos t).
Point2 SquareRegion::toPhoto(double fx, double fy) const {
    const double u = (fx - 0.5) * side;
    const double v = (fy - 0.5) * side;
    const double c = std::cos(tilt * degree);
    const double s = std::sin(tilt * degree);
    const Point2 mid = centre();
    return {mid.x + u * c - v * s, mid.y + u * s + v * c};
}

Point2 SquareRegion::toSquare(Point2 photo) const {
    const Point2 mid = centre();
    const double dx = photo.x - mid.x;
    const double dy = photo.y - mid.y;
    const double c = std::cos(tilt * degree);
    const double s = std::sin(tilt * degree);
    return {(dx * c + dy * s) / side + 0.5, (-dx * s + dy * c) / side + 0.5};
}

PixelRect SquareRegion::bounds() const {
    const double wide = side * spread(tilt);
    const Point2 mid = centre();
    return {mid.x - wide / 2, mid.y - wide / 2, wide, wide};
}

PixelRect visiblePart(const SquareRegion& region, ImageSize size) {
    const PixelRect rect = region.bounds();
    double left = std::clamp(std::floor(rect.x), 0.0, double(size.width));
    double top = std::clamp(std::floor(rect.y), 0.0, double(size.height));
    double right = std::clamp(std::ceil(rect.maxX()), 0.0, double(size.width));
    double bottom = std::clamp(std::ceil(rect.maxY()), 0.0, double(size.height));
    if (right <= left || bottom <= top)
        return {};
    return {left, top, right - left, bottom - top};
}

namespace {

// Reads photo pixels by photo coordinates; anything outside the decoded rectangle is black.
class PixelSource {
  public:
    PixelSource(const Image& image, const PixelRect& rect)
        : image_(image), left_(int(rect.x)), top_(int(rect.y)) {}

    const std::uint8_t* at(int px, int py) const {
        int ix = px - left_;
        int iy = py - top_;
        if (image_.empty() || ix < 0 || iy < 0 || ix >= image_.width || iy >= image_.height)
            return black_;
        return image_.data() + std::size_t(iy) * image_.stride + std::size_t(ix) * 3;
    }

  private:
    const Image& image_;
    int left_;
    int top_;
    static constexpr std::uint8_t black_[3] = {0, 0, 0};
};

void shrink(const PixelSource& source, const SquareRegion& region, int side, std::uint8_t* out) {
    double step = region.side / side;
    for (int oy = 0; oy < side; ++oy) {
        // Source pixels whose centres fall inside this output pixel.
        int y0 = int(std::ceil(region.y + oy * step - 0.5));
        int y1 = std::max(y0 + 1, int(std::ceil(region.y + (oy + 1) * step - 0.5)));
        for (int ox = 0; ox < side; ++ox) {
            int x0 = int(std::ceil(region.x + ox * step - 0.5));
            int x1 = std::max(x0 + 1, int(std::ceil(region.x + (ox + 1) * step - 0.5)));
            unsigned long sum[3] = {0, 0, 0};
            for (int py = y0; py < y1; ++py)
                for (int px = x0; px < x1; ++px) {
                    const std::uint8_t* p = source.at(px, py);
                    sum[0] += p[0];
                    sum[1] += p[1];
                    sum[2] += p[2];
                }
            unsigned long n =
                static_cast<unsigned long>(y1 - y0) * static_cast<unsigned long>(x1 - x0);
            for (int c = 0; c < 3; ++c)
                *out++ = static_cast<std::uint8_t>((sum[c] + n / 2) / n);
        }
    }
}

void enlarge(const PixelSource& source, const SquareRegion& region, int side, std::uint8_t* out) {
    double step = region.side / side;
    for (int oy = 0; oy < side; ++oy) {
        double sy = region.y + (oy + 0.5) * step - 0.5;
        int y0 = int(std::floor(sy));
        double wy = sy - y0;
        for (int ox = 0; ox < side; ++ox) {
            double sx = region.x + (ox + 0.5) * step - 0.5;
            int x0 = int(std::floor(sx));
            double wx = sx - x0;
            const std::uint8_t* a = source.at(x0, y0);
            const std::uint8_t* b = source.at(x0 + 1, y0);
            const std::uint8_t* c = source.at(x0, y0 + 1);
            const std::uint8_t* d = source.at(x0 + 1, y0 + 1);
            for (int k = 0; k < 3; ++k) {
                double top = a[k] + (b[k] - a[k]) * wx;
                double bottom = c[k] + (d[k] - c[k]) * wx;
                *out++ = static_cast<std::uint8_t>(std::lround(top + (bottom - top) * wy));
            }
        }
    }
}

} // namespace

namespace {

void sampleUpright(const PixelSource& source, const SquareRegion& region, int side,
                   std::uint8_t* out) {
    if (region.side > side)
        shrink(source, region, side, out);
    else
        enlarge(source, region, side, out);
}

// Bilinear turn of `upright` (an untilted square sampled to `uprightSide`) into the tilted square.
void turn(const PixelSource& upright, const SquareRegion& uprightRegion, int uprightSide,
          const SquareRegion& region, int side, std::uint8_t* out) {
    const double scale = uprightSide / uprightRegion.side;
    for (int oy = 0; oy < side; ++oy)
        for (int ox = 0; ox < side; ++ox) {
            const Point2 p = region.toPhoto((ox + 0.5) / side, (oy + 0.5) / side);
            const double sx = (p.x - uprightRegion.x) * scale - 0.5;
            const double sy = (p.y - uprightRegion.y) * scale - 0.5;
            const int x0 = int(std::floor(sx));
            const int y0 = int(std::floor(sy));
            const double wx = sx - x0;
            const double wy = sy - y0;
            const std::uint8_t* a = upright.at(x0, y0);
            const std::uint8_t* b = upright.at(x0 + 1, y0);
            const std::uint8_t* c = upright.at(x0, y0 + 1);
            const std::uint8_t* d = upright.at(x0 + 1, y0 + 1);
            for (int k = 0; k < 3; ++k) {
                double top = a[k] + (b[k] - a[k]) * wx;
                double bottom = c[k] + (d[k] - c[k]) * wx;
                *out++ = static_cast<std::uint8_t>(std::lround(top + (bottom - top) * wy));
            }
        }
}

} // namespace

std::vector<std::uint8_t> sampleSquare(const Image& pixels, const PixelRect& decodedRect,
                                       const SquareRegion& region, int side) {
    std::vector<std::uint8_t> out(std::size_t(side) * side * 3);
    PixelSource source(pixels, decodedRect);
    if (region.tilt == 0) {
        sampleUpright(source, region, side, out.data());
        return out;
    }
    // Resampling the upright bounds first keeps the averaging of a shrink exact and cheap.
    const SquareRegion bounds = SquareRegion::around(region.bounds());
    const int boundsSide = int(std::ceil(side * spread(region.tilt))) + 2;
    const SquareRegion padded =
        SquareRegion::centred(bounds.centre(), bounds.side * boundsSide / (boundsSide - 2.0));
    auto rgb =
        std::make_shared<std::vector<std::uint8_t>>(std::size_t(boundsSide) * boundsSide * 3);
    sampleUpright(source, padded, boundsSide, rgb->data());
    const Image upright{boundsSide, boundsSide, std::size_t(boundsSide) * 3, rgb};
    turn(PixelSource(upright, {0, 0, double(boundsSide), double(boundsSide)}), padded, boundsSide,
         region, side, out.data());
    return out;
}

} // namespace dravik::batch
