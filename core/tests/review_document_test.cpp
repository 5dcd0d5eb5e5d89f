// SPDX-License-Identifier: Apache-2.0
#include "dravik/review.h"
#include "test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace dravik {
namespace {

ReviewFrame frameWith(std::vector<DravikResult> raw) {
    ReviewFrame frame;
    frame.id = "corner-1/rider";
    frame.file = "rider.jpg";
    frame.raw = std::move(raw);
    return frame;
}

DravikResult unusable(DravikResult result) {
    result.count = 2;
    return result;
}

TEST(ReviewFrame, SeedsFromTheRequestedKindAndFallsBackOnlyWhenItIsMissing) {
    const ReviewFrame twoDOnly = frameWith({test::poseResult("2D", {100, 100})});
    // A 2D-only detector still seeds the default 3D view, but has no raw 3D point.
    EXPECT_EQ(twoDOnly.seedPoint("nose", "3D"), (Point2{100, 100}));
    EXPECT_EQ(twoDOnly.rawPoint("nose", "3D"), std::nullopt);
    EXPECT_EQ(twoDOnly.rawPoint("nose", "2D"), (Point2{100, 100}));

    const ReviewFrame both =
        frameWith({unusable(test::poseResult("3D", {1, 1})), test::poseResult("2D", {200, 200}),
                   test::poseResult("3D", {300, 300}), test::poseResult("3D", {400, 400})});
    EXPECT_EQ(both.seedPoint("nose", "3D"), (Point2{300, 300})); // first usable of the kind
    EXPECT_EQ(both.seedPoint("nose", "2D"), (Point2{200, 200}));

    // An unusable result of the kind counts as none, so the seed falls back.
    const ReviewFrame poor =
        frameWith({unusable(test::poseResult("3D", {1, 1})), test::poseResult("2D", {5, 5})});
    EXPECT_EQ(poor.seedPoint("nose", "3D"), (Point2{5, 5}));
    EXPECT_EQ(poor.rawPoint("nose", "3D"), std::nullopt);

    // A joint missing from the trusted result is not borrowed from a later one.
    DravikResult partial = test::poseResult("3D", {10, 10});
    partial.joints.erase(partial.joints.begin());
    const ReviewFrame gaps = frameWith({partial, test::poseResult("3D", {20, 20})});
    EXPECT_EQ(gaps.seedPoint("nose", "3D"), std::nullopt);

    EXPECT_EQ(frameWith({}).seedPoint("nose", "3D"), std::nullopt);
}

TEST(ReviewFrame, AcceptedRetriesTakePrecedenceNewestFirst) {
    ReviewFrame frame = frameWith({test::poseResult("3D", {100, 100})});
    frame.setJoint("left_elbow", Point2{7, 7}, JointReviewState::corrected);

    frame.addRetry({test::poseResult("3D", {200, 200}), std::nullopt});
    EXPECT_EQ(frame.seedPoint("nose", "3D"), (Point2{200, 200}));
    frame.addRetry({test::poseResult("3D", {300, 300}), test::poseResult("3D", {310, 310})});
    EXPECT_EQ(frame.rawPoint("nose", "3D"), (Point2{310, 310})); // refined pass first
    // A retry without a usable result is recorded but seeds nothing.
    frame.addRetry({unusable(test::poseResult("3D", {400, 400})), std::nullopt});
    EXPECT_EQ(frame.retries.size(), 3u);
    EXPECT_EQ(frame.seedPoint("nose", "3D"), (Point2{310, 310}));
    // A 2D retry does not hide the raw 3D result from a 3D view.
    frame.retries.clear();
    frame.addRetry({test::poseResult("2D", {500, 500}), std::nullopt});
    EXPECT_EQ(frame.seedPoint("nose", "3D"), (Point2{100, 100}));
    EXPECT_EQ(frame.seedPoint("nose", "2D"), (Point2{500, 500}));

    EXPECT_EQ(frame.edits.at("left_elbow"), (JointEdit{JointReviewState::corrected, Point2{7, 7}}));

    DetectionRetry bad{test::poseResult("3D", {0, 0}), std::nullopt};
    bad.primary->joints[0].name = "tail";
    EXPECT_THROW(frame.addRetry(bad), DravikError);
    EXPECT_EQ(frame.retries.size(), 1u);
}

TEST(ReviewFrame, EditsDecideWhatIsDisplayed) {
    ReviewFrame frame = frameWith({test::poseResult("3D", {100, 100})});
    frame.setJoint("nose", Point2{1, 2}, JointReviewState::uncertain);
    frame.setJoint("left_eye", Point2{3, 4}, JointReviewState::obscured);
    EXPECT_EQ(frame.displayPoint("nose", "3D"), (Point2{1, 2}));
    EXPECT_EQ(frame.reviewedPoint("nose"), (Point2{1, 2}));
    EXPECT_EQ(frame.displayPoint("left_eye", "3D"), std::nullopt); // obscured keeps no point
    EXPECT_EQ(frame.displayPoint("right_eye", "3D"), (Point2{120, 110}));
    EXPECT_EQ(frame.reviewedPoint("right_eye"), std::nullopt);

    const ReviewFrame before = frame;
    EXPECT_THROW(frame.setJoint("tail", Point2{1, 1}, JointReviewState::corrected), DravikError);
    EXPECT_THROW(frame.setJoint("nose", std::nullopt, JointReviewState::uncertain), DravikError);
    EXPECT_THROW(frame.setJoint("nose", Point2{std::nan(""), 1}, JointReviewState::corrected),
                 DravikError);
    EXPECT_THROW(frame.restore("nose", JointEdit{JointReviewState::corrected, std::nullopt}),
                 DravikError);
    EXPECT_EQ(frame, before);

    frame.restore("nose", std::nullopt);
    EXPECT_EQ(frame.displayPoint("nose", "3D"), (Point2{100, 100}));
}

TEST(ReviewCoordinates, DisplayAndSourceAreInverse) {
    const PixelRect panel{120.5, 40, 800, 600};
    const Point2 source{300.25, 70.75};
    EXPECT_EQ(ReviewCoordinates::display(source, panel, 0.5), (Point2{89.875, 15.375}));
    for (double scale : {0.1, 0.37, 1.0, 3.3}) {
        Point2 back = ReviewCoordinates::source(ReviewCoordinates::display(source, panel, scale),
                                                panel, scale);
        EXPECT_NEAR(back.x, source.x, 1e-9);
        EXPECT_NEAR(back.y, source.y, 1e-9);
    }
}

TEST(InspectionRenderer, BonesJoinEveryJointOnceAndIdsAreCocoPositions) {
    ASSERT_EQ(InspectionRenderer::jointNames().size(), 19u);
    EXPECT_EQ(InspectionRenderer::jointID("left_elbow"), 7);
    std::set<std::pair<std::string, std::string>> seen;
    std::set<std::string> touched;
    for (const auto& [a, b] : InspectionRenderer::bones()) {
        EXPECT_TRUE(InspectionRenderer::jointID(a) && InspectionRenderer::jointID(b)) << a << b;
        EXPECT_TRUE(seen.insert(std::minmax(a, b)).second) << a << "-" << b;
        touched.insert({a, b});
    }
    EXPECT_EQ(touched.size(), 19u); // the skeleton reaches every joint
}

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
    EXPECT_THROW(document.setJoint(2, "nose", Point2{1, 1}, JointReviewState::corrected),
                 DravikError);
    EXPECT_EQ(document, before);

    // The last revision a file may hold is never raised past, by any kind of change.
    ReviewDocument last(document.identity(), document.frames(), ReviewDocument::maxRevision - 1);
    const ReviewDocument unchanged = last;
    EXPECT_THROW(last.setJoint(0, "nose", Point2{1, 1}, JointReviewState::corrected), DravikError);
    EXPECT_THROW(last.setLeanAnnotation("corner-1/rider", std::nullopt), DravikError);
    EXPECT_THROW(last.setPairContext("corner-1", std::nullopt), DravikError);
    EXPECT_EQ(last, unchanged);
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
    EXPECT_TRUE(Uuid().isNil());
    for (const char* bad :
         {"", "6f1c2a9e0b3d4c559e7a12ab34cd56ef", "{6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef",
          "6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56eg", "6f1c2a9e-0b3d-4c55-9e7a-12ab34cd56ef0"})
        EXPECT_EQ(Uuid::parse(bad), std::nullopt) << bad;
}

} // namespace
} // namespace dravik
