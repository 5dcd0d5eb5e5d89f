// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/coaching.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The words of the whole-body checklist and of a lone rider's photo notes, for the window's
// panels and the printed report alike.
namespace tessary::texts {

// The checklist's items for a saved review (none: every topic unassessed), and those assessed.
struct ChecklistRows {
    std::vector<dravik::CoachingChecklistItem> items;
    std::vector<dravik::CoachingChecklistItem> assessed;
};
ChecklistRows checklistRows(const dravik::CoachingChecklistReview* saved);

// "Whole-body review · 3 of 12 topics assessed"
std::string checklistHeading(const ChecklistRows& rows);
inline constexpr std::string_view checklistConflict =
    "Saved findings use a different turn direction. Restore the photo direction or reassess this "
    "checklist.";
inline constexpr std::string_view checklistAutomatic =
    "Checklist added automatically. Photo-specific findings await visual review; no fault has "
    "been detected.";
inline constexpr std::string_view allTopicsTitle = "All topics and practice cues";
// "Body position · Looks consistent"
std::string checklistStatusLine(const dravik::CoachingChecklistItem& item);
// "Review cue: …", for a topic that has one.
std::optional<std::string> reviewCueLine(const dravik::CoachingChecklistItem& item);

inline constexpr std::string_view singlePhotoSubtitle =
    "Single-photo assessment \u00b7 no reference rider";
inline constexpr std::string_view singlePhotoNote =
    "Photo-based draft \u00b7 observations and practice cues, not coach-validated findings. No "
    "comparison with another rider is implied.";
inline constexpr std::string_view assessmentBasisTitle = "Assessment basis";
inline constexpr std::string_view noSinglePhotoCoaching =
    "No provisional photo assessment has been added for this image yet.";
inline constexpr std::string_view stillPhotoLimitation =
    "A still photo cannot establish grip pressure, hidden joint positions, braking or "
    "acceleration timing, or a precise body-position target.";
std::string observationLine(const std::string& observation);

} // namespace tessary::texts
