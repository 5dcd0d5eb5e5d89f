// SPDX-License-Identifier: Apache-2.0
#include "editing/undo.h"

#include "reviewer_model.h"

namespace tessary {

namespace {

void restoreLeanContext(dravik::ReviewDocument& document, const std::string& pairID,
                        const std::optional<dravik::LeanPairContext>& previous) {
    const dravik::LeanPairContext* stored = document.leanPairContext(pairID);
    if ((stored ? std::optional(*stored) : std::nullopt) != previous)
        document.setLeanPairContext(pairID, previous);
}

void restoreLeanAnnotation(dravik::ReviewDocument& document, const std::string& frameID,
                           const std::optional<dravik::LeanAnnotation>& previous) {
    const dravik::LeanAnnotation* stored = document.leanAnnotation(frameID);
    if ((stored ? std::optional(*stored) : std::nullopt) != previous)
        document.setLeanAnnotation(frameID, previous);
}

} // namespace

void revert(dravik::ReviewDocument& document, const ReviewUndo& entry, const std::string& pairID) {
    if (const auto* joint = std::get_if<ReviewUndo::Joint>(&entry.change)) {
        document.restore(*document.frameIndex(joint->frameID), joint->joint, joint->previous);
    } else if (const auto* lean = std::get_if<ReviewUndo::Lean>(&entry.change)) {
        restoreLeanAnnotation(document, lean->frameID, lean->previous);
        restoreLeanContext(document, pairID, lean->previousContext);
    } else if (const auto* context = std::get_if<ReviewUndo::LeanContext>(&entry.change)) {
        restoreLeanContext(document, pairID, context->previous);
    }
}

void ReviewerModel::undo() {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (isDetecting_ || undoStack_.empty() || !current)
        return;
    const ReviewUndo entry = undoStack_.back();
    const std::string& frameID = entry.frameID();
    const dravik::ReviewFrame* undone = current->frame(frameID);
    if (!undone)
        return;
    const auto framePair = pairOf(frameID);
    const std::string pairID = framePair ? framePair->id : undone->pairID;
    // Undo returns to the photo whose change it reverts.
    const auto outcome =
        commit([&](dravik::ReviewDocument& document) { revert(document, entry, pairID); },
               std::nullopt, frameID);
    if (outcome == CommitOutcome::refused)
        return;
    undoStack_.pop_back();
    mark(undoStackChange);
    if (const auto* joint = std::get_if<ReviewUndo::Joint>(&entry.change))
        assign(view_.selected, joint->joint, selectionChange);
}

} // namespace tessary
