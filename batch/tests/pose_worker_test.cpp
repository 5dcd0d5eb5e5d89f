#include "batch_fixtures.h"
#include "pose_worker.h"
#include "worker_location.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>

using namespace dravik::batch;
using batch_fixtures::fakeWorker;

namespace {

std::vector<std::uint8_t> blank() {
    return std::vector<std::uint8_t>(256 * 256 * 3, 90);
}

std::string failureOf(const std::string& mode, int timeoutMs = 5000) {
    try {
        auto setup = fakeWorker(mode, {}, timeoutMs);
        PoseWorker worker(setup);
        worker.detect(blank(), true);
    } catch (const WorkerError& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace

TEST(PoseWorker, AnswersEveryRequestOfOneLongLivedProcess) {
    std::signal(SIGPIPE, SIG_IGN);
    auto setup = fakeWorker("good");
    PoseWorker worker(setup);
    auto rgb = blank();
    rgb[(std::size_t(40) * 256 + 200) * 3] = 255; // the fake puts the nose on the reddest pixel
    for (int round = 0; round < 3; ++round) {
        WorkerAnswer answer = worker.detect(rgb, round == 0);
        ASSERT_EQ(answer.keypoints.size(), 17u);
        EXPECT_NEAR(answer.keypoints[0].x, 200.5 / 256, 1e-6);
        EXPECT_NEAR(answer.keypoints[0].y, 40.5 / 256, 1e-6);
        EXPECT_EQ(answer.people, round == 0 ? 1 : -1);
    }
}

TEST(PoseWorker, EveryMisbehaviourBecomesOneSentenceNamingTheWorker) {
    std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(failureOf("garbage"),
              "The pose worker \u201cfake_pose_worker\u201d answered with something that is not a "
              "pose answer.");
    EXPECT_EQ(failureOf("die"),
              "The pose worker \u201cfake_pose_worker\u201d stopped unexpectedly.");
    EXPECT_EQ(failureOf("fail"),
              "The pose worker \u201cfake_pose_worker\u201d failed: the model broke.");
    EXPECT_EQ(failureOf("short"), "The pose worker \u201cfake_pose_worker\u201d answered with 5 "
                                  "keypoints instead of 17.");
    EXPECT_EQ(failureOf("hang", 300),
              "The pose worker \u201cfake_pose_worker\u201d did not answer within 0.3 seconds.");
    EXPECT_EQ(failureOf("silent", 300),
              "The pose worker \u201cfake_pose_worker\u201d did not answer within 0.3 seconds.");

    try {
        PoseWorker worker(
            {"pose-worker.mjs", {"/nonexistent/node", "pose-worker.mjs"}, std::chrono::seconds(5)});
        ADD_FAILURE() << "a missing program started";
    } catch (const WorkerError& error) {
        EXPECT_NE(std::string(error.what()).find("could not be started"), std::string::npos)
            << error.what();
    }
}

TEST(PoseWorker, AnInstallWithoutItsModelsIsRefusedBeforeAnythingStarts) {
    batch_fixtures::TempFolder prefix;
    auto program = prefix.path() / "libexec" / "tessary";
    std::filesystem::create_directories(program / "pose-worker" / "node_modules");
    std::filesystem::create_directories(prefix.path() / "share" / "tessary" / "models");
    std::ofstream(program / "pose-worker" / "pose-worker.mjs") << "// worker\n";
    try {
        installedWorker(program);
        ADD_FAILURE() << "an install without models was accepted";
    } catch (const dravik::DravikError& error) {
        EXPECT_NE(std::string(error.what()).find("\u201cmovenet-thunder.json\u201d is missing"),
                  std::string::npos)
            << error.what();
    }
    std::ofstream(prefix.path() / "share" / "tessary" / "models" / "movenet-thunder.json") << "{}";
    std::ofstream(prefix.path() / "share" / "tessary" / "models" / "movenet-thunder.bin") << "0";
    std::ofstream(prefix.path() / "share" / "tessary" / "models" / "movenet-multipose.json")
        << "{}";
    std::ofstream(prefix.path() / "share" / "tessary" / "models" / "movenet-multipose.bin") << "0";
    WorkerSetup setup = installedWorker(program);
    EXPECT_EQ(setup.command.at(0), "node");
    EXPECT_EQ(setup.command.at(2), (prefix.path() / "share" / "tessary" / "models").string());
}
