// SPDX-License-Identifier: Apache-2.0
#include "camera.h"
#include "canvas.h"
#include "dravik/image.h"
#include "jpeg_writer.h"
#include "pose.h"
#include "samplegen.h"
#include "scene.h"
#include "test_support.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>

namespace sg = tessary::samplegen;

namespace {

double inkedArea(const sg::Canvas& canvas) {
    double sum = 0;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            sum += canvas.at(x, y).r;
    return sum;
}

} // namespace

// Anti-aliased coverage must add up to the true area, or edges show seams and halos.
TEST(Canvas, CoverageAddsUpToTheShapesArea) {
    sg::Polygon inner = sg::ellipse({30, 30}, 10, 10, 0, 200);
    std::reverse(inner.begin(), inner.end()); // running the other way, it cuts a hole
    const double triangle =
        0.5 * std::abs((30.7 - 2.2) * (27.9 - 3.1) - (11.5 - 2.2) * (9.4 - 3.1));
    const double pi = std::numbers::pi;
    const struct {
        const char* name;
        std::vector<sg::Polygon> shape;
        float opacity;
        double area;
        double tolerance;
    } cases[] = {
        {"rectangle", {{{3.3, 4.6}, {13.55, 4.6}, {13.55, 11.1}, {3.3, 11.1}}}, 1, 66.625, 0.1},
        {"triangle", {{{2.2, 3.1}, {30.7, 9.4}, {11.5, 27.9}}}, 1, triangle, triangle * 0.01},
        {"ring", {sg::ellipse({30, 30}, 20, 20, 0, 200), inner}, 1, pi * (400 - 100), 10},
        {"capsule", {sg::capsule({20, 20}, {60, 20}, 6, 6)}, 1, 40 * 12 + pi * 36, 6},
        // Half off the picture: only the visible half is painted, at half strength.
        {"half off", {{{-10, 5}, {10, 5}, {10, 15}, {-10, 15}}}, 0.5f, 0.5 * 10 * 10, 0.01},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        sg::Canvas canvas(80, 60);
        canvas.fill(c.shape, sg::solid({1, 1, 1}), c.opacity);
        EXPECT_NEAR(inkedArea(canvas), c.area, c.tolerance);
    }
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
            EXPECT_NEAR(sg::length(j[shoulder] - j[elbow]), sg::upperArmLength, 1e-9);
            EXPECT_NEAR(sg::length(j[elbow] - j[wrist]), sg::forearmLength, 1e-9);
        }
        for (auto [hip, knee, ankle] : {std::tuple{sg::leftHip, sg::leftKnee, sg::leftAnkle},
                                        std::tuple{sg::rightHip, sg::rightKnee, sg::rightAnkle}}) {
            EXPECT_NEAR(sg::length(j[hip] - j[knee]), sg::thighLength, 1e-9);
            EXPECT_NEAR(sg::length(j[knee] - j[ankle]), sg::shinLength, 1e-9);
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
    std::vector<std::uint8_t> rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) // red on top, blue on the right
            rgb.insert(rgb.end(),
                       {std::uint8_t(y < 24 ? 220 : 20), 40, std::uint8_t(x < 32 ? 30 : 200)});
    const dravik::test::TempDir folder;
    dravik::test::writeText(folder / "drawn.jpg", sg::encodeJpeg(rgb, width, height, 90));
    const dravik::Image image = dravik::ImageInput::load(folder / "drawn.jpg").decoded();
    ASSERT_EQ(image.width, width);
    ASSERT_EQ(image.height, height);
    auto pixel = [&](int x, int y) { return image.data() + y * image.stride + x * 3; };
    EXPECT_NEAR(pixel(8, 8)[0], 220, 12);
    EXPECT_NEAR(pixel(8, 40)[0], 20, 12);
    EXPECT_NEAR(pixel(8, 8)[2], 30, 12);
    EXPECT_NEAR(pixel(56, 8)[2], 200, 12);
}
