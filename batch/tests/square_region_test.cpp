// SPDX-License-Identifier: Apache-2.0
#include "square_region.h"

#include <cmath>
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

TEST(SquareRegion, ATiltedSquareTurnsAboutItsCentreAndSamplesWhatLiesThere) {
    // Tilted 90° the square's x axis runs down the photo and its y axis to the left.
    const SquareRegion turned = SquareRegion::centred({100, 100}, 40, 90);
    const Point2 right = turned.toPhoto(1, 0.5);
    EXPECT_NEAR(right.x, 100, 1e-9);
    EXPECT_NEAR(right.y, 120, 1e-9);
    const SquareRegion leaning = SquareRegion::centred({300, 200}, 80, -35);
    const Point2 back = leaning.toSquare(leaning.toPhoto(0.2, 0.9));
    EXPECT_NEAR(back.x, 0.2, 1e-12);
    EXPECT_NEAR(back.y, 0.9, 1e-12);
    EXPECT_NEAR(SquareRegion::centred({0, 0}, 100, 45).bounds().width, 100 * std::sqrt(2.0), 1e-9);

    // A red 9 × 9 block right of the centre of a grey picture appears below the centre of a
    // square tilted by −90°, whose top is the photo's left, shrunk or not.
    Image image = picture(200, 200, [](int x, int y, int c) -> std::uint8_t {
        const bool red = x >= 126 && x < 135 && y >= 96 && y < 105;
        return red ? (c == 0 ? 250 : 0) : 120;
    });
    for (const auto& [squareSide, outSide] : {std::pair{100, 100}, std::pair{100, 50}}) {
        const SquareRegion region = SquareRegion::centred({100, 100}, squareSide, -90);
        auto rgb = sampleSquare(image, {0, 0, 200, 200}, region, outSide);
        const Point2 where = region.toSquare({130, 100});
        EXPECT_NEAR(where.x, 0.5, 1e-9);
        EXPECT_NEAR(where.y, 0.8, 1e-9);
        const int ox = int(where.x * outSide);
        const int oy = int(where.y * outSide);
        EXPECT_GT(at(rgb, outSide, ox, oy)[0], 200) << outSide;
        EXPECT_EQ(at(rgb, outSide, ox, outSide - 1 - oy)[0], 120) << "the mirror image is grey";
    }
}
