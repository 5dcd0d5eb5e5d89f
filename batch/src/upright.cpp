// SPDX-License-Identifier: Apache-2.0
#include "upright.h"

#include <cmath>

namespace dravik::batch {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double torsoJoint = 0.3;  // shoulders and hips this confident give the torso's lean
constexpr double worthTurning = 10; // degrees: a smaller lean is detected upright

enum Coco { leftShoulder = 5, rightShoulder = 6, leftHip = 11, rightHip = 12 };

// Degrees from the photo's vertical of the direction from `low` to `high`, top-right positive.
double leanOf(Point2 low, Point2 high) {
    return std::atan2(high.x - low.x, low.y - high.y) / degree;
}

} // namespace

std::optional<double> torsoLean(const std::vector<BodyPoint>& k) {
    if (k.size() < 17)
        return std::nullopt;
    for (int joint : {leftShoulder, rightShoulder, leftHip, rightHip})
        if (k[std::size_t(joint)].score < torsoJoint)
            return std::nullopt;
    auto mid = [&](int a, int b) {
        return Point2{(k[std::size_t(a)].at.x + k[std::size_t(b)].at.x) / 2,
                      (k[std::size_t(a)].at.y + k[std::size_t(b)].at.y) / 2};
    };
    return leanOf(mid(leftHip, rightHip), mid(leftShoulder, rightShoulder));
}

double wheelLean(const WheelAxis& wheel) {
    return wheel.a.y >= wheel.b.y ? leanOf(wheel.a, wheel.b) : leanOf(wheel.b, wheel.a);
}

std::vector<double> tiltsToTry(std::optional<double> lean) {
    if (!lean)
        return {0, 30, -30, 60, -60};
    if (std::abs(*lean) < worthTurning)
        return {0};
    return {*lean};
}

std::size_t bestTry(const std::vector<double>& scores) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < scores.size(); ++i)
        if (scores[i] >= scores[0] + guessedMargin && scores[i] > scores[best])
            best = i;
    return best;
}

} // namespace dravik::batch
