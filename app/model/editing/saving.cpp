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
    try {
        // Refused when someone else changed the file since this model last read or wrote it.
        dravik::ReviewStore::save(*current, *session_.reviewURL, savedRevision_);
    } catch (const std::exception& failure) {
        setError(failure.what());
        setMessage("Unsaved changes \u2014 save failed");
        return false;
    }
    assign(savedRevision_, std::optional(current->revision()), savedRevisionChange);
    setMessage("Automatically saved locally \u00b7 revision " +
               std::to_string(current->revision()) + " \u00b7 corrections are 2D only");
    return true;
}

} // namespace tessary
