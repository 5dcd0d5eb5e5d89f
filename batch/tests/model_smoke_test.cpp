#include "pose_detector.h"
#include "worker_location.h"

#include <csignal>
#include <gtest/gtest.h>
#include <iostream>

using namespace dravik;
using namespace dravik::batch;
namespace fs = std::filesystem;

// The real models on real photos: the joints must at least be plausible.
TEST(ModelSmoke, FindsAnUprightBodyInsideEachSharedPhoto) {
    fs::path photos = TESSARY_PHOTOS_DIR;
    if (!fs::is_directory(photos))
        GTEST_SKIP() << "no shared photos at " << photos;
    WorkerSetup setup;
    try {
        setup = installedWorker(TESSARY_LIBEXEC_DIR);
    } catch (const std::exception& error) {
        GTEST_SKIP() << "the pose worker is not installed: " << error.what();
    }
    std::signal(SIGPIPE, SIG_IGN);
    PoseWorker worker(setup);
    PoseDetector detector(worker);
    int seen = 0;
    for (const auto& entry : fs::directory_iterator(photos)) {
        if (entry.path().extension() != ".jpg")
            continue;
        const std::string name = entry.path().filename().string();
        ImageInput photo = ImageInput::load(entry.path());
        PixelRect whole{0, 0, double(photo.size().width), double(photo.size().height)};
        auto passes = detector.detectTwice(photo, whole, name);
        const DravikResult& best = passes.refined ? *passes.refined : passes.primary;
        ASSERT_EQ(best.joints.size(), 19u);
        for (const JointResult& joint : best.joints)
            EXPECT_TRUE(whole.contains(Point2{joint.x, joint.y})) << name << " " << joint.name;
        auto neck = best.point("neck");
        auto pelvis = best.point("pelvis");
        EXPECT_LT(neck->y, pelvis->y) << name;
        std::cout << name << ": people " << passes.primary.count << ", neck (" << neck->x << ", "
                  << neck->y << "), pelvis (" << pelvis->x << ", " << pelvis->y << ")\n";
        ++seen;
    }
    EXPECT_GT(seen, 0);
}
