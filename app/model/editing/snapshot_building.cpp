// SPDX-License-Identifier: Apache-2.0
#include "editing/snapshot_building.h"

#include "dravik/analysis.h"
#include "dravik/lean_analysis.h"
#include "reviewer_model.h"

namespace tessary {

Snapshot buildSnapshot(std::shared_ptr<const dravik::ReviewDocument> document,
                       const std::optional<std::string>& pairID,
                       const std::map<std::string, dravik::LeanAnnotation>& proposals) {
    Snapshot snapshot;
    snapshot.pairs = dravik::PairReview::resolve(document->frames());
    std::optional<dravik::ReviewPair> current;
    if (pairID)
        for (const dravik::ReviewPair& candidate : snapshot.pairs)
            if (candidate.id == *pairID) {
                current = candidate;
                break;
            }
    if (current && current->hasReference())
        snapshot.report =
            dravik::PairAnalysis::analyze(*document, *current, dravik::RuleCatalog::production());
    snapshot.leanReport = dravik::LeanAnalysis::report(*document, current, proposals);
    snapshot.documentPointer = std::move(document);
    return snapshot;
}

Snapshot ReviewerModel::snapshotOf(std::shared_ptr<const dravik::ReviewDocument> document,
                                   const std::optional<std::string>& pairID) const {
    return buildSnapshot(std::move(document), pairID, session_.leanProposals);
}

void ReviewerModel::publish(std::shared_ptr<const dravik::ReviewDocument> document) {
    SignalHold hold(*this);
    const auto current = pair();
    setSnapshot(
        snapshotOf(std::move(document), current ? std::optional(current->id) : std::nullopt));
}

} // namespace tessary
