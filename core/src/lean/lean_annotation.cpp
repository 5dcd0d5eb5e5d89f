// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/lean.h"
#include "dravik/review.h"
#include "lean/lean_rules.h"

#include "json/json_reader.h"
#include <algorithm>
#include <utility>

namespace dravik {

namespace {

std::optional<LeanLine>& lineOf(LeanAnnotation& annotation, LeanHandle handle) {
    return isReference(handle) ? annotation.reference : annotation.wheel;
}

} // namespace

LeanAnnotation::LeanAnnotation(const ReviewFrame& frame, std::optional<LeanLine> wheelLine,
                               std::string provenanceText)
    : frameID(frame.id), sourceHash(frame.sourceHash), wheel(std::move(wheelLine)),
      provenance(std::move(provenanceText)) {}

void LeanAnnotation::validate(const ReviewFrame& frame) const {
    const std::string photo = "photo " + json::quoted(json::fileLabel(frame.file));
    auto refuse = [&](const std::string& sentence) { throw DravikError(sentence + "."); };

    if (frameID != frame.id)
        refuse("The lean lines for frame " + json::quoted(frameID) + " cannot be placed on " +
               photo + " of frame " + json::quoted(frame.id));
    if (sourceHash != frame.sourceHash)
        refuse("The lean lines were drawn on another version of " + photo +
               "; its content hash has changed");
    if (wheel)
        if (auto problem = lean::lineProblem(*wheel))
            refuse("The wheel axis line on " + photo + " " + *problem);
    if (reference)
        if (auto problem = lean::lineProblem(*reference))
            refuse("The reference line on " + photo + " " + *problem);
    if (auto problem = lean::flagProblem(*this))
        refuse("The lean annotation of " + photo + " " + *problem);
    if (auto problem = lean::textProblem(featureID))
        refuse("The shared feature ID on " + photo + " " + *problem);
    if (provenance.empty())
        refuse("The lean lines on " + photo + " do not say where they came from");
    if (auto problem = lean::textProblem(provenance))
        refuse("The provenance of the lean lines on " + photo + " " + *problem);
    // Handles off the shown panel could be neither seen nor dragged back.
    for (LeanHandle handle : allLeanHandles)
        if (auto p = point(handle); p && !frame.panel.contains(*p))
            refuse(std::string(label(handle)) + " lies outside the part of " + photo +
                   " that is shown for review");
}

std::optional<Point2> LeanAnnotation::point(LeanHandle handle) const {
    const auto& line = isReference(handle) ? reference : wheel;
    if (!line)
        return std::nullopt;
    return isStart(handle) ? line->a : line->b;
}

void LeanAnnotation::move(LeanHandle handle, const Point2& to) {
    auto& line = lineOf(*this, handle);
    if (!line)
        return;
    (isStart(handle) ? line->a : line->b) = to;
}

void LeanAnnotation::setWheel(std::optional<LeanLine> line) {
    wheel = std::move(line);
    wheelReviewed = false;
    wheelNotObservable = false;
}

void LeanAnnotation::setReference(std::optional<LeanLine> line) {
    reference = std::move(line);
    referenceReviewed = false;
}

void LeanAnnotation::setLine(LeanLineKind kind, std::optional<LeanLine> line) {
    if (kind == LeanLineKind::reference)
        setReference(std::move(line));
    else
        setWheel(std::move(line));
}

const std::optional<LeanLine>& LeanAnnotation::line(LeanLineKind kind) const {
    return kind == LeanLineKind::reference ? reference : wheel;
}

void LeanAnnotation::confirmWheel() {
    wheelReviewed = true;
    wheelNotObservable = false;
}

void LeanAnnotation::markWheelNotObservable() {
    wheelNotObservable = true;
    wheelReviewed = false;
}

bool LeanAnnotation::canStepUncertainty(LeanLineKind kind, int steps) const {
    const auto& stepped = line(kind);
    if (!stepped || steps == 0)
        return false;
    return steps < 0 ? stepped->uncertainty > minSteppedLeanUncertainty
                     : stepped->uncertainty < maxLeanUncertainty;
}

bool LeanAnnotation::stepUncertainty(LeanLineKind kind, int steps) {
    if (!canStepUncertainty(kind, steps))
        return false;
    auto& stepped = kind == LeanLineKind::reference ? reference : wheel;
    stepped->uncertainty = std::clamp(stepped->uncertainty + steps * leanUncertaintyStep,
                                      minSteppedLeanUncertainty, maxLeanUncertainty);
    return true;
}

} // namespace dravik
