// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "pose_worker.h"
#include "rider_choice.h"
#include "square_region.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dravik::batch {

// Keypoints this confident count when framing the body or guessing that a rider is present.
inline constexpr double confidentScore = 0.25;

// A pose found in `region`, in photo pixels.
std::vector<BodyPoint> inPhoto(const SquarePose& pose, const SquareRegion& region);

double meanScore(const SquarePose& pose);

// The 19 review joints from the 17 COCO keypoints: neck and pelvis are the midpoints of the
// shoulders and of the hips, each with the smaller of the two confidences.
std::vector<JointResult> reviewJoints(const std::vector<BodyPoint>& keypoints);

// "needsReview" for exactly one rider, "noRider" for none, "severalPeople" otherwise.
std::string statusFor(std::int64_t count);

// A tighter square, at the same tilt, around the confident keypoints of a pose found in `region`;
// none when fewer than four were seen.
std::optional<SquareRegion> refinedSquare(const SquarePose& pose, const SquareRegion& region);

// Each keypoint from whichever of two passes is more confident about it.
std::vector<BodyPoint> mostConfident(const std::vector<BodyPoint>& first,
                                     const std::vector<BodyPoint>& second);

} // namespace dravik::batch
