#include "coaching/single_photo_feedback_view.h"
#include "dravik/discovery.h"
#include "lean/lean_evidence_view.h"
#include "pair/frame_pane.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "shell/empty_state.h"
#include "shell/photo_area.h"
#include "shell/reviewer_view.h"
#include "shell/status_row.h"
#include "shell_fixture.h"

#include <QAction>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QSplitter>
#include <QToolButton>
#include <fstream>

namespace tessary::test {

namespace {

std::string text(const QString& value) {
    return value.toStdString();
}

template <class Widget> Widget* inside(QWidget* part) {
    if (!part)
        return nullptr;
    if (auto* widget = qobject_cast<Widget*>(part))
        return widget;
    return part->findChild<Widget*>();
}

// Renames one rider of a manifest; nothing the detections or photos depend on changes.
void renameRider(const fs::path& manifest, const QString& riderID, const QString& name) {
    QFile file(QString::fromStdString(manifest.string()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    file.close();
    QJsonArray pairs = root["pairs"].toArray();
    for (qsizetype p = 0; p < pairs.size(); ++p) {
        QJsonObject pair = pairs[p].toObject();
        QJsonArray riders = pair["riders"].toArray();
        for (qsizetype r = 0; r < riders.size(); ++r) {
            QJsonObject rider = riders[r].toObject();
            if (rider["id"].toString() == riderID && pair["id"].toString() == "turn-5")
                rider["displayName"] = name;
            riders[r] = rider;
        }
        pair["riders"] = riders;
        pairs[p] = pair;
    }
    root["pairs"] = pairs;
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QJsonDocument(root).toJson());
}

} // namespace

class ShellPhotoAreaTest : public ShellTest {
  protected:
    PhotoArea& area() const { return *window.view()->photoArea(); }
    QWidget* part(PhotoArea::Slot slot) const { return area().part(slot); }
};

TEST_F(ShellPhotoAreaTest, SingleModeShowsTheActivePhotoAndTheFeedbackThatFitsIt) {
    auto* empty = inside<EmptyState>(part(PhotoArea::emptyState));
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(text(empty->title()), "Open a photo session");
    EXPECT_EQ(part(PhotoArea::singlePane), nullptr);

    openInJointMode();
    EXPECT_EQ(part(PhotoArea::emptyState), nullptr);
    auto* pane = inside<FramePane>(part(PhotoArea::singlePane));
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->frameID(), alex3);
    // The rider's own photo with a reference rider: the pair's feedback.
    ASSERT_NE(model.report(), nullptr);
    EXPECT_NE(inside<PairFeedbackView>(part(PhotoArea::singleFeedback)), nullptr);

    // The reference rider's photo has no feedback of its own.
    model.selectFrame(indexOf(sam3));
    QApplication::processEvents();
    EXPECT_EQ(inside<FramePane>(part(PhotoArea::singlePane))->frameID(), sam3);
    EXPECT_EQ(part(PhotoArea::singleFeedback), nullptr);

    // A rider alone in the photo: no report, so the single-photo feedback.
    model.selectFrame(indexOf(alex5));
    QApplication::processEvents();
    EXPECT_EQ(model.report(), nullptr);
    EXPECT_NE(inside<SinglePhotoFeedbackView>(part(PhotoArea::singleFeedback)), nullptr);
    EXPECT_EQ(part(PhotoArea::comparison), nullptr);

    // Moving to another photo keeps the split the reviewer dragged.
    auto* splitter = area().findChild<QSplitter*>();
    splitter->setSizes({500, 150});
    QApplication::processEvents();
    const int paneHeight = part(PhotoArea::singlePane)->height();
    model.selectFrame(indexOf(alex3));
    QApplication::processEvents();
    EXPECT_EQ(inside<FramePane>(part(PhotoArea::singlePane))->frameID(), alex3);
    EXPECT_EQ(part(PhotoArea::singlePane)->height(), paneHeight);
}

TEST_F(ShellPhotoAreaTest, CompareModeShowsTheLeanEvidenceOnceWhereverItBelongs) {
    openBundled();
    model.setLeanMode(true);
    model.setCompare(true);
    QApplication::processEvents();
    ASSERT_TRUE(model.compare());
    EXPECT_EQ(part(PhotoArea::singlePane), nullptr);
    QWidget* comparison = part(PhotoArea::comparison);
    ASSERT_NE(inside<PairComparisonView>(comparison), nullptr);

    // On the rider's photo with a report the pair feedback carries the evidence itself.
    ASSERT_EQ(model.activeFrameID(), alex3);
    ASSERT_NE(model.report(), nullptr);
    EXPECT_EQ(part(PhotoArea::leanEvidence), nullptr);

    model.activate(sam3);
    QApplication::processEvents();
    EXPECT_NE(inside<LeanEvidenceView>(part(PhotoArea::leanEvidence)), nullptr);
    // The photos stay as they are while the other rider becomes active.
    EXPECT_EQ(part(PhotoArea::comparison), comparison);

    model.setLeanMode(false);
    QApplication::processEvents();
    EXPECT_EQ(part(PhotoArea::leanEvidence), nullptr);
    EXPECT_EQ(part(PhotoArea::noReference), nullptr);
}

TEST_F(ShellPhotoAreaTest, AnAutomaticallyImportedRiderAsksForConfirmation) {
    const SessionFiles session = bundledSession(temp.path() / "imported");
    renameRider(session.manifest, "alex",
                QString::fromUtf8(dravik::SessionDiscovery::unreviewedRiderName().data()));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    QLabel* notice = window.view()->riderNotice();
    EXPECT_FALSE(notice->isVisible());
    model.selectFrame(indexOf(alex5));
    QApplication::processEvents();
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(text(notice->text()), "Automatically imported photo · confirm the intended rider "
                                    "before relying on joint markers.");
}

TEST_F(ShellPhotoAreaTest, RetryMenuWaitsWhileTheDetectorRuns) {
    // A batch program that takes its time and then fails.
    const fs::path program = Bundle(temp.path() / "bundle").batchProgram();
    fs::create_directories(program.parent_path());
    std::ofstream(program) << "#!/bin/sh\nsleep 0.5\nexit 1\n";
    fs::permissions(program, fs::perms::owner_all);

    openInJointMode();
    StatusRow& status = *window.view()->statusRow();
    QToolButton* menu = status.retryMenu();
    EXPECT_EQ(text(menu->text()), "Retry detection for active rider");
    ASSERT_TRUE(menu->isEnabled());
    EXPECT_EQ(text(status.cropRetry()->text()), "Original rider crop");
    EXPECT_EQ(text(status.fullPhotoRetry()->text()), "Full photo panel");

    status.fullPhotoRetry()->trigger();
    ASSERT_TRUE(model.isDetecting());
    EXPECT_EQ(text(menu->text()), "Detecting…");
    EXPECT_FALSE(menu->isEnabled());

    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }, 20000));
    EXPECT_EQ(text(menu->text()), "Retry detection for active rider");
    EXPECT_TRUE(menu->isEnabled());
    ASSERT_TRUE(model.error());
    EXPECT_TRUE(waitUntil([&] { return window.findChild<QMessageBox*>()->isVisible(); }));
    EXPECT_EQ(text(status.messageText()->text()), model.message());
}

} // namespace tessary::test
