// SPDX-License-Identifier: Apache-2.0
#include "batch_fixtures.h"
#include "node_runtime.h"
#include "pose_worker.h"
#include "worker_location.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace dravik::batch;
using batch_fixtures::fakeWorker;
using dravik::test::failureOf;
namespace fs = std::filesystem;

TEST(PoseWorker, EveryMisbehaviourBecomesOneSentenceNamingTheWorker) {
    std::signal(SIGPIPE, SIG_IGN);
    const struct {
        const char* mode;
        int timeoutMs;
        std::string says;
    } cases[] = {
        {"garbage", 5000, "answered with something that is not a pose answer."},
        {"die", 5000, "stopped unexpectedly."},
        {"fail", 5000, "failed: the model broke."},
        {"short", 5000, "answered with 5 keypoints instead of 17."},
        {"wild", 5000, "answered with points outside the picture it was given."},
        {"hang", 300, "did not answer within 0.3 seconds."},
        {"silent", 300, "did not answer within 0.3 seconds."}, // never ready
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        EXPECT_EQ(failureOf([&] {
                      PoseWorker worker(fakeWorker(c.mode, c.timeoutMs));
                      worker.pose(std::vector<std::uint8_t>(256 * 256 * 3));
                  }),
                  "The pose worker \u201cfake_pose_worker\u201d " + c.says);
    }
    const std::string missing = failureOf([] {
        PoseWorker worker({"pose-worker.cjs", {"/nonexistent/node"}, std::chrono::seconds(5), {}});
    });
    EXPECT_NE(missing.find("could not be started"), std::string::npos) << missing;
}

TEST(PoseWorker, AnInstallWithoutItsModelsIsRefusedBeforeAnythingStarts) {
    dravik::test::TempDir prefix;
    const fs::path program = prefix.path() / "libexec" / "tessary";
    const fs::path models = prefix.path() / "share" / "tessary" / "models";
    fs::create_directories(program / "pose-worker" / "node_modules");
    dravik::test::writeText(program / "pose-worker" / "pose-worker.cjs", "// worker\n");
    const std::string refusal = failureOf([&] { installedWorker(program); });
    EXPECT_NE(refusal.find("\u201cmovenet-thunder.json\u201d is missing"), std::string::npos)
        << refusal;
    for (const char* file :
         {"movenet-thunder.json", "movenet-thunder.bin", "movenet-multipose.json",
          "movenet-multipose.bin", "nanodet.json", "nanodet.bin"})
        dravik::test::writeText(models / file, "0");
    WorkerSetup setup = installedWorker(program);
    EXPECT_EQ(setup.command.at(0), configuredNode().string());
    EXPECT_EQ(setup.command.at(2), models.string());
}
