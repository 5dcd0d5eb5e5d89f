#include "square_region.h"

#include <algorithm>
#include <cmath>

namespace dravik::batch {

SquareRegion SquareRegion::around(const PixelRect& rect) {
    double side = std::max(rect.width, rect.height);
    return {rect.x + (rect.width - side) / 2, rect.y + (rect.height - side) / 2, side};
}

Point2 SquareRegion::toPhoto(double fx, double fy) const {
    return {x + fx * side, y + fy * side};
}

PixelRect visiblePart(const SquareRegion& region, ImageSize size) {
    double left = std::clamp(std::floor(region.x), 0.0, double(size.width));
    double top = std::clamp(std::floor(region.y), 0.0, double(size.height));
    double right = std::clamp(std::ceil(region.x + region.side), 0.0, double(size.width));
    double bottom = std::clamp(std::ceil(region.y + region.side), 0.0, double(size.height));
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

std::vector<std::uint8_t> sampleSquare(const Image& pixels, const PixelRect& decodedRect,
                                       const SquareRegion& region, int side) {
    std::vector<std::uint8_t> out(std::size_t(side) * side * 3);
    PixelSource source(pixels, decodedRect);
    if (region.side > side)
        shrink(source, region, side, out.data());
    else
        enlarge(source, region, side, out.data());
    return out;
}

} // namespace dravik::batch
