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
    WorkerTest() {
        session = bundledSession(temp.path() / "session");
        output = temp.path() / "out" / "analysis.json";
        fs::create_directories(output.parent_path());
    }

    fs::path helper() const { return Bundle(bundleRoot).batchProgram(); }
    fs::path log() const { return output.string() + ".log"; }
    void analyse(const ChildLimits& limits = SessionAnalysisWorker::defaultLimits()) {
        SessionAnalysisWorker::run(session.manifest, output, helper(), limits);
    }
    dravik::DetectionRetry redetect(const ChildLimits& limits) {
        const dravik::RetryRequest request{(session.folder / "turn-3-alex.jpg").string(),
                                           "sha256:" + std::string(64, '0'),
                                           dravik::PixelRect{10, 20, 100, 200}};
        return RetryWorker::run(request, helper(), temp.path() / "retry", limits);
    }

    TemporaryFolder temp;
    fs::path bundleRoot = temp.path() / "bundle";
    SessionFiles session;
    fs::path output;
};

TEST_F(WorkerTest, AnalysisAcceptsExitTwoAndLogsBothStreams) {
    const fs::path args = temp.path() / "args.txt";
    installFakeBatch(bundleRoot, "attention", {{"FAKE_BATCH_ARGS_FILE", args.string()}});
    std::ofstream(log()) << "left over from an earlier run\n";
    ASSERT_NO_THROW(analyse());
    EXPECT_EQ(dravik::ResultsFile::load(output).riders.size(), 3u);
    EXPECT_EQ(lines(readText(args)),
              std::vector<std::string>{"feasibility\t" + session.manifest.string() + "\t" +
                                       output.string()});
    const std::string text = readText(log());
    EXPECT_EQ(text.find("left over"), std::string::npos);
    EXPECT_NE(text.find("fake dravik-batch feasibility"), std::string::npos);
    EXPECT_NE(text.find("Some photos need attention."), std::string::npos);
}

TEST_F(WorkerTest, AnalysisFailuresNameTheLog) {
    const std::string failed =
        "Folder analysis failed. See analysis.json.log. Relaunch or rescan to retry.";
    for (const std::string mode : {"fail", "crash"}) {
        SCOPED_TRACE(mode);
        installFakeBatch(bundleRoot, mode);
        EXPECT_EQ(failureOf([&] { analyse(); }), failed);
        EXPECT_TRUE(fs::exists(log()));
    }
    EXPECT_NE(readText(log()).find("fake dravik-batch feasibility in mode crash"),
              std::string::npos);

    // Nowhere to write the log: the program is not even started.
    output = temp.path() / "missing" / "analysis.json";
    EXPECT_EQ(failureOf([&] { analyse(); }), "Cannot create the folder analysis log.");
}

// The program stops on SIGTERM but what it started ignores it: the group's SIGKILL must still
// reach it.
TEST_F(WorkerTest, AnalysisTimeOutKillsTheWholeProcessGroup) {
    const fs::path pidFile = temp.path() / "grandchild.pid";
    installFakeBatch(bundleRoot, "grandchild", {{"FAKE_BATCH_PID_FILE", pidFile.string()}});
    const auto start = Clock::now();
    EXPECT_EQ(failureOf([&] { analyse(quick); }),
              "Folder analysis timed out. Originals and saved reviews are unchanged. See "
              "analysis.json.log.");
    EXPECT_GE(Clock::now() - start, quick.timeout);

    pid_t grandchild = 0;
    pid_t group = 0;
    std::istringstream(readText(pidFile)) >> grandchild >> group;
    ASSERT_GT(grandchild, 0);
    EXPECT_NE(group, ::getpgrp()); // the program got a group of its own
    // The kill is sent before run() returns; the kernel may need a moment to finish it.
    EXPECT_TRUE(waitUntil([&] { return !alive(grandchild) && livingMembers(group).empty(); }, 2s));
}

TEST_F(WorkerTest, RetryTimeOutKillsAProgramIgnoringSigterm) {
    installFakeBatch(bundleRoot, "ignore-term");
    const auto start = Clock::now();
    EXPECT_EQ(failureOf([&] { redetect(quick); }),
              "Detection timed out. Your corrections are preserved.");
    const auto took = Clock::now() - start;
    EXPECT_GE(took, quick.timeout + quick.grace);
    EXPECT_LT(took, quick.timeout + quick.grace + 2s);
    EXPECT_TRUE(fs::exists(temp.path() / "retry" / "request.json"));
}

TEST_F(WorkerTest, RetryAnswerBeforeTheDeadlineCountsAndFloodedOutputLandsInTheLog) {
    installFakeBatch(bundleRoot, "sleep", {{"FAKE_BATCH_SLEEP_MS", "400"}});
    const dravik::DetectionRetry slow = redetect({2s, 300ms, 20ms});
    ASSERT_TRUE(slow.primary);
    EXPECT_TRUE(slow.primary->usable());

    installFakeBatch(bundleRoot, "flood");
    ASSERT_NO_THROW(redetect(RetryWorker::defaultLimits()));
    const std::string text = readText(temp.path() / "retry" / "process.log");
    EXPECT_GT(text.size(), 2u * 1024 * 1024);
    EXPECT_NE(text.find("end of stdout"), std::string::npos);
    EXPECT_NE(text.find("end of stderr"), std::string::npos);
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
