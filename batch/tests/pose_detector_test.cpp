#include "pose_detector.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace dravik::batch;

namespace {

WorkerAnswer upright(float score = 0.8f, int people = 1) {
    WorkerAnswer answer;
    answer.people = people;
    for (int i = 0; i < 17; ++i)
        answer.keypoints.push_back({0.1f + 0.05f * float(i), 0.5f, score});
    return answer;
}

const JointResult& joint(const DravikResult& result, const std::string& name) {
    for (const auto& j : result.joints)
        if (j.name == name)
            return j;
    throw std::runtime_error("no " + name);
}

} // namespace

TEST(PoseResult, NamesJointsInCocoOrderMapsThemToPhotoPixelsAndAddsMidpoints) {
    WorkerAnswer answer = upright();
    answer.keypoints[5] = {0.25f, 0.25f, 0.9f}; // left shoulder
    answer.keypoints[6] = {0.25f, 0.75f, 0.6f}; // right shoulder
    answer.keypoints[11] = {0.5f, 0.25f, 0.3f};
    answer.keypoints[12] = {0.75f, 0.75f, 0.7f};
    DravikResult result = resultFromAnswer(answer, {100, -50, 400}, 1);

    EXPECT_EQ(result.status, "needsReview");
    ASSERT_EQ(result.joints.size(), 19u);
    EXPECT_EQ(result.joints[16].name, "right_ankle");
    EXPECT_EQ(joint(result, "left_shoulder"), (JointResult{"left_shoulder", 200, 50, 0.9f}));
    EXPECT_EQ(joint(result, "neck"), (JointResult{"neck", 300, 50, 0.6f}));
    EXPECT_EQ(joint(result, "pelvis"), (JointResult{"pelvis", 300, 200, 0.3f}));
    EXPECT_TRUE(result.usable());

    EXPECT_EQ(resultFromAnswer(answer, {0, 0, 10}, 0).status, "noRider");
    EXPECT_EQ(resultFromAnswer(answer, {0, 0, 10}, 2).status, "severalPeople");
}

TEST(PoseResult, CountsRidersFromTheCrowdModelWithAConfidentFallback) {
    EXPECT_EQ(riderCount(upright(0.8f, 2)), 2);
    // The crowd model missed a rider the single model sees clearly.
    EXPECT_EQ(riderCount(upright(0.8f, 0)), 1);
    EXPECT_EQ(riderCount(upright(0.2f, 1)), 1);
    EXPECT_EQ(riderCount(upright(0.2f, 0)), 0);
}

TEST(PoseResult, RefinedCropFramesTheConfidentJointsInsideThePhoto) {
    DravikResult result = resultFromAnswer(upright(), {0, 0, 1000}, 1);
    // x = 500 for every joint, y from 100 to 900: a 800 px tall body gets 160 px on every side.
    auto crop = refinedCrop(result, {2000, 1000});
    ASSERT_TRUE(crop);
    EXPECT_NEAR(crop->x, 340, 1e-3);
    EXPECT_NEAR(crop->y, 0, 1e-3); // clipped at the top
    EXPECT_NEAR(crop->width, 320, 1e-3);
    EXPECT_NEAR(crop->maxY(), 1000, 1e-3);

    for (int i = 0; i < 14; ++i)
        result.joints[std::size_t(i)].confidence = 0.1; // three confident joints frame nothing
    EXPECT_FALSE(refinedCrop(result, {2000, 1000}));
}
