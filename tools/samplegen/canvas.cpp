// SPDX-License-Identifier: Apache-2.0
#include "canvas.h"

#include "random.h"
#include "rows.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessary::samplegen {

namespace {

constexpr int subScanlines = 4;

struct Edge {
    double x0, y0, x1, y1;
    int winding;
};

struct Crossing {
    double x;
    int winding;
};

} // namespace

Canvas::Canvas(int width, int height)
    : width_(width), height_(height), pixels_(static_cast<std::size_t>(width) * height * 3, 0.0f),
      coverage_(static_cast<std::size_t>(width) + 2, 0.0f) {}

Rgb Canvas::at(int x, int y) const {
    const float* p = &pixels_[(static_cast<std::size_t>(y) * width_ + x) * 3];
    return {p[0], p[1], p[2]};
}

void Canvas::set(int x, int y, const Rgb& colour) {
    float* p = &pixels_[(static_cast<std::size_t>(y) * width_ + x) * 3];
    p[0] = colour.r;
    p[1] = colour.g;
    p[2] = colour.b;
}

void Canvas::fill(const std::vector<Polygon>& shape, const Paint& paint, float opacity) {
    std::vector<Edge> edges;
    double minX = width_, maxX = 0, minY = height_, maxY = 0;
    for (const Polygon& polygon : shape) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Vec2& a = polygon[i];
            const Vec2& b = polygon[(i + 1) % polygon.size()];
            minX = std::min(minX, a.x);
            maxX = std::max(maxX, a.x);
            minY = std::min(minY, a.y);
            maxY = std::max(maxY, a.y);
            if (a.y == b.y)
                continue;
            if (a.y < b.y)
                edges.push_back({a.x, a.y, b.x, b.y, 1});
            else
                edges.push_back({b.x, b.y, a.x, a.y, -1});
        }
    }
    const int x0 = std::max(0, static_cast<int>(std::floor(minX)));
    const int x1 = std::min(width_ - 1, static_cast<int>(std::floor(maxX)));
    const int y0 = std::max(0, static_cast<int>(std::floor(minY)));
    const int y1 = std::min(height_ - 1, static_cast<int>(std::floor(maxY)));
    if (edges.empty() || x0 > x1 || y0 > y1)
        return;
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.y0 < b.y0; });

    std::vector<const Edge*> active;
    std::vector<Crossing> crossings;
    std::size_t nextEdge = 0;
    const double left = x0;
    const double right = x1 + 1;
    auto addSpan = [&](double a, double b, float weight) {
        a = std::clamp(a, left, right);
        b = std::clamp(b, left, right);
        if (b <= a)
            return;
        const int ia = static_cast<int>(a);
        const int ib = static_cast<int>(b);
        if (ia == ib) {
            coverage_[ia - x0] += static_cast<float>(b - a) * weight;
            return;
        }
        coverage_[ia - x0] += static_cast<float>(ia + 1 - a) * weight;
        for (int i = ia + 1; i < ib; ++i)
            coverage_[i - x0] += weight;
        if (ib <= x1)
            coverage_[ib - x0] += static_cast<float>(b - ib) * weight;
    };

    for (int py = y0; py <= y1; ++py) {
        std::fill(coverage_.begin(), coverage_.begin() + (x1 - x0 + 2), 0.0f);
        bool touched = false;
        for (int s = 0; s < subScanlines; ++s) {
            const double sy = py + (s + 0.5) / subScanlines;
            while (nextEdge < edges.size() && edges[nextEdge].y0 <= sy)
                active.push_back(&edges[nextEdge++]);
            std::erase_if(active, [sy](const Edge* e) { return e->y1 <= sy; });
            crossings.clear();
            for (const Edge* e : active) {
                if (e->y0 > sy)
                    continue;
                const double t = (sy - e->y0) / (e->y1 - e->y0);
                crossings.push_back({e->x0 + t * (e->x1 - e->x0), e->winding});
            }
            if (crossings.empty())
                continue;
            std::sort(crossings.begin(), crossings.end(),
                      [](const Crossing& a, const Crossing& b) { return a.x < b.x; });
            int winding = 0;
            for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
                winding += crossings[i].winding;
                if (winding != 0) {
                    addSpan(crossings[i].x, crossings[i + 1].x, 1.0f / subScanlines);
                    touched = true;
                }
            }
        }
        if (!touched)
            continue;
        for (int px = x0; px <= x1; ++px) {
            const float c = std::min(coverage_[px - x0], 1.0f) * opacity;
            if (c <= 0.0f)
                continue;
            const Rgb colour = paint(px + 0.5, py + 0.5);
            set(px, py, mix(at(px, py), colour, c));
        }
    }
}

void Canvas::blurRows(int radius) {
    if (radius <= 0)
        return;
    forEachRow(height_, [&](int y) {
        std::vector<float> row(pixels_.begin() + static_cast<std::ptrdiff_t>(y) * width_ * 3,
                               pixels_.begin() + static_cast<std::ptrdiff_t>(y + 1) * width_ * 3);
        std::vector<float> out(row.size());
        const float norm = 1.0f / static_cast<float>(2 * radius + 1);
        for (int pass = 0; pass < 2; ++pass) {
            for (int c = 0; c < 3; ++c) {
                // Running sum with the edge pixels repeated.
                auto at = [&](int x) {
                    return row[static_cast<std::size_t>(std::clamp(x, 0, width_ - 1)) * 3 + c];
                };
                float sum = 0;
                for (int x = -radius; x <= radius; ++x)
                    sum += at(x);
                for (int x = 0; x < width_; ++x) {
                    out[static_cast<std::size_t>(x) * 3 + c] = sum * norm;
                    sum += at(x + radius + 1) - at(x - radius);
                }
            }
            row.swap(out);
        }
        std::copy(row.begin(), row.end(),
                  pixels_.begin() + static_cast<std::ptrdiff_t>(y) * width_ * 3);
    });
}

std::vector<std::uint8_t> Canvas::toRgb8(std::uint64_t grainSeed, float grain) const {
    std::vector<std::uint8_t> bytes(pixels_.size());
    forEachRow(height_, [&](int y) {
        Random random(grainSeed ^ (static_cast<std::uint64_t>(y) * 0x9e3779b97f4a7c15ULL));
        const std::size_t begin = static_cast<std::size_t>(y) * width_ * 3;
        for (std::size_t i = begin; i < begin + static_cast<std::size_t>(width_) * 3; i += 3) {
            // Luminance grain mostly, as a camera sensor at low ISO gives.
            const float n = static_cast<float>(random.gaussian()) * grain;
            for (std::size_t c = 0; c < 3; ++c) {
                const float v = (pixels_[i + c] + n) * 255.0f + static_cast<float>(random.unit());
                bytes[i + c] = static_cast<std::uint8_t>(std::clamp(v, 0.0f, 255.0f));
            }
        }
    });
    return bytes;
}

Polygon ellipse(Vec2 centre, double rx, double ry, double rotation, int segments) {
    if (segments <= 0)
        segments = std::clamp(static_cast<int>(std::max(rx, ry) * 1.5), 16, 256);
    Polygon polygon;
    polygon.reserve(segments);
    const double c = std::cos(rotation), s = std::sin(rotation);
    for (int i = 0; i < segments; ++i) {
        const double t = 2.0 * std::numbers::pi * i / segments;
        const double ex = rx * std::cos(t), ey = ry * std::sin(t);
        polygon.push_back({centre.x + ex * c - ey * s, centre.y + ex * s + ey * c});
    }
    return polygon;
}

Polygon capsule(Vec2 a, Vec2 b, double ra, double rb) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double angle = std::atan2(dy, dx);
    const int segments = std::clamp(static_cast<int>(std::max(ra, rb)), 8, 64);
    Polygon polygon;
    // Half circle around b, then around a.
    for (int i = 0; i <= segments; ++i) {
        const double t = angle - std::numbers::pi / 2 + std::numbers::pi * i / segments;
        polygon.push_back({b.x + rb * std::cos(t), b.y + rb * std::sin(t)});
    }
    for (int i = 0; i <= segments; ++i) {
        const double t = angle + std::numbers::pi / 2 + std::numbers::pi * i / segments;
        polygon.push_back({a.x + ra * std::cos(t), a.y + ra * std::sin(t)});
    }
    return polygon;
}

} // namespace tessary::samplegen
