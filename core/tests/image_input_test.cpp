#include "dravik/error.h"
#include "dravik/image.h"
#include "photo_fixtures.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <png.h>
#include <random>
#include <sys/resource.h>
#include <zlib.h>

using namespace dravik;
using namespace photo_fixtures;

namespace {

// Six flat blocks of 32 pixels, aligned with the JPEG blocks so that quality 100 keeps them.
Rgb blockColour(int x, int y) {
    static const Rgb colours[6] = {{230, 20, 20},  {20, 200, 40},  {30, 40, 220},
                                   {240, 230, 30}, {20, 210, 220}, {200, 30, 210}};
    return colours[(y / 32) * 3 + x / 32];
}

Picture pictureOf(const Image& image) {
    Picture picture{image.width, image.height, {}};
    for (int y = 0; y < image.height; ++y)
        picture.rgb.insert(picture.rgb.end(), image.data() + y * image.stride,
                           image.data() + y * image.stride + std::size_t(image.width) * 3);
    return picture;
}

Picture region(const Picture& picture, int x, int y, int width, int height) {
    return Picture::filled(width, height, [&](int u, int v) { return picture.at(x + u, y + v); });
}

int largestDifference(const Picture& a, const Picture& b) {
    int worst = 0;
    for (std::size_t i = 0; i < a.rgb.size(); ++i)
        worst = std::max(worst, std::abs(int(a.rgb[i]) - int(b.rgb[i])));
    return worst;
}

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.message();
    }
    return "(no error)";
}

std::vector<std::uint8_t> noisyPicture(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> noise(-40, 40);
    const Picture picture = Picture::filled(width, height, [&](int x, int y) {
        auto clamp = [](int v) { return std::uint8_t(std::clamp(v, 0, 255)); };
        return Rgb{clamp(x * 255 / width + noise(random)), clamp(y * 255 / height + noise(random)),
                   clamp((x ^ y) % 256 + noise(random))};
    });
    return encodeJpeg(picture, {.quality = 85, .fullChroma = false});
}

class ImageInputTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;

    std::filesystem::path save(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        writeFile(folder / name, bytes);
        return folder / name;
    }
};

} // namespace

TEST_F(ImageInputTest, HashIsSha256OfTheFileBytesForJpegAndPng) {
    const auto jpeg = encodeJpeg(Picture::filled(96, 64, blockColour));
    const auto png = encodePng(2, 1, {1, 2, 3, 4, 5, 6}, {});
    const ImageInput fromJpeg = ImageInput::load(save("a.jpg", jpeg));
    const ImageInput fromPng = ImageInput::load(save("b.png", png));
    EXPECT_EQ(fromJpeg.sourceHash(), sha256Hex(jpeg));
    EXPECT_EQ(fromPng.sourceHash(), sha256Hex(png));
    EXPECT_EQ(fromJpeg.size(), (ImageSize{96, 64}));
    EXPECT_EQ(fromPng.size(), (ImageSize{2, 1}));
}

class OrientationTest : public ImageInputTest, public ::testing::WithParamInterface<int> {};

TEST_P(OrientationTest, CropIsTakenFromTheOrientedPhoto) {
    const int orientation = GetParam();
    const Picture displayed = Picture::filled(96, 64, blockColour);
    const auto bytes = encodeJpeg(storedFor(displayed, orientation),
                                  {.orientation = orientation, .bigEndianExif = orientation == 8});
    const ImageInput input = ImageInput::load(save("turned.jpg", bytes));
    ASSERT_EQ(input.size(), (ImageSize{96, 64}));

    // Rounded outwards: x 20..71, y 10..51.
    const Image crop = input.cropped({20.4, 10.7, 50.2, 40.1});
    ASSERT_EQ(crop.width, 51);
    ASSERT_EQ(crop.height, 41);
    EXPECT_LE(largestDifference(pictureOf(crop), region(displayed, 20, 10, 51, 41)), 3);
    EXPECT_LE(largestDifference(pictureOf(input.decoded()), displayed), 3);
}

INSTANTIATE_TEST_SUITE_P(EveryExifValue, OrientationTest, ::testing::Range(1, 9));

TEST_F(ImageInputTest, CropEqualsTheSameRegionOfAFullDecode) {
    // Subsampled chroma is smoothed across neighbouring pixels, so a crop's edges are where a
    // partial decode would differ; odd sizes leave partial blocks at the right and bottom.
    for (bool progressive : {false, true}) {
        auto bytes = noisyPicture(203, 157, 7);
        if (progressive) {
            const Picture plain = decodeJpeg(bytes);
            bytes = encodeJpeg(plain, {.quality = 85, .fullChroma = false, .progressive = true});
        }
        const Picture full = decodeJpeg(bytes);
        const ImageInput input = ImageInput::load(save("noise.jpg", bytes));
        const PixelRect rects[] = {{16, 16, 32, 32},        {17, 15, 33, 47},   {31, 1, 1, 1},
                                   {0, 0, 203, 157},        {150, 100, 53, 57}, {-10, -5, 30.5, 20},
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
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            const std::uint8_t pixel[4] = {255, 0, 0, 255};
            const std::uint8_t grey[4] = {255, 255, 255, 127};
            cmyk.insert(cmyk.end(), x < 16 ? pixel : grey, (x < 16 ? pixel : grey) + 4);
        }
    }
    const ImageInput input = ImageInput::load(save("print.jpg", encodeCmykJpeg(32, 16, cmyk)));
    const Picture crop = pictureOf(input.cropped({8, 4, 16, 8}));
    EXPECT_LE(largestDifference(region(crop, 0, 0, 8, 8), Picture::filled(8, 8,
                                                                          [](int, int) {
                                                                              return Rgb{255, 0, 0};
                                                                          })),
              2);
    EXPECT_LE(
        largestDifference(region(crop, 8, 0, 8, 8), Picture::filled(8, 8,
                                                                    [](int, int) {
                                                                        return Rgb{127, 127, 127};
                                                                    })),
        2);
}

TEST_F(ImageInputTest, EmptyOrOutsideRegionsAreRefusedNamingThePhoto) {
    const ImageInput input =
        ImageInput::load(save("IMG_0042.jpg", encodeJpeg(Picture::filled(96, 64, blockColour))));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const PixelRect& rect : {PixelRect{10, 10, 0, 5}, PixelRect{96, 0, 10, 10},
                                  PixelRect{-20, -20, 10, 10}, PixelRect{nan, 0, 10, 10}}) {
        const std::string message = errorOf([&] { input.cropped(rect); });
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
    auto png = encodePng(16, 16, std::vector<std::uint8_t>(16 * 16 * 3, 9), {});
    for (std::size_t at : {16u, 20u}) { // IHDR width and height, then its CRC
        png[at] = 0, png[at + 1] = 0, png[at + 2] = 20000 >> 8, png[at + 3] = 20000 & 0xff;
    }
    const uLong crc = crc32(0, png.data() + 12, 17);
    for (int i = 0; i < 4; ++i)
        png[29 + i] = std::uint8_t(crc >> (24 - 8 * i));

    struct rusage before {};
    getrusage(RUSAGE_SELF, &before);
    const auto start = std::chrono::steady_clock::now();
    for (const auto& [name, bytes] : {std::pair{"huge.jpg", jpeg}, std::pair{"huge.png", png}}) {
        const std::string message = errorOf([&] { ImageInput::load(save(name, bytes)); });
        EXPECT_EQ(message, "\u201c" + std::string(name) +
                               "\u201d declares 20000 \u00d7 20000 pixels, more than the 200 "
                               "megapixels a photo may have.");
    }
    struct rusage after {};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100 * 1024) << "kB of peak memory added";
}

TEST_F(ImageInputTest, DamagedFilesAreRefusedWithOneSentence) {
    std::mt19937 random(3);
    std::vector<std::uint8_t> noise(4000);
    for (auto& byte : noise)
        byte = std::uint8_t(random());
    noise[0] = 0x00;
    EXPECT_EQ(errorOf([&] { ImageInput::load(save("noise.jpg", noise)); }),
              "\u201cnoise.jpg\u201d is not a JPEG or PNG photo.");

    noise[0] = 0xff, noise[1] = 0xd8, noise[2] = 0xff;
    EXPECT_EQ(errorOf([&] { ImageInput::load(save("fake.jpg", noise)); }),
              "\u201cfake.jpg\u201d is damaged or truncated and cannot be decoded.");

    const auto whole = noisyPicture(120, 96, 11);
    const auto cutHeader = std::vector<std::uint8_t>(whole.begin(), whole.begin() + 100);
    EXPECT_EQ(errorOf([&] { ImageInput::load(save("IMG_0042.jpg", cutHeader)); }),
              "\u201cIMG_0042.jpg\u201d is damaged or truncated and cannot be decoded.");

    // The header is intact, so only decoding finds the missing rows.
    const auto cutData = std::vector<std::uint8_t>(whole.begin(), whole.begin() + whole.size() / 2);
    const ImageInput truncated = ImageInput::load(save("cut.jpg", cutData));
    EXPECT_EQ(errorOf([&] { truncated.decoded(); }),
              "\u201ccut.jpg\u201d is damaged or truncated and cannot be decoded.");
    EXPECT_EQ(errorOf([&] {
                  truncated.cropped({100, 90, 10, 6});
              }),
              "\u201ccut.jpg\u201d is damaged or truncated and cannot be decoded.");

    std::vector<std::uint8_t> samples(40 * 30 * 3);
    for (auto& sample : samples)
        sample = std::uint8_t(random());
    auto png = encodePng(40, 30, samples, {});
    png.resize(png.size() / 2); // into the image data
    const ImageInput cutPng = ImageInput::load(save("cut.png", png));
    EXPECT_EQ(errorOf([&] { cutPng.decoded(); }),
              "\u201ccut.png\u201d is damaged or truncated and cannot be decoded.");

    EXPECT_EQ(errorOf([&] { ImageInput::load(folder / "missing.jpg"); }),
              "\u201cmissing.jpg\u201d cannot be read (No such file or directory).");
}

TEST_F(ImageInputTest, FilesOver256MiBAreRefusedUnread) {
    const auto file = folder / "big.jpg";
    writeFile(file, {0xff, 0xd8, 0xff});
    std::filesystem::resize_file(file, (256u << 20) + 1); // sparse: costs no disk
    EXPECT_EQ(errorOf([&] { ImageInput::load(file); }),
              "\u201cbig.jpg\u201d is larger than 256 MiB, which is more than a photo can be.");
}

TEST_F(ImageInputTest, PngSampleFormatsBecomeRgb) {
    // Palette with one half-transparent entry: composited on white.
    const std::vector<Rgb> palette = {{255, 0, 0}, {0, 0, 255}, {10, 20, 30}};
    const auto indexed = encodePng(3, 2, {0, 1, 2, 2, 1, 0}, {.colourType = PNG_COLOR_TYPE_PALETTE},
                                   palette, {255, 128});
    const Picture fromPalette = pictureOf(ImageInput::load(save("p.png", indexed)).decoded());
    EXPECT_EQ(fromPalette.at(0, 0), (Rgb{255, 0, 0}));
    EXPECT_EQ(fromPalette.at(1, 0), (Rgb{127, 127, 255}));
    EXPECT_EQ(fromPalette.at(2, 0), (Rgb{10, 20, 30}));
    EXPECT_EQ(fromPalette.at(0, 1), (Rgb{10, 20, 30}));

    // 16-bit grey, big-endian samples: 0x0000, 0x8080, 0xffff, 0x1234.
    const auto grey = encodePng(2, 2, {0x00, 0x00, 0x80, 0x80, 0xff, 0xff, 0x12, 0x34},
                                {.colourType = PNG_COLOR_TYPE_GRAY, .bitDepth = 16});
    const Picture fromGrey = pictureOf(ImageInput::load(save("g.png", grey)).decoded());
    EXPECT_EQ(fromGrey.at(0, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(fromGrey.at(1, 0), (Rgb{128, 128, 128}));
    EXPECT_EQ(fromGrey.at(0, 1), (Rgb{255, 255, 255}));
    EXPECT_EQ(fromGrey.at(1, 1), (Rgb{18, 18, 18}));

    const auto rgba = encodePng(2, 1, {100, 150, 200, 255, 100, 150, 200, 0},
                                {.colourType = PNG_COLOR_TYPE_RGB_ALPHA});
    const Picture fromRgba = pictureOf(ImageInput::load(save("a.png", rgba)).decoded());
    EXPECT_EQ(fromRgba.at(0, 0), (Rgb{100, 150, 200}));
    EXPECT_EQ(fromRgba.at(1, 0), (Rgb{255, 255, 255}));
}

TEST_F(ImageInputTest, PngCropsInterlacedAndOrientedPhotos) {
    const Picture displayed = Picture::filled(37, 23, [](int x, int y) {
        return Rgb{std::uint8_t(x * 7), std::uint8_t(y * 11), 99};
    });
    for (bool interlaced : {false, true}) {
        for (int orientation : {0, 6}) {
            const Picture stored = storedFor(displayed, orientation);
            const auto bytes = encodePng(stored.width, stored.height, stored.rgb,
                                         {.interlaced = interlaced, .orientation = orientation});
            const ImageInput input = ImageInput::load(save("i.png", bytes));
            EXPECT_EQ(input.size(), (ImageSize{37, 23}));
            EXPECT_EQ(pictureOf(input.cropped({5, 3, 20, 15})).rgb,
                      region(displayed, 5, 3, 20, 15).rgb)
                << "interlaced " << interlaced << ", orientation " << orientation;
        }
    }
}

TEST_F(ImageInputTest, RealPhotoLoadsAndCrops) {
    const std::filesystem::path photos = TESSARY_PHOTOS_DIR;
    const auto file = photos / "33823288584_1d21cf0a26_k.jpg";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "no real photos at " << photos << "; only generated ones are tested";
    const ImageInput input = ImageInput::load(file);
    EXPECT_EQ(input.sourceHash(), sha256Hex(readFile(file)));
    const Picture full = decodeJpeg(readFile(file));
    EXPECT_EQ(input.size(), (ImageSize{full.width, full.height}));
    const Image crop = input.cropped({301.5, 122.25, 240, 180});
    EXPECT_EQ(pictureOf(crop).rgb, region(full, 301, 122, 241, 181).rgb);
}
