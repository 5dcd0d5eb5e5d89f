// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace tessary::samplegen {

// SplitMix64 with our own distributions: the standard library's distributions differ between
// implementations, and the sample session must come out byte for byte the same everywhere.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; } // [0, 1)
    double uniform(double low, double high) { return low + (high - low) * unit(); }
    int index(int count) { return static_cast<int>(unit() * count); }
    bool chance(double p) { return unit() < p; }
    double gaussian() {
        const double u = 1.0 - unit();
        return std::sqrt(-2.0 * std::log(u)) * std::cos(2.0 * std::numbers::pi * unit());
    }
    // An independent stream, so that adding a draw in one place does not shift every other.
    Random fork(std::uint64_t salt) { return Random(next() ^ (salt * 0xd1b54a32d192ed03ULL)); }

  private:
    std::uint64_t state_;
};

} // namespace tessary::samplegen
