#include "reviewer_model.h"
#include "shell/review_toolbar.h"
#include "shell/review_window.h"
#include "shell/reviewer_view.h"
#include "shell/sample_copy.h"
#include "shell/segmented_picker.h"
#include "shell/tessary_app.h"
#include "shell_fixture.h"

#include <QCheckBox>
#include <QScreen>
#include <QToolButton>
#include <fstream>

namespace tessary::test {

// Not a check: writes the README's screenshots of the window on the bundled sample when
// TESSARY_SCREENSHOTS names a folder. Run it under Xvfb for the desktop's fonts and style.
TEST(ShellScreenshots, WritesScreenshotsWhenAsked) {
    const QString folder = qEnvironmentVariable("TESSARY_SCREENSHOTS");
    if (folder.isEmpty())
        GTEST_SKIP() << "TESSARY_SCREENSHOTS is not set";

    // An installed layout whose user data folder is temporary.
    TemporaryFolder temp;
    const Bundle bundle(temp.path() / "bundle");
    fs::create_directories(bundle.resourcePath(""));
    fs::copy(fs::path(TESSARY_SOURCE_DIR) / "data" / "sample-session",
             bundle.resourcePath("sample-session"), fs::copy_options::recursive);
    std::ofstream(bundle.resourcePath("data-directory.txt")) << "$XDG_DATA_HOME/sessions\n";
    std::ofstream(bundle.resourcePath("launch.json")) << R"([{"title": "Sample session",
                "manifest": "$XDG_DATA_HOME/sessions/sample-session/session.json",
                "results": "$XDG_DATA_HOME/sessions/sample-session/results.json"}])";
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString((temp.path() / "data").string()));
    ASSERT_EQ(provideSampleSession(bundle), std::nullopt);

    TessaryApp app(bundle, {"tessary"}, std::make_shared<ScriptedChooser>());
    ReviewWindow& window = app.window();
    ReviewerModel& model = app.model();
    window.resize(1400, 900);
    app.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    ASSERT_NE(model.document(), nullptr);
    auto shoot = [&](const QString& name, QSize size = {1400, 900}) {
        window.resize(size);
        QTest::qWait(500);
        ASSERT_TRUE(window.grab().save(folder + "/" + name + ".jpg", "JPG", 85));
    };
    ReviewToolbar& toolbar = *window.view()->toolbar();

    shoot("single-lean");
    shoot("single-lean-minimum", {1000, 650});
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
    toolbar.editPicker()->segment(false)->click();
    model.selectFrame(2);
    shoot("single-photo-feedback");

    window.move(0, 0);
    model.load(temp.path() / "elsewhere" / "session.json", temp.path() / "results.json");
    QTest::qWait(500);
    const QPixmap screen = window.screen()->grabWindow(0);
    ASSERT_TRUE(screen.copy(window.frameGeometry()).save(folder + "/alert.jpg", "JPG", 85));
}

} // namespace tessary::test
