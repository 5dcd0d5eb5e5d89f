#include "dravik/manifest.h"
#include "dravik/store.h"
#include "workers_support.h"

#include <QSignalSpy>

namespace tessary::test {

namespace {

using namespace std::chrono_literals;

const std::string retryFailed = "Retry failed \u00b7 existing joints preserved";
const std::string retrySaved =
    "Retry automatically saved \u00b7 new points need review; your corrections are preserved.";

class RetryTest : public ModelTest {
  protected:
    fs::path bundleRoot() const { return temp.path() / "bundle"; }
    fs::path retries(const SessionFiles& session) const {
        return session.folder / "detection-retries";
    }
    std::vector<fs::path> retryFolders(const SessionFiles& session) const {
        std::vector<fs::path> folders;
        if (fs::exists(retries(session)))
            for (const auto& entry : fs::directory_iterator(retries(session)))
                folders.push_back(entry.path());
        std::sort(folders.begin(), folders.end());
        return folders;
    }
    // Starts a retry of the active frame and waits for its answer.
    void retry(bool fullPhoto) {
        model.retryDetection(fullPhoto);
        ASSERT_TRUE(model.isDetecting());
        ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }));
    }
    dravik::RiderInput riderOf(const SessionFiles& session, const std::string& frameID) const {
        const dravik::ReviewFrame& frame = frameOf(frameID);
        for (const auto& pair : dravik::SessionManifest::load(session.manifest).pairs)
            for (const auto& rider : pair.riders)
                if (pair.id == frame.pairID && rider.id == frame.riderID)
                    return rider;
        throw std::runtime_error("no rider input for " + frameID);
    }
};

TEST_F(RetryTest, AnAnswerIsMergedSavedAndShownWithoutTouchingCorrections) {
    const SessionFiles session = openBundled();
    const fs::path args = temp.path() / "args.txt";
    installFakeBatch(bundleRoot(), "result", {{"FAKE_BATCH_ARGS_FILE", args.string()}});
    const std::string frameID = *model.activeFrameID();
    model.setSelected("left_knee");
    model.edit(dravik::Point2{123, 234}, dravik::JointReviewState::corrected);
    const auto correction = editOf(frameID, "left_knee");
    const auto undoDepth = model.undoStack().size();
    const auto revision = model.document()->revision();

    QSignalSpy detecting(&model, &ReviewerModel::detectingChanged);
    model.retryDetection(false);
    EXPECT_TRUE(model.isDetecting());
    EXPECT_EQ(model.message(), "Detecting again\u2026 Your reviewed joints will be preserved.");
    model.retryDetection(true); // one retry at a time
    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }));
    EXPECT_EQ(detecting.count(), 2);

    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(), retrySaved);
    ASSERT_EQ(frameOf(frameID).retries.size(), 1u);
    EXPECT_EQ(editOf(frameID, "left_knee"), correction);
    EXPECT_EQ(model.document()->revision(), revision + 1);
    EXPECT_EQ(session.saved(), *model.document());
    EXPECT_EQ(model.savedRevision(), revision + 1);
    // A retry is not an edit of the reviewer's: undo still steps back through their edits only.
    EXPECT_EQ(model.undoStack().size(), undoDepth);
    // The new detection is 2D, so the frame switches to it.
    EXPECT_EQ(model.settings(frameID).kind, "2D");

    const dravik::RiderInput rider = riderOf(session, frameID);
    const std::vector<fs::path> folders = retryFolders(session);
    ASSERT_EQ(folders.size(), 1u);
    const std::string name = folders[0].filename().string();
    EXPECT_EQ(dravik::Uuid::parse(name).value().upperText(), name);
    const dravik::RetryRequest request = dravik::RetryRequest::load(folders[0] / "request.json");
    EXPECT_EQ(request.source, dravik::ReviewStore::assetURL(rider.file, session.manifest).string());
    EXPECT_EQ(request.sourceHash, rider.sourceHash);
    EXPECT_EQ(request.crop, rider.crop);
    EXPECT_EQ(frameOf(frameID).retries[0],
              dravik::DetectionRetry::load(folders[0] / "result.json"));
    EXPECT_NE(readText(folders[0] / "process.log").find("fake dravik-batch redetect"),
              std::string::npos);
    EXPECT_EQ(lines(readText(args)),
              std::vector<std::string>{"redetect\t" + (folders[0] / "request.json").string() +
                                       "\t" + (folders[0] / "result.json").string()});

    // The full panel this time, in a folder of its own.
    retry(true);
    const std::vector<fs::path> after = retryFolders(session);
    ASSERT_EQ(after.size(), 2u);
    const fs::path second = after[0] == folders[0] ? after[1] : after[0];
    EXPECT_EQ(dravik::RetryRequest::load(second / "request.json").crop, rider.panel);
    EXPECT_EQ(frameOf(frameID).retries.size(), 2u);
}

TEST_F(RetryTest, AnAnswerWithoutAUsablePoseIsStillMergedAndSaved) {
    const SessionFiles session = openBundled();
    installFakeBatch(bundleRoot(), "unusable");
    const std::string frameID = *model.activeFrameID();
    const auto revision = model.document()->revision();
    retry(false);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(),
              "No usable pose found. Existing points preserved \u00b7 automatically saved.");
    EXPECT_EQ(frameOf(frameID).retries.size(), 1u);
    EXPECT_EQ(session.saved().revision(), revision + 1);
    EXPECT_EQ(model.settings(frameID).kind, "3D");
}

TEST_F(RetryTest, EveryFailureOfTheProgramLeavesTheDocumentAndKeepsTheDiagnostics) {
    const SessionFiles session = openBundled();
    const dravik::ReviewDocument before = *model.document();
    const std::string failed =
        "Detection failed. Your corrections are preserved; retry diagnostics are saved locally.";
    struct Case {
        std::string mode;
        std::string error; // a prefix of the expected error
    };
    const Case cases[] = {
        {"fail", failed},
        {"crash", failed},
        {"attention", failed}, // only "feasibility" may end with status 2
        {"no-result", "\u201cresult.json\u201d"},
        {"garbage", "\u201cresult.json\u201d"},
        {"missing", "The batch program \u201cdravik-batch\u201d could not be started: "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mode);
        model.clearError();
        if (c.mode == "missing")
            fs::remove(Bundle(bundleRoot()).batchProgram());
        else
            installFakeBatch(bundleRoot(), c.mode);
        const auto known = retryFolders(session).size();
        retry(false);
        ASSERT_TRUE(model.error());
        EXPECT_EQ(model.error()->rfind(c.error, 0), 0u) << *model.error();
        EXPECT_EQ(model.message(), retryFailed);
        EXPECT_EQ(*model.document(), before);
        EXPECT_EQ(session.saved(), before); // as the retry's own save left it
        const auto folders = retryFolders(session);
        ASSERT_EQ(folders.size(), known + 1);
        for (const auto& folder : folders) {
            EXPECT_TRUE(fs::exists(folder / "request.json"));
            EXPECT_TRUE(fs::exists(folder / "process.log"));
        }
    }
    // The program's own sentence is in the log beside the request.
    bool logged = false;
    for (const auto& folder : retryFolders(session))
        logged = logged || readText(folder / "process.log").find("The photo could not be read.") !=
                               std::string::npos;
    EXPECT_TRUE(logged);
}

TEST_F(RetryTest, ATimeOutStopsTheProgramWithoutBlockingTheWindow) {
    const SessionFiles session = openBundled();
    installFakeBatch(bundleRoot(), "sleep", {{"FAKE_BATCH_SLEEP_MS", "20000"}});
    ReviewerModel::BatchLimits limits;
    limits.retryTimeout = 400ms;
    limits.retryGrace = 200ms;
    limits.poll = 20ms;
    model.setBatchLimits(limits);
    const std::string frameID = *model.activeFrameID();

    const auto start = std::chrono::steady_clock::now();
    model.retryDetection(false);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 300ms);
    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }, 5s));
    EXPECT_EQ(model.error(), "Detection timed out. Your corrections are preserved.");
    EXPECT_EQ(model.message(), retryFailed);
    EXPECT_TRUE(frameOf(frameID).retries.empty());
    ASSERT_EQ(retryFolders(session).size(), 1u);
    EXPECT_FALSE(fs::exists(retryFolders(session)[0] / "result.json"));
}

TEST_F(RetryTest, ALateAnswerForAnotherSessionOrAMissingFrameChangesNothing) {
    const SessionFiles first = openBundled("first");
    installFakeBatch(bundleRoot(), "result");
    const std::string frameID = *model.activeFrameID();
    retry(false);
    const dravik::DetectionRetry answer = frameOf(frameID).retries.at(0);
    const dravik::Uuid firstSession = model.sessionID();

    const SessionFiles second = openBundled("second");
    const dravik::ReviewDocument opened = *model.document();
    const std::string message = model.message();
    QSignalSpy changed(&model, &ReviewerModel::changed);
    model.acceptRetry(answer, frameID, firstSession);
    model.acceptRetry(answer, "turn-9/nobody", model.sessionID());
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(*model.document(), opened);
    EXPECT_EQ(model.message(), message);
    EXPECT_FALSE(fs::exists(second.review()));
    EXPECT_EQ(first.saved().frame(frameID)->retries.size(), 1u);
}

TEST_F(RetryTest, AnUnreadableManifestIsReportedBeforeAnythingRuns) {
    const SessionFiles session = openBundled();
    installFakeBatch(bundleRoot(), "result");
    fs::remove(session.manifest);
    QSignalSpy detecting(&model, &ReviewerModel::detectingChanged);
    model.retryDetection(false);
    ASSERT_TRUE(model.error());
    EXPECT_NE(model.error()->find("session.json"), std::string::npos);
    EXPECT_EQ(detecting.count(), 0);
    EXPECT_FALSE(fs::exists(retries(session)));
}

} // namespace

} // namespace tessary::test
