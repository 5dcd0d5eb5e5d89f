// SPDX-License-Identifier: Apache-2.0
#include "common/collapsible_section.h"
#include "dravik/error.h"
#include "shell/reviewer_view.h"
#include "sidebar/busy_spinner.h"
#include "sidebar/discovery_notices.h"
#include "sidebar/sidebar.h"
#include "views_fixture.h"

#include <QPushButton>
#include <atomic>
#include <chrono>
#include <thread>

namespace tessary::test {

using namespace Qt::StringLiterals;

class ShellSidebarTest : public ShellTest {
  protected:
    Sidebar& sidebar() const { return *window.view()->sidebar(); }
    QListWidget& list() const { return *sidebar().photoList(); }
    std::vector<QPushButton*> sessionButtons() const {
        std::vector<QPushButton*> buttons;
        for (QPushButton* button : sidebar().findChildren<QPushButton*>())
            if (button != sidebar().discoveryButton() && button != sidebar().openButton() &&
                button != sidebar().importButton() && button->isVisibleTo(&sidebar()))
                buttons.push_back(button);
        return buttons;
    }
};

TEST_F(ShellSidebarTest, RowsCountReviewedJointsAndCompareModeListsPairs) {
    openInJointMode();
    auto row = [&](int index) {
        return text(list().item(index)->text()) + " | " + text(secondLine(list().item(index)));
    };
    ASSERT_EQ(list().count(), 3);
    EXPECT_EQ(row(0),
              frameOf(alex3).name + " · " + frameOf(alex3).riderDisplayName + " | 0 / 19 reviewed");
    EXPECT_EQ(list().currentRow(), 0);
    model.setSelected("nose");
    model.setState(dravik::JointReviewState::uncertain);
    model.setSelected("left_knee");
    model.setState(dravik::JointReviewState::obscured);
    EXPECT_EQ(text(secondLine(list().item(0))), "2 / 19 reviewed");
    EXPECT_EQ(text(secondLine(list().item(1))), "0 / 19 reviewed");

    model.setCompare(true);
    ASSERT_EQ(list().count(), 2);
    EXPECT_EQ(row(0), frameOf(alex3).name + " | Rider + Reference rider");
    EXPECT_EQ(row(1), frameOf(alex5).name + " | No reference rider · Single");
    EXPECT_EQ(list().currentRow(), 0);
    // A pair without a reference rider can only be reviewed on its own.
    clickRow(&list(), 1);
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_FALSE(model.compare());
    ASSERT_EQ(list().count(), 3);
    EXPECT_EQ(list().currentRow(), 2);
    clickRow(&list(), 0);
    EXPECT_EQ(model.activeFrameID(), alex3);
}

TEST_F(ShellSidebarTest, SessionButtonsOpenTheirPresetAndMarkTheOpenOne) {
    const SessionFiles first = bundledSession(temp.path() / "first");
    const SessionFiles second = bundledSession(temp.path() / "second");
    const std::string evening = "Evening & the long straight after the hairpin at turn eleven";
    writeText(Bundle(temp.path() / "bundle").resourcePath("launch.json"),
              "[" + presetJson("Morning", first) + ", " + presetJson(evening, second) + "]");
    model.loadPresets();
    auto buttons = sessionButtons();
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_EQ(text(buttons[0]->text()), "Morning");
    // A long title is cut to the column, whole in its tooltip, and its "&" stays a character.
    EXPECT_TRUE(buttons[1]->text().endsWith(u"…"_s));
    EXPECT_LE(buttons[1]->sizeHint().width(), Sidebar::columnWidth);
    EXPECT_TRUE(buttons[1]->toolTip().startsWith(QString::fromStdString(evening)));
    QTest::mouseClick(buttons[1], Qt::LeftButton);
    ASSERT_NE(model.document(), nullptr);
    QApplication::processEvents();
    buttons = sessionButtons();
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_TRUE(buttons[1]->text().startsWith(u"▸ Evening && the"_s)) << text(buttons[1]->text());
    EXPECT_TRUE(buttons[1]->font().bold());
    EXPECT_FALSE(buttons[0]->font().bold());
    EXPECT_EQ(model.manifestURL(), second.manifest);
}

TEST_F(ShellSidebarTest, DiscoveryShowsProgressThenTheFoldersNeedingAttention) {
    DiscoveryNotices& notices = *window.view()->discoveryNotices();
    QPushButton& button = *sidebar().discoveryButton();
    EXPECT_FALSE(notices.isVisible());
    QTest::mouseClick(&button, Qt::LeftButton); // no data folder: it says so at once
    EXPECT_EQ(text(notices.statusText()->text()),
              "Automatic discovery needs a configured data folder.");

    const fs::path data = temp.path() / "rides";
    const SessionFiles source = bundledSession(temp.path() / "source");
    fs::create_directories(data / "ride");
    fs::copy_file(source.folder / "turn-5-alex.jpg", data / "ride" / "photo.jpg");
    std::atomic<bool> release = false;
    model.discoverSessions(data, [&](const fs::path&, const fs::path&) {
        while (!release)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        throw dravik::DravikError("The analysis was refused.");
    });
    EXPECT_EQ(text(button.text()), "Analyzing folders…");
    EXPECT_FALSE(button.isEnabled());
    EXPECT_TRUE(notices.spinner()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return notices.statusText()->text().contains("ride"); }));

    release = true;
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_EQ(text(button.text()), "Check for new folders");
    EXPECT_TRUE(button.isEnabled());
    EXPECT_FALSE(notices.spinner()->isVisible());
    EXPECT_EQ(text(notices.statusText()->text()), model.discoveryStatus());
    EXPECT_EQ(text(notices.failureGroup()->title()), "Folders needing attention");
    notices.failureGroup()->setExpanded(true);
    EXPECT_TRUE(notices.failureText()->isVisible());
    EXPECT_EQ(text(notices.failureText()->text()), "ride: The analysis was refused.");
}

} // namespace tessary::test
