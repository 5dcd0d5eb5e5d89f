#include "coaching_fixtures.h"
#include "dravik/coaching.h"
#include "dravik/error.h"
#include "photo_fixtures.h"

#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

using namespace dravik;
using coaching_fixtures::hash;
using Json = nlohmann::ordered_json;

namespace {

const std::string fileName = "coaching-checklist.json";

CoachingChecklistReview pairReview() {
    return {"turn3",
            std::string(CoachingChecklist::catalogVersion()),
            CornerDirection::left,
            {{"inside-knee", CoachingReviewStatus::practiceCueApplies},
             {"head-eyes", CoachingReviewStatus::looksConsistent}}};
}

CoachingChecklistReview soloReview() {
    return {"solo/rider",
            std::string(CoachingChecklist::catalogVersion()),
            CornerDirection::unknown,
            {{"hands-wrists", CoachingReviewStatus::cannotAssess}}};
}

Json validFile() {
    return Json::parse(
        CoachingChecklist::encode({pairReview(), soloReview()}, coaching_fixtures::session()));
}

std::string refusal(const Json& file) {
    try {
        CoachingChecklist::decode(file.dump(), fileName, coaching_fixtures::session());
    } catch (const DravikError& error) {
        return error.message();
    }
    return "(accepted)";
}

} // namespace

TEST(CoachingCatalog, TopicsAreDistinctAndReadable) {
    const auto& topics = CoachingChecklist::catalog();
    EXPECT_GE(topics.size(), 10u);
    EXPECT_LE(topics.size(), 14u);
    std::set<std::string> ids;
    for (const CoachingTopic& topic : topics) {
        EXPECT_TRUE(ids.insert(topic.id).second) << topic.id;
        EXPECT_FALSE(topic.title.empty()) << topic.id;
    }
    for (CoachingReviewStatus status : allCoachingReviewStatuses)
        EXPECT_EQ(coachingReviewStatus(rawValue(status)), status);
    EXPECT_EQ(dravik::label(CoachingReviewStatus::cannotAssess), "Cannot assess from this photo");
}

TEST(CoachingChecklistRows, OneRowPerTopicInCatalogueOrder) {
    auto unassessed = CoachingChecklist::rows(std::nullopt);
    const auto& topics = CoachingChecklist::catalog();
    ASSERT_EQ(unassessed.size(), topics.size());
    for (std::size_t i = 0; i < topics.size(); ++i) {
        EXPECT_EQ(unassessed[i].topic, topics[i]);
        EXPECT_EQ(unassessed[i].id, topics[i].id);
        EXPECT_EQ(unassessed[i].status, CoachingReviewStatus::notAssessed);
    }

    auto rows = CoachingChecklist::rows(pairReview());
    ASSERT_EQ(rows.size(), topics.size());
    for (const CoachingChecklistItem& row : rows) {
        auto expected = row.id == "inside-knee" ? CoachingReviewStatus::practiceCueApplies
                        : row.id == "head-eyes" ? CoachingReviewStatus::looksConsistent
                                                : CoachingReviewStatus::notAssessed;
        EXPECT_EQ(row.status, expected) << row.id;
    }
}

TEST(CoachingChecklistFile, RoundTripsKeyedBySubject) {
    photo_fixtures::TemporaryFolder folder;
    auto frames = coaching_fixtures::session();
    std::string text = CoachingChecklist::encode({pairReview(), soloReview()}, frames);
    photo_fixtures::writeFile(folder / fileName,
                              std::vector<std::uint8_t>(text.begin(), text.end()));

    auto reviews = CoachingChecklist::load(folder / fileName, frames);
    ASSERT_EQ(reviews.size(), 2u);
    EXPECT_EQ(reviews.at("turn3"), pairReview());
    EXPECT_EQ(reviews.at("solo/rider"), soloReview());

    // The pair's subject names both photos, rider first.
    Json file = Json::parse(text);
    EXPECT_EQ(file["subjects"][0]["frames"][0]["frameID"], "turn3/rider");
    EXPECT_EQ(file["subjects"][0]["frames"][1]["sourceHash"], hash('b'));
}

TEST(CoachingChecklistFile, RefusesFilesThatDoNotMatchTheSessionOrCatalogue) {
    const std::string mismatch = "“coaching-checklist.json” does not match this session: ";
    const std::string invalid = "“coaching-checklist.json” is not a valid coaching checklist: ";
    struct Case {
        std::string name;
        std::function<void(Json&)> change;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"other catalogue", [](Json& f) { f["catalogVersion"] = "whole-body-0"; },
         "“coaching-checklist.json” was saved for another version of the checklist catalogue "
         "than “whole-body-1”."},
        {"unknown subject", [](Json& f) { f["subjects"][0]["subjectID"] = "turn9"; },
         mismatch + "subjects[0].subjectID names no pair or lone photo of this session."},
        {"paired photo as subject",
         [](Json& f) {
             f["subjects"][1]["subjectID"] = "turn3/rider";
             f["subjects"][1]["frames"][0] = {{"frameID", "turn3/rider"},
                                              {"sourceHash", hash('a')}};
         },
         mismatch + "subjects[1].subjectID names no pair or lone photo of this session."},
        {"pair missing its reference", [](Json& f) { f["subjects"][0]["frames"].erase(1); },
         mismatch + "subjects[0].frames must list both photos of its pair."},
        {"photo of another subject",
         [](Json& f) { f["subjects"][1]["frames"][0]["frameID"] = "turn3/rider"; },
         mismatch + "subjects[1].frames[0].frameID is not a photo of its subject."},
        {"photo replaced", [](Json& f) { f["subjects"][0]["frames"][1]["sourceHash"] = hash('d'); },
         mismatch + "subjects[0].frames[1].sourceHash is not the hash of the photo this session "
                    "analysed."},
        {"unknown topic", [](Json& f) { f["subjects"][0]["statuses"]["grip"] = "looksConsistent"; },
         invalid +
             "subjects[0].statuses.grip is not a topic of checklist catalogue “whole-body-1”."},
        {"unknown status", [](Json& f) { f["subjects"][0]["statuses"]["back"] = "fine"; },
         invalid + "subjects[0].statuses.back must be \"notAssessed\", \"looksConsistent\", "
                   "\"practiceCueApplies\" or \"cannotAssess\"."},
        {"subject twice", [](Json& f) { f["subjects"].push_back(f["subjects"][0]); },
         invalid + "subjects[2].subjectID repeats a subject listed before."},
        {"unknown direction", [](Json& f) { f["subjects"][0]["cornerDirection"] = "left"; },
         invalid + "subjects[0].cornerDirection must be \"Unknown\", \"Left\" or \"Right\"."},
        {"no photos", [](Json& f) { f["subjects"][1]["frames"] = Json::array(); },
         invalid + "subjects[1].frames must list the subject’s photos."},
    };
    EXPECT_EQ(refusal(validFile()), "(accepted)");
    for (const Case& c : cases) {
        Json file = validFile();
        c.change(file);
        EXPECT_EQ(refusal(file), c.message) << c.name;
    }
}

TEST(CoachingChecklistFile, WritesOnlyWhatItCouldReadBack) {
    auto frames = coaching_fixtures::session();
    CoachingChecklistReview stranger = pairReview();
    stranger.subjectID = "turn3/ref";
    EXPECT_THROW(CoachingChecklist::encode({stranger}, frames), DravikError);
    CoachingChecklistReview old = pairReview();
    old.catalogVersion = "whole-body-0";
    EXPECT_THROW(CoachingChecklist::encode({old}, frames), DravikError);
    EXPECT_THROW(CoachingChecklist::encode({pairReview(), pairReview()}, frames), DravikError);
    // An empty file is a valid one: nothing assessed yet.
    EXPECT_TRUE(
        CoachingChecklist::decode(CoachingChecklist::encode({}, frames), fileName, frames).empty());
}

TEST(CoachingChecklistFile, AMissingFileIsNamed) {
    photo_fixtures::TemporaryFolder folder;
    try {
        CoachingChecklist::load(folder / fileName, coaching_fixtures::session());
        FAIL() << "a missing file was read";
    } catch (const DravikError& error) {
        EXPECT_EQ(error.message().rfind("“coaching-checklist.json”", 0), 0u) << error.message();
    }
}
