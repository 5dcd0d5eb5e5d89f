// SPDX-License-Identifier: Apache-2.0
#include "common/collapsible_section.h"
#include "framed_photo_canvas.h"
#include "joint_canvas_view.h"
#include "pair/frame_pane.h"
#include "shell/reviewer_view.h"
#include "views_fixture.h"
#include "wheel.h"

#include <QScrollArea>
#include <QScrollBar>

namespace tessary::test {

using namespace Qt::StringLiterals;

namespace {

void wheelOver(QWidget* widget, int delta) {
    wheelAt(widget, QRectF(widget->rect()).center(), delta);
}

QScrollArea* scrollAreaAround(QWidget* widget) {
    for (QWidget* outer = widget->parentWidget(); outer; outer = outer->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(outer))
            return area;
    return nullptr;
}

// The pickers a reviewer meets in the feedback panels: inside a scrolling area.
std::vector<QComboBox*> scrolledPickers(const QWidget& root) {
    std::vector<QComboBox*> pickers;
    for (QComboBox* picker : root.findChildren<QComboBox*>())
        if (picker->isVisible() && scrollAreaAround(picker))
            pickers.push_back(picker);
    return pickers;
}

} // namespace

// A wheel notch over an answer in a scrolling panel scrolls the panel and changes no answer;
// once the picker has the focus, it is the picker's.
TEST_F(ShellTest, TheWheelOverAnUnfocusedPickerScrollsThePanelAndChangesNothing) {
    const SessionFiles session = openInJointMode();
    model.setCompare(true);
    window.resize(1000, 650);
    QApplication::processEvents();
    for (CollapsibleSection* section : window.findChildren<CollapsibleSection*>())
        section->setExpanded(true);
    QApplication::processEvents();
    const std::vector<QComboBox*> pickers = scrolledPickers(window);
    ASSERT_GE(pickers.size(), 3u);
    const std::string before = readText(session.review());
    const std::int64_t revision = model.document()->revision();
    for (QComboBox* picker : pickers) {
        const int index = picker->currentIndex();
        QScrollBar* scroll = scrollAreaAround(picker)->verticalScrollBar();
        const int top = scroll->value();
        wheelOver(picker, -120);
        EXPECT_EQ(picker->currentIndex(), index) << text(picker->accessibleName());
        EXPECT_FALSE(picker->hasFocus());
        EXPECT_TRUE(scroll->value() > top || scroll->value() == scroll->maximum());
    }
    EXPECT_EQ(model.document()->revision(), revision);
    EXPECT_EQ(readText(session.review()), before);

    QComboBox* picker = pickers.front();
    picker->setFocus(Qt::TabFocusReason);
    const int index = picker->currentIndex();
    wheelOver(picker, index + 1 < picker->count() ? -120 : 120);
    EXPECT_NE(picker->currentIndex(), index);
}

// In Compare with wheel lean, a press on the other pane's handle activates that pane and drags
// in the same press, and no photo moves on the screen.
TEST_F(ShellTest, ADragOnTheInactivePaneCommitsOnceAndThePhotosStayPut) {
    openBundled();
    model.setLeanMode(true);
    model.setCompare(true);
    model.activate(sam3);
    placeLean(sam3, false, {400, 700}, {400, 100});
    model.activate(alex3);
    QApplication::processEvents();
    ASSERT_EQ(model.activeFrameID(), alex3);
    const std::int64_t revision = model.document()->revision();
    const std::size_t undoDepth = model.undoStack().size();

    FramePane* pane = nullptr;
    for (FramePane* candidate : window.findChildren<FramePane*>())
        if (candidate->frameID() == sam3 && candidate->isVisible())
            pane = candidate;
    ASSERT_NE(pane, nullptr);
    JointCanvasView* canvas = pane->findChild<FramedPhotoCanvas*>()->canvas();
    ASSERT_NE(canvas, nullptr);
    const QRect placed(pane->mapTo(&window, QPoint()), pane->size());
    const dravik::Point2 top = model.lean(sam3)->wheel->b;
    const auto shown =
        dravik::ReviewCoordinates::display(top, frameOf(sam3).panel, canvas->scale());
    const QPoint handle(qRound(shown.x), qRound(shown.y));

    QTest::mousePress(canvas, Qt::LeftButton, {}, handle);
    QApplication::processEvents();
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_EQ(QRect(pane->mapTo(&window, QPoint()), pane->size()), placed);
    QMouseEvent move(QEvent::MouseMove, handle + QPointF(30, 0), canvas->mapToGlobal(handle),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(canvas, &move);
    EXPECT_TRUE(model.hasPreview());
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, handle + QPoint(30, 0));
    QApplication::processEvents();

    EXPECT_EQ(model.document()->revision(), revision + 1);
    EXPECT_EQ(model.undoStack().size(), undoDepth + 1);
    EXPECT_NEAR(model.lean(sam3)->wheel->b.x, top.x + 30 / canvas->scale(), 1e-6);
    EXPECT_EQ(QRect(pane->mapTo(&window, QPoint()), pane->size()), placed);
    EXPECT_TRUE(showsText(window, u"Wheel lean evidence"_s)) << "under the photos";
}

// The keyboard of a photo tool: Page Down and Page Up step through every photo once, in the
// sidebar's order; Ctrl + plus and minus zoom the active photo; Ctrl + Q closes the window.
TEST_F(ShellTest, PageKeysStepThroughEveryPhotoAndCtrlKeysZoomAndQuit) {
    openInJointMode();
    EXPECT_EQ(text(window.windowTitle()), "Joint Review — Sample session");
    std::vector<std::string> visited{*model.activeFrameID()};
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(&window, Qt::Key_PageDown);
        if (*model.activeFrameID() != visited.back())
            visited.push_back(*model.activeFrameID());
    }
    std::vector<std::string> order;
    for (const dravik::ReviewFrame& frame : model.document()->frames())
        order.push_back(frame.id);
    EXPECT_EQ(visited, order);
    QTest::keyClick(&window, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(model.activeFrameID(), order[order.size() - 2]);

    FramePane* pane = window.view()->activePane();
    ASSERT_NE(pane, nullptr);
    QTest::keyClick(&window, Qt::Key_Plus, Qt::ControlModifier);
    QApplication::processEvents();
    EXPECT_NEAR(pane->displayedZoom(), 1.25, 1e-9);
    QTest::keyClick(&window, Qt::Key_Minus, Qt::ControlModifier);
    QApplication::processEvents();
    EXPECT_NEAR(pane->displayedZoom(), 1.0, 1e-9);

    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    QApplication::processEvents();
    EXPECT_FALSE(window.isVisible());
}

} // namespace tessary::test
