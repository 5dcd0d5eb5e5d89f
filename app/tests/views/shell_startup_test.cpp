// SPDX-License-Identifier: Apache-2.0
#include "environment/sample_copy.h"
#include "shell/review_window.h"
#include "shell/reviewer_view.h"
#include "shell/tessary_app.h"
#include "toolbar/review_toolbar.h"
#include "toolbar/segmented_picker.h"
#include "views_fixture.h"

#include <QCheckBox>
#include <QScreen>
#include <QToolButton>

namespace tessary::test {

// The application as it starts: a bundle of its own, the process arguments, and a user data
// folder that is not the real one.
class ShellStartupTest : public ::testing::Test {
  protected:
    ShellStartupTest() : bundle(temp.path() / "bundle") {
        previousDataHome = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((temp.path() / "xdg").string()));
    }
    ~ShellStartupTest() override { qputenv("XDG_DATA_HOME", previousDataHome); }

    void writeResource(const std::string& name, const std::string& content) const {
        writeText(bundle.resourcePath(name), content);
    }

    // Starts the app as the shell does and returns its model once the window has appeared.
    ReviewerModel& start(QStringList arguments) {
        app = std::make_unique<TessaryApp>(bundle, std::move(arguments), chooser);
        app->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&app->window()));
        return app->model();
    }

    // Edits one joint, so that the review is written beside the open session's manifest.
    void edit() const {
        app->model().setSelected("nose");
        app->model().setState(dravik::JointReviewState::uncertain);
        EXPECT_EQ(app->model().error(), std::nullopt);
    }

    TemporaryFolder temp;
    Bundle bundle;
    std::shared_ptr<ScriptedChooser> chooser = std::make_shared<ScriptedChooser>();
    std::unique_ptr<TessaryApp> app;
    QByteArray previousDataHome;
};

TEST_F(ShellStartupTest, TwoArgumentsOpenASessionElseTheFirstPresetOpensAndDiscoveryRunsOnce) {
    // Without presets nothing opens, and still discovery runs.
    ReviewerModel* model = &start({"tessary"});
    EXPECT_EQ(model->document(), nullptr);
    EXPECT_EQ(model->error(), std::nullopt);
    EXPECT_NE(model->discoveryStatus(), "");

    const SessionFiles first = bundledSession(temp.path() / "first");
    const SessionFiles second = bundledSession(temp.path() / "second");
    writeResource("launch.json",
                  "[" + presetJson("First", first) + ", " + presetJson("Second", second) + "]");
    model = &start({"tessary", "only-one"});
    ASSERT_EQ(model->presets().size(), 2u);
    ASSERT_NE(model->document(), nullptr);
    edit();
    EXPECT_TRUE(fs::exists(first.review()));
    EXPECT_FALSE(fs::exists(second.review()));
    EXPECT_NE(model->discoveryStatus(), "");
    // Appearing again changes nothing, even with other presets on disk.
    writeResource("launch.json", "[" + presetJson("Second", second) + "]");
    app->window().hide();
    app->window().show();
    QApplication::processEvents();
    EXPECT_EQ(model->presets().size(), 2u);
    EXPECT_EQ(model->document()->revision(), 1);

    // Two arguments (and more) name the session: no presets, no discovery.
    writeResource("data-directory.txt", (temp.path() / "data").string());
    model = &start({"tessary", QString::fromStdString(second.manifest.string()),
                    QString::fromStdString(second.results.string()), "ignored"});
    ASSERT_NE(model->document(), nullptr);
    EXPECT_TRUE(model->presets().empty());
    EXPECT_FALSE(model->isDiscovering());
    EXPECT_EQ(model->discoveryStatus(), "");
    edit();
    EXPECT_TRUE(fs::exists(second.review()));
}

// The installed layout: the sample sits read-only beside the program and the presets name the
// user's copy, which the first launch makes.
TEST_F(ShellStartupTest, TheSampleIsCopiedForTheUserOnceAndOpensFromThere) {
    const SessionFiles installed = bundledSession(bundle.resourcePath("sample-session"));
    const std::string copyIn = "$XDG_DATA_HOME/tessary/sessions/sample-session/";
    writeResource("data-directory.txt", "  $XDG_DATA_HOME/tessary/sessions\n");
    writeResource(
        "launch.json",
        "[" + presetJson("Sample session", copyIn + "session.json", copyIn + "results.json") + "]");
    const fs::path sessions = temp.path() / "xdg" / "tessary" / "sessions";
    EXPECT_EQ(bundle.dataDirectory(), sessions);

    EXPECT_EQ(provideSampleSession(bundle), std::nullopt);
    const SessionFiles copy{sessions / "sample-session", sessions / "sample-session/session.json",
                            sessions / "sample-session/results.json"};
    ASSERT_TRUE(fs::exists(copy.manifest));
    ReviewerModel& model = start({"tessary"});
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(model.presets().front().manifest, copy.manifest.string());
    edit();
    EXPECT_TRUE(fs::exists(copy.review()));
    EXPECT_FALSE(fs::exists(installed.review()));

    // The user's copy, with its review, is never replaced.
    EXPECT_EQ(provideSampleSession(bundle), std::nullopt);
    EXPECT_TRUE(fs::exists(copy.review()));
}

// Not a check: writes the README's screenshots of the installed sample when TESSARY_SCREENSHOTS
// names a folder. Run it under Xvfb for the desktop's fonts and style.
using ShellScreenshots = ShellStartupTest;
TEST_F(ShellScreenshots, WritesScreenshotsWhenAsked) {
    const QString folder = qEnvironmentVariable("TESSARY_SCREENSHOTS");
    if (folder.isEmpty())
        GTEST_SKIP() << "TESSARY_SCREENSHOTS is not set";
    fs::create_directories(bundle.resourcePath(""));
    fs::copy(fs::path(TESSARY_SOURCE_DIR) / "data" / "sample-session",
             bundle.resourcePath("sample-session"), fs::copy_options::recursive);
    const std::string copyIn = "$XDG_DATA_HOME/sessions/sample-session/";
    writeResource("data-directory.txt", "$XDG_DATA_HOME/sessions\n");
    writeResource(
        "launch.json",
        "[" + presetJson("Sample session", copyIn + "session.json", copyIn + "results.json") + "]");
    ASSERT_EQ(provideSampleSession(bundle), std::nullopt);
    ReviewerModel& model = start({"tessary"});
    ASSERT_NE(model.document(), nullptr);
    ReviewWindow& window = app->window();
    ReviewToolbar& toolbar = *window.view()->toolbar();
    auto shoot = [&](const QString& name, QSize size = {1400, 900}) {
        window.resize(size);
        QTest::qWait(500);
        ASSERT_TRUE(window.grab().save(folder + "/" + name + ".jpg", "JPG", 85));
    };
    shoot("single-lean");
    toolbar.editPicker()->segment(false)->click();
    toolbar.markersToggle()->click();
    for (const char* joint : {"left_shoulder", "left_elbow", "left_knee"}) {
        model.setSelected(joint);
        model.setState(dravik::JointReviewState::confirmedVisible);
    }
    model.setSelected("left_wrist");
    model.setState(dravik::JointReviewState::uncertain);
    shoot("single-joints");
    shoot("single-joints-minimum", {1000, 650});
    toolbar.reviewModePicker()->segment(true)->click();
    shoot("compare");
    toolbar.editPicker()->segment(true)->click();
    shoot("compare-lean", {1600, 1000});
    toolbar.reviewModePicker()->segment(false)->click();
    model.selectFrame(2);
    shoot("single-photo-feedback");
    window.move(0, 0);
    model.load(temp.path() / "elsewhere" / "session.json", temp.path() / "results.json");
    QTest::qWait(500);
    const QPixmap screen = window.screen()->grabWindow(0);
    ASSERT_TRUE(screen.copy(window.frameGeometry()).save(folder + "/alert.jpg", "JPG", 85));
}

} // namespace tessary::test
