// SPDX-License-Identifier: Apache-2.0
#include "track.h"

#include "noise.h"
#include "rows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tessary::samplegen {

namespace {

enum Layer { sky, trees, boards, gravel, grass, kerb, line, asphalt, layerCount };

double smooth(double edge0, double edge1, double x) {
    const double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

class Track {
  public:
    Track(const CornerLook& corner, Vec2 ground, int width, int height)
        : corner_(corner), ground_(ground), w_(width), h_(height), coarse_(corner.textureSeed),
          fine_(corner.textureSeed ^ 0x5151), foliage_(corner.textureSeed ^ 0x7777) {
        horizon_ = ground.y - (corner.kerbGap + corner.horizonGap) * h_;
    }

    // Boundaries between consecutive layers at column x, top to bottom.
    std::array<double, layerCount - 1> boundaries(double x) const {
        const double u = (x - ground_.x) / h_;
        double kerbTop = ground_.y - corner_.kerbGap * h_ + corner_.kerbSlope * u * h_ +
                         corner_.kerbBend * u * u * h_;
        kerbTop = std::max(kerbTop, horizon_ + 0.03 * h_);
        // Nearer is larger: the kerb widens as it comes down the picture.
        const double kerbWidth =
            0.028 * h_ * std::clamp(1 + 2.0 * (kerbTop - horizon_) / h_ - 0.3, 0.4, 2.5);
        const double barrierTop = horizon_ - 0.045 * h_;
        const double treeTop =
            barrierTop - h_ * (0.03 + 0.09 * foliage_.fractal(x / (0.06 * h_), 3.5, 4));
        const double gravelEnd = horizon_ + 0.35 * (kerbTop - horizon_);
        return {treeTop,
                barrierTop,
                horizon_,
                gravelEnd,
                kerbTop,
                kerbTop + kerbWidth,
                kerbTop + kerbWidth * 1.25};
    }

    Rgb colour(Layer layer, double x, double y, const std::array<double, layerCount - 1>& b) const {
        const double n = fine_.fractal(x / 1.6, y / 1.6, 2); // grain at pixel scale
        switch (layer) {
        case sky: {
            const float t = static_cast<float>(std::clamp(y / std::max(1.0, horizon_), 0.0, 1.0));
            const double cloud =
                smooth(0.5, 0.85, coarse_.fractal(x / (0.35 * h_), y / (0.12 * h_), 5));
            return mix(mix(corner_.skyTop, corner_.skyLow, t), rgb8(240, 242, 245),
                       static_cast<float>(cloud * 0.8));
        }
        case trees: {
            const double leaf = foliage_.fractal(x / 3.0, y / 3.0, 3);
            const double clump = foliage_.fractal(x / (0.03 * h_), y / (0.03 * h_), 3);
            return scaled(corner_.trees,
                          static_cast<float>(0.45 + 0.7 * leaf * clump + 0.35 * clump));
        }
        case boards: {
            const double boardWidth = 0.16 * h_;
            const int index = static_cast<int>(std::floor(x / boardWidth + 100.0));
            const double inBoard = x / boardWidth + 100.0 - index;
            const double rowInBoard = (y - b[1]) / (b[2] - b[1]);
            Rgb c = corner_.boards[static_cast<std::size_t>(index) % corner_.boards.size()];
            // Lettering: a band of blocky marks across the middle of each board.
            const bool lettering = rowInBoard > 0.3 && rowInBoard < 0.7 && inBoard > 0.12 &&
                                   inBoard < 0.88 &&
                                   coarse_.at(x / (0.012 * h_), index * 7.0) > 0.45;
            if (lettering)
                c = mix(c, rgb8(245, 245, 240), 0.85f);
            if (inBoard < 0.015 || rowInBoard > 0.92)
                c = rgb8(40, 40, 42);
            return scaled(c, static_cast<float>(0.9 + 0.15 * n));
        }
        case gravel:
            return scaled(rgb8(196, 178, 146),
                          static_cast<float>(0.7 + 0.5 * fine_.at(x / 1.2, y / 1.2) +
                                             0.1 * coarse_.at(x / 30, y / 10)));
        case grass: {
            const double mow = 0.5 + 0.5 * std::sin((x + 0.5 * y) / (0.05 * h_));
            return scaled(corner_.grass, static_cast<float>(0.75 + 0.12 * mow + 0.35 * n * n +
                                                            0.15 * coarse_.at(x / 40, y / 14)));
        }
        case kerb: {
            const double period = (b[5] - b[4]) * 2.2;
            const double phase = (x - ground_.x + (y - b[4]) * 0.9) / period;
            const double f = phase - std::floor(phase);
            // Anti-aliased stripe edges: the fraction of a pixel on the coloured half.
            const double px = 1.0 / period;
            const double red = smooth(-px, px, f) * (1 - smooth(0.5 - px, 0.5 + px, f));
            const Rgb c = mix(rgb8(232, 232, 226), corner_.kerb, static_cast<float>(red));
            const double grime = coarse_.fractal(x / 12, y / 6, 3);
            return scaled(c, static_cast<float>(0.72 + 0.3 * grime + 0.12 * n));
        }
        case line:
            return scaled(rgb8(228, 228, 220), static_cast<float>(0.8 + 0.2 * n));
        case asphalt:
        default: {
            // Texture shrinks towards the horizon.
            const double depth = std::clamp((y - horizon_) / (h_ - horizon_), 0.15, 1.0);
            const double patches =
                coarse_.fractal(x / (0.25 * h_ * depth), y / (0.06 * h_ * depth), 4);
            const double stones =
                fine_.fractal(x / (2.2 * depth + 0.6), y / (1.6 * depth + 0.6), 2);
            const double speck = fine_.at(x / 0.9 + 311, y / 0.9 + 71);
            // The racing line, darkened by rubber, runs parallel to the kerb.
            const double offKerb = (y - b[6]) / h_;
            const double rubber = std::exp(-std::pow((offKerb - 0.12) / 0.07, 2));
            const double k =
                0.78 + 0.25 * patches + 0.28 * stones + (speck > 0.88 ? 0.25 : 0) - 0.16 * rubber;
            return scaled(corner_.asphalt, static_cast<float>(k));
        }
        }
    }

    void drawRow(Canvas& canvas, int py) const {
        const double y = py + 0.5;
        for (int px = 0; px < w_; ++px) {
            const double x = px + 0.5;
            const auto b = boundaries(x);
            int layer = 0;
            while (layer < layerCount - 1 && y >= b[static_cast<std::size_t>(layer)])
                ++layer;
            Rgb c = colour(static_cast<Layer>(layer), x, y, b);
            // Blend with the neighbouring layer within half a pixel of a boundary.
            if (layer > 0 && y - b[static_cast<std::size_t>(layer - 1)] < 0.5) {
                const double t = y - b[static_cast<std::size_t>(layer - 1)] + 0.5;
                c = mix(colour(static_cast<Layer>(layer - 1), x, y, b), c, static_cast<float>(t));
            } else if (layer < layerCount - 1 && b[static_cast<std::size_t>(layer)] - y < 0.5) {
                const double t = 0.5 - (b[static_cast<std::size_t>(layer)] - y);
                c = mix(c, colour(static_cast<Layer>(layer + 1), x, y, b), static_cast<float>(t));
            }
            canvas.set(px, py, c);
        }
    }

  private:
    const CornerLook& corner_;
    Vec2 ground_;
    int w_, h_;
    double horizon_;
    ValueNoise coarse_, fine_, foliage_;
};

} // namespace

void drawTrack(Canvas& canvas, const CornerLook& corner, Vec2 ground) {
    const Track track(corner, ground, canvas.width(), canvas.height());
    forEachRow(canvas.height(), [&](int row) { track.drawRow(canvas, row); });
}

} // namespace tessary::samplegen
