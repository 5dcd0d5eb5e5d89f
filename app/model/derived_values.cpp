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
    if (!active || active->role != "subject")
        return nullptr;
    if (auto current = pair(); current && current->hasReference())
        return nullptr;
    auto found = session_.companions.singlePhotoCoaching.find(active->id);
    return found == session_.companions.singlePhotoCoaching.end() ? nullptr : &found->second;
}

std::optional<std::string> ReviewerModel::checklistSubjectID() const {
    if (auto current = pair())
        return dravik::CoachingChecklist::subjectID(*current);
    return view_.activeFrameID;
}

bool ReviewerModel::checklistDirectionConflict() const {
    auto subject = checklistSubjectID();
    if (!subject)
        return false;
    auto found = session_.companions.coachingChecklists.find(*subject);
    if (found == session_.companions.coachingChecklists.end())
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
    auto found = session_.companions.coachingChecklists.find(*subject);
    return found == session_.companions.coachingChecklists.end() ? nullptr : &found->second;
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
