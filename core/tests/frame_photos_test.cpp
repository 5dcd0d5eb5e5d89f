#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace photo_fixtures;

namespace {

class FramePhotosTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;
    std::vector<ReviewFrame> frames;

    // A flat photo of one colour, as a frame showing `panel` of it.
    void addPhoto(const std::string& file, Rgb colour, PixelRect panel,
                  const std::string& role = "subject") {
        const auto bytes = encodeJpeg(Picture::filled(64, 48, [&](int, int) { return colour; }));
        writeFile(folder / file, bytes);
        addFrame(file, sha256Hex(bytes), panel, role);
    }

    void addFrame(const std::string& file, const std::string& hash, PixelRect panel,
                  const std::string& role = "subject") {
        ReviewFrame frame;
        frame.id = "pair" + std::to_string(frames.size()) + "/" + role;
        frame.role = role;
        frame.file = file;
        frame.sourceHash = hash;
        frame.imageSize = {64, 48};
        frame.panel = panel;
        frames.push_back(frame);
    }

    std::vector<Image> load() const {
        return loadFramePhotos(ReviewDocument("sha256:fixture", frames), folder / "session.json");
    }

    std::string failure() const {
        try {
            load();
        } catch (const DravikError& error) {
            return error.message();
        }
        return "(no error)";
    }
};

} // namespace

TEST_F(FramePhotosTest, PanelsComeBackInDocumentOrder) {
    const Rgb colours[] = {{200, 0, 0}, {0, 200, 0}, {0, 0, 200}, {90, 90, 90}, {250, 250, 0}};
    for (int i = 0; i < 5; ++i)
        addPhoto("photo" + std::to_string(i) + ".jpg", colours[i], {double(i), 2, 10.0 + i, 20});
    const std::vector<Image> panels = load();
    ASSERT_EQ(panels.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(panels[i].width, 10 + i);
        EXPECT_EQ(panels[i].height, 20);
        const std::uint8_t* centre = panels[i].data() + 10 * panels[i].stride + 15;
        EXPECT_NEAR(centre[0], colours[i].r, 2) << i;
        EXPECT_NEAR(centre[1], colours[i].g, 2) << i;
        EXPECT_NEAR(centre[2], colours[i].b, 2) << i;
    }
}

TEST_F(FramePhotosTest, FirstFailureInDocumentOrderIsReported) {
    for (int i = 0; i < 4; ++i)
        addPhoto("ok" + std::to_string(i) + ".jpg", {10, 20, 30}, {0, 0, 64, 48});
    addPhoto("edited.jpg", {1, 2, 3}, {0, 0, 64, 48}, "reference");
    writeFile(folder / "edited.jpg", encodeJpeg(Picture::filled(64, 48, [](int, int) {
                  return Rgb{9, 9, 9};
              })));
    // Later frames that fail faster must not win over the edited photo.
    addFrame("missing.jpg", "sha256:00", {0, 0, 64, 48});
    addFrame("../outside.jpg", "sha256:00", {0, 0, 64, 48});
    EXPECT_EQ(failure(), "Cannot load reference photo (edited.jpg): Source hash changed; "
                         "reanalyze before applying corrections. Previous selection preserved.");

    frames.erase(frames.begin() + 4);
    EXPECT_EQ(failure(), "Cannot load subject photo (missing.jpg): \u201cmissing.jpg\u201d cannot "
                         "be read (No such file or directory). Previous selection preserved.");
}

TEST_F(FramePhotosTest, PanelOutsideThePhotoFailsWithTheFrameNamed) {
    addPhoto("a.jpg", {10, 20, 30}, {0, 0, 64, 48});
    addPhoto("b.jpg", {10, 20, 30}, {70, 0, 10, 10}, "reference");
    EXPECT_EQ(failure(), "Cannot load reference photo (b.jpg): The region 70, 0, 10 \u00d7 10 lies "
                         "outside \u201cb.jpg\u201d (64 \u00d7 48 pixels) or is empty. Previous "
                         "selection preserved.");
}

TEST(FramePhotosSessionTest, PanelsOfAMadeSessionAreCroppedFromItsPhotos) {
    // The photos the sample manifest names, each with its own colour per quarter, so that a
    // wrong panel or a swapped photo shows.
    const test::TempDir folder;
    SessionManifest manifest = test::sampleManifest();
    ResultsFile results = test::sampleResults();
    int seed = 0;
    std::vector<Picture> pictures;
    for (PairInput& pair : manifest.pairs) {
        for (RiderInput& rider : pair.riders) {
            ++seed;
            const Picture picture = Picture::filled(1200, 800, [&](int x, int y) {
                return Rgb{std::uint8_t(x < 600 ? 40 * seed : 250), std::uint8_t(y < 400 ? 0 : 200),
                           std::uint8_t(seed * 30)};
            });
            const bool png = rider.file.ends_with(".png");
            const auto bytes = png ? encodePng(1200, 800, picture.rgb, {}) : encodeJpeg(picture);
            std::filesystem::create_directories((folder / rider.file).parent_path());
            writeFile(folder / rider.file, bytes);
            rider.sourceHash = sha256Hex(bytes);
            rider.panel = {560.0 + seed, 360, 80, 80.5};
            for (RiderResults& entry : results.riders)
                if (entry.pairID == pair.id && entry.riderID == rider.id)
                    entry.sourceHash = rider.sourceHash;
            pictures.push_back(picture);
        }
    }
    const test::SessionFiles files = test::writeSession(folder.path(), manifest, results);
    const ReviewDocument document = ReviewStore::make(files.manifest, files.results);
    const std::vector<Image> panels = loadFramePhotos(document, files.manifest);
    ASSERT_EQ(panels.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const PixelRect& panel = document.frames()[i].panel;
        EXPECT_EQ(panels[i].width, 80);
        EXPECT_EQ(panels[i].height, 81);
        for (int y : {0, 39, 40, 80}) {
            for (int x : {0, 38 - int(i), 39 - int(i), 79}) {
                const Rgb want = pictures[i].at(int(panel.x) + x, int(panel.y) + y);
                const std::uint8_t* got = panels[i].data() + y * panels[i].stride + x * 3;
                EXPECT_NEAR(got[0], want.r, 3) << i << " at " << x << "," << y;
                EXPECT_NEAR(got[1], want.g, 3) << i << " at " << x << "," << y;
                EXPECT_NEAR(got[2], want.b, 3) << i << " at " << x << "," << y;
            }
        }
    }
}
