// SPDX-License-Identifier: Apache-2.0
#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "shell/reviewer_view.h"
#include "toolbar/review_toolbar.h"
#include "views_fixture.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>

namespace tessary::test {

TEST_F(ShellTest, TheWindowKeepsItsMinimumAndCtrlOOpensBothChosenFiles) {
    EXPECT_EQ(text(window.windowTitle()), "Joint Review");
    window.resize(600, 400);
    QApplication::processEvents();
    EXPECT_GE(window.view()->width(), 1000);
    EXPECT_GE(window.view()->height(), 650);

    const SessionFiles session = bundledSession(temp.path() / "chosen");
    chooser->answers = {session.manifest, session.results};
    QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(model.document()->identity(), session.raw().identity());
}

TEST_F(ShellTest, UndoIsEnabledOnlyWithAnEditAndCtrlZUndoesIt) {
    openInJointMode();
    QAction* menuUndo = window.menus()->undoReviewEdit();
    QPushButton* toolbarUndo = window.view()->toolbar()->undoButton();
    auto expectUndoable = [&](bool undoable) {
        EXPECT_EQ(menuUndo->isEnabled(), undoable);
        EXPECT_EQ(toolbarUndo->isEnabled(), undoable);
    };
    expectUndoable(false);
    const std::string message = model.message();
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model.document()->revision(), 0);
    EXPECT_EQ(model.message(), message);

    model.setSelected("nose");
    model.setState(dravik::JointReviewState::uncertain);
    ASSERT_TRUE(editOf(alex3, "nose"));
    expectUndoable(true);
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(editOf(alex3, "nose"));
    expectUndoable(false);
}

TEST_F(ShellTest, TheAlertShowsTheErrorAndEveryDismissalClearsIt) {
    const std::function<void(QMessageBox*)> dismissals[] = {
        [](QMessageBox* box) {
            ASSERT_EQ(box->buttons().size(), 1);
            EXPECT_EQ(text(box->buttons().front()->text()), "OK");
            QTest::mouseClick(box->buttons().front(), Qt::LeftButton);
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
