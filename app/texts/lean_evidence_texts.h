// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/lean_report.h"
#include "dravik/review.h"

#include <string>
#include <string_view>

// The words of the wheel-lean evidence, for the window's panel and the printed report alike.
namespace tessary::texts {

inline constexpr std::string_view leanEvidenceHeading = "Wheel lean evidence";
inline constexpr std::string_view previewPending = "Preview pending \u00b7 release to save";

// One rider's measured angle with its sensitivity, or why there is none.
std::string leanMeasurementLine(const dravik::ReviewFrame& frame,
                                const dravik::LeanFrameEvidence* shown);
// "Rider − Reference rider: +3° [−1°, +7°] annotation sensitivity"
std::string leanComparisonLine(const dravik::LeanReport& report);

inline constexpr std::string_view similarSpeedReadout =
    "Similar speed: user reported. Discuss the observation with separately reviewed posture and "
    "turn context.";
inline constexpr std::string_view comparisonEvidenceHeading = "Review comparison evidence";

// The five comparability checks, in the order the reviewer works through them.
struct LeanCheck {
    std::string_view title;
    bool dravik::LeanPairContext::*flag;
};
inline constexpr LeanCheck leanChecks[] = {
    {"Same wheel cue", &dravik::LeanPairContext::sameWheelCue},
    {"Camera views comparable", &dravik::LeanPairContext::cameraViewsComparable},
    {"Wheel headings comparable", &dravik::LeanPairContext::wheelHeadingsComparable},
    {"Reference basis / correspondence comparable", &dravik::LeanPairContext::referenceComparable},
    {"Camera roll comparable (image vertical)", &dravik::LeanPairContext::cameraRollComparable},
};

inline constexpr std::string_view approveComparison = "Approve this comparison";
// Whether the comparison is approved, and for which evidence; why not, when a stored approval no
// longer names the evidence shown.
std::string approvalLine(const dravik::LeanReport& report, const dravik::LeanPairContext& context);
inline constexpr std::string_view similarSpeedTitle = "Similar speed \u2014 user reported";
inline constexpr std::string_view similarSpeedCaption =
    "Similar speed does not establish matched radius, turn phase, banking, or a body-position "
    "explanation.";

} // namespace tessary::texts
