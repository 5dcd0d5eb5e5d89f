#include "dravik/error.h"
#include "dravik/pairs.h"
#include "pair_fixtures.h"

#include <gtest/gtest.h>

using namespace dravik;
using pairtest::frame;

namespace {

std::string refusal(const std::vector<ReviewFrame>& frames) {
    try {
        PairReview::resolve(frames);
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

} // namespace

TEST(PairReviewResolve, GroupsByPairInDocumentOrderWithTheRiderFirst) {
    auto pairs = PairReview::resolve({frame("b", "ref", "reference"), frame("a", "solo", "subject"),
                                      frame("b", "rider", "subject")});
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0], (ReviewPair{"b", {"b/rider", "b/ref"}}));
    EXPECT_EQ(pairs[1], (ReviewPair{"a", {"a/solo"}}));
    EXPECT_TRUE(pairs[0].hasReference());
    EXPECT_FALSE(pairs[1].hasReference());
    EXPECT_TRUE(PairReview::resolve({}).empty());
}

TEST(PairReviewResolve, AnyRoleOtherThanSubjectIsAReference) {
    auto pairs =
        PairReview::resolve({frame("a", "coach", "instructor"), frame("a", "me", "subject")});
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_EQ(pairs[0].frameIDs, (std::vector<std::string>{"a/me", "a/coach"}));
}

TEST(PairReviewResolve, RefusesPairsThatCannotBeCompared) {
    EXPECT_EQ(refusal({frame("t3", "x", "subject"), frame("t3", "y", "subject")}),
              "Pair “t3” holds two rider photos, “x.jpg” and “y.jpg”, but compares one rider "
              "with one reference rider.");
    EXPECT_EQ(refusal({frame("t3", "me", "subject"), frame("t3", "x", "reference"),
                       frame("t3", "y", "reference")}),
              "Pair “t3” holds 3 photos (“me.jpg”, “x.jpg” and “y.jpg”), but a pair holds one "
              "rider photo and at most one reference photo.");
    EXPECT_EQ(refusal({frame("t3", "x", "reference"), frame("t3", "y", "reference")}),
              "Pair “t3” holds two reference photos, “x.jpg” and “y.jpg”, but compares one rider "
              "with one reference rider.");
    EXPECT_EQ(refusal({frame("ok", "me", "subject"), frame("t3", "x", "reference")}),
              "Pair “t3” holds the reference photo “x.jpg” but no rider photo to compare with it.");
    EXPECT_EQ(refusal({frame("", "x", "subject")}), "The photo “x.jpg” belongs to no pair.");
}

TEST(PairFeatures, InsideIsTheSideOfTheTurn) {
    EXPECT_EQ(joints(PairFeature::insideElbow, CornerDirection::left),
              (std::vector<std::string>{"left_shoulder", "left_elbow", "left_wrist"}));
    EXPECT_EQ(joints(PairFeature::insideElbow, CornerDirection::right),
              (std::vector<std::string>{"right_shoulder", "right_elbow", "right_wrist"}));
    EXPECT_EQ(joints(PairFeature::outsideKnee, CornerDirection::left),
              (std::vector<std::string>{"right_hip", "right_knee", "right_ankle"}));
    EXPECT_EQ(joints(PairFeature::insideKnee, CornerDirection::right),
              (std::vector<std::string>{"right_hip", "right_knee", "right_ankle"}));
    for (PairFeature feature : allPairFeatures) {
        EXPECT_TRUE(joints(feature, CornerDirection::unknown).empty());
        EXPECT_EQ(role(feature, CornerDirection::unknown), std::nullopt);
        // The role word stays with the feature; the side of the body it names flips.
        EXPECT_EQ(role(feature, CornerDirection::left), role(feature, CornerDirection::right));
        EXPECT_NE(joints(feature, CornerDirection::left), joints(feature, CornerDirection::right));
    }
    EXPECT_EQ(role(PairFeature::insideKnee, CornerDirection::right), "Inside");
    EXPECT_EQ(role(PairFeature::outsideKnee, CornerDirection::left), "Outside");
}
