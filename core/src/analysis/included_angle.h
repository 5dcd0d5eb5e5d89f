// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/analysis.h"
#include "dravik/geometry.h"
#include "dravik/review.h"

#include <optional>
#include <string>
#include <string_view>

namespace dravik::analysis {

// The reviewer's point of a joint that was corrected or confirmed visible. Obscured joints have no
// point, and a point marked uncertain is the reviewer saying it should not be relied on.
std::optional<Point2> usableReviewedPoint(const ReviewFrame& frame, std::string_view joint);

// The angle at `vertex` between the segments to `a` and `b`, in degrees from 0 to 180.
double includedAngle(const Point2& a, const Point2& vertex, const Point2& b);

// The included angle at the middle joint of `chain` (shoulder, elbow, wrist) from reviewed points.
AngleSide measureIncludedAngle(const ReviewFrame& frame, const std::vector<std::string>& chain,
                               double minimumSegmentPixels);

} // namespace dravik::analysis
