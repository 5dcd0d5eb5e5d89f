// SPDX-License-Identifier: Apache-2.0
#include "reviewer_model.h"
#include "state/companion_lookup.h"

#include <algorithm>

namespace tessary {

namespace {

bool holds(const dravik::ReviewPair& pair, const std::string& frameID) {
    return std::find(pair.frameIDs.begin(), pair.frameIDs.end(), frameID) != pair.frameIDs.end();
}

} // namespace

const dravik::ReviewDocument* ReviewerModel::document() const {
    return snapshot_ ? snapshot_->documentPointer.get() : nullptr;
}

const dravik::PairReport* ReviewerModel::report() const {
    return snapshot_ && snapshot_->report ? &*snapshot_->report : nullptr;
}

const dravik::LeanReport* ReviewerModel::leanReport() const {
    return snapshot_ ? &snapshot_->leanReport : nullptr;
}

const std::vector<dravik::ReviewPair>& ReviewerModel::pairs() const {
    static const std::vector<dravik::ReviewPair> none;
    return snapshot_ ? snapshot_->pairs : none;
}

std::optional<dravik::ReviewPair> ReviewerModel::pairOf(const std::string& frameID) const {
    for (const dravik::ReviewPair& candidate : pairs())
        if (holds(candidate, frameID))
            return candidate;
    return std::nullopt;
}

std::optional<dravik::ReviewPair> ReviewerModel::pair() const {
    return view_.activeFrameID ? pairOf(*view_.activeFrameID) : std::nullopt;
}

const dravik::ReviewFrame* ReviewerModel::frame() const {
    return view_.activeFrameID ? frame(*view_.activeFrameID) : nullptr;
}

const dravik::ReviewFrame* ReviewerModel::frame(const std::string& id) const {
    const dravik::ReviewDocument* current = document();
    return current ? current->frame(id) : nullptr;
}

std::vector<std::string> ReviewerModel::visibleIDs() const {
    if (!view_.activeFrameID)
        return {};
    if (view_.compare)
        if (auto current = pair())
            return current->frameIDs;
    return {*view_.activeFrameID};
}

Presentation ReviewerModel::settings(const std::string& frameID) const {
    auto found = view_.presentation.find(frameID);
    return found == view_.presentation.end() ? Presentation{} : found->second;
}

void ReviewerModel::setSettings(const std::string& frameID, const Presentation& settings) {
    SignalHold hold(*this);
    if (interaction_.leanPreviewTarget)
        cancelInteraction();
    auto found = view_.presentation.find(frameID);
    if (found != view_.presentation.end() && found->second == settings)
        return;
    view_.presentation[frameID] = settings;
    mark(presentationChange);
}

const dravik::SinglePhotoCoaching* ReviewerModel::currentSinglePhotoCoaching() const {
    const dravik::ReviewFrame* active = frame();
    return active ? singlePhotoCoachingFor(session_.companions, *active, pair()) : nullptr;
}

std::optional<std::string> ReviewerModel::checklistSubjectID() const {
    if (!view_.activeFrameID)
        return std::nullopt;
    return checklistSubjectFor(pair(), *view_.activeFrameID);
}

bool ReviewerModel::checklistDirectionConflict() const {
    const auto subject = checklistSubjectID();
    return subject && checklistConflicts(session_.companions, *subject, report());
}

const dravik::CoachingChecklistReview* ReviewerModel::currentCoachingChecklist() const {
    const auto subject = checklistSubjectID();
    return subject ? checklistShown(session_.companions, *subject, report()) : nullptr;
}

bool ReviewerModel::isUnsaved() const {
    const dravik::ReviewDocument* current = document();
    return current && savedRevision_ != current->revision();
}

bool ReviewerModel::hasPreview() const {
    return interaction_.previewTarget || interaction_.leanPreviewTarget ||
           interaction_.leanPlacementStart;
}

} // namespace tessary
