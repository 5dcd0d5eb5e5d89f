// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "lean/lean_pair.h"

namespace dravik::LeanAnalysis {

std::optional<LeanComparison> compare(const ReviewDocument& document, const ReviewPair& pair) {
    const lean::PairLean lean = lean::pairLean(document, pair);
    if (!lean.riderLines || !lean.referenceLines)
        return std::nullopt;
    auto rider = measure(*lean.riderLines);
    auto reference = measure(*lean.referenceLines);
    if (!rider || !reference || rider->basis != reference->basis)
        return std::nullopt;
    // Two photos share a basis only when the reviewer named the same feature in both.
    if (rider->basis == LeanBasis::sharedFeature &&
        (rider->featureID.empty() || rider->featureID != reference->featureID))
        return std::nullopt;
    return LeanComparison{rider->angle - reference->angle,
                          rider->sensitivity + reference->sensitivity, *rider, *reference};
}

} // namespace dravik::LeanAnalysis
