// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "dravik/review.h"
#include "lean/lean_pair.h"

#include "json/geometry_codec.h"
#include <algorithm>

namespace dravik::LeanReview {

void validate(const ReviewDocument& document) {
    const std::string file = lean::documentLabel(document);
    auto refuse = [&](const std::string& sentence) { throw DravikError(sentence + "."); };

    for (const auto& [frameID, annotation] : document.leanAnnotations()) {
        const ReviewFrame* frame = document.frame(frameID);
        if (!frame)
            refuse("Lean lines in " + file + " belong to frame " + json::quoted(frameID) +
                   ", which is not in this session");
        if (annotation.frameID != frameID)
            refuse("Lean lines in " + file + " for frame " + json::quoted(annotation.frameID) +
                   " are stored under frame " + json::quoted(frameID));
        annotation.validate(*frame);
    }

    if (document.leanPairContexts().empty())
        return;
    const std::vector<ReviewPair> pairs = PairReview::resolve(document.frames());
    for (const auto& [pairID, context] : document.leanPairContexts()) {
        auto pair = std::find_if(pairs.begin(), pairs.end(),
                                 [&id = pairID](const ReviewPair& p) { return p.id == id; });
        if (pair == pairs.end() || !pair->hasReference())
            refuse("Lean checks in " + file + " belong to pair " + json::quoted(pairID) +
                   ", which has no reference rider photo in this session");
        if (context.pairID != pairID)
            refuse("Lean checks in " + file + " for pair " + json::quoted(context.pairID) +
                   " are stored under pair " + json::quoted(pairID));
        if (context.approvalDigest && !json::isContentHash(*context.approvalDigest))
            refuse("The lean approval of pair " + json::quoted(pairID) + " in " + file +
                   " does not carry a well-formed evidence digest");
    }
}

} // namespace dravik::LeanReview
