// SPDX-License-Identifier: Apache-2.0
#include "batch_fixtures.h"
#include "batch_run.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/manifest.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace dravik;
using namespace dravik::batch;
using namespace dravik::test;
namespace fs = std::filesystem;

namespace {

struct Outcome {
    int status;
    std::string stderrText;
};

class BatchRun : public testing::Test {
  protected:
    Outcome run(const std::vector<std::string>& arguments, const std::string& workerMode) {
        std::signal(SIGPIPE, SIG_IGN);
        testing::internal::CaptureStderr();
        int status = runBatch(arguments, [&] { return batch_fixtures::fakeWorker(workerMode); });
        return {status, testing::internal::GetCapturedStderr()};
    }
    // An unreviewed rider seen on the whole 640 x 480 photo, as discovery writes it.
    RiderInput rider(const std::string& file, int dotX, int dotY) {
        std::string hash = batch_fixtures::writeDotPhoto(folder / file, 640, 480, dotX, dotY);
        PixelRect whole{0, 0, 640, 480};
        return {"rider", "subject", std::string(SessionDiscovery::unreviewedRiderName()),
                file,    hash,      {640, 480},
                whole,   whole};
    }
    void writeManifest(const std::vector<RiderInput>& riders) {
        SessionManifest manifest{"Corner", {}};
        for (const RiderInput& r : riders)
            manifest.pairs.push_back({r.file + "-pair", r.file, {r}});
        writeText(manifestFile, manifest.encode());
    }
    Outcome feasibility(const std::string& workerMode) {
        return run({"feasibility", manifestFile.string(), output.string()}, workerMode);
    }
    TempDir folder;
    fs::path manifestFile = folder / "session.json";
    fs::path output = folder / "results.json";
};

} // namespace

TEST_F(BatchRun, RedetectWritesBothPassesInPhotoPixelsAndRefusesAChangedPhoto) {
    const fs::path photo = folder / "rider.jpg";
    const fs::path request = folder / "request.json";
    const fs::path result = folder / "result.json";
    const std::string hash = batch_fixtures::writeDotPhoto(photo, 800, 600, 500, 300);
    auto redetect = [&](const std::string& sourceHash) {
        writeText(request, RetryRequest{photo.string(), sourceHash, {400, 200, 200, 100}}.encode());
        return run({"redetect", request.string(), result.string()}, "good");
    };
    Outcome changed = redetect("sha256:" + std::string(64, '0'));
    EXPECT_EQ(changed.status, 1);
    EXPECT_EQ(changed.stderrText,
              "The photo \u201crider.jpg\u201d has changed since it was added to "
              "the session: its content hash no longer matches.\n");
    EXPECT_FALSE(fs::exists(result));
    EXPECT_EQ(run({"redetect", request.string()}, "good").status, 64);
    EXPECT_EQ(run({"detect", request.string(), result.string()}, "good").status, 64);

    Outcome outcome = redetect(hash);
    ASSERT_EQ(outcome.status, 0) << outcome.stderrText;
    DetectionRetry retry = DetectionRetry::load(result);
    ASSERT_TRUE(retry.primary && retry.refined);
    // The fake puts the nose on the dot in every square it is sent, however the pipeline crops.
    for (const DravikResult* pass : {&*retry.primary, &*retry.refined}) {
        auto nose = pass->point("nose");
        ASSERT_TRUE(nose);
        EXPECT_NEAR(nose->x, 500, 2);
        EXPECT_NEAR(nose->y, 300, 2);
        EXPECT_EQ(pass->status, "needsReview");
        ASSERT_EQ(pass->candidates.size(), 1u);
        EXPECT_EQ(pass->rider, std::optional<std::size_t>(0));
    }
}

TEST_F(BatchRun, FeasibilityDetectsEveryPhotoAndTightensDiscoveredCrops) {
    writeManifest({rider("a.jpg", 300, 100), rider("b.jpg", 100, 400)});
    Outcome outcome = feasibility("good");
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

// A bad photo is reported and the run goes on; a failing worker stops it with nothing written.
TEST_F(BatchRun, FeasibilityReportsPhotosNeedingAttentionAndStopsWhenTheWorkerFails) {
    RiderInput named = rider("a.jpg", 300, 100);
    named.displayName = "Ada";
    writeManifest({named, rider("b.jpg", 100, 400)});
    fs::remove(folder / "b.jpg");
    std::string before = readText(manifestFile);

    Outcome outcome = feasibility("good");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.stderrText.find("b.jpg"), std::string::npos) << outcome.stderrText;
    ResultsFile results = ResultsFile::load(output);
    ASSERT_EQ(results.riders.size(), 2u);
    EXPECT_TRUE(results.riders[0].results.at(0).usable());
    EXPECT_TRUE(results.riders[1].results.empty());
    EXPECT_EQ(readText(manifestFile), before) << "a reviewed crop was replaced";

    writeManifest({rider("c.jpg", 10, 10)});
    Outcome nobody = feasibility("empty");
    EXPECT_EQ(nobody.status, 2);
    EXPECT_EQ(nobody.stderrText, "No single rider was found in \u201cc.jpg\u201d.\n");
    EXPECT_EQ(ResultsFile::load(output).riders.at(0).results.at(0).status, "noRider");

    fs::remove(output);
    before = readText(manifestFile);
    EXPECT_EQ(feasibility("garbage").status, 1);
    EXPECT_FALSE(fs::exists(output));
    EXPECT_EQ(readText(manifestFile), before);
}
