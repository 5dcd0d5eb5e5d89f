// SPDX-License-Identifier: Apache-2.0
#include "reviewer_model.h"

#include "dravik/joints.h"
#include "environment/fresh_uuid.h"
#include "job_queue.h"

#include <QThread>
#include <algorithm>
#include <utility>

namespace tessary {

ReviewerModel::ReviewerModel(Bundle bundle, std::shared_ptr<FileChooser> chooser, QObject* parent)
    : QObject(parent), bundle_(std::move(bundle)), chooser_(std::move(chooser)),
      reviewEncoder_(std::make_unique<JobQueue>(1, 1)),
      // One core is left to the window; the queue holds no more than a few steps' neighbours.
      decoder_(std::make_unique<JobQueue>(std::max(1, QThread::idealThreadCount() - 1), 8)) {
    interaction_.canvasGeneration = freshUuid();
    session_.sessionID = freshUuid();
}

ReviewerModel::~ReviewerModel() = default;

ReviewerModel::SignalHold::~SignalHold() {
    if (--model_.holdDepth_ == 0)
        model_.flush();
}

void ReviewerModel::mark(std::uint32_t changes) {
    pending_ |= changes;
    if (holdDepth_ == 0)
        flush();
}

void ReviewerModel::flush() {
    // A listener may start another operation; that one flushes its own changes.
    while (pending_ != 0) {
        const std::uint32_t changes = std::exchange(pending_, 0);
        const std::pair<Change, void (ReviewerModel::*)()> signalsInOrder[] = {
            {presetsChange, &ReviewerModel::presetsChanged},
            {detectingChange, &ReviewerModel::detectingChanged},
            {discoveryChange, &ReviewerModel::discoveryChanged},
            {sessionChange, &ReviewerModel::sessionChanged},
            {snapshotChange, &ReviewerModel::snapshotChanged},
            {navigationChange, &ReviewerModel::navigationChanged},
            {imagesChange, &ReviewerModel::imagesChanged},
            {viewOptionsChange, &ReviewerModel::viewOptionsChanged},
            {interactionChange, &ReviewerModel::interactionChanged},
            {selectionChange, &ReviewerModel::selectionChanged},
            {presentationChange, &ReviewerModel::presentationChanged},
            {savedRevisionChange, &ReviewerModel::savedRevisionChanged},
            {messageChange, &ReviewerModel::messageChanged},
            {errorChange, &ReviewerModel::errorChanged},
            {undoStackChange, &ReviewerModel::undoStackChanged},
            {leanProposalsChange, &ReviewerModel::leanProposalsChanged},
        };
        for (const auto& [change, signal] : signalsInOrder)
            if (changes & change)
                (this->*signal)();
        emit changed();
    }
}

void ReviewerModel::setSnapshot(Snapshot snapshot) {
    snapshot_ = std::move(snapshot);
    mark(snapshotChange);
}

void ReviewerModel::setImages(std::map<std::string, FramePhoto> photos) {
    // A photo kept on screen is the same shared picture, which views need not redraw.
    const bool same = std::equal(photos_.shown.begin(), photos_.shown.end(), photos.begin(),
                                 photos.end(), [](const auto& a, const auto& b) {
                                     return a.first == b.first &&
                                            a.second.image.cacheKey() == b.second.image.cacheKey();
                                 });
    std::set<std::string> onScreen;
    for (const auto& [id, photo] : photos)
        onScreen.insert(id);
    photos_.cache.pin(onScreen);
    photos_.shown = std::move(photos);
    if (!same)
        mark(imagesChange);
}

void ReviewerModel::setMessage(const std::string& text) {
    assign(message_, text, messageChange);
}

void ReviewerModel::setError(const std::string& text) {
    assign(error_, std::optional<std::string>(text), errorChange);
}

void ReviewerModel::pushUndo(ReviewUndo entry) {
    undoStack_.push_back(std::move(entry));
    mark(undoStackChange);
}

void ReviewerModel::renewCanvasGeneration() {
    interaction_.canvasGeneration = freshUuid();
    mark(interactionChange);
}

void ReviewerModel::setViewportCenter(const std::string& frameID, const dravik::Point2& center) {
    view_.viewportCenters[frameID] = center;
}

void ReviewerModel::setShowMarkers(bool on) {
    SignalHold hold(*this);
    assign(view_.showMarkers, on, viewOptionsChange);
}

void ReviewerModel::setInspectorVisible(bool on) {
    SignalHold hold(*this);
    assign(view_.inspectorVisible, on, viewOptionsChange);
}

void ReviewerModel::setSelected(const std::string& joint) {
    SignalHold hold(*this);
    if (dravik::InspectionRenderer::jointID(joint))
        assign(view_.selected, joint, selectionChange);
}

void ReviewerModel::setPlacing(bool on) {
    SignalHold hold(*this);
    assign(interaction_.placing, on, interactionChange);
}

void ReviewerModel::setPreviewTarget(const std::optional<dravik::ReviewEditTarget>& target) {
    SignalHold hold(*this);
    assign(interaction_.previewTarget, target, interactionChange);
}

void ReviewerModel::setHighlightedJoints(const std::set<std::string>& joints) {
    SignalHold hold(*this);
    assign(interaction_.highlightedJoints, joints, interactionChange);
}

void ReviewerModel::setShowLean(bool on) {
    SignalHold hold(*this);
    assign(view_.showLean, on, viewOptionsChange);
}

void ReviewerModel::setSelectedLeanHandle(dravik::LeanHandle handle) {
    SignalHold hold(*this);
    assign(view_.selectedLeanHandle, handle, selectionChange);
}

void ReviewerModel::setLeanPreviewTarget(const std::optional<LeanEditTarget>& target) {
    SignalHold hold(*this);
    assign(interaction_.leanPreviewTarget, target, interactionChange);
}

void ReviewerModel::clearError() {
    SignalHold hold(*this);
    assign(error_, std::nullopt, errorChange);
}

} // namespace tessary
