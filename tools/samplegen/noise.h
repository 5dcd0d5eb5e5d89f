// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace tessary::samplegen {

// Smooth value noise on an integer lattice, 0..1; deterministic from its seed.
class ValueNoise {
  public:
    explicit ValueNoise(std::uint64_t seed) : seed_(seed) {}

    double at(double x, double y) const;
    // Octaves of `at`, each twice as fine and half as strong, normalised to 0..1.
    double fractal(double x, double y, int octaves) const;

  private:
    double lattice(std::int64_t x, std::int64_t y) const;
    std::uint64_t seed_;
};

} // namespace tessary::samplegen
