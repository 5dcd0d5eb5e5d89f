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

    // A subject frame showing `panel` of the photo `file`, written with `bytes`.
    void add(const std::string& file, const std::vector<std::uint8_t>& bytes, ImageSize size,
             PixelRect panel) {
        test::writeText(folder / file, bytes);
        ReviewFrame frame =
            test::frame("pair" + std::to_string(frames.size()), "rider", "subject", '0', panel);
        frame.file = file;
        frame.sourceHash = test::hashOf(bytes);
        frame.imageSize = size;
        frames.push_back(frame);
    }
    std::vector<VerifiedPhoto> verify() const {
        return verifyFramePhotos(ReviewDocument("sha256:fixture", frames), manifest());
    }
};

} // namespace

// Opening reads headers only: a photo whose data is cut short passes, and fails when it is first
// decoded, at any scale, with the sentence of a photo that cannot be shown; a damaged header is
// refused at once.
TEST_F(PhotoDecodingTest, DamagedDataIsFoundWhenFirstDecodedAndABadHeaderAtOnce) {
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

    add("bad.jpg", {whole.begin(), whole.begin() + 100}, {160, 120}, {0, 0, 160, 120});
    frames.back().role = "reference";
    EXPECT_EQ(test::failureOf([&] { verify(); }),
              "Cannot load reference photo (bad.jpg): \u201cbad.jpg\u201d is damaged or "
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
