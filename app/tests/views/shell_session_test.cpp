// SPDX-License-Identifier: Apache-2.0
#include "joint_canvas_view.h"
#include "shell/reviewer_view.h"
#include "sidebar/sidebar.h"
#include "views_fixture.h"

#include <QMouseEvent>

namespace tessary::test {

namespace {

void mouse(QWidget* widget, QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
    QMouseEvent event(type, at, widget->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

} // namespace

// A reviewer's session in the window, closed and opened again in a new window on a new model:
// every correction is there, none that was undone, at the revision last saved.
TEST_F(ShellTest, AReviewMadeInTheWindowIsThereWhenTheSessionIsOpenedAgain) {
    const SessionFiles session = openInJointMode();
    model.setSelected("nose");
    QTest::mouseClick(buttonNamed(*window.view(), "Mark uncertain"), Qt::LeftButton);

    JointCanvasView* canvas = nullptr;
    for (JointCanvasView* shown : window.findChildren<JointCanvasView*>())
        if (shown->isVisible() && shown->frameID() == alex3)
            canvas = shown;
    ASSERT_NE(canvas, nullptr);
    const dravik::ReviewFrame& frame = frameOf(alex3);
    const dravik::Point2 hip = frame.displayPoint("right_hip", model.settings(alex3).kind).value();
    const dravik::Point2 at = dravik::ReviewCoordinates::display(hip, frame.panel, canvas->scale());
    const QPointF from(at.x, at.y), to = from + QPointF(12, 0);
    mouse(canvas, QEvent::MouseButtonPress, from, Qt::LeftButton);
    mouse(canvas, QEvent::MouseMove, to, Qt::LeftButton);
    mouse(canvas, QEvent::MouseButtonRelease, to, Qt::NoButton);
    const auto dragged = editOf(alex3, "right_hip");
    ASSERT_TRUE(dragged && dragged->point);
    EXPECT_NEAR(dragged->point->x - hip.x, 12 / canvas->scale(), 1e-6);

    model.setSelected("left_knee");
    QTest::mouseClick(buttonNamed(*window.view(), "Confirm visible location"), Qt::LeftButton);
    ASSERT_TRUE(editOf(alex3, "left_knee"));
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    const std::int64_t revision = model.document()->revision();
    ASSERT_EQ(model.savedRevision(), revision);
    const auto edits = frameOf(alex3).edits;
    ASSERT_EQ(edits.size(), 2u);

    ReviewerModel reopened(Bundle(temp.path() / "bundle"), chooser);
    ReviewWindow second(reopened);
    second.show();
    reopened.load(session.manifest, session.results);
    QApplication::processEvents();
    ASSERT_EQ(reopened.error(), std::nullopt);
    EXPECT_TRUE(reopened.message().starts_with("Saved review reopened \u00b7 revision " +
                                               std::to_string(revision)))
        << reopened.message();
    EXPECT_EQ(reopened.document()->frame(alex3)->edits, edits);
    EXPECT_EQ(text(secondLine(second.view()->sidebar()->photoList()->item(0))), "2 / 19 reviewed");
}

} // namespace tessary::test
