#include "dravik/coaching.h"
#include "dravik/detection.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "model_fixture.h"

#include <fstream>

namespace tessary::test {

namespace {

const std::string framingUnavailable = " \u00b7 Framing unavailable; showing full photos";

void writeText(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
}

// A saved review `edits` revisions ahead of the raw document.
void writeSavedReview(const SessionFiles& session, int edits) {
    dravik::ReviewDocument document = session.raw();
    for (int i = 0; i < edits; ++i)
        document.setJoint(0, "left_elbow", dravik::Point2{100.0 + i, 200.0},
                          dravik::JointReviewState::corrected);
    dravik::ReviewStore::save(document, session.review(), std::nullopt);
}

dravik::LeanAnnotation wheelProposal(const dravik::ReviewFrame& frame) {
    dravik::LeanAnnotation proposal(frame,
                                    dravik::LeanLine{{frame.panel.x + 100, frame.panel.y + 100},
                                                     {frame.panel.x + 140, frame.panel.y + 300},
                                                     4.0},
                                    "detector");
    return proposal;
}

} // namespace

TEST_F(ModelTest, StartsClosedWithTheDocumentedState) {
    EXPECT_FALSE(model.snapshot());
    EXPECT_EQ(model.message(), "Open a session to review its joints.");
    EXPECT_EQ(model.selected(), "left_elbow");
    EXPECT_TRUE(model.showMarkers());
    EXPECT_TRUE(model.inspectorVisible());
    EXPECT_TRUE(model.showLean());
    EXPECT_FALSE(model.leanMode());
    EXPECT_EQ(model.selectedLeanHandle(), dravik::LeanHandle::wheelA);
    EXPECT_FALSE(model.canvasGeneration().isNil());
    EXPECT_FALSE(model.isUnsaved());
    EXPECT_TRUE(model.save());
}

TEST_F(ModelTest, OpensRawDetectionsAndReopensASavedReview) {
    const SessionFiles session = openBundled();
    EXPECT_EQ(model.message(),
              "Raw detections loaded \u00b7 nothing reviewed yet" + framingUnavailable);
    EXPECT_EQ(model.savedRevision(), std::nullopt);
    EXPECT_EQ(model.activeFrameID(), alex3);
    EXPECT_EQ(model.images().size(), 3u);
    const QImage& photo = model.images().at(alex3);
    EXPECT_EQ(photo.width(), static_cast<int>(frameOf(alex3).panel.width));
    EXPECT_EQ(photo.format(), QImage::Format_RGB888);
    const QImage single = model.loadImage(frameOf(sam3), session.manifest);
    EXPECT_EQ(single.size(), model.images().at(sam3).size());
    EXPECT_EQ(single.pixel(10, 10), model.images().at(sam3).pixel(10, 10));
    ASSERT_NE(model.report(), nullptr); // the starting frame's pair is analysed
    EXPECT_EQ(model.report()->pairID, "turn-3");
    EXPECT_FALSE(model.leanMode());
    EXPECT_FALSE(fs::exists(session.review()));
    EXPECT_TRUE(model.isUnsaved()); // never written: the next save writes revision 0

    // A review saved elsewhere at revision 7 is picked up on the next open.
    const SessionFiles other = bundledSession(temp.path() / "other");
    writeSavedReview(other, 7);
    model.load(other.manifest, other.results);
    EXPECT_EQ(model.message(), "Saved review reopened \u00b7 revision 7" + framingUnavailable);
    EXPECT_EQ(model.savedRevision(), 7);
    EXPECT_EQ(model.document()->revision(), 7);
    EXPECT_FALSE(model.isUnsaved());
}

TEST_F(ModelTest, FramingRegionsSilenceTheFramingNotice) {
    SessionFiles session = bundledSession(temp.path() / "framed");
    std::vector<dravik::PhotoFramingRegion> regions;
    const dravik::ReviewDocument raw = session.raw();
    for (const dravik::ReviewFrame& frame : raw.frames())
        regions.push_back({frame.id, frame.sourceHash, frame.panel,
                           dravik::PixelRect{frame.panel.x + 10, frame.panel.y + 10, 200, 300}});
    writeText(session.folder / "photo-framing.json", dravik::PhotoFramingRegion::encode(regions));
    model.load(session.manifest, session.results);
    EXPECT_EQ(model.message(), "Raw detections loaded \u00b7 nothing reviewed yet");
    EXPECT_EQ(model.framingRegions().size(), 3u);

    // A framing file that does not fit the photos is ignored, and the notice comes back. (The
    // raw document was saved, at revision 0, before the session was opened again.)
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
    const auto snapshotBefore = model.snapshot()->documentPointer;
    const auto sessionBefore = model.sessionID();
    const std::string messageBefore = model.message();
    const auto imageBefore = model.images().at(alex3).cacheKey();
    const auto undoBefore = model.undoStack();

    auto expectRefused = [&](const SessionFiles& broken, const std::string& expected) {
        model.clearError();
        model.load(broken.manifest, broken.results);
        ASSERT_TRUE(model.error());
        EXPECT_EQ(*model.error(), expected);
        EXPECT_EQ(model.snapshot()->documentPointer, snapshotBefore);
        EXPECT_EQ(model.sessionID(), sessionBefore);
        EXPECT_EQ(model.message(), messageBefore);
        EXPECT_EQ(model.images().size(), 3u);
        EXPECT_EQ(model.images().at(alex3).cacheKey(), imageBefore);
        EXPECT_EQ(model.undoStack(), undoBefore);
        EXPECT_EQ(model.activeFrameID(), alex3);
        EXPECT_TRUE(model.leanProposals().empty());
    };

    // Two proposals for one frame, then one for a frame the session lacks.
    const SessionFiles duplicate = bundledSession(temp.path() / "duplicate");
    const dravik::ReviewFrame frame = duplicate.raw().frames()[1];
    writeText(duplicate.folder / "lean-proposals.json",
              dravik::encodeLeanProposals({wheelProposal(frame), wheelProposal(frame)}));
    expectRefused(duplicate, "Invalid or duplicate lean proposal frame.");

    const SessionFiles unknown = bundledSession(temp.path() / "unknown");
    dravik::LeanAnnotation stray = wheelProposal(frame);
    stray.frameID = "turn-9/nobody";
    writeText(unknown.folder / "lean-proposals.json", dravik::encodeLeanProposals({stray}));
    expectRefused(unknown, "Invalid or duplicate lean proposal frame.");

    // A photo replaced after analysis: the last photo in document order.
    const SessionFiles replaced = bundledSession(temp.path() / "replaced");
    fs::copy_file(replaced.folder / "turn-3-alex.jpg", replaced.folder / "turn-5-alex.jpg",
                  fs::copy_options::overwrite_existing);
    expectRefused(replaced, "Cannot load subject photo (turn-5-alex.jpg): Source hash changed; "
                            "reanalyze before applying corrections. Previous selection "
                            "preserved.");

    // A review made for other photos than these.
    const SessionFiles mismatched = bundledSession(temp.path() / "mismatched");
    std::vector<dravik::ReviewFrame> frames = mismatched.raw().frames();
    frames[0].panel.width -= 10;
    dravik::ReviewStore::save(dravik::ReviewDocument(mismatched.raw().identity(), frames, 4),
                              mismatched.review(), std::nullopt);
    model.clearError();
    model.load(mismatched.manifest, mismatched.results);
    ASSERT_TRUE(model.error());
    EXPECT_EQ(model.snapshot()->documentPointer, snapshotBefore);
    EXPECT_EQ(model.message(), messageBefore);

    // A session without a single photo.
    const fs::path empty = temp.path() / "empty";
    fs::create_directories(empty);
    writeText(empty / "session.json", dravik::SessionManifest{"Nothing", {}}.encode());
    writeText(empty / "results.json", dravik::ResultsFile{"detector", "1", {}}.encode());
    expectRefused({empty, empty / "session.json", empty / "results.json"}, "No frames to review.");

    // Still the same session, still saving.
    model.edit(dravik::Point2{310, 300}, dravik::JointReviewState::corrected);
    EXPECT_FALSE(model.isUnsaved());
}

TEST_F(ModelTest, LeanProposalsChooseTheStartingFrameAndLeanMode) {
    const SessionFiles session = bundledSession(temp.path() / "proposed");
    const dravik::ReviewFrame frame = session.raw().frames()[2];
    writeText(session.folder / "lean-proposals.json",
              dravik::encodeLeanProposals({wheelProposal(frame)}));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_TRUE(model.leanMode());
    EXPECT_FALSE(model.showMarkers());
    EXPECT_EQ(model.leanProposals().size(), 1u);
    EXPECT_EQ(model.lean(alex5), wheelProposal(frame));
    // A rider alone is a pair of its own, but with nobody to compare with it gets no report.
    ASSERT_TRUE(model.pair());
    EXPECT_EQ(model.pair()->id, "turn-5");
    EXPECT_EQ(model.report(), nullptr);
}

TEST_F(ModelTest, CoachingFilesAreShownOnlyWhereTheyFit) {
    const SessionFiles session = bundledSession(temp.path() / "coached");
    writeText(session.folder / "single-photo-coaching.json", "{\"format\": 1}");
    writeText(session.folder / "coaching-checklist.json", "[]");
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt); // broken notes never stop the opening
    EXPECT_EQ(model.singlePhotoCoachingError(),
              "Saved photo notes could not be loaded or did not match this session. Coaching is "
              "withheld until the notes are corrected.");
    EXPECT_EQ(model.coachingChecklistError(),
              "Saved checklist findings do not match this session or catalog. Topics need "
              "review again.");
    EXPECT_TRUE(model.singlePhotoCoaching().empty());

    // Notes for the lone photo of turn 5, and checklist findings made in a right-hand corner.
    const dravik::ReviewDocument raw = session.raw();
    const dravik::SinglePhotoCoaching notes{
        alex5, raw.frame(alex5)->sourceHash, {"Eyes up through the exit."}, {"Photo review"}};
    writeText(session.folder / "single-photo-coaching.json",
              dravik::SinglePhotoCoaching::encode({notes}));
    const dravik::CoachingChecklistReview findings{
        "turn-3",
        std::string(dravik::CoachingChecklist::catalogVersion()),
        dravik::CornerDirection::right,
        {}};
    writeText(session.folder / "coaching-checklist.json",
              dravik::CoachingChecklist::encode({findings}, raw.frames()));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.coachingChecklistError(), std::nullopt);
    EXPECT_EQ(model.singlePhotoCoachingError(), std::nullopt);
    EXPECT_EQ(model.currentSinglePhotoCoaching(), nullptr); // Alex has a reference rider here

    dravik::PairContext context = model.report()->context;
    context.directionOverride = dravik::CornerDirection::left;
    model.updateContext(context);
    EXPECT_EQ(model.checklistSubjectID(), "turn-3");
    EXPECT_TRUE(model.checklistDirectionConflict());
    EXPECT_EQ(model.currentCoachingChecklist(), nullptr);
    context.directionOverride = dravik::CornerDirection::right;
    model.updateContext(context);
    EXPECT_FALSE(model.checklistDirectionConflict());
    ASSERT_NE(model.currentCoachingChecklist(), nullptr);
    EXPECT_EQ(*model.currentCoachingChecklist(), findings);

    model.selectPair("turn-5");
    ASSERT_NE(model.currentSinglePhotoCoaching(), nullptr);
    EXPECT_EQ(*model.currentSinglePhotoCoaching(), notes);
}

TEST_F(ModelTest, OpenSessionAsksForBothFilesAndCancelChangesNothing) {
    const SessionFiles session = bundledSession(temp.path() / "chosen");
    chooser->answers = {session.manifest};
    model.openSession();
    EXPECT_FALSE(model.snapshot());
    EXPECT_EQ(model.message(), "Open a session to review its joints.");
    EXPECT_EQ(chooser->captions,
              (std::vector<std::string>{"Choose the session.json used for analysis",
                                        "Choose that run\u2019s results.json"}));

    chooser->answers = {session.manifest, session.results};
    model.openSession();
    ASSERT_TRUE(model.snapshot());
    EXPECT_EQ(model.activeFrameID(), alex3);

    chooser->captions.clear();
    const auto sessionBefore = model.sessionID();
    model.openSession(); // cancelled at once
    EXPECT_EQ(chooser->captions.size(), 1u);
    EXPECT_EQ(model.sessionID(), sessionBefore);
}

TEST_F(ModelTest, PresetsComeFromTheBundle) {
    const fs::path share = temp.path() / "bundle" / "share" / "tessary";
    fs::create_directories(share);
    model.loadPresets(); // no resource: no presets, no message
    EXPECT_TRUE(model.presets().empty());

    writeText(share / "launch.json", "[{\"title\": \"Broken\", \"manifest\": \"a.json\"}]");
    model.loadPresets();
    EXPECT_TRUE(model.presets().empty());

    const SessionFiles session = bundledSession(temp.path() / "preset");
    writeText(share / "launch.json", "[{\"title\": \"Sample\", \"manifest\": \"" +
                                         session.manifest.string() + "\", \"results\": \"" +
                                         session.results.string() + "\"}]");
    model.loadPresets();
    ASSERT_EQ(model.presets().size(), 1u);
    EXPECT_EQ(model.presets()[0].title, "Sample");
    EXPECT_EQ(model.presets()[0].id(), session.manifest.string());
    model.openPreset(model.presets()[0]);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.activeFrameID(), alex3);
}

TEST_F(ModelTest, OpensTheBundledSampleSession) {
    const fs::path sample = fs::path(TESSARY_SOURCE_DIR) / "data" / "sample-session";
    if (!fs::exists(sample / "session.json"))
        GTEST_SKIP() << "the bundled sample session is not in this checkout";
    fs::copy(sample, temp.path() / "sample", fs::copy_options::recursive);
    model.load(temp.path() / "sample" / "session.json", temp.path() / "sample" / "results.json");
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.images().size(), model.document()->frames().size());
    // Every companion file is accepted: no notice about framing or coaching files.
    EXPECT_EQ(model.message().find("unavailable"), std::string::npos) << model.message();
    EXPECT_EQ(model.singlePhotoCoachingError(), std::nullopt);
    EXPECT_EQ(model.coachingChecklistError(), std::nullopt);
    EXPECT_EQ(model.framingRegions().size(), 3u);
    EXPECT_EQ(model.leanProposals().size(), 3u);
    EXPECT_EQ(model.coachingChecklists().count("turn-3"), 1u);
    EXPECT_EQ(model.singlePhotoCoaching().count(alex5), 1u);
}

} // namespace tessary::test
