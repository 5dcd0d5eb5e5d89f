// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/manifest.h"
#include "opening/session_reading.h"
#include "reviewer_model.h"

namespace tessary {

std::optional<dravik::SessionArrangement> ReviewerModel::arrangement() {
    SignalHold hold(*this);
    if (!session_.manifestURL || !document())
        return std::nullopt;
    try {
        return dravik::SessionArrangement::of(dravik::SessionManifest::load(*session_.manifestURL));
    } catch (const std::exception& failure) {
        setError(namingSession(failure.what(), *session_.manifestURL));
        return std::nullopt;
    }
}

dravik::ArrangementEffect
ReviewerModel::previewArrangement(const dravik::SessionArrangement& arrangement) const {
    if (!session_.manifestURL || !session_.resultsURL)
        throw dravik::DravikError("No session is open to arrange.");
    return arrangement.preview(*session_.manifestURL, *session_.resultsURL);
}

bool ReviewerModel::arrange(const dravik::SessionArrangement& arrangement) {
    SignalHold hold(*this);
    // A retry would answer into frames that are about to be renamed; discovery may be writing the
    // session's results.
    if (isDetecting_ || isDiscovering_ || !session_.manifestURL || !session_.resultsURL)
        return false;
    if (!save())
        return false;
    const std::filesystem::path manifest = *session_.manifestURL;
    const std::filesystem::path results = *session_.resultsURL;
    try {
        arrangement.apply(manifest, results);
    } catch (const std::exception& failure) {
        setError(namingSession(failure.what(), manifest));
        return false;
    }
    // Opened as any session is, with all its checks; a failure leaves the old one on screen.
    const dravik::Uuid before = session_.sessionID;
    load(manifest, results);
    if (session_.sessionID == before)
        return false;
    setMessage("Session arranged \u00b7 " + message_);
    return true;
}

} // namespace tessary
