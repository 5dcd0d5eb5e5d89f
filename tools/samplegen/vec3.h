// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

namespace tessary::samplegen {

// Metres, in the motorcycle's frame unless said otherwise: x forward, y to the rider's left, z up.
struct Vec3 {
    double x = 0;
    double y = 0;
    double z = 0;
};

inline Vec3 operator+(Vec3 a, Vec3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator-(Vec3 a, Vec3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3 operator*(Vec3 a, double k) {
    return {a.x * k, a.y * k, a.z * k};
}
inline double dot(Vec3 a, Vec3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 cross(Vec3 a, Vec3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(Vec3 a) {
    return std::sqrt(dot(a, a));
}
inline Vec3 normalized(Vec3 a) {
    return a * (1.0 / length(a));
}

// Turns about the x axis (the motorcycle's roll axis) by `radians`; positive tips +z towards -y.
inline Vec3 rolled(Vec3 p, double radians) {
    const double c = std::cos(radians), s = std::sin(radians);
    return {p.x, p.y * c - p.z * s, p.y * s + p.z * c};
}

} // namespace tessary::samplegen
