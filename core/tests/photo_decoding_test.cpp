// SPDX-License-Identifier: Apache-2.0
#include "dravik/image.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace dravik;
using namespace photo_fixtures;
namespace fs = std::filesystem;

namespace {

// Smooth colour ramps with a soft disc, so that a decode at a DCT scale and the mean of each
// block of a full decode agree closely.
Picture ramps(int width, int height) {
    return Picture::filled(width, height, [=](int x, int y) {
        const double dx = x - width * 0.4, dy = y - height * 0.6;
        const double disc = 60.0 / (1.0 + (dx * dx + dy * dy) / 900.0);
        return Rgb{std::uint8_t(x * 200 / width + 20), std::uint8_t(y * 180 / height + disc),
                   std::uint8_t(120 + disc)};
    });
}

// The mean of each `d` × `d` block of `picture`.
Picture shrunk(const Picture& picture, int d) {
    return Picture::filled(picture.width / d, picture.height / d, [&](int u, int v) {
        int sums[3] = {0, 0, 0};
        for (int y = v * d; y < (v + 1) * d; ++y)
            for (int x = u * d; x < (u + 1) * d; ++x) {
                const Rgb c = picture.at(x, y);
                sums[0] += c.r, sums[1] += c.g, sums[2] += c.b;
            }
        const int n = d * d;
        return Rgb{std::uint8_t((sums[0] + n / 2) / n), std::uint8_t((sums[1] + n / 2) / n),
                   std::uint8_t((sums[2] + n / 2) / n)};
    });
}

double meanDifference(const Picture& a, const Picture& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.rgb.size(); ++i)
        sum += std::abs(int(a.rgb[i]) - int(b.rgb[i]));
    return sum / double(a.rgb.size());
}

struct PhotoDecodingTest : ::testing::Test {
    test::TempDir folder;
    std::vector<ReviewFrame> frames;
    fs::path manifest() const { return folder / "session.json"; }

    // A subject frame showing `panel` of the photo `file`, written with `bytes` unless there are
    // none (a missing photo).
    ReviewFrame& add(const std::string& file, const std::vector<std::uint8_t>& bytes,
                     ImageSize size, PixelRect panel) {
        if (!bytes.empty())
            test::writeText(folder / file, bytes);
        ReviewFrame frame =
            test::frame("pair" + std::to_string(frames.size()), "rider", "subject", '0', panel);
        frame.file = file;
        frame.sourceHash = test::hashOf(bytes);
        frame.imageSize = size;
        frame.crop = {0, 0, 1, 1}; // the detector's crop is not what a frame shows
        return frames.emplace_back(std::move(frame));
    }
    std::vector<VerifiedPhoto> verify() const {
        return verifyFramePhotos(ReviewDocument("sha256:fixture", frames), manifest());
    }
    std::vector<Image> load(std::uint64_t budget = defaultOpeningBudget) const {
        return loadFramePhotos(ReviewDocument("sha256:fixture", frames), manifest(), budget);
    }
};

} // namespace

// Opening reads headers only: a photo whose data is cut short passes, and fails when it is first
// decoded, at any scale, with the sentence of a photo that cannot be shown.
TEST_F(PhotoDecodingTest, DamagedDataIsFoundWhenFirstDecoded) {
    const auto whole = encodeJpeg(ramps(160, 120), {.quality = 90});
    add("good.jpg", whole, {160, 120}, {0, 0, 160, 120});
    add("cut.jpg", {whole.begin(), whole.begin() + whole.size() / 2}, {160, 120}, {0, 0, 160, 120});
    const std::vector<VerifiedPhoto> photos = verify();
    ASSERT_EQ(photos.size(), 2u);
    EXPECT_EQ(photos[1].size, (ImageSize{160, 120}));
    EXPECT_EQ(photos[1].panelBytes, 160u * 120 * 3);
    for (PhotoScale scale : {PhotoScale::eighth, PhotoScale::full})
        EXPECT_EQ(test::failureOf([&] { decodeFramePhoto(frames[1], photos[1], scale); }),
                  "Cannot load subject photo (cut.jpg): \u201ccut.jpg\u201d is damaged or "
                  "truncated and cannot be decoded. Previous selection preserved.");

    // Replaced after opening: the same bytes under a new inode decode, other bytes are refused.
    test::writeText(folder / "copy.jpg", whole);
    fs::rename(folder / "copy.jpg", folder / "good.jpg");
    EXPECT_EQ(decodeFramePhoto(frames[0], photos[0]).image.width, 160);
    test::writeText(folder / "good.jpg", encodeJpeg(ramps(160, 120), {.quality = 50}));
    EXPECT_EQ(test::failureOf([&] { decodeFramePhoto(frames[0], photos[0]); }),
              "Cannot load subject photo (good.jpg): Source hash changed; reanalyze before "
              "applying corrections. Previous selection preserved.");
}

// Opening decodes a header from the first mebibyte read; one ending further in is read from the
// whole file, and one cut short there is still refused.
TEST_F(PhotoDecodingTest, AHeaderEndingPastTheFirstMebibyteIsReadAndACutOneRefused) {
    const auto plain = encodeJpeg(storedFor(ramps(160, 120), 6), {.quality = 90, .orientation = 6});
    std::vector<std::uint8_t> padded(plain.begin(), plain.begin() + 2);
    for (int i = 0; i < 20; ++i) { // application segments of 64 KiB, before the EXIF one
        padded.insert(padded.end(), {0xff, 0xe2, 0xff, 0xff});
        padded.insert(padded.end(), 0xfffd, std::uint8_t(i));
    }
    padded.insert(padded.end(), plain.begin() + 2, plain.end());
    add("padded.jpg", padded, {160, 120}, {0, 0, 160, 120});
    const std::vector<VerifiedPhoto> photos = verify();
    EXPECT_EQ(photos[0].orientation, 6);
    EXPECT_EQ(photos[0].size, (ImageSize{160, 120}));
    EXPECT_EQ(decodeFramePhoto(frames[0], photos[0]).image.width, 160);

    add("cut.jpg", {padded.begin(), padded.begin() + 1'200'000}, {160, 120}, {0, 0, 160, 120});
    EXPECT_EQ(test::failureOf([&] { verify(); }),
              "Cannot load subject photo (cut.jpg): \u201ccut.jpg\u201d is damaged or truncated "
              "and cannot be decoded. Previous selection preserved.");
}

// At each scale the image covers the panel grown to the scale's grid, has the size predicted
// without decoding, and looks like the full decode of that area shrunk by the mean of each block:
// for a JPEG and a PNG, upright and turned by their EXIF orientation.
TEST_F(PhotoDecodingTest, ScaledDecodesMatchAFullDecodeShrunk) {
    const Picture displayed = ramps(320, 240);
    const PixelRect panel{41.5, 19, 201, 157};
    for (int orientation : {1, 6}) {
        const Picture stored = storedFor(displayed, orientation);
        add("photo-" + std::to_string(orientation) + ".jpg",
            encodeJpeg(stored, {.quality = 95, .orientation = orientation}), {320, 240}, panel);
        add("photo-" + std::to_string(orientation) + ".png",
            encodePng(stored.width, stored.height, stored.rgb,
                      {.interlaced = orientation == 6, .orientation = orientation}),
            {320, 240}, panel);
    }
    const std::vector<VerifiedPhoto> photos = verify();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        SCOPED_TRACE(frames[i].file);
        const Picture full = pictureOf(ImageInput::load(folder / frames[i].file).decoded());
        const ScaledPanel exact = decodeFramePhoto(frames[i], photos[i]);
        EXPECT_EQ(exact.covers, (PixelRect{41, 19, 202, 157}));
        EXPECT_EQ(pictureOf(exact.image).rgb, region(full, 41, 19, 202, 157).rgb);

        std::vector<ImageSize> sizes;
        for (PhotoScale scale : {PhotoScale::half, PhotoScale::quarter, PhotoScale::eighth}) {
            const int d = static_cast<int>(scale);
            const ScaledPanel scaled = decodeFramePhoto(frames[i], photos[i], scale);
            const PixelRect& covers = scaled.covers;
            // 320 × 240 is a whole number of blocks at every scale, so every pixel is d × d.
            EXPECT_EQ(std::fmod(covers.x, d) + std::fmod(covers.y, d), 0) << d;
            EXPECT_TRUE(covers.contains(panel) && covers.width < panel.width + 2 * d) << d;
            const ImageSize size{scaled.image.width, scaled.image.height};
            EXPECT_EQ(size, scaledPanelSize(photos[i], scale)) << d;
            EXPECT_EQ(size, (ImageSize{int(covers.width) / d, int(covers.height) / d})) << d;
            const Picture expected = shrunk(
                region(full, int(covers.x), int(covers.y), int(covers.width), int(covers.height)),
                d);
            EXPECT_LT(meanDifference(pictureOf(scaled.image), expected), 1.5) << d;
            EXPECT_LE(largestDifference(pictureOf(scaled.image), expected), 12) << d;
            sizes.push_back(size);
        }
        // Each size is best served by its own scale; a size no scale covers needs the full one.
        EXPECT_EQ(scaleCovering(photos[i], sizes[0]), PhotoScale::half);
        EXPECT_EQ(scaleCovering(photos[i], sizes[2]), PhotoScale::eighth);
        EXPECT_EQ(scaleCovering(photos[i], {1, sizes[1].height}), PhotoScale::quarter);
        EXPECT_EQ(scaleCovering(photos[i], {202, 1}), PhotoScale::full);
    }
}

TEST_F(PhotoDecodingTest, PanelsComeInDocumentOrderAndTheFirstFailureInDocumentOrderWins) {
    const ImageSize size{64, 48};
    // Grey `grey` on the left half, white on the right.
    const auto photo = [](int grey) {
        return encodeJpeg(Picture::filled(64, 48, [=](int x, int) {
            const auto g = std::uint8_t(x < 32 ? grey : 255);
            return Rgb{g, g, g};
        }));
    };
    for (int i = 0; i < 4; ++i)
        add("ok" + std::to_string(i) + ".jpg", photo(40 * i), size, {0, 0, 32, 48});
    const std::vector<Image> panels = load();
    ASSERT_EQ(panels.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        const auto grey = std::uint8_t(40 * i);
        EXPECT_LE(largestDifference(pictureOf(panels[i]), flat(32, 48, {grey, grey, grey})), 3)
            << "frame " << i;
    }

    add("edited.jpg", photo(1), size, {0, 0, 64, 48}).role = "reference";
    test::writeText(folder / "edited.jpg", photo(9));
    // Later frames that fail faster must not win over the edited photo.
    add("missing.jpg", {}, size, {0, 0, 64, 48});
    add("../outside.jpg", {}, size, {0, 0, 64, 48});
    const auto failure = [&] { return test::failureOf([&] { load(); }); };
    EXPECT_EQ(failure(), "Cannot load reference photo (edited.jpg): Source hash changed; "
                         "reanalyze before applying corrections. Previous selection preserved.");

    frames.erase(frames.begin() + 4);
    EXPECT_EQ(failure(), "Cannot load subject photo (missing.jpg): \u201cmissing.jpg\u201d could "
                         "not be read: no such file or directory. Previous selection preserved.");

    frames.resize(1);
    add("b.jpg", photo(10), size, {70, 0, 10, 10}).role = "reference";
    EXPECT_EQ(failure(), "Cannot load reference photo (b.jpg): The region 70, 0, 10 \u00d7 10 lies "
                         "outside \u201cb.jpg\u201d (64 \u00d7 48 pixels) or is empty. Previous "
                         "selection preserved.");
}

TEST_F(PhotoDecodingTest, SharedPanelsAreDecodedOnceWithinTheBudgetAndSizesMustMatchTheSession) {
    // 640 × 480 of RGB is 900 KiB decoded: one panel fits a budget of 1 MiB, a second does not.
    const auto bytes = encodeJpeg(gradient(640, 480));
    for (int i = 0; i < 3; ++i)
        add("wide.jpg", bytes, {640, 480}, {0, 0, 640, 480});
    const std::vector<Image> shared = load(1u << 20);
    ASSERT_EQ(shared.size(), 3u);
    EXPECT_EQ(shared[0].pixels, shared[2].pixels) << "one decode for one file and panel";

    add("wide.jpg", bytes, {640, 480}, {0, 0, 320, 480});
    EXPECT_EQ(test::failureOf([&] { load(1u << 20); }),
              "Cannot load subject photo (wide.jpg): Decoding \u201cwide.jpg\u201d would take this "
              "session past 1 MiB of decoded photos, the most it may hold. Previous selection "
              "preserved.");

    // A photo turned by its EXIF orientation is 480 × 640 as displayed; a session that expects
    // it unturned would put every point in the wrong place.
    frames.clear();
    add("turned.jpg", encodeJpeg(flat(640, 480, {}), {.orientation = 6}), {640, 480},
        {0, 0, 640, 480});
    EXPECT_EQ(test::failureOf([&] { load(); }),
              "Cannot load subject photo (turned.jpg): \u201cturned.jpg\u201d is 480 \u00d7 640 "
              "pixels, but the session expects 640 \u00d7 480. Previous selection preserved.");
}
