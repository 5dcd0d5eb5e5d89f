// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

#include <QThreadPool>
#include <atomic>
#include <fstream>
#include <future>

namespace tessary::test {

namespace {

using namespace std::chrono_literals;

// Points XDG_DATA_HOME elsewhere for as long as it lives.
struct DataHome {
    explicit DataHome(const fs::path& folder) { qputenv("XDG_DATA_HOME", folder.c_str()); }
    ~DataHome() { old.isEmpty() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", old); }
    const QByteArray old = qgetenv("XDG_DATA_HOME");
};

class DiscoveryTest : public ModelTest {
  protected:
    fs::path bundleRoot() const { return temp.path() / "bundle"; }
    void writeResource(const std::string& name, const std::string& text) const {
        writeText(Bundle(bundleRoot()).resourcePath(name), text);
    }
    void discover(std::optional<fs::path> folder = std::nullopt,
                  ReviewerModel::AnalyzeFolder analyze = {}) {
        model.discoverSessions(std::move(folder), std::move(analyze));
        ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    }
    ReviewPreset presetFor(const std::string& title, const fs::path& folder) const {
        return {title, (folder / "session.json").string(), (folder / "results.json").string()};
    }

    fs::path data = temp.path() / "data";
};

// Eighteen new folders and two whose analysis fails, beside a ready session and a photo that
// is not one.
TEST_F(DiscoveryTest, ReadyNewAndBrokenFoldersBecomePresetsAndFailureLines) {
    bundledSession(data / "ready");
    fs::create_directories(data / "unreadable");
    std::ofstream(data / "unreadable" / "photo.jpg") << "not a photo";
    for (int i = 1; i <= 20; ++i)
        writePhoto(data /
                       (i > 18 ? "broken-" + std::to_string(i - 18)
                               : (i < 10 ? "folder-0" : "folder-") + std::to_string(i)) /
                       "photo.png",
                   i);
    writePhoto(data / "folder-01" / "second.png", 30);
    installFakeBatch(bundleRoot(), "result", {{"FAKE_BATCH_FAIL_MATCH", "/broken-"}});

    std::vector<std::string> statuses;
    QObject::connect(&model, &ReviewerModel::discoveryChanged,
                     [&] { statuses.push_back(model.discoveryStatus()); });
    model.discoverSessions(data);
    EXPECT_TRUE(model.isDiscovering());
    EXPECT_EQ(model.discoveryStatus(), "Checking photo folders\u2026");
    model.discoverSessions(data); // one discovery at a time
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));

    const std::string failed =
        ": Folder analysis failed. See results.json.log. Relaunch or rescan to retry.";
    const auto& failures = model.discoveryFailures();
    ASSERT_EQ(failures.size(), 3u);
    EXPECT_EQ(failures[0], "broken-1" + failed);
    EXPECT_EQ(failures[1], "broken-2" + failed);
    EXPECT_EQ(failures[2].rfind("unreadable: ", 0), 0u);
    EXPECT_TRUE(contains(data / "broken-2" / "results.json.log", "The photo could not be read."));
    EXPECT_TRUE(contains(data / "folder-01" / "results.json.log", "fake dravik-batch feasibility"));
    EXPECT_EQ(model.discoveryStatus(),
              "19 sessions ready \u00b7 18 newly analyzed \u00b7 Some folders need attention");
    EXPECT_EQ(statuses.back(), model.discoveryStatus());
    EXPECT_NE(std::find(statuses.begin(), statuses.end(), "Checking / analyzing folder-01\u2026"),
              statuses.end());
    ASSERT_EQ(model.presets().size(), 19u);
    EXPECT_EQ(model.presets().front(), presetFor("folder-01", data / "folder-01"));
    EXPECT_EQ(model.presets().back(), presetFor(model.presets().back().title, data / "ready"));

    // Nothing was open, so the first session found is.
    ASSERT_NE(model.document(), nullptr);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.document()->frames().size(), 2u);
}

TEST_F(DiscoveryTest, KnownPresetsAreReplacedInPlaceAndAnOpenSessionStays) {
    bundledSession(data / "ready");
    bundledSession(data / "another");
    const SessionFiles elsewhere = bundledSession(temp.path() / "elsewhere");
    const std::string launch =
        R"([{"title": "Launch", "manifest": "/nowhere/session.json", "results": "/nowhere/r.json"},
            {"title": "Old title", "manifest": ")" +
        (data / "ready" / "session.json").string() + R"(", "results": ")" +
        elsewhere.results.string() + R"("}])";
    writeResource("launch.json", R"([{"title": "Broken", "manifest": "a.json"}])");
    model.loadPresets();
    EXPECT_TRUE(model.presets().empty());
    writeResource("launch.json", launch);
    model.loadPresets();
    ASSERT_EQ(model.presets().size(), 2u);
    openBundled("open");
    const dravik::Uuid open = model.sessionID();

    std::atomic<int> analysed = 0;
    discover(data, [&](const fs::path&, const fs::path&) { ++analysed; });
    EXPECT_EQ(analysed, 0);
    ASSERT_EQ(model.presets().size(), 3u);
    EXPECT_EQ(model.presets()[0].title, "Launch");
    // Replaced where it stood, keeping the results the launch preset named.
    EXPECT_NE(model.presets()[1].title, "Old title");
    EXPECT_EQ(model.presets()[1].manifest, (data / "ready" / "session.json").string());
    EXPECT_EQ(model.presets()[1].results, elsewhere.results.string());
    EXPECT_EQ(model.presets()[2].manifest, (data / "another" / "session.json").string());
    EXPECT_EQ(model.discoveryStatus(), "2 sessions ready \u00b7 0 newly analyzed");
    EXPECT_TRUE(model.discoveryFailures().empty());
    EXPECT_EQ(model.sessionID(), open);
}

TEST_F(DiscoveryTest, LaunchDiscoveryReadsTheConfiguredFolderOnce) {
    for (const char* blank : {"", " \n\t \n"}) {
        if (*blank) // first with no resource at all, then with a blank one
            writeResource("data-directory.txt", blank);
        model.discoverSessions();
        EXPECT_EQ(model.discoveryStatus(), "Automatic discovery needs a configured data folder.");
        EXPECT_FALSE(model.isDiscovering());
    }

    // The installed resource names the folder for every user.
    const DataHome dataHome(temp.path());
    data = temp.path() / "tessary" / "sessions";
    bundledSession(data / "ready");
    writeResource("data-directory.txt", "  $XDG_DATA_HOME/tessary/sessions\n");
    model.discoverSessionsOnLaunch();
    ASSERT_TRUE(model.isDiscovering());
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_EQ(model.discoveryStatus(), "1 sessions ready \u00b7 0 newly analyzed");
    EXPECT_EQ(model.presets().at(0), presetFor(model.presets()[0].title, data / "ready"));

    writePhoto(data / "later" / "photo.png", 3);
    installFakeBatch(bundleRoot(), "result");
    model.discoverSessionsOnLaunch();
    EXPECT_FALSE(model.isDiscovering());
    EXPECT_FALSE(fs::exists(data / "later" / "session.json"));

    // Asked for explicitly, discovery runs again.
    discover();
    EXPECT_EQ(model.discoveryStatus(), "2 sessions ready \u00b7 1 newly analyzed");
}

TEST_F(DiscoveryTest, AModelClosedDuringDiscoveryMissesTheAnswer) {
    writePhoto(data / "fresh" / "photo.png", 4);
    auto closing = std::make_unique<ReviewerModel>(Bundle(bundleRoot()), chooser);
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> entered = false;
    closing->discoverSessions(data, [&, released](const fs::path&, const fs::path&) {
        entered = true;
        released.wait();
    });
    ASSERT_TRUE(waitUntil([&] { return entered.load(); }));
    closing.reset();
    release.set_value();
    ASSERT_TRUE(QThreadPool::globalInstance()->waitForDone(5000));
    // The answer and the progress now reach a model that is gone: touching it would crash here.
    waitUntil([] { return false; }, 200ms);
}

} // namespace

} // namespace tessary::test
