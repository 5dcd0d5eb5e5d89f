// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace tessary::samplegen {

struct Rgb {
    float r = 0;
    float g = 0;
    float b = 0;
};

inline Rgb mix(const Rgb& a, const Rgb& b, float t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}
inline Rgb scaled(const Rgb& c, float k) {
    return {c.r * k, c.g * k, c.b * k};
}
inline Rgb rgb8(int r, int g, int b) {
    return {r / 255.0f, g / 255.0f, b / 255.0f};
}

struct Vec2 {
    double x = 0;
    double y = 0;
};

using Polygon = std::vector<Vec2>;
// The colour of a shape at a pixel centre; lets shapes carry gradients and texture.
using Paint = std::function<Rgb(double x, double y)>;

inline Paint solid(Rgb colour) {
    return [colour](double, double) { return colour; };
}

// An RGB picture in floats (0..1) with anti-aliased polygon filling: each pixel row is sampled
// on four sub-scanlines with exact horizontal coverage, enough for smooth edges at photo sizes.
class Canvas {
  public:
    Canvas(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }
    Rgb at(int x, int y) const;
    void set(int x, int y, const Rgb& colour);

    // Non-zero winding; several polygons filled together form one shape (holes by reversal).
    void fill(const std::vector<Polygon>& shape, const Paint& paint, float opacity = 1.0f);
    void fill(const Polygon& polygon, const Paint& paint, float opacity = 1.0f) {
        fill(std::vector<Polygon>{polygon}, paint, opacity);
    }

    // A horizontal box blur of `radius` pixels, run twice: the streaks of a panned shot.
    void blurRows(int radius);

    // 8-bit RGB, with a little sensor grain dithered in so that no area is perfectly flat.
    std::vector<std::uint8_t> toRgb8(std::uint64_t grainSeed, float grain) const;

  private:
    int width_;
    int height_;
    std::vector<float> pixels_;
    std::vector<float> coverage_;
};

// Shape outlines, in pixels.
Polygon ellipse(Vec2 centre, double rx, double ry, double rotation = 0, int segments = 0);
// A tapered capsule: round ends of radius ra at a and rb at b.
Polygon capsule(Vec2 a, Vec2 b, double ra, double rb);

} // namespace tessary::samplegen
