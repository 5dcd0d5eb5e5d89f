// SPDX-License-Identifier: Apache-2.0
#include "dravik/coaching.h"
#include "dravik/error.h"
#include "dravik/framing.h"
#include "test_support.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

// The files beside a session that coach and frame its photos.

using namespace dravik;
using Json = nlohmann::ordered_json;
using test::failureOf;

namespace {

const PixelRect soloPanel{10.25, 20.5, 300.75, 200.125};

// A rider compared with a reference rider in pair "turn3", and a rider's photo on its own in
// pair "solo".
std::vector<ReviewFrame> session() {
    return {test::frame("turn3", "rider", "subject", 'a', {0, 0, 640, 480}),
            test::frame("turn3", "ref", "reference", 'b', {0, 0, 640, 480}),
            test::frame("solo", "rider", "subject", 'c', soloPanel)};
}

SinglePhotoCoaching soloNotes() {
    return {"solo/rider",
            test::digitHash('c'),
            {"Head turned toward the exit.", "Inside knee close to the tank."},
            {"One photo from the outside of the corner.", "Feet hidden by the fairing."}};
}

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

const std::string framingMismatch = "Photo framing does not match its source or panel.";

PhotoFramingRegion soloRegion(PixelRect bounds) {
    return {"solo/rider", test::digitHash('c'), soloPanel, bounds};
}

// What reading `regions` (or a file's text) as the framing file says: "" when it is accepted.
std::string framingRefusal(const std::string& text) {
    return failureOf([&] { PhotoFramingRegion::decode(text, "photo-framing.json", session()); });
}
std::string framingRefusal(const std::vector<PhotoFramingRegion>& regions) {
    return framingRefusal(PhotoFramingRegion::encode(regions));
}

} // namespace

TEST(SinglePhotoCoachingFile, RoundTripsKeyedByFrameAndRefusesNotesThatDoNotMatchTheSession) {
    test::TempDir folder;
    test::writeText(folder / "notes.json", SinglePhotoCoaching::encode({soloNotes()}));
    EXPECT_EQ(SinglePhotoCoaching::load(folder / "notes.json", session()),
              (std::map<std::string, SinglePhotoCoaching>{{"solo/rider", soloNotes()}}));

    const std::string mismatch = "“single-photo-coaching.json” does not match this session: ";
    const std::string invalid = "“single-photo-coaching.json” is not a valid photo coaching file: ";
    test::expectRefusals(
        Json::parse(SinglePhotoCoaching::encode({soloNotes()})),
        [](const std::string& text) {
            SinglePhotoCoaching::decode(text, "single-photo-coaching.json", session());
        },
        "",
        {
            {[](Json& f) { f["photos"][0]["frameID"] = "solo/other"; },
             mismatch + "photos[0].frameID names no photo of this session."},
            {[](Json& f) {
                 f["photos"][0]["frameID"] = "turn3/ref";
                 f["photos"][0]["sourceHash"] = test::digitHash('b');
             },
             mismatch + "photos[0].frameID names a reference rider’s photo."},
            {[](Json& f) {
                 f["photos"][0]["frameID"] = "turn3/rider";
                 f["photos"][0]["sourceHash"] = test::digitHash('a');
             },
             mismatch + "photos[0].frameID names a photo compared with a reference rider."},
            {[](Json& f) { f["photos"][0]["sourceHash"] = test::digitHash('e'); },
             mismatch + "photos[0].sourceHash is not the hash of the photo this session analysed."},
            {[](Json& f) { f["photos"].push_back(f["photos"][0]); },
             invalid + "photos[1].frameID repeats a photo that has a record before it."},
            {[](Json& f) { f["photos"][0]["observations"] = Json::array(); },
             invalid + "photos[0].observations must hold at least one observation."},
            {[](Json& f) { f["photos"][0]["observations"][1] = ""; },
             invalid + "photos[0].observations[1] must not be empty."},
        },
        true);
}

TEST(CoachingChecklistRows, OneRowPerTopicInCatalogueOrder) {
    const auto& topics = CoachingChecklist::catalog();
    const CoachingChecklistReview review = pairReview();
    const auto rows = CoachingChecklist::rows(review);
    ASSERT_EQ(rows.size(), topics.size());
    for (std::size_t i = 0; i < topics.size(); ++i) {
        const auto status = review.statuses.find(topics[i].id);
        EXPECT_EQ(rows[i], (CoachingChecklistItem{topics[i].id, topics[i],
                                                  status == review.statuses.end()
                                                      ? CoachingReviewStatus::notAssessed
                                                      : status->second}));
    }
    for (const auto& row : CoachingChecklist::rows(std::nullopt))
        EXPECT_EQ(row.status, CoachingReviewStatus::notAssessed);
}

TEST(CoachingChecklistFile, RoundTripsKeyedBySubjectAndRefusesFilesThatDoNotMatch) {
    test::TempDir folder;
    const auto frames = session();
    const std::string text = CoachingChecklist::encode({pairReview(), soloReview()}, frames);
    test::writeText(folder / "coaching-checklist.json", text);
    EXPECT_EQ(CoachingChecklist::load(folder / "coaching-checklist.json", frames),
              (std::map<std::string, CoachingChecklistReview>{{"turn3", pairReview()},
                                                              {"solo/rider", soloReview()}}));

    // What it could not read back is never written; an empty file means nothing assessed yet.
    CoachingChecklistReview stranger = pairReview();
    stranger.subjectID = "turn3/ref";
    EXPECT_THROW(CoachingChecklist::encode({stranger}, frames), DravikError);
    EXPECT_THROW(CoachingChecklist::encode({pairReview(), pairReview()}, frames), DravikError);
    EXPECT_TRUE(
        CoachingChecklist::decode(CoachingChecklist::encode({}, frames), "c.json", frames).empty());

    const std::string mismatch = "“coaching-checklist.json” does not match this session: ";
    const std::string invalid = "“coaching-checklist.json” is not a valid coaching checklist: ";
    test::expectRefusals(
        Json::parse(CoachingChecklist::encode({pairReview(), soloReview()}, session())),
        [](const std::string& json) {
            CoachingChecklist::decode(json, "coaching-checklist.json", session());
        },
        "",
        {
            {[](Json& f) { f["catalogVersion"] = "whole-body-0"; },
             "“coaching-checklist.json” was saved for another version of the checklist catalogue "
             "than “whole-body-1”."},
            {[](Json& f) { f["subjects"][0]["subjectID"] = "turn9"; },
             mismatch + "subjects[0].subjectID names no pair or lone photo of this session."},
            {[](Json& f) {
                 f["subjects"][1]["subjectID"] = "turn3/rider";
                 f["subjects"][1]["frames"][0] = {{"frameID", "turn3/rider"},
                                                  {"sourceHash", test::digitHash('a')}};
             },
             mismatch + "subjects[1].subjectID names no pair or lone photo of this session."},
            {[](Json& f) { f["subjects"][0]["frames"].erase(1); },
             mismatch + "subjects[0].frames must list both photos of its pair."},
            {[](Json& f) { f["subjects"][1]["frames"][0]["frameID"] = "turn3/rider"; },
             mismatch + "subjects[1].frames[0].frameID is not a photo of its subject."},
            {[](Json& f) { f["subjects"][0]["frames"][1]["sourceHash"] = test::digitHash('d'); },
             mismatch +
                 "subjects[0].frames[1].sourceHash is not the hash of the photo this session "
                 "analysed."},
            {[](Json& f) { f["subjects"][0]["statuses"]["grip"] = "looksConsistent"; },
             invalid +
                 "subjects[0].statuses.grip is not a topic of checklist catalogue “whole-body-1”."},
            {[](Json& f) { f["subjects"].push_back(f["subjects"][0]); },
             invalid + "subjects[2].subjectID repeats a subject listed before."},
            {[](Json& f) { f["subjects"][1]["frames"] = Json::array(); },
             invalid + "subjects[1].frames must list the subject’s photos."},
        },
        true);
}

// A record must repeat its frame's photo and panel exactly, repeat an earlier record of the same
// frame, and keep its bounds inside the panel by any amount.
TEST(PhotoFraming, LoadsBoundsByFrameAndRefusesRecordsThatDoNotFitTheirFrame) {
    test::TempDir folder;
    PhotoFramingRegion rider{
        "turn3/rider", test::digitHash('a'), {0, 0, 640, 480}, {100, 50, 200, 300}};
    test::writeText(folder / "photo-framing.json",
                    PhotoFramingRegion::encode({rider, soloRegion(soloPanel)}));
    // The whole panel lies inside itself.
    EXPECT_EQ(PhotoFramingRegion::load(folder / "photo-framing.json", session()),
              (std::map<std::string, PixelRect>{{"turn3/rider", rider.bounds},
                                                {"solo/rider", soloPanel}}));
    EXPECT_EQ(framingRefusal(std::string("[]")), "");

    const PixelRect& p = soloPanel;
    const double inf = std::numeric_limits<double>::infinity();
    PhotoFramingRegion first = soloRegion({50, 60, 100, 100}), otherPanel = first,
                       otherPhoto = first, unknown = first, moved = first;
    otherPanel.panel.height += 1e-9;
    otherPhoto.sourceHash = test::digitHash('d');
    unknown.frameID = "solo/ref";
    moved.bounds.x += 1e-9;
    // Bounds sticking out of the panel by the smallest step a double can take, or empty.
    const std::vector<std::vector<PhotoFramingRegion>> refused = {
        {otherPanel},
        {otherPhoto},
        {unknown},
        {soloRegion({std::nextafter(p.x, -inf), p.y, 10, 10})},
        {soloRegion({p.x, p.y, 10, std::nextafter(p.height, inf)})},
        {soloRegion({p.x, p.y, 0, 10})},
        {first, moved}, // a second record for a frame must repeat the first
        {first, otherPanel},
    };
    for (const auto& regions : refused)
        EXPECT_EQ(framingRefusal(regions), framingMismatch);
    EXPECT_EQ(framingRefusal({first, first}), "");
    EXPECT_EQ(framingRefusal(
                  {soloRegion({p.x + 10, p.y + 10, p.maxX() - (p.x + 10), p.maxY() - (p.y + 10)})}),
              "");
}

TEST(PhotoFraming, MalformedFilesFailAsTheyAreRead) {
    const std::string prefix = "“photo-framing.json” is not a valid photo framing file: ";
    const Json record =
        Json::parse(PhotoFramingRegion::encode({soloRegion({50, 60, 100, 100})}))[0];
    Json extraInRect = record, missing = record, unfit = record;
    extraInRect["bounds"]["unit"] = "px";
    missing.erase("sourceHash");
    unfit["frameID"] = "nobody";
    EXPECT_EQ(framingRefusal(Json::array({extraInRect}).dump()),
              prefix + "[0].bounds.unit is not a key this file may hold.");
    EXPECT_EQ(framingRefusal(Json::object({{"regions", Json::array({record})}}).dump()),
              prefix + "the document must be an array.");
    // A malformed record is reported as such even after one that does not fit.
    EXPECT_EQ(framingRefusal(Json::array({unfit, missing}).dump()),
              prefix + "[1].sourceHash is missing.");
}
