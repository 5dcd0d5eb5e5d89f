#include "dravik/image.h"
#include "dravik/store.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace photo_fixtures;

TEST(FramePhotos, PanelsOfAMadeSessionAreCroppedFromItsPhotosInDocumentOrder) {
    // The photos the sample manifest names, each with its own colours, so that a wrong panel or a
    // swapped photo shows.
    const test::TempDir folder;
    SessionManifest manifest = test::sampleManifest();
    ResultsFile results = test::sampleResults();
    std::vector<Picture> pictures;
    for (PairInput& pair : manifest.pairs) {
        for (RiderInput& rider : pair.riders) {
            const int seed = int(pictures.size()) + 1;
            pictures.push_back(Picture::filled(1200, 800, [&](int x, int y) {
                return Rgb{std::uint8_t(x < 600 ? 40 * seed : 250), std::uint8_t(y < 400 ? 0 : 200),
                           std::uint8_t(seed * 30)};
            }));
            const auto bytes = rider.file.ends_with(".png")
                                   ? encodePng(1200, 800, pictures.back().rgb, {})
                                   : encodeJpeg(pictures.back());
            test::writeText(folder / rider.file, bytes);
            rider.sourceHash = test::hashOf(bytes);
            rider.panel = {560.0 + seed, 360, 80, 80.5};
            for (RiderResults& entry : results.riders)
                if (entry.pairID == pair.id && entry.riderID == rider.id)
                    entry.sourceHash = rider.sourceHash;
        }
    }
    const test::SessionFiles files = test::writeSession(folder.path(), manifest, results);
    const std::vector<Image> panels =
        loadFramePhotos(ReviewStore::make(files.manifest, files.results), files.manifest);
    ASSERT_EQ(panels.size(), 3u);
    for (int i = 0; i < 3; ++i)
        EXPECT_LE(
            largestDifference(pictureOf(panels[i]), region(pictures[i], 561 + i, 360, 80, 81)), 3)
            << "frame " << i;
}

TEST(FramePhotos, FirstFailureInDocumentOrderIsReportedWithTheFrameNamed) {
    const test::TempDir folder;
    std::vector<ReviewFrame> frames;
    // A flat 64 × 48 photo as a frame showing `panel` of it; no bytes: a missing photo.
    auto add = [&](const std::string& file, const std::string& role, PixelRect panel,
                   std::vector<std::uint8_t> bytes = {}) {
        ReviewFrame frame = test::frame("pair" + std::to_string(frames.size()), role, role, '0');
        frame.file = file;
        frame.imageSize = {64, 48};
        frame.panel = panel;
        if (!bytes.empty()) {
            test::writeText(folder / file, bytes);
            frame.sourceHash = test::hashOf(bytes);
        }
        frames.push_back(frame);
    };
    auto failure = [&] {
        return test::failureOf([&] {
            loadFramePhotos(ReviewDocument("sha256:fixture", frames), folder / "session.json");
        });
    };
    const auto flat = [](std::uint8_t grey) {
        return encodeJpeg(Picture::filled(64, 48, [=](int, int) { return Rgb{grey, grey, grey}; }));
    };
    for (int i = 0; i < 4; ++i)
        add("ok" + std::to_string(i) + ".jpg", "subject", {0, 0, 64, 48}, flat(10));
    add("edited.jpg", "reference", {0, 0, 64, 48}, flat(1));
    test::writeText(folder / "edited.jpg", flat(9));
    // Later frames that fail faster must not win over the edited photo.
    add("missing.jpg", "subject", {0, 0, 64, 48});
    add("../outside.jpg", "subject", {0, 0, 64, 48});
    EXPECT_EQ(failure(), "Cannot load reference photo (edited.jpg): Source hash changed; "
                         "reanalyze before applying corrections. Previous selection preserved.");

    frames.erase(frames.begin() + 4);
    EXPECT_EQ(failure(), "Cannot load subject photo (missing.jpg): \u201cmissing.jpg\u201d cannot "
                         "be read (No such file or directory). Previous selection preserved.");

    frames.resize(1);
    add("b.jpg", "reference", {70, 0, 10, 10}, flat(10));
    EXPECT_EQ(failure(), "Cannot load reference photo (b.jpg): The region 70, 0, 10 \u00d7 10 lies "
                         "outside \u201cb.jpg\u201d (64 \u00d7 48 pixels) or is empty. Previous "
                         "selection preserved.");
}
