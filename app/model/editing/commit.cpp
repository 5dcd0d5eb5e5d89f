// SPDX-License-Identifier: Apache-2.0
#include "editing/commit.h"

#include "reviewer_model.h"

namespace tessary {

bool changesContent(const dravik::ReviewDocument& current, const dravik::ReviewDocument& revised) {
    // Every core operation raises the revision, so an untouched copy is seen at once.
    return current.revision() != revised.revision() && !current.sameContent(revised);
}

CommitOutcome ReviewerModel::commit(const DocumentChange& change, std::optional<ReviewUndo> undo,
                                    const std::optional<std::string>& returnTo) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current)
        return CommitOutcome::unchanged;
    // Only an approved pair is looked up: most commits have none, and edits must stay quick.
    const auto approvedPair = snapshot_->leanReport.approved ? pair() : std::nullopt;
    auto revised = std::make_shared<dravik::ReviewDocument>(*current);
    bool changed = false;
    try {
        change(*revised);
        changed = changesContent(*current, *revised);
        if (!changed && !returnTo)
            return CommitOutcome::unchanged;
        if (!returnTo)
            publish(revised);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return CommitOutcome::refused;
    }
    if (returnTo) {
        const auto framePair = pairOf(*returnTo);
        const bool keepCompare = view_.compare && framePair && framePair->hasReference();
        if (!show(*returnTo, keepCompare, changed ? revised : snapshot_->documentPointer))
            return CommitOutcome::refused;
        if (!changed)
            return CommitOutcome::unchanged;
    }
    if (undo)
        pushUndo(std::move(*undo));
    // What was previewed is committed now, or was replaced by this change.
    assign(interaction_.previewTarget, std::nullopt, interactionChange);
    assign(interaction_.leanPreviewTarget, std::nullopt, interactionChange);
    const bool saved = save();
    if (!saved)
        assign(unsavedEdits_, unsavedEdits_ + 1, savedRevisionChange);
    // Any change to the evidence or the checks takes an approval back; say so where it shows.
    if (approvedPair && !snapshot_->leanReport.approved) {
        const auto shown = pair();
        if (shown && shown->id == approvedPair->id)
            setMessage(message_ + " \u00b7 Lean comparison approval withdrawn");
    }
    return saved ? CommitOutcome::saved : CommitOutcome::unsaved;
}

} // namespace tessary
