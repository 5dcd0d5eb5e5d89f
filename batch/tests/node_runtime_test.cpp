// SPDX-License-Identifier: Apache-2.0
#include "batch_fixtures.h"
#include "node_runtime.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik::batch;
using dravik::test::failureOf;
namespace fs = std::filesystem;

namespace {

// A stand-in `node` that runs `script` when asked for its version.
fs::path fakeNode(const dravik::test::TempDir& folder, const std::string& name,
                  const std::string& script) {
    const fs::path node = folder / name;
    dravik::test::writeText(node, "#!/bin/sh\n" + script + "\n");
    fs::permissions(node, fs::perms::owner_exec, fs::perm_options::add);
    return node;
}

} // namespace

TEST(NodeRuntime, OnlyANodeThatSaysItIs18OrLaterRunsTheWorker) {
    dravik::test::TempDir folder;
    for (const char* version : {"v18.19.1", "v20.20.2", "v100.0.0"}) {
        const fs::path node = fakeNode(folder, version, std::string("echo ") + version);
        EXPECT_EQ(checkedNode(node), node);
    }
    const fs::path old = fakeNode(folder, "old", "echo v16.20.2");
    EXPECT_EQ(failureOf([&] { checkedNode(old); }),
              "The pose worker needs Node.js 18 or later, but \u201c" + old.string() +
                  "\u201d is version 16.20.2.");
    for (const char* script :
         {"echo 20.1.0", "echo v.1", "echo", "echo v20.1.0; exit 3", "kill $$"})
        EXPECT_NE(failureOf([&] {
                      checkedNode(fakeNode(folder, "odd", script));
                  }).find("did not report its version"),
                  std::string::npos)
            << script;
    dravik::test::writeText(folder / "not-executable", "#!/bin/sh\necho v20.0.0\n");
    for (const fs::path& absent : {folder / "none", folder / "not-executable"})
        EXPECT_EQ(failureOf([&] { checkedNode(absent); }),
                  "Node.js, which runs the pose worker, is missing at \u201c" + absent.string() +
                      "\u201d; install Node.js 18 or later there (Debian's package nodejs) or "
                      "rebuild Tessary with TESSARY_NODE naming another.");
}

// The version comes with the worker's ready answer; `--version` is asked only when the worker fails
// before it, to tell a Node.js too old to run it from a broken worker.
TEST(NodeRuntime, AWorkerOnANodeOlderThan18IsRefusedWhetherOrNotItStarts) {
    dravik::test::TempDir folder;
    const fs::path old = fakeNode(folder, "old", "echo v16.20.2");
    const fs::path current = fakeNode(folder, "current", "echo v20.11.1");
    const std::string tooOld = "The pose worker needs Node.js 18 or later, but \u201c" +
                               old.string() + "\u201d is version 16.20.2.";
    const auto firstPose = [](WorkerSetup setup, const fs::path& node) {
        setup.node = node;
        return failureOf([&] {
            PoseWorker worker(setup);
            worker.pose(std::vector<std::uint8_t>(256 * 256 * 3));
        });
    };
    EXPECT_EQ(firstPose(batch_fixtures::fakeWorker("old"), old), tooOld);
    // A worker that gets ready never has its Node.js asked: this one would not answer.
    EXPECT_EQ(firstPose(batch_fixtures::fakeWorker("good"), fakeNode(folder, "mute", "exit 3")),
              "");
    // Gone before it was ready: the Node.js explains it when it is the reason.
    const WorkerSetup gone{"pose-worker.cjs", {"/bin/false"}, std::chrono::seconds(5), {}};
    EXPECT_EQ(firstPose(gone, old), tooOld);
    EXPECT_EQ(firstPose(gone, current),
              "The pose worker \u201cpose-worker.cjs\u201d stopped unexpectedly.");
}
