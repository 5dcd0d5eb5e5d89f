// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "rider_choice.h"

#include <optional>
#include <vector>

namespace dravik::batch {

// How far the torso leans as seen, from the hips' midpoint to the shoulders' midpoint: degrees
// from the photo's vertical, positive when the shoulders lean to the right. None unless both
// shoulders and both hips are confident.
std::optional<double> torsoLean(const std::vector<BodyPoint>& keypoints);

// How far a wheel axis leans from the photo's vertical, measured the same way.
double wheelLean(const WheelAxis& wheel);

// The tilts to try, upright first: with a lean estimate, the estimate alone (upright when it is
// small); without one, upright and ±30°, ±60°.
std::vector<double> tiltsToTry(std::optional<double> lean);

// Which try to keep, given the mean keypoint score of each (upright first): upright unless a
// tilted try beats its score by guessedMargin, then the best of those. The margin was tuned on
// turned copies of people in the shared photos (docs/batch.md).
std::size_t bestTry(const std::vector<double>& scores);

inline constexpr double guessedMargin = 0.06;

} // namespace dravik::batch
