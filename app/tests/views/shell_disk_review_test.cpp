// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "shell/disk_review_commands.h"
#include "shell/merge_dialog.h"
#include "shell/quit_prompt.h"
#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "views_fixture.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>

namespace tessary::test {

namespace {

using dravik::JointReviewState;
using dravik::Point2;

const std::string refusedMessage = "Unsaved changes \u2014 save failed \u00b7 Review changed "
                                   "elsewhere \u00b7 File \u25b8 Merge, Reload or Save Copy";

struct Correction {
    std::string joint;
    double x, y;
};

// Another process saves the review over the revision it reads, as a second window would.
void saveElsewhere(const fs::path& review, const std::string& frameID,
                   const std::vector<Correction>& corrections) {
    QStringList arguments{QString::fromStdString(review.string()), QString::fromStdString(frameID)};
    for (const Correction& c : corrections)
        arguments << QString::fromStdString(c.joint) << QString::number(c.x)
                  << QString::number(c.y);
    QProcess writer;
    writer.start(TESSARY_REVIEW_WRITER, arguments);
    ASSERT_TRUE(writer.waitForFinished(10'000));
    ASSERT_EQ(writer.exitCode(), 0) << writer.readAllStandardError().toStdString();
}

// Clicks one of a message box's buttons by its text.
void answer(QMessageBox* box, const QString& button) {
    ASSERT_NE(box, nullptr);
    for (QAbstractButton* candidate : box->buttons())
        if (candidate->text() == button) {
            QTest::mouseClick(candidate, Qt::LeftButton);
            QApplication::processEvents();
            return;
        }
    FAIL() << "no button " << button.toStdString();
}

class DiskReviewTest : public ShellTest {
  protected:
    // The window's review at revision 1, then a second writer's save, then an edit here that the
    // guard refuses: the reviewer's work is in memory only.
    SessionFiles refusedAfterSecondWriter(const std::vector<Correction>& theirs) {
        const SessionFiles session = openInJointMode();
        model.setSelected("nose");
        model.edit(Point2{300, 300}, JointReviewState::corrected);
        EXPECT_EQ(model.savedRevision(), 1);
        saveElsewhere(session.review(), alex3, theirs);
        model.setSelected("right_knee");
        model.edit(Point2{40, 40}, JointReviewState::corrected);
        EXPECT_EQ(model.unsavedEdits(), 1);
        dismissAlert();
        return session;
    }

    void dismissAlert() {
        ASSERT_TRUE(waitUntil([&] { return window.alert()->box() != nullptr; }));
        answer(window.alert()->box(), "OK");
        EXPECT_EQ(model.error(), std::nullopt);
    }

    QString statusLine() { return textStartingWith(window, "Unsaved changes"); }

    // What the window system delivers when the title bar's close button is clicked; whether the
    // window let it through.
    bool closeFromTitleBar() {
        QCloseEvent event;
        QApplication::sendEvent(window.windowHandle(), &event);
        QApplication::processEvents();
        return event.isAccepted();
    }
};

} // namespace

TEST_F(DiskReviewTest, ACopyKeepsTheWorkAndReloadTakesTheOtherWritersReviewAfterDiscard) {
    const SessionFiles session = refusedAfterSecondWriter({{"left_elbow", 10, 10}});
    EXPECT_EQ(text(statusLine()), refusedMessage);
    const std::string onDisk = readText(session.review());

    // The session's own review is never the copy's target; another file takes it whole.
    const fs::path copy = temp.path() / "kept.json";
    chooser->answers = {session.review(), copy};
    chooseFromMenu(window.menus()->saveReviewCopy());
    ASSERT_TRUE(model.error());
    EXPECT_NE(model.error()->find("is a file of the session"), std::string::npos);
    dismissAlert();
    chooseFromMenu(window.menus()->saveReviewCopy());
    EXPECT_EQ(dravik::ReviewStore::load(copy), *model.document());
    EXPECT_EQ(readText(session.review()), onDisk);
    EXPECT_EQ(model.message(),
              "Review copy saved as \u201ckept.json\u201d \u00b7 the session\u2019s "
              "own review is still unsaved");

    // Reloading asks first; Cancel keeps the edits.
    chooseFromMenu(window.menus()->reloadReview());
    QMessageBox* prompt = window.menus()->diskCommands()->reloadPrompt();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(text(prompt->text()), "Discard 1 unsaved edit and load the review saved on disk?");
    answer(prompt, "Cancel");
    EXPECT_TRUE(editOf(alex3, "right_knee"));
    EXPECT_EQ(model.unsavedEdits(), 1);

    chooseFromMenu(window.menus()->reloadReview());
    answer(window.menus()->diskCommands()->reloadPrompt(), "Discard");
    EXPECT_EQ(model.document()->revision(), 2);
    EXPECT_EQ(editOf(alex3, "left_elbow")->point, (Point2{10, 10}));
    EXPECT_FALSE(editOf(alex3, "right_knee"));
    EXPECT_TRUE(model.undoStack().empty());
    EXPECT_EQ(model.message(), "Saved review reopened \u00b7 revision 2 \u00b7 Framing "
                               "unavailable; showing full photos");

    // The window continues from the other writer's revision.
    model.edit(Point2{41, 41}, JointReviewState::corrected, model.target(alex3, "right_knee"));
    EXPECT_EQ(session.saved().revision(), 3);
}

TEST_F(DiskReviewTest, AMergeKeepsBothWritersWorkAndNeverOverwritesAThirdWriter) {
    const SessionFiles session =
        refusedAfterSecondWriter({{"left_elbow", 10, 10}, {"nose", 20, 20}});
    model.setSelected("nose");
    model.edit(Point2{30, 30}, JointReviewState::corrected);
    dismissAlert();
    const auto mine = model.snapshot()->documentPointer;

    chooseFromMenu(window.menus()->mergeReview());
    MergeDialog* dialog = window.menus()->diskCommands()->mergeDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->keepTheirs(0)->isChecked());
    EXPECT_TRUE(showsText(*dialog, "nose"));
    EXPECT_TRUE(showsText(*dialog, "Turn 3 \u00b7 Alex"));
    EXPECT_EQ(text(dialog->keepMine(0)->text()), "Corrected at (30.0, 30.0)");

    // A third writer saves while the dialog is open: merging now is refused, and it stays theirs.
    saveElsewhere(session.review(), sam3, {{"nose", 50, 50}});
    const std::string third = readText(session.review());
    QTest::keyClick(dialog, Qt::Key_Return); // "Merge and Save" is what Enter means
    QApplication::processEvents();
    EXPECT_EQ(window.menus()->diskCommands()->mergeDialog(), nullptr);
    EXPECT_EQ(readText(session.review()), third);
    EXPECT_EQ(model.snapshot()->documentPointer, mine);
    EXPECT_EQ(model.message(), refusedMessage);
    dismissAlert();

    // Merged again, keeping this window's nose: every writer's one-sided change survives.
    chooseFromMenu(window.menus()->mergeReview());
    dialog = window.menus()->diskCommands()->mergeDialog();
    ASSERT_NE(dialog, nullptr);
    QTest::mouseClick(dialog->keepMine(0), Qt::LeftButton);
    QTest::mouseClick(dialog->mergeButton(), Qt::LeftButton);
    QApplication::processEvents();
    ASSERT_EQ(model.error(), std::nullopt);
    const dravik::ReviewDocument saved = session.saved();
    EXPECT_EQ(saved.revision(), 5); // theirs was 4
    EXPECT_EQ(saved, *model.document());
    EXPECT_EQ(model.savedRevision(), 5);
    EXPECT_EQ(model.unsavedEdits(), 0);
    EXPECT_EQ(editOf(alex3, "nose")->point, (Point2{30, 30}));
    EXPECT_EQ(editOf(alex3, "left_elbow")->point, (Point2{10, 10}));
    EXPECT_EQ(editOf(alex3, "right_knee")->point, (Point2{40, 40}));
    EXPECT_EQ(editOf(sam3, "nose")->point, (Point2{50, 50}));
    EXPECT_TRUE(model.undoStack().empty());
    EXPECT_EQ(model.message(), "Merged with the review on disk \u00b7 revision 5 saved");
}

TEST_F(DiskReviewTest, ClosingTheWindowWithUnsavedEditsAsksBeforeQuitting) {
    QApplication::setQuitOnLastWindowClosed(false);
    refusedAfterSecondWriter({{"left_elbow", 10, 10}});
    EXPECT_FALSE(closeFromTitleBar());
    QMessageBox* prompt = window.quitPrompt()->box();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(text(prompt->text()), "Quit and discard unsaved changes?");
    answer(prompt, "Cancel");
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(model.unsavedEdits(), 1);
    EXPECT_TRUE(editOf(alex3, "right_knee"));

    EXPECT_FALSE(closeFromTitleBar());
    answer(window.quitPrompt()->box(), "Quit");
    EXPECT_FALSE(window.isVisible());

    // A session opened without a review file is not saved yet, but there is nothing to lose.
    window.show();
    model.reloadFromDisk();
    openBundled("fresh");
    ASSERT_TRUE(model.isUnsaved());
    EXPECT_TRUE(closeFromTitleBar());
    EXPECT_EQ(window.quitPrompt()->box(), nullptr);
    QApplication::setQuitOnLastWindowClosed(true);
}

} // namespace tessary::test
