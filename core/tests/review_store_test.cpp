// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "test_support.h"

#include "json/json_reader.h"
#include <functional>
#include <gtest/gtest.h>
#include <tuple>

namespace dravik {
namespace {

namespace fs = std::filesystem;
using json::Json;
using test::failureOf;

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

// The assessed session written into `dir`, reviewed: four joint changes, lean lines on both
// photos of "corner-1" (the reference rider's without a reference line), and both its contexts.
ReviewDocument sample(const test::TempDir& dir) {
    const auto files = test::writeSession(dir.path(), assessedManifest());
    ReviewDocument document = ReviewStore::make(files.manifest, files.results);
    document.setJoint(0, "left_elbow", Point2{410.5, 222.25}, JointReviewState::corrected);
    document.setJoint(0, "right_knee", std::nullopt, JointReviewState::obscured);
    document.setJoint(1, "nose", Point2{1, 2}, JointReviewState::uncertain);
    document.addRetry(2, {test::poseResult("2D", {600, 300}), std::nullopt});
    for (std::size_t i : {0, 1}) {
        LeanAnnotation lines(document.frames()[i], LeanLine{{500, 300}, {560, 700}, 3.0});
        if (i == 0)
            lines.reference = LeanLine{{100, 650}, {1100, 640}, 4.0};
        lines.wheelReviewed = true;
        document.setLeanAnnotation(lines.frameID, lines);
    }
    PairContext context{"corner-1",
                        CornerDirection::right,
                        std::map<PairFeature, KneePlacement>{
                            {PairFeature::insideKnee, KneePlacement::riderFurtherOut}},
                        {{"leftElbow", ViewComparability::comparable}}};
    document.setPairContext("corner-1", context);
    LeanPairContext lean;
    lean.pairID = "corner-1";
    lean.sameWheelCue = lean.cameraRollComparable = true;
    lean.approvalDigest = test::hashOf("approved");
    document.setLeanPairContext("corner-1", lean);
    return document;
}

TEST(ReviewStoreMake, BuildsOneUnreviewedFramePerRiderAndRefusesForeignResults) {
    test::TempDir dir;
    const auto files = test::writeSession(dir.path());
    const ReviewDocument document = ReviewStore::make(files.manifest, files.results);

    EXPECT_EQ(document.identity(), test::hashOf(test::readText(files.results)));
    EXPECT_EQ(document.revision(), 0);
    ASSERT_EQ(document.frames().size(), 3u);
    const ReviewFrame& ref = document.frames()[1];
    EXPECT_EQ(
        std::tie(ref.id, ref.role, ref.name, ref.riderDisplayName, ref.file),
        std::tie("corner-1/ref", "reference", "Turn 3 entry", "Reference rider", "photos/ref.jpg"));
    EXPECT_EQ(ref.raw, test::sampleResults().riders[1].results);
    EXPECT_EQ(document.frames()[2].id, "solo/rider");
    EXPECT_TRUE(document.frames()[2].raw.empty()); // no entry in the results

    // Results that do not belong to the manifest are refused.
    auto makeWith = [&](const ResultsFile& results) {
        test::writeSession(dir.path(), test::sampleManifest(), results);
        return failureOf([&] { ReviewStore::make(files.manifest, files.results); });
    };
    ResultsFile stranger = test::sampleResults();
    stranger.riders[1].riderID = "ghost";
    EXPECT_EQ(makeWith(stranger), "“results.json” lists pair “corner-1”, rider “ghost”, which "
                                  "“session.json” does not have.");
    ResultsFile otherPhoto = test::sampleResults();
    otherPhoto.riders[0].sourceHash = test::hashOf("another photo");
    EXPECT_EQ(makeWith(otherPhoto), "“results.json” was made from another photo of pair "
                                    "“corner-1”, rider “rider” than the one “session.json” names.");
}

TEST(ReviewStoreCodec, RoundTripsEverythingAndTheRevision) {
    test::TempDir dir;
    const ReviewDocument document = sample(dir);
    ASSERT_EQ(document.revision(), 8) << "each change raises the revision";
    ASSERT_EQ(document.pairAssessments().size(), 1u);
    const std::string text = ReviewStore::encode(document);
    test::writeText(dir / "review.json", text);
    EXPECT_EQ(ReviewStore::load(dir / "review.json"), document);
    // Saves assemble the text from each frame's own; after an edit it must still be one plain
    // pretty dump that reads back as the edited document.
    ReviewDocument edited = document;
    edited.setJoint(1, "left_knee", Point2{7, 8}, JointReviewState::corrected);
    ReviewDocument restored = edited;
    restored.restore(1, "left_knee", std::nullopt);
    for (const ReviewDocument& d : {document, edited, restored, edited}) {
        const std::string encoded = ReviewStore::encode(d);
        EXPECT_EQ(Json::parse(encoded).dump(2) + "\n", encoded);
        EXPECT_EQ(ReviewStore::decode(encoded, "review.json"), d);
    }

    // Removing counts one revision each, like storing.
    ReviewDocument removed = document;
    removed.setLeanAnnotation("corner-1/ref", std::nullopt);
    removed.setPairContext("corner-1", std::nullopt);
    removed.setLeanPairContext("corner-1", std::nullopt);
    EXPECT_EQ(removed.revision(), 11);
    EXPECT_EQ(ReviewStore::decode(ReviewStore::encode(removed), "review.json"), removed);

    // A review saved before the annotations existed still opens, with nothing annotated.
    Json old = Json::parse(text);
    for (const char* key :
         {"leanAnnotations", "pairContexts", "leanPairContexts", "pairAssessments"})
        old.erase(key);
    const ReviewDocument plain = ReviewStore::decode(old.dump(), "review.json");
    EXPECT_EQ(plain.revision(), 8);
    EXPECT_TRUE(plain.leanAnnotations().empty() && plain.pairAssessments().empty());

    ReviewFrame frame = document.frames()[1];
    frame.edits["nose"].point.reset(); // written in place, bypassing setJoint
    const ReviewDocument invalid(document.identity(), {document.frames()[0], frame});
    EXPECT_EQ(failureOf([&] { ReviewStore::encode(invalid); }),
              "The review document cannot be written: frames[1].edits.nose.point is required "
              "unless the joint is obscured.");
}

TEST(ReviewStoreCodec, RefusesInvalidReviews) {
    test::TempDir dir;
    const Json valid = Json::parse(ReviewStore::encode(sample(dir)));
    test::expectRefusals(
        valid, [](const std::string& text) { ReviewStore::decode(text, "review.json"); },
        "“review.json” is not a valid review document: ",
        {
            {[](Json& r) { r["frames"][1]["id"] = "corner-1/rider"; },
             "frames[1].id must be the pair id and the rider id joined by \"/\""},
            {[](Json& r) { r["frames"][1] = r["frames"][0]; }, "frames[1].id repeats the id"},
            {[](Json& r) { r["frames"][1]["role"] = "subject"; },
             "frames[1].role repeats the role of another frame of the same pair"},
            {[](Json& r) {
                 r["frames"][0]["edits"]["right_knee"]["point"] = {{"x", 1}, {"y", 1}};
             },
             "frames[0].edits.right_knee.point must be absent for an obscured joint"},
            {[](Json& r) {
                 r["leanAnnotations"]["corner-1/ghost"] = r["leanAnnotations"]["corner-1/ref"];
             },
             "leanAnnotations[\"corner-1/ghost\"] belongs to a frame the document does not have"},
            {[](Json& r) { r["leanAnnotations"]["corner-1/ref"]["frameID"] = "corner-1/rider"; },
             "leanAnnotations[\"corner-1/ref\"].frameID must be the frame id it is filed under"},
            {[](Json& r) { r["leanAnnotations"]["corner-1/ref"]["wheel"]["b"]["y"] = 900; },
             "leanAnnotations[\"corner-1/ref\"] does not fit its frame: "},
            {[](Json& r) { r["pairContexts"]["solo-2"] = r["pairContexts"]["corner-1"]; },
             "pairContexts.solo-2 belongs to a pair the document does not have"},
            {[](Json& r) { r["revision"] = ReviewDocument::maxRevision; },
             "revision must be below 2^62, so that it can still be raised"},
            {[](Json& r) { r["frames"][0]["file"] = "photos/\trider.jpg"; },
             "frames[0].file must not contain a control character"},
        });
}

TEST(ReviewStoreValidate, AcceptsItsOwnSessionAndRefusesAnyOther) {
    test::TempDir dir;
    const ReviewDocument saved = sample(dir);
    const ReviewDocument raw = ReviewStore::make(dir / "session.json", dir / "results.json");
    EXPECT_NO_THROW(ReviewStore::validate(saved, raw));

    const std::string name = "“" + ReviewStore::reviewFileName(saved) + "”";
    auto refusal = [&](std::function<void(std::vector<ReviewFrame>&)> change) {
        std::vector<ReviewFrame> frames = raw.frames();
        change(frames);
        return failureOf(
            [&] { ReviewStore::validate(saved, ReviewDocument(raw.identity(), frames)); });
    };
    EXPECT_EQ(failureOf([&] {
                  ReviewStore::validate(saved, ReviewDocument(test::hashOf("x"), raw.frames()));
              }),
              name + " belongs to other detection results than this session’s.");
    EXPECT_EQ(refusal([](auto& f) { f.pop_back(); }),
              name + " holds 3 frames, but the session has 2.");
    EXPECT_EQ(refusal([](auto& f) { std::swap(f[0], f[1]); }),
              name + " has the frame “corner-1/rider” where the session has “corner-1/ref”.");
    const std::pair<std::function<void(ReviewFrame&)>, std::string> differences[] = {
        {[](ReviewFrame& f) { f.file = "other.jpg"; }, "its photo file"},
        {[](ReviewFrame& f) { f.sourceHash = test::hashOf("other"); }, "its photo’s content hash"},
        {[](ReviewFrame& f) { f.panel.width -= 1; }, "its panel"},
        {[](ReviewFrame& f) { f.imageSize.width += 1; }, "its photo size"},
        {[](ReviewFrame& f) { f.raw[0].joints[4].x += 0.5; }, "its detections"},
    };
    for (const auto& [change, what] : differences)
        EXPECT_EQ(refusal([&](auto& f) { change(f[0]); }),
                  name + " does not match the session’s frame “corner-1/rider”: " + what +
                      " differs.");
}

TEST(ReviewStoreValidate, RefusesForeignLinesAndAdoptTakesTheSessionsAssessments) {
    test::TempDir dir;
    const ReviewDocument saved = sample(dir);
    const std::string name = "“" + ReviewStore::reviewFileName(saved) + "”";

    // The manifest's coaching was edited after saving: still valid, and the session's wins.
    SessionManifest edited = assessedManifest();
    edited.pairs[0].photoCoaching = {bodyBullet};
    edited.pairs[1].cornerDirection = CornerDirection::unknown;
    const auto files = test::writeSession(dir.path(), edited);
    const ReviewDocument raw = ReviewStore::make(files.manifest, files.results);
    EXPECT_EQ(raw.pairAssessments(), (std::map<std::string, PairPhotoAssessment>{
                                         {"corner-1", {CornerDirection::left, {bodyBullet}}},
                                         {"solo", {CornerDirection::unknown, {}}}}));
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

TEST(ReviewStoreAssetURL, StaysInsideTheManifestFolder) {
    test::TempDir dir;
    const fs::path session = dir / "session";
    fs::create_directories(session / "photos");
    fs::create_directories(dir / "outside");
    test::writeText(session / "photos/rider.jpg", "jpeg");
    test::writeText(dir / "outside/secret.jpg", "jpeg");
    const fs::path manifest = session / "session.json";
    const fs::path real = fs::canonical(session);

    EXPECT_EQ(ReviewStore::assetURL("photos/rider.jpg", manifest), real / "photos/rider.jpg");
    EXPECT_EQ(ReviewStore::assetURL("./photos/../photos/rider.jpg", manifest),
              real / "photos/rider.jpg");
    // A missing photo is the image loader's to report.
    EXPECT_EQ(ReviewStore::assetURL("photos/later.jpg", manifest), real / "photos/later.jpg");

    fs::create_symlink("rider.jpg", session / "photos/alias.jpg");
    EXPECT_EQ(ReviewStore::assetURL("photos/alias.jpg", manifest), real / "photos/rider.jpg");
    fs::create_symlink(dir / "outside", session / "escape");
    fs::create_symlink("../../outside/new.jpg", session / "photos/dangling.jpg");
    fs::create_symlink("loop", session / "loop");
    // Through a linked folder, ".." climbs from the link's target, not from the link.
    fs::create_directories(session / "a/b");
    fs::create_symlink("a/b", session / "deep");
    test::writeText(session / "a/inner.jpg", "jpeg");
    EXPECT_EQ(ReviewStore::assetURL("deep/../inner.jpg", manifest), real / "a/inner.jpg");

    const std::string outside = " leads outside the manifest’s folder.";
    const std::pair<std::string, std::string> refusals[] = {
        {"", "“session.json” names a photo with an empty path."},
        {"/etc/passwd",
         "The photo path “/etc/passwd” in “session.json” must be relative to the manifest’s "
         "folder."},
        {"photos/../../outside/secret.jpg",
         "The photo path “photos/../../outside/secret.jpg” in “session.json”" + outside},
        {".", "The photo path “.” in “session.json”" + outside},
        {"escape/secret.jpg", "The photo path “escape/secret.jpg” in “session.json”" + outside},
        {"photos/dangling.jpg", "The photo path “photos/dangling.jpg” in “session.json”" + outside},
        {"loop/x.jpg", "The photo path “loop/x.jpg” in “session.json” could not be resolved "
                       "because its links loop or cannot be read."},
        // The system would read the path only up to the NUL.
        {std::string("photos/rider.jpg\0.png", 21),
         "The photo path “photos/rider.jpg\\u0000.png” in “session.json” must not contain a NUL "
         "character."},
        {"photos//rider.jpg",
         "The photo path “photos//rider.jpg” in “session.json” must not have an empty path "
         "component."},
    };
    for (const auto& [file, message] : refusals)
        EXPECT_EQ(failureOf([&] { ReviewStore::assetURL(file, manifest); }), message) << file;
}

} // namespace
} // namespace dravik
