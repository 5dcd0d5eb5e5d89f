// SPDX-License-Identifier: Apache-2.0
#include "dravik/joints.h"
#include "inspector/joint_inspector.h"
#include "lean/lean_review_view.h"
#include "photo_area/photo_area.h"
#include "photo_area/status_row.h"
#include "samplegen.h"
#include "shell/reviewer_view.h"
#include "toolbar/review_toolbar.h"
#include "toolbar/segmented_picker.h"
#include "views_fixture.h"

#include <QPushButton>
#include <QToolButton>

namespace tessary::test {

using dravik::JointReviewState;

class ShellInspectorTest : public ShellTest {
  protected:
    JointInspector& inspector() const { return *window.view()->jointInspector(); }
    std::string rowState(const std::string& joint) const {
        const auto index = dravik::InspectionRenderer::jointID(joint);
        return text(secondLine(inspector().jointList()->item(*index)));
    }
};

TEST_F(ShellInspectorTest, RowsShowEachJointsStateAndTheButtonsFollowIt) {
    QListWidget* list = inspector().jointList();
    ASSERT_EQ(list->count(), 19);
    EXPECT_EQ(text(inspector().heading()->text()), "Joint");
    EXPECT_EQ(rowState("nose"), ""); // no photo: one line, nothing to press
    for (QPushButton* button : {inspector().placeButton(), inspector().confirmButton(),
                                inspector().obscuredButton(), inspector().uncertainButton()})
        EXPECT_FALSE(button->isEnabled()) << text(button->text());

    openInJointMode();
    EXPECT_EQ(text(inspector().heading()->text()),
              frameOf(alex3).riderDisplayName + " · active rider");
    clickRow(list, *dravik::InspectionRenderer::jointID("right_knee"));
    EXPECT_EQ(model.selected(), "right_knee");
    QTest::mouseClick(inspector().uncertainButton(), Qt::LeftButton);
    EXPECT_EQ(editOf(alex3, "right_knee").value().state, JointReviewState::uncertain);
    EXPECT_EQ(rowState("right_knee"), dravik::label(JointReviewState::uncertain));
    EXPECT_TRUE(inspector().confirmButton()->isEnabled());
    // Obscured leaves no point, so there is nothing left to confirm.
    QTest::mouseClick(inspector().obscuredButton(), Qt::LeftButton);
    EXPECT_EQ(editOf(alex3, "right_knee")->state, JointReviewState::obscured);
    EXPECT_EQ(rowState("right_knee"), dravik::label(JointReviewState::obscured));
    EXPECT_FALSE(inspector().confirmButton()->isEnabled());
    EXPECT_EQ(rowState("nose"), "Raw · unreviewed");
}

TEST_F(ShellInspectorTest, AJointTheDetectorMissedMustBePlacedBeforeItCanBeConfirmed) {
    openInJointMode();
    const std::string frameID(samplegen::bundledMissingFrame);
    const std::string joint(samplegen::bundledMissingJoint);
    model.selectFrame(indexOf(frameID));
    auto settings = model.settings(frameID);
    settings.kind = std::string(samplegen::bundledMissingKind);
    model.setSettings(frameID, settings);
    model.setSelected(joint);
    QApplication::processEvents();
    EXPECT_EQ(rowState(joint), "No detection · place manually");
    EXPECT_FALSE(inspector().confirmButton()->isEnabled());
    EXPECT_TRUE(inspector().obscuredButton()->isEnabled());

    QLabel* help = window.view()->statusRow()->helpText();
    EXPECT_EQ(text(help->text()), "Drag to correct; arrows move 1 source pixel, Shift moves 10.");
    QTest::mouseClick(inspector().placeButton(), Qt::LeftButton);
    EXPECT_TRUE(model.placing());
    EXPECT_EQ(text(inspector().placeButton()->text()), "Cancel placement");
    EXPECT_EQ(text(help->text()),
              "Click the active photo to place the selected joint. Escape cancels.");
    model.edit(dravik::Point2{500, 400}, JointReviewState::corrected, model.target(frameID, joint));
    QApplication::processEvents();
    QTest::mouseClick(inspector().confirmButton(), Qt::LeftButton);
    EXPECT_EQ(editOf(frameID, joint)->state, JointReviewState::confirmedVisible);

    window.view()->toolbar()->editPicker()->segment(true)->click();
    EXPECT_EQ(text(help->text()),
              "Drag yellow wheel or cyan reference handles. Release saves; Escape cancels.");
}

TEST_F(ShellInspectorTest, TheInspectorColumnFollowsTheEditModeAndCanBeHidden) {
    openInJointMode();
    ReviewerView& view = *window.view();
    ASSERT_EQ(view.inspectorColumn(), view.jointInspector());
    view.toolbar()->editPicker()->segment(true)->click();
    ASSERT_EQ(view.inspectorColumn(), view.leanPanel());

    // Hidden, no column is laid out in either edit mode, and the photos take the room.
    const int centralWidth = view.photoArea()->width();
    QTest::mouseClick(view.toolbar()->inspectorButton(), Qt::LeftButton);
    EXPECT_FALSE(model.inspectorVisible());
    EXPECT_EQ(view.inspectorColumn(), nullptr);
    QApplication::processEvents();
    EXPECT_GT(view.photoArea()->width(), centralWidth);
    view.toolbar()->editPicker()->segment(false)->click();
    EXPECT_EQ(view.inspectorColumn(), nullptr);
    EXPECT_FALSE(view.jointInspector()->isVisible());
    QTest::mouseClick(view.toolbar()->inspectorButton(), Qt::LeftButton);
    EXPECT_EQ(view.inspectorColumn(), view.jointInspector());
}

} // namespace tessary::test
