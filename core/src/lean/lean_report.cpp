// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "dravik/pairs.h"
#include "dravik/review.h"
#include "lean/lean_pair.h"

namespace dravik {

namespace {

using Gap = LeanComparisonGap;

// The first reason, rider first, that compare() finds no comparison.
Gap gapOf(const lean::PairLean& lean) {
    const std::pair<const char*, const LeanAnnotation*> sides[] = {
        {"Rider", lean.riderLines}, {"Reference rider", lean.referenceLines}};
    for (const auto& [side, lines] : sides) {
        const std::string photo = std::string("The ") + side + "\u2019s photo";
        if (!lines)
            return {Gap::Kind::missingLine, photo + " has no saved lean lines yet."};
        if (!lines->wheel)
            return {Gap::Kind::missingLine, photo + " has no wheel axis."};
        if (!lines->reference)
            return {Gap::Kind::missingLine, photo + " has no reference line."};
    }
    for (const auto& [side, lines] : sides)
        if (!LeanAnalysis::measure(*lines))
            return {Gap::Kind::unmeasurable,
                    std::string("The ") + side + "\u2019s lines cannot be measured: " +
                        (lines->wheelNotObservable ? "the wheel is marked not observable."
                                                   : "a line is too short.")};
    if (lean.riderLines->basis != lean.referenceLines->basis)
        return {Gap::Kind::differentBases, "The two photos use different reference bases."};
    return {Gap::Kind::differentFeatures, "The shared feature is not named alike in both photos."};
}

} // namespace

const LeanFrameEvidence* LeanReport::frame(const std::string& frameID) const {
    auto found = frames.find(frameID);
    return found == frames.end() ? nullptr : &found->second;
}

namespace LeanAnalysis {

LeanReport report(const ReviewDocument& document, const std::optional<ReviewPair>& pair,
                  const std::map<std::string, LeanAnnotation>& proposals) {
    LeanReport result;
    for (const ReviewFrame& frame : document.frames()) {
        std::optional<LeanAnnotation> shown;
        if (const LeanAnnotation* saved = document.leanAnnotation(frame.id))
            shown = *saved;
        else if (auto proposal = proposals.find(frame.id); proposal != proposals.end())
            shown = proposal->second;
        if (!shown)
            continue;
        auto measurement = measure(*shown);
        result.frames.emplace(frame.id, LeanFrameEvidence{std::move(shown), measurement});
    }
    if (!pair || !pair->hasReference())
        return result;
    result.comparable = true;
    try {
        result.comparison = compare(document, *pair);
        if (!result.comparison)
            result.gap = gapOf(lean::pairLean(document, *pair));
        result.evidenceDigest = evidenceDigest(document, *pair);
    } catch (const std::exception& failure) {
        result.gap = Gap{Gap::Kind::refused, failure.what()};
        return result;
    }
    const LeanPairContext* context = document.leanPairContext(pair->id);
    result.approved = context && context->approvalDigest == result.evidenceDigest;
    return result;
}

} // namespace LeanAnalysis

} // namespace dravik
