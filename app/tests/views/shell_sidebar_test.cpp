#include "common/collapsible_section.h"
#include "dravik/error.h"
#include "shell/busy_spinner.h"
#include "shell/discovery_notices.h"
#include "shell/reviewer_view.h"
#include "shell/sidebar.h"
#include "shell_fixture.h"

#include <QLabel>
#include <QPushButton>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

namespace tessary::test {

namespace {

std::string text(const QString& value) {
    return value.toStdString();
}

void writeText(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

std::string presetJson(const std::string& title, const SessionFiles& session) {
    return "{\"title\": \"" + title + "\", \"manifest\": \"" + session.manifest.string() +
           "\", \"results\": \"" + session.results.string() + "\"}";
}

} // namespace

class ShellSidebarTest : public ShellTest {
  protected:
    Sidebar& sidebar() const { return *window.view()->sidebar(); }
    QListWidget& list() const { return *sidebar().photoList(); }
    std::vector<QPushButton*> sessionButtons() const {
        std::vector<QPushButton*> buttons;
        for (QPushButton* button : sidebar().findChildren<QPushButton*>())
            if (button != sidebar().discoveryButton() && button != sidebar().openButton() &&
                button->isVisibleTo(&sidebar()))
                buttons.push_back(button);
        return buttons;
    }
};

TEST_F(ShellSidebarTest, FrameRowsCountReviewedJointsAndSelectTheFrame) {
    openInJointMode();
    ASSERT_EQ(list().count(), 3);
    const dravik::ReviewFrame& first = frameOf(alex3);
    EXPECT_EQ(text(list().item(0)->text()), first.name + " · " + first.riderDisplayName);
    EXPECT_EQ(text(secondLine(list().item(0))), "0 / 19 reviewed");
    EXPECT_EQ(list().currentRow(), 0);

    model.setSelected("nose");
    model.setState(dravik::JointReviewState::uncertain);
    model.setSelected("left_knee");
    model.setState(dravik::JointReviewState::obscured);
    EXPECT_EQ(text(secondLine(list().item(0))), "2 / 19 reviewed");
    EXPECT_EQ(text(secondLine(list().item(1))), "0 / 19 reviewed");

    clickRow(&list(), 2);
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_EQ(list().currentRow(), 2);
}

TEST_F(ShellSidebarTest, CompareModeListsPairsAndLeavesForAPairWithoutReference) {
    openInJointMode();
    model.setCompare(true);
    ASSERT_EQ(list().count(), 2);
    EXPECT_EQ(text(list().item(0)->text()), frameOf(alex3).name);
    EXPECT_EQ(text(secondLine(list().item(0))), "Rider + Reference rider");
    EXPECT_EQ(text(list().item(1)->text()), frameOf(alex5).name);
    EXPECT_EQ(text(secondLine(list().item(1))), "No reference rider · Single");
    EXPECT_EQ(list().currentRow(), 0);

    clickRow(&list(), 1);
    EXPECT_EQ(model.activeFrameID(), alex5);
    EXPECT_FALSE(model.compare());
    ASSERT_EQ(list().count(), 3);
    EXPECT_EQ(list().currentRow(), 2);
}

TEST_F(ShellSidebarTest, SessionButtonsOpenTheirPreset) {
    const SessionFiles first = bundledSession(temp.path() / "first");
    const SessionFiles second = bundledSession(temp.path() / "second");
    writeText(Bundle(temp.path() / "bundle").resourcePath("launch.json"),
              "[" + presetJson("Morning", first) + ", " + presetJson("Evening", second) + "]");
    model.loadPresets();
    const auto buttons = sessionButtons();
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_EQ(text(buttons[0]->text()), "Morning");
    EXPECT_EQ(text(buttons[1]->text()), "Evening");

    QTest::mouseClick(buttons[1], Qt::LeftButton);
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(model.error(), std::nullopt);
    model.setSelected("nose");
    model.setState(dravik::JointReviewState::uncertain);
    EXPECT_TRUE(fs::exists(second.review()));
    EXPECT_FALSE(fs::exists(first.review()));
}

TEST_F(ShellSidebarTest, DiscoveryShowsProgressThenTheFoldersNeedingAttention) {
    DiscoveryNotices& notices = *window.view()->discoveryNotices();
    QPushButton& button = *sidebar().discoveryButton();
    EXPECT_EQ(text(button.text()), "Check for new folders");
    EXPECT_FALSE(notices.isVisible());

    // Without a configured data folder the button says so instead of scanning.
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_TRUE(notices.statusLine()->isVisible());
    EXPECT_FALSE(notices.spinner()->isVisible());
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
    ASSERT_TRUE(model.isDiscovering());
    EXPECT_EQ(text(button.text()), "Analyzing folders…");
    EXPECT_FALSE(button.isEnabled());
    EXPECT_TRUE(notices.spinner()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return notices.statusText()->text().contains("ride"); }));

    release = true;
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_EQ(text(button.text()), "Check for new folders");
    EXPECT_TRUE(button.isEnabled());
    EXPECT_FALSE(notices.spinner()->isVisible());
    EXPECT_EQ(text(notices.statusText()->text()),
              "0 sessions ready · 0 newly analyzed · Some folders need attention");
    ASSERT_TRUE(notices.failureGroup()->isVisible());
    EXPECT_EQ(text(notices.failureGroup()->title()), "Folders needing attention");
    notices.failureGroup()->setExpanded(true);
    EXPECT_TRUE(notices.failureText()->isVisible());
    EXPECT_EQ(text(notices.failureText()->text()), "ride: The analysis was refused.");
}

} // namespace tessary::test
