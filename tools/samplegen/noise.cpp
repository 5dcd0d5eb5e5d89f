// SPDX-License-Identifier: Apache-2.0
#include "noise.h"

#include <cmath>

namespace tessary::samplegen {

double ValueNoise::lattice(std::int64_t x, std::int64_t y) const {
    std::uint64_t h = seed_ ^ (static_cast<std::uint64_t>(x) * 0x9e3779b97f4a7c15ULL) ^
                      (static_cast<std::uint64_t>(y) * 0xc2b2ae3d27d4eb4fULL);
    h = (h ^ (h >> 31)) * 0xbf58476d1ce4e5b9ULL;
    h = (h ^ (h >> 29)) * 0x94d049bb133111ebULL;
    h ^= h >> 32;
    return static_cast<double>(h & 0xffffff) / 0xffffff;
}

double ValueNoise::at(double x, double y) const {
    const double fx = std::floor(x), fy = std::floor(y);
    const auto ix = static_cast<std::int64_t>(fx), iy = static_cast<std::int64_t>(fy);
    double tx = x - fx, ty = y - fy;
    tx = tx * tx * (3 - 2 * tx);
    ty = ty * ty * (3 - 2 * ty);
    const double a = lattice(ix, iy), b = lattice(ix + 1, iy);
    const double c = lattice(ix, iy + 1), d = lattice(ix + 1, iy + 1);
    return (a + (b - a) * tx) + ((c + (d - c) * tx) - (a + (b - a) * tx)) * ty;
}

double ValueNoise::fractal(double x, double y, int octaves) const {
    double sum = 0, weight = 1, total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += at(x, y) * weight;
        total += weight;
        weight *= 0.5;
        // Offset each octave so that lattice points do not line up.
        x = x * 2 + 17.31;
        y = y * 2 + 5.77;
    }
    return sum / total;
}

} // namespace tessary::samplegen
