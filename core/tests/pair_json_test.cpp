#include "dravik/error.h"
#include "pairs/pairs_json.h"

#include <gtest/gtest.h>

using namespace dravik;

namespace {

const json::Source source{"joint-review-abc.json", "review document"};

template <class Read>
auto read(const std::string& text, Read reader, const std::string& path = "pairContexts[0]") {
    json::Json root = json::parse(text, source);
    return reader(json::Node(root, source, path));
}

std::string refusal(const std::string& text) {
    try {
        read(text, pairContextFromJson);
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

std::string assessmentRefusal(const std::string& text) {
    try {
        read(text, pairPhotoAssessmentFromJson, "photoAssessment");
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

} // namespace

TEST(PairContextJson, RoundTripsEveryField) {
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
    EXPECT_EQ(toJson(full).dump(),
              R"({"pairID":"turn-3","directionOverride":"Right","kneePlacements":)"
              R"({"insideKnee":"riderFurtherOut","outsideKnee":"obscured"},"viewComparability":)"
              R"({"leftElbow":"notComparable","rightElbow":"comparable"}})");
    // An absent map and an empty one differ: the reviewer has started choosing knee placements.
    EXPECT_FALSE(toJson(bare).contains("kneePlacements"));
    EXPECT_TRUE(toJson(emptyKnees)["kneePlacements"].empty());
}

TEST(PairContextJson, RefusesAnythingItDoesNotKnow) {
    EXPECT_EQ(refusal(R"({"pairID":"t","viewComparability":{},"kneePlacement":{}})"),
              "“joint-review-abc.json” is not a valid review document: "
              "pairContexts[0].kneePlacement is not a known key.");
    EXPECT_EQ(refusal(R"({"pairID":"t","directionOverride":"left","viewComparability":{}})"),
              "“joint-review-abc.json” is not a valid review document: "
              "pairContexts[0].directionOverride must be “Unknown”, “Left” or “Right”.");
    EXPECT_EQ(refusal(R"({"pairID":"t","kneePlacements":{"insideElbow":"similar"},)"
                      R"("viewComparability":{}})"),
              "“joint-review-abc.json” is not a valid review document: "
              "pairContexts[0].kneePlacements.insideElbow is not a knee: the keys must be "
              "“insideKnee” or “outsideKnee”.");
    EXPECT_EQ(refusal(R"({"pairID":"t","viewComparability":{"insideElbow":"comparable"}})"),
              "“joint-review-abc.json” is not a valid review document: "
              "pairContexts[0].viewComparability.insideElbow is not an observation: the keys "
              "must be “leftElbow” or “rightElbow”.");
    EXPECT_NE(refusal(R"({"pairID":"t","viewComparability":{"leftElbow":"Comparable"}})"), "");
    EXPECT_NE(refusal(R"({"pairID":"t"})"), "");
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
    EXPECT_NE(assessmentRefusal(R"({"coaching":[{"id":"b","headline":"h"}]})"), "");
    EXPECT_NE(assessmentRefusal(R"({"coaching":[{"id":"b","headline":"h","detail":"",)"
                                R"("feature":"elbow"}]})"),
              "");
    EXPECT_NE(assessmentRefusal(R"({"direction":"Left"})"), "");
}
