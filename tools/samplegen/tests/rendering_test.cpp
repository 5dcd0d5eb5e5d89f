#include "camera.h"
#include "canvas.h"
#include "dravik/image.h"
#include "jpeg_writer.h"
#include "noise.h"
#include "pose.h"
#include "samplegen.h"
#include "scene.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>

namespace fs = std::filesystem;
namespace sg = tessary::samplegen;

namespace {

double inkedArea(const sg::Canvas& canvas) {
    double sum = 0;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            sum += canvas.at(x, y).r;
    return sum;
}

double distance(sg::Vec3 a, sg::Vec3 b) {
    return sg::length(a - b);
}

} // namespace

// Anti-aliased coverage must add up to the true area, or edges show seams and halos.
TEST(Canvas, CoverageAddsUpToTheShapesArea) {
    const sg::Paint white = sg::solid({1, 1, 1});
    {
        sg::Canvas canvas(40, 30);
        canvas.fill(sg::Polygon{{3.3, 4.6}, {13.55, 4.6}, {13.55, 11.1}, {3.3, 11.1}}, white);
        EXPECT_NEAR(inkedArea(canvas), 10.25 * 6.5, 0.1);
    }
    {
        sg::Canvas canvas(40, 30);
        canvas.fill(sg::Polygon{{2.2, 3.1}, {30.7, 9.4}, {11.5, 27.9}}, white);
        const double area =
            0.5 * std::abs((30.7 - 2.2) * (27.9 - 3.1) - (11.5 - 2.2) * (9.4 - 3.1));
        EXPECT_NEAR(inkedArea(canvas), area, area * 0.01);
    }
    {
        // A ring: the inner circle runs the other way and cuts a hole.
        sg::Canvas canvas(60, 60);
        sg::Polygon inner = sg::ellipse({30, 30}, 10, 10, 0, 200);
        std::reverse(inner.begin(), inner.end());
        canvas.fill({sg::ellipse({30, 30}, 20, 20, 0, 200), inner}, white);
        EXPECT_NEAR(inkedArea(canvas), std::numbers::pi * (400 - 100), 10);
    }
    {
        // Half off the picture: only the visible half is painted, at half strength.
        sg::Canvas canvas(20, 20);
        canvas.fill(sg::Polygon{{-10, 5}, {10, 5}, {10, 15}, {-10, 15}}, white, 0.5f);
        EXPECT_NEAR(inkedArea(canvas), 0.5 * 10 * 10, 0.01);
        EXPECT_FLOAT_EQ(canvas.at(5, 10).r, 0.5f);
    }
}

TEST(Canvas, CapsuleCoversItsSegmentAndRoundEnds) {
    sg::Canvas canvas(80, 40);
    canvas.fill(sg::capsule({20, 20}, {60, 20}, 6, 6), sg::solid({1, 1, 1}));
    EXPECT_NEAR(inkedArea(canvas), 40 * 12 + std::numbers::pi * 36, 6);
    EXPECT_FLOAT_EQ(canvas.at(40, 20).r, 1.0f);
    EXPECT_FLOAT_EQ(canvas.at(40, 30).r, 0.0f);
}

TEST(ValueNoise, StaysInRangeIsSmoothAndFollowsItsSeed) {
    const sg::ValueNoise noise(42), same(42), other(43);
    double previous = noise.at(0, 0.37);
    bool differs = false;
    for (int i = 1; i < 2000; ++i) {
        const double x = i * 0.01;
        const double v = noise.fractal(x, 0.37, 3);
        EXPECT_GE(v, 0.0);
        EXPECT_LE(v, 1.0);
        EXPECT_EQ(noise.at(x, 0.37), same.at(x, 0.37));
        differs = differs || noise.at(x, 0.37) != other.at(x, 0.37);
        // Neighbouring samples are close: the grain is smooth, not white noise.
        EXPECT_LT(std::abs(noise.at(x, 0.37) - previous), 0.05);
        previous = noise.at(x, 0.37);
    }
    EXPECT_TRUE(differs);
}

// The skeleton the detector reports is the one drawn: its bones keep their lengths whatever
// the style, and the inside knee never goes through the track.
TEST(Pose, BonesKeepTheirLengthsAndTheKneeClearsTheTrack) {
    sg::Random random(9);
    for (int trial = 0; trial < 200; ++trial) {
        const sg::RidingStyle style{random.unit(), random.unit(), random.unit(), random.unit(),
                                    random.unit()};
        const int turn = random.chance(0.5) ? 1 : -1;
        const double lean = random.uniform(0.62, 0.92);
        const sg::RiderPose pose = sg::poseRider(style, turn, lean);
        const auto& j = pose.joints;
        for (auto [shoulder, elbow, wrist] :
             {std::tuple{sg::leftShoulder, sg::leftElbow, sg::leftWrist},
              std::tuple{sg::rightShoulder, sg::rightElbow, sg::rightWrist}}) {
            EXPECT_NEAR(distance(j[shoulder], j[elbow]), sg::upperArmLength, 1e-9);
            EXPECT_NEAR(distance(j[elbow], j[wrist]), sg::forearmLength, 1e-9);
        }
        for (auto [hip, knee, ankle] : {std::tuple{sg::leftHip, sg::leftKnee, sg::leftAnkle},
                                        std::tuple{sg::rightHip, sg::rightKnee, sg::rightAnkle}}) {
            EXPECT_NEAR(distance(j[hip], j[knee]), sg::thighLength, 1e-9);
            EXPECT_NEAR(distance(j[knee], j[ankle]), sg::shinLength, 1e-9);
        }
        const sg::Joint insideKnee = turn > 0 ? sg::leftKnee : sg::rightKnee;
        const sg::Joint outsideKnee = turn > 0 ? sg::rightKnee : sg::leftKnee;
        EXPECT_GE(sg::rolled(j[insideKnee], sg::rollFor(turn, lean)).z, 0.0);
        EXPECT_GT(std::abs(j[insideKnee].y), std::abs(j[outsideKnee].y));
        // The motorcycle leans into the corner: its top moves to the inside.
        EXPECT_GT(sg::rolled({0, 0, 1}, sg::rollFor(turn, lean)).y * turn, 0.5);
    }
}

// Framing and the far side (which lowers confidences) follow the photographer's position.
TEST(RenderPhoto, FramesTheRiderAndKnowsWhichSideIsFar) {
    sg::Random random(3);
    for (int trial = 0; trial < 6; ++trial) {
        sg::PhotoScene scene =
            sg::randomMoment(sg::randomCorner(random), sg::randomRider(random), random);
        scene.corner.fromOutside = trial % 2 == 0;
        const sg::RenderedPhoto photo = sg::renderPhoto(scene, 240, 160);
        ASSERT_EQ(photo.rgb.size(), 240u * 160u * 3u);
        const dravik::PixelRect frame{0, 0, 240, 160};
        EXPECT_TRUE(frame.contains(photo.riderBox));
        for (const dravik::Point2& p : photo.joints)
            EXPECT_TRUE(photo.riderBox.contains(p));
        const int insideKnee = scene.corner.turn > 0 ? sg::leftKnee : sg::rightKnee;
        const int outsideKnee = scene.corner.turn > 0 ? sg::rightKnee : sg::leftKnee;
        EXPECT_EQ(photo.farSide[static_cast<std::size_t>(insideKnee)], scene.corner.fromOutside);
        EXPECT_EQ(photo.farSide[static_cast<std::size_t>(outsideKnee)], !scene.corner.fromOutside);
    }
}

// Channel order and rows survive the encoder: the core decodes what was drawn.
TEST(JpegWriter, CoreDecodesWhatWasEncoded) {
    const int width = 64, height = 48;
    std::vector<std::uint8_t> rgb(static_cast<std::size_t>(width) * height * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
            p[0] = y < height / 2 ? 220 : 20; // red on top
            p[1] = 40;
            p[2] = x < width / 2 ? 30 : 200; // blue on the right
        }
    const std::vector<std::uint8_t> jpeg = sg::encodeJpeg(rgb, width, height, 90);
    const fs::path file = fs::temp_directory_path() / "samplegen-jpeg-test.jpg";
    {
        std::ofstream out(file, std::ios::binary);
        out.write(reinterpret_cast<const char*>(jpeg.data()),
                  static_cast<std::streamsize>(jpeg.size()));
    }
    const dravik::Image image = dravik::ImageInput::load(file).decoded();
    fs::remove(file);
    ASSERT_EQ(image.width, width);
    ASSERT_EQ(image.height, height);
    auto pixel = [&](int x, int y) { return image.data() + y * image.stride + x * 3; };
    EXPECT_NEAR(pixel(8, 8)[0], 220, 12);
    EXPECT_NEAR(pixel(8, 40)[0], 20, 12);
    EXPECT_NEAR(pixel(8, 8)[2], 30, 12);
    EXPECT_NEAR(pixel(56, 8)[2], 200, 12);
}

TEST(PhotoSize, KeepsThreeToTwoAtTheRequestedBudget) {
    EXPECT_EQ(sg::photoSize(24), (dravik::ImageSize{6000, 4000}));
    const dravik::ImageSize small = sg::photoSize(0.96);
    EXPECT_EQ(small, (dravik::ImageSize{1200, 800}));
}
