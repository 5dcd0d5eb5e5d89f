// SPDX-License-Identifier: Apache-2.0
#include "coaching/single_photo_feedback_view.h"
#include "lean/lean_evidence_view.h"
#include "pair/frame_pane.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "photo_area/empty_state.h"
#include "photo_area/photo_area.h"
#include "photo_area/status_row.h"
#include "shell/reviewer_view.h"
#include "views_fixture.h"

#include <QMessageBox>
#include <QSplitter>
#include <QToolButton>

namespace tessary::test {

namespace {

template <class Widget> Widget* inside(QWidget* part) {
    if (!part)
        return nullptr;
    if (auto* widget = qobject_cast<Widget*>(part))
        return widget;
    return part->findChild<Widget*>();
}

} // namespace

class ShellPhotoAreaTest : public ShellTest {
  protected:
    PhotoArea& area() const { return *window.view()->photoArea(); }
    QWidget* part(PhotoArea::Slot slot) const { return area().part(slot); }
    void show(const std::string& frameID) {
        model.selectFrame(indexOf(frameID));
        QApplication::processEvents();
    }
};

TEST_F(ShellPhotoAreaTest, SingleModeShowsTheActivePhotoAndTheFeedbackThatFitsIt) {
    auto* empty = inside<EmptyState>(part(PhotoArea::emptyState));
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(text(empty->title()), "Open a photo session");

    openInJointMode();
    EXPECT_EQ(part(PhotoArea::emptyState), nullptr);
    EXPECT_EQ(inside<FramePane>(part(PhotoArea::singlePane))->frameID(), alex3);
    // The rider with a reference rider: the pair's feedback; the reference rider: none; a
    // rider alone: the single-photo feedback.
    EXPECT_NE(inside<PairFeedbackView>(part(PhotoArea::singleFeedback)), nullptr);
    show(sam3);
    EXPECT_EQ(inside<FramePane>(part(PhotoArea::singlePane))->frameID(), sam3);
    EXPECT_EQ(part(PhotoArea::singleFeedback), nullptr);
    show(alex5);
    EXPECT_NE(inside<SinglePhotoFeedbackView>(part(PhotoArea::singleFeedback)), nullptr);
    EXPECT_EQ(part(PhotoArea::comparison), nullptr);

    // Moving to another photo keeps the split the reviewer dragged.
    area().findChild<QSplitter*>()->setSizes({500, 150});
    QApplication::processEvents();
    const int paneHeight = part(PhotoArea::singlePane)->height();
    show(alex3);
    EXPECT_EQ(part(PhotoArea::singlePane)->height(), paneHeight);
}

TEST_F(ShellPhotoAreaTest, CompareModeShowsTheLeanEvidenceOnceUnderThePhotos) {
    openBundled();
    model.setLeanMode(true);
    model.setCompare(true);
    QApplication::processEvents();
    EXPECT_EQ(part(PhotoArea::singlePane), nullptr);
    QWidget* comparison = part(PhotoArea::comparison);
    ASSERT_NE(inside<PairComparisonView>(comparison), nullptr);
    const auto shownEvidence = [&] {
        QCoreApplication::sendPostedEvents();
        int shown = 0;
        for (const LeanEvidenceView* view : window.findChildren<LeanEvidenceView*>())
            shown += view->isVisible();
        return shown;
    };
    // The pair feedback under the photos carries the evidence whichever rider is active, so the
    // photos do not move.
    ASSERT_EQ(model.activeFrameID(), alex3);
    EXPECT_EQ(shownEvidence(), 1);
    const QRect photos(comparison->mapTo(&window, QPoint()), comparison->size());
    model.activate(sam3);
    QApplication::processEvents();
    EXPECT_EQ(shownEvidence(), 1);
    // The feedback waits for a lean edit in progress.
    model.beginLeanPlacement(false);
    model.placeLean({100, 100}, sam3);
    EXPECT_TRUE(showsText(window, "Awaiting completion of edit"));
    model.cancelInteraction();
    EXPECT_EQ(part(PhotoArea::leanEvidence), nullptr);
    EXPECT_EQ(part(PhotoArea::comparison), comparison) << "the photos stay as they are";
    EXPECT_EQ(QRect(comparison->mapTo(&window, QPoint()), comparison->size()), photos);
    model.setLeanMode(false);
    QApplication::processEvents();
    EXPECT_EQ(shownEvidence(), 0);
    EXPECT_EQ(part(PhotoArea::noReference), nullptr);
}

TEST_F(ShellPhotoAreaTest, RetryMenuWaitsWhileTheDetectorRuns) {
    // A batch program that takes its time and then fails.
    const fs::path program = Bundle(temp.path() / "bundle").batchProgram();
    writeText(program, "#!/bin/sh\nsleep 0.5\nexit 1\n");
    fs::permissions(program, fs::perms::owner_all);

    openInJointMode();
    StatusRow& status = *window.view()->statusRow();
    QToolButton* menu = status.retryMenu();
    EXPECT_EQ(text(menu->text()), "Retry detection for active rider");
    status.fullPhotoRetry()->trigger();
    ASSERT_TRUE(model.isDetecting());
    EXPECT_EQ(text(menu->text()), "Detecting…");
    EXPECT_FALSE(menu->isEnabled());

    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }));
    EXPECT_EQ(text(menu->text()), "Retry detection for active rider");
    EXPECT_TRUE(menu->isEnabled());
    ASSERT_TRUE(model.error());
    EXPECT_TRUE(waitUntil([&] { return window.findChild<QMessageBox*>()->isVisible(); }));
    EXPECT_EQ(text(status.messageText()->text()), model.message());
}

} // namespace tessary::test
