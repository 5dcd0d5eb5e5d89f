// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pair_report.h"
#include "revision_texts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The words of the pair feedback, composed once for the window's panels and the printed report,
// so that neither says more, or otherwise, than the other.
namespace tessary::texts {

inline constexpr std::string_view provisionalCoaching = "Provisional coaching";
inline constexpr std::string_view awaitingEdit = "Awaiting completion of edit";
// "For Rider · Reference rider assumed correct"
std::string assumptionLine();

// Coaching.
std::string bulletHeadline(const dravik::CoachingBullet& bullet);
// Shown in place of the bullets when there are none.
std::optional<std::string> coachingStatus(const dravik::PairReport& report);
std::string_view methodNote(const dravik::PairReport& report);

// Comparison details.
std::string comparisonDetailsTitle(const dravik::PairReport& report);
inline constexpr std::string_view comparisonExplanation =
    "Rider and Reference rider come from the session\u2019s saved role assignments. Turn "
    "direction uses your saved selection, or the photo assessment when available.";
inline constexpr std::string_view directionOverrideTitle = "Direction override";
// The override's choices: none (the photo assessment), then the two turn directions.
struct DirectionChoice {
    std::optional<dravik::CornerDirection> direction;
    std::string_view title;
};
inline constexpr DirectionChoice directionChoices[] = {{std::nullopt, "Use photo assessment"},
                                                       {dravik::CornerDirection::left, "Left"},
                                                       {dravik::CornerDirection::right, "Right"}};
// The choice the pair's context holds.
std::size_t directionChoice(const dravik::PairReport& report);
inline constexpr std::string_view withheldNotice =
    "Photo coaching is withheld because your direction override differs from the reviewed "
    "photos.";
bool withholdsPhotoCoaching(const dravik::PairReport& report);
std::string focusPointLine(const dravik::FocusPoint& point);

// Knee placement.
inline constexpr dravik::PairFeature knees[] = {dravik::PairFeature::insideKnee,
                                                dravik::PairFeature::outsideKnee};
inline constexpr std::string_view kneeHeading = "Knee placement \u00b7 visual review";
inline constexpr std::string_view kneeInstruction =
    "Compare Rider with Reference rider at a similar cornering moment. Choose a difference only "
    "when the thigh, knee and tank are visible in both views and perspective allows comparison. "
    "Consider pelvis and foot placement together; otherwise choose Cannot compare.";
inline constexpr std::string_view kneeNote = "Knees marked obscured are excluded from coaching.";
// Asked for unless the pair has both a known turn direction and photo coaching.
bool asksForKneePlacement(const dravik::PairReport& report);
std::string kneeLabel(const dravik::PairReport& report, dravik::PairFeature knee);
std::optional<dravik::KneePlacement> kneePlacement(const dravik::PairReport& report,
                                                   dravik::PairFeature knee);

// 2D included angles.
inline constexpr std::string_view anglesHeading =
    "2D included angles \u00b7 measurements and evidence";
inline constexpr std::string_view viewsTitle = "Views";
std::string differenceLine(const std::optional<double>& difference);
// "Rider: 90°", and why the angle is missing when it is.
std::string sideAngleLine(std::string_view side, const dravik::AngleSide& angle);
std::optional<std::string> sideGapLine(std::string_view side, const dravik::AngleSide& angle);
std::string evidenceLine(const dravik::PairReport& report);

} // namespace tessary::texts
