// SPDX-License-Identifier: Apache-2.0
#include "coaching_texts.h"

namespace tessary::texts {

ChecklistRows checklistRows(const dravik::CoachingChecklistReview* saved) {
    ChecklistRows rows;
    rows.items = dravik::CoachingChecklist::rows(
        saved ? std::optional(*saved) : std::optional<dravik::CoachingChecklistReview>());
    for (const dravik::CoachingChecklistItem& item : rows.items)
        if (item.status != dravik::allCoachingReviewStatuses[0])
            rows.assessed.push_back(item);
    return rows;
}

std::string checklistHeading(const ChecklistRows& rows) {
    return "Whole-body review \u00b7 " + std::to_string(rows.assessed.size()) + " of " +
           std::to_string(rows.items.size()) + " topics assessed";
}

std::string checklistStatusLine(const dravik::CoachingChecklistItem& item) {
    return item.topic.title + " \u00b7 " + std::string(dravik::label(item.status));
}

std::optional<std::string> reviewCueLine(const dravik::CoachingChecklistItem& item) {
    if (item.topic.cue.empty())
        return std::nullopt;
    return "Review cue: " + item.topic.cue;
}

std::string observationLine(const std::string& observation) {
    return "\u2022 " + observation;
}

} // namespace tessary::texts
