#include "discovery/discovered_manifest.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/error.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "photo_fixtures.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace dravik;
namespace fs = std::filesystem;
namespace pf = photo_fixtures;

namespace {

std::vector<std::uint8_t> jpeg(int width, int height) {
    return pf::encodeJpeg(
        pf::Picture::filled(
            width, height,
            [](int x, int y) {
                return pf::Rgb{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 90};
            }),
        {.quality = 80});
}

std::vector<std::uint8_t> png(int width, int height) {
    return pf::encodePng(width, height,
                         std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 3), 7),
                         {});
}

void writeText(const fs::path& file, const std::string& text) {
    pf::writeFile(file, std::vector<std::uint8_t>(text.begin(), text.end()));
}

// Stands in for the batch program: one empty detection per rider photo of the manifest.
struct FakeAnalysis {
    std::vector<std::string> folders; // in call order
    std::string failIn;               // a folder whose analysis throws

    SessionDiscovery::Analyze callback() {
        return [this](const fs::path& manifestPath, const fs::path& results) {
            folders.push_back(manifestPath.parent_path().filename().string());
            EXPECT_EQ(results, manifestPath.parent_path() / "results.json");
            if (folders.back() == failIn)
                throw std::runtime_error("helper exited with status 1");
            ResultsFile file{"fake", "1", {}};
            for (const PairInput& pair : SessionManifest::load(manifestPath).pairs)
                for (const RiderInput& rider : pair.riders)
                    file.riders.push_back({pair.id, rider.id, rider.sourceHash, {}});
            writeText(results, file.encode());
        };
    }
};

struct Discovery {
    SessionDiscoveryReport report;
    std::vector<std::string> progress;
};

Discovery discover(const fs::path& data, FakeAnalysis& analysis,
                   const std::map<fs::path, fs::path>& known = {}) {
    Discovery run;
    run.report = SessionDiscovery::run(
        data, known, [&](const std::string& name) { run.progress.push_back(name); },
        analysis.callback());
    return run;
}

std::vector<std::string> folderNames(const std::vector<SessionDiscoveryFailure>& failures) {
    std::vector<std::string> names;
    for (const auto& failure : failures)
        names.push_back(failure.folder.filename().string());
    return names;
}

} // namespace

TEST(SessionDiscovery, AnalysesNewFoldersInNameOrderAndFindsThemAgain) {
    pf::TemporaryFolder data;
    const auto bigJpeg = jpeg(64, 48);
    fs::create_directories(data / "b-ride");
    pf::writeFile(data / "b-ride" / "IMG 0042.JPG", bigJpeg);
    pf::writeFile(data / "b-ride" / "IMG_0042.png", png(20, 30));
    pf::writeFile(data / "b-ride" / ".thumb.jpg", jpeg(8, 8));
    writeText(data / "b-ride" / "notes.txt", "wet track");
    fs::create_directories(data / "a-ride");
    pf::writeFile(data / "a-ride" / "turn.jpeg", jpeg(16, 16));
    fs::create_directories(data / "c-broken");
    pf::writeFile(data / "c-broken" / "x.jpg", jpeg(16, 16));
    fs::create_directories(data / ".cache");
    pf::writeFile(data / ".cache" / "y.jpg", jpeg(16, 16));
    fs::create_directories(data / "d-notes");
    writeText(data / "d-notes" / "plan.txt", "turn 3");
    pf::writeFile(data / "loose.jpg", jpeg(16, 16));

    FakeAnalysis analysis;
    analysis.failIn = "c-broken";
    Discovery first = discover(data.path(), analysis);
    EXPECT_EQ(first.progress, (std::vector<std::string>{"a-ride", "b-ride", "c-broken"}));
    EXPECT_EQ(analysis.folders, (std::vector<std::string>{"a-ride", "b-ride", "c-broken"}));
    ASSERT_EQ(first.report.sessions.size(), 2u);
    EXPECT_EQ(first.report.sessions[0],
              (DiscoveredSession{"a-ride", data / "a-ride" / "session.json",
                                 data / "a-ride" / "results.json", true}));
    EXPECT_EQ(first.report.sessions[1].title, "b-ride");
    EXPECT_TRUE(first.report.sessions[1].newlyAnalyzed);
    ASSERT_EQ(first.report.failures.size(), 1u);
    EXPECT_EQ(first.report.failures[0],
              (SessionDiscoveryFailure{data / "c-broken",
                                       "“c-broken” could not be analysed: helper exited with "
                                       "status 1."}));
    EXPECT_FALSE(fs::exists(data / "d-notes" / "session.json"));
    EXPECT_FALSE(fs::exists(data / ".cache" / "session.json"));

    // The written manifest: each photo its own unreviewed subject frame showing the whole photo.
    SessionManifest manifest = SessionManifest::load(data / "b-ride" / "session.json");
    EXPECT_EQ(manifest.title, "b-ride");
    ASSERT_EQ(manifest.pairs.size(), 2u);
    const PairInput& pair = manifest.pairs[0];
    EXPECT_EQ(pair.id, "IMG-0042");
    EXPECT_EQ(pair.title, "IMG 0042.JPG");
    ASSERT_EQ(pair.riders.size(), 1u);
    EXPECT_EQ(pair.riders[0], (RiderInput{"rider", "subject", "Unreviewed rider", "IMG 0042.JPG",
                                          pf::sha256Hex(bigJpeg), ImageSize{64, 48},
                                          PixelRect{0, 0, 64, 48}, PixelRect{0, 0, 64, 48}}));
    EXPECT_EQ(manifest.pairs[1].id, "IMG_0042");
    EXPECT_EQ(manifest.pairs[1].riders[0].imageSize, (ImageSize{20, 30}));
    // ... and the document layer opens it with the results written beside it.
    ReviewDocument document =
        ReviewStore::make(data / "b-ride" / "session.json", data / "b-ride" / "results.json");
    EXPECT_EQ(document.frames().size(), 2u);
    EXPECT_EQ(pf::readFile(data / "b-ride" / "IMG 0042.JPG"), bigJpeg);

    // Found as they are; only the folder still without results is analysed again.
    analysis.folders.clear();
    Discovery second = discover(data.path(), analysis);
    EXPECT_EQ(analysis.folders, (std::vector<std::string>{"c-broken"}));
    ASSERT_EQ(second.report.sessions.size(), 2u);
    EXPECT_FALSE(second.report.sessions[0].newlyAnalyzed);
    EXPECT_FALSE(second.report.sessions[1].newlyAnalyzed);
    EXPECT_EQ(second.report.sessions[1].results, data / "b-ride" / "results.json");
    EXPECT_EQ(folderNames(second.report.failures), (std::vector<std::string>{"c-broken"}));
}

TEST(SessionDiscovery, UsesKnownResultsForAManifestSpelledAnotherWay) {
    pf::TemporaryFolder data;
    pf::TemporaryFolder elsewhere;
    fs::create_directories(data / "ride");
    pf::writeFile(data / "ride" / "a.jpg", jpeg(16, 16));
    FakeAnalysis analysis;
    discover(data.path(), analysis);
    fs::rename(data / "ride" / "results.json", elsewhere / "run1.json");

    analysis.folders.clear();
    fs::path spelled = data / "ride" / "." / "session.json";
    Discovery run = discover(data.path(), analysis, {{spelled, elsewhere / "run1.json"}});
    EXPECT_TRUE(analysis.folders.empty());
    ASSERT_EQ(run.report.sessions.size(), 1u);
    EXPECT_EQ(run.report.sessions[0].results, elsewhere / "run1.json");
    EXPECT_FALSE(run.report.sessions[0].newlyAnalyzed);

    // A known results file that has gone is no reason to skip the analysis.
    fs::remove(elsewhere / "run1.json");
    run = discover(data.path(), analysis, {{spelled, elsewhere / "run1.json"}});
    EXPECT_EQ(analysis.folders, (std::vector<std::string>{"ride"}));
    ASSERT_EQ(run.report.sessions.size(), 1u);
    EXPECT_TRUE(run.report.sessions[0].newlyAnalyzed);
}

TEST(SessionDiscovery, ReportsEachBrokenFolderAndGoesOn) {
    pf::TemporaryFolder data;
    fs::create_directories(data / "bad-manifest");
    pf::writeFile(data / "bad-manifest" / "a.jpg", jpeg(16, 16));
    writeText(data / "bad-manifest" / "session.json", "{");
    fs::create_directories(data / "bad-photo");
    writeText(data / "bad-photo" / "a.jpg", "not a photo");
    fs::create_directories(data / "no-results");
    pf::writeFile(data / "no-results" / "a.png", png(4, 4));
    fs::create_directories(data / "odd-name");
    pf::writeFile(data / "odd-name" / "caf\xe9.jpg", jpeg(16, 16));
    fs::create_directories(data / "zz-good");
    pf::writeFile(data / "zz-good" / "a.jpg", jpeg(16, 16));
    fs::create_directories(data / "zz-\xff");
    pf::writeFile(data / "zz-\xff" / "a.jpg", jpeg(16, 16));

    FakeAnalysis analysis;
    std::vector<std::string> calls;
    SessionDiscovery::Analyze analyze = [&](const fs::path& manifest, const fs::path& results) {
        calls.push_back(manifest.parent_path().filename().string());
        if (calls.back() != "no-results")
            analysis.callback()(manifest, results);
    };
    SessionDiscoveryReport report = SessionDiscovery::run(data.path(), {}, nullptr, analyze);

    EXPECT_EQ(calls, (std::vector<std::string>{"no-results", "zz-good", "zz-\xff"}));
    ASSERT_EQ(report.sessions.size(), 2u);
    EXPECT_EQ(report.sessions[0].title, "zz-good");
    EXPECT_EQ(report.sessions[1].title, "zz-\uFFFD"); // a folder name only titles the session
    EXPECT_EQ(folderNames(report.failures),
              (std::vector<std::string>{"bad-manifest", "bad-photo", "no-results", "odd-name"}));
    for (const auto& failure : report.failures) {
        const std::string& message = failure.message;
        EXPECT_FALSE(message.empty());
        EXPECT_EQ(message.back(), '.') << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
    EXPECT_NE(report.failures[0].message.find("“session.json”"), std::string::npos);
    EXPECT_NE(report.failures[1].message.find("a.jpg"), std::string::npos);
    EXPECT_EQ(report.failures[2].message,
              "The analysis of “no-results” finished without writing “results.json”.");
    EXPECT_EQ(report.failures[3].message,
              "The name of the photo “caf\uFFFD.jpg” is not valid UTF-8; rename the photo so that "
              "its folder can be analysed.");
    EXPECT_FALSE(fs::exists(data / "bad-photo" / "session.json"));
    EXPECT_FALSE(fs::exists(data / "odd-name" / "session.json"));
    EXPECT_EQ(pf::readFile(data / "bad-manifest" / "session.json").size(), 1u);
}

TEST(SessionDiscovery, AMissingDataFolderIsOneFailure) {
    pf::TemporaryFolder data;
    FakeAnalysis analysis;
    Discovery run = discover(data / "absent", analysis);
    EXPECT_TRUE(run.report.sessions.empty());
    ASSERT_EQ(run.report.failures.size(), 1u);
    EXPECT_EQ(run.report.failures[0].message, "The data folder “absent” does not exist.");
    EXPECT_TRUE(run.progress.empty());

    writeText(data / "file", "x");
    run = discover(data / "file", analysis);
    ASSERT_EQ(run.report.failures.size(), 1u);
    EXPECT_EQ(run.report.failures[0].message, "The data folder “file” is not a folder.");
}

TEST(DiscoveredManifest, PairIdsAreSafeAndUnique) {
    EXPECT_EQ(discovery::safeID("IMG 0042"), "IMG-0042");
    EXPECT_EQ(discovery::safeID("--a  b.c--"), "a-b-c");
    EXPECT_EQ(discovery::safeID("Kurve ß"), "Kurve");
    EXPECT_EQ(discovery::safeID("ß"), "photo");
    EXPECT_EQ(discovery::safeID(""), "photo");

    std::vector<discovery::PhotoFacts> photos;
    for (std::string name : {"a b.jpg", "a-b-2.jpeg", "a-b.png", "Kurve ß.jpg", "ß.png"})
        photos.push_back({name, "sha256:" + std::string(64, '0'), {3, 2}});
    SessionManifest manifest = discovery::manifestForPhotos("ride", photos);
    std::vector<std::string> ids;
    for (const PairInput& pair : manifest.pairs)
        ids.push_back(pair.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"a-b", "a-b-2", "a-b-3", "Kurve", "photo"}));
    EXPECT_EQ(SessionManifest::decode(manifest.encode(), "session.json"), manifest);
}
