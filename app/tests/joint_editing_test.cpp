// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "model_fixture.h"

namespace tessary::test {

namespace {

using dravik::JointReviewState;
using dravik::Point2;

const std::string refusedElsewhere = "Unsaved changes \u2014 save failed \u00b7 Review changed "
                                     "elsewhere \u00b7 File \u25b8 Merge, Reload or Save Copy";

} // namespace

TEST_F(ModelTest, EditsStatesAndNudgesArePublishedRecordedAndSavedOnce) {
    const SessionFiles session = openBundled();
    model.setPlacing(true);
    model.edit(Point2{300, 310}, JointReviewState::corrected);
    EXPECT_EQ(editOf(alex3, "left_elbow"),
              (dravik::JointEdit{JointReviewState::corrected, Point2{300, 310}}));
    EXPECT_EQ(model.message(),
              "Automatically saved locally \u00b7 revision 1 \u00b7 corrections are 2D only");
    EXPECT_EQ(model.savedRevision(), 1);
    EXPECT_FALSE(model.placing());
    EXPECT_EQ(session.saved(), *model.document());
    EXPECT_EQ(model.undoStack().size(), 1u);

    // The same edit again changes nothing, so nothing is recorded or written.
    const auto writtenAt = fs::last_write_time(session.review());
    model.edit(Point2{300, 310}, JointReviewState::corrected);
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(fs::last_write_time(session.review()), writtenAt);

    // Obscured drops the point, and a nudge then has nothing to move.
    model.setState(JointReviewState::obscured);
    EXPECT_EQ(editOf(alex3, "left_elbow"),
              (dravik::JointEdit{JointReviewState::obscured, std::nullopt}));
    model.nudge(1, 0, alex3);
    EXPECT_EQ(model.undoStack().size(), 2u);

    // Confirming keeps the detected point; a nudge moves it, on the active canvas only.
    model.setSelected("right_wrist");
    const auto seed = frameOf(alex3).displayPoint("right_wrist", "3D");
    ASSERT_TRUE(seed);
    model.setState(JointReviewState::confirmedVisible);
    EXPECT_EQ(editOf(alex3, "right_wrist"),
              (dravik::JointEdit{JointReviewState::confirmedVisible, seed}));
    model.nudge(-10, 1, alex3);
    model.nudge(1, 0, sam3);
    model.nudge(1, 0, "turn-9/nobody");
    EXPECT_EQ(editOf(alex3, "right_wrist"),
              (dravik::JointEdit{JointReviewState::corrected, Point2{seed->x - 10, seed->y + 1}}));
    EXPECT_EQ(model.undoStack().size(), 4u);
    EXPECT_EQ(session.saved().revision(), 4);

    // The presentation's kind decides which detection is nudged.
    model.setSelected("left_knee");
    auto settings = model.settings(alex3);
    settings.kind = "2D";
    model.setSettings(alex3, settings);
    const auto twoD = frameOf(alex3).displayPoint("left_knee", "2D");
    ASSERT_TRUE(twoD);
    model.nudge(0, 10, alex3);
    EXPECT_EQ(editOf(alex3, "left_knee")->point, (Point2{twoD->x, twoD->y + 10}));
}

TEST_F(ModelTest, StaleTargetsNeverEdit) {
    const SessionFiles session = openBundled();
    auto refused = [&](const auto& target) {
        const auto revision = model.document()->revision();
        EXPECT_FALSE(model.valid(target));
        model.edit(Point2{1, 1}, JointReviewState::corrected, target);
        EXPECT_EQ(model.document()->revision(), revision);
    };

    const auto beforeCancel = model.target(alex3, "nose");
    EXPECT_TRUE(model.valid(beforeCancel));
    model.cancelInteraction();
    refused(beforeCancel);
    refused(model.target(sam3, "nose")); // a photo that is not on screen
    model.setCompare(true);
    const auto shown = model.target(sam3, "nose");
    EXPECT_TRUE(model.valid(shown));
    model.selectFrame(indexOf(alex5)); // navigation renews the canvas
    refused(shown);

    // A target of the previous session never lands on the same frames reopened.
    model.selectFrame(indexOf(alex3));
    const auto previousSession = model.target(alex3, "nose");
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    refused(previousSession);

    model.edit(Point2{1, 1}, JointReviewState::corrected, model.target(alex3, "nose"));
    EXPECT_EQ(editOf(alex3, "nose")->point, (Point2{1, 1}));
}

TEST_F(ModelTest, AFileChangedElsewhereIsNeverOverwrittenAndNothingIsLost) {
    const SessionFiles session = openBundled();
    model.edit(Point2{300, 300}, JointReviewState::corrected);
    const dravik::ReviewDocument ours = session.saved();
    ASSERT_EQ(ours.revision(), 1);

    // Another writer moves the file on to revision 2.
    dravik::ReviewDocument theirs = ours;
    theirs.setJoint(2, "nose", Point2{5, 5}, JointReviewState::corrected);
    dravik::ReviewStore::save(theirs, session.review(), 1);

    model.setSelected("nose");
    model.edit(Point2{400, 400}, JointReviewState::corrected);
    EXPECT_EQ(model.message(), refusedElsewhere);
    EXPECT_TRUE(model.error());
    EXPECT_TRUE(model.isUnsaved());
    EXPECT_EQ(model.savedRevision(), 1);
    EXPECT_EQ(session.saved(), theirs);

    // Moving on is refused while the work is unsaved.
    model.clearError();
    model.selectFrame(indexOf(alex5));
    EXPECT_EQ(model.activeFrameID(), alex3);
    model.setCompare(true);
    EXPECT_FALSE(model.compare());
    const auto snapshotBefore = model.snapshot()->documentPointer;
    const SessionFiles other = bundledSession(temp.path() / "other");
    model.load(other.manifest, other.results);
    EXPECT_EQ(model.snapshot()->documentPointer, snapshotBefore);
    EXPECT_EQ(model.message(), refusedElsewhere);

    model.edit(Point2{410, 410}, JointReviewState::corrected);
    EXPECT_EQ(model.undoStack().size(), 3u);
    EXPECT_EQ(model.document()->revision(), 3);

    // Once the file is back at our revision, one save writes everything.
    dravik::ReviewStore::save(ours, session.review(), 2);
    EXPECT_TRUE(model.save());
    EXPECT_EQ(model.savedRevision(), 3);
    EXPECT_FALSE(model.isUnsaved());
    EXPECT_EQ(session.saved(), *model.document());
    EXPECT_EQ(model.message(), "Automatically saved locally \u00b7 revision 3 \u00b7 corrections "
                               "are 2D only");
    model.selectFrame(indexOf(alex5));
    EXPECT_EQ(model.activeFrameID(), alex5);
}

TEST_F(ModelTest, UndoReturnsToTheRevertedFrame) {
    const SessionFiles session = openBundled();
    model.setCompare(true);
    model.activate(sam3);
    ASSERT_EQ(model.activeFrameID(), sam3);
    model.setSelected("right_knee");
    model.edit(Point2{200, 200}, JointReviewState::corrected);

    model.selectFrame(indexOf(alex5));
    EXPECT_FALSE(model.compare()); // turn-5 has no reference rider
    model.setSelected("nose");
    model.edit(Point2{100, 100}, JointReviewState::corrected);

    // Compare mode comes back on for a frame with a reference only if it is on now.
    model.selectFrame(indexOf(alex3));
    model.setCompare(true);
    model.setSelected("left_hip");
    model.undo();
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_FALSE(model.compare());
    EXPECT_EQ(model.selected(), "nose");
    EXPECT_EQ(editOf(alex5, "nose"), std::nullopt);
    EXPECT_EQ(model.images().size(), 1u);
    EXPECT_EQ(model.visibleIDs(), std::vector<std::string>{alex5});

    model.undo();
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_FALSE(model.compare());
    EXPECT_EQ(model.selected(), "right_knee");
    EXPECT_EQ(editOf(sam3, "right_knee"), std::nullopt);
    EXPECT_TRUE(model.undoStack().empty());
    EXPECT_EQ(model.document()->revision(), 4);
    EXPECT_EQ(session.saved(), *model.document()); // undone changes are saved like edits

    // With compare mode on and a reference, undo keeps both photos on screen.
    model.setCompare(true);
    model.edit(Point2{120, 120}, JointReviewState::corrected);
    model.activate(alex3);
    model.undo();
    EXPECT_TRUE(model.compare());
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_EQ(model.images().size(), 2u);
    model.undo(); // nothing left
    EXPECT_EQ(model.document()->revision(), 6);
}

TEST_F(ModelTest, PairContextsReplaceEachOtherAndDropKneesOnADirectionChange) {
    openBundled();
    ASSERT_NE(model.report(), nullptr);
    dravik::PairContext context = model.report()->context;
    context.kneePlacements = std::map<dravik::PairFeature, dravik::KneePlacement>{
        {dravik::PairFeature::insideKnee, dravik::KneePlacement::similar}};
    model.updateContext(context);
    const auto revision = model.document()->revision();
    EXPECT_EQ(model.report()->context.kneePlacements, context.kneePlacements);
    EXPECT_TRUE(model.undoStack().empty()); // saved, but not an undoable edit
    EXPECT_EQ(model.savedRevision(), revision);
    model.updateContext(context);
    EXPECT_EQ(model.document()->revision(), revision);

    context.directionOverride = dravik::CornerDirection::right;
    model.updateContext(context);
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::right);
    EXPECT_EQ(model.report()->context.kneePlacements, std::nullopt);
    EXPECT_EQ(model.report()->effectiveCornerDirection, dravik::CornerDirection::right);
}

TEST_F(ModelTest, NavigationStaysWithinTheSessionAndDecodesOnlyPhotosThatChanged) {
    const SessionFiles session = openBundled();
    model.selectFrame(3); // one past the last frame
    model.selectFrame(-1);
    EXPECT_EQ(model.activeFrameID(), alex3);

    model.selectPair("turn-5");
    EXPECT_EQ(model.activeFrameID(), alex5);
    model.setCompare(true);
    EXPECT_FALSE(model.compare());
    EXPECT_EQ(model.message(), "No reference rider exists for this photograph. Single mode "
                               "remains available.");

    model.selectPair("turn-3");
    const auto shown = model.images().at(alex3).image.cacheKey();
    model.setCompare(true); // the photo on screen stays; the reference rider's is decoded
    EXPECT_EQ(model.images().at(alex3).image.cacheKey(), shown);
    EXPECT_EQ(model.visibleIDs(), (std::vector<std::string>{alex3, sam3}));
    EXPECT_EQ(model.images().size(), 2u);
    EXPECT_EQ(model.report()->pairID, "turn-3");

    // A photo replaced while on screen is read again, and its new hash refuses the move.
    fs::copy_file(session.folder / "turn-5-alex.jpg", session.folder / "turn-3-alex.jpg",
                  fs::copy_options::overwrite_existing);
    model.setCompare(false);
    EXPECT_TRUE(model.error()); // the photo's sentence is the core's
    EXPECT_TRUE(model.compare());
    EXPECT_EQ(model.images().at(alex3).image.cacheKey(), shown);

    model.clearError();
    model.activate(sam3);
    EXPECT_EQ(model.activeFrameID(), sam3);
    model.activate(alex5); // not on screen
    EXPECT_EQ(model.activeFrameID(), sam3);
    model.setCompare(false);
    EXPECT_EQ(model.visibleIDs(), std::vector<std::string>{sam3});
    EXPECT_EQ(model.images().size(), 1u);
    ASSERT_NE(model.report(), nullptr); // Single mode keeps the pair's feedback
    EXPECT_EQ(model.report()->pairID, "turn-3");
}

} // namespace tessary::test
