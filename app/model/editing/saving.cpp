// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "reviewer_model.h"

namespace tessary {

bool ReviewerModel::save() {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !session_.reviewURL)
        return true;
    if (savedRevision_ == current->revision())
        return true;
    // Refused when someone else changed the file since this model last read or wrote it.
    if (!writeReview(snapshot_->documentPointer, savedRevision_))
        return false;
    setMessage("Automatically saved locally \u00b7 revision " +
               std::to_string(current->revision()) + " \u00b7 corrections are 2D only");
    return true;
}

bool ReviewerModel::writeReview(std::shared_ptr<const dravik::ReviewDocument> document,
                                std::optional<std::int64_t> expected) {
    SignalHold hold(*this);
    try {
        dravik::ReviewStore::save(*document, *session_.reviewURL, expected);
    } catch (const dravik::ReviewChangedElsewhere& refusal) {
        // Saving again can only be refused again: the reviewer needs the way out.
        setError(refusal.what());
        setMessage("Unsaved changes \u2014 save failed \u00b7 Review changed elsewhere \u00b7 File "
                   "\u25b8 Merge, Reload or Save Copy");
        return false;
    } catch (const std::exception& failure) {
        setError(failure.what());
        setMessage("Unsaved changes \u2014 save failed");
        return false;
    }
    assign(savedRevision_, std::optional(document->revision()), savedRevisionChange);
    assign(unsavedEdits_, 0, savedRevisionChange);
    savedDocument_ = std::move(document);
    return true;
}

} // namespace tessary
