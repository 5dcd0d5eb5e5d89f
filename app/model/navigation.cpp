#include "reviewer_model.h"

#include <algorithm>

namespace tessary {

bool ReviewerModel::show(const std::string& frameID, const std::optional<dravik::ReviewPair>& pair,
                         bool compare, const std::optional<dravik::ReviewPair>& reportPair,
                         std::shared_ptr<const dravik::ReviewDocument> document) {
    Photos loaded;
    Snapshot next;
    try {
        loaded = imagesFor(compare && pair ? pair->frameIDs : std::vector<std::string>{frameID});
        next = makeSnapshot(reportPair ? std::optional(reportPair->id) : std::nullopt,
                            std::move(document));
    } catch (const std::exception& failure) {
        setError(failure.what());
        return false;
    }
    cancelInteraction();
    setImages(std::move(loaded));
    assign(compare_, compare, navigationChange);
    assign(activeFrameID_, std::optional(frameID), navigationChange);
    setSnapshot(std::move(next));
    return true;
}

void ReviewerModel::activate(const std::string& frameID) {
    Batch batch(*this);
    const auto visible = visibleIDs();
    if (std::find(visible.begin(), visible.end(), frameID) == visible.end() || !frame(frameID) ||
        activeFrameID_ == frameID)
        return;
    cancelInteraction();
    assign(activeFrameID_, std::optional(frameID), navigationChange);
}

void ReviewerModel::selectFrame(std::int64_t index) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    if (isDetecting_ || !current || index < 0 ||
        index >= static_cast<std::int64_t>(current->frames().size()))
        return;
    if (!save())
        return;
    const std::string frameID = current->frames()[static_cast<std::size_t>(index)].id;
    const auto framePair = pairOf(frameID);
    const bool keepCompare = compare_ && framePair && framePair->hasReference();
    show(frameID, framePair, keepCompare, framePair, snapshot_->documentPointer);
}

void ReviewerModel::selectPair(const std::string& pairID) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    if (!current)
        return;
    for (const dravik::ReviewPair& candidate : pairs_)
        if (candidate.id == pairID && !candidate.frameIDs.empty()) {
            if (auto index = current->frameIndex(candidate.frameIDs.front()))
                selectFrame(static_cast<std::int64_t>(*index));
            return;
        }
}

void ReviewerModel::setCompare(bool on) {
    Batch batch(*this);
    if (compare_ == on || isDetecting_ || !document() || !activeFrameID_)
        return;
    if (!save())
        return;
    const std::string frameID = *activeFrameID_;
    const auto framePair = pairOf(frameID);
    if (on && !(framePair && framePair->hasReference())) {
        setMessage("No reference rider exists for this photograph. Single mode remains "
                   "available.");
        return;
    }
    // The pair's report stays in Single mode too, as after selectFrame and every edit: the rider's
    // photo keeps its pair feedback instead of losing it until the next change.
    show(frameID, framePair, on, framePair, snapshot_->documentPointer);
}

} // namespace tessary
