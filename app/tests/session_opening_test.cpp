// SPDX-License-Identifier: Apache-2.0
#include "dravik/coaching.h"
#include "dravik/detection.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "model_fixture.h"

#include <functional>

namespace tessary::test {

namespace {

const std::string framingUnavailable = " \u00b7 Framing unavailable; showing full photos";

// A saved review `edits` revisions ahead of the raw document.
void writeSavedReview(const SessionFiles& session, int edits) {
    dravik::ReviewDocument document = session.raw();
    for (int i = 0; i < edits; ++i)
        document.setJoint(0, "left_elbow", dravik::Point2{100.0 + i, 200.0},
                          dravik::JointReviewState::corrected);
    dravik::ReviewStore::save(document, session.review(), std::nullopt);
}

dravik::LeanAnnotation wheelProposal(const dravik::ReviewFrame& frame) {
    const dravik::Point2 a{frame.panel.x + 100, frame.panel.y + 100};
    return {frame, dravik::LeanLine{a, {a.x + 40, a.y + 200}, 4.0}, "detector"};
}

} // namespace

TEST_F(ModelTest, OpensChosenRawDetectionsAndReopensASavedReview) {
    EXPECT_TRUE(model.save()); // nothing open, nothing to save
    const SessionFiles session = bundledSession(temp.path() / "chosen");
    chooser->answers = {session.manifest}; // the second question cancelled
    model.openSession();
    EXPECT_FALSE(model.snapshot());
    EXPECT_EQ(model.message(), "Open a session to review its joints.");
    EXPECT_EQ(chooser->captions,
              (std::vector<std::string>{"Choose the session.json used for analysis",
                                        "Choose that run\u2019s results.json"}));
    chooser->answers = {session.manifest, session.results};
    model.openSession();
    ASSERT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(),
              "Raw detections loaded \u00b7 nothing reviewed yet" + framingUnavailable);
    EXPECT_EQ(model.savedRevision(), std::nullopt);
    EXPECT_EQ(model.activeFrameID(), alex3);
    EXPECT_EQ(model.images().size(), 1u); // the others are decoded when shown
    const QImage& photo = model.images().at(alex3).image;
    EXPECT_EQ(photo.width(), static_cast<int>(frameOf(alex3).panel.width));
    EXPECT_EQ(photo.format(), QImage::Format_RGB888);
    ASSERT_NE(model.report(), nullptr); // the starting frame's pair is analysed
    EXPECT_EQ(model.report()->pairID, "turn-3");
    EXPECT_FALSE(fs::exists(session.review()));
    EXPECT_TRUE(model.isUnsaved()); // never written: the next save writes revision 0

    // A review saved elsewhere at revision 7 is picked up on the next open.
    const SessionFiles other = bundledSession(temp.path() / "other");
    writeSavedReview(other, 7);
    chooser->answers = {other.manifest, other.results};
    model.openSession();
    EXPECT_EQ(model.message(), "Saved review reopened \u00b7 revision 7" + framingUnavailable);
    EXPECT_EQ(model.savedRevision(), 7);
    EXPECT_EQ(model.document()->revision(), 7);
    EXPECT_FALSE(model.isUnsaved());
}

TEST_F(ModelTest, CompanionFilesThatFitAreAcceptedAndAMisfitFramingIsIgnored) {
    const SessionFiles session = openBundled("companions", true);
    EXPECT_EQ(model.message(), "Raw detections loaded \u00b7 nothing reviewed yet");
    EXPECT_EQ(model.framingRegions().size(), 3u);

    // A framing file that does not fit the photos is ignored, and the notice comes back. (The
    // raw document was saved, at revision 0, before the session was opened again.)
    std::vector<dravik::PhotoFramingRegion> regions;
    const dravik::ReviewDocument raw = session.raw();
    for (const dravik::ReviewFrame& frame : raw.frames())
        regions.push_back({frame.id, frame.sourceHash, frame.panel,
                           dravik::PixelRect{frame.panel.x + 10, frame.panel.y + 10, 200, 300}});
    regions.front().panel.width += 1;
    writeText(session.folder / "photo-framing.json", dravik::PhotoFramingRegion::encode(regions));
    model.load(session.manifest, session.results);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_TRUE(model.framingRegions().empty());
    EXPECT_EQ(model.message(), "Saved review reopened \u00b7 revision 0" + framingUnavailable);
}

TEST_F(ModelTest, AFailedOpenLeavesTheOpenSessionUntouched) {
    openBundled("good");
    model.edit(dravik::Point2{300, 300}, dravik::JointReviewState::corrected);
    // Everything the reviewer sees of the open session.
    const auto state = [&] {
        return std::tuple(model.snapshot()->documentPointer, model.sessionID(), model.message(),
                          model.images().size(), model.images().at(alex3).image.cacheKey(),
                          model.undoStack(), model.activeFrameID(), model.leanProposals().size());
    };
    const auto before = state();
    auto expectRefused = [&](const std::string& name, const std::string& expected,
                             const std::function<void(const SessionFiles&)>& breakIt) {
        SCOPED_TRACE(name);
        const SessionFiles broken = bundledSession(temp.path() / name);
        breakIt(broken);
        model.clearError();
        model.load(broken.manifest, broken.results);
        ASSERT_TRUE(model.error());
        if (!expected.empty()) { // else any error will do
            EXPECT_EQ(*model.error(), expected);
        }
        EXPECT_TRUE(state() == before);
    };

    const std::string badProposal = "Invalid or duplicate lean proposal frame.";
    const dravik::ReviewFrame frame = bundledSession(temp.path() / "raw").raw().frames()[1];
    expectRefused("duplicate proposal", badProposal, [&](const SessionFiles& broken) {
        writeText(broken.folder / "lean-proposals.json",
                  dravik::encodeLeanProposals({wheelProposal(frame), wheelProposal(frame)}));
    });
    expectRefused("stray proposal", badProposal, [&](const SessionFiles& broken) {
        dravik::LeanAnnotation stray = wheelProposal(frame);
        stray.frameID = "turn-9/nobody";
        writeText(broken.folder / "lean-proposals.json", dravik::encodeLeanProposals({stray}));
    });
    expectRefused("replaced photo", "", [](const SessionFiles& broken) {
        // the last photo in document order: every photo is checked at opening
        fs::copy_file(broken.folder / "turn-3-alex.jpg", broken.folder / "turn-5-alex.jpg",
                      fs::copy_options::overwrite_existing);
    });
    // A review of other detections under this session's review name: the sentence names the file
    // that was read, not the one its content would be saved as.
    const SessionFiles other = bundledSession(temp.path() / "other detections");
    dravik::ResultsFile otherResults = dravik::ResultsFile::load(other.results);
    otherResults.detectorVersion += "-b";
    writeText(other.results, otherResults.encode());
    const std::string expectedName = bundledSession(temp.path() / "name").review().filename();
    expectRefused("review of other detections",
                  "“" + expectedName + "” belongs to other detection results than this session’s.",
                  [&](const SessionFiles& broken) {
                      dravik::ReviewStore::save(other.raw(), broken.review(), std::nullopt);
                  });
    // Every session has a "session.json": the sentence says whose.
    expectRefused("Snetterton", "",
                  [](const SessionFiles& broken) { writeText(broken.manifest, "{\"format\": "); });
    EXPECT_NE(model.error()->find("\u201csession.json\u201d of \u201cSnetterton\u201d"),
              std::string::npos)
        << *model.error();
    expectRefused("no photos", "No frames to review.", [](const SessionFiles& broken) {
        writeText(broken.manifest, dravik::SessionManifest{"Nothing", {}}.encode());
        writeText(broken.results, dravik::ResultsFile{"detector", "1", {}}.encode());
    });

    // Still the same session, still saving.
    model.edit(dravik::Point2{310, 300}, dravik::JointReviewState::corrected);
    EXPECT_FALSE(model.isUnsaved());
}

TEST_F(ModelTest, CompanionFilesChooseTheStartAndAreShownOnlyWhereTheyFit) {
    // Broken notes never stop an opening: the coaching panels' tests name them.
    const SessionFiles session = bundledSession(temp.path() / "coached");
    // A lean proposal and notes for the lone photo of turn 5, checklist findings for turn 3, a
    // left-hand corner.
    const dravik::ReviewDocument raw = session.raw();
    const dravik::LeanAnnotation proposal = wheelProposal(*raw.frame(alex5));
    writeText(session.folder / "lean-proposals.json", dravik::encodeLeanProposals({proposal}));
    const dravik::SinglePhotoCoaching notes{
        alex5, raw.frame(alex5)->sourceHash, {"Eyes up through the exit."}, {"Photo review"}};
    writeText(session.folder / "single-photo-coaching.json",
              dravik::SinglePhotoCoaching::encode({notes}));
    const dravik::CoachingChecklistReview findings{
        "turn-3",
        std::string(dravik::CoachingChecklist::catalogVersion()),
        dravik::CornerDirection::left,
        {}};
    writeText(session.folder / "coaching-checklist.json",
              dravik::CoachingChecklist::encode({findings}, raw.frames()));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    // The proposal's frame comes first, in lean mode.
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_TRUE(model.leanMode());
    EXPECT_FALSE(model.showMarkers());
    EXPECT_EQ(model.lean(alex5), proposal);
    // A rider alone is a pair of its own, but with nobody to compare with it gets no report.
    EXPECT_EQ(model.pair()->id, "turn-5");
    EXPECT_EQ(model.report(), nullptr);
    ASSERT_NE(model.currentSinglePhotoCoaching(), nullptr);
    EXPECT_EQ(*model.currentSinglePhotoCoaching(), notes);

    model.selectPair("turn-3");
    EXPECT_EQ(model.currentSinglePhotoCoaching(), nullptr); // Alex has a reference rider here
    ASSERT_NE(model.currentCoachingChecklist(), nullptr);
    EXPECT_EQ(*model.currentCoachingChecklist(), findings);
}

} // namespace tessary::test
