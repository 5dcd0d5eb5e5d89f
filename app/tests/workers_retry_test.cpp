// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "workers_support.h"

#include <QSignalSpy>

namespace tessary::test {

namespace {

using namespace std::chrono_literals;

class RetryTest : public ModelTest {
  protected:
    fs::path bundleRoot() const { return temp.path() / "bundle"; }
    std::vector<fs::path> retryFolders(const SessionFiles& session) const {
        std::vector<fs::path> folders;
        if (fs::exists(session.folder / "detection-retries"))
            for (const auto& entry : fs::directory_iterator(session.folder / "detection-retries"))
                folders.push_back(entry.path());
        return folders;
    }
    // Starts a retry of the active frame, which never blocks the window, and waits for it.
    void retry(bool fullPhoto) {
        const auto start = std::chrono::steady_clock::now();
        model.retryDetection(fullPhoto);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 300ms);
        ASSERT_TRUE(model.isDetecting());
        ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }));
    }
};

TEST_F(RetryTest, AnswersAreMergedSavedAndShownWithoutTouchingCorrections) {
    const SessionFiles session = openBundled();
    const dravik::ReviewFrame frame = frameOf(alex3); // as opened: the document is replaced
    model.setSelected("left_knee");
    model.edit(dravik::Point2{123, 234}, dravik::JointReviewState::corrected);
    const auto correction = editOf(alex3, "left_knee");
    const auto revision = model.document()->revision();

    // An answer without a usable pose is merged too, but the frame keeps its detection kind.
    installFakeBatch(bundleRoot(), "unusable");
    retry(false);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(),
              "No usable pose found. Existing points preserved \u00b7 automatically saved.");
    EXPECT_EQ(frameOf(alex3).retries.size(), 1u);
    EXPECT_EQ(model.settings(alex3).kind, "3D");
    const std::vector<fs::path> earlier = retryFolders(session);

    const fs::path args = temp.path() / "args.txt";
    installFakeBatch(bundleRoot(), "result", {{"FAKE_BATCH_ARGS_FILE", args.string()}});
    QSignalSpy detecting(&model, &ReviewerModel::detectingChanged);
    model.retryDetection(false);
    EXPECT_TRUE(model.isDetecting());
    EXPECT_EQ(model.message(), "Detecting again\u2026 Your reviewed joints will be preserved.");
    model.retryDetection(true); // one retry at a time
    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }));
    EXPECT_EQ(detecting.count(), 2);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(), "Retry automatically saved \u00b7 new points need review; your "
                               "corrections are preserved.");
    ASSERT_EQ(frameOf(alex3).retries.size(), 2u);
    EXPECT_EQ(editOf(alex3, "left_knee"), correction);
    EXPECT_EQ(model.savedRevision(), revision + 2);
    EXPECT_EQ(session.saved(), *model.document());
    // A retry is not the reviewer's edit: undo steps back through their edits only.
    EXPECT_EQ(model.undoStack().size(), 1u);
    EXPECT_EQ(model.settings(alex3).kind, "2D"); // the new, usable detection is 2D

    // Each retry keeps its request, answer and log in a folder of its own.
    std::vector<fs::path> folders = retryFolders(session);
    ASSERT_EQ(folders.size(), 2u);
    const fs::path folder = folders[0] == earlier[0] ? folders[1] : folders[0];
    const std::string name = folder.filename().string();
    EXPECT_EQ(dravik::Uuid::parse(name).value().upperText(), name);
    const dravik::RetryRequest request = dravik::RetryRequest::load(folder / "request.json");
    EXPECT_EQ(request.source, dravik::ReviewStore::assetURL(frame.file, session.manifest).string());
    EXPECT_EQ(request.sourceHash, frame.sourceHash);
    EXPECT_EQ(request.crop, frame.crop);
    EXPECT_FALSE(request.wheel) << "no wheel axis was drawn";
    EXPECT_EQ(frameOf(alex3).retries[1], dravik::DetectionRetry::load(folder / "result.json"));
    EXPECT_TRUE(contains(folder / "process.log", "fake dravik-batch redetect"));
    EXPECT_EQ(readText(args), "redetect\t" + (folder / "request.json").string() + "\t" +
                                  (folder / "result.json").string() + "\n");

    // The full panel this time, with a wheel axis drawn: it tells the detector the rider's lean.
    const dravik::LeanLine wheel{{600, 700}, {640, 400}, 3};
    model.setLeanMode(true);
    model.commitLean(dravik::LeanAnnotation(frameOf(alex3), wheel), model.leanTarget(alex3));
    retry(true);
    folders = retryFolders(session);
    ASSERT_EQ(folders.size(), 3u);
    bool panelAsked = false;
    for (const fs::path& each : folders) {
        const dravik::RetryRequest asked = dravik::RetryRequest::load(each / "request.json");
        if (asked.crop != frame.panel)
            continue;
        panelAsked = true;
        EXPECT_EQ(asked.wheel, (dravik::WheelAxis{wheel.a, wheel.b}));
    }
    EXPECT_TRUE(panelAsked);
}

// Time-outs included: "ignore-term" is killed only after the grace.
TEST_F(RetryTest, EveryFailureOfTheProgramLeavesTheDocumentAndKeepsTheDiagnostics) {
    const SessionFiles session = openBundled();
    model.setBatchLimits({.poll = 20ms, .retryTimeout = 2s, .retryGrace = 200ms});
    const dravik::ReviewDocument before = *model.document();
    const std::string failed =
        "Detection failed. Your corrections are preserved; retry diagnostics are saved locally.";
    const std::pair<std::string, std::string> cases[] = {
        // mode, a prefix of the expected error
        {"fail", failed},
        {"crash", failed},
        {"attention", failed}, // only "feasibility" may end with status 2
        {"no-result", "\u201cresult.json\u201d"},
        {"garbage", "\u201cresult.json\u201d"},
        {"ignore-term", "Detection timed out. Your corrections are preserved."},
        {"missing", "The batch program \u201cdravik-batch\u201d could not be started: "},
    };
    for (const auto& [mode, error] : cases) {
        SCOPED_TRACE(mode);
        model.clearError();
        if (mode == "missing")
            fs::remove(Bundle(bundleRoot()).batchProgram());
        else
            installFakeBatch(bundleRoot(), mode);
        const auto known = retryFolders(session).size();
        retry(false);
        ASSERT_TRUE(model.error());
        EXPECT_EQ(model.error()->rfind(error, 0), 0u) << *model.error();
        EXPECT_EQ(model.message(), "Retry failed \u00b7 existing joints preserved");
        EXPECT_EQ(*model.document(), before);
        EXPECT_EQ(session.saved(), before);
        const auto folders = retryFolders(session);
        ASSERT_EQ(folders.size(), known + 1);
        for (const auto& folder : folders)
            EXPECT_TRUE(fs::exists(folder / "request.json") && fs::exists(folder / "process.log"));
    }
    // The program's own sentence is in the log beside the request.
    bool logged = false;
    for (const auto& folder : retryFolders(session))
        logged = logged || contains(folder / "process.log", "The photo could not be read.");
    EXPECT_TRUE(logged);

    // Retry folders are never made through a link a session holds in their place.
    const fs::path retries = session.folder / "detection-retries";
    fs::remove_all(retries);
    fs::create_directories(temp.path() / "outside");
    fs::create_directory_symlink(temp.path() / "outside", retries);
    installFakeBatch(bundleRoot(), "result");
    model.clearError();
    retry(false);
    EXPECT_TRUE(model.error()); // the core's sentence
    EXPECT_TRUE(fs::is_empty(temp.path() / "outside"));
    fs::remove(retries);

    // An unreadable manifest is reported before anything runs.
    fs::remove(session.manifest);
    model.clearError();
    QSignalSpy detecting(&model, &ReviewerModel::detectingChanged);
    model.retryDetection(false);
    ASSERT_TRUE(model.error());
    EXPECT_NE(model.error()->find("session.json"), std::string::npos);
    EXPECT_EQ(detecting.count(), 0);
    EXPECT_EQ(retryFolders(session).size(), 0u);
}

TEST_F(RetryTest, ALateAnswerForAnotherSessionOrAMissingFrameChangesNothing) {
    const SessionFiles first = openBundled("first");
    installFakeBatch(bundleRoot(), "result");
    retry(false);
    const dravik::DetectionRetry answer = frameOf(alex3).retries.at(0);
    const dravik::Uuid firstSession = model.sessionID();

    const SessionFiles second = openBundled("second");
    const dravik::ReviewDocument opened = *model.document();
    const std::string message = model.message();
    QSignalSpy changed(&model, &ReviewerModel::changed);
    model.acceptRetry(answer, alex3, firstSession);
    model.acceptRetry(answer, "turn-9/nobody", model.sessionID());
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(*model.document(), opened);
    EXPECT_EQ(model.message(), message);
    EXPECT_FALSE(fs::exists(second.review()));
    EXPECT_EQ(first.saved().frame(alex3)->retries.size(), 1u);
}

} // namespace

} // namespace tessary::test
