// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "model_fixture.h"

#include <fstream>

namespace tessary::test {

namespace {

using dravik::LeanHandle;
using dravik::Point2;

dravik::LeanPairContext allChecks() {
    dravik::LeanPairContext context;
    context.sameWheelCue = context.cameraViewsComparable = context.wheelHeadingsComparable =
        context.referenceComparable = context.cameraRollComparable = context.similarSpeed = true;
    return context;
}

} // namespace

TEST_F(ModelTest, LinesArePlacedWithTwoClicksAndOnlyCurrentTargetsCommit) {
    const SessionFiles session = openBundled();
    model.setLeanMode(true);
    model.setShowLean(false);
    model.beginLeanPlacement(false);
    EXPECT_EQ(model.leanPlacement(), LeanHandle::wheelA);
    EXPECT_TRUE(model.showLean());

    model.placeLean(Point2{10, 10}, sam3); // not the active photo
    EXPECT_EQ(model.leanPlacementStart(), std::nullopt);
    model.placeLean(Point2{100, 100}, alex3);
    EXPECT_EQ(model.leanPlacementStart(), (Point2{100, 100}));
    EXPECT_TRUE(model.hasPreview());
    model.placeLean(Point2{10, 10}, sam3); // a second click elsewhere keeps the placement armed
    EXPECT_EQ(model.leanPlacement(), LeanHandle::wheelA);
    EXPECT_EQ(model.leanPlacementStart(), (Point2{100, 100}));
    model.placeLean(Point2{120, 300}, alex3);

    const dravik::LeanLine wheel{{100, 100}, {120, 300}, 3.0};
    const dravik::LeanAnnotation* stored = model.document()->leanAnnotation(alex3);
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->wheel, wheel);
    EXPECT_EQ(stored->reference, std::nullopt);
    EXPECT_EQ(model.leanPlacement(), std::nullopt);
    EXPECT_EQ(model.leanPlacementStart(), std::nullopt);
    EXPECT_FALSE(model.hasPreview());
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(session.saved(), *model.document());

    // Only a current target commits, and an equal annotation records nothing.
    const auto revision = model.document()->revision();
    const dravik::LeanAnnotation current = *stored;
    model.commitLean(current, model.leanTarget(alex3));
    dravik::LeanAnnotation moved = current;
    moved.move(LeanHandle::wheelB, Point2{130, 300});
    const auto stale = model.leanTarget(alex3);
    model.cancelInteraction();
    model.commitLean(moved, stale);
    model.commitLean(moved, model.leanTarget(sam3)); // not on screen
    model.setLeanMode(false);
    model.commitLean(moved, model.leanTarget(alex3)); // lean mode is off
    EXPECT_EQ(model.document()->revision(), revision);
    EXPECT_TRUE(model.showLean()); // leaving lean mode keeps the lines visible

    // An annotation that does not fit the photo is refused with the core's sentence.
    model.setLeanMode(true);
    dravik::LeanAnnotation offPhoto = current;
    offPhoto.move(LeanHandle::wheelA, Point2{-5000, 100});
    model.commitLean(offPhoto, model.leanTarget(alex3));
    EXPECT_TRUE(model.error());
    EXPECT_EQ(model.document()->revision(), revision);
    model.commitLean(moved, model.leanTarget(alex3));
    EXPECT_EQ(model.document()->leanAnnotation(alex3)->wheel, moved.wheel);

    placeLean(alex3, true, Point2{50, 500}, Point2{400, 510}); // the wheel line stays
    EXPECT_EQ(model.document()->leanAnnotation(alex3)->reference,
              (dravik::LeanLine{{50, 500}, {400, 510}, 3.0}));
    EXPECT_EQ(model.document()->leanAnnotation(alex3)->wheel, moved.wheel);
    EXPECT_EQ(model.undoStack().size(), 3u);
}

TEST_F(ModelTest, EditingAProposalStoresItAndNudgesNeedAPoint) {
    const SessionFiles session = bundledSession(temp.path() / "proposed");
    const dravik::ReviewFrame frame = session.raw().frames()[2];
    const dravik::LeanAnnotation proposal(frame, dravik::LeanLine{{200, 200}, {220, 400}, 4.0},
                                          "detector");
    std::ofstream(session.folder / "lean-proposals.json")
        << dravik::encodeLeanProposals({proposal});
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    ASSERT_TRUE(model.leanMode());
    EXPECT_EQ(model.lean(alex5), proposal);
    EXPECT_EQ(model.document()->leanAnnotation(alex5), nullptr);

    model.setSelectedLeanHandle(LeanHandle::referenceA);
    model.nudgeLean(1, 0); // the proposal has no reference line
    EXPECT_EQ(model.document()->leanAnnotation(alex5), nullptr);
    EXPECT_TRUE(model.undoStack().empty());

    model.setSelectedLeanHandle(LeanHandle::wheelB);
    model.nudgeLean(-10, 1);
    const dravik::LeanAnnotation* stored = model.document()->leanAnnotation(alex5);
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->wheel, (dravik::LeanLine{{200, 200}, {210, 401}, 4.0}));
    EXPECT_EQ(stored->provenance, "detector");
    EXPECT_EQ(model.lean(alex5), *stored);

    model.undo(); // back to the proposal, which is shown but not stored
    EXPECT_EQ(model.document()->leanAnnotation(alex5), nullptr);
    EXPECT_EQ(model.lean(alex5), proposal);
}

TEST_F(ModelTest, AChangedLineWithdrawsTheApprovalUntilUndone) {
    openBundled();
    model.setLeanMode(true);
    model.setCompare(true);
    placeLean(alex3, false, Point2{100, 100}, Point2{130, 300});
    placeLean(alex3, true, Point2{50, 500}, Point2{400, 510});
    model.activate(sam3);
    placeLean(sam3, false, Point2{300, 100}, Point2{310, 300});
    placeLean(sam3, true, Point2{50, 600}, Point2{400, 600});

    model.updateLeanContext(allChecks(), true);
    model.updateLeanContext(allChecks(), true); // the same approval again records nothing
    EXPECT_EQ(model.undoStack().size(), 5u);
    const dravik::LeanPairContext approved = *model.document()->leanPairContext("turn-3");
    ASSERT_TRUE(approved.approvalDigest);

    const dravik::LeanAnnotation before = *model.lean(sam3);
    model.setSelectedLeanHandle(LeanHandle::referenceB);
    model.nudgeLean(0, 10);
    // The approval and its checks go; what the reviewer reported about speed stays.
    const dravik::LeanPairContext withdrawn = *model.document()->leanPairContext("turn-3");
    EXPECT_EQ(withdrawn.approvalDigest, std::nullopt);
    EXPECT_FALSE(withdrawn.sameWheelCue || withdrawn.cameraViewsComparable ||
                 withdrawn.wheelHeadingsComparable || withdrawn.referenceComparable ||
                 withdrawn.cameraRollComparable);
    EXPECT_TRUE(withdrawn.similarSpeed);

    model.activate(alex3);
    model.undo();
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_EQ(*model.lean(sam3), before);
    EXPECT_EQ(*model.document()->leanPairContext("turn-3"), approved);

    model.undo(); // the approval itself
    EXPECT_EQ(model.document()->leanPairContext("turn-3"), nullptr);

    // Lean checks need a photo pair with a reference rider.
    model.selectPair("turn-5");
    const auto revision = model.document()->revision();
    model.updateLeanContext(allChecks());
    EXPECT_EQ(model.document()->revision(), revision);
}

} // namespace tessary::test
