// SPDX-License-Identifier: Apache-2.0
#include "discovery/discovered_manifest.h"
#include "dravik/discovery.h"
#include "dravik/store.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace dravik;
namespace fs = std::filesystem;
using dravik::test::writeText;
using Names = std::vector<std::string>;

namespace {

std::vector<std::uint8_t> jpeg(int width, int height) {
    return photo_fixtures::encodeJpeg(photo_fixtures::gradient(width, height));
}

// Stands in for the batch program: one empty detection per rider photo of the manifest.
struct FakeAnalysis {
    Names folders;        // in call order
    std::string failIn;   // a folder whose analysis throws
    std::string silentIn; // a folder whose analysis writes nothing

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
            if (folders.back() != silentIn)
                writeText(results, file.encode());
        };
    }

    SessionDiscoveryReport run(const fs::path& data, const std::map<fs::path, fs::path>& known = {},
                               Names* progress = nullptr) {
        folders.clear();
        SessionDiscovery::Progress report;
        if (progress)
            report = [progress](const std::string& name) { progress->push_back(name); };
        return SessionDiscovery::run(data, known, report, callback());
    }
};

Names folderNames(const SessionDiscoveryReport& report) {
    Names names;
    for (const auto& failure : report.failures)
        names.push_back(failure.folder.filename().string());
    return names;
}

} // namespace

TEST(SessionDiscovery, AnalysesNewFoldersInNameOrderAndFindsThemAgain) {
    test::TempDir data;
    const auto bigJpeg = jpeg(64, 48);
    writeText(data / "b-ride" / "IMG 0042.JPG", bigJpeg);
    writeText(data / "b-ride" / "IMG_0042.png",
              photo_fixtures::encodePng(20, 30, std::vector<std::uint8_t>(20 * 30 * 3, 7), {}));
    writeText(data / "b-ride" / ".thumb.jpg", jpeg(8, 8));
    writeText(data / "b-ride" / "notes.txt", "wet track");
    writeText(data / "a-ride" / "turn.jpeg", jpeg(16, 16));
    writeText(data / "c-broken" / "x.jpg", jpeg(16, 16));
    writeText(data / ".cache" / "y.jpg", jpeg(16, 16));
    writeText(data / "d-notes" / "plan.txt", "turn 3");
    writeText(data / "loose.jpg", jpeg(16, 16));

    FakeAnalysis analysis;
    analysis.failIn = "c-broken";
    Names progress;
    const SessionDiscoveryReport first = analysis.run(data.path(), {}, &progress);
    EXPECT_EQ(progress, (Names{"a-ride", "b-ride", "c-broken"}));
    EXPECT_EQ(analysis.folders, (Names{"a-ride", "b-ride", "c-broken"}));
    auto found = [&](const std::string& name, bool analysed) {
        return DiscoveredSession{name, data / name / "session.json", data / name / "results.json",
                                 analysed};
    };
    EXPECT_EQ(first.sessions, (std::vector{found("a-ride", true), found("b-ride", true)}));
    EXPECT_EQ(first.failures,
              (std::vector<SessionDiscoveryFailure>{
                  {data / "c-broken", "“c-broken” could not be analysed: helper exited with "
                                      "status 1."}}));
    EXPECT_FALSE(fs::exists(data / "d-notes" / "session.json") ||
                 fs::exists(data / ".cache" / "session.json"));

    // The written manifest: each photo its own unreviewed subject frame showing the whole photo,
    // and the document layer opens it with the results written beside it.
    SessionManifest manifest = SessionManifest::load(data / "b-ride" / "session.json");
    EXPECT_EQ(manifest.title, "b-ride");
    ASSERT_EQ(manifest.pairs.size(), 2u);
    EXPECT_EQ(
        manifest.pairs[0],
        (PairInput{"IMG-0042",
                   "IMG 0042.JPG",
                   {{"rider", "subject", "Unreviewed rider", "IMG 0042.JPG", test::hashOf(bigJpeg),
                     ImageSize{64, 48}, PixelRect{0, 0, 64, 48}, PixelRect{0, 0, 64, 48}}}}));
    EXPECT_EQ(manifest.pairs[1].riders[0].imageSize, (ImageSize{20, 30}));
    EXPECT_EQ(ReviewStore::make(data / "b-ride" / "session.json", data / "b-ride" / "results.json")
                  .frames()
                  .size(),
              2u);

    // Found as they are; only the folder still without results is analysed again.
    const SessionDiscoveryReport second = analysis.run(data.path());
    EXPECT_EQ(analysis.folders, (Names{"c-broken"}));
    EXPECT_EQ(second.sessions, (std::vector{found("a-ride", false), found("b-ride", false)}));
    EXPECT_EQ(folderNames(second), (Names{"c-broken"}));
}

TEST(SessionDiscovery, UsesKnownResultsForAManifestSpelledAnotherWay) {
    test::TempDir data, elsewhere;
    writeText(data / "ride" / "a.jpg", jpeg(16, 16));
    FakeAnalysis analysis;
    analysis.run(data.path());
    fs::rename(data / "ride" / "results.json", elsewhere / "run1.json");

    const std::map<fs::path, fs::path> known = {
        {data / "ride" / "." / "session.json", elsewhere / "run1.json"}};
    SessionDiscoveryReport report = analysis.run(data.path(), known);
    EXPECT_TRUE(analysis.folders.empty());
    EXPECT_EQ(report.sessions,
              (std::vector<DiscoveredSession>{
                  {"ride", data / "ride" / "session.json", elsewhere / "run1.json"}}));

    // A known results file that has gone is no reason to skip the analysis.
    fs::remove(elsewhere / "run1.json");
    report = analysis.run(data.path(), known);
    EXPECT_EQ(analysis.folders, (Names{"ride"}));
    ASSERT_EQ(report.sessions.size(), 1u);
    EXPECT_TRUE(report.sessions[0].newlyAnalyzed);
}

TEST(SessionDiscovery, ReportsEachBrokenFolderAndGoesOn) {
    test::TempDir data, elsewhere;
    writeText(data / "bad-manifest" / "a.jpg", jpeg(16, 16));
    writeText(data / "bad-manifest" / "session.json", "{");
    writeText(data / "bad-photo" / "a.jpg", "not a photo");
    writeText(data / "no-results" / "a.jpg", jpeg(4, 4));
    writeText(data / "odd-name" / "caf\xe9.jpg", jpeg(16, 16));
    writeText(data / "zz-good" / "a.jpg", jpeg(16, 16));
    writeText(data / "zz-\xff" / "a.jpg", jpeg(16, 16));
    // A linked folder may lead anywhere: nothing is written through it.
    writeText(elsewhere / "a.jpg", jpeg(16, 16));
    fs::create_directory_symlink(elsewhere.path(), data / "linked");

    FakeAnalysis analysis;
    analysis.silentIn = "no-results";
    const SessionDiscoveryReport report = analysis.run(data.path());
    EXPECT_EQ(analysis.folders, (Names{"no-results", "zz-good", "zz-\xff"}));
    ASSERT_EQ(report.sessions.size(), 2u);
    EXPECT_EQ(report.sessions[0].title, "zz-good");
    EXPECT_EQ(report.sessions[1].title, "zz-\uFFFD"); // a folder name only titles the session
    EXPECT_EQ(folderNames(report),
              (Names{"bad-manifest", "bad-photo", "linked", "no-results", "odd-name"}));
    EXPECT_EQ(report.failures[2].message, "“linked” is a symbolic link, so it is not opened as a "
                                          "session and nothing is written into it.");
    EXPECT_EQ(test::entries(elsewhere.path()), (Names{"a.jpg"}));
    EXPECT_EQ(report.failures[3].message,
              "The analysis of “no-results” finished without writing “results.json”.");
    EXPECT_EQ(report.failures[4].message,
              "The name of the photo “caf\uFFFD.jpg” is not valid UTF-8; rename the photo so that "
              "its folder can be analysed.");
    EXPECT_FALSE(fs::exists(data / "bad-photo" / "session.json"));
    EXPECT_FALSE(fs::exists(data / "odd-name" / "session.json"));
    EXPECT_EQ(test::readText(data / "bad-manifest" / "session.json"), "{");

    writeText(data / "file", "x");
    for (const auto& [folder, sentence] :
         {std::pair{data / "absent", "The data folder “absent” does not exist."},
          std::pair{data / "file", "The data folder “file” is not a folder."}}) {
        Names progress;
        const SessionDiscoveryReport missing = analysis.run(folder, {}, &progress);
        EXPECT_TRUE(missing.sessions.empty() && progress.empty());
        ASSERT_EQ(missing.failures.size(), 1u);
        EXPECT_EQ(missing.failures[0].message, sentence);
    }
}

TEST(DiscoveredManifest, PairIdsAreSafeAndUnique) {
    std::vector<discovery::PhotoFacts> photos;
    for (std::string name : {"a b.jpg", "a-b-2.jpeg", "a-b.png", "--Kurve  ß--.jpg", "ß.png"})
        photos.push_back({name, test::digitHash('0'), {3, 2}});
    SessionManifest manifest = discovery::manifestForPhotos("ride", photos);
    Names ids;
    for (const PairInput& pair : manifest.pairs)
        ids.push_back(pair.id);
    EXPECT_EQ(ids, (Names{"a-b", "a-b-2", "a-b-3", "Kurve", "photo"}));
    EXPECT_EQ(SessionManifest::decode(manifest.encode(), "session.json"), manifest);
}
