// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/pairs.h"
#include "pairs/pairs_json.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik;
using test::failureOf;

namespace {

ReviewFrame frame(const std::string& pairID, const std::string& riderID, const std::string& role) {
    return test::frame(pairID, riderID, role, '1');
}

std::string refusal(const std::vector<ReviewFrame>& frames) {
    return failureOf([&] { PairReview::resolve(frames); });
}

const json::Source source{"joint-review-abc.json", "review document"};

template <class Read>
auto read(const std::string& text, Read reader, const std::string& path = "pairContexts[0]") {
    json::Json root = json::parse(text, source);
    return reader(json::Node(root, source, path));
}

std::string contextRefusal(const std::string& text) {
    return failureOf([&] { read(text, pairContextFromJson); });
}

std::string assessmentRefusal(const std::string& text) {
    return failureOf([&] { read(text, pairPhotoAssessmentFromJson, "photoAssessment"); });
}

} // namespace

TEST(PairReviewResolve, GroupsByPairInDocumentOrderWithTheRiderFirst) {
    auto pairs =
        PairReview::resolve({frame("b", "ref", "reference"), frame("a", "solo", "subject"),
                             frame("b", "rider", "subject"), frame("c", "coach", "instructor"),
                             frame("c", "me", "subject")});
    ASSERT_EQ(pairs.size(), 3u);
    EXPECT_EQ(pairs[0], (ReviewPair{"b", {"b/rider", "b/ref"}}));
    EXPECT_EQ(pairs[1], (ReviewPair{"a", {"a/solo"}}));
    // Any role other than "subject" is a reference.
    EXPECT_EQ(pairs[2], (ReviewPair{"c", {"c/me", "c/coach"}}));
    EXPECT_TRUE(PairReview::resolve({}).empty());
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
    EXPECT_EQ(joints(PairFeature::outsideKnee, CornerDirection::left),
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

TEST(PairContextJson, RoundTripsEveryFieldAndRefusesKeysOfTheWrongKind) {
    PairContext full{"turn-3",
                     CornerDirection::right,
                     std::map<PairFeature, KneePlacement>{
                         {PairFeature::insideKnee, KneePlacement::riderFurtherOut},
                         {PairFeature::outsideKnee, KneePlacement::obscured}},
                     {{"leftElbow", ViewComparability::notComparable},
                      {"rightElbow", ViewComparability::comparable}}};
    PairContext bare{"turn-3", std::nullopt, std::nullopt, {}};
    PairContext emptyKnees{
        "turn-3", CornerDirection::unknown, std::map<PairFeature, KneePlacement>{}, {}};
    for (const PairContext& context : {full, bare, emptyKnees}) {
        std::string text = toJson(context).dump();
        EXPECT_EQ(read(text, pairContextFromJson), context) << text;
    }
    // An absent map and an empty one differ: the reviewer has started choosing knee placements.
    EXPECT_FALSE(toJson(bare).contains("kneePlacements"));
    EXPECT_TRUE(toJson(emptyKnees)["kneePlacements"].empty());

    const std::string prefix = "“joint-review-abc.json” is not a valid review document: ";
    const std::pair<std::string, std::string> cases[] = {
        {R"({"pairID":"t","kneePlacements":{"insideElbow":"similar"},"viewComparability":{}})",
         "pairContexts[0].kneePlacements.insideElbow is not a knee: the keys must be "
         "“insideKnee” or “outsideKnee”."},
        {R"({"pairID":"t","viewComparability":{"insideElbow":"comparable"}})",
         "pairContexts[0].viewComparability.insideElbow is not an observation: the keys must be "
         "“leftElbow” or “rightElbow”."},
    };
    for (const auto& [text, problem] : cases)
        EXPECT_EQ(contextRefusal(text), prefix + problem);
}

TEST(PairPhotoAssessmentJson, RoundTripsAndRefusesRepeatedBullets) {
    PairPhotoAssessment assessment{
        CornerDirection::left,
        {{"b1", "Look through the turn", "Head turned towards the exit.", PairFeature::insideKnee},
         {"b2", "Outside leg", "", std::nullopt}}};
    EXPECT_EQ(read(toJson(assessment).dump(), pairPhotoAssessmentFromJson), assessment);
    EXPECT_EQ(read(R"({"coaching":[]})", pairPhotoAssessmentFromJson), PairPhotoAssessment{});

    EXPECT_EQ(assessmentRefusal(R"({"coaching":[{"id":"b","headline":"h","detail":""},)"
                                R"({"id":"b","headline":"g","detail":""}]})"),
              "“joint-review-abc.json” is not a valid review document: "
              "photoAssessment.coaching[1].id repeats the id of an earlier bullet.");
    EXPECT_NE(assessmentRefusal(R"({"coaching":[{"id":"b","headline":"","detail":""}]})"), "");
}
