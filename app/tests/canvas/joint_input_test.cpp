#include "canvas_fixture.h"
#include "dravik/joints.h"

#include <QPointer>
#include <QTest>
#include <cmath>

namespace tessary::test {
namespace {

using dravik::JointReviewState;
using dravik::Point2;

const Point2 emptyCorner{1150, 60}; // far from the rider in every sample photo

TEST_F(CanvasTest, APressReachesTheNearestJointWithin14PointsTiesToTheFirstListed) {
    // right_shoulder comes before left_knee in the skeleton, after it alphabetically.
    placeJoint(alex3, "left_knee", emptyCorner);
    placeJoint(alex3, "right_shoulder", emptyCorner);
    model.setSelected("nose");
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    const QPointF corner = jointOn(*canvas, "left_knee");

    // Just out of reach, straight and diagonally (9.9 along each axis is 14.0007 away).
    for (QPointF probe : {corner - QPointF(14.1, 0), corner + QPointF(9.9, 9.9)}) {
        pressAt(canvas, probe);
        moveTo(canvas, probe + QPointF(30, 0));
        releaseAt(canvas, probe + QPointF(30, 0));
        EXPECT_EQ(model.selected(), "nose");
    }
    const QPointF edge = exactlyAway(corner, 14.0);
    pressAt(canvas, edge);
    releaseAt(canvas, edge);
    EXPECT_EQ(model.selected(), "right_shoulder");
    EXPECT_EQ(model.undoStack().size(), 2u) << "a click without movement saves nothing";
}

TEST_F(CanvasTest, ADragPreviewsAndCommitsOnceOnRelease) {
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    const Point2 start = displayed(alex3, "right_knee");
    const QPoint grab = jointOn(*canvas, "right_knee").toPoint();

    QTest::mousePress(canvas, Qt::LeftButton, {}, grab);
    EXPECT_EQ(model.selected(), "right_knee");
    QTest::mouseMove(canvas, grab + QPoint(10, 0));
    QTest::mouseMove(canvas, grab + QPoint(25, -12));
    EXPECT_EQ(model.previewTarget(), model.target(alex3, "right_knee"));
    EXPECT_EQ(model.document()->revision(), 0);
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, grab + QPoint(25, -12));

    // The joint travelled with the mouse, whatever part of the marker was grabbed.
    const auto edit = editOf(alex3, "right_knee").value();
    EXPECT_EQ(edit.state, JointReviewState::corrected);
    EXPECT_NEAR(edit.point->x, start.x + 25 / canvas->scale(), 1e-9);
    EXPECT_NEAR(edit.point->y, start.y - 12 / canvas->scale(), 1e-9);
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(session.saved().revision(), 1);
    EXPECT_EQ(model.previewTarget(), std::nullopt);

    // Back where it started: nothing to save, and no preview left behind.
    const QPoint again = (jointOn(*canvas, "right_knee") + QPointF(3.4, -2.2)).toPoint();
    QTest::mousePress(canvas, Qt::LeftButton, {}, again);
    QTest::mouseMove(canvas, again + QPoint(40, 40));
    QTest::mouseMove(canvas, again);
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, again);
    EXPECT_EQ(editOf(alex3, "right_knee"), edit);
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(model.previewTarget(), std::nullopt);
}

TEST_F(CanvasTest, ADragWhoseTargetTurnsStaleIsDroppedAndItsCanvasRetired) {
    auto shown = showFrame(alex3);
    QPointer<JointCanvasView> canvas = shown->canvas();
    const QPoint grab = jointOn(*canvas, "right_knee").toPoint();
    QTest::mousePress(canvas, Qt::LeftButton, {}, grab);
    QTest::mouseMove(canvas, grab + QPoint(20, 0));
    model.cancelInteraction(); // what a change of frame, pair or mode does
    EXPECT_EQ(shown->canvas(), canvas.data()) << "the drag's canvas stays until the release";
    QTest::mouseMove(canvas, grab + QPoint(40, 0));
    EXPECT_EQ(model.previewTarget(), std::nullopt);
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, grab + QPoint(40, 0));
    EXPECT_TRUE(model.undoStack().empty());
    EXPECT_FALSE(fs::exists(session.review()));

    // A fresh canvas took over; the retired one ignores presses.
    ASSERT_TRUE(canvas);
    ASSERT_NE(shown->canvas(), canvas.data());
    model.setSelected("nose");
    QTest::mouseClick(canvas, Qt::LeftButton, {}, grab);
    EXPECT_EQ(model.selected(), "nose");
    QTest::mouseClick(shown->canvas(), Qt::LeftButton, {}, grab);
    EXPECT_EQ(model.selected(), "right_knee");
}

TEST_F(CanvasTest, PlacingPutsTheSelectedJointWhereClickedEvenOnAnotherMarker) {
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    model.setSelected("left_ankle");
    model.setPlacing(true);
    const QPointF onKnee = jointOn(*canvas, "right_knee") + QPointF(0.25, 0.5);
    pressAt(canvas, onKnee);
    releaseAt(canvas, onKnee);
    EXPECT_EQ(model.selected(), "left_ankle");
    EXPECT_EQ(editOf(alex3, "left_ankle"),
              (dravik::JointEdit{JointReviewState::corrected, sourceOf(*canvas, onKnee)}));
    EXPECT_FALSE(model.placing());
}

TEST_F(CanvasTest, ArrowsNudgeBySourcePixelsAndEscapeStopsPlacingAndDrags) {
    auto shown = showFrame(alex3);
    JointCanvasView* canvas = shown->canvas();
    model.setSelected("right_knee");
    const Point2 start = displayed(alex3, "right_knee");
    QTest::keyClick(canvas, Qt::Key_Left);
    EXPECT_EQ(displayed(alex3, "right_knee"), (Point2{start.x - 1, start.y}));
    QTest::keyClick(canvas, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(canvas, Qt::Key_Up);
    QTest::keyClick(canvas, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(canvas, Qt::Key_A); // not the canvas's
    EXPECT_EQ(displayed(alex3, "right_knee"), (Point2{start.x + 9, start.y + 9}));
    EXPECT_EQ(model.undoStack().size(), 4u);

    model.setPlacing(true);
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_FALSE(model.placing());
    const QPoint grab = jointOn(*canvas, "right_knee").toPoint();
    QTest::mousePress(canvas, Qt::LeftButton, {}, grab);
    QTest::mouseMove(canvas, grab + QPoint(30, 30));
    QTest::keyClick(canvas, Qt::Key_Escape);
    EXPECT_EQ(model.previewTarget(), std::nullopt);
    QTest::mouseMove(canvas, grab + QPoint(35, 30));
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, grab + QPoint(35, 30));
    EXPECT_EQ(model.undoStack().size(), 4u);
}

} // namespace
} // namespace tessary::test
