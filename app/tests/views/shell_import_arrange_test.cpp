// SPDX-License-Identifier: Apache-2.0
#include "arrange/session_setup_dialog.h"
#include "common/collapsible_section.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "photo_area/photo_area.h"
#include "shell/review_menus.h"
#include "shell/reviewer_view.h"
#include "sidebar/discovery_notices.h"
#include "sidebar/sidebar.h"
#include "toolbar/review_toolbar.h"
#include "toolbar/segmented_picker.h"
#include "views_fixture.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>
#include <algorithm>

namespace tessary::test {

namespace {

// The stand-in batch program as the bundle's, pausing on each photo so that progress shows.
void installFakeBatch(const fs::path& bundleRoot) {
    const fs::path program = Bundle(bundleRoot).batchProgram();
    writeText(program, std::string("#!/bin/sh\nexport FAKE_BATCH_PHOTO_MS=400\nexec '") +
                           TESSARY_FAKE_BATCH + "' \"$@\"\n");
    fs::permissions(program, fs::perms::owner_all);
}

SessionSetupDialog* openDialog(const QWidget& window) {
    QCoreApplication::sendPostedEvents();
    return window.findChild<SessionSetupDialog*>();
}

} // namespace

// A coach's two photos, from the window alone: imported with progress and a list of what could
// not be used, named and paired in the setup dialog, and compared side by side.
TEST_F(ShellTest, ImportAFolderArrangeItsPhotosAsAPairAndCompareThem) {
    const fs::path shared = fs::path(TESSARY_SOURCE_DIR) / ".." / "shared" / "photos";
    std::vector<fs::path> photos;
    if (fs::is_directory(shared))
        for (const auto& entry : fs::directory_iterator(shared))
            if (entry.path().extension() == ".jpg")
                photos.push_back(entry.path());
    if (photos.size() < 2)
        GTEST_SKIP() << "needs two photos in " << shared;
    std::sort(photos.begin(), photos.end());

    const fs::path data = temp.path() / "data";
    writeText(Bundle(temp.path() / "bundle").resourcePath("data-directory.txt"), data.string());
    installFakeBatch(temp.path() / "bundle");
    const fs::path card = temp.path() / "card" / "Snetterton";
    fs::create_directories(card);
    for (std::size_t i = 0; i < 2; ++i)
        fs::copy_file(photos[i], card / photos[i].filename());
    writeText(card / "IMG_0001.heic", "heic");

    chooser->answers.push_back(card);
    QTest::mouseClick(window.view()->sidebar()->importButton(), Qt::LeftButton);
    DiscoveryNotices& notices = *window.view()->discoveryNotices();
    EXPECT_TRUE(
        waitUntil([&] { return notices.statusText()->text() == "Analysing 1 of 2 photos…"; }));
    EXPECT_FALSE(window.view()->sidebar()->importButton()->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return model.document() != nullptr; }, std::chrono::seconds(30)))
        << model.error().value_or("");
    EXPECT_TRUE(notices.unusableGroup()->isVisible());
    EXPECT_TRUE(notices.unusableText()->text().contains("“IMG_0001.heic”"));
    ASSERT_EQ(model.document()->frames().size(), 2u);
    EXPECT_TRUE(window.view()->riderNotice()->isVisible());
    EXPECT_EQ(text(window.view()->riderNotice()->text()),
              "Automatically imported photo · confirm the intended rider before relying on joint "
              "markers.");

    // The first photo is the rider, the second the reference rider, in a left turn.
    const std::string rider = model.document()->frames()[0].id;
    const std::string reference = model.document()->frames()[1].id;
    window.menus()->arrangeSession()->trigger();
    QPointer<SessionSetupDialog> dialog = openDialog(window);
    ASSERT_TRUE(dialog);
    QTest::keyClick(dialog->riderNameField(rider), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(dialog->riderNameField(rider), "Ana");
    QTest::keyClick(dialog->riderNameField(reference), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(dialog->riderNameField(reference), "Coach");
    choose(dialog->referencePicker(rider), 1);
    QApplication::processEvents();
    ASSERT_EQ(dialog->arrangement().pairs.size(), 1u);
    choose(dialog->directionPicker(rider), 1);
    QTest::mouseClick(dialog->applyButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return !dialog; })) << text(dialog->effectText()->text());
    EXPECT_EQ(model.error(), std::nullopt);

    ASSERT_EQ(model.pairs().size(), 1u);
    EXPECT_TRUE(model.pairs().front().hasReference());
    EXPECT_EQ(model.frame()->riderDisplayName, "Ana");
    EXPECT_FALSE(window.view()->riderNotice()->isVisible());
    window.view()->toolbar()->reviewModePicker()->segment(true)->click();
    QApplication::processEvents();
    QWidget* comparison = window.view()->photoArea()->part(PhotoArea::comparison);
    ASSERT_NE(comparison, nullptr);
    EXPECT_NE(comparison->findChild<PairFeedbackView*>(), nullptr);
    EXPECT_EQ(model.visibleIDs().size(), 2u);
    ASSERT_NE(model.report(), nullptr);
}

} // namespace tessary::test
