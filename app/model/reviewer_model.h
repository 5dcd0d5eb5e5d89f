// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/coaching.h"
#include "dravik/coco_export.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/geometry.h"
#include "dravik/lean.h"
#include "dravik/pairs.h"
#include "dravik/review.h"
#include "dravik/session_arrangement.h"
#include "dravik/uuid.h"
#include "editing/commit.h"
#include "editing/review_on_disk.h"
#include "environment/bundle.h"
#include "environment/file_chooser.h"
#include "exporting/report_source.h"
#include "opening/review_preset.h"
#include "state/interaction_state.h"
#include "state/lean_edit_target.h"
#include "state/photo_state.h"
#include "state/presentation.h"
#include "state/review_undo.h"
#include "state/session_state.h"
#include "state/snapshot.h"
#include "state/view_state.h"

#include <QImage>
#include <QObject>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace tessary {

class JobQueue;

// The one observable model of the review window. Every field is read and written on the GUI
// thread. Each operation changes the state first and signals afterwards, once per concern, so a
// listener always sees a consistent model; a listener that redraws on the signals of what it
// shows never misses a change.
//
// The state is kept in parts (state/): the open session with its companion files, the view
// (active photo, modes, per-photo settings) and the interaction in progress. Operations live in
// the folder of their concern: opening/, editing/ (every document change goes through commit),
// detection/ (the batch program's answers).
class ReviewerModel : public QObject {
    Q_OBJECT

  public:
    using Snapshot = tessary::Snapshot;
    using Presentation = tessary::Presentation;

    ReviewerModel(Bundle bundle, std::shared_ptr<FileChooser> chooser, QObject* parent = nullptr);
    ~ReviewerModel() override;

    // Published state.
    bool isDetecting() const { return isDetecting_; }
    const std::vector<ReviewPreset>& presets() const { return presets_; }
    bool isDiscovering() const { return isDiscovering_; }
    const std::string& discoveryStatus() const { return discoveryStatus_; }
    const std::vector<std::string>& discoveryFailures() const { return discoveryFailures_; }
    // Files of the last imported folder that were not imported, each a sentence naming it.
    const std::vector<std::string>& unusablePhotos() const { return unusablePhotos_; }
    const std::optional<Snapshot>& snapshot() const { return snapshot_; }
    bool compare() const { return view_.compare; }
    bool showMarkers() const { return view_.showMarkers; }
    bool inspectorVisible() const { return view_.inspectorVisible; }
    // The photos on screen by frame id, each at the sharpest resolution decoded so far.
    const std::map<std::string, FramePhoto>& images() const { return photos_.shown; }
    const dravik::Uuid& canvasGeneration() const { return interaction_.canvasGeneration; }
    const std::optional<dravik::ReviewEditTarget>& previewTarget() const {
        return interaction_.previewTarget;
    }
    const std::set<std::string>& highlightedJoints() const {
        return interaction_.highlightedJoints;
    }
    std::optional<std::int64_t> savedRevision() const { return savedRevision_; }
    // Changes committed since the review file last took this window's document: what quitting or
    // reloading would throw away.
    int unsavedEdits() const { return unsavedEdits_; }
    const std::map<std::string, Presentation>& presentation() const { return view_.presentation; }
    const std::optional<std::string>& activeFrameID() const { return view_.activeFrameID; }
    const std::string& selected() const { return view_.selected; }
    bool placing() const { return interaction_.placing; }
    const std::string& message() const { return message_; }
    const std::optional<std::string>& error() const { return error_; }
    const std::vector<ReviewUndo>& undoStack() const { return undoStack_; }
    bool leanMode() const { return view_.leanMode; }
    bool showLean() const { return view_.showLean; }
    dravik::LeanHandle selectedLeanHandle() const { return view_.selectedLeanHandle; }
    const std::optional<LeanEditTarget>& leanPreviewTarget() const {
        return interaction_.leanPreviewTarget;
    }
    std::optional<dravik::LeanHandle> leanPlacement() const { return interaction_.leanPlacement; }
    const std::optional<dravik::Point2>& leanPlacementStart() const {
        return interaction_.leanPlacementStart;
    }
    const std::map<std::string, dravik::LeanAnnotation>& leanProposals() const {
        return session_.leanProposals;
    }

    // Per-session state that changes only when a session opens (signalled by sessionChanged).
    const dravik::Uuid& sessionID() const { return session_.sessionID; }
    const std::string& sessionTitle() const { return session_.title; }
    const std::optional<std::filesystem::path>& manifestURL() const { return session_.manifestURL; }
    const std::map<std::string, dravik::PixelRect>& framingRegions() const {
        return session_.companions.framingRegions;
    }
    const std::map<std::string, dravik::SinglePhotoCoaching>& singlePhotoCoaching() const {
        return session_.companions.singlePhotoCoaching;
    }
    const std::optional<std::string>& singlePhotoCoachingError() const {
        return session_.companions.singlePhotoCoachingError;
    }
    const std::map<std::string, dravik::CoachingChecklistReview>& coachingChecklists() const {
        return session_.companions.coachingChecklists;
    }
    const std::optional<std::string>& coachingChecklistError() const {
        return session_.companions.coachingChecklistError;
    }
    // Remembered viewport centres; views write them while scrolling, nobody is told.
    const std::map<std::string, dravik::Point2>& viewportCenters() const {
        return view_.viewportCenters;
    }
    void setViewportCenter(const std::string& frameID, const dravik::Point2& center);

    // Fields the views set directly.
    void setShowMarkers(bool on);
    void setInspectorVisible(bool on);
    void setSelected(const std::string& joint); // ignores names that are not joints
    void setPlacing(bool on);
    void setPreviewTarget(const std::optional<dravik::ReviewEditTarget>& target);
    void setHighlightedJoints(const std::set<std::string>& joints);
    void setShowLean(bool on);
    void setSelectedLeanHandle(dravik::LeanHandle handle);
    void setLeanPreviewTarget(const std::optional<LeanEditTarget>& target);
    void clearError();

    // Derived values, computed from the state above (derived_values.cpp).
    const dravik::ReviewDocument* document() const;
    const dravik::PairReport* report() const;
    const dravik::LeanReport* leanReport() const;
    const std::vector<dravik::ReviewPair>& pairs() const; // empty when they cannot be resolved
    std::optional<dravik::ReviewPair> pair() const;       // the pair of the active frame
    const dravik::ReviewFrame* frame() const;             // the active frame
    const dravik::ReviewFrame* frame(const std::string& id) const;
    std::vector<std::string> visibleIDs() const;
    Presentation settings(const std::string& frameID) const;
    void setSettings(const std::string& frameID, const Presentation& settings);
    const dravik::SinglePhotoCoaching* currentSinglePhotoCoaching() const;
    std::optional<std::string> checklistSubjectID() const;
    bool checklistDirectionConflict() const;
    const dravik::CoachingChecklistReview* currentCoachingChecklist() const;
    bool isUnsaved() const;
    bool hasPreview() const;

    // Decoded photos (photos/photo_display.cpp). Opening verifies every photo and decodes only
    // the ones shown; the rest are decoded when first shown, or before that in the background for
    // the neighbours of the frames on screen, and kept within a budget of decoded bytes.
    //
    // A canvas shows `frameID` at `density` device pixels per source pixel: when the picture held
    // is coarser, a sharper one is decoded in the background and announced by imagesChanged.
    void requestPhotoDetail(const std::string& frameID, double density);
    std::uint64_t photoBudget() const { return photoBudget_; }
    void setPhotoBudget(std::uint64_t bytes);
    std::uint64_t photoBytes() const { return photos_.cache.bytes(); }
    // Background decodes asked for whose pictures have not arrived yet.
    bool isDecodingPhotos() const { return !photos_.decoding.empty(); }

    // Opening sessions (opening/session_opening.cpp).
    void loadPresets();
    void openPreset(const ReviewPreset& preset);
    void openSession();
    void load(const std::filesystem::path& manifest, const std::filesystem::path& results);
    void activate(const std::string& frameID);

    // Arranging the open session: who rides in each photo and which photos are compared
    // (opening/arrangement.cpp). The arrangement as the session's manifest says now; none, with
    // `error` set, when it cannot be read.
    std::optional<dravik::SessionArrangement> arrangement();
    // What applying `arrangement` would do and drop; throws a DravikError sentence.
    dravik::ArrangementEffect
    previewArrangement(const dravik::SessionArrangement& arrangement) const;
    // Saves, rewrites the session's files and reopens it on them; false, with `error`, when that
    // failed and the open session stays as it was.
    bool arrange(const dravik::SessionArrangement& arrangement);

    // Joint editing and the pair's context (editing/joint_editing.cpp).
    dravik::ReviewEditTarget target(const std::string& frameID, const std::string& joint) const;
    bool valid(const dravik::ReviewEditTarget& target) const;
    void edit(std::optional<dravik::Point2> point, dravik::JointReviewState state,
              const std::optional<dravik::ReviewEditTarget>& target = std::nullopt);
    void setState(dravik::JointReviewState state);
    void nudge(double dx, double dy, const std::string& frameID);
    void updateContext(dravik::PairContext context);

    // Undo and saving (editing/undo.cpp, editing/saving.cpp).
    void undo();
    bool save();

    // Ways out of a save refused because the file changed elsewhere (editing/review_on_disk.cpp):
    // the document to a file the reviewer chooses, the file's review instead of this window's,
    // or both merged. Settling a merge's conflicts is the view's part.
    void saveCopy();
    void reloadFromDisk();
    std::optional<PendingMerge> prepareMerge();
    void applyMerge(const PendingMerge& pending);

    // Moving between photos and modes (editing/navigation.cpp).
    void selectFrame(std::int64_t index);
    void selectPair(const std::string& pairID);
    // The next (+1) or previous (−1) photo in the sidebar's order, or pair with a reference in
    // Compare; nothing at either end.
    void step(int direction);
    void setCompare(bool on);
    void cancelInteraction();

    // Lean editing (editing/lean_editing.cpp).
    std::optional<dravik::LeanAnnotation> lean(const std::string& frameID) const;
    // The measurement of lines being dragged, which the snapshot cannot know yet.
    std::optional<dravik::LeanMeasurement> measureLean(const dravik::LeanAnnotation& lines) const;
    LeanEditTarget leanTarget(const std::string& frameID) const;
    bool validLean(const LeanEditTarget& target) const;
    void commitLean(const dravik::LeanAnnotation& annotation, const LeanEditTarget& target);
    void changeLean(const std::function<void(dravik::LeanAnnotation&)>& mutation);
    void setLeanMode(bool on);
    void beginLeanPlacement(bool reference);
    void placeLean(const dravik::Point2& point, const std::string& frameID);
    void nudgeLean(double dx, double dy);
    void updateLeanContext(dravik::LeanPairContext context, bool approve = false);

    // Exporting the saved review for others (exporting/exporting.cpp). Each asks for the file to
    // write through the chooser, refuses while the review on screen is not saved, and reports in
    // the status line, or in `error` when it fails.
    void exportCocoKeypoints(const dravik::CocoExportOptions& options = {});
    // The report of what the window shows: the pair compared in Compare mode, else the photo.
    void exportCoachingReport(const CoachingReportWriter& write);

    // Detection retry and session discovery (detection/): the batch program runs on a background
    // thread and its answer comes back to the GUI thread.
    // How long the batch program may run before it is stopped; tests shorten these.
    struct BatchLimits {
        std::chrono::milliseconds poll{100};
        std::chrono::milliseconds retryTimeout{60'000};
        std::chrono::milliseconds retryGrace{500};
        std::chrono::milliseconds analysisTimeout{900'000};
        std::chrono::milliseconds analysisGrace{300};
    };
    // Writes the results file of one photo folder's manifest, or throws. Runs off the GUI thread.
    using AnalyzeFolder = std::function<void(const std::filesystem::path& manifest,
                                             const std::filesystem::path& output)>;
    void retryDetection(bool fullPhoto);
    // Detects again on `area` of the active photo: the person the reviewer picked as the rider.
    void retryDetectionOn(const dravik::PixelRect& area);
    void acceptRetry(const dravik::DetectionRetry& retry, const std::string& frameID,
                     const dravik::Uuid& session);
    // Without `analyze`, folders are analysed by the batch program.
    void discoverSessions(std::optional<std::filesystem::path> dataDirectory = std::nullopt,
                          AnalyzeFolder analyze = {});
    void discoverSessionsOnLaunch(); // once per model
    // Copies a folder the user chooses into the data folder, analyses it with discovery and opens
    // it (detection/photo_import.cpp).
    void importPhotoFolder();
    const BatchLimits& batchLimits() const { return batchLimits_; }
    void setBatchLimits(const BatchLimits& limits) { batchLimits_ = limits; }

  signals:
    void presetsChanged();
    void detectingChanged();  // isDetecting
    void discoveryChanged();  // isDiscovering, discoveryStatus, discoveryFailures, unusablePhotos
    void sessionChanged();    // another session opened: sessionID and its companion files
    void snapshotChanged();   // the document and everything derived from it
    void navigationChanged(); // activeFrameID, compare
    void imagesChanged();
    void viewOptionsChanged(); // showMarkers, inspectorVisible, leanMode, showLean
    // placing, previewTarget, highlightedJoints, canvasGeneration, leanPreviewTarget,
    // leanPlacement, leanPlacementStart
    void interactionChanged();
    void selectionChanged(); // selected, selectedLeanHandle
    void presentationChanged();
    void savedRevisionChanged(); // savedRevision, unsavedEdits
    void messageChanged();
    void errorChanged();
    void undoStackChanged();
    void leanProposalsChanged();
    // Once after every round of the signals above.
    void changed();

  private:
    enum Change : std::uint32_t {
        presetsChange = 1u << 0,
        detectingChange = 1u << 1,
        discoveryChange = 1u << 2,
        sessionChange = 1u << 3,
        snapshotChange = 1u << 4,
        navigationChange = 1u << 5,
        imagesChange = 1u << 6,
        viewOptionsChange = 1u << 7,
        interactionChange = 1u << 8,
        selectionChange = 1u << 9,
        presentationChange = 1u << 10,
        savedRevisionChange = 1u << 11,
        messageChange = 1u << 12,
        errorChange = 1u << 13,
        undoStackChange = 1u << 14,
        leanProposalsChange = 1u << 15,
    };

    // Holds signals back until the outermost operation has finished changing the state.
    class SignalHold {
      public:
        explicit SignalHold(ReviewerModel& model) : model_(model) { ++model_.holdDepth_; }
        ~SignalHold();
        SignalHold(const SignalHold&) = delete;
        SignalHold& operator=(const SignalHold&) = delete;

      private:
        ReviewerModel& model_;
    };

    void mark(std::uint32_t changes);
    void flush();
    template <class T> void assign(T& field, const std::type_identity_t<T>& value, Change change) {
        if (field == value)
            return;
        field = value;
        mark(change);
    }

    void setSnapshot(Snapshot snapshot);
    void setImages(std::map<std::string, FramePhoto> photos);
    void setMessage(const std::string& text);
    void setError(const std::string& text);
    void pushUndo(ReviewUndo entry);
    void renewCanvasGeneration();
    std::optional<dravik::ReviewPair> pairOf(const std::string& frameID) const;
    void startRetry(bool fullPhoto, const std::optional<dravik::PixelRect>& area);

    // Discovery's parts, shared by the launch scan and the import (detection/).
    std::map<std::filesystem::path, std::filesystem::path> knownResults() const;
    // The batch program's analysis; `progress` hears (photo, of photos), off the GUI thread.
    AnalyzeFolder batchAnalysis(std::function<void(int, int)> progress = {}) const;
    // Takes a scan's report in; opens the session in `openFolder`, or the first preset when no
    // session is open.
    void finishDiscovery(const dravik::SessionDiscoveryReport& report,
                         const std::optional<std::filesystem::path>& openFolder);

    // The one path of every change of the document (editing/commit.cpp): the change is made on a
    // copy; nothing happens when it changes nothing; a failure sets `error` and leaves the
    // snapshot as it was; otherwise the copy is published, `undo` recorded and the document saved.
    // With `returnTo`, the model also moves to that photo (in Compare mode when its pair has a
    // reference and Compare is on), all or nothing with the change.
    CommitOutcome commit(const DocumentChange& change, std::optional<ReviewUndo> undo,
                         const std::optional<std::string>& returnTo = std::nullopt);
    // The snapshot of `document` for the pair with `pairID` and the session's lean proposals.
    Snapshot snapshotOf(std::shared_ptr<const dravik::ReviewDocument> document,
                        const std::optional<std::string>& pairID) const;
    // A new snapshot of `document` for the current pair.
    void publish(std::shared_ptr<const dravik::ReviewDocument> document);
    // Verifies the photo of `frameID` and starts decoding it for the screen on another thread;
    // nothing when it fails, which verifying every photo then reports in its order.
    std::future<std::optional<DecodedPhoto>>
    decodeWhileVerifying(const dravik::ReviewDocument& document, const std::string& frameID,
                         const std::filesystem::path& manifest) const;
    // Opens a session without saving the open one first (opening/session_opening.cpp).
    void reopen(const std::filesystem::path& manifest, const std::filesystem::path& results);
    // Writes `document` over the review file expected at `expected` (editing/saving.cpp). On
    // success the file holds what this window holds; on failure `error` and `message` say why.
    bool writeReview(std::shared_ptr<const dravik::ReviewDocument> document,
                     std::optional<std::int64_t> expected);
    // The photos of these frames for the screen (photos/photo_display.cpp): a picture held whose
    // file is unchanged, else decoded now. Throws the "Cannot load …" sentence.
    std::map<std::string, FramePhoto> photosFor(PhotoState& photos,
                                                const dravik::ReviewDocument& document,
                                                const std::vector<std::string>& frameIDs);
    // A background decode of the frame asked for is not done again on the spot: withdrawn when
    // still waiting, waited for and taken when already running.
    void settleDecode(const std::string& frameID);
    // The frames whose photos are decoded in the background next: the neighbours of what is on
    // screen in sidebar order, nearest first.
    std::vector<std::string> neighbours() const;
    // Prefetches the neighbours and drops waiting decodes nobody needs any more.
    void prefetchNeighbours();
    double densityFor(const PhotoState& photos, const std::string& frameID) const;
    void decodeInBackground(const std::string& frameID, dravik::PhotoScale scale, int priority);
    void photoDecoded(const dravik::Uuid& session, const std::string& frameID,
                      dravik::PhotoScale scale, std::optional<DecodedPhoto> decoded);
    void withdrawDecodes(const std::set<std::string>& keep);
    // Navigates to `frameID`, with its pair's photos in Compare mode and a snapshot of `document`.
    // All or nothing: a photo or analysis failure sets `error` and changes nothing else (false).
    bool show(const std::string& frameID, bool compare,
              std::shared_ptr<const dravik::ReviewDocument> document);

    Bundle bundle_;
    std::shared_ptr<FileChooser> chooser_;
    std::uint32_t pending_ = 0;
    int holdDepth_ = 0;

    bool isDetecting_ = false;
    std::vector<ReviewPreset> presets_;
    bool isDiscovering_ = false;
    std::string discoveryStatus_;
    std::vector<std::string> discoveryFailures_;
    std::vector<std::string> unusablePhotos_;
    bool discoveryStarted_ = false;
    std::optional<Snapshot> snapshot_;
    PhotoState photos_;
    std::uint64_t photoBudget_ = PhotoCache::defaultBudget;
    // The density an automatically framed canvas asked for last: how new frames are decoded.
    std::optional<double> learnedDensity_;
    std::optional<std::int64_t> savedRevision_;
    // What this window last read from or wrote to the review file: a merge's base.
    std::shared_ptr<const dravik::ReviewDocument> savedDocument_;
    int unsavedEdits_ = 0;
    std::string message_ = "Open a session to review its joints.";
    std::optional<std::string> error_;
    std::vector<ReviewUndo> undoStack_;
    SessionState session_;
    ViewState view_;
    InteractionState interaction_;
    BatchLimits batchLimits_;
    // Receives the background decodes, so that they can be taken early without anything else.
    std::unique_ptr<QObject> decodeInbox_ = std::make_unique<QObject>();
    std::unique_ptr<JobQueue> reviewEncoder_;
    std::unique_ptr<JobQueue> decoder_; // last: its threads stop before the rest goes
};

} // namespace tessary
