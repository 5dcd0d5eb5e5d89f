// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

namespace tessary::test {

using namespace std::chrono_literals;

// The real batch program behind the model, offline: a folder of photos dropped into the data
// folder becomes a session with detected joints, and a retry brings back real points.
TEST(RealDetector, AnalysesADroppedFolderAndRetriesTheActiveRider) {
    const fs::path photos = fs::path(TESSARY_SOURCE_DIR) / ".." / "shared" / "photos";
    if (!fs::is_directory(photos))
        GTEST_SKIP() << "no shared photos at " << photos;
    const Bundle bundle = Bundle::fromApplication(); // the build tree, laid out as installed
    if (!fs::exists(bundle.batchProgram()))
        GTEST_SKIP() << "the batch program is not built at " << bundle.batchProgram();

    const TemporaryFolder temp;
    const fs::path folder = temp.path() / "data" / "ride-day";
    fs::create_directories(folder);
    int copied = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(photos))
        if (entry.path().extension() == ".jpg" && copied++ < 2)
            fs::copy_file(entry.path(), folder / entry.path().filename());
    ASSERT_GE(copied, 2);

    ReviewerModel model(bundle, std::make_shared<ScriptedChooser>());
    model.discoverSessions(temp.path() / "data");
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }, 240s));
    EXPECT_TRUE(model.discoveryFailures().empty())
        << (model.discoveryFailures().empty() ? "" : model.discoveryFailures().front());
    ASSERT_EQ(model.presets().size(), 1u) << model.discoveryStatus();
    EXPECT_TRUE(fs::exists(folder / "results.json"));

    // Discovery opened it: nothing else was open.
    ASSERT_TRUE(waitUntil([&] { return model.document() != nullptr; }, 10s));
    EXPECT_EQ(model.error(), std::nullopt);
    ASSERT_EQ(model.document()->frames().size(), 2u);
    std::size_t best = 0;
    for (const dravik::ReviewFrame& frame : model.document()->frames())
        for (const dravik::DravikResult& result : frame.raw)
            best = std::max(best, result.joints.size());
    EXPECT_EQ(best, 19u) << "the detector found nobody in either photo";

    ASSERT_TRUE(model.frame());
    const std::string active = model.frame()->id;
    model.retryDetection(true);
    ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); }, 120s));
    EXPECT_EQ(model.error(), std::nullopt);
    ASSERT_EQ(model.frame(active)->retries.size(), 1u) << model.message();
    const dravik::DetectionRetry& retry = model.frame(active)->retries.front();
    ASSERT_TRUE(retry.primary);
    EXPECT_EQ(retry.primary->joints.size(), 19u);
    EXPECT_EQ(model.savedRevision(), std::optional<std::int64_t>(model.document()->revision()));
}

} // namespace tessary::test
