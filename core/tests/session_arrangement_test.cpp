// SPDX-License-Identifier: Apache-2.0
#include "arrangement/arrange_session.h"
#include "dravik/coaching.h"
#include "dravik/discovery.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/session_arrangement.h"
#include "dravik/session_review.h"
#include "dravik/store.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace dravik;
using test::failureOf;

namespace {

// Every file of a folder (lock files aside) with its bytes.
std::map<std::string, std::string> contents(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const std::string& name : test::entries(folder))
        files[name] = test::readText(folder / name);
    return files;
}

const ReviewFrame& frameShowing(const ReviewDocument& document, const std::string& hash) {
    for (const ReviewFrame& frame : document.frames())
        if (frame.sourceHash == hash)
            return frame;
    throw std::runtime_error("no frame shows " + hash);
}

// Two photos of one folder, discovered as two unpaired riders and analysed, then reviewed: edits
// on both, lean lines on the first, a retry on the second, a statement about the first's pair.
struct TwoDiscoveredPhotos : testing::Test {
    test::TempDir data;
    fs::path folder = data / "track-day";
    fs::path manifest;
    fs::path results;
    ReviewDocument reviewed;

    void SetUp() override {
        for (auto [name, shade] : {std::pair{"a.jpg", 40}, std::pair{"b.jpg", 160}})
            test::writeText(folder / name,
                            photo_fixtures::encodeJpeg(photo_fixtures::gradient(120, 80, shade)));
        auto analyze = [](const fs::path& session, const fs::path& output) {
            ResultsFile file{"test-detector", "1", {}};
            double at = 10;
            for (const PairInput& pair : SessionManifest::load(session).pairs)
                file.riders.push_back({pair.id,
                                       pair.riders[0].id,
                                       pair.riders[0].sourceHash,
                                       {test::poseResult("2D", {at += 5, 8})}});
            test::writeText(output, file.encode());
        };
        const auto report = SessionDiscovery::run(data.path(), {}, {}, analyze);
        ASSERT_EQ(report.sessions.size(), 1u);
        manifest = report.sessions[0].manifest;
        results = report.sessions[0].results;

        SessionReview review = SessionReview::open(manifest, results);
        ReviewDocument& document = review.document;
        document.setJoint(0, "left_elbow", Point2{30, 40}, JointReviewState::corrected);
        document.setJoint(0, "nose", std::nullopt, JointReviewState::obscured);
        document.setJoint(1, "right_knee", Point2{70, 60}, JointReviewState::uncertain);
        document.setLeanAnnotation(
            "a/rider", LeanAnnotation(document.frames()[0], LeanLine{{10, 70}, {20, 20}}));
        document.addRetry(1, DetectionRetry{test::poseResult("2D", {50, 5}), std::nullopt});
        document.setPairContext("a", PairContext{"a", CornerDirection::right, std::nullopt, {}});
        ReviewStore::save(document, review.file, std::nullopt);
        reviewed = document;
    }

    // "a.jpg" ridden by Alex compared with "b.jpg" ridden by Sam, in a left-hand turn.
    SessionArrangement paired() const {
        SessionArrangement arrangement = SessionArrangement::of(SessionManifest::load(manifest));
        arrangement.photo("a/rider")->riderName = "Alex";
        arrangement.photo("b/rider")->riderName = "Sam";
        arrangement.pairUp("a/rider", "b/rider");
        arrangement.pairs[0].title = "Turn 3";
        arrangement.pairs[0].cornerDirection = CornerDirection::left;
        return arrangement;
    }
};

} // namespace

TEST_F(TwoDiscoveredPhotos, PairingTwoPhotosCarriesEveryEditToTheSamePhoto) {
    const SessionArrangement arrangement = paired();
    ASSERT_EQ(arrangement.pairs.size(), 1u);
    const auto before = contents(folder);
    const ArrangementEffect preview = arrangement.preview(manifest, results);
    EXPECT_EQ(contents(folder), before) << "a preview writes nothing";
    EXPECT_TRUE(preview.reKeysFrames);
    EXPECT_EQ(preview.pairContexts, 1u) << "what was said of the lone photo's pair";
    EXPECT_EQ(preview.dropped(), 1u);
    const fs::path oldReview = SessionReview::open(manifest, results).file;
    EXPECT_EQ(preview.keptReview, oldReview);
    EXPECT_NE(preview.review, oldReview);

    EXPECT_EQ(arrangement.apply(manifest, results), preview);
    EXPECT_EQ(test::readText(oldReview), before.at(oldReview.filename().string()))
        << "the review before stays as it was";

    const SessionReview opened = SessionReview::open(manifest, results);
    ASSERT_TRUE(opened.saved);
    EXPECT_EQ(opened.file, preview.review);
    const ReviewDocument& document = opened.document;
    EXPECT_EQ(document.revision(), reviewed.revision() + 1);
    ASSERT_EQ(PairReview::resolve(document.frames()),
              (std::vector<ReviewPair>{{"a", {"a/rider", "a/reference"}}}));
    EXPECT_EQ(document.frames()[1].riderDisplayName, "Sam");
    EXPECT_EQ(document.frames()[1].role, "reference");
    EXPECT_EQ(document.frames()[0].name, "Turn 3");
    EXPECT_EQ(document.pairAssessments().at("a").direction, CornerDirection::left);
    for (const ReviewFrame& was : reviewed.frames()) {
        const ReviewFrame& now = frameShowing(document, was.sourceHash);
        EXPECT_EQ(now.edits, was.edits);
        EXPECT_EQ(now.retries, was.retries);
        EXPECT_EQ(now.raw, was.raw) << "detections follow their rider";
        EXPECT_EQ(now.file, was.file);
        EXPECT_EQ(now.panel, was.panel);
        EXPECT_EQ(now.crop, was.crop);
    }
    ASSERT_NE(document.leanAnnotation("a/rider"), nullptr);
    EXPECT_EQ(document.leanAnnotation("a/rider")->wheel, reviewed.leanAnnotation("a/rider")->wheel);
    EXPECT_TRUE(document.pairContexts().empty());

    // Arranged back, each photo alone again: the pair's statements go, the edits stay.
    SessionArrangement apart = SessionArrangement::of(SessionManifest::load(manifest));
    apart.separate("a/rider");
    EXPECT_EQ(apart.apply(manifest, results).dropped(), 0u);
    const ReviewDocument again = SessionReview::open(manifest, results).document;
    EXPECT_EQ(frameShowing(again, reviewed.frames()[1].sourceHash).edits,
              reviewed.frames()[1].edits);
    EXPECT_EQ(frameShowing(again, reviewed.frames()[1].sourceHash).role, "subject");
}

TEST_F(TwoDiscoveredPhotos, NamesAndTitlesAloneKeepTheResultsAndTheReview) {
    SessionArrangement arrangement = SessionArrangement::of(SessionManifest::load(manifest));
    arrangement.title = "Club day";
    arrangement.photo("b/rider")->riderName = "Sam";
    arrangement.pairs[1].cornerDirection = CornerDirection::right;
    const auto before = contents(folder);
    const ArrangementEffect effect = arrangement.apply(manifest, results);
    EXPECT_FALSE(effect.reKeysFrames);
    EXPECT_EQ(effect.dropped(), 0u);
    EXPECT_FALSE(effect.keptReview);
    auto after = contents(folder);
    EXPECT_NE(after.at("session.json"), before.at("session.json"));
    after["session.json"] = before.at("session.json");
    EXPECT_EQ(after, before) << "only the manifest changes";

    const ReviewDocument document = SessionReview::open(manifest, results).document;
    EXPECT_EQ(document.frames()[1].riderDisplayName, "Sam");
    EXPECT_EQ(document.frames()[1].edits, reviewed.frames()[1].edits);
    EXPECT_EQ(document.pairContexts(), reviewed.pairContexts());
}

TEST_F(TwoDiscoveredPhotos, AFailedWriteLeavesEveryFileAsItWas) {
    const SessionArrangement arrangement = paired();
    const auto before = contents(folder);
    // The review, the results and the manifest are replaced in turn: fail before each.
    for (std::size_t failing = 0; failing < 3; ++failing) {
        SCOPED_TRACE("failing rename " + std::to_string(failing));
        const std::string sentence = failureOf([&] {
            arrangement::apply(arrangement, manifest, results, [&](std::size_t step) {
                if (step == failing)
                    throw DravikError("Injected failure.");
            });
        });
        EXPECT_EQ(sentence, "Injected failure.");
        EXPECT_EQ(contents(folder), before);
    }

    // The results' hidden staging name is taken: the review staged before it goes again.
    fs::create_directories(folder / ".results.json.arranged" / "taken");
    EXPECT_EQ(failureOf([&] { arrangement.apply(manifest, results); }),
              "“results.json” is a folder, not a regular file, so it was not replaced; nothing was "
              "written.");
    fs::remove_all(folder / ".results.json.arranged");
    EXPECT_EQ(contents(folder), before);
}

TEST(SessionArrangementTest, AnArrangementThatLosesWhatWasSaidOfAPairSaysSo) {
    test::TempDir folder;
    fs::copy(fs::path(TESSARY_SOURCE_DIR) / "data/sample-session", folder.path(),
             fs::copy_options::recursive);
    const fs::path manifest = folder / "session.json";
    const fs::path results = folder / "results.json";
    SessionReview review = SessionReview::open(manifest, results);
    review.document.setPairContext("turn-3",
                                   PairContext{"turn-3", CornerDirection::right, std::nullopt, {}});
    review.document.setLeanPairContext(
        "turn-3",
        LeanPairContext{"turn-3", false, false, false, false, false, false, std::nullopt});
    review.document.setJoint(1, "left_knee", Point2{600, 500}, JointReviewState::corrected);
    ReviewStore::save(review.document, review.file, std::nullopt);

    // Sam's photo leaves the turn-3 comparison to stand alone.
    SessionArrangement arrangement = SessionArrangement::of(SessionManifest::load(manifest));
    arrangement.separate("turn-3/alex");
    const ArrangementEffect effect = arrangement.preview(manifest, results);
    EXPECT_EQ(effect.pairContexts, 1u);
    EXPECT_EQ(effect.leanPairContexts, 1u);
    EXPECT_EQ(effect.photoCoaching, 2u);
    EXPECT_EQ(effect.checklists, 1u);
    EXPECT_EQ(effect.singlePhotoNotes, 0u) << "turn 5 is untouched";
    EXPECT_EQ(arrangement.apply(manifest, results), effect);

    // The arranged session opens with its companion files, which followed the photos.
    const ReviewDocument document = SessionReview::open(manifest, results).document;
    const auto& frames = document.frames();
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[1].id, "turn-3-2/rider");
    EXPECT_EQ(frames[1].edits, review.document.frames()[1].edits);
    for (const LeanAnnotation& proposal : loadLeanProposals(folder / "lean-proposals.json"))
        EXPECT_NO_THROW(proposal.validate(*document.frame(proposal.frameID))) << proposal.frameID;
    EXPECT_EQ(PhotoFramingRegion::load(folder / "photo-framing.json", frames).size(), 3u);
    EXPECT_EQ(SinglePhotoCoaching::load(folder / "single-photo-coaching.json", frames).size(), 1u);
    EXPECT_TRUE(CoachingChecklist::load(folder / "coaching-checklist.json", frames).empty());
}

TEST(SessionArrangementTest, EditingKeepsEveryPhotoInExactlyOnePair) {
    SessionManifest manifest = test::sampleManifest();
    manifest.pairs.push_back({"third", "Turn 7", {test::riderInput("rider", "subject", "c.jpg")}});
    SessionArrangement arrangement = SessionArrangement::of(manifest);
    // Pairing the solo rider with the corner's reference rider leaves the corner's rider alone.
    arrangement.pairUp("solo/rider", "corner-1/ref");
    EXPECT_EQ(arrangement.pairs, (std::vector<ArrangedPair>{
                                     {"Turn 3 entry", "corner-1/rider", std::nullopt, std::nullopt},
                                     {"Turn 5 exit", "solo/rider", "corner-1/ref", std::nullopt},
                                     {"Turn 7", "third/rider", std::nullopt, std::nullopt}}));
    // A rider who was someone's reference rider gets a pair of their own where that was.
    arrangement.pairUp("corner-1/ref", "third/rider");
    EXPECT_EQ(arrangement.pairs[1],
              (ArrangedPair{"Turn 5 exit", "solo/rider", std::nullopt, std::nullopt}));
    EXPECT_EQ(arrangement.pairs[2],
              (ArrangedPair{"ref.jpg", "corner-1/ref", "third/rider", std::nullopt}));
    EXPECT_EQ(arrangement.pairs.size(), 3u);

    test::TempDir folder;
    const auto files = test::writeSession(folder.path(), manifest);
    SessionArrangement broken = arrangement;
    broken.pairs.pop_back();
    EXPECT_EQ(failureOf([&] { broken.preview(files.manifest, files.results); }),
              "The photo “ref.jpg” is in no pair; every photo belongs to exactly one.");
    broken = arrangement;
    broken.pairs[0].referenceFrameID = "solo/rider";
    EXPECT_EQ(failureOf([&] { broken.preview(files.manifest, files.results); }),
              "The photo “solo.png” is in two pairs; every photo belongs to exactly one.");
    broken = arrangement;
    broken.photos[0].file = "elsewhere.jpg";
    EXPECT_EQ(failureOf([&] { broken.preview(files.manifest, files.results); }),
              "The arrangement was made for another version of “session.json”; open the "
              "session again to arrange it.");
}
