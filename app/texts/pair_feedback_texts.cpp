// SPDX-License-Identifier: Apache-2.0
#include "pair_feedback_texts.h"

#include "rider_labels.h"
#include "text_numbers.h"

#include <iterator>

namespace tessary::texts {

namespace {

using namespace std::string_literals;

bool directionKnown(const dravik::PairReport& report) {
    return report.effectiveCornerDirection != dravik::allCornerDirections[0];
}

// "Rider − Reference rider"
std::string riderMinusReference() {
    return RiderLabels::rider + " \u2212 "s + RiderLabels::reference;
}

} // namespace

std::string assumptionLine() {
    return "For "s + RiderLabels::rider + " \u00b7 " + RiderLabels::reference + " assumed correct";
}

std::string bulletHeadline(const dravik::CoachingBullet& bullet) {
    return "\u2022 " + bullet.headline;
}

std::optional<std::string> coachingStatus(const dravik::PairReport& report) {
    if (!report.coaching.empty())
        return std::nullopt;
    return directionKnown(report)
               ? "No actionable difference from the available reviews. Elbows need comparable, "
                 "reviewed angles; add a knee placement review below for knee guidance."
               : "This pair has no turn assessment yet. Set a direction under Comparison "
                 "details, or add a photo review.";
}

std::string_view methodNote(const dravik::PairReport& report) {
    return report.hasPhotoCoaching
               ? "Photo-based coaching draft \u00b7 whole-body comparison. These notes come from "
                 "reviewing this pair, not from the skeleton or an angle threshold."
               : "Draft guidance \u00b7 elbow differences of 10\u00b0 or more get attention; "
                 "this is an adjustable heuristic, not a validated target. Knee guidance uses "
                 "visual placement only.";
}

std::string comparisonDetailsTitle(const dravik::PairReport& report) {
    return "Comparison details \u00b7 " +
           std::string(dravik::rawValue(report.effectiveCornerDirection)) + " turn";
}

std::size_t directionChoice(const dravik::PairReport& report) {
    for (std::size_t row = 0; row < std::size(directionChoices); ++row)
        if (directionChoices[row].direction == report.context.directionOverride)
            return row;
    return 0;
}

bool withholdsPhotoCoaching(const dravik::PairReport& report) {
    return report.context.directionOverride.has_value() && !report.hasPhotoCoaching;
}

std::string focusPointLine(const dravik::FocusPoint& point) {
    return std::string(dravik::label(point.feature)) + ": " + whole(point.difference) + "\u00b0 " +
           riderMinusReference();
}

bool asksForKneePlacement(const dravik::PairReport& report) {
    return !(directionKnown(report) && report.hasPhotoCoaching);
}

std::string kneeLabel(const dravik::PairReport& report, dravik::PairFeature knee) {
    return dravik::role(knee, report.effectiveCornerDirection).value_or(std::string()) + " knee";
}

std::optional<dravik::KneePlacement> kneePlacement(const dravik::PairReport& report,
                                                   dravik::PairFeature knee) {
    const auto& stored = report.context.kneePlacements;
    if (!stored)
        return std::nullopt;
    const auto found = stored->find(knee);
    return found == stored->end() ? std::nullopt : std::optional(found->second);
}

std::string differenceLine(const std::optional<double>& difference) {
    if (!difference)
        return "Unavailable";
    return "Visible difference: " + signedWhole(*difference) + "\u00b0 " + riderMinusReference() +
           "; this is not a target or fault.";
}

std::string sideAngleLine(std::string_view side, const dravik::AngleSide& angle) {
    return std::string(side) + ": " +
           (angle.angle ? whole(*angle.angle) + "\u00b0" : "unavailable");
}

std::optional<std::string> sideGapLine(std::string_view side, const dravik::AngleSide& angle) {
    if (!angle.missingJoints.empty()) {
        std::string joints;
        for (const std::string& joint : angle.missingJoints)
            joints += (joints.empty() ? "" : ", ") + joint;
        return std::string(side) + " needs visible review: " + joints;
    }
    if (angle.degenerate)
        return std::string(side) + ": degenerate geometry; angle unavailable.";
    return std::nullopt;
}

std::string evidenceLine(const dravik::PairReport& report) {
    return "Evidence " + report.shortDigest() + " \u00b7 analyzer " + report.analyzerVersion +
           " \u00b7 rules " + report.ruleCatalogVersion;
}

} // namespace tessary::texts
