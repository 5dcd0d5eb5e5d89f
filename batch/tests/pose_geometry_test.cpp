// SPDX-License-Identifier: Apache-2.0
#include "pose_result.h"
#include "upright.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace dravik::batch;

namespace {

// An upright body in the square: keypoint i at (0.5, 0.1 + 0.05 i).
SquarePose upright(float score = 0.8f) {
    SquarePose pose;
    for (std::size_t i = 0; i < pose.size(); ++i)
        pose[i] = {0.1f + 0.05f * float(i), 0.5f, score};
    return pose;
}

} // namespace

TEST(PoseGeometry, JointsAreNamedInCocoOrderWithNeckAndPelvisAsMidpoints) {
    SquarePose pose = upright();
    pose[5] = {0.25f, 0.25f, 0.9f}; // left shoulder
    pose[6] = {0.25f, 0.75f, 0.6f};
    pose[11] = {0.5f, 0.25f, 0.3f};
    pose[12] = {0.75f, 0.75f, 0.7f};
    const std::vector<JointResult> joints = reviewJoints(inPhoto(pose, {100, -50, 400}));
    ASSERT_EQ(joints.size(), 19u);
    EXPECT_EQ(joints[16].name, "right_ankle");
    EXPECT_EQ(joints[5], (JointResult{"left_shoulder", 200, 50, 0.9f}));
    EXPECT_EQ(joints[17], (JointResult{"neck", 300, 50, 0.6f}));
    EXPECT_EQ(joints[18], (JointResult{"pelvis", 300, 200, 0.3f}));
}

TEST(PoseGeometry, TheRefinedSquareFramesTheConfidentJointsAtTheSameTilt) {
    // Joints from 0.1 to 0.9 of a 1000 px square: an 800 px body gets 160 px on every side.
    const SquareRegion first = SquareRegion::centred({1000, 1000}, 1000, 40);
    const auto tighter = refinedSquare(upright(), first);
    ASSERT_TRUE(tighter);
    EXPECT_NEAR(tighter->side, 1120, 1e-3);
    EXPECT_EQ(tighter->tilt, 40);
    const Point2 middle = first.toPhoto(0.5, 0.5);
    EXPECT_NEAR(tighter->centre().x, middle.x, 1e-3);
    EXPECT_NEAR(tighter->centre().y, middle.y, 1e-3);

    SquarePose faint = upright();
    for (std::size_t i = 0; i < 14; ++i)
        faint[i].score = 0.1f; // three confident joints frame nothing
    EXPECT_FALSE(refinedSquare(faint, first));

    // The refined pass keeps a joint only where it is surer than the first.
    const std::vector<BodyPoint> coarse = {{{1, 1}, 0.5}, {{2, 2}, 0.5}};
    const std::vector<BodyPoint> fine = {{{9, 9}, 0.4}, {{8, 8}, 0.7}};
    const std::vector<BodyPoint> kept = mostConfident(coarse, fine);
    EXPECT_EQ(kept[0].at, (Point2{1, 1}));
    EXPECT_EQ(kept[1].at, (Point2{8, 8}));
}

TEST(Upright, LeansAreMeasuredFromTheVerticalTopRightPositive) {
    std::vector<BodyPoint> body(17, {{0, 0}, 0.9});
    body[5] = {{130, 100}, 0.9}; // shoulders' midpoint (120, 100)
    body[6] = {{110, 100}, 0.9};
    body[11] = {{30, 200}, 0.9}; // hips' midpoint (20, 200): leaning 45° to the right
    body[12] = {{10, 200}, 0.9};
    EXPECT_NEAR(*torsoLean(body), 45, 1e-9);
    body[11].score = 0.2;
    EXPECT_FALSE(torsoLean(body)) << "an unsure hip gives no torso";

    // A wheel axis has no direction: either endpoint order gives the same lean.
    EXPECT_NEAR(wheelLean({{100, 300}, {40, 200}}), -30.96, 0.01);
    EXPECT_NEAR(wheelLean({{40, 200}, {100, 300}}), -30.96, 0.01);
}

TEST(Upright, AnEstimatedLeanIsTrustedAndAGuessMustScoreClearlyBetterThanUpright) {
    EXPECT_EQ(tiltsToTry(42), (std::vector<double>{42}));
    EXPECT_EQ(tiltsToTry(-6), (std::vector<double>{0})) << "a slight lean is detected upright";
    EXPECT_EQ(bestTry({0.40, 0.45, 0.30}), 0u);
    EXPECT_EQ(bestTry({0.40, 0.47, 0.50}), 2u);
}
