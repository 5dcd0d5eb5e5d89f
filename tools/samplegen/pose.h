// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vec3.h"

#include <array>

namespace tessary::samplegen {

inline constexpr int jointCount = 19;

// Bone lengths in metres.
inline constexpr double upperArmLength = 0.31;
inline constexpr double forearmLength = 0.29;
inline constexpr double thighLength = 0.46;
inline constexpr double shinLength = 0.45;

// Indices in the core's joint order: 17 COCO keypoints, then neck and pelvis.
enum Joint {
    nose,
    leftEye,
    rightEye,
    leftEar,
    rightEar,
    leftShoulder,
    rightShoulder,
    leftElbow,
    rightElbow,
    leftWrist,
    rightWrist,
    leftHip,
    rightHip,
    leftKnee,
    rightKnee,
    leftAnkle,
    rightAnkle,
    neck,
    pelvis
};

// How a rider sits on the motorcycle; every field 0..1.
struct RidingStyle {
    double crouch = 0.5;  // upright .. tucked behind the screen
    double hangOff = 0.5; // sitting square .. hanging off to the inside
    double kneeOut = 0.5; // inside knee tucked .. pointed at the track
    double elbowDrop = 0.5;
    double headTurn = 0.5; // looking ahead .. looking through the corner
};

// The rider's skeleton in the motorcycle's frame (before the lean), plus what drawing needs.
struct RiderPose {
    std::array<Vec3, jointCount> joints;
    Vec3 head;                // centre of the helmet
    Vec3 facing;              // unit, where the visor looks
    Vec3 headUp;              // unit
    std::array<Vec3, 2> toes; // left, right: the balls of the feet on the pegs
};

// `turn` is +1 for a left-hand corner (the inside is the rider's left), -1 for a right-hand one.
// `leanRadians` is the motorcycle's lean; the inside knee is kept off the ground at that lean.
RiderPose poseRider(const RidingStyle& style, int turn, double leanRadians);

// The rider's lean (to the inside, in the motorcycle's roll) as a turn of the frame.
inline double rollFor(int turn, double leanRadians) {
    return -turn * leanRadians;
}

} // namespace tessary::samplegen
