// SPDX-License-Identifier: Apache-2.0
#include "editing/joint_editing.h"

#include "reviewer_model.h"

namespace tessary {

using dravik::JointReviewState;

dravik::PairContext contextToStore(dravik::PairContext chosen, const std::string& pairID,
                                   const dravik::PairReport* current) {
    chosen.pairID = pairID;
    const auto shownDirection = current ? current->context.directionOverride : std::nullopt;
    if (chosen.directionOverride != shownDirection)
        chosen.kneePlacements.reset();
    return chosen;
}

dravik::ReviewEditTarget ReviewerModel::target(const std::string& frameID,
                                               const std::string& joint) const {
    return {session_.sessionID, interaction_.canvasGeneration, frameID, joint};
}

bool ReviewerModel::valid(const dravik::ReviewEditTarget& target) const {
    const dravik::ReviewDocument* current = document();
    return current &&
           target.index(*current, session_.sessionID, interaction_.canvasGeneration, visibleIDs())
               .has_value();
}

void ReviewerModel::edit(std::optional<dravik::Point2> point, JointReviewState state,
                         const std::optional<dravik::ReviewEditTarget>& given) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !view_.activeFrameID)
        return;
    const dravik::ReviewEditTarget chosen =
        given ? *given : target(*view_.activeFrameID, view_.selected);
    const auto index =
        chosen.index(*current, session_.sessionID, interaction_.canvasGeneration, visibleIDs());
    if (!index)
        return; // prepared for another session, canvas or photo
    const auto frameIndex = static_cast<std::size_t>(*index);
    const auto& edits = current->frames()[frameIndex].edits;
    const auto found = edits.find(chosen.joint);
    const std::optional<dravik::JointEdit> previous =
        found == edits.end() ? std::nullopt : std::optional(found->second);

    const auto outcome = commit(
        [&](dravik::ReviewDocument& document) {
            document.setJoint(frameIndex, chosen.joint, point, state);
        },
        ReviewUndo{ReviewUndo::Joint{chosen.frameID, chosen.joint, previous}});
    if (committed(outcome))
        assign(interaction_.placing, false, interactionChange);
}

void ReviewerModel::setState(JointReviewState state) {
    SignalHold hold(*this);
    const dravik::ReviewFrame* active = frame();
    if (!active)
        return;
    std::optional<dravik::Point2> point;
    if (state != JointReviewState::obscured)
        point = active->displayPoint(view_.selected, settings(active->id).kind);
    edit(point, state);
}

void ReviewerModel::nudge(double dx, double dy, const std::string& frameID) {
    SignalHold hold(*this);
    if (view_.activeFrameID != frameID)
        return;
    const dravik::ReviewFrame* nudged = frame(frameID);
    if (!nudged)
        return;
    const auto point = nudged->displayPoint(view_.selected, settings(frameID).kind);
    if (!point)
        return;
    edit(dravik::Point2{point->x + dx, point->y + dy}, JointReviewState::corrected,
         target(frameID, view_.selected));
}

void ReviewerModel::updateContext(dravik::PairContext context) {
    SignalHold hold(*this);
    const auto currentPair = pair();
    if (!document() || !currentPair)
        return;
    const dravik::PairContext stored =
        contextToStore(std::move(context), currentPair->id, report());
    // The reviewer's context is not an undoable edit: it is what they say about the photos.
    commit(
        [&](dravik::ReviewDocument& document) { document.setPairContext(stored.pairID, stored); },
        std::nullopt);
}

} // namespace tessary
