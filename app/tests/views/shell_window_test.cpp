#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "shell/review_toolbar.h"
#include "shell/reviewer_view.h"
#include "shell_fixture.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>

namespace tessary::test {

namespace {

std::string text(const QString& value) {
    return value.toStdString();
}

} // namespace

TEST_F(ShellTest, WindowIsTitledAndNeverSmallerThanItsMinimum) {
    EXPECT_EQ(text(window.windowTitle()), "Joint Review");
    window.resize(600, 400);
    QApplication::processEvents();
    EXPECT_GE(window.view()->width(), 1000);
    EXPECT_GE(window.view()->height(), 650);
}

TEST_F(ShellTest, OpenSessionCommandAsksForBothFilesAndOpensThem) {
    const SessionFiles session = bundledSession(temp.path() / "chosen");
    chooser->answers = {session.manifest, session.results};
    QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(chooser->captions.size(), 2u);
    EXPECT_EQ(model.document()->identity(), session.raw().identity());
}

TEST_F(ShellTest, UndoIsDisabledUntilThereIsAnEditAndCtrlZThenUndoesIt) {
    openInJointMode();
    QAction* menuUndo = window.menus()->undoReviewEdit();
    QPushButton* toolbarUndo = window.view()->toolbar()->undoButton();
    EXPECT_FALSE(menuUndo->isEnabled());
    EXPECT_FALSE(toolbarUndo->isEnabled());

    const auto revision = model.document()->revision();
    const std::string message = model.message();
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model.document()->revision(), revision);
    EXPECT_EQ(model.message(), message);

    model.setSelected("nose");
    model.setState(dravik::JointReviewState::uncertain);
    ASSERT_TRUE(editOf(*model.activeFrameID(), "nose"));
    EXPECT_TRUE(menuUndo->isEnabled());
    EXPECT_TRUE(toolbarUndo->isEnabled());

    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(editOf(*model.activeFrameID(), "nose"));
    EXPECT_FALSE(menuUndo->isEnabled());
    EXPECT_FALSE(toolbarUndo->isEnabled());
}

// Each way of dismissing the alert clears the error it showed.
TEST_F(ShellTest, AlertShowsTheErrorAndAnyDismissalClearsIt) {
    const std::vector<std::function<void(QMessageBox*)>> dismissals = {
        [](QMessageBox* box) {
            QList<QAbstractButton*> buttons = box->buttons();
            ASSERT_EQ(buttons.size(), 1);
            EXPECT_EQ(text(buttons.front()->text()), "OK");
            QTest::mouseClick(buttons.front(), Qt::LeftButton);
        },
        [](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); },
        [](QMessageBox* box) { box->close(); },
    };
    for (const auto& dismiss : dismissals) {
        model.load(temp.path() / "missing" / "session.json", temp.path() / "results.json");
        ASSERT_TRUE(model.error());
        ASSERT_TRUE(waitUntil([&] { return window.alert()->box() != nullptr; }));
        QMessageBox* box = window.alert()->box();
        EXPECT_EQ(text(box->windowTitle()), "Review needs attention");
        EXPECT_EQ(text(box->informativeText()), *model.error());
        dismiss(box);
        QApplication::processEvents();
        EXPECT_EQ(model.error(), std::nullopt);
        EXPECT_EQ(window.alert()->box(), nullptr);
    }
}

} // namespace tessary::test
