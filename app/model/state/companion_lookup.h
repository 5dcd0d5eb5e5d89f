// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pair_report.h"
#include "dravik/review.h"
#include "state/session_state.h"

#include <optional>
#include <string>

namespace tessary {

// What the companion files hold for one photo as the feedback panels show it, for the window's
// active photo and for a printed page alike.

// The photo notes of a rider's photo that has no reference rider; none for any other photo.
const dravik::SinglePhotoCoaching*
singlePhotoCoachingFor(const CompanionFiles& companions, const dravik::ReviewFrame& frame,
                       const std::optional<dravik::ReviewPair>& pair);
// The checklist's subject: the pair's, else the photo's own.
std::string checklistSubjectFor(const std::optional<dravik::ReviewPair>& pair,
                                const std::string& frameID);
// Saved findings made under another turn direction than the pair's report has now (unknown
// without a report).
bool checklistConflicts(const CompanionFiles& companions, const std::string& subject,
                        const dravik::PairReport* report);
// The saved findings shown: none while they conflict.
const dravik::CoachingChecklistReview* checklistShown(const CompanionFiles& companions,
                                                      const std::string& subject,
                                                      const dravik::PairReport* report);

} // namespace tessary
