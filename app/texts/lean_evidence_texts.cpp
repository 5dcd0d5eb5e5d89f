// SPDX-License-Identifier: Apache-2.0
#include "lean_evidence_texts.h"

#include "dravik/digest_text.h"
#include "rider_labels.h"
#include "text_numbers.h"

namespace tessary::texts {

using namespace std::string_literals;

std::string leanMeasurementLine(const dravik::ReviewFrame& frame,
                                const dravik::LeanFrameEvidence* shown) {
    const auto& measured = shown ? shown->measurement : std::nullopt;
    if (!measured)
        return frame.riderDisplayName + ": wheel angle unavailable; place or review the lines.";
    return frame.riderDisplayName + ": " + whole(measured->angle) + "\u00b0 \u00b7 " +
           std::string(measured->wording()) + " \u00b7 " +
           std::string(dravik::label(measured->basis)) + " \u00b7 " +
           (measured->reviewed ? "Reviewed" : "Draft") + " \u00b7 Annotation sensitivity " +
           whole(measured->low()) + "\u00b0 to " + whole(measured->high()) + "\u00b0";
}

std::string leanComparisonLine(const dravik::LeanReport& report) {
    if (!report.comparison)
        return report.gap ? "Comparison unavailable. " + report.gap->explanation
                          : "Comparison unavailable.";
    const dravik::LeanComparison& comparison = *report.comparison;
    return RiderLabels::rider + " \u2212 "s + RiderLabels::reference + ": " +
           signedWhole(comparison.difference) + "\u00b0 [" + signedWhole(comparison.low()) +
           "\u00b0, " + signedWhole(comparison.high()) + "\u00b0] annotation sensitivity";
}

std::string approvalLine(const dravik::LeanReport& report, const dravik::LeanPairContext& context) {
    if (report.approved && report.evidenceDigest)
        return "Approved \u00b7 evidence " + dravik::shortDigest(*report.evidenceDigest);
    if (context.approvalDigest)
        return "Not approved \u00b7 the evidence or checks changed since the approval";
    return "Not approved";
}

} // namespace tessary::texts
