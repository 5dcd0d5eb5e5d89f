// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/store.h"
#include "editing/snapshot_building.h"
#include "environment/fresh_uuid.h"
#include "job_queue.h"
#include "opening/session_reading.h"
#include "photos/photo_decoding.h"
#include "reviewer_model.h"

#include <future>

namespace tessary {

namespace fs = std::filesystem;

void ReviewerModel::loadPresets() {
    SignalHold hold(*this);
    if (auto read = readPresets(bundle_.resourcePath("launch.json")))
        assign(presets_, *read, presetsChange);
}

void ReviewerModel::openPreset(const ReviewPreset& preset) {
    SignalHold hold(*this);
    if (isDetecting_ || !save())
        return;
    load(preset.manifest, preset.results);
}

void ReviewerModel::openSession() {
    SignalHold hold(*this);
    if (isDetecting_ || !save())
        return;
    // The chooser starts where the reviewer is: the open session's folder, else the data folder.
    const fs::path startIn = session_.manifestURL ? session_.manifestURL->parent_path()
                                                  : bundle_.dataDirectory().value_or(fs::path());
    const auto manifest =
        chooser_->chooseJson("Choose the session.json used for analysis", startIn);
    if (!manifest)
        return;
    const auto results =
        chooser_->chooseJson("Choose that run\u2019s results.json", manifest->parent_path());
    if (!results)
        return;
    load(*manifest, *results);
}

void ReviewerModel::load(const fs::path& manifest, const fs::path& results) {
    SignalHold hold(*this);
    if (isDetecting_ || !save())
        return;
    reopen(manifest, results);
}

std::future<std::optional<DecodedPhoto>>
ReviewerModel::decodeWhileVerifying(const dravik::ReviewDocument& document,
                                    const std::string& frameID,
                                    const std::filesystem::path& manifest) const {
    const dravik::ReviewFrame* frame = document.frame(frameID);
    std::optional<dravik::VerifiedPhoto> photo;
    try {
        if (frame)
            photo = dravik::verifyFramePhoto(*frame, manifest);
    } catch (const std::exception&) {
        // Verifying them all says which photo fails first.
    }
    if (!photo)
        return std::async(std::launch::deferred, [] { return std::optional<DecodedPhoto>(); });
    const double density = learnedDensity_.value_or(fittedDensity(*photo));
    return std::async(std::launch::async, [frame = *frame, photo = *photo, density] {
        try {
            return std::optional(decodePhoto(frame, photo, scaleFor(photo, density)));
        } catch (const std::exception&) {
            return std::optional<DecodedPhoto>(); // decoded again when shown, which says why
        }
    });
}

void ReviewerModel::reopen(const fs::path& manifest, const fs::path& results) {
    SignalHold hold(*this);
    SessionRead read;
    PhotoState photos;
    std::map<std::string, FramePhoto> shown;
    Snapshot snapshot;
    try {
        read = readSession(manifest, results);
        // Every photo is checked now; only the first one shown is decoded, while the others are
        // checked, which leaves a core idle as their threads finish.
        std::future<std::optional<DecodedPhoto>> first =
            decodeWhileVerifying(*read.document, read.startFrameID, manifest);
        photos = verifyPhotos(*read.document, manifest, photoBudget_);
        if (std::optional<DecodedPhoto> decoded = first.get())
            photos.cache.insert(read.startFrameID, std::move(*decoded));
        shown = photosFor(photos, *read.document, {read.startFrameID});
        snapshot = buildSnapshot(read.document, read.startPairID, read.proposals);
    } catch (const std::exception& failure) {
        setError(namingSession(failure.what(), manifest));
        return;
    }

    // Nothing below can fail: the new session replaces the old one whole.
    const std::string opened = openingMessage(read);
    assign(savedRevision_, read.reopened ? std::optional(read.document->revision()) : std::nullopt,
           savedRevisionChange);
    savedDocument_ = read.document;
    assign(unsavedEdits_, 0, savedRevisionChange);
    cancelInteraction();
    assign(view_.compare, false, navigationChange);
    withdrawDecodes({});
    photos_ = std::move(photos);
    setImages(std::move(shown));
    session_ = SessionState{freshUuid(),
                            read.title,
                            manifest,
                            read.reviewFile,
                            std::move(read.companions),
                            session_.leanProposals,
                            results};
    view_.viewportCenters.clear();
    mark(sessionChange);

    assign(view_.activeFrameID, std::optional(read.startFrameID), navigationChange);
    const bool hasLean = !read.document->leanAnnotations().empty() || !read.proposals.empty();
    setSnapshot(std::move(snapshot));
    if (!undoStack_.empty()) {
        undoStack_.clear();
        mark(undoStackChange);
    }
    assign(view_.presentation, {}, presentationChange);
    assign(session_.leanProposals, read.proposals, leanProposalsChange);
    assign(view_.leanMode, hasLean, viewOptionsChange);
    assign(view_.showLean, true, viewOptionsChange);
    if (view_.leanMode)
        assign(view_.showMarkers, false, viewOptionsChange);
    setMessage(opened);
    prefetchNeighbours();
    // The store keeps each frame's text once encoded; encoding the review now, off this thread,
    // makes the first edit's save cost what later ones do.
    reviewEncoder_->submit({"review", 0, [document = read.document] {
                                try {
                                    (void)dravik::ReviewStore::encode(*document);
                                } catch (const std::exception&) {
                                    // The first save says what is wrong, as it would anyway.
                                }
                            }});
}

} // namespace tessary
