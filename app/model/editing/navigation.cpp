// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "reviewer_model.h"

#include <algorithm>

namespace tessary {

bool ReviewerModel::show(const std::string& frameID, bool compare,
                         std::shared_ptr<const dravik::ReviewDocument> document) {
    const auto framePair = pairOf(frameID);
    std::map<std::string, FramePhoto> loaded;
    Snapshot next;
    try {
        loaded = photosFor(photos_, *document,
                           compare && framePair ? framePair->frameIDs
                                                : std::vector<std::string>{frameID});
        next = snapshotOf(std::move(document),
                          framePair ? std::optional(framePair->id) : std::nullopt);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return false;
    }
    cancelInteraction();
    setImages(std::move(loaded));
    assign(view_.compare, compare, navigationChange);
    assign(view_.activeFrameID, std::optional(frameID), navigationChange);
    setSnapshot(std::move(next));
    prefetchNeighbours();
    return true;
}

void ReviewerModel::activate(const std::string& frameID) {
    SignalHold hold(*this);
    const auto visible = visibleIDs();
    if (std::find(visible.begin(), visible.end(), frameID) == visible.end() || !frame(frameID) ||
        view_.activeFrameID == frameID)
        return;
    cancelInteraction();
    assign(view_.activeFrameID, std::optional(frameID), navigationChange);
}

void ReviewerModel::selectFrame(std::int64_t index) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (isDetecting_ || !current || index < 0 ||
        index >= static_cast<std::int64_t>(current->frames().size()))
        return;
    if (!save())
        return;
    const std::string frameID = current->frames()[static_cast<std::size_t>(index)].id;
    const auto framePair = pairOf(frameID);
    show(frameID, view_.compare && framePair && framePair->hasReference(),
         snapshot_->documentPointer);
}

void ReviewerModel::selectPair(const std::string& pairID) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current)
        return;
    for (const dravik::ReviewPair& candidate : pairs())
        if (candidate.id == pairID && !candidate.frameIDs.empty()) {
            if (auto index = current->frameIndex(candidate.frameIDs.front()))
                selectFrame(static_cast<std::int64_t>(*index));
            return;
        }
}

void ReviewerModel::step(int direction) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !view_.activeFrameID || direction == 0)
        return;
    direction = direction > 0 ? 1 : -1;
    if (!view_.compare) {
        if (auto index = current->frameIndex(*view_.activeFrameID))
            selectFrame(static_cast<std::int64_t>(*index) + direction);
        return;
    }
    // Compare steps through the pairs it can show, so the reviewer stays in Compare.
    const auto here = pair();
    const std::vector<dravik::ReviewPair>& all = pairs();
    auto at = std::find_if(all.begin(), all.end(), [&](const dravik::ReviewPair& candidate) {
        return here && candidate.id == here->id;
    });
    if (at == all.end())
        return;
    for (auto index = (at - all.begin()) + direction;
         index >= 0 && index < static_cast<std::ptrdiff_t>(all.size()); index += direction)
        if (all[static_cast<std::size_t>(index)].hasReference()) {
            selectPair(all[static_cast<std::size_t>(index)].id);
            return;
        }
}

void ReviewerModel::setCompare(bool on) {
    SignalHold hold(*this);
    if (view_.compare == on || isDetecting_ || !document() || !view_.activeFrameID)
        return;
    if (!save())
        return;
    const std::string frameID = *view_.activeFrameID;
    const auto framePair = pairOf(frameID);
    if (on && !(framePair && framePair->hasReference())) {
        setMessage("No reference rider exists for this photograph. Single mode remains "
                   "available.");
        return;
    }
    // The pair's report stays in Single mode too, as after selectFrame and every edit: the rider's
    // photo keeps its pair feedback instead of losing it until the next change.
    show(frameID, on, snapshot_->documentPointer);
}

void ReviewerModel::cancelInteraction() {
    SignalHold hold(*this);
    assign(interaction_.previewTarget, std::nullopt, interactionChange);
    assign(interaction_.placing, false, interactionChange);
    renewCanvasGeneration();
    assign(interaction_.highlightedJoints, {}, interactionChange);
    assign(interaction_.leanPreviewTarget, std::nullopt, interactionChange);
    assign(interaction_.leanPlacement, std::nullopt, interactionChange);
    assign(interaction_.leanPlacementStart, std::nullopt, interactionChange);
}

} // namespace tessary
