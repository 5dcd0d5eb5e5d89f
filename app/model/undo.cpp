#include "reviewer_model.h"

namespace tessary {

namespace {

// Writes back only what differs, so undoing never raises the revision for nothing.
void restoreLeanContext(dravik::ReviewDocument& document, const std::string& pairID,
                        const std::optional<dravik::LeanPairContext>& previous) {
    const dravik::LeanPairContext* stored = document.leanPairContext(pairID);
    const std::optional<dravik::LeanPairContext> current =
        stored ? std::optional(*stored) : std::nullopt;
    if (current != previous)
        document.setLeanPairContext(pairID, previous);
}

void restoreLeanAnnotation(dravik::ReviewDocument& document, const std::string& frameID,
                           const std::optional<dravik::LeanAnnotation>& previous) {
    const dravik::LeanAnnotation* stored = document.leanAnnotation(frameID);
    const std::optional<dravik::LeanAnnotation> current =
        stored ? std::optional(*stored) : std::nullopt;
    if (current != previous)
        document.setLeanAnnotation(frameID, previous);
}

} // namespace

void ReviewerModel::applyUndo(dravik::ReviewDocument& document, const ReviewUndo& entry,
                              const std::optional<dravik::ReviewPair>& pair) const {
    const std::string pairID = pair ? pair->id : document.frame(entry.frameID())->pairID;
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
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    if (isDetecting_ || undoStack_.empty() || !current)
        return;
    const ReviewUndo entry = undoStack_.back();
    const std::string& frameID = entry.frameID();
    if (!current->frameIndex(frameID))
        return;

    // Undo returns to the photo whose change it reverts.
    const auto framePair = pairOf(frameID);
    const bool keepCompare = compare_ && framePair && framePair->hasReference();
    auto reverted = std::make_shared<dravik::ReviewDocument>(*current);
    try {
        applyUndo(*reverted, entry, framePair);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    if (!show(frameID, framePair, keepCompare, framePair, std::move(reverted)))
        return;
    undoStack_.pop_back();
    mark(undoStackChange);
    if (const auto* joint = std::get_if<ReviewUndo::Joint>(&entry.change))
        assign(selected_, joint->joint, selectionChange);
    save();
}

} // namespace tessary
