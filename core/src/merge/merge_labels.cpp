// SPDX-License-Identifier: Apache-2.0
#include "merge/merge_labels.h"

#include <cstdio>

namespace dravik::merge {

namespace {

std::string joined(const std::vector<std::string>& parts, const std::string& none) {
    if (parts.empty())
        return none;
    std::string text = parts.front();
    for (std::size_t i = 1; i < parts.size(); ++i)
        text += " · " + parts[i];
    return text;
}

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

std::string describe(const std::optional<JointEdit>& edit) {
    if (!edit)
        return "Unreviewed";
    std::string text(label(edit->state));
    if (edit->point) {
        char where[96];
        std::snprintf(where, sizeof where, " at (%.1f, %.1f)", edit->point->x, edit->point->y);
        text += where;
    }
    return text;
}

std::string describe(const std::vector<DetectionRetry>& retries) {
    if (retries.empty())
        return "No accepted re-detections";
    return counted(retries.size(), "accepted re-detection", "accepted re-detections");
}

std::string describe(const std::optional<LeanAnnotation>& annotation) {
    if (!annotation)
        return "No lean lines";
    std::vector<std::string> parts;
    if (annotation->wheel)
        parts.push_back(annotation->wheelReviewed ? "Wheel axis (reviewed)" : "Wheel axis");
    else if (annotation->wheelNotObservable)
        parts.push_back("Wheel not observable");
    if (annotation->reference)
        parts.push_back(annotation->referenceReviewed ? "Reference line (reviewed)"
                                                      : "Reference line");
    return joined(parts, "No lean lines");
}

std::string describe(const std::optional<PairContext>& context) {
    if (!context)
        return "No statements";
    std::vector<std::string> parts;
    if (context->directionOverride)
        parts.push_back("Direction " + std::string(rawValue(*context->directionOverride)));
    if (context->kneePlacements && !context->kneePlacements->empty())
        parts.push_back(
            counted(context->kneePlacements->size(), "knee placement", "knee placements"));
    std::size_t marked = 0;
    for (const auto& entry : context->viewComparability)
        marked += entry.second != ViewComparability::unreviewed;
    if (marked > 0)
        parts.push_back(counted(marked, "view marked", "views marked"));
    return joined(parts, "No statements");
}

std::string describe(const std::optional<LeanPairContext>& context) {
    if (!context)
        return "No lean checks";
    const int answered = context->sameWheelCue + context->cameraViewsComparable +
                         context->wheelHeadingsComparable + context->referenceComparable +
                         context->cameraRollComparable;
    std::vector<std::string> parts{std::to_string(answered) + " of 5 checks"};
    if (context->similarSpeed)
        parts.push_back("similar speed");
    if (context->approvalDigest)
        parts.push_back("approved");
    return joined(parts, "");
}

} // namespace dravik::merge
