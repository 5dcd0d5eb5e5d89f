// SPDX-License-Identifier: Apache-2.0
#include "lean/lean_pair.h"

#include "dravik/error.h"
#include "dravik/store.h"

#include "json/geometry_codec.h"

namespace dravik::lean {

std::string documentLabel(const ReviewDocument& document) {
    if (!json::isContentHash(document.identity()))
        return "the review document";
    return json::quoted(ReviewStore::reviewFileName(document));
}

PairLean pairLean(const ReviewDocument& document, const ReviewPair& pair) {
    if (!pair.hasReference())
        throw DravikError("Pair " + json::quoted(pair.id) + " in " + documentLabel(document) +
                          " has no reference rider photo to compare lean with.");
    auto frame = [&](const std::string& id) -> const ReviewFrame& {
        if (const ReviewFrame* found = document.frame(id))
            return *found;
        throw DravikError("Frame " + json::quoted(id) + " of pair " + json::quoted(pair.id) +
                          " is not in " + documentLabel(document) + ".");
    };
    const ReviewFrame& rider = frame(pair.frameIDs[0]);
    const ReviewFrame& reference = frame(pair.frameIDs[1]);
    return {rider, reference, document.leanAnnotation(rider.id),
            document.leanAnnotation(reference.id)};
}

} // namespace dravik::lean
