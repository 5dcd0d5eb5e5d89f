// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/review.h"

#include <cmath>

namespace dravik {

namespace {

void requireKnownJoint(std::string_view joint) {
    if (!InspectionRenderer::jointID(joint))
        throw DravikError("“" + std::string(joint) + "” is not a joint of the skeleton.");
}

// Obscured joints keep no point; every other state needs one.
JointEdit checkedEdit(const std::string& joint, std::optional<Point2> point,
                      JointReviewState state) {
    requireKnownJoint(joint);
    if (state == JointReviewState::obscured)
        return {state, std::nullopt};
    if (!point)
        throw DravikError("The joint “" + joint + "” cannot be marked “" +
                          std::string(label(state)) + "” without a point.");
    if (!std::isfinite(point->x) || !std::isfinite(point->y))
        throw DravikError("The point given for the joint “" + joint + "” is not finite.");
    return {state, point};
}

// Usable results in the order they are trusted: accepted retries newest first (the refined pass
// before the primary one), then the results file in its order.
template <class Visit> const DravikResult* firstUsable(const ReviewFrame& frame, Visit accepts) {
    auto take = [&](const std::optional<DravikResult>& result) {
        return result && result->usable() && accepts(*result);
    };
    for (auto retry = frame.retries.rbegin(); retry != frame.retries.rend(); ++retry) {
        if (take(retry->refined))
            return &*retry->refined;
        if (take(retry->primary))
            return &*retry->primary;
    }
    for (const DravikResult& result : frame.raw)
        if (result.usable() && accepts(result))
            return &result;
    return nullptr;
}

const DravikResult* usableOfKind(const ReviewFrame& frame, std::string_view kind) {
    return firstUsable(frame, [&](const DravikResult& r) { return r.kind == kind; });
}

} // namespace

std::optional<Point2> ReviewFrame::displayPoint(std::string_view joint,
                                                std::string_view kind) const {
    if (edits.contains(std::string(joint)))
        return reviewedPoint(joint);
    return seedPoint(joint, kind);
}

std::optional<Point2> ReviewFrame::seedPoint(std::string_view joint, std::string_view kind) const {
    const DravikResult* result = usableOfKind(*this, kind);
    if (!result)
        result = firstUsable(*this, [](const DravikResult&) { return true; });
    return result ? result->point(joint) : std::nullopt;
}

std::optional<Point2> ReviewFrame::rawPoint(std::string_view joint, std::string_view kind) const {
    const DravikResult* result = usableOfKind(*this, kind);
    return result ? result->point(joint) : std::nullopt;
}

std::optional<Point2> ReviewFrame::reviewedPoint(std::string_view joint) const {
    auto it = edits.find(std::string(joint));
    if (it == edits.end())
        return std::nullopt;
    return it->second.point;
}

void ReviewFrame::setJoint(const std::string& joint, std::optional<Point2> point,
                           JointReviewState state) {
    edits[joint] = checkedEdit(joint, point, state);
}

void ReviewFrame::restore(const std::string& joint, const std::optional<JointEdit>& edit) {
    if (!edit) {
        requireKnownJoint(joint);
        edits.erase(joint);
        return;
    }
    edits[joint] = checkedEdit(joint, edit->point, edit->state);
}

void ReviewFrame::addRetry(const DetectionRetry& retry) {
    auto acceptable = [](const std::optional<DravikResult>& result) {
        if (!result)
            return true;
        for (const JointResult& joint : result->joints)
            if (!InspectionRenderer::jointID(joint.name) || !std::isfinite(joint.x) ||
                !std::isfinite(joint.y) || !std::isfinite(joint.confidence))
                return false;
        return true;
    };
    if (!acceptable(retry.primary) || !acceptable(retry.refined))
        throw DravikError("The detection retry for “" + file +
                          "” holds joints that are unknown or not finite.");
    // A retry without a usable result is kept too: it records that the detector was asked again.
    retries.push_back(retry);
}

} // namespace dravik
