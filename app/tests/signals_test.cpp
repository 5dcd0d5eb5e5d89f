#include "dravik/store.h"
#include "model_fixture.h"

#include <algorithm>
#include <functional>

namespace tessary::test {

namespace {

using dravik::JointReviewState;
using dravik::Point2;

// Everything a view may draw, as read from the model at one moment, one part per signal. The
// document is held, so no address is reused.
using Observed =
    std::tuple<std::pair<std::shared_ptr<const dravik::ReviewDocument>, std::optional<std::string>>,
               std::string, std::optional<std::string>,
               std::tuple<dravik::Uuid, std::optional<dravik::ReviewEditTarget>, bool,
                          std::set<std::string>, std::optional<LeanEditTarget>,
                          std::optional<dravik::LeanHandle>, std::optional<Point2>>,
               std::pair<std::optional<std::string>, bool>, std::vector<std::string>, std::size_t,
               std::optional<std::int64_t>>;

Observed observe(const ReviewerModel& model) {
    Observed seen;
    if (model.snapshot())
        std::get<0>(seen) = {model.snapshot()->documentPointer,
                             model.report() ? std::optional(model.report()->pairID) : std::nullopt};
    for (const auto& [id, image] : model.images())
        std::get<5>(seen).push_back(id);
    std::get<1>(seen) = model.message();
    std::get<2>(seen) = model.error();
    std::get<3>(seen) = {model.canvasGeneration(),  model.previewTarget(),
                         model.placing(),           model.highlightedJoints(),
                         model.leanPreviewTarget(), model.leanPlacement(),
                         model.leanPlacementStart()};
    std::get<4>(seen) = {model.activeFrameID(), model.compare()};
    std::get<6>(seen) = model.undoStack().size();
    std::get<7>(seen) = model.savedRevision();
    return seen;
}

template <std::size_t part> bool differs(const Observed& a, const Observed& b) {
    return std::get<part>(a) != std::get<part>(b);
}

// A signal and the part of the state it announces.
struct Channel {
    const char* name;
    void (ReviewerModel::*signal)();
    bool (*differs)(const Observed&, const Observed&);
};

const Channel channels[] = {
    {"snapshot", &ReviewerModel::snapshotChanged, differs<0>},
    {"message", &ReviewerModel::messageChanged, differs<1>},
    {"error", &ReviewerModel::errorChanged, differs<2>},
    {"interaction", &ReviewerModel::interactionChanged, differs<3>},
    {"navigation", &ReviewerModel::navigationChanged, differs<4>},
    {"images", &ReviewerModel::imagesChanged, differs<5>},
    {"undo", &ReviewerModel::undoStackChanged, differs<6>},
    {"saved", &ReviewerModel::savedRevisionChanged, differs<7>},
};

// Listens like a view: what it saw at each signal is all it knows.
class Listener {
  public:
    explicit Listener(ReviewerModel& model) : model_(model), before_(observe(model)) {
        for (const Channel& channel : channels)
            QObject::connect(&model_, channel.signal,
                             [this, &channel] { heard_.emplace_back(&channel, observe(model_)); });
    }

    // Runs one operation and checks what a listener saw against the model afterwards.
    void step(const std::string& name, const std::function<void()>& operation) {
        SCOPED_TRACE(name);
        heard_.clear();
        operation();
        const Observed after = observe(model_);
        for (const auto& heard : heard_)
            EXPECT_EQ(heard.second, after) << "a signal came before the state was complete";
        for (const Channel& channel : channels) {
            const auto emitted =
                std::count_if(heard_.begin(), heard_.end(),
                              [&](const auto& heard) { return heard.first == &channel; });
            // The snapshot may be published again unchanged; the rest only for a change.
            const bool changed = channel.differs(before_, after);
            if (changed || &channel != &channels[0]) {
                EXPECT_EQ(emitted, changed ? 1 : 0) << channel.name;
            }
        }
        changes_ += heard_.size();
        before_ = after;
    }

    std::size_t changes() const { return changes_; }

  private:
    ReviewerModel& model_;
    Observed before_;
    std::vector<std::pair<const Channel*, Observed>> heard_;
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
