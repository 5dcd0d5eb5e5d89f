#include "reviewer_model.h"

namespace tessary {

Snapshot ReviewerModel::makeSnapshot(const std::optional<std::string>& pairID,
                                     std::shared_ptr<const dravik::ReviewDocument> document) const {
    const std::vector<dravik::ReviewPair> resolved =
        dravik::PairReview::resolve(document->frames());
    std::optional<dravik::PairReport> report;
    if (pairID)
        for (const dravik::ReviewPair& candidate : resolved)
            if (candidate.id == *pairID) {
                report = dravik::PairAnalysis::analyze(*document, candidate,
                                                       dravik::RuleCatalog::production());
                break;
            }
    return Snapshot{std::move(document), std::move(report)};
}

void ReviewerModel::publish(std::shared_ptr<const dravik::ReviewDocument> document) {
    Batch batch(*this);
    const auto current = pair();
    setSnapshot(
        makeSnapshot(current ? std::optional(current->id) : std::nullopt, std::move(document)));
}

} // namespace tessary
