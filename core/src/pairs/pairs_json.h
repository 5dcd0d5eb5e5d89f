// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pairs.h"

#include "json/json_reader.h"

namespace dravik {

// The reviewer's context of one pair, as kept in the review document:
// {"pairID", "directionOverride"?, "kneePlacements"?, "viewComparability"}.
json::Json toJson(const PairContext& context);
PairContext pairContextFromJson(const json::Node& node);

// One coaching bullet: {"id", "headline", "detail", "feature"?}.
json::Json toJson(const CoachingBullet& bullet);
CoachingBullet coachingBulletFromJson(const json::Node& node);

// The manifest's photo review of a pair: {"direction"?, "coaching": [bullet, ...]}; bullet ids
// are unique within it.
json::Json toJson(const PairPhotoAssessment& assessment);
PairPhotoAssessment pairPhotoAssessmentFromJson(const json::Node& node);

} // namespace dravik
