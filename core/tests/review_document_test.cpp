#include "dravik/review.h"
#include "test_support.h"

#include <gtest/gtest.h>

namespace dravik {
namespace {

ReviewDocument twoFrames() {
    ReviewFrame a;
    a.id = "corner-1/rider";
    a.raw = {test::poseResult("3D", {100, 100})};
    ReviewFrame b;
    b.id = "corner-1/ref";
    return ReviewDocument(test::hashOf("results"), {a, b});
}

TEST(ReviewDocument, EveryChangeRaisesTheRevisionAndFailuresChangeNothing) {
    ReviewDocument document = twoFrames();
    EXPECT_EQ(document.revision(), 0);

    document.setJoint(0, "nose", Point2{1, 1}, JointReviewState::corrected);
    document.setJoint(0, "nose", Point2{2, 2}, JointReviewState::corrected);
    document.restore(0, "nose", std::nullopt);
    document.addRetry(1, {test::poseResult("2D", {5, 5}), std::nullopt});
    EXPECT_EQ(document.revision(), 4);
    EXPECT_TRUE(document.frames()[0].edits.empty());
    EXPECT_EQ(document.frames()[1].seedPoint("nose", "3D"), (Point2{5, 5}));

    const ReviewDocument before = document;
    EXPECT_THROW(document.setJoint(0, "tail", Point2{1, 1}, JointReviewState::corrected),
                 DravikError);
    EXPECT_THROW(document.setJoint(0, "nose", std::nullopt, JointReviewState::uncertain),
                 DravikError);
    EXPECT_THROW(document.setJoint(2, "nose", Point2{1, 1}, JointReviewState::corrected),
                 DravikError);
    EXPECT_THROW(document.restore(0, "tail", std::nullopt), DravikError);
    EXPECT_EQ(document, before);

    // Obscured with a point is not a failure: the point is dropped.
    document.setJoint(1, "nose", Point2{3, 3}, JointReviewState::obscured);
    EXPECT_EQ(document.revision(), 5);
    EXPECT_EQ(document.frames()[1].edits.at("nose"),
              (JointEdit{JointReviewState::obscured, std::nullopt}));
}

TEST(ReviewDocument, FindsFramesById) {
    const ReviewDocument document = twoFrames();
    EXPECT_EQ(document.frameIndex("corner-1/ref"), 1u);
    EXPECT_EQ(document.frame("corner-1/ref"), &document.frames()[1]);
    EXPECT_EQ(document.frameIndex("corner-1"), std::nullopt);
    EXPECT_EQ(document.frame("nope"), nullptr);
}

TEST(ReviewEditTarget, IndexOnlyWhileSessionCanvasAndVisibilityMatch) {
    const ReviewDocument document = twoFrames();
    const Uuid session = *Uuid::parse("6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef");
    const Uuid canvas = *Uuid::parse("{6F1C2A9E-0B3D-4C55-9E7A-12AB34CD56F0}");
    const ReviewEditTarget target{session, canvas, "corner-1/ref", "left_elbow"};
    const std::vector<std::string> visible = {"corner-1/rider", "corner-1/ref"};

    EXPECT_EQ(target.index(document, session, canvas, visible), 1);
    EXPECT_EQ(target.index(document, Uuid(), canvas, visible), std::nullopt);
    EXPECT_EQ(target.index(document, session, session, visible), std::nullopt);
    EXPECT_EQ(target.index(document, session, canvas, {"corner-1/rider"}), std::nullopt);
    ReviewEditTarget gone = target;
    gone.frameID = "corner-2/ref";
    EXPECT_EQ(gone.index(document, session, canvas, {"corner-2/ref"}), std::nullopt);
}

TEST(Uuid, ParsesBothCasesAndBracesAndRefusesTheRest) {
    const auto uuid = Uuid::parse("{6F1C2A9E-0B3D-4C55-9E7A-12AB34CD56EF}");
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->text(), "6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef");
    EXPECT_EQ(uuid->upperText(), "6F1C2A9E-0B3D-4C55-9E7A-12AB34CD56EF");
    EXPECT_EQ(Uuid::parse(uuid->text()), uuid);
    EXPECT_FALSE(uuid->isNil());
    EXPECT_TRUE(Uuid().isNil());
    EXPECT_EQ(Uuid().text(), "00000000-0000-0000-0000-000000000000");
    for (const char* bad :
         {"", "6f1c2a9e0b3d4c559e7a12ab34cd56ef", "{6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef",
          "6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56eg", "6f1c2a9e-0b3d-4c55+9e7a-12ab34cd56ef",
          "6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef0"})
        EXPECT_EQ(Uuid::parse(bad), std::nullopt) << bad;
}

} // namespace
} // namespace dravik
