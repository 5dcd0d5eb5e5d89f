#include "reviewer_model.h"

#include "dravik/joints.h"
#include "fresh_uuid.h"

#include <algorithm>
#include <utility>

namespace tessary {

ReviewerModel::ReviewerModel(Bundle bundle, std::shared_ptr<FileChooser> chooser, QObject* parent)
    : QObject(parent), bundle_(std::move(bundle)), chooser_(std::move(chooser)),
      canvasGeneration_(freshUuid()), sessionID_(freshUuid()) {}

ReviewerModel::~ReviewerModel() = default;

ReviewerModel::Batch::~Batch() {
    if (--model_.batchDepth_ == 0)
        model_.flush();
}

void ReviewerModel::mark(std::uint32_t changes) {
    pending_ |= changes;
    if (batchDepth_ == 0)
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
    std::vector<dravik::ReviewPair> pairs;
    try {
        pairs = dravik::PairReview::resolve(snapshot.document().frames());
    } catch (const std::exception&) {
        // A document whose pairs cannot be resolved is still shown, frame by frame.
    }
    snapshot_ = std::move(snapshot);
    pairs_ = std::move(pairs);
    mark(snapshotChange);
}

void ReviewerModel::setImages(Photos photos) {
    // A photo kept on screen is the same shared picture, which views need not redraw.
    const bool same =
        std::equal(images_.begin(), images_.end(), photos.images.begin(), photos.images.end(),
                   [](const auto& a, const auto& b) {
                       return a.first == b.first && a.second.cacheKey() == b.second.cacheKey();
                   });
    images_ = std::move(photos.images);
    imageStamps_ = std::move(photos.stamps);
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
    canvasGeneration_ = freshUuid();
    mark(interactionChange);
}

void ReviewerModel::setViewportCenter(const std::string& frameID, const dravik::Point2& center) {
    viewportCenters_[frameID] = center;
}

void ReviewerModel::setShowMarkers(bool on) {
    Batch batch(*this);
    assign(showMarkers_, on, viewOptionsChange);
}

void ReviewerModel::setInspectorVisible(bool on) {
    Batch batch(*this);
    assign(inspectorVisible_, on, viewOptionsChange);
}

void ReviewerModel::setSelected(const std::string& joint) {
    Batch batch(*this);
    if (dravik::InspectionRenderer::jointID(joint))
        assign(selected_, joint, selectionChange);
}

void ReviewerModel::setPlacing(bool on) {
    Batch batch(*this);
    assign(placing_, on, interactionChange);
}

void ReviewerModel::setPreviewTarget(const std::optional<dravik::ReviewEditTarget>& target) {
    Batch batch(*this);
    assign(previewTarget_, target, interactionChange);
}

void ReviewerModel::setHighlightedJoints(const std::set<std::string>& joints) {
    Batch batch(*this);
    assign(highlightedJoints_, joints, interactionChange);
}

void ReviewerModel::setShowLean(bool on) {
    Batch batch(*this);
    assign(showLean_, on, viewOptionsChange);
}

void ReviewerModel::setSelectedLeanHandle(dravik::LeanHandle handle) {
    Batch batch(*this);
    assign(selectedLeanHandle_, handle, selectionChange);
}

void ReviewerModel::setLeanPreviewTarget(const std::optional<LeanEditTarget>& target) {
    Batch batch(*this);
    assign(leanPreviewTarget_, target, interactionChange);
}

void ReviewerModel::clearError() {
    Batch batch(*this);
    assign(error_, std::optional<std::string>(), errorChange);
}

void ReviewerModel::cancelInteraction() {
    Batch batch(*this);
    assign(previewTarget_, std::optional<dravik::ReviewEditTarget>(), interactionChange);
    assign(placing_, false, interactionChange);
    renewCanvasGeneration();
    assign(highlightedJoints_, std::set<std::string>(), interactionChange);
    assign(leanPreviewTarget_, std::optional<LeanEditTarget>(), interactionChange);
    assign(leanPlacement_, std::optional<dravik::LeanHandle>(), interactionChange);
    assign(leanPlacementStart_, std::optional<dravik::Point2>(), interactionChange);
}

} // namespace tessary
