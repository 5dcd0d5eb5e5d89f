// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/analysis.h"

#include <string>

namespace dravik::analysis {

// Whole degrees as shown to riders: 14°.
std::string degreesText(double degrees);

// The bullet for an elbow observation that has both angles and a difference.
CoachingBullet elbowBullet(const PairObservation& observation);

// The bullet for a knee the reviewer placed further out or closer in than the reference rider's;
// none for any other placement.
std::optional<CoachingBullet> kneeBullet(PairFeature knee, KneePlacement placement);

} // namespace dravik::analysis
