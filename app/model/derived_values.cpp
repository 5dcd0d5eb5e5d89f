#include "reviewer_model.h"

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

const std::vector<dravik::ReviewPair>& ReviewerModel::pairs() const {
    return pairs_;
}

std::optional<dravik::ReviewPair> ReviewerModel::pairOf(const std::string& frameID) const {
    for (const dravik::ReviewPair& candidate : pairs_)
        if (holds(candidate, frameID))
            return candidate;
    return std::nullopt;
}

std::optional<dravik::ReviewPair> ReviewerModel::pair() const {
    return activeFrameID_ ? pairOf(*activeFrameID_) : std::nullopt;
}

const dravik::ReviewFrame* ReviewerModel::frame() const {
    return activeFrameID_ ? frame(*activeFrameID_) : nullptr;
}

const dravik::ReviewFrame* ReviewerModel::frame(const std::string& id) const {
    const dravik::ReviewDocument* current = document();
    return current ? current->frame(id) : nullptr;
}

std::vector<std::string> ReviewerModel::visibleIDs() const {
    if (!activeFrameID_)
        return {};
    if (compare_)
        if (auto current = pair())
            return current->frameIDs;
    return {*activeFrameID_};
}

Presentation ReviewerModel::settings(const std::string& frameID) const {
    auto found = presentation_.find(frameID);
    return found == presentation_.end() ? Presentation{} : found->second;
}

void ReviewerModel::setSettings(const std::string& frameID, const Presentation& settings) {
    Batch batch(*this);
    if (leanPreviewTarget_)
        cancelInteraction();
    auto found = presentation_.find(frameID);
    if (found != presentation_.end() && found->second == settings)
        return;
    presentation_[frameID] = settings;
    mark(presentationChange);
}

const dravik::SinglePhotoCoaching* ReviewerModel::currentSinglePhotoCoaching() const {
    const dravik::ReviewFrame* active = frame();
    if (!active || active->role != "subject")
        return nullptr;
    if (auto current = pair(); current && current->hasReference())
        return nullptr;
    auto found = singlePhotoCoaching_.find(active->id);
    return found == singlePhotoCoaching_.end() ? nullptr : &found->second;
}

std::optional<std::string> ReviewerModel::checklistSubjectID() const {
    if (auto current = pair())
        return dravik::CoachingChecklist::subjectID(*current);
    return activeFrameID_;
}

bool ReviewerModel::checklistDirectionConflict() const {
    auto subject = checklistSubjectID();
    if (!subject)
        return false;
    auto found = coachingChecklists_.find(*subject);
    if (found == coachingChecklists_.end())
        return false;
    const dravik::PairReport* current = report();
    const auto direction =
        current ? current->effectiveCornerDirection : dravik::CornerDirection::unknown;
    return found->second.cornerDirection != direction;
}

const dravik::CoachingChecklistReview* ReviewerModel::currentCoachingChecklist() const {
    auto subject = checklistSubjectID();
    if (!subject || checklistDirectionConflict())
        return nullptr;
    auto found = coachingChecklists_.find(*subject);
    return found == coachingChecklists_.end() ? nullptr : &found->second;
}

bool ReviewerModel::isUnsaved() const {
    const dravik::ReviewDocument* current = document();
    return current && savedRevision_ != current->revision();
}

bool ReviewerModel::hasPreview() const {
    return previewTarget_ || leanPreviewTarget_ || leanPlacementStart_;
}

} // namespace tessary
