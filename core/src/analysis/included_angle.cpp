// SPDX-License-Identifier: Apache-2.0
#include "analysis/included_angle.h"

#include <cmath>
#include <numbers>

namespace dravik::analysis {

std::optional<Point2> usableReviewedPoint(const ReviewFrame& frame, std::string_view joint) {
    auto it = frame.edits.find(std::string(joint));
    if (it == frame.edits.end())
        return std::nullopt;
    const JointEdit& edit = it->second;
    bool trusted = edit.state == JointReviewState::corrected ||
                   edit.state == JointReviewState::confirmedVisible;
    return trusted ? edit.point : std::nullopt;
}

double includedAngle(const Point2& a, const Point2& vertex, const Point2& b) {
    double ux = a.x - vertex.x, uy = a.y - vertex.y;
    double vx = b.x - vertex.x, vy = b.y - vertex.y;
    // atan2 of the cross and dot products stays accurate near 0° and 180°, where acos does not.
    double cross = ux * vy - uy * vx;
    double dot = ux * vx + uy * vy;
    return std::atan2(std::abs(cross), dot) * 180.0 / std::numbers::pi;
}

AngleSide measureIncludedAngle(const ReviewFrame& frame, const std::vector<std::string>& chain,
                               double minimumSegmentPixels) {
    AngleSide side;
    std::vector<Point2> points;
    for (const std::string& joint : chain) {
        if (auto point = usableReviewedPoint(frame, joint))
            points.push_back(*point);
        else
            side.missingJoints.push_back(joint);
    }
    if (!side.missingJoints.empty() || points.size() != 3)
        return side;
    auto length = [](const Point2& p, const Point2& q) { return std::hypot(p.x - q.x, p.y - q.y); };
    // Written so that a non-finite coordinate also counts as degenerate.
    if (!(length(points[0], points[1]) >= minimumSegmentPixels) ||
        !(length(points[2], points[1]) >= minimumSegmentPixels)) {
        side.degenerate = true;
        return side;
    }
    side.angle = includedAngle(points[0], points[1], points[2]);
    return side;
}

} // namespace dravik::analysis
