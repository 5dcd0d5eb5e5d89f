// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "retry_worker.h"
#include "session_analysis_worker.h"
#include "workers_support.h"

#include <fstream>
#include <thread>
#include <unistd.h>

namespace tessary::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const ChildLimits quick{300ms, 300ms, 20ms};

std::string failureOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const dravik::DravikError& error) {
        return error.message();
    }
    return "no failure";
}

class WorkerTest : public ::testing::Test {
  protected:
    WorkerTest() { fs::create_directories(output.parent_path()); }

    fs::path log() const { return output.string() + ".log"; }
    void analyse(const ChildLimits& limits = SessionAnalysisWorker::defaultLimits()) {
        SessionAnalysisWorker::run(session.manifest, output, Bundle(bundleRoot).batchProgram(),
                                   limits);
    }
    dravik::DetectionRetry redetect(const ChildLimits& limits) {
        const dravik::RetryRequest request{(session.folder / "turn-3-alex.jpg").string(),
                                           "sha256:" + std::string(64, '0'),
                                           dravik::PixelRect{10, 20, 100, 200}};
        return RetryWorker::run(request, Bundle(bundleRoot).batchProgram(), temp.path() / "retry",
                                limits);
    }

    TemporaryFolder temp;
    fs::path bundleRoot = temp.path() / "bundle";
    SessionFiles session = bundledSession(temp.path() / "session");
    fs::path output = temp.path() / "out" / "analysis.json";
};

TEST_F(WorkerTest, AnalysisAcceptsExitTwoRefusesFailuresAndLogsEachRunAfresh) {
    const fs::path args = temp.path() / "args.txt";
    installFakeBatch(bundleRoot, "attention", {{"FAKE_BATCH_ARGS_FILE", args.string()}});
    std::ofstream(log()) << "left over from an earlier run\n";
    ASSERT_NO_THROW(analyse());
    EXPECT_EQ(dravik::ResultsFile::load(output).riders.size(), 3u);
    EXPECT_EQ(readText(args),
              "feasibility\t" + session.manifest.string() + "\t" + output.string() + "\n");
    EXPECT_FALSE(contains(log(), "left over"));
    EXPECT_TRUE(contains(log(), "fake dravik-batch feasibility"));
    EXPECT_TRUE(contains(log(), "Some photos need attention."));

    for (const std::string mode : {"fail", "crash"}) {
        SCOPED_TRACE(mode);
        installFakeBatch(bundleRoot, mode);
        EXPECT_EQ(failureOf([&] { analyse(); }),
                  "Folder analysis failed. See analysis.json.log. Relaunch or rescan to retry.");
        EXPECT_TRUE(contains(log(), "feasibility in mode " + mode));
    }

    // Nowhere to write the log, or a log planted as a link to someone's file: the program is not
    // even started, and the file is left as it was.
    fs::remove(args);
    const fs::path someones = temp.path() / "someones.txt";
    std::ofstream(someones) << "keep me\n";
    fs::remove(log());
    fs::create_symlink(someones, log());
    EXPECT_EQ(failureOf([&] { analyse(); }), "Cannot create the folder analysis log.");
    EXPECT_EQ(readText(someones), "keep me\n");
    output = temp.path() / "missing" / "analysis.json";
    EXPECT_EQ(failureOf([&] { analyse(); }), "Cannot create the folder analysis log.");
    EXPECT_FALSE(fs::exists(args));
}

// The program ignores SIGTERM and so does what it started: the group's SIGKILL must reach both,
// and only after the grace.
TEST_F(WorkerTest, ATimeOutKillsTheWholeProcessGroupAfterTheGrace) {
    const fs::path pidFile = temp.path() / "grandchild.pid";
    installFakeBatch(bundleRoot, "ignore-term", {{"FAKE_BATCH_PID_FILE", pidFile.string()}});
    const auto start = Clock::now();
    EXPECT_EQ(failureOf([&] { analyse(quick); }),
              "Folder analysis timed out. Originals and saved reviews are unchanged. See "
              "analysis.json.log.");
    const auto took = Clock::now() - start;
    EXPECT_GE(took, quick.timeout + quick.grace);
    EXPECT_LT(took, quick.timeout + quick.grace + 2s);
    pid_t grandchild = 0;
    pid_t group = 0;
    std::istringstream(readText(pidFile)) >> grandchild >> group;
    ASSERT_GT(grandchild, 0);
    EXPECT_NE(group, ::getpgrp()); // the program got a group of its own
    // The kill is sent before run() returns; the kernel may need a moment to finish it.
    EXPECT_TRUE(waitUntil([&] { return livingMembers(group).empty(); }, 2s));
}

TEST_F(WorkerTest, RetryAnswerBeforeTheDeadlineCountsAndFloodedOutputLandsInTheLog) {
    installFakeBatch(bundleRoot, "sleep", {{"FAKE_BATCH_SLEEP_MS", "400"}});
    const dravik::DetectionRetry slow = redetect({2s, 300ms, 20ms});
    ASSERT_TRUE(slow.primary);
    EXPECT_TRUE(slow.primary->usable());

    installFakeBatch(bundleRoot, "flood");
    ASSERT_NO_THROW(redetect(RetryWorker::defaultLimits()));
    const fs::path processLog = temp.path() / "retry" / "process.log";
    EXPECT_GT(readText(processLog).size(), 2u * 1024 * 1024);
    EXPECT_TRUE(contains(processLog, "end of stdout"));
    EXPECT_TRUE(contains(processLog, "end of stderr"));

    // Past the cap the output is still taken, so the program finishes, but only a line says so.
    ChildLimits capped = RetryWorker::defaultLimits();
    capped.logBytes = 256 * 1024;
    ASSERT_NO_THROW(redetect(capped));
    const std::string kept = readText(processLog);
    const std::string notice =
        "\n[Tessary dropped the rest of this output: a run's log keeps at most 262144 bytes.]\n";
    EXPECT_EQ(kept.size(), capped.logBytes + notice.size());
    EXPECT_TRUE(kept.ends_with(notice));
}

TEST_F(WorkerTest, QuittingStopsARunningProgramAndStartsNoOther) {
    installFakeBatch(bundleRoot, "sleep");
    std::string failure;
    const auto start = Clock::now();
    std::thread running([&] { failure = failureOf([&] { analyse(); }); });
    std::this_thread::sleep_for(300ms);
    setChildrenStopping(true);
    running.join();
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(failure.rfind("Folder analysis timed out.", 0), 0u);
    EXPECT_EQ(failureOf([&] { analyse(); }),
              "The batch program \u201cdravik-batch\u201d was not started because Tessary is "
              "quitting.");
    setChildrenStopping(false);
    installFakeBatch(bundleRoot, "result");
    EXPECT_NO_THROW(analyse());
}

} // namespace

} // namespace tessary::test
