// SPDX-License-Identifier: Apache-2.0
#include "photo_fixtures.h"
#include "rider_detector.h"
#include "square_region.h"
#include "test_support.h"
#include "worker_location.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

// The real models on the shared photos. Rotated and pasted copies are made here, at run time.

using namespace dravik;
using namespace dravik::batch;
namespace fs = std::filesystem;

namespace {

const fs::path photos = TESSARY_PHOTOS_DIR;
const fs::path eventPhoto = photos / "33823288584_1d21cf0a26_k.jpg";  // riders among a crowd
const fs::path bridgePhoto = photos / "24274813513_0cfd2ce6d0_k.jpg"; // people walking

class RealPhotos : public testing::Test {
  protected:
    void SetUp() override {
        if (!fs::is_regular_file(eventPhoto) || !fs::is_regular_file(bridgePhoto))
            GTEST_SKIP() << "no shared photos at " << photos;
        try {
            worker_ = std::make_unique<PoseWorker>(installedWorker(TESSARY_LIBEXEC_DIR));
        } catch (const std::exception& error) {
            GTEST_SKIP() << "the pose worker is not installed: " << error.what();
        }
        detector_ = std::make_unique<RiderDetector>(*worker_);
    }

    Detection detect(const ImageInput& photo, std::optional<PixelRect> area = std::nullopt) {
        return detector_->detect(photo, area.value_or(whole(photo)), "photo");
    }

    static PixelRect whole(const ImageInput& photo) {
        return {0, 0, double(photo.size().width), double(photo.size().height)};
    }

    // A generated copy, written as a JPEG and read back like any photo.
    ImageInput written(const photo_fixtures::Picture& picture, const std::string& name) {
        const fs::path file = folder_ / name;
        auto bytes = photo_fixtures::encodeJpeg(picture, {92, false});
        test::writeText(file, std::string(bytes.begin(), bytes.end()));
        return ImageInput::load(file);
    }

    static const DravikResult& best(const Detection& d) {
        return d.refined ? *d.refined : d.primary;
    }

    // The median distance between the joints both results are sure of, after mapping `b`'s into
    // `a`'s photo, and how many were compared. A hidden leg may be guessed anywhere: the median
    // leaves it out.
    static std::pair<double, std::size_t> distance(const DravikResult& a, const DravikResult& b,
                                                   const std::function<Point2(Point2)>& toA) {
        std::vector<double> distances;
        for (std::size_t i = 0; i < a.joints.size() && i < b.joints.size(); ++i) {
            if (a.joints[i].confidence < 0.3 || b.joints[i].confidence < 0.3)
                continue;
            const Point2 p = toA({b.joints[i].x, b.joints[i].y});
            distances.push_back(std::hypot(p.x - a.joints[i].x, p.y - a.joints[i].y));
        }
        if (distances.empty())
            return {INFINITY, 0};
        std::sort(distances.begin(), distances.end());
        return {distances[distances.size() / 2], distances.size()};
    }

    test::TempDir folder_;
    std::unique_ptr<PoseWorker> worker_;
    std::unique_ptr<RiderDetector> detector_;
};

} // namespace

TEST_F(RealPhotos, TheRiderIsChosenNotABystanderAndPeopleWithoutVehiclesAreCounted) {
    std::signal(SIGPIPE, SIG_IGN);
    const Detection event = detect(ImageInput::load(eventPhoto));
    ASSERT_TRUE(event.primary.rider);
    const Candidate& rider = event.primary.candidates.at(*event.primary.rider);
    ASSERT_TRUE(rider.riding) << "the chosen person rides nothing";
    EXPECT_EQ(event.primary.candidates.at(*rider.riding).kind, "bicycle");
    // Several cyclists ride past: nobody is taken for the one rider of the photo.
    EXPECT_GT(event.primary.count, 1);
    EXPECT_EQ(event.primary.status, "severalPeople");
    ASSERT_EQ(best(event).joints.size(), 19u);
    const PixelRect around = {rider.box.x - 40, rider.box.y - 40, rider.box.width + 80,
                              rider.box.height + 80};
    for (const JointResult& joint : best(event).joints) {
        if (joint.confidence >= 0.5) {
            EXPECT_TRUE(around.contains(Point2{joint.x, joint.y})) << joint.name;
        }
    }

    const Detection bridge = detect(ImageInput::load(bridgePhoto));
    for (const Candidate& candidate : bridge.primary.candidates)
        EXPECT_TRUE(candidate.isPerson() && !candidate.riding);
    EXPECT_EQ(bridge.primary.count, std::int64_t(bridge.primary.candidates.size()));
    EXPECT_GT(bridge.primary.count, 1);
    EXPECT_FALSE(bridge.primary.usable());
}

// A leaning rider is turned upright before detecting: copies of the rider's crop turned by up to
// 60° give the joints of the upright copy, mapped back.
TEST_F(RealPhotos, ARiderTurnedUpTo60DegreesKeepsTheJointsOfTheUprightCopy) {
    std::signal(SIGPIPE, SIG_IGN);
    const ImageInput photo = ImageInput::load(eventPhoto);
    const Detection found = detect(photo);
    ASSERT_TRUE(found.primary.rider);
    const PixelRect box = found.primary.candidates.at(*found.primary.rider).box;
    const Image pixels = photo.decoded();
    const double side = 1.6 * std::max(box.width, box.height);
    auto turned = [&](double lean) {
        // Sampling a square tilted by −lean shows its content leaning by lean.
        const SquareRegion region =
            SquareRegion::centred({box.x + box.width / 2, box.y + box.height / 2}, side, -lean);
        const int n = int(side);
        photo_fixtures::Picture copy{n, n, sampleSquare(pixels, whole(photo), region, n)};
        const Detection d = detect(written(copy, "lean" + std::to_string(int(lean)) + ".jpg"));
        auto toPhoto = [=](Point2 p) { return region.toPhoto(p.x / n, p.y / n); };
        return std::pair(d, toPhoto);
    };
    const auto [upright, uprightToPhoto] = turned(0);
    ASSERT_EQ(best(upright).joints.size(), 19u);
    DravikResult reference = best(upright);
    for (JointResult& joint : reference.joints) {
        const Point2 p = uprightToPhoto({joint.x, joint.y});
        joint.x = p.x;
        joint.y = p.y;
    }
    for (double lean : {30.0, -45.0, 60.0}) {
        const auto [leaning, toPhoto] = turned(lean);
        const auto [median, used] = distance(reference, best(leaning), toPhoto);
        EXPECT_LE(median, 8.0) << lean << "°, " << used << " joints compared";
        EXPECT_GE(used, 10u) << lean << "°";
    }
}

// A 300-pixel rider in a 24-megapixel photo is found in the tiles of the photo.
TEST_F(RealPhotos, ASmallRiderInALargePhotoIsFound) {
    std::signal(SIGPIPE, SIG_IGN);
    const ImageInput photo = ImageInput::load(eventPhoto);
    const Detection found = detect(photo);
    ASSERT_TRUE(found.primary.rider);
    const PixelRect box = found.primary.candidates.at(*found.primary.rider).box;
    const PixelRect cut = {box.x - 40, box.y - 40, box.width + 80, box.height + 140};
    const double scale = 300 / box.height;
    const Point2 at{4100, 2300};
    const Image pixels = photo.decoded();
    auto canvas = photo_fixtures::Picture::filled(6000, 4000, [&](int x, int y) {
        const double u = (x - at.x) / scale + cut.x;
        const double v = (y - at.y) / scale + cut.y;
        if (u >= std::max(0.0, cut.x) && v >= std::max(0.0, cut.y) &&
            u < std::min(pixels.width - 1.0, cut.maxX()) &&
            v < std::min(pixels.height - 1.0, cut.maxY())) {
            const std::uint8_t* p =
                pixels.data() + std::size_t(v) * pixels.stride + std::size_t(u) * 3;
            return photo_fixtures::Rgb{p[0], p[1], p[2]};
        }
        const int grey = 90 + (x / 7 + y / 11) % 40; // a dull, textured ground
        return photo_fixtures::Rgb{std::uint8_t(grey), std::uint8_t(grey + 10),
                                   std::uint8_t(grey - 5)};
    });
    const Detection small = detect(written(canvas, "large.jpg"));
    EXPECT_EQ(small.primary.status, "needsReview");
    const auto [median, used] = distance(best(small), best(found), [&](Point2 p) {
        return Point2{(p.x - cut.x) * scale + at.x, (p.y - cut.y) * scale + at.y};
    });
    EXPECT_LE(median, 6.0) << used << " joints compared";
    EXPECT_GE(used, 10u);
}

// The refined pass on a tight crop may move joints, never the verdict of the first pass.
TEST_F(RealPhotos, ATightCropFoundByTheFirstPassKeepsItsRider) {
    std::signal(SIGPIPE, SIG_IGN);
    const ImageInput photo = ImageInput::load(eventPhoto);
    const Detection found = detect(photo);
    ASSERT_TRUE(found.primary.rider);
    const Detection tight = detect(photo, found.primary.candidates.at(*found.primary.rider).box);
    EXPECT_EQ(tight.primary.status, "needsReview");
    ASSERT_TRUE(tight.refined);
    EXPECT_EQ(tight.refined->status, tight.primary.status);
    EXPECT_EQ(tight.refined->count, tight.primary.count);
    EXPECT_EQ(tight.refined->joints.size(), 19u);
}
