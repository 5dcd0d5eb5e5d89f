// SPDX-License-Identifier: Apache-2.0
#include "state/companion_lookup.h"

namespace tessary {

const dravik::SinglePhotoCoaching*
singlePhotoCoachingFor(const CompanionFiles& companions, const dravik::ReviewFrame& frame,
                       const std::optional<dravik::ReviewPair>& pair) {
    if (frame.role != "subject" || (pair && pair->hasReference()))
        return nullptr;
    auto found = companions.singlePhotoCoaching.find(frame.id);
    return found == companions.singlePhotoCoaching.end() ? nullptr : &found->second;
}

std::string checklistSubjectFor(const std::optional<dravik::ReviewPair>& pair,
                                const std::string& frameID) {
    return pair ? dravik::CoachingChecklist::subjectID(*pair) : frameID;
}

bool checklistConflicts(const CompanionFiles& companions, const std::string& subject,
                        const dravik::PairReport* report) {
    auto found = companions.coachingChecklists.find(subject);
    if (found == companions.coachingChecklists.end())
        return false;
    const auto direction =
        report ? report->effectiveCornerDirection : dravik::CornerDirection::unknown;
    return found->second.cornerDirection != direction;
}

const dravik::CoachingChecklistReview* checklistShown(const CompanionFiles& companions,
                                                      const std::string& subject,
                                                      const dravik::PairReport* report) {
    if (checklistConflicts(companions, subject, report))
        return nullptr;
    auto found = companions.coachingChecklists.find(subject);
    return found == companions.coachingChecklists.end() ? nullptr : &found->second;
}

} // namespace tessary
