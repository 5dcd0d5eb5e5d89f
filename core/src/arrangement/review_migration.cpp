// SPDX-License-Identifier: Apache-2.0
#include "arrangement/review_migration.h"

#include "document/review_parts.h"
#include "dravik/error.h"
#include "dravik/store.h"

#include <limits>
#include <utility>

namespace dravik::arrangement {

ResultsFile reKeyResults(const ResultsFile& results, const ArrangementPlan& plan) {
    std::map<std::string, const RiderResults*> byFrame; // by the arranged frame id
    for (const RiderResults& entry : results.riders)
        if (auto id = plan.frameIDs.find(entry.pairID + "/" + entry.riderID);
            id != plan.frameIDs.end())
            byFrame.emplace(id->second, &entry);
    ResultsFile arranged = results;
    arranged.riders.clear();
    // Every photo gets an entry, so that the results differ whenever the frames do: the
    // review's identity, the results' hash, must change with them.
    for (const PairInput& pair : plan.manifest.pairs)
        for (const RiderInput& rider : pair.riders) {
            auto found = byFrame.find(pair.id + "/" + rider.id);
            RiderResults entry;
            if (found != byFrame.end())
                entry = *found->second;
            else
                entry.sourceHash = rider.sourceHash;
            entry.pairID = pair.id;
            entry.riderID = rider.id;
            arranged.riders.push_back(std::move(entry));
        }
    return arranged;
}

ReviewDocument migrateReview(const ReviewDocument& saved, const ReviewDocument& arranged,
                             const ArrangementPlan& plan, ArrangementEffect& effect) {
    ReviewParts parts = ReviewParts::of(arranged);
    for (const ReviewFrame& before : saved.frames()) {
        const std::string& id = plan.frameIDs.at(before.id);
        ReviewFrame& after = parts.frames[*arranged.frameIndex(id)];
        if (after.sourceHash != before.sourceHash || after.file != before.file)
            throw DravikError("The review of the photo “" + before.file +
                              "” could not be carried over to its new pair.");
        after.edits = before.edits;
        after.retries = before.retries;
    }
    for (auto [frameID, annotation] : saved.leanAnnotations()) {
        annotation.frameID = plan.frameIDs.at(frameID);
        parts.leanAnnotations.emplace(annotation.frameID, annotation);
    }
    for (const auto& [pairID, context] : saved.pairContexts()) {
        if (plan.keptPairs.contains(pairID))
            parts.pairContexts.emplace(pairID, context);
        else
            ++effect.pairContexts;
    }
    for (const auto& [pairID, context] : saved.leanPairContexts()) {
        if (plan.keptPairs.contains(pairID))
            parts.leanPairContexts.emplace(pairID, context);
        else
            ++effect.leanPairContexts;
    }
    if (saved.revision() == std::numeric_limits<std::int64_t>::max())
        throw DravikError("The review has reached its highest revision number.");
    ReviewDocument migrated = parts.assemble(saved.revision() + 1);
    ReviewStore::validate(migrated, arranged);
    return migrated;
}

} // namespace dravik::arrangement
