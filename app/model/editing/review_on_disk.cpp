// SPDX-License-Identifier: Apache-2.0
#include "editing/review_on_disk.h"

#include "dravik/atomic_file.h"
#include "dravik/session_files.h"
#include "dravik/store.h"
#include "reviewer_model.h"

namespace tessary {

namespace fs = std::filesystem;

namespace {

bool fileExists(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

} // namespace

void ReviewerModel::saveCopy() {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !session_.manifestURL || !session_.resultsURL)
        return;
    // Beside the session, under a name its own review can never have.
    const fs::path suggested =
        session_.manifestURL->parent_path() /
        ("review-copy-revision-" + std::to_string(current->revision()) + ".json");
    const auto target =
        chooser_->chooseSaveFile("Save a copy of this review", suggested, "JSON (*.json)");
    if (!target)
        return;
    try {
        dravik::SessionFiles::refuseAsTarget(*target, *session_.manifestURL, *session_.resultsURL,
                                             *current);
        dravik::writeFileAtomically(*target, dravik::ReviewStore::encode(*current));
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    std::string text = "Review copy saved as \u201c" + target->filename().string() + "\u201d";
    if (unsavedEdits_ > 0)
        text += " \u00b7 the session\u2019s own review is still unsaved";
    setMessage(text);
}

void ReviewerModel::reloadFromDisk() {
    SignalHold hold(*this);
    if (isDetecting_ || !document() || !session_.manifestURL || !session_.resultsURL)
        return;
    // Copies: reopening replaces the session these paths belong to.
    const fs::path manifest = *session_.manifestURL;
    const fs::path results = *session_.resultsURL;
    reopen(manifest, results);
}

std::optional<PendingMerge> ReviewerModel::prepareMerge() {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (isDetecting_ || !current || !session_.reviewURL || !savedDocument_)
        return std::nullopt;
    std::optional<dravik::ReviewDocument> theirs;
    try {
        // Read as an opening reads it: checked against the session, with the manifest's names
        // and photo assessments (which the base holds from the opening).
        if (fileExists(*session_.reviewURL))
            theirs = dravik::ReviewStore::adopt(dravik::ReviewStore::load(*session_.reviewURL),
                                                *savedDocument_);
        // Nobody else wrote the file: this window's document goes there as it is.
        if (!theirs || theirs->revision() == savedRevision_) {
            if (save())
                setMessage("No changes elsewhere to merge \u00b7 revision " +
                           std::to_string(current->revision()) + " saved");
            return std::nullopt;
        }
        return PendingMerge{dravik::ReviewMerge(*savedDocument_, *current, std::move(*theirs)),
                            session_.sessionID, snapshot_->documentPointer};
    } catch (const std::exception& failure) {
        setError(failure.what());
        return std::nullopt;
    }
}

void ReviewerModel::applyMerge(const PendingMerge& pending) {
    SignalHold hold(*this);
    if (!document() || pending.sessionID != session_.sessionID ||
        pending.mine != snapshot_->documentPointer) {
        setError("The review in this window changed while the merge was being settled, so nothing "
                 "was merged; merge again.");
        return;
    }
    std::shared_ptr<const dravik::ReviewDocument> merged;
    Snapshot snapshot;
    try {
        merged = std::make_shared<const dravik::ReviewDocument>(pending.merge.merged());
        const auto current = pair();
        snapshot = snapshotOf(merged, current ? std::optional(current->id) : std::nullopt);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    // Expecting the revision the merge was made from: a writer who saved since is not overwritten.
    if (!writeReview(merged, pending.merge.expectedRevision()))
        return;
    cancelInteraction();
    setSnapshot(std::move(snapshot));
    // The undo records describe changes to a document that is gone; undoing one now could put
    // back over the other writer's work what they replaced.
    if (!undoStack_.empty()) {
        undoStack_.clear();
        mark(undoStackChange);
    }
    setMessage("Merged with the review on disk \u00b7 revision " +
               std::to_string(merged->revision()) + " saved");
}

} // namespace tessary
