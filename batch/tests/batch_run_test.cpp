#include "batch_fixtures.h"
#include "batch_run.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/manifest.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>

using namespace dravik;
using namespace dravik::batch;
using namespace batch_fixtures;
namespace fs = std::filesystem;

namespace {

struct Outcome {
    int status;
    std::string stderrText;
};

Outcome run(const std::vector<std::string>& arguments, const WorkerSetup& setup) {
    std::signal(SIGPIPE, SIG_IGN);
    testing::internal::CaptureStderr();
    int status = runBatch(arguments, [&] { return setup; });
    return {status, testing::internal::GetCapturedStderr()};
}

void write(const fs::path& file, const std::string& text) {
    std::ofstream(file) << text;
}

class Redetect : public testing::Test {
  protected:
    void SetUp() override {
        hash = writeDotPhoto(photo, 800, 600, 500, 300);
        write(request, RetryRequest{photo.string(), hash, {400, 200, 200, 100}}.encode());
    }
    TempFolder folder;
    fs::path photo = folder.path() / "rider.jpg";
    fs::path request = folder.path() / "request.json";
    fs::path result = folder.path() / "result.json";
    std::string hash;
};

} // namespace

TEST_F(Redetect, WritesBothPassesInPhotoPixelsCountingPeopleInEach) {
    fs::path log = folder.path() / "requests.log";
    Outcome outcome = run({"redetect", request.string(), result.string()}, fakeWorker("good", log));
    ASSERT_EQ(outcome.status, 0) << outcome.stderrText;
    DetectionRetry retry = DetectionRetry::load(result);
    ASSERT_TRUE(retry.primary && retry.refined);
    // The 200 x 100 crop is padded to a 200 px square: one tensor pixel is 0.78 photo pixels.
    auto nose = retry.primary->point("nose");
    ASSERT_TRUE(nose);
    EXPECT_NEAR(nose->x, 500, 2);
    EXPECT_NEAR(nose->y, 300, 2);
    EXPECT_TRUE(retry.primary->usable());
    EXPECT_EQ(retry.refined->count, 1);
    EXPECT_EQ(retry.refined->status, "needsReview");
    // The padded square starts 50 px above the crop; the fake puts the left shoulder at (0.4, 0.3).
    auto shoulder = retry.primary->point("left_shoulder");
    EXPECT_NEAR(shoulder->x, 400 + 0.4 * 200, 1e-3);
    EXPECT_NEAR(shoulder->y, 150 + 0.3 * 200, 1e-3);
    EXPECT_EQ(readText(log), "flags=1 side=256\nflags=1 side=256\n");
}

TEST_F(Redetect, RefusesAChangedPhotoBadArgumentsAndADeadWorkerWithASentence) {
    write(request,
          RetryRequest{photo.string(), "sha256:" + std::string(64, '0'), {400, 200, 200, 100}}
              .encode());
    Outcome changed = run({"redetect", request.string(), result.string()}, fakeWorker("good"));
    EXPECT_EQ(changed.status, 1);
    EXPECT_EQ(changed.stderrText,
              "The photo \u201crider.jpg\u201d has changed since it was added to "
              "the session: its content hash no longer matches.\n");
    EXPECT_FALSE(fs::exists(result));

    EXPECT_EQ(run({"redetect", request.string()}, fakeWorker("good")).status, 64);
    EXPECT_EQ(run({"detect", request.string(), result.string()}, fakeWorker("good")).status, 64);

    write(request, RetryRequest{photo.string(), hash, {400, 200, 200, 100}}.encode());
    Outcome dead = run({"redetect", request.string(), result.string()}, fakeWorker("die"));
    EXPECT_EQ(dead.status, 1);
    EXPECT_EQ(dead.stderrText,
              "The pose worker \u201cfake_pose_worker\u201d stopped unexpectedly.\n");
    EXPECT_FALSE(fs::exists(result));

    Outcome missing = run({"redetect", (folder.path() / "none.json").string(), result.string()},
                          fakeWorker("good"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.stderrText.find("none.json"), std::string::npos) << missing.stderrText;
}

namespace {

class Feasibility : public testing::Test {
  protected:
    RiderInput rider(const std::string& file, int dotX, int dotY) {
        std::string hash = writeDotPhoto(folder.path() / file, 640, 480, dotX, dotY);
        PixelRect whole{0, 0, 640, 480};
        return {"rider", "subject", std::string(SessionDiscovery::unreviewedRiderName()),
                file,    hash,      {640, 480},
                whole,   whole};
    }
    void writeManifest(const std::vector<RiderInput>& riders) {
        SessionManifest manifest{"Corner", {}};
        for (const RiderInput& r : riders) {
            PairInput pair;
            pair.id = r.file + "-pair";
            pair.title = r.file;
            pair.riders = {r};
            manifest.pairs.push_back(pair);
        }
        write(manifestFile, manifest.encode());
    }
    TempFolder folder;
    fs::path manifestFile = folder.path() / "session.json";
    fs::path output = folder.path() / "results.json";
};

} // namespace

TEST_F(Feasibility, DetectsEveryPhotoAndTightensDiscoveredCrops) {
    writeManifest({rider("a.jpg", 300, 100), rider("b.jpg", 100, 400)});
    Outcome outcome =
        run({"feasibility", manifestFile.string(), output.string()}, fakeWorker("good"));
    ASSERT_EQ(outcome.status, 0) << outcome.stderrText;
    ResultsFile results = ResultsFile::load(output);
    ASSERT_EQ(results.riders.size(), 2u);
    EXPECT_EQ(results.riders[1].pairID, "b.jpg-pair");
    ASSERT_EQ(results.riders[1].results.size(), 1u);
    EXPECT_TRUE(results.riders[1].results[0].usable());
    SessionManifest after = SessionManifest::load(manifestFile);
    const RiderInput& a = after.pairs[0].riders[0];
    EXPECT_TRUE(a.panel.contains(a.crop));
    EXPECT_LT(a.crop.width, 640);
    EXPECT_EQ(a.panel, (PixelRect{0, 0, 640, 480}));
}

TEST_F(Feasibility, LeavesReviewedCropsAloneAndReportsPhotosNeedingAttention) {
    RiderInput named = rider("a.jpg", 300, 100);
    named.displayName = "Ada";
    RiderInput gone = rider("b.jpg", 100, 400);
    writeManifest({named, gone});
    fs::remove(folder.path() / "b.jpg");
    std::string before = readText(manifestFile);

    Outcome outcome =
        run({"feasibility", manifestFile.string(), output.string()}, fakeWorker("good"));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.stderrText.find("b.jpg"), std::string::npos) << outcome.stderrText;
    ResultsFile results = ResultsFile::load(output);
    ASSERT_EQ(results.riders.size(), 2u);
    EXPECT_TRUE(results.riders[0].results.at(0).usable());
    EXPECT_TRUE(results.riders[1].results.empty());
    EXPECT_EQ(readText(manifestFile), before);

    writeManifest({rider("c.jpg", 10, 10)});
    Outcome nobody =
        run({"feasibility", manifestFile.string(), output.string()}, fakeWorker("empty"));
    EXPECT_EQ(nobody.status, 2);
    EXPECT_EQ(nobody.stderrText, "No single rider was found in \u201cc.jpg\u201d.\n");
    EXPECT_EQ(ResultsFile::load(output).riders.at(0).results.at(0).status, "noRider");
    Outcome crowd =
        run({"feasibility", manifestFile.string(), output.string()}, fakeWorker("crowd"));
    EXPECT_EQ(crowd.status, 2);
}

TEST_F(Feasibility, AWorkerFailureStopsTheRunWithoutWritingResults) {
    writeManifest({rider("a.jpg", 300, 100)});
    std::string before = readText(manifestFile);
    Outcome outcome =
        run({"feasibility", manifestFile.string(), output.string()}, fakeWorker("garbage"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_FALSE(fs::exists(output));
    EXPECT_EQ(readText(manifestFile), before);
}
