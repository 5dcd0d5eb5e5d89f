// SPDX-License-Identifier: Apache-2.0
#include "opening/session_reading.h"

#include "dravik/coaching.h"
#include "dravik/error.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/pairs.h"
#include "dravik/session_review.h"

#include <algorithm>
#include <functional>

namespace tessary {

namespace {

namespace fs = std::filesystem;

bool fileExists(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

// Reads `file` beside the manifest with `read` when it exists. The policy says what a failure
// means; the notice is what the panel shows for withheld data.
template <class T>
T readCompanion(const fs::path& file, CompanionFailure policy,
                const std::function<T(const fs::path&)>& read,
                std::optional<std::string>* withheld = nullptr, const char* notice = nullptr) {
    if (!fileExists(file))
        return T{};
    try {
        return read(file);
    } catch (const std::exception&) {
        if (policy == CompanionFailure::refuseSession)
            throw;
        if (policy == CompanionFailure::withholdWithNotice && withheld)
            *withheld = notice;
        return T{};
    }
}

std::map<std::string, dravik::LeanAnnotation>
acceptedProposals(const fs::path& file, const dravik::ReviewDocument& document) {
    std::map<std::string, dravik::LeanAnnotation> accepted;
    for (dravik::LeanAnnotation& proposal : dravik::loadLeanProposals(file)) {
        const dravik::ReviewFrame* frame = document.frame(proposal.frameID);
        if (!frame || accepted.contains(proposal.frameID))
            throw dravik::DravikError("Invalid or duplicate lean proposal frame.");
        proposal.validate(*frame);
        std::string id = proposal.frameID;
        accepted.emplace(std::move(id), std::move(proposal));
    }
    return accepted;
}

// The first frame whose proposal would change what the document holds: that is where the
// reviewer has work waiting.
std::string startingFrame(const dravik::ReviewDocument& document,
                          const std::map<std::string, dravik::LeanAnnotation>& proposals) {
    if (document.frames().empty())
        throw dravik::DravikError("No frames to review.");
    for (const dravik::ReviewFrame& frame : document.frames()) {
        auto proposal = proposals.find(frame.id);
        if (proposal == proposals.end())
            continue;
        const dravik::LeanAnnotation* saved = document.leanAnnotation(frame.id);
        if (!saved || !(*saved == proposal->second))
            return frame.id;
    }
    return document.frames().front().id;
}

std::optional<std::string> pairHolding(const dravik::ReviewDocument& document,
                                       const std::string& frameID) {
    for (const dravik::ReviewPair& candidate : dravik::PairReview::resolve(document.frames()))
        if (std::find(candidate.frameIDs.begin(), candidate.frameIDs.end(), frameID) !=
            candidate.frameIDs.end())
            return candidate.id;
    return std::nullopt;
}

CompanionFiles readCompanions(const fs::path& folder, const dravik::ReviewDocument& document) {
    const auto& frames = document.frames();
    CompanionFiles read;
    read.framingRegions = readCompanion<std::map<std::string, dravik::PixelRect>>(
        folder / "photo-framing.json", CompanionFailure::showWithout,
        [&](const fs::path& file) { return dravik::PhotoFramingRegion::load(file, frames); });
    read.singlePhotoCoaching = readCompanion<std::map<std::string, dravik::SinglePhotoCoaching>>(
        folder / "single-photo-coaching.json", CompanionFailure::withholdWithNotice,
        [&](const fs::path& file) { return dravik::SinglePhotoCoaching::load(file, frames); },
        &read.singlePhotoCoachingError,
        "Saved photo notes could not be loaded or did not match this session. Coaching is "
        "withheld until the notes are corrected.");
    read.coachingChecklists = readCompanion<std::map<std::string, dravik::CoachingChecklistReview>>(
        folder / "coaching-checklist.json", CompanionFailure::withholdWithNotice,
        [&](const fs::path& file) { return dravik::CoachingChecklist::load(file, frames); },
        &read.coachingChecklistError,
        "Saved checklist findings do not match this session or catalog. Topics need review "
        "again.");
    return read;
}

} // namespace

SessionRead readSession(const fs::path& manifest, const fs::path& results) {
    SessionRead read;
    const fs::path folder = manifest.parent_path();
    dravik::SessionReview review = dravik::SessionReview::open(manifest, results);
    read.reviewFile = review.file;
    read.reopened = review.saved;
    read.title = review.title;
    read.document = std::make_shared<const dravik::ReviewDocument>(std::move(review.document));
    read.proposals = readCompanion<std::map<std::string, dravik::LeanAnnotation>>(
        folder / "lean-proposals.json", CompanionFailure::refuseSession,
        [&](const fs::path& file) { return acceptedProposals(file, *read.document); });
    read.startFrameID = startingFrame(*read.document, read.proposals);
    read.startPairID = pairHolding(*read.document, read.startFrameID);
    read.companions = readCompanions(folder, *read.document);
    return read;
}

std::string openingMessage(const SessionRead& read) {
    std::string text = read.reopened ? "Saved review reopened \u00b7 revision " +
                                           std::to_string(read.document->revision())
                                     : "Raw detections loaded \u00b7 nothing reviewed yet";
    if (read.companions.framingRegions.empty())
        text += " \u00b7 Framing unavailable; showing full photos";
    return text;
}

std::string namingSession(std::string message, const fs::path& manifest) {
    const std::string named = "\u201c" + manifest.filename().string() + "\u201d";
    const auto at = message.find(named);
    if (at == std::string::npos || message.compare(at + named.size(), 4, " of ") == 0)
        return message;
    std::string title;
    try {
        title = dravik::SessionManifest::load(manifest).title;
    } catch (const std::exception&) {
        // The manifest is what failed; its folder names the session.
    }
    if (title.empty())
        title = manifest.parent_path().filename().string();
    if (title.empty())
        return message;
    message.insert(at + named.size(), " of \u201c" + title + "\u201d");
    return message;
}

} // namespace tessary
