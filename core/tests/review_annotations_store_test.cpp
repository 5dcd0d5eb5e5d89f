#include "dravik/store.h"
#include "test_support.h"

#include "json/json_reader.h"
#include <functional>
#include <gtest/gtest.h>

// Lean lines, pair contexts and photo assessments as the review document and the manifest keep
// them.

namespace dravik {
namespace {

using json::Json;

template <class Action> std::string failureOf(Action action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.what();
    }
    return "(no failure)";
}

const CoachingBullet kneeBullet{"knee", "Knee stays tucked", "The inside knee is against the tank.",
                                PairFeature::insideKnee};
const CoachingBullet bodyBullet{"body", "Upper body upright", "The shoulders stay above the tank.",
                                std::nullopt};

// The sample session with a photo assessment of "corner-1".
SessionManifest assessedManifest() {
    SessionManifest manifest = test::sampleManifest();
    manifest.pairs[0].cornerDirection = CornerDirection::left;
    manifest.pairs[0].photoCoaching = {kneeBullet, bodyBullet};
    return manifest;
}

LeanAnnotation wheelLines(const ReviewFrame& frame) {
    LeanAnnotation annotation(frame, LeanLine{{500, 300}, {560, 700}, 3.0});
    annotation.reference = LeanLine{{100, 650}, {1100, 640}, 4.0};
    annotation.wheelReviewed = true;
    return annotation;
}

// Rider lean lines, a pair context and a lean pair context on "corner-1"; four stores.
ReviewDocument annotatedSample(const test::TempDir& dir) {
    const auto files = test::writeSession(dir.path(), assessedManifest());
    ReviewDocument document = ReviewStore::make(files.manifest, files.results);
    const std::int64_t before = document.revision();
    document.setLeanAnnotation("corner-1/rider", wheelLines(document.frames()[0]));
    EXPECT_EQ(document.revision(), before + 1);
    PairContext context{"corner-1",
                        CornerDirection::right,
                        std::nullopt,
                        {{"leftElbow", ViewComparability::comparable}}};
    context.kneePlacements = std::map<PairFeature, KneePlacement>{
        {PairFeature::insideKnee, KneePlacement::riderFurtherOut}};
    document.setPairContext("corner-1", context);
    EXPECT_EQ(document.revision(), before + 2);
    LeanPairContext lean;
    lean.pairID = "corner-1";
    lean.sameWheelCue = true;
    lean.approvalDigest = test::hashOf("approved");
    document.setLeanPairContext("corner-1", lean);
    document.setLeanAnnotation("corner-1/ref", wheelLines(document.frames()[1]));
    EXPECT_EQ(document.revision(), before + 4);
    return document;
}

TEST(ReviewAnnotationsStore, RoundTripKeepsEverythingAndTheSavedRevision) {
    test::TempDir dir;
    ReviewDocument document = annotatedSample(dir);
    document.setJoint(0, "nose", Point2{401, 151}, JointReviewState::corrected);
    ASSERT_EQ(document.revision(), 5);
    ASSERT_EQ(document.pairAssessments().size(), 1u);

    const std::string text = ReviewStore::encode(document);
    const ReviewDocument decoded = ReviewStore::decode(text, "review.json");
    EXPECT_EQ(decoded, document);
    EXPECT_EQ(decoded.revision(), 5);
    EXPECT_EQ(ReviewStore::encode(decoded), text);

    // Removing counts one revision each, like storing.
    ReviewDocument removed = decoded;
    removed.setLeanAnnotation("corner-1/ref", std::nullopt);
    removed.setPairContext("corner-1", std::nullopt);
    removed.setLeanPairContext("corner-1", std::nullopt);
    EXPECT_EQ(removed.revision(), 8);
    const ReviewDocument reread = ReviewStore::decode(ReviewStore::encode(removed), "review.json");
    EXPECT_EQ(reread, removed);
    EXPECT_EQ(reread.leanAnnotations().size(), 1u);
    EXPECT_TRUE(reread.pairContexts().empty());

    // A review saved before these keys existed still opens, with nothing annotated.
    Json old = Json::parse(text);
    for (const char* key :
         {"leanAnnotations", "pairContexts", "leanPairContexts", "pairAssessments"})
        old.erase(key);
    const ReviewDocument plain = ReviewStore::decode(old.dump(), "review.json");
    EXPECT_EQ(plain.revision(), 5);
    EXPECT_TRUE(plain.leanAnnotations().empty() && plain.pairAssessments().empty());
}

TEST(ReviewAnnotationsStore, RefusesAnnotationsThatDoNotBelong) {
    test::TempDir dir;
    const Json valid = Json::parse(ReviewStore::encode(annotatedSample(dir)));
    const std::pair<std::function<void(Json&)>, std::string> cases[] = {
        {[](Json& r) {
             r["leanAnnotations"]["corner-1/ghost"] = r["leanAnnotations"]["corner-1/ref"];
         },
         "leanAnnotations[\"corner-1/ghost\"] belongs to a frame the document does not have"},
        {[](Json& r) { r["leanAnnotations"]["corner-1/ref"]["frameID"] = "corner-1/rider"; },
         "leanAnnotations[\"corner-1/ref\"].frameID must be the frame id it is filed under"},
        {[](Json& r) { r["leanAnnotations"]["corner-1/ref"]["sourceHash"] = test::hashOf("x"); },
         "leanAnnotations[\"corner-1/ref\"] does not fit its frame: the lean lines were drawn on "
         "another version of photo “ref.jpg”"},
        {[](Json& r) { r["leanAnnotations"]["corner-1/ref"]["wheel"]["b"]["y"] = 900; },
         "leanAnnotations[\"corner-1/ref\"] does not fit its frame: "},
        {[](Json& r) { r["pairContexts"]["solo-2"] = r["pairContexts"]["corner-1"]; },
         "pairContexts.solo-2 belongs to a pair the document does not have"},
        {[](Json& r) { r["pairContexts"]["solo"] = r["pairContexts"]["corner-1"]; },
         "pairContexts.solo.pairID must be the pair id it is filed under"},
        {[](Json& r) { r["leanPairContexts"]["corner-1"]["sameWheelCue"] = "yes"; },
         "leanPairContexts.corner-1.sameWheelCue"},
        {[](Json& r) { r["pairAssessments"]["gone"] = r["pairAssessments"]["corner-1"]; },
         "pairAssessments.gone belongs to a pair the document does not have"},
        {[](Json& r) { r["pairAssessments"]["corner-1"]["coaching"][1]["id"] = "knee"; },
         "pairAssessments.corner-1.coaching[1].id repeats the id"},
    };
    for (const auto& [change, problem] : cases) {
        Json changed = valid;
        change(changed);
        const std::string message =
            failureOf([&] { ReviewStore::decode(changed.dump(), "review.json"); });
        EXPECT_EQ(message.rfind("“review.json” is not a valid review document: " + problem, 0), 0u)
            << problem << "\n  got: " << message;
    }
}

TEST(ReviewAnnotationsStore, ValidateRefusesForeignLinesAndAdoptTakesTheSessionsAssessments) {
    test::TempDir dir;
    const ReviewDocument saved = annotatedSample(dir);
    const std::string name = "“" + ReviewStore::reviewFileName(saved) + "”";

    // The manifest's coaching was edited after saving: still valid, and the session's wins.
    SessionManifest edited = assessedManifest();
    edited.pairs[0].photoCoaching = {bodyBullet};
    edited.pairs[1].cornerDirection = CornerDirection::unknown;
    const auto files = test::writeSession(dir.path(), edited);
    const ReviewDocument raw = ReviewStore::make(files.manifest, files.results);
    ASSERT_EQ(raw.pairAssessments().size(), 2u);
    EXPECT_EQ(raw.pairAssessments().at("corner-1"),
              (PairPhotoAssessment{CornerDirection::left, {bodyBullet}}));
    EXPECT_EQ(raw.pairAssessments().at("solo"),
              (PairPhotoAssessment{CornerDirection::unknown, {}}));
    const ReviewDocument adopted = ReviewStore::adopt(saved, raw);
    EXPECT_EQ(adopted.pairAssessments(), raw.pairAssessments());
    EXPECT_EQ(adopted.revision(), saved.revision());
    EXPECT_EQ(adopted.leanAnnotations(), saved.leanAnnotations());

    // Lines drawn on another version of the photo, and statements about a pair that is gone.
    ReviewDocument otherPhoto = saved;
    LeanAnnotation stale = *saved.leanAnnotation("corner-1/rider");
    stale.sourceHash = test::hashOf("earlier photo");
    otherPhoto.setLeanAnnotation("corner-1/rider", stale);
    EXPECT_EQ(failureOf([&] { ReviewStore::adopt(otherPhoto, raw); }),
              name + " holds lean lines that the session’s frame “corner-1/rider” cannot take: "
                     "the lean lines were drawn on another version of photo “rider.jpg”; its "
                     "content hash has changed.");
    ReviewDocument ghost = saved;
    LeanPairContext stray;
    stray.pairID = "turn-9";
    ghost.setLeanPairContext("turn-9", stray);
    EXPECT_EQ(failureOf([&] { ReviewStore::validate(ghost, raw); }),
              name + " holds statements about the pair “turn-9”, which the session does not have.");
}

TEST(ManifestPhotoAssessment, RoundTripsAndRefusesBadValues) {
    const SessionManifest manifest = assessedManifest();
    const std::string text = manifest.encode();
    EXPECT_EQ(SessionManifest::decode(text, "session.json"), manifest);
    const Json root = Json::parse(text);
    EXPECT_FALSE(root["pairs"][1].contains("photoCoaching")); // absent when empty
    EXPECT_EQ(root["pairs"][0]["cornerDirection"], "Left");

    const std::pair<std::function<void(Json&)>, std::string> cases[] = {
        {[](Json& r) { r["pairs"][0]["cornerDirection"] = "left"; },
         "pairs[0].cornerDirection must be \"Unknown\", \"Left\" or \"Right\"."},
        {[](Json& r) { r["pairs"][0]["photoCoaching"][1]["id"] = "knee"; },
         "pairs[0].photoCoaching[1].id repeats the id of an earlier bullet."},
        {[](Json& r) { r["pairs"][0]["photoCoaching"][0].erase("headline"); },
         "pairs[0].photoCoaching[0].headline"},
    };
    for (const auto& [change, problem] : cases) {
        Json changed = root;
        change(changed);
        const std::string message =
            failureOf([&] { SessionManifest::decode(changed.dump(), "session.json"); });
        EXPECT_EQ(message.rfind("“session.json” is not a valid session manifest: " + problem, 0),
                  0u)
            << problem << "\n  got: " << message;
    }
}

} // namespace
} // namespace dravik
