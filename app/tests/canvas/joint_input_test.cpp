// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"
#include "dravik/joints.h"

#include <QPointer>
#include <QTest>

namespace tessary::test {
namespace {

using dravik::JointReviewState;
using dravik::Point2;

TEST_F(CanvasTest, APressReachesTheNearestJointWithin14PointsTiesToTheFirstListed) {
    // right_shoulder comes before left_knee in the skeleton, after it alphabetically; both sit
    // in a corner far from the rider.
    for (const char* joint : {"left_knee", "right_shoulder"})
        model.edit(Point2{1150, 60}, JointReviewState::corrected, model.target(alex3, joint));
    model.setSelected("nose");
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    const QPointF corner = jointOn(*canvas, "left_knee");

    // Just out of reach, straight and diagonally (9.9 along each axis is 14.0007 away).
    for (QPointF probe : {corner - QPointF(14.1, 0), corner + QPointF(9.9, 9.9)}) {
        dragThrough(canvas, {probe, probe + QPointF(30, 0)});
        EXPECT_EQ(model.selected(), "nose");
    }
    dragThrough(canvas, {exactlyAway(corner, 14.0)});
    EXPECT_EQ(model.selected(), "right_shoulder");
    EXPECT_EQ(model.undoStack().size(), 2u) << "a click without movement saves nothing";
}

TEST_F(CanvasTest, ADragPreviewsAndCommitsOnceOnRelease) {
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    const Point2 start = displayed(alex3, "right_knee");
    const QPointF grab = jointOn(*canvas, "right_knee") + QPointF(0.4, -0.3);
    pressAt(canvas, grab);
    EXPECT_EQ(model.selected(), "right_knee");
    moveTo(canvas, grab + QPointF(10, 0));
    moveTo(canvas, grab + QPointF(25, -12));
    EXPECT_EQ(model.previewTarget(), model.target(alex3, "right_knee"));
    EXPECT_EQ(model.document()->revision(), 0);
    releaseAt(canvas, grab + QPointF(25, -12));

    // The joint travelled with the mouse, whatever part of the marker was grabbed.
    const auto edit = editOf(alex3, "right_knee").value();
    EXPECT_EQ(edit.state, JointReviewState::corrected);
    EXPECT_NEAR(edit.point->x, start.x + 25 / canvas->scale(), 1e-9);
    EXPECT_NEAR(edit.point->y, start.y - 12 / canvas->scale(), 1e-9);
    EXPECT_EQ(session.saved().revision(), 1);
    EXPECT_EQ(model.previewTarget(), std::nullopt);

    // Back where it started: nothing to save, and no preview left behind, for a reviewed joint
    // and for one nobody touched (which an edit at the same place would mark corrected).
    for (const char* joint : {"right_knee", "nose"}) {
        const auto before = editOf(alex3, joint);
        const QPointF again = jointOn(*canvas, joint) + QPointF(3.4, -2.2);
        dragThrough(canvas, {again, again + QPointF(40, 40), again});
        EXPECT_EQ(editOf(alex3, joint), before) << joint;
    }
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(model.previewTarget(), std::nullopt);
}

TEST_F(CanvasTest, ADragWhoseTargetTurnsStaleIsDroppedAndItsCanvasRetired) {
    auto shown = showFrame(alex3);
    QPointer<JointCanvasView> canvas = shown->canvas();
    const QPointF grab = jointOn(*canvas, "right_knee");
    pressAt(canvas, grab);
    moveTo(canvas, grab + QPointF(20, 0));
    model.cancelInteraction(); // what a change of frame, pair or mode does
    EXPECT_EQ(shown->canvas(), canvas.data()) << "the drag's canvas stays until the release";
    moveTo(canvas, grab + QPointF(40, 0));
    EXPECT_EQ(model.previewTarget(), std::nullopt);
    releaseAt(canvas, grab + QPointF(40, 0));
    EXPECT_TRUE(model.undoStack().empty());
    EXPECT_FALSE(fs::exists(session.review()));

    // A fresh canvas took over; the retired one ignores presses.
    ASSERT_TRUE(canvas);
    ASSERT_NE(shown->canvas(), canvas.data());
    model.setSelected("nose");
    dragThrough(canvas, {grab});
    EXPECT_EQ(model.selected(), "nose");
    dragThrough(shown->canvas(), {grab});
    EXPECT_EQ(model.selected(), "right_knee");
}

TEST_F(CanvasTest, PlacingArrowsAndEscapeWorkOnTheSelectedJoint) {
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    // Placing puts the selected joint where clicked, even on another joint's marker.
    model.setSelected("left_ankle");
    model.setPlacing(true);
    const QPointF onKnee = jointOn(*canvas, "right_knee") + QPointF(0.25, 0.5);
    dragThrough(canvas, {onKnee});
    EXPECT_EQ(model.selected(), "left_ankle");
    EXPECT_EQ(editOf(alex3, "left_ankle"),
              (dravik::JointEdit{JointReviewState::corrected, sourceOf(*canvas, onKnee)}));
    EXPECT_FALSE(model.placing());
    model.setPlacing(true);
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_FALSE(model.placing());

    // Arrows move by source pixels, ten with Shift; other keys are not the canvas's.
    model.setSelected("right_knee");
    const Point2 start = displayed(alex3, "right_knee");
    QTest::keyClick(canvas, Qt::Key_Left);
    EXPECT_EQ(displayed(alex3, "right_knee"), (Point2{start.x - 1, start.y}));
    QTest::keyClick(canvas, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(canvas, Qt::Key_Up);
    QTest::keyClick(canvas, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(canvas, Qt::Key_A);
    EXPECT_EQ(displayed(alex3, "right_knee"), (Point2{start.x + 9, start.y + 9}));
    EXPECT_EQ(model.undoStack().size(), 5u);

    // Escape drops a drag in progress; its release saves nothing.
    const QPointF grab = jointOn(*canvas, "right_knee");
    pressAt(canvas, grab);
    moveTo(canvas, grab + QPointF(30, 30));
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_EQ(model.previewTarget(), std::nullopt);
    moveTo(canvas, grab + QPointF(35, 30));
    releaseAt(canvas, grab + QPointF(35, 30));
    EXPECT_EQ(model.undoStack().size(), 5u);
}

} // namespace
} // namespace tessary::test
