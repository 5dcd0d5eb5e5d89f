#pragma once

#include "bundle.h"
#include "dravik/analysis.h"
#include "dravik/coaching.h"
#include "dravik/detection.h"
#include "dravik/geometry.h"
#include "dravik/lean.h"
#include "dravik/pairs.h"
#include "dravik/review.h"
#include "dravik/uuid.h"
#include "file_chooser.h"
#include "lean_edit_target.h"
#include "photo_stamp.h"
#include "presentation.h"
#include "review_preset.h"
#include "review_undo.h"
#include "snapshot.h"

#include <QImage>
#include <QObject>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace tessary {

// The one observable model of the review window. Every field is read and written on the GUI
// thread. Each operation changes the state first and signals afterwards, once per concern, so a
// listener always sees a consistent model; a listener that redraws on the signals of what it
// shows never misses a change.
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
    const std::optional<Snapshot>& snapshot() const { return snapshot_; }
    bool compare() const { return compare_; }
    bool showMarkers() const { return showMarkers_; }
    bool inspectorVisible() const { return inspectorVisible_; }
    const std::map<std::string, QImage>& images() const { return images_; }
    const dravik::Uuid& canvasGeneration() const { return canvasGeneration_; }
    const std::optional<dravik::ReviewEditTarget>& previewTarget() const { return previewTarget_; }
    const std::set<std::string>& highlightedJoints() const { return highlightedJoints_; }
    std::optional<std::int64_t> savedRevision() const { return savedRevision_; }
    const std::map<std::string, Presentation>& presentation() const { return presentation_; }
    const std::optional<std::string>& activeFrameID() const { return activeFrameID_; }
    const std::string& selected() const { return selected_; }
    bool placing() const { return placing_; }
    const std::string& message() const { return message_; }
    const std::optional<std::string>& error() const { return error_; }
    const std::vector<ReviewUndo>& undoStack() const { return undoStack_; }
    bool leanMode() const { return leanMode_; }
    bool showLean() const { return showLean_; }
    dravik::LeanHandle selectedLeanHandle() const { return selectedLeanHandle_; }
    const std::optional<LeanEditTarget>& leanPreviewTarget() const { return leanPreviewTarget_; }
    std::optional<dravik::LeanHandle> leanPlacement() const { return leanPlacement_; }
    const std::optional<dravik::Point2>& leanPlacementStart() const { return leanPlacementStart_; }
    const std::map<std::string, dravik::LeanAnnotation>& leanProposals() const {
        return leanProposals_;
    }

    // Per-session state that changes only when a session opens (signalled by sessionChanged).
    const dravik::Uuid& sessionID() const { return sessionID_; }
    const std::map<std::string, dravik::PixelRect>& framingRegions() const {
        return framingRegions_;
    }
    const std::map<std::string, dravik::SinglePhotoCoaching>& singlePhotoCoaching() const {
        return singlePhotoCoaching_;
    }
    const std::optional<std::string>& singlePhotoCoachingError() const {
        return singlePhotoCoachingError_;
    }
    const std::map<std::string, dravik::CoachingChecklistReview>& coachingChecklists() const {
        return coachingChecklists_;
    }
    const std::optional<std::string>& coachingChecklistError() const {
        return coachingChecklistError_;
    }
    // Remembered viewport centres; views write them while scrolling, nobody is told.
    const std::map<std::string, dravik::Point2>& viewportCenters() const {
        return viewportCenters_;
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

    // Derived values, computed from the state above.
    const dravik::ReviewDocument* document() const;
    const dravik::PairReport* report() const;
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

    // Opening sessions.
    void loadPresets();
    void openPreset(const ReviewPreset& preset);
    void openSession();
    void load(const std::filesystem::path& manifest, const std::filesystem::path& results);
    // Every frame's cropped photo keyed by frame id, and the ids in document order.
    std::pair<std::map<std::string, QImage>, std::vector<std::string>>
    loadImages(const dravik::ReviewDocument& document, const std::filesystem::path& manifest) const;
    QImage loadImage(const dravik::ReviewFrame& frame, const std::filesystem::path& manifest) const;
    Snapshot makeSnapshot(const std::optional<std::string>& pairID,
                          std::shared_ptr<const dravik::ReviewDocument> document) const;
    void publish(std::shared_ptr<const dravik::ReviewDocument> document);
    void activate(const std::string& frameID);

    // Joint editing, undo and saving.
    dravik::ReviewEditTarget target(const std::string& frameID, const std::string& joint) const;
    bool valid(const dravik::ReviewEditTarget& target) const;
    void edit(std::optional<dravik::Point2> point, dravik::JointReviewState state,
              const std::optional<dravik::ReviewEditTarget>& target = std::nullopt);
    void setState(dravik::JointReviewState state);
    void nudge(double dx, double dy, const std::string& frameID);
    void undo();
    bool save();
    void selectFrame(std::int64_t index);
    void selectPair(const std::string& pairID);
    void setCompare(bool on);
    void updateContext(dravik::PairContext context);
    void cancelInteraction();

    // Lean editing.
    std::optional<dravik::LeanAnnotation> lean(const std::string& frameID) const;
    LeanEditTarget leanTarget(const std::string& frameID) const;
    bool validLean(const LeanEditTarget& target) const;
    void commitLean(const dravik::LeanAnnotation& annotation, const LeanEditTarget& target);
    void changeLean(const std::function<void(dravik::LeanAnnotation&)>& mutation);
    void setLeanMode(bool on);
    void beginLeanPlacement(bool reference);
    void placeLean(const dravik::Point2& point, const std::string& frameID);
    void nudgeLean(double dx, double dy);
    void updateLeanContext(dravik::LeanPairContext context, bool approve = false);

    // Detection retry and session discovery: the batch program runs on a background thread and
    // its answer comes back to the GUI thread.
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
    void acceptRetry(const dravik::DetectionRetry& retry, const std::string& frameID,
                     const dravik::Uuid& session);
    // Without `analyze`, folders are analysed by the batch program.
    void discoverSessions(std::optional<std::filesystem::path> dataDirectory = std::nullopt,
                          AnalyzeFolder analyze = {});
    void discoverSessionsOnLaunch(); // once per model
    const BatchLimits& batchLimits() const { return batchLimits_; }
    void setBatchLimits(const BatchLimits& limits) { batchLimits_ = limits; }

  signals:
    void presetsChanged();
    void detectingChanged();  // isDetecting
    void discoveryChanged();  // isDiscovering, discoveryStatus, discoveryFailures
    void sessionChanged();    // another session opened: sessionID and its companion files
    void snapshotChanged();   // the document and the report
    void navigationChanged(); // activeFrameID, compare
    void imagesChanged();
    void viewOptionsChanged(); // showMarkers, inspectorVisible, leanMode, showLean
    // placing, previewTarget, highlightedJoints, canvasGeneration, leanPreviewTarget,
    // leanPlacement, leanPlacementStart
    void interactionChanged();
    void selectionChanged(); // selected, selectedLeanHandle
    void presentationChanged();
    void savedRevisionChanged();
    void messageChanged();
    void errorChanged();
    void undoStackChanged();
    void leanProposalsChanged();
    // Once after every batch of the signals above.
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
    class Batch {
      public:
        explicit Batch(ReviewerModel& model) : model_(model) { ++model_.batchDepth_; }
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

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

    // Decoded photos with the stamps of the files they came from.
    struct Photos {
        std::map<std::string, QImage> images;
        std::map<std::string, PhotoStamp> stamps;
    };

    void setSnapshot(Snapshot snapshot);
    void setImages(Photos photos);
    void setMessage(const std::string& text);
    void setError(const std::string& text);
    void pushUndo(ReviewUndo entry);
    void renewCanvasGeneration();

    std::optional<dravik::ReviewPair> pairOf(const std::string& frameID) const;
    Photos readPhotos(const dravik::ReviewDocument& document,
                      const std::filesystem::path& manifest) const;
    // The photos of these frames; a photo on screen whose file is unchanged is not decoded again.
    Photos imagesFor(const std::vector<std::string>& frameIDs) const;
    // Navigates to `frameID`, with its pair's photos in Compare mode and a snapshot of `document`
    // for `reportPair`. All or nothing: a photo or analysis failure sets `error` and changes
    // nothing else (false).
    bool show(const std::string& frameID, const std::optional<dravik::ReviewPair>& pair,
              bool compare, const std::optional<dravik::ReviewPair>& reportPair,
              std::shared_ptr<const dravik::ReviewDocument> document);
    void applyUndo(dravik::ReviewDocument& document, const ReviewUndo& entry,
                   const std::optional<dravik::ReviewPair>& pair) const;

    Bundle bundle_;
    std::shared_ptr<FileChooser> chooser_;
    std::uint32_t pending_ = 0;
    int batchDepth_ = 0;

    bool isDetecting_ = false;
    std::vector<ReviewPreset> presets_;
    bool isDiscovering_ = false;
    std::string discoveryStatus_;
    std::vector<std::string> discoveryFailures_;
    bool discoveryStarted_ = false;
    std::optional<Snapshot> snapshot_;
    std::vector<dravik::ReviewPair> pairs_; // resolved with every snapshot
    bool compare_ = false;
    bool showMarkers_ = true;
    bool inspectorVisible_ = true;
    std::map<std::string, QImage> images_;
    std::map<std::string, PhotoStamp> imageStamps_;
    dravik::Uuid canvasGeneration_;
    std::optional<dravik::ReviewEditTarget> previewTarget_;
    std::set<std::string> highlightedJoints_;
    std::optional<std::int64_t> savedRevision_;
    dravik::Uuid sessionID_;
    std::map<std::string, dravik::PixelRect> framingRegions_;
    std::map<std::string, dravik::Point2> viewportCenters_;
    std::map<std::string, dravik::SinglePhotoCoaching> singlePhotoCoaching_;
    std::optional<std::string> singlePhotoCoachingError_;
    std::map<std::string, dravik::CoachingChecklistReview> coachingChecklists_;
    std::optional<std::string> coachingChecklistError_;
    std::map<std::string, Presentation> presentation_;
    std::optional<std::string> activeFrameID_;
    std::string selected_ = "left_elbow";
    bool placing_ = false;
    std::string message_ = "Open a session to review its joints.";
    std::optional<std::string> error_;
    std::vector<ReviewUndo> undoStack_;
    bool leanMode_ = false;
    bool showLean_ = true;
    dravik::LeanHandle selectedLeanHandle_ = dravik::LeanHandle::wheelA;
    std::optional<LeanEditTarget> leanPreviewTarget_;
    std::optional<dravik::LeanHandle> leanPlacement_;
    std::optional<dravik::Point2> leanPlacementStart_;
    std::map<std::string, dravik::LeanAnnotation> leanProposals_;
    std::optional<std::filesystem::path> manifestURL_;
    std::optional<std::filesystem::path> reviewURL_;
    BatchLimits batchLimits_;
};

} // namespace tessary
