#include "dravik/lean_analysis.h"
#include "reviewer_model.h"

#include <algorithm>

namespace tessary {

namespace {

// A hand-placed endpoint is trusted to about this many source pixels.
constexpr double placedLineUncertainty = 3.0;

template <class T> std::optional<T> valueOf(const T* stored) {
    return stored ? std::optional(*stored) : std::nullopt;
}

} // namespace

std::optional<dravik::LeanAnnotation> ReviewerModel::lean(const std::string& frameID) const {
    if (const dravik::ReviewDocument* current = document())
        if (const dravik::LeanAnnotation* stored = current->leanAnnotation(frameID))
            return *stored;
    auto proposal = leanProposals_.find(frameID);
    return proposal == leanProposals_.end() ? std::nullopt : std::optional(proposal->second);
}

LeanEditTarget ReviewerModel::leanTarget(const std::string& frameID) const {
    return {sessionID_, canvasGeneration_, frameID};
}

bool ReviewerModel::validLean(const LeanEditTarget& target) const {
    const auto visible = visibleIDs();
    return leanMode_ && target.session == sessionID_ && target.canvas == canvasGeneration_ &&
           std::find(visible.begin(), visible.end(), target.frameID) != visible.end();
}

void ReviewerModel::commitLean(const dravik::LeanAnnotation& annotation,
                               const LeanEditTarget& target) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    if (!validLean(target) || !current)
        return;
    const dravik::ReviewFrame* edited = current->frame(target.frameID);
    if (!edited)
        return;
    const auto previous = valueOf(current->leanAnnotation(target.frameID));
    const auto framePair = pairOf(target.frameID);
    const std::string pairID = framePair ? framePair->id : edited->pairID;
    const auto previousContext = valueOf(current->leanPairContext(pairID));
    try {
        annotation.validate(*edited);
        if (previous == annotation)
            return;
        auto revised = std::make_shared<dravik::ReviewDocument>(*current);
        revised->setLeanAnnotation(target.frameID, annotation);
        if (previousContext) {
            // A changed line voids the checks and approval given for the old one; how fast the
            // riders went is the reviewer's report, not evidence from the lines.
            dravik::LeanPairContext fresh;
            fresh.pairID = pairID;
            fresh.similarSpeed = previousContext->similarSpeed;
            revised->setLeanPairContext(pairID, fresh);
        }
        publish(revised);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    pushUndo(ReviewUndo{ReviewUndo::Lean{target.frameID, previous, previousContext}});
    assign(leanPreviewTarget_, std::optional<LeanEditTarget>(), interactionChange);
    save();
}

void ReviewerModel::changeLean(const std::function<void(dravik::LeanAnnotation&)>& mutation) {
    Batch batch(*this);
    const dravik::ReviewFrame* active = frame();
    if (!active)
        return;
    dravik::LeanAnnotation annotation =
        lean(active->id).value_or(dravik::LeanAnnotation(*active, std::nullopt));
    mutation(annotation);
    commitLean(annotation, leanTarget(active->id));
}

void ReviewerModel::setLeanMode(bool on) {
    Batch batch(*this);
    cancelInteraction();
    assign(leanMode_, on, viewOptionsChange);
    if (on)
        assign(showLean_, true, viewOptionsChange);
}

void ReviewerModel::beginLeanPlacement(bool reference) {
    Batch batch(*this);
    cancelInteraction();
    assign(showLean_, true, viewOptionsChange);
    assign(leanPlacement_,
           std::optional(reference ? dravik::LeanHandle::referenceA : dravik::LeanHandle::wheelA),
           interactionChange);
}

void ReviewerModel::placeLean(const dravik::Point2& point, const std::string& frameID) {
    Batch batch(*this);
    if (!leanPlacement_ || activeFrameID_ != frameID)
        return;
    if (!leanPlacementStart_) {
        assign(leanPlacementStart_, std::optional(point), interactionChange);
        return;
    }
    const dravik::LeanLine line{*leanPlacementStart_, point, placedLineUncertainty};
    const bool reference = dravik::isReference(*leanPlacement_);
    changeLean([&](dravik::LeanAnnotation& annotation) {
        if (reference)
            annotation.setReference(line);
        else
            annotation.setWheel(line);
    });
    assign(leanPlacement_, std::optional<dravik::LeanHandle>(), interactionChange);
    assign(leanPlacementStart_, std::optional<dravik::Point2>(), interactionChange);
}

void ReviewerModel::nudgeLean(double dx, double dy) {
    Batch batch(*this);
    if (!activeFrameID_)
        return;
    const auto annotation = lean(*activeFrameID_);
    if (!annotation)
        return;
    const auto point = annotation->point(selectedLeanHandle_);
    if (!point)
        return;
    const dravik::LeanHandle handle = selectedLeanHandle_;
    const dravik::Point2 moved{point->x + dx, point->y + dy};
    changeLean([&](dravik::LeanAnnotation& edited) { edited.move(handle, moved); });
}

void ReviewerModel::updateLeanContext(dravik::LeanPairContext context, bool approve) {
    Batch batch(*this);
    const dravik::ReviewDocument* current = document();
    const auto currentPair = pair();
    if (!current || !currentPair || !currentPair->hasReference() || !activeFrameID_)
        return;
    context.pairID = currentPair->id;
    try {
        // An approval names exactly the evidence it was given for.
        context.approvalDigest =
            approve ? std::optional(dravik::LeanAnalysis::evidenceDigest(*current, *currentPair))
                    : std::nullopt;
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    const auto previous = valueOf(current->leanPairContext(currentPair->id));
    if (previous == context)
        return;
    try {
        auto revised = std::make_shared<dravik::ReviewDocument>(*current);
        revised->setLeanPairContext(currentPair->id, context);
        dravik::LeanReview::validate(*revised);
        publish(revised);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    pushUndo(ReviewUndo{ReviewUndo::LeanContext{*activeFrameID_, previous}});
    save();
}

} // namespace tessary
