// SPDX-License-Identifier: Apache-2.0
#include "dravik/image.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <png.h>
#include <random>
#include <sys/resource.h>
#include <zlib.h>

using namespace dravik;
using namespace photo_fixtures;
using test::failureOf;

namespace {

// Six flat blocks of 32 pixels, aligned with the JPEG blocks so that quality 100 keeps them.
Rgb blockColour(int x, int y) {
    static const Rgb colours[6] = {{230, 20, 20},  {20, 200, 40},  {30, 40, 220},
                                   {240, 230, 30}, {20, 210, 220}, {200, 30, 210}};
    return colours[(y / 32) * 3 + x / 32];
}

Picture noisyPicture(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> noise(-40, 40);
    return Picture::filled(width, height, [&](int x, int y) {
        auto clamp = [](int v) { return std::uint8_t(std::clamp(v, 0, 255)); };
        return Rgb{clamp(x * 255 / width + noise(random)), clamp(y * 255 / height + noise(random)),
                   clamp((x ^ y) % 256 + noise(random))};
    });
}

class ImageInputTest : public ::testing::Test {
  protected:
    test::TempDir folder;

    std::filesystem::path save(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        test::writeText(folder / name, bytes);
        return folder / name;
    }
};

} // namespace

class OrientationTest : public ImageInputTest, public ::testing::WithParamInterface<int> {};

// A JPEG (big-endian EXIF for one value) and a PNG (interlaced for odd values) of each EXIF
// orientation: crops, rounded outwards, are taken from the photo as it is displayed.
TEST_P(OrientationTest, CropIsTakenFromTheOrientedPhoto) {
    const int orientation = GetParam();
    const Picture displayed = Picture::filled(96, 64, blockColour);
    const Picture stored = storedFor(displayed, orientation);
    const auto jpeg =
        encodeJpeg(stored, {.orientation = orientation, .bigEndianExif = orientation == 8});
    const auto png = encodePng(stored.width, stored.height, stored.rgb,
                               {.interlaced = orientation % 2 == 1, .orientation = orientation});
    for (const auto& [name, bytes] :
         {std::pair{"turned.jpg", jpeg}, std::pair{"turned.png", png}}) {
        const ImageInput input = ImageInput::load(save(name, bytes));
        ASSERT_EQ(input.size(), (ImageSize{96, 64})) << name;
        EXPECT_EQ(input.sourceHash(), test::hashOf(bytes));
        const Picture crop = pictureOf(input.cropped({20.4, 10.7, 50.2, 40.1}));
        EXPECT_LE(largestDifference(crop, region(displayed, 20, 10, 51, 41)), 3) << name;
        EXPECT_LE(largestDifference(pictureOf(input.decoded()), displayed), 3) << name;
        // Scaled while decoding: whole blocks of 4 pixels, each averaged into one.
        const ReducedImage quarter = input.reduced({40.5, 33, 20, 20}, 4);
        EXPECT_EQ(quarter.rect, (PixelRect{40, 32, 24, 24})) << name;
        EXPECT_LE(largestDifference(pictureOf(quarter.image), flat(6, 6, blockColour(40, 32))), 3)
            << name;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryExifValue, OrientationTest, ::testing::Range(1, 9));

TEST_F(ImageInputTest, CropEqualsTheSameRegionOfAFullDecode) {
    // Subsampled chroma is smoothed across neighbouring pixels, so a crop's edges are where a
    // partial decode would differ; odd sizes leave partial blocks at the right and bottom.
    for (bool progressive : {false, true}) {
        const ImageInput input = ImageInput::load(
            save("noise.jpg",
                 encodeJpeg(noisyPicture(203, 157, 7),
                            {.quality = 85, .fullChroma = false, .progressive = progressive})));
        const Picture full = pictureOf(input.decoded());
        ASSERT_EQ(full.width, 203);
        const PixelRect rects[] = {{17, 15, 33, 47},
                                   {31, 1, 1, 1},
                                   {150, 100, 53, 57},
                                   {-10, -5, 30.5, 20},
                                   {190.5, 150.5, 100, 100}};
        for (const PixelRect& rect : rects) {
            const int x0 = std::max(0, int(std::floor(rect.x)));
            const int y0 = std::max(0, int(std::floor(rect.y)));
            const int x1 = std::min(203, int(std::ceil(rect.maxX())));
            const int y1 = std::min(157, int(std::ceil(rect.maxY())));
            const Picture crop = pictureOf(input.cropped(rect));
            ASSERT_EQ(crop.width, x1 - x0);
            ASSERT_EQ(crop.height, y1 - y0);
            EXPECT_EQ(crop.rgb, region(full, x0, y0, x1 - x0, y1 - y0).rgb)
                << "progressive " << progressive << " at " << rect.x << "," << rect.y;
        }
    }
}

TEST_F(ImageInputTest, AdobeCmykJpegBecomesRgb) {
    // Left half full magenta and yellow ink (red), right half half black ink (grey).
    std::vector<std::uint8_t> cmyk;
    for (int i = 0; i < 16 * 32; ++i) {
        const bool left = i % 32 < 16;
        cmyk.insert(cmyk.end(), {255, std::uint8_t(left ? 0 : 255), std::uint8_t(left ? 0 : 255),
                                 std::uint8_t(left ? 255 : 127)});
    }
    const ImageInput input = ImageInput::load(save("print.jpg", encodeCmykJpeg(32, 16, cmyk)));
    const Picture crop = pictureOf(input.cropped({8, 4, 16, 8}));
    EXPECT_LE(largestDifference(region(crop, 0, 0, 8, 8), flat(8, 8, {255, 0, 0})), 2);
    EXPECT_LE(largestDifference(region(crop, 8, 0, 8, 8), flat(8, 8, {127, 127, 127})), 2);
}

TEST_F(ImageInputTest, BadPhotosAndRegionsAreRefusedWithOneSentence) {
    std::mt19937 random(3);
    std::vector<std::uint8_t> noise(4000);
    for (auto& byte : noise)
        byte = std::uint8_t(random());
    noise[0] = 0x00;
    const auto notPhoto = save("noise.jpg", noise);
    const auto whole = encodeJpeg(noisyPicture(120, 96, 11));
    const auto cutHeader = save("IMG_0042.jpg", {whole.begin(), whole.begin() + 100});
    // The header is intact, so only decoding finds the missing rows.
    const ImageInput cut =
        ImageInput::load(save("cut.jpg", {whole.begin(), whole.begin() + whole.size() / 2}));
    std::vector<std::uint8_t> samples(40 * 30 * 3);
    for (auto& sample : samples)
        sample = std::uint8_t(random());
    auto png = encodePng(40, 30, samples, {});
    png.resize(png.size() / 2); // into the image data
    const ImageInput cutPng = ImageInput::load(save("cut.png", png));
    const auto big = save("big.jpg", {0xff, 0xd8, 0xff});
    std::filesystem::resize_file(big, (256u << 20) + 1); // sparse: costs no disk

    const auto damaged = [](const std::string& name) {
        return "\u201c" + name + "\u201d is damaged or truncated and cannot be decoded.";
    };
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { ImageInput::load(notPhoto); }, "\u201cnoise.jpg\u201d is not a JPEG or PNG photo."},
        {[&] { ImageInput::load(cutHeader); }, damaged("IMG_0042.jpg")},
        {[&] { cut.decoded(); }, damaged("cut.jpg")},
        {[&] { cutPng.decoded(); }, damaged("cut.png")},
        {[&] { ImageInput::load(big); },
         "\u201cbig.jpg\u201d is too large to be a photo (over 256 MiB)."},
    };
    for (const auto& [action, sentence] : cases)
        EXPECT_EQ(failureOf(action), sentence);

    const ImageInput input =
        ImageInput::load(save("IMG_0042.jpg", encodeJpeg(Picture::filled(96, 64, blockColour))));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const PixelRect& rect :
         {PixelRect{10, 10, 0, 5}, PixelRect{96, 0, 10, 10}, PixelRect{nan, 0, 10, 10}}) {
        const std::string message = failureOf([&] { input.cropped(rect); });
        EXPECT_NE(message.find("lies outside \u201cIMG_0042.jpg\u201d (96 \u00d7 64 pixels)"),
                  std::string::npos)
            << message;
    }
}

TEST_F(ImageInputTest, HugeDeclaredSizeIsRefusedFromTheHeader) {
    // A small photo whose frame header claims 20000 × 20000 pixels.
    auto jpeg = encodeJpeg(Picture::filled(16, 16, blockColour));
    for (std::size_t i = 2; i + 9 < jpeg.size(); ++i) {
        if (jpeg[i] == 0xff && jpeg[i + 1] == 0xc0) { // SOF0: length, precision, height, width
            jpeg[i + 5] = 20000 >> 8, jpeg[i + 6] = 20000 & 0xff;
            jpeg[i + 7] = 20000 >> 8, jpeg[i + 8] = 20000 & 0xff;
            break;
        }
    }
    // IHDR width and height, then its CRC.
    auto declaring = [](int width, int height, int colourType, int channels) {
        auto png = encodePng(16, 16, std::vector<std::uint8_t>(16 * 16 * channels, 9),
                             {.colourType = colourType});
        for (auto [at, value] : {std::pair{16, width}, std::pair{20, height}})
            for (int i = 0; i < 4; ++i)
                png[at + i] = std::uint8_t(value >> (24 - 8 * i));
        const uLong crc = crc32(0, png.data() + 12, 17);
        for (int i = 0; i < 4; ++i)
            png[29 + i] = std::uint8_t(crc >> (24 - 8 * i));
        return png;
    };
    const auto png = declaring(20000, 20000, PNG_COLOR_TYPE_RGB, 3);
    // 180 megapixels pass as RGB, but with a fourth sample they would take 720 MB to decode.
    const auto rgba = declaring(15000, 12000, PNG_COLOR_TYPE_RGB_ALPHA, 4);

    struct rusage before {};
    getrusage(RUSAGE_SELF, &before);
    for (const auto& [name, bytes] : {std::pair{"huge.jpg", jpeg}, std::pair{"huge.png", png}}) {
        EXPECT_EQ(failureOf([&] { ImageInput::load(save(name, bytes)); }),
                  "\u201c" + std::string(name) +
                      "\u201d declares 20000 \u00d7 20000 pixels, more than the 200 "
                      "megapixels a photo may have.");
    }
    EXPECT_EQ(failureOf([&] { ImageInput::load(save("alpha.png", rgba)); }),
              "\u201c"
              "alpha.png\u201d declares 15000 \u00d7 12000 pixels of 4 samples each, more "
              "than the 150 megapixels such a photo may have.");
    struct rusage after {};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100 * 1024) << "kB of peak memory added";
}

TEST_F(ImageInputTest, PngSampleFormatsBecomeRgb) {
    // Palette with one half-transparent entry (composited on white), 16-bit grey with big-endian
    // samples 0x0000, 0x8080, 0xffff, 0x1234, and RGBA with a transparent pixel.
    const std::vector<Rgb> palette = {{255, 0, 0}, {0, 0, 255}, {10, 20, 30}};
    const std::pair<std::vector<std::uint8_t>, std::vector<Rgb>> cases[] = {
        {encodePng(2, 2, {0, 1, 2, 2}, {.colourType = PNG_COLOR_TYPE_PALETTE}, palette, {255, 128}),
         {{255, 0, 0}, {127, 127, 255}, {10, 20, 30}, {10, 20, 30}}},
        {encodePng(2, 2, {0x00, 0x00, 0x80, 0x80, 0xff, 0xff, 0x12, 0x34},
                   {.colourType = PNG_COLOR_TYPE_GRAY, .bitDepth = 16}),
         {{0, 0, 0}, {128, 128, 128}, {255, 255, 255}, {18, 18, 18}}},
        {encodePng(2, 1, {100, 150, 200, 255, 100, 150, 200, 0},
                   {.colourType = PNG_COLOR_TYPE_RGB_ALPHA}),
         {{100, 150, 200}, {255, 255, 255}}},
    };
    for (const auto& [bytes, pixels] : cases) {
        const ImageInput input = ImageInput::load(save("p.png", bytes));
        const Picture picture = pictureOf(input.decoded());
        for (std::size_t i = 0; i < pixels.size(); ++i)
            EXPECT_EQ(picture.at(int(i % 2), int(i / 2)), pixels[i]) << "pixel " << i;
    }
}

TEST_F(ImageInputTest, RealPhotoLoadsAndCrops) {
    const auto file = std::filesystem::path(TESSARY_PHOTOS_DIR) / "33823288584_1d21cf0a26_k.jpg";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "no real photo at " << file << "; only generated ones are tested";
    const ImageInput input = ImageInput::load(file);
    EXPECT_EQ(input.sourceHash(), test::hashOf(test::readText(file)));
    const Picture full = pictureOf(input.decoded());
    EXPECT_EQ(pictureOf(input.cropped({301.5, 122.25, 240, 180})).rgb,
              region(full, 301, 122, 241, 181).rgb);
}
