// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

#include <algorithm>
#include <fstream>

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

// Folders dropped into the data folder by someone else, discovered at launch by the real batch
// program: a linked session folder and links planted where the analysis writes are refused with a
// line each, nothing outside the data folder is written, and the honest folder beside them is
// analysed all the same.
TEST(HostileDiscovery, PlantedLinksAreRefusedAndNothingOutsideIsWritten) {
    const Bundle bundle = Bundle::fromApplication(); // the build tree, laid out as installed
    if (!fs::exists(bundle.batchProgram()))
        GTEST_SKIP() << "the batch program is not built at " << bundle.batchProgram();

    const TemporaryFolder temp;
    const fs::path data = temp.path() / "data";
    const fs::path outside = temp.path() / "outside";
    writePhoto(outside / "their-photo.png", 1);
    std::ofstream(outside / "notes.txt") << "someone's notes\n";
    const auto before = listing(outside);

    writePhoto(data / "good" / "photo.png", 2);
    fs::create_directory_symlink(outside, data / "linked");
    writePhoto(data / "planted-log" / "photo.png", 3);
    fs::create_symlink(outside / "notes.txt", data / "planted-log" / "results.json.log");
    writePhoto(data / "planted-results" / "photo.png", 4);
    fs::create_symlink(outside / "results.json", data / "planted-results" / "results.json");

    ReviewerModel model(bundle, std::make_shared<ScriptedChooser>());
    model.discoverSessions(data);
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }, 240s));

    EXPECT_EQ(model.discoveryFailures(),
              (std::vector<std::string>{
                  "linked: \u201clinked\u201d is a symbolic link, so it is not opened as a session "
                  "and nothing is written into it.",
                  "planted-log: Cannot create the folder analysis log.",
                  "planted-results: Folder analysis failed. See results.json.log. Relaunch or "
                  "rescan to retry."}));
    // The batch program's own sentence says why it wrote nothing.
    EXPECT_TRUE(contains(data / "planted-results" / "results.json.log",
                         "\u201cresults.json\u201d is a symbolic link, not a regular file, so it "
                         "was not replaced; nothing was written."));
    EXPECT_EQ(listing(outside), before);
    EXPECT_EQ(readText(outside / "notes.txt"), "someone's notes\n");

    ASSERT_EQ(model.presets().size(), 1u) << model.discoveryStatus();
    EXPECT_EQ(model.presets().front().manifest, (data / "good" / "session.json").string());
    EXPECT_TRUE(fs::is_regular_file(data / "good" / "results.json"));
}

} // namespace tessary::test
