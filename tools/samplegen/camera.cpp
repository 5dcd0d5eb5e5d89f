// SPDX-License-Identifier: Apache-2.0
#include "camera.h"

namespace tessary::samplegen {

Camera::Camera(double azimuth, double pitch, double roll) : roll_(roll) {
    forward_ = {std::cos(pitch) * std::cos(azimuth), std::cos(pitch) * std::sin(azimuth),
                -std::sin(pitch)};
    right_ = {std::sin(azimuth), -std::cos(azimuth), 0};
    up_ = cross(right_, forward_);
}

Vec2 Camera::projectWorld(Vec3 world) const {
    return {origin_.x + scale_ * dot(world, right_), origin_.y - scale_ * dot(world, up_)};
}

Vec3 Camera::viewDirection(Vec3 localDirection) const {
    const Vec3 w = toWorld(localDirection);
    return {dot(w, right_), -dot(w, up_), -dot(w, forward_)};
}

} // namespace tessary::samplegen
