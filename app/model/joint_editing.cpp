#include "reviewer_model.h"

namespace tessary {

dravik::ReviewEditTarget ReviewerModel::target(const std::string& frameID,
                                               const std::string& joint) const {
    return {sessionID_, canvasGeneration_, frameID, joint};
}

bool ReviewerModel::valid(const dravik::ReviewEditTarget& target) const {
    const dravik::ReviewDocument* current = document();
    return current &&
           target.index(*current, sessionID_, canvasGeneration_, visibleIDs()).has_value();
}

void ReviewerModel::edit(std::optional<dravik::Point2> point, dravik::JointReviewState state,
                         const std::optional<dravik::ReviewEditTarget>& given) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !activeFrameID_)
        return;
    const dravik::ReviewEditTarget chosen = given ? *given : target(*activeFrameID_, selected_);
    const auto index = chosen.index(*current, sessionID_, canvasGeneration_, visibleIDs());
    if (!index)
        return; // prepared for another session, canvas or photo
    const auto frameIndex = static_cast<std::size_t>(*index);

    auto editOf = [&](const dravik::ReviewDocument& document) -> std::optional<dravik::JointEdit> {
        const auto& edits = document.frames()[frameIndex].edits;
        auto found = edits.find(chosen.joint);
        return found == edits.end() ? std::nullopt : std::optional(found->second);
    };
    const std::optional<dravik::JointEdit> previous = editOf(*current);

    auto revised = std::make_shared<dravik::ReviewDocument>(*current);
    try {
        revised->setJoint(frameIndex, chosen.joint, point, state);
        if (editOf(*revised) == previous)
            return;
        publish(revised);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    pushUndo(ReviewUndo{ReviewUndo::Joint{chosen.frameID, chosen.joint, previous}});
    assign(placing_, false, interactionChange);
    assign(previewTarget_, std::optional<dravik::ReviewEditTarget>(), interactionChange);
    save();
}

void ReviewerModel::setState(dravik::JointReviewState state) {
    Batch batch(*this);
    const dravik::ReviewFrame* active = frame();
    if (!active)
        return;
    std::optional<dravik::Point2> point;
    if (state != dravik::allJointReviewStates[2])
        point = active->displayPoint(selected_, settings(active->id).kind);
    edit(point, state);
}

void ReviewerModel::nudge(double dx, double dy, const std::string& frameID) {
    Batch batch(*this);
    if (activeFrameID_ != frameID)
        return;
    const dravik::ReviewFrame* nudged = frame(frameID);
    if (!nudged)
        return;
    const auto point = nudged->displayPoint(selected_, settings(frameID).kind);
    if (!point)
        return;
    edit(dravik::Point2{point->x + dx, point->y + dy}, dravik::allJointReviewStates[0],
         target(frameID, selected_));
}

void ReviewerModel::updateContext(dravik::PairContext context) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    const auto currentPair = pair();
    if (!current || !currentPair)
        return;
    context.pairID = currentPair->id;
    const dravik::PairReport* currentReport = report();
    const auto reportDirection =
        currentReport ? currentReport->context.directionOverride : std::nullopt;
    if (context.directionOverride != reportDirection)
        context.kneePlacements.reset(); // chosen under the other direction
    if (const dravik::PairContext* stored = current->pairContext(currentPair->id);
        stored && *stored == context)
        return;
    auto revised = std::make_shared<dravik::ReviewDocument>(*current);
    try {
        revised->setPairContext(currentPair->id, context);
        publish(revised);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    save();
}

} // namespace tessary
