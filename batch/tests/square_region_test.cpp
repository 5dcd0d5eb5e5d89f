#include "square_region.h"

#include <gtest/gtest.h>
#include <memory>

using namespace dravik;
using namespace dravik::batch;

namespace {

Image picture(int width, int height, std::uint8_t (*colour)(int x, int y, int channel)) {
    auto pixels = std::make_shared<std::vector<std::uint8_t>>(std::size_t(width) * height * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                (*pixels)[(std::size_t(y) * width + x) * 3 + c] = colour(x, y, c);
    return {width, height, std::size_t(width) * 3, pixels};
}

const std::uint8_t* at(const std::vector<std::uint8_t>& rgb, int side, int x, int y) {
    return rgb.data() + (std::size_t(y) * side + x) * 3;
}

} // namespace

TEST(SquareRegion, PadsTheShorterSideEvenlyAndMapsFractionsBack) {
    SquareRegion wide = SquareRegion::around({100, 50, 400, 200});
    EXPECT_EQ(wide, (SquareRegion{100, -50, 400}));
    SquareRegion tall = SquareRegion::around({10, 20, 30, 90});
    EXPECT_EQ(tall, (SquareRegion{-20, 20, 90}));
    EXPECT_EQ(wide.toPhoto(0.5, 0.25), (Point2{300, 50}));

    EXPECT_EQ(visiblePart(wide, {450, 300}), (PixelRect{100, 0, 350, 300}));
    EXPECT_EQ(visiblePart({-0.5, 10.2, 20}, {640, 480}), (PixelRect{0, 10, 20, 21}));
    EXPECT_EQ(visiblePart({500, 500, 20}, {100, 100}), PixelRect{});
}

TEST(SquareRegion, SamplesRowsTopDownAveragingWhenShrinkingAndReadingBlackOutside) {
    // Left half red, right half blue, a green band on rows 32..47: 64 x 64, scaled to 128 x 128.
    Image image = picture(64, 64, [](int x, int y, int c) -> std::uint8_t {
        if (y >= 32 && y < 48)
            return c == 1 ? 200 : 0;
        return (x < 32) == (c == 0) && c != 1 ? 250 : 0;
    });
    auto rgb = sampleSquare(image, {0, 0, 64, 64}, {0, 0, 64}, 128);
    ASSERT_EQ(rgb.size(), 128u * 128 * 3);
    EXPECT_EQ(at(rgb, 128, 10, 10)[0], 250);
    EXPECT_EQ(at(rgb, 128, 10, 10)[2], 0);
    EXPECT_EQ(at(rgb, 128, 100, 10)[2], 250);
    EXPECT_EQ(at(rgb, 128, 100, 80)[1], 200);

    // A square reaching past the photo's left and bottom edges reads black there.
    auto padded = sampleSquare(image, {0, 0, 64, 64}, {-32, 16, 64}, 64);
    EXPECT_EQ(at(padded, 64, 5, 5)[0] + at(padded, 64, 5, 5)[1] + at(padded, 64, 5, 5)[2], 0);
    EXPECT_EQ(at(padded, 64, 40, 5)[0], 250);
    EXPECT_EQ(at(padded, 64, 40, 60)[1], 0);

    // One-pixel stripes of 0 and 200 must come out as their mean, not as one of them (aliasing).
    Image stripes =
        picture(1024, 1024, [](int x, int, int) -> std::uint8_t { return x % 2 ? 200 : 0; });
    auto shrunk = sampleSquare(stripes, {0, 0, 1024, 1024}, {0, 0, 1024}, 256);
    for (int i : {0, 1000, 65535})
        EXPECT_EQ(shrunk[std::size_t(i) * 3], 100) << i;

    // The decoded rectangle may start inside the photo; its offset is honoured.
    Image patch = picture(
        10, 10, [](int x, int y, int) -> std::uint8_t { return x == 3 && y == 7 ? 255 : 0; });
    auto exact = sampleSquare(patch, {200, 100, 10, 10}, {200, 100, 10}, 10);
    EXPECT_EQ(at(exact, 10, 3, 7)[0], 255);
    EXPECT_EQ(at(exact, 10, 7, 3)[0], 0);
}
