#include "dravik/store.h"
#include "test_support.h"

#include "json/json_reader.h"
#include <functional>
#include <gtest/gtest.h>

namespace dravik {
namespace {

namespace fs = std::filesystem;
using json::Json;

template <class Action> std::string failureOf(Action action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.what();
    }
    return "(no failure)";
}

TEST(ReviewStoreMake, BuildsOneUnreviewedFramePerRiderInManifestOrder) {
    test::TempDir dir;
    const auto files = test::writeSession(dir.path());
    const ReviewDocument document = ReviewStore::make(files.manifest, files.results);

    EXPECT_EQ(document.identity(), test::hashOf(test::readText(files.results)));
    EXPECT_EQ(document.revision(), 0);
    ASSERT_EQ(document.frames().size(), 3u);
    const ReviewFrame& ref = document.frames()[1];
    EXPECT_EQ(ref.id, "corner-1/ref");
    EXPECT_EQ(ref.role, "reference");
    EXPECT_EQ(ref.name, "Turn 3 entry");
    EXPECT_EQ(ref.riderDisplayName, "Reference rider");
    EXPECT_EQ(ref.file, "photos/ref.jpg");
    EXPECT_EQ(ref.raw, test::sampleResults().riders[1].results);
    EXPECT_EQ(document.frames()[2].id, "solo/rider");
    EXPECT_TRUE(document.frames()[2].raw.empty()); // no entry in the results
    for (const ReviewFrame& frame : document.frames())
        EXPECT_TRUE(frame.edits.empty() && frame.retries.empty());
    EXPECT_EQ(ReviewStore::reviewFileName(document),
              "joint-review-" + document.identity().substr(7, 12) + ".json");
}

TEST(ReviewStoreMake, RefusesResultsThatDoNotBelongToTheManifest) {
    test::TempDir dir;
    auto makeWith = [&](const ResultsFile& results) {
        const auto files = test::writeSession(dir.path(), test::sampleManifest(), results);
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

    // Pairs that cannot be compared are refused with the manifest.
    Json manifest = Json::parse(test::sampleManifest().encode());
    manifest["pairs"][0]["riders"].push_back(manifest["pairs"][0]["riders"][1]);
    manifest["pairs"][0]["riders"][2]["id"] = "ref-2";
    test::writeText(dir / "session.json", manifest.dump());
    EXPECT_NE(failureOf([&] {
                  ReviewStore::make(dir / "session.json", dir / "results.json");
              }).find("pairs[0].riders[2].role repeats the role"),
              std::string::npos);
    EXPECT_NE(failureOf([&] {
                  ReviewStore::make(dir / "none.json", dir / "results.json");
              }).find("“none.json” could not be read"),
              std::string::npos);
}

ReviewDocument reviewedSample(const test::TempDir& dir) {
    const auto files = test::writeSession(dir.path());
    ReviewDocument document = ReviewStore::make(files.manifest, files.results);
    document.setJoint(0, "left_elbow", Point2{410.5, 222.25}, JointReviewState::corrected);
    document.setJoint(0, "right_knee", std::nullopt, JointReviewState::obscured);
    document.setJoint(1, "nose", Point2{1, 2}, JointReviewState::uncertain);
    document.addRetry(2, {test::poseResult("2D", {600, 300}), std::nullopt});
    return document;
}

TEST(ReviewStoreCodec, RoundTripsEditsRetriesAndRevision) {
    test::TempDir dir;
    const ReviewDocument document = reviewedSample(dir);
    const std::string text = ReviewStore::encode(document);
    test::writeText(dir / "review.json", text);
    EXPECT_EQ(ReviewStore::load(dir / "review.json"), document);
    EXPECT_EQ(ReviewStore::encode(ReviewStore::decode(text, "review.json")), text);
    // Saves assemble the text from each frame's own; it must still be one plain pretty dump.
    EXPECT_EQ(Json::parse(text).dump(2) + "\n", text);
    ReviewDocument edited = document;
    edited.setJoint(1, "left_knee", Point2{7, 8}, JointReviewState::corrected);
    const std::string editedText = ReviewStore::encode(edited);
    EXPECT_EQ(Json::parse(editedText).dump(2) + "\n", editedText);
    EXPECT_EQ(ReviewStore::decode(editedText, "review.json"), edited);

    ReviewDocument broken = document;
    broken.setJoint(1, "nose", Point2{1, 2}, JointReviewState::corrected);
    ReviewFrame frame = broken.frames()[1];
    frame.edits["nose"].point.reset(); // written in place, bypassing setJoint
    ReviewDocument invalid(broken.identity(), {broken.frames()[0], frame}, broken.revision());
    EXPECT_EQ(failureOf([&] { ReviewStore::encode(invalid); }),
              "The review document cannot be written: frames[1].edits.nose.point is required "
              "unless the joint is obscured.");
}

TEST(ReviewStoreCodec, RefusesInvalidReviews) {
    test::TempDir dir;
    const Json valid = Json::parse(ReviewStore::encode(reviewedSample(dir)));
    struct Case {
        std::function<void(Json&)> change;
        std::string problem;
    };
    const Case cases[] = {
        {[](Json& r) { r["revision"] = -1; }, "revision must not be negative"},
        {[](Json& r) { r["revision"] = 1.5; }, "revision must be a whole number"},
        {[](Json& r) { r["identity"] = "sha256:12"; }, "identity must be \"sha256:\""},
        {[](Json& r) { r["frames"][1]["id"] = "corner-1/rider"; },
         "frames[1].id must be the pair id and the rider id joined by \"/\""},
        {[](Json& r) { r["frames"][1] = r["frames"][0]; }, "frames[1].id repeats the id"},
        {[](Json& r) { r["frames"][1]["role"] = "subject"; },
         "frames[1].role repeats the role of another frame of the same pair"},
        {[](Json& r) {
             r["frames"][0]["edits"]["tail"] = {{"state", "obscured"}};
         },
         "frames[0].edits.tail is not a known joint name"},
        {[](Json& r) {
             r["frames"][0]["edits"]["right_knee"]["point"] = {{"x", 1}, {"y", 1}};
         },
         "frames[0].edits.right_knee.point must be absent for an obscured joint"},
        {[](Json& r) { r["frames"][0]["edits"]["left_elbow"]["state"] = "Corrected"; },
         "frames[0].edits.left_elbow.state must be one of"},
        {[](Json& r) { r["frames"][2]["retries"][0]["primary"]["count"] = "1"; },
         "frames[2].retries[0].primary.count must be a whole number"},
        {[](Json& r) { r["frames"][0]["panel"]["height"] = 801; },
         "frames[0].panel must lie inside the 1200 × 800 photo"},
        {[](Json& r) { r["frames"][0].erase("raw"); }, "frames[0].raw is missing"},
        {[](Json& r) { r["version"] = 2; }, "(version)"},
    };
    for (const Case& c : cases) {
        Json changed = valid;
        c.change(changed);
        std::string message =
            failureOf([&] { ReviewStore::decode(changed.dump(), "review.json"); });
        if (c.problem == "(version)")
            EXPECT_EQ(message, "“review.json” uses version 2 of the review document format, but "
                               "only version 1 can be read.");
        else
            EXPECT_EQ(
                message.rfind("“review.json” is not a valid review document: " + c.problem, 0), 0u)
                << c.problem << "\n  got: " << message;
    }
}

TEST(ReviewStoreValidate, AcceptsItsOwnSessionAndRefusesAnyOther) {
    test::TempDir dir;
    const ReviewDocument saved = reviewedSample(dir);
    const auto files = test::writeSession(dir.path());
    const ReviewDocument raw = ReviewStore::make(files.manifest, files.results);
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
        {"../outside/secret.jpg",
         "The photo path “../outside/secret.jpg” in “session.json”" + outside},
        {"photos/../../outside/secret.jpg",
         "The photo path “photos/../../outside/secret.jpg” in “session.json”" + outside},
        {".", "The photo path “.” in “session.json”" + outside},
        {"escape/secret.jpg", "The photo path “escape/secret.jpg” in “session.json”" + outside},
        {"photos/dangling.jpg", "The photo path “photos/dangling.jpg” in “session.json”" + outside},
        {"loop/x.jpg", "The photo path “loop/x.jpg” in “session.json” could not be resolved "
                       "because its links loop or cannot be read."},
    };
    for (const auto& [file, message] : refusals)
        EXPECT_EQ(failureOf([&] { ReviewStore::assetURL(file, manifest); }), message) << file;
}

} // namespace
} // namespace dravik
