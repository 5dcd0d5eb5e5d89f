#include "dravik/error.h"
#include "dravik/framing.h"
#include "dravik/lean_analysis.h"
#include "dravik/store.h"
#include "fresh_uuid.h"
#include "reviewer_model.h"

#include <QFile>
#include <algorithm>

namespace tessary {

namespace {

namespace fs = std::filesystem;

bool fileExists(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

// Everything a session needs before any of it is shown.
struct SessionRead {
    std::shared_ptr<const dravik::ReviewDocument> document;
    bool reopened = false;
    fs::path reviewFile;
    std::map<std::string, dravik::LeanAnnotation> proposals;
    std::string startFrameID;
};

std::map<std::string, dravik::LeanAnnotation>
readLeanProposals(const fs::path& file, const dravik::ReviewDocument& document) {
    std::map<std::string, dravik::LeanAnnotation> accepted;
    if (!fileExists(file))
        return accepted;
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

SessionRead readSession(const fs::path& manifest, const fs::path& results) {
    SessionRead read;
    dravik::ReviewDocument raw = dravik::ReviewStore::make(manifest, results);
    read.reviewFile = manifest.parent_path() / dravik::ReviewStore::reviewFileName(raw);
    if (fileExists(read.reviewFile)) {
        // The session's photo assessments follow the manifest, not the copy saved in the review.
        read.document = std::make_shared<const dravik::ReviewDocument>(
            dravik::ReviewStore::adopt(dravik::ReviewStore::load(read.reviewFile), raw));
        read.reopened = true;
    } else {
        read.document = std::make_shared<const dravik::ReviewDocument>(std::move(raw));
    }
    read.proposals =
        readLeanProposals(manifest.parent_path() / "lean-proposals.json", *read.document);
    read.startFrameID = startingFrame(*read.document, read.proposals);
    return read;
}

} // namespace

void ReviewerModel::loadPresets() {
    Batch batch(*this);
    QFile file(QString::fromStdString(bundle_.resourcePath("launch.json").string()));
    if (!file.open(QIODevice::ReadOnly))
        return;
    if (auto decoded = decodePresets(file.readAll()))
        assign(presets_, *decoded, presetsChange);
}

void ReviewerModel::openPreset(const ReviewPreset& preset) {
    Batch batch(*this);
    if (isDetecting_ || !save())
        return;
    load(preset.manifest, preset.results);
}

void ReviewerModel::openSession() {
    Batch batch(*this);
    if (isDetecting_ || !save())
        return;
    const auto manifest = chooser_->chooseJson("Choose the session.json used for analysis");
    if (!manifest)
        return;
    const auto results = chooser_->chooseJson("Choose that run\u2019s results.json");
    if (!results)
        return;
    load(*manifest, *results);
}

void ReviewerModel::load(const fs::path& manifest, const fs::path& results) {
    Batch batch(*this);
    if (isDetecting_ || !save())
        return;

    SessionRead read;
    Photos images;
    Snapshot snapshot;
    try {
        read = readSession(manifest, results);
        images = readPhotos(*read.document, manifest);
        std::optional<std::string> startPair;
        for (const dravik::ReviewPair& candidate :
             dravik::PairReview::resolve(read.document->frames()))
            if (std::find(candidate.frameIDs.begin(), candidate.frameIDs.end(),
                          read.startFrameID) != candidate.frameIDs.end()) {
                startPair = candidate.id;
                break;
            }
        snapshot = makeSnapshot(startPair, read.document);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }

    // Nothing below can fail: the new session replaces the old one whole.
    const dravik::ReviewDocument& document = snapshot.document();
    assign(savedRevision_,
           read.reopened ? std::optional(document.revision()) : std::optional<std::int64_t>(),
           savedRevisionChange);
    cancelInteraction();
    assign(compare_, false, navigationChange);
    setImages(std::move(images));
    manifestURL_ = manifest;
    reviewURL_ = read.reviewFile;
    sessionID_ = freshUuid();

    framingRegions_.clear();
    if (const fs::path framing = manifest.parent_path() / "photo-framing.json";
        fileExists(framing)) {
        try {
            framingRegions_ = dravik::PhotoFramingRegion::load(framing, document.frames());
        } catch (const std::exception&) {
            framingRegions_.clear();
        }
    }

    singlePhotoCoaching_.clear();
    singlePhotoCoachingError_.reset();
    if (const fs::path notes = manifest.parent_path() / "single-photo-coaching.json";
        fileExists(notes)) {
        try {
            singlePhotoCoaching_ = dravik::SinglePhotoCoaching::load(notes, document.frames());
        } catch (const std::exception&) {
            singlePhotoCoachingError_ =
                "Saved photo notes could not be loaded or did not match this session. Coaching "
                "is withheld until the notes are corrected.";
        }
    }

    coachingChecklists_.clear();
    coachingChecklistError_.reset();
    if (const fs::path checklist = manifest.parent_path() / "coaching-checklist.json";
        fileExists(checklist)) {
        try {
            coachingChecklists_ = dravik::CoachingChecklist::load(checklist, document.frames());
        } catch (const std::exception&) {
            coachingChecklistError_ = "Saved checklist findings do not match this session or "
                                      "catalog. Topics need review again.";
        }
    }
    viewportCenters_.clear();
    mark(sessionChange);

    assign(activeFrameID_, std::optional(read.startFrameID), navigationChange);
    const bool hasLean = !document.leanAnnotations().empty() || !read.proposals.empty();
    setSnapshot(std::move(snapshot));
    if (!undoStack_.empty()) {
        undoStack_.clear();
        mark(undoStackChange);
    }
    assign(presentation_, std::map<std::string, Presentation>(), presentationChange);
    assign(leanProposals_, read.proposals, leanProposalsChange);
    assign(leanMode_, hasLean, viewOptionsChange);
    assign(showLean_, true, viewOptionsChange);
    if (leanMode_)
        assign(showMarkers_, false, viewOptionsChange);

    std::string text = read.reopened ? "Saved review reopened \u00b7 revision " +
                                           std::to_string(snapshot_->document().revision())
                                     : "Raw detections loaded \u00b7 nothing reviewed yet";
    if (framingRegions_.empty())
        text += " \u00b7 Framing unavailable; showing full photos";
    setMessage(text);
}

} // namespace tessary
