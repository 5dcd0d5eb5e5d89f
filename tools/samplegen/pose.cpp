// SPDX-License-Identifier: Apache-2.0
#include "pose.h"

#include <algorithm>

namespace tessary::samplegen {

namespace {

// Two-bone reach: the middle joint between `root` and `end`, bent towards `pole`.
Vec3 bend(Vec3 root, Vec3 end, double upper, double lower, Vec3 pole) {
    const Vec3 span = end - root;
    const double d = std::clamp(length(span), 1e-6, upper + lower - 1e-6);
    const Vec3 axis = span * (1.0 / length(span));
    const double along = (upper * upper - lower * lower + d * d) / (2 * d);
    const double out = std::sqrt(std::max(0.0, upper * upper - along * along));
    const Vec3 side = normalized(pole - axis * dot(pole, axis));
    return root + axis * along + side * out;
}

RiderPose build(const RidingStyle& style, int turn, double leanRadians) {
    const double s = turn;
    // Sides: +1 for the rider's left; `inside` is the side towards the corner's apex.
    auto inside = [s](double side) { return side == s; };
    RiderPose pose;
    auto& j = pose.joints;

    const double h = style.hangOff, c = style.crouch;
    j[pelvis] = {-0.30, s * (0.05 + 0.13 * h), 0.92 - 0.03 * h};
    for (double side : {1.0, -1.0}) {
        const double dip = inside(side) ? -0.03 * h : 0.03 * h;
        j[side > 0 ? leftHip : rightHip] = j[pelvis] + Vec3{0, 0.15 * side, dip};
    }
    j[neck] = {0.04 + 0.12 * c, s * (0.08 + 0.20 * h), 1.39 - 0.15 * c};
    auto placeShoulders = [&] {
        for (double side : {1.0, -1.0}) {
            const double dip = inside(side) ? -0.04 * h : 0.02 * h;
            j[side > 0 ? leftShoulder : rightShoulder] =
                j[neck] + Vec3{-0.01, 0.19 * side, -0.04 + dip};
        }
    };
    placeShoulders();
    // Hands stay on the bars: an upright rider who cannot reach them leans forward until the
    // elbows keep a little bend.
    const std::array<Vec3, 2> bars{Vec3{0.44, 0.31, 0.93}, Vec3{0.44, -0.31, 0.93}};
    const double reach = upperArmLength + forearmLength - 0.03;
    double excess = 0;
    for (int side = 0; side < 2; ++side)
        excess = std::max(excess,
                          length(bars[side] - j[side == 0 ? leftShoulder : rightShoulder]) - reach);
    if (excess > 0) {
        j[neck] = j[neck] + normalized((bars[0] + bars[1]) * 0.5 - j[neck]) * (excess + 0.01);
        placeShoulders();
    }

    // Riders keep their eyes nearer level than the motorcycle: the head turns back against half
    // of the lean, and turns to look through the corner.
    pose.head = j[neck] + Vec3{0.12 + 0.04 * c, s * 0.03, 0.13 - 0.03 * c};
    pose.headUp = rolled({0, 0, 1}, -0.5 * rollFor(turn, leanRadians));
    const double look = 0.45 * style.headTurn;
    const Vec3 gaze = normalized({std::cos(look), s * std::sin(look), -0.12 - 0.15 * c});
    pose.facing = normalized(gaze - pose.headUp * (dot(gaze, pose.headUp) + 0.12 + 0.15 * c));
    const Vec3 left = cross(pose.headUp, pose.facing);
    const Vec3 ahead = pose.facing;
    const Vec3 up = pose.headUp;
    j[nose] = pose.head + ahead * 0.15 - up * 0.02;
    j[leftEye] = pose.head + ahead * 0.12 + up * 0.03 + left * 0.045;
    j[rightEye] = pose.head + ahead * 0.12 + up * 0.03 - left * 0.045;
    j[leftEar] = pose.head + left * 0.13 - ahead * 0.01;
    j[rightEar] = pose.head - left * 0.13 - ahead * 0.01;

    for (double side : {1.0, -1.0}) {
        const bool l = side > 0;
        const Vec3 shoulder = j[l ? leftShoulder : rightShoulder];
        const Vec3 wrist = bars[l ? 0 : 1];
        j[l ? leftWrist : rightWrist] = wrist;
        const double outwards = inside(side) ? 0.9 : 0.6;
        const Vec3 pole = {-0.2, side * outwards, -0.3 - 0.8 * style.elbowDrop};
        j[l ? leftElbow : rightElbow] = bend(shoulder, wrist, upperArmLength, forearmLength, pole);

        const Vec3 hip = j[l ? leftHip : rightHip];
        const Vec3 ankle = {-0.36, 0.25 * side, 0.52};
        j[l ? leftAnkle : rightAnkle] = ankle;
        pose.toes[l ? 0 : 1] = {-0.19, 0.24 * side, 0.44};
        const Vec3 kneePole = inside(side) ? Vec3{0.55, side * (0.3 + 1.1 * style.kneeOut), -0.15}
                                           : Vec3{1.0, side * 0.22, 0.35};
        j[l ? leftKnee : rightKnee] = bend(hip, ankle, thighLength, shinLength, kneePole);
    }
    return pose;
}

} // namespace

RiderPose poseRider(const RidingStyle& style, int turn, double leanRadians) {
    // Pull the inside knee in, then the hips back over the seat, until the knee clears the
    // track at this lean.
    const Joint knee = turn > 0 ? leftKnee : rightKnee;
    RidingStyle held = style;
    RiderPose pose = build(held, turn, leanRadians);
    while (rolled(pose.joints[knee], rollFor(turn, leanRadians)).z < 0.06 &&
           (held.kneeOut > 0 || held.hangOff > 0)) {
        double& give = held.kneeOut > 0 ? held.kneeOut : held.hangOff;
        give = std::max(0.0, give - 0.05);
        pose = build(held, turn, leanRadians);
    }
    return pose;
}

} // namespace tessary::samplegen
