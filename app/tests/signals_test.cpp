#include "dravik/store.h"
#include "model_fixture.h"

#include <algorithm>
#include <functional>

namespace tessary::test {

namespace {

using dravik::JointReviewState;
using dravik::Point2;

// Everything a view may draw, as read from the model at one moment.
struct Observed {
    std::shared_ptr<const dravik::ReviewDocument> document; // held, so no address is reused
    std::optional<std::string> reportPair;
    std::string message;
    std::optional<std::string> error;
    std::tuple<dravik::Uuid, std::optional<dravik::ReviewEditTarget>, bool, std::set<std::string>,
               std::optional<LeanEditTarget>, std::optional<dravik::LeanHandle>,
               std::optional<Point2>>
        interaction;
    std::pair<std::optional<std::string>, bool> navigation;
    std::vector<std::string> imageIDs;
    std::size_t undoEntries = 0;
    std::optional<std::int64_t> savedRevision;
    bool operator==(const Observed&) const = default;

    static Observed of(const ReviewerModel& model) {
        Observed observed;
        if (model.snapshot()) {
            observed.document = model.snapshot()->documentPointer;
            if (model.report())
                observed.reportPair = model.report()->pairID;
        }
        observed.message = model.message();
        observed.error = model.error();
        observed.interaction = {model.canvasGeneration(),  model.previewTarget(),
                                model.placing(),           model.highlightedJoints(),
                                model.leanPreviewTarget(), model.leanPlacement(),
                                model.leanPlacementStart()};
        observed.navigation = {model.activeFrameID(), model.compare()};
        for (const auto& [id, image] : model.images())
            observed.imageIDs.push_back(id);
        observed.undoEntries = model.undoStack().size();
        observed.savedRevision = model.savedRevision();
        return observed;
    }
};

enum class Concern { snapshot, message, error, interaction, navigation, images, undo, saved };

bool differs(Concern concern, const Observed& a, const Observed& b) {
    switch (concern) {
    case Concern::snapshot:
        return a.document != b.document || a.reportPair != b.reportPair;
    case Concern::message:
        return a.message != b.message;
    case Concern::error:
        return a.error != b.error;
    case Concern::interaction:
        return a.interaction != b.interaction;
    case Concern::navigation:
        return a.navigation != b.navigation;
    case Concern::images:
        return a.imageIDs != b.imageIDs;
    case Concern::undo:
        return a.undoEntries != b.undoEntries;
    case Concern::saved:
        return a.savedRevision != b.savedRevision;
    }
    return false;
}

// Listens like a view: what it saw at each signal is all it knows.
class Listener {
  public:
    explicit Listener(ReviewerModel& model) : model_(model), before_(Observed::of(model)) {
        listen(&ReviewerModel::snapshotChanged, Concern::snapshot);
        listen(&ReviewerModel::messageChanged, Concern::message);
        listen(&ReviewerModel::errorChanged, Concern::error);
        listen(&ReviewerModel::interactionChanged, Concern::interaction);
        listen(&ReviewerModel::navigationChanged, Concern::navigation);
        listen(&ReviewerModel::imagesChanged, Concern::images);
        listen(&ReviewerModel::undoStackChanged, Concern::undo);
        listen(&ReviewerModel::savedRevisionChanged, Concern::saved);
    }

    // Runs one operation and checks what a listener saw against the model afterwards.
    void step(const std::string& name, const std::function<void()>& operation) {
        SCOPED_TRACE(name);
        heard_.clear();
        operation();
        const Observed after = Observed::of(model_);
        for (const auto& heard : heard_)
            EXPECT_EQ(heard.second, after) << "a signal came before the state was complete";
        for (Concern concern :
             {Concern::snapshot, Concern::message, Concern::error, Concern::interaction,
              Concern::navigation, Concern::images, Concern::undo, Concern::saved}) {
            const auto emitted =
                std::count_if(heard_.begin(), heard_.end(),
                              [&](const auto& heard) { return heard.first == concern; });
            if (differs(concern, before_, after)) {
                EXPECT_EQ(emitted, 1) << "concern " << static_cast<int>(concern);
            } else if (concern != Concern::snapshot) {
                EXPECT_EQ(emitted, 0) << "concern " << static_cast<int>(concern);
            }
        }
        changes_ += heard_.size();
        before_ = after;
    }

    std::size_t changes() const { return changes_; }

  private:
    void listen(void (ReviewerModel::*signal)(), Concern concern) {
        QObject::connect(&model_, signal,
                         [this, concern] { heard_.emplace_back(concern, Observed::of(model_)); });
    }

    ReviewerModel& model_;
    Observed before_;
    std::vector<std::pair<Concern, Observed>> heard_;
    std::size_t changes_ = 0;
};

} // namespace

TEST_F(ModelTest, ListenersSeeEveryChangeOnceAndOnlyWhenItIsComplete) {
    Listener listener(model);
    const SessionFiles session = bundledSession(temp.path() / "session");
    const SessionFiles other = bundledSession(temp.path() / "other");
    const fs::path broken = temp.path() / "missing.json";

    listener.step("open", [&] { model.load(session.manifest, session.results); });
    listener.step("failed open", [&] { model.load(broken, session.results); });
    listener.step("dismiss", [&] { model.clearError(); });
    listener.step("preview", [&] { model.setPreviewTarget(model.target(alex3, "nose")); });
    listener.step("drop", [&] { model.edit(Point2{10, 20}, JointReviewState::corrected); });
    listener.step("same drop", [&] { model.edit(Point2{10, 20}, JointReviewState::corrected); });
    listener.step("nudge", [&] { model.nudge(1, 0, alex3); });
    listener.step("obscure", [&] { model.setState(JointReviewState::obscured); });
    listener.step("stale", [&] {
        model.edit(Point2{1, 1}, JointReviewState::corrected, model.target(sam3, "nose"));
    });
    listener.step("highlight", [&] { model.setHighlightedJoints({"left_knee", "right_knee"}); });
    listener.step("compare", [&] { model.setCompare(true); });
    listener.step("activate", [&] { model.activate(sam3); });
    listener.step("edit reference", [&] {
        model.edit(Point2{30, 40}, JointReviewState::corrected);
    });
    listener.step("lone pair", [&] { model.selectFrame(indexOf(alex5)); });
    listener.step("no reference", [&] { model.setCompare(true); });
    listener.step("lean mode", [&] { model.setLeanMode(true); });
    listener.step("arm", [&] { model.beginLeanPlacement(false); });
    listener.step("first click", [&] { model.placeLean(Point2{100, 100}, alex5); });
    listener.step("second click", [&] { model.placeLean(Point2{110, 300}, alex5); });
    listener.step("escape", [&] { model.cancelInteraction(); });
    listener.step("second writer", [&] {
        dravik::ReviewDocument theirs = session.saved();
        theirs.setJoint(0, "nose", Point2{5, 5}, JointReviewState::corrected);
        dravik::ReviewStore::save(theirs, session.review(), theirs.revision() - 1);
    });
    listener.step("refused save", [&] { model.nudgeLean(1, 1); });
    listener.step("refused move", [&] { model.selectFrame(0); });
    listener.step("file restored", [&] {
        dravik::ReviewDocument ours = session.saved();
        dravik::ReviewStore::save(
            dravik::ReviewDocument(ours.identity(), ours.frames(), *model.savedRevision()),
            session.review(), ours.revision());
    });
    listener.step("save", [&] { model.save(); });
    listener.step("undo lean", [&] { model.undo(); });
    listener.step("undo across frames", [&] { model.undo(); });
    listener.step("undo in compare", [&] { model.undo(); });
    listener.step("reopen", [&] { model.load(other.manifest, other.results); });
    EXPECT_GT(listener.changes(), 40u);
}

} // namespace tessary::test
