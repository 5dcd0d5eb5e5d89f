// SPDX-License-Identifier: Apache-2.0
#include "editing/lean_editing.h"

#include "dravik/lean_analysis.h"
#include "reviewer_model.h"

#include <algorithm>

namespace tessary {

namespace {

template <class T> std::optional<T> valueOf(const T* stored) {
    return stored ? std::optional(*stored) : std::nullopt;
}

} // namespace

void storeLeanLines(dravik::ReviewDocument& document, const dravik::LeanAnnotation& annotation,
                    const std::string& pairID) {
    if (valueOf(document.leanAnnotation(annotation.frameID)) == annotation)
        return;
    document.setLeanAnnotation(annotation.frameID, annotation);
    if (const dravik::LeanPairContext* previous = document.leanPairContext(pairID)) {
        dravik::LeanPairContext fresh;
        fresh.pairID = pairID;
        fresh.similarSpeed = previous->similarSpeed;
        document.setLeanPairContext(pairID, fresh);
    }
}

std::optional<dravik::LeanAnnotation> ReviewerModel::lean(const std::string& frameID) const {
    if (const dravik::LeanReport* shown = leanReport())
        if (const dravik::LeanFrameEvidence* evidence = shown->frame(frameID))
            return evidence->annotation;
    return std::nullopt;
}

std::optional<dravik::LeanMeasurement>
ReviewerModel::measureLean(const dravik::LeanAnnotation& lines) const {
    return dravik::LeanAnalysis::measure(lines);
}

LeanEditTarget ReviewerModel::leanTarget(const std::string& frameID) const {
    return {session_.sessionID, interaction_.canvasGeneration, frameID};
}

bool ReviewerModel::validLean(const LeanEditTarget& target) const {
    const auto visible = visibleIDs();
    return view_.leanMode && target.session == session_.sessionID &&
           target.canvas == interaction_.canvasGeneration &&
           std::find(visible.begin(), visible.end(), target.frameID) != visible.end();
}

void ReviewerModel::commitLean(const dravik::LeanAnnotation& annotation,
                               const LeanEditTarget& target) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!validLean(target) || !current)
        return;
    const dravik::ReviewFrame* edited = current->frame(target.frameID);
    if (!edited)
        return;
    const auto framePair = pairOf(target.frameID);
    const std::string pairID = framePair ? framePair->id : edited->pairID;
    commit(
        [&](dravik::ReviewDocument& document) {
            annotation.validate(*document.frame(target.frameID));
            storeLeanLines(document, annotation, pairID);
        },
        ReviewUndo{ReviewUndo::Lean{target.frameID,
                                    valueOf(current->leanAnnotation(target.frameID)),
                                    valueOf(current->leanPairContext(pairID))}});
}

void ReviewerModel::changeLean(const std::function<void(dravik::LeanAnnotation&)>& mutation) {
    SignalHold hold(*this);
    const dravik::ReviewFrame* active = frame();
    if (!active)
        return;
    dravik::LeanAnnotation annotation =
        lean(active->id).value_or(dravik::LeanAnnotation(*active, std::nullopt));
    mutation(annotation);
    commitLean(annotation, leanTarget(active->id));
}

void ReviewerModel::setLeanMode(bool on) {
    SignalHold hold(*this);
    cancelInteraction();
    assign(view_.leanMode, on, viewOptionsChange);
    if (on)
        assign(view_.showLean, true, viewOptionsChange);
}

void ReviewerModel::beginLeanPlacement(bool reference) {
    SignalHold hold(*this);
    cancelInteraction();
    assign(view_.showLean, true, viewOptionsChange);
    assign(interaction_.leanPlacement,
           std::optional(reference ? dravik::LeanHandle::referenceA : dravik::LeanHandle::wheelA),
           interactionChange);
}

void ReviewerModel::placeLean(const dravik::Point2& point, const std::string& frameID) {
    SignalHold hold(*this);
    if (!interaction_.leanPlacement || view_.activeFrameID != frameID)
        return;
    if (!interaction_.leanPlacementStart) {
        assign(interaction_.leanPlacementStart, std::optional(point), interactionChange);
        return;
    }
    const dravik::LeanLine line{*interaction_.leanPlacementStart, point};
    const auto kind = dravik::isReference(*interaction_.leanPlacement)
                          ? dravik::LeanLineKind::reference
                          : dravik::LeanLineKind::wheel;
    changeLean([&](dravik::LeanAnnotation& annotation) { annotation.setLine(kind, line); });
    assign(interaction_.leanPlacement, std::nullopt, interactionChange);
    assign(interaction_.leanPlacementStart, std::nullopt, interactionChange);
}

void ReviewerModel::nudgeLean(double dx, double dy) {
    SignalHold hold(*this);
    if (!view_.activeFrameID)
        return;
    const auto annotation = lean(*view_.activeFrameID);
    if (!annotation)
        return;
    const auto point = annotation->point(view_.selectedLeanHandle);
    if (!point)
        return;
    const dravik::LeanHandle handle = view_.selectedLeanHandle;
    const dravik::Point2 moved{point->x + dx, point->y + dy};
    changeLean([&](dravik::LeanAnnotation& edited) { edited.move(handle, moved); });
}

void ReviewerModel::updateLeanContext(dravik::LeanPairContext context, bool approve) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    const auto currentPair = pair();
    if (!current || !currentPair || !currentPair->hasReference() || !view_.activeFrameID)
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
    commit(
        [&](dravik::ReviewDocument& document) {
            document.setLeanPairContext(context.pairID, context);
            dravik::LeanReview::validate(document);
        },
        ReviewUndo{ReviewUndo::LeanContext{*view_.activeFrameID,
                                           valueOf(current->leanPairContext(currentPair->id))}});
}

} // namespace tessary
