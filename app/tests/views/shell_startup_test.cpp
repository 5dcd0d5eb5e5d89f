#include "shell/review_window.h"
#include "shell/sample_copy.h"
#include "shell/tessary_app.h"
#include "shell_fixture.h"

#include <fstream>

namespace tessary::test {

namespace {

void writeText(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

std::string preset(const std::string& title, const std::string& manifest,
                   const std::string& results) {
    return "{\"title\": \"" + title + "\", \"manifest\": \"" + manifest + "\", \"results\": \"" +
           results + "\"}";
}

std::string preset(const std::string& title, const SessionFiles& session) {
    return preset(title, session.manifest.string(), session.results.string());
}

} // namespace

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

    // Starts the app as the shell does and returns once its window has appeared.
    TessaryApp& start(QStringList arguments) {
        app = std::make_unique<TessaryApp>(bundle, std::move(arguments), chooser);
        app->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&app->window()));
        return *app;
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

TEST_F(ShellStartupTest, TwoArgumentsOpenThatSessionWithoutPresetsOrDiscovery) {
    const SessionFiles listed = bundledSession(temp.path() / "listed");
    const SessionFiles given = bundledSession(temp.path() / "given");
    writeResource("launch.json", "[" + preset("Listed", listed) + "]");
    writeResource("data-directory.txt", (temp.path() / "data").string());

    ReviewerModel& model = start({"tessary", QString::fromStdString(given.manifest.string()),
                                  QString::fromStdString(given.results.string()), "ignored"})
                               .model();
    ASSERT_NE(model.document(), nullptr);
    EXPECT_TRUE(model.presets().empty());
    EXPECT_FALSE(model.isDiscovering());
    EXPECT_EQ(model.discoveryStatus(), "");
    edit();
    EXPECT_TRUE(fs::exists(given.review()));
    EXPECT_FALSE(fs::exists(listed.review()));
}

TEST_F(ShellStartupTest, FewerArgumentsOpenTheFirstPresetAndDiscoverOnce) {
    const SessionFiles first = bundledSession(temp.path() / "first");
    const SessionFiles second = bundledSession(temp.path() / "second");
    writeResource("launch.json",
                  "[" + preset("First", first) + ", " + preset("Second", second) + "]");

    ReviewerModel& model = start({"tessary", "only-one"}).model();
    ASSERT_EQ(model.presets().size(), 2u);
    ASSERT_NE(model.document(), nullptr);
    edit();
    EXPECT_TRUE(fs::exists(first.review()));
    EXPECT_FALSE(fs::exists(second.review()));
    // Discovery ran, and told that it has no folder to look in.
    EXPECT_EQ(model.discoveryStatus(), "Automatic discovery needs a configured data folder.");

    // Appearing again changes nothing, even with other presets on disk.
    writeResource("launch.json", "[" + preset("Second", second) + "]");
    const auto revision = model.document()->revision();
    app->window().hide();
    app->window().show();
    QApplication::processEvents();
    EXPECT_EQ(model.presets().size(), 2u);
    EXPECT_EQ(model.document()->revision(), revision);
}

TEST_F(ShellStartupTest, WithoutPresetsDiscoveryStillRunsAndNothingOpens) {
    ReviewerModel& model = start({"tessary"}).model();
    EXPECT_TRUE(model.presets().empty());
    EXPECT_EQ(model.document(), nullptr);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.discoveryStatus(), "Automatic discovery needs a configured data folder.");
}

// The installed layout: the sample sits read-only beside the program and the presets name the
// user's copy, which the first launch makes.
TEST_F(ShellStartupTest, TheSampleIsCopiedForTheUserOnceAndOpensFromThere) {
    const SessionFiles installed = bundledSession(bundle.resourcePath("sample-session"));
    writeResource("data-directory.txt", "  $XDG_DATA_HOME/tessary/sessions\n");
    writeResource("launch.json",
                  "[" +
                      preset("Sample session",
                             "$XDG_DATA_HOME/tessary/sessions/sample-session/session.json",
                             "$XDG_DATA_HOME/tessary/sessions/sample-session/results.json") +
                      "]");
    const fs::path sessions = temp.path() / "xdg" / "tessary" / "sessions";
    EXPECT_EQ(configuredDataFolder(bundle), sessions);

    EXPECT_EQ(provideSampleSession(bundle), std::nullopt);
    const SessionFiles copy{sessions / "sample-session", sessions / "sample-session/session.json",
                            sessions / "sample-session/results.json"};
    ASSERT_TRUE(fs::exists(copy.manifest));
    ReviewerModel& model = start({"tessary"}).model();
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(model.presets().front().manifest, copy.manifest.string());
    edit();
    EXPECT_TRUE(fs::exists(copy.review()));
    EXPECT_FALSE(fs::exists(installed.review()));

    // The user's copy, with its review, is never replaced.
    EXPECT_EQ(provideSampleSession(bundle), std::nullopt);
    EXPECT_TRUE(fs::exists(copy.review()));
}

} // namespace tessary::test
