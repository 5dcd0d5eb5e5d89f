// SPDX-License-Identifier: Apache-2.0
#include "pose_result.h"

#include "dravik/joints.h"

#include <algorithm>

namespace dravik::batch {

namespace {

constexpr double bodyMargin = 0.2; // of the body's longer side, on every side
constexpr int framingJoints = 4;

enum Coco { leftShoulder = 5, rightShoulder = 6, leftHip = 11, rightHip = 12 };

JointResult midpoint(const std::string& name, const JointResult& a, const JointResult& b) {
    return {name, (a.x + b.x) / 2, (a.y + b.y) / 2, std::min(a.confidence, b.confidence)};
}

} // namespace

std::vector<BodyPoint> inPhoto(const SquarePose& pose, const SquareRegion& region) {
    std::vector<BodyPoint> points;
    for (const SquarePoint& k : pose)
        points.push_back({region.toPhoto(k.x, k.y), k.score});
    return points;
}

double meanScore(const SquarePose& pose) {
    double sum = 0;
    for (const SquarePoint& k : pose)
        sum += k.score;
    return sum / double(pose.size());
}

std::vector<JointResult> reviewJoints(const std::vector<BodyPoint>& keypoints) {
    const auto& names = InspectionRenderer::jointNames();
    std::vector<JointResult> joints;
    for (std::size_t i = 0; i < keypoints.size(); ++i)
        joints.push_back({names.at(i), keypoints[i].at.x, keypoints[i].at.y, keypoints[i].score});
    joints.push_back(midpoint(names.at(17), joints.at(leftShoulder), joints.at(rightShoulder)));
    joints.push_back(midpoint(names.at(18), joints.at(leftHip), joints.at(rightHip)));
    return joints;
}

std::string statusFor(std::int64_t count) {
    if (count == 1)
        return "needsReview";
    return count == 0 ? "noRider" : "severalPeople";
}

std::optional<SquareRegion> refinedSquare(const SquarePose& pose, const SquareRegion& region) {
    double left = 1e9, top = 1e9, right = -1e9, bottom = -1e9;
    int seen = 0;
    for (const SquarePoint& k : pose) {
        if (k.score < confidentScore)
            continue;
        ++seen;
        left = std::min(left, double(k.x));
        right = std::max(right, double(k.x));
        top = std::min(top, double(k.y));
        bottom = std::max(bottom, double(k.y));
    }
    const double longer = std::max(right - left, bottom - top);
    if (seen < framingJoints || longer <= 0)
        return std::nullopt;
    const Point2 centre = region.toPhoto((left + right) / 2, (top + bottom) / 2);
    return SquareRegion::centred(centre, region.side * longer * (1 + 2 * bodyMargin), region.tilt);
}

std::vector<BodyPoint> mostConfident(const std::vector<BodyPoint>& first,
                                     const std::vector<BodyPoint>& second) {
    std::vector<BodyPoint> best = first;
    for (std::size_t i = 0; i < best.size() && i < second.size(); ++i)
        if (second[i].score > best[i].score)
            best[i] = second[i];
    return best;
}

} // namespace dravik::batch
