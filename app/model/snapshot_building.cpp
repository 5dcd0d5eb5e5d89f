#include "reviewer_model.h"

namespace tessary {

Snapshot ReviewerModel::makeSnapshot(const std::optional<std::string>& pairID,
                                     std::shared_ptr<const dravik::ReviewDocument> document) const {
    const std::vector<dravik::ReviewPair> resolved =
        dravik::PairReview::resolve(document->frames());
    std::optional<dravik::PairReport> report;
    // A rider photo without a reference rider has nothing to compare: no pair report, so the
    // window shows that photo's own coaching instead.
    if (pairID)
        for (const dravik::ReviewPair& candidate : resolved)
            if (candidate.id == *pairID && candidate.hasReference()) {
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
