// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

#include <algorithm>

namespace tessary::test {

using namespace std::chrono_literals;

namespace {

std::vector<std::string> listing(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        names.push_back(entry.path().lexically_relative(folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

// The real batch program behind the model, offline: a folder of photos dropped into the data
// folder becomes a session with detected joints, and a retry brings back real points. Beside it,
// folders dropped by someone else (a linked session folder, a results file planted as a link) are
// refused with a line each and nothing outside the data folder is written; the sentences are the
// core's and the worker's, tested there.
TEST(RealDetector, AnalysesADroppedFolderRefusesPlantedLinksAndRetriesTheActiveRider) {
    const fs::path photos = fs::path(TESSARY_SOURCE_DIR) / ".." / "shared" / "photos";
    if (!fs::is_directory(photos))
        GTEST_SKIP() << "no shared photos at " << photos;
    const Bundle bundle = Bundle::fromApplication(); // the build tree, laid out as installed
    if (!fs::exists(bundle.batchProgram()))
        GTEST_SKIP() << "the batch program is not built at " << bundle.batchProgram();

    const TemporaryFolder temp;
    const fs::path data = temp.path() / "data";
    const fs::path folder = data / "ride-day";
    fs::create_directories(folder);
    int copied = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(photos))
        if (entry.path().extension() == ".jpg" && copied++ < 2)
            fs::copy_file(entry.path(), folder / entry.path().filename());
    ASSERT_GE(copied, 2);
    const fs::path outside = temp.path() / "outside";
    writePhoto(outside / "their-photo.png", 1);
    const auto before = listing(outside);
    fs::create_directory_symlink(outside, data / "linked");
    writePhoto(data / "planted-results" / "photo.png", 4);
    fs::create_symlink(outside / "results.json", data / "planted-results" / "results.json");

    ReviewerModel model(bundle, std::make_shared<ScriptedChooser>());
    model.discoverSessions(data);
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }, 240s));
    const std::vector<std::string>& failures = model.discoveryFailures();
    ASSERT_EQ(failures.size(), 2u);
    EXPECT_TRUE(failures[0].starts_with("linked: ")) << failures[0];
    EXPECT_TRUE(failures[1].starts_with("planted-results: ")) << failures[1];
    EXPECT_TRUE(contains(data / "planted-results" / "results.json.log", "symbolic link"));
    EXPECT_EQ(listing(outside), before);
    ASSERT_EQ(model.presets().size(), 1u) << model.discoveryStatus();
    EXPECT_TRUE(fs::is_regular_file(folder / "results.json"));

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
