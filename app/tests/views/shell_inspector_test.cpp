#include "dravik/joints.h"
#include "lean/lean_review_view.h"
#include "samplegen.h"
#include "shell/joint_inspector.h"
#include "shell/photo_area.h"
#include "shell/review_toolbar.h"
#include "shell/reviewer_view.h"
#include "shell/segmented_picker.h"
#include "shell/sidebar.h"
#include "shell/status_row.h"
#include "shell_fixture.h"

#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace tessary::test {

namespace {

std::string text(const QString& value) {
    return value.toStdString();
}

const std::string missingJoint(samplegen::bundledMissingJoint);

} // namespace

class ShellInspectorTest : public ShellTest {
  protected:
    JointInspector& inspector() const { return *window.view()->jointInspector(); }
    QListWidgetItem* row(const std::string& joint) const {
        const auto index = dravik::InspectionRenderer::jointID(joint);
        return inspector().jointList()->item(*index);
    }
};

TEST_F(ShellInspectorTest, WithoutAPhotoEveryButtonIsDisabledAndRowsHaveOneLine) {
    EXPECT_EQ(text(inspector().heading()->text()), "Joint");
    ASSERT_EQ(inspector().jointList()->count(), 19);
    EXPECT_EQ(text(row("nose")->text()), "0  nose");
    EXPECT_EQ(text(row("pelvis")->text()), "18  pelvis");
    for (int i = 0; i < 19; ++i)
        EXPECT_TRUE(secondLine(inspector().jointList()->item(i)).isEmpty());
    EXPECT_EQ(text(inspector().placeButton()->text()), "Place selected joint");
    for (QPushButton* button : {inspector().placeButton(), inspector().confirmButton(),
                                inspector().obscuredButton(), inspector().uncertainButton()})
        EXPECT_FALSE(button->isEnabled()) << text(button->text());
}

TEST_F(ShellInspectorTest, RowsShowEachJointsReviewState) {
    openInJointMode();
    EXPECT_EQ(text(inspector().heading()->text()),
              frameOf(alex3).riderDisplayName + " · active rider");
    EXPECT_EQ(text(secondLine(row("nose"))), "Raw · unreviewed");

    clickRow(inspector().jointList(), *dravik::InspectionRenderer::jointID("right_knee"));
    EXPECT_EQ(model.selected(), "right_knee");
    QTest::mouseClick(inspector().uncertainButton(), Qt::LeftButton);
    ASSERT_TRUE(editOf(alex3, "right_knee"));
    EXPECT_EQ(editOf(alex3, "right_knee")->state, dravik::JointReviewState::uncertain);
    EXPECT_EQ(text(secondLine(row("right_knee"))),
              std::string(dravik::label(dravik::JointReviewState::uncertain)));
    EXPECT_TRUE(inspector().confirmButton()->isEnabled());

    QTest::mouseClick(inspector().obscuredButton(), Qt::LeftButton);
    EXPECT_EQ(editOf(alex3, "right_knee")->state, dravik::JointReviewState::obscured);
    EXPECT_EQ(text(secondLine(row("right_knee"))),
              std::string(dravik::label(dravik::JointReviewState::obscured)));
    // Obscured leaves no point, so there is nothing left to confirm.
    EXPECT_FALSE(inspector().confirmButton()->isEnabled());
    EXPECT_EQ(text(secondLine(row("nose"))), "Raw · unreviewed");
}

TEST_F(ShellInspectorTest, AJointTheDetectorMissedMustBePlacedBeforeItCanBeConfirmed) {
    openInJointMode();
    const std::string frameID(samplegen::bundledMissingFrame);
    model.selectFrame(indexOf(frameID));
    auto settings = model.settings(frameID);
    settings.kind = std::string(samplegen::bundledMissingKind);
    model.setSettings(frameID, settings);
    model.setSelected(missingJoint);
    QApplication::processEvents();

    EXPECT_EQ(text(secondLine(row(missingJoint))), "No detection · place manually");
    EXPECT_FALSE(inspector().confirmButton()->isEnabled());
    EXPECT_TRUE(inspector().obscuredButton()->isEnabled());
    EXPECT_TRUE(inspector().uncertainButton()->isEnabled());

    QLabel* help = window.view()->statusRow()->helpText();
    EXPECT_EQ(text(help->text()), "Drag to correct; arrows move 1 source pixel, Shift moves 10.");
    QTest::mouseClick(inspector().placeButton(), Qt::LeftButton);
    EXPECT_TRUE(model.placing());
    EXPECT_EQ(text(inspector().placeButton()->text()), "Cancel placement");
    EXPECT_EQ(text(help->text()),
              "Click the active photo to place the selected joint. Escape cancels.");

    // A placed point gives the joint a location to confirm.
    model.edit(dravik::Point2{500, 400}, dravik::JointReviewState::corrected,
               model.target(frameID, missingJoint));
    QApplication::processEvents();
    EXPECT_TRUE(inspector().confirmButton()->isEnabled());
    QTest::mouseClick(inspector().confirmButton(), Qt::LeftButton);
    EXPECT_EQ(editOf(frameID, missingJoint)->state, dravik::JointReviewState::confirmedVisible);
    EXPECT_EQ(text(secondLine(row(missingJoint))),
              std::string(dravik::label(dravik::JointReviewState::confirmedVisible)));

    window.view()->toolbar()->editPicker()->segment(true)->click();
    EXPECT_TRUE(model.leanMode());
    EXPECT_EQ(text(help->text()),
              "Drag yellow wheel or cyan reference handles. Release saves; Escape cancels.");
}

TEST_F(ShellInspectorTest, ColumnsKeepTheirWidthsAndTheInspectorFollowsTheEditMode) {
    openInJointMode();
    ReviewerView& view = *window.view();
    EXPECT_EQ(view.sidebar()->width(), 180);
    EXPECT_EQ(view.toolbar()->reviewModePicker()->width(), 190);
    EXPECT_EQ(view.toolbar()->editPicker()->width(), 185);
    ASSERT_EQ(view.inspectorColumn(), view.jointInspector());
    EXPECT_EQ(view.inspectorColumn()->width(), 250);

    view.toolbar()->editPicker()->segment(true)->click();
    ASSERT_EQ(view.inspectorColumn(), view.leanPanel());
    EXPECT_EQ(view.inspectorColumn()->width(), 290);

    // Hidden, no column is laid out in either edit mode, and the photos take the room.
    const int centralWidth = view.photoArea()->width();
    QTest::mouseClick(view.toolbar()->inspectorButton(), Qt::LeftButton);
    EXPECT_FALSE(model.inspectorVisible());
    EXPECT_EQ(view.inspectorColumn(), nullptr);
    QApplication::processEvents();
    EXPECT_GT(view.photoArea()->width(), centralWidth);
    view.toolbar()->editPicker()->segment(false)->click();
    EXPECT_FALSE(model.leanMode());
    EXPECT_EQ(view.inspectorColumn(), nullptr);
    EXPECT_FALSE(view.jointInspector()->isVisible());

    QTest::mouseClick(view.toolbar()->inspectorButton(), Qt::LeftButton);
    EXPECT_EQ(view.inspectorColumn(), view.jointInspector());
}

} // namespace tessary::test
