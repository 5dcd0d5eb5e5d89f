// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "arrangement/arrangement_plan.h"
#include "dravik/detection.h"
#include "dravik/review.h"
#include "dravik/session_arrangement.h"

namespace dravik::arrangement {

// The results of the session's photos under their arranged ids: one entry per photo of the
// arranged manifest, in its order, each rider's detections unchanged (none when it had none).
ResultsFile reKeyResults(const ResultsFile& results, const ArrangementPlan& plan);

// `saved` carried over to `arranged` (the unreviewed document of the arranged session): joint
// edits, accepted retries and lean lines follow their photos; statements about pairs that are
// not kept are dropped and counted in `effect`. Its revision is one above the saved one.
ReviewDocument migrateReview(const ReviewDocument& saved, const ReviewDocument& arranged,
                             const ArrangementPlan& plan, ArrangementEffect& effect);

} // namespace dravik::arrangement
