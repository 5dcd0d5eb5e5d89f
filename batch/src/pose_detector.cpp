#include "pose_detector.h"

#include "dravik/error.h"
#include "dravik/joints.h"

#include <algorithm>
#include <cmath>

namespace dravik::batch {

namespace {

constexpr double presentMeanScore = 0.4;
constexpr double bodyMargin = 0.2; // of the body's longer side, on every side
constexpr int framingJoints = 4;

enum Coco { leftShoulder = 5, rightShoulder = 6, leftHip = 11, rightHip = 12 };

JointResult midpoint(const std::string& name, const JointResult& a, const JointResult& b) {
    return {name, (a.x + b.x) / 2, (a.y + b.y) / 2, std::min(a.confidence, b.confidence)};
}

std::string statusFor(std::int64_t count) {
    if (count == 1)
        return "needsReview";
    return count == 0 ? "noRider" : "severalPeople";
}

} // namespace

DravikResult resultFromAnswer(const WorkerAnswer& answer, const SquareRegion& region,
                              std::int64_t count) {
    const auto& names = InspectionRenderer::jointNames();
    DravikResult result{"2D", statusFor(count), count, {}};
    for (std::size_t i = 0; i < answer.keypoints.size(); ++i) {
        const auto& k = answer.keypoints[i];
        Point2 p = region.toPhoto(k.x, k.y);
        result.joints.push_back({names.at(i), p.x, p.y, k.score});
    }
    const auto& j = result.joints;
    result.joints.push_back(midpoint(names.at(17), j[leftShoulder], j[rightShoulder]));
    result.joints.push_back(midpoint(names.at(18), j[leftHip], j[rightHip]));
    return result;
}

std::int64_t riderCount(const WorkerAnswer& answer) {
    if (answer.people != 0 || answer.keypoints.empty())
        return std::max(answer.people, 0);
    double sum = 0;
    for (const auto& k : answer.keypoints)
        sum += k.score;
    return sum / double(answer.keypoints.size()) >= presentMeanScore ? 1 : 0;
}

std::optional<PixelRect> refinedCrop(const DravikResult& first, ImageSize photo) {
    double left = INFINITY, top = INFINITY, right = -INFINITY, bottom = -INFINITY;
    int seen = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(17, first.joints.size()); ++i) {
        const JointResult& j = first.joints[i];
        if (j.confidence < confidentScore)
            continue;
        ++seen;
        left = std::min(left, j.x);
        right = std::max(right, j.x);
        top = std::min(top, j.y);
        bottom = std::max(bottom, j.y);
    }
    if (seen < framingJoints)
        return std::nullopt;
    double margin = bodyMargin * std::max(right - left, bottom - top);
    left = std::max(0.0, left - margin);
    top = std::max(0.0, top - margin);
    right = std::min(double(photo.width), right + margin);
    bottom = std::min(double(photo.height), bottom + margin);
    if (right - left < 1 || bottom - top < 1)
        return std::nullopt;
    return PixelRect{left, top, right - left, bottom - top};
}

DravikResult PoseDetector::detect(const ImageInput& photo, const PixelRect& crop,
                                  const std::string& label) {
    SquareRegion region = SquareRegion::around(crop);
    PixelRect visible = visiblePart(region, photo.size());
    if (!(crop.width > 0 && crop.height > 0) || visible.width <= 0)
        throw DravikError("The rider crop of " + label + " lies outside the photo.");
    Image pixels = photo.cropped(visible);
    auto rgb = sampleSquare(pixels, visible, region, PoseWorker::side);
    WorkerAnswer answer = worker_.detect(rgb, true);
    return resultFromAnswer(answer, region, riderCount(answer));
}

PoseDetector::TwoPasses PoseDetector::detectTwice(const ImageInput& photo, const PixelRect& crop,
                                                  const std::string& label) {
    TwoPasses passes{detect(photo, crop, label), std::nullopt, std::nullopt};
    passes.refinedCrop = refinedCrop(passes.primary, photo.size());
    if (passes.refinedCrop)
        passes.refined = detect(photo, *passes.refinedCrop, label);
    return passes;
}

} // namespace dravik::batch
