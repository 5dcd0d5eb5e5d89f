// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"

#include <QTest>

namespace tessary::test {
namespace {

using dravik::LeanHandle;
using dravik::Point2;

TEST_F(CanvasTest, TwoClicksPlaceALineAheadOfHandleDragsAndArrowsMoveTheHandle) {
    openWithCompanions();
    model.setSelectedLeanHandle(LeanHandle::referenceB);
    model.beginLeanPlacement(false);
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();

    // On top of a proposed handle: the placement still wins.
    const QPointF first = viewOf(*canvas, model.lean(alex3)->wheel->a) + QPointF(2.5, 0);
    const QPointF second = first + QPointF(60.5, -200.25);
    dragThrough(canvas, {first});
    EXPECT_EQ(model.leanPlacementStart(), sourceOf(*canvas, first));
    EXPECT_EQ(model.selectedLeanHandle(), LeanHandle::referenceB);
    dragThrough(canvas, {second});
    ASSERT_NE(model.document()->leanAnnotation(alex3), nullptr);
    EXPECT_EQ(model.document()->leanAnnotation(alex3)->wheel,
              (dravik::LeanLine{sourceOf(*canvas, first), sourceOf(*canvas, second), 3.0}));
    EXPECT_EQ(model.undoStack().size(), 1u);

    // Arrows move the selected handle, not a joint; Escape ends a placement.
    const Point2 start = model.lean(alex3)->reference->b;
    QTest::keyClick(canvas, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(canvas, Qt::Key_Up);
    EXPECT_EQ(model.lean(alex3)->reference->b, (Point2{start.x + 10, start.y - 1}));
    EXPECT_TRUE(frameOf(alex3).edits.empty());
    model.beginLeanPlacement(true);
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_EQ(model.leanPlacement(), std::nullopt);
}

TEST_F(CanvasTest, APlacementIsNotFinishedOnAnotherFrame) {
    model.setCompare(true);
    model.setLeanMode(true);
    model.beginLeanPlacement(true);
    auto rider = showFrame(alex3, {700, 450});
    auto reference = showFrame(sam3, {700, 450});
    QTest::mouseClick(rider->canvas(), Qt::LeftButton, {}, {300, 200});
    ASSERT_TRUE(model.leanPlacementStart());
    QTest::mouseClick(reference->canvas(), Qt::LeftButton, {}, {350, 100});
    EXPECT_TRUE(model.document()->leanAnnotations().empty());
    EXPECT_EQ(model.leanPlacementStart(), std::nullopt);
}

TEST_F(CanvasTest, AHandleDragReaches18PointsAndCommitsOnRelease) {
    openWithCompanions(); // opens in lean mode with the markers hidden
    model.setSelectedLeanHandle(LeanHandle::referenceA);
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    const dravik::LeanAnnotation proposal = model.lean(alex3).value();
    const QPointF handle = viewOf(*canvas, proposal.wheel->b);

    const QPointF outside = handle + QPointF(0, 18.1);
    dragThrough(canvas, {outside, outside + QPointF(10, 0)});
    EXPECT_EQ(model.selectedLeanHandle(), LeanHandle::referenceA);
    EXPECT_EQ(model.leanPreviewTarget(), std::nullopt);

    const QPointF edge = exactlyAway(handle, 18.0);
    pressAt(canvas, edge);
    EXPECT_EQ(model.selectedLeanHandle(), LeanHandle::wheelB);
    moveTo(canvas, edge + QPointF(15, 10));
    moveTo(canvas, edge + QPointF(30, 20));
    EXPECT_EQ(model.leanPreviewTarget(), model.leanTarget(alex3));
    EXPECT_EQ(model.document()->leanAnnotation(alex3), nullptr);
    releaseAt(canvas, edge + QPointF(30, 20));

    // Only the grabbed endpoint moved, with the mouse.
    const dravik::LeanAnnotation* stored = model.document()->leanAnnotation(alex3);
    ASSERT_NE(stored, nullptr);
    EXPECT_NEAR(stored->wheel->b.x, proposal.wheel->b.x + 30 / canvas->scale(), 1e-9);
    EXPECT_NEAR(stored->wheel->b.y, proposal.wheel->b.y + 20 / canvas->scale(), 1e-9);
    dravik::LeanAnnotation expected = proposal;
    expected.move(LeanHandle::wheelB, stored->wheel->b);
    EXPECT_EQ(*stored, expected);
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(model.leanPreviewTarget(), std::nullopt);
}

} // namespace
} // namespace tessary::test
