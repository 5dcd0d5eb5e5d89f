// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "workers_support.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

namespace tessary::test {

namespace {

using dravik::JointReviewState;
using dravik::Point2;

template <class T> std::string text(const std::optional<T>& value) {
    if (!value)
        return "-";
    if constexpr (std::is_same_v<T, std::string>)
        return *value;
    else if constexpr (std::is_same_v<T, Point2>)
        return std::to_string(value->x) + "," + std::to_string(value->y);
    else
        return std::to_string(static_cast<long long>(*value));
}

// One signal and the part of the state it announces, read as a view would.
struct Channel {
    const char* name;
    void (ReviewerModel::*signal)();
    std::function<std::string(const ReviewerModel&)> state;
};

const std::vector<Channel>& channels() {
    static const std::vector<Channel> all = {
        {"presets", &ReviewerModel::presetsChanged,
         [](const ReviewerModel& m) {
             std::string seen;
             for (const ReviewPreset& preset : m.presets())
                 seen += preset.title + "|" + preset.manifest + "|" + preset.results + ";";
             return seen;
         }},
        {"detecting", &ReviewerModel::detectingChanged,
         [](const ReviewerModel& m) { return std::to_string(m.isDetecting()); }},
        {"discovery", &ReviewerModel::discoveryChanged,
         [](const ReviewerModel& m) {
             std::string seen = std::to_string(m.isDiscovering()) + m.discoveryStatus();
             for (const std::string& failure : m.discoveryFailures())
                 seen += ";" + failure;
             for (const std::string& photo : m.unusablePhotos())
                 seen += ";" + photo;
             return seen;
         }},
        {"session", &ReviewerModel::sessionChanged,
         [](const ReviewerModel& m) {
             return m.sessionID().text() + std::to_string(m.framingRegions().size()) +
                    text(m.singlePhotoCoachingError()) + text(m.coachingChecklistError());
         }},
        {"snapshot", &ReviewerModel::snapshotChanged,
         [](const ReviewerModel& m) {
             if (!m.snapshot())
                 return std::string("-");
             std::ostringstream seen;
             seen << m.snapshot()->documentPointer.get()
                  << text(std::optional(m.snapshot()->pairs.size()))
                  << (m.report() ? m.report()->pairID : "-") << m.leanReport()->approved;
             return seen.str();
         }},
        {"navigation", &ReviewerModel::navigationChanged,
         [](const ReviewerModel& m) {
             return text(m.activeFrameID()) + std::to_string(m.compare());
         }},
        {"images", &ReviewerModel::imagesChanged,
         [](const ReviewerModel& m) {
             std::string seen;
             for (const auto& [id, photo] : m.images())
                 seen += id + ":" + std::to_string(photo.image.cacheKey()) + ";";
             return seen;
         }},
        {"view options", &ReviewerModel::viewOptionsChanged,
         [](const ReviewerModel& m) {
             return std::to_string(m.showMarkers()) + std::to_string(m.inspectorVisible()) +
                    std::to_string(m.leanMode()) + std::to_string(m.showLean());
         }},
        {"interaction", &ReviewerModel::interactionChanged,
         [](const ReviewerModel& m) {
             std::string seen = m.canvasGeneration().text() + std::to_string(m.placing());
             if (m.previewTarget())
                 seen += m.previewTarget()->frameID + m.previewTarget()->joint;
             for (const std::string& joint : m.highlightedJoints())
                 seen += "+" + joint;
             if (m.leanPreviewTarget())
                 seen += "lean:" + m.leanPreviewTarget()->frameID;
             if (m.leanPlacement())
                 seen += std::string(dravik::rawValue(*m.leanPlacement()));
             return seen + text(m.leanPlacementStart());
         }},
        {"selection", &ReviewerModel::selectionChanged,
         [](const ReviewerModel& m) {
             return m.selected() + std::string(dravik::rawValue(m.selectedLeanHandle()));
         }},
        {"presentation", &ReviewerModel::presentationChanged,
         [](const ReviewerModel& m) {
             std::ostringstream seen;
             for (const auto& [id, shown] : m.presentation())
                 seen << id << shown.kind << shown.zoom << shown.showRaw << shown.autoFrame
                      << shown.framingRequest << ";";
             return seen.str();
         }},
        {"saved", &ReviewerModel::savedRevisionChanged,
         [](const ReviewerModel& m) {
             return text(m.savedRevision()) + "/" + std::to_string(m.unsavedEdits());
         }},
        {"message", &ReviewerModel::messageChanged,
         [](const ReviewerModel& m) { return m.message(); }},
        {"error", &ReviewerModel::errorChanged,
         [](const ReviewerModel& m) { return text(m.error()); }},
        {"undo", &ReviewerModel::undoStackChanged,
         [](const ReviewerModel& m) { return std::to_string(m.undoStack().size()); }},
        {"lean proposals", &ReviewerModel::leanProposalsChanged,
         [](const ReviewerModel& m) {
             std::string seen;
             for (const auto& [id, proposal] : m.leanProposals())
                 seen += id + ";";
             return seen;
         }},
    };
    return all;
}

using Observed = std::vector<std::string>;

Observed observe(const ReviewerModel& model) {
    Observed seen;
    for (const Channel& channel : channels())
        seen.push_back(channel.state(model));
    return seen;
}

// Listens like a view: what it saw at each signal is all it knows.
class Listener {
  public:
    explicit Listener(ReviewerModel& model) : model_(model), before_(observe(model)) {
        for (std::size_t index = 0; index < channels().size(); ++index)
            QObject::connect(&model_, channels()[index].signal, [this, index] {
                heard_.emplace_back(index, observe(model_));
                if (model_.snapshot())
                    held_.push_back(model_.snapshot()->documentPointer); // no address is reused
            });
        QObject::connect(&model_, &ReviewerModel::changed, [this] { ++rounds_; });
    }

    // Runs one operation and checks what a listener saw against the model afterwards.
    void step(const std::string& name, const std::function<void()>& operation) {
        SCOPED_TRACE(name);
        heard_.clear();
        rounds_ = 0;
        operation();
        const Observed after = observe(model_);
        for (const auto& heard : heard_)
            EXPECT_EQ(heard.second, after) << "a signal came before the state was complete";
        for (std::size_t index = 0; index < channels().size(); ++index) {
            const auto emitted =
                std::count_if(heard_.begin(), heard_.end(),
                              [&](const auto& heard) { return heard.first == index; });
            const bool changed = before_[index] != after[index];
            // The snapshot may be published again unchanged; the rest only for a change.
            if (changed || std::string(channels()[index].name) != "snapshot") {
                EXPECT_EQ(emitted, changed ? 1 : 0) << channels()[index].name;
            }
            seen_[index] |= changed;
        }
        EXPECT_EQ(rounds_ > 0, !heard_.empty()) << "changed() closes every round, and only those";
        before_ = after;
    }

    // Every channel changed in at least one step.
    void expectEveryChannelExercised() const {
        for (std::size_t index = 0; index < channels().size(); ++index)
            EXPECT_TRUE(seen_.count(index) && seen_.at(index))
                << channels()[index].name << " was never exercised";
    }

  private:
    ReviewerModel& model_;
    Observed before_;
    std::vector<std::pair<std::size_t, Observed>> heard_;
    std::vector<std::shared_ptr<const dravik::ReviewDocument>> held_;
    std::map<std::size_t, bool> seen_;
    int rounds_ = 0;
};

} // namespace

TEST_F(ModelTest, ListenersSeeEveryChangeOnceAndOnlyWhenItIsComplete) {
    Listener listener(model);
    const SessionFiles session = bundledSession(temp.path() / "session");
    const SessionFiles other = bundledSession(temp.path() / "other");
    const fs::path broken = temp.path() / "missing.json";

    writeText(Bundle(temp.path() / "bundle").resourcePath("launch.json"),
              R"([{"title": "Sample", "manifest": ")" + session.manifest.string() +
                  R"(", "results": ")" + session.results.string() + R"("}])");
    listener.step("presets", [&] { model.loadPresets(); });
    listener.step("open", [&] { model.load(session.manifest, session.results); });
    listener.step("hide markers", [&] { model.setShowMarkers(false); });
    listener.step("show markers", [&] { model.setShowMarkers(true); });
    listener.step("hide inspector", [&] { model.setInspectorVisible(false); });
    listener.step("select", [&] { model.setSelected("nose"); });
    listener.step("not a joint", [&] { model.setSelected("tail"); });
    listener.step("settings", [&] {
        auto shown = model.settings(alex3);
        shown.zoom = 2;
        model.setSettings(alex3, shown);
    });
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
    listener.step("lean handle", [&] { model.setSelectedLeanHandle(dravik::LeanHandle::wheelB); });
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
    installFakeBatch(temp.path() / "bundle", "result");
    listener.step("retry starts", [&] { model.retryDetection(false); });
    listener.step("retry answered",
                  [&] { ASSERT_TRUE(waitUntil([&] { return !model.isDetecting(); })); });
    fs::create_directories(temp.path() / "empty");
    listener.step("discovery starts", [&] {
        model.discoverSessions(temp.path() / "empty", [](const fs::path&, const fs::path&) {});
    });
    listener.step("discovery ends",
                  [&] { ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); })); });
    const SessionFiles companions = bundledSession(temp.path() / "companions", true);
    listener.step("reopen with companions",
                  [&] { model.load(companions.manifest, companions.results); });
    listener.step("confirm", [&] { model.setState(JointReviewState::confirmedVisible); });
    const auto saveElsewhere = [&](const std::string& joint) {
        dravik::ReviewDocument theirs = companions.saved();
        theirs.setJoint(0, joint, Point2{7, 7}, JointReviewState::corrected);
        dravik::ReviewStore::save(theirs, companions.review(), theirs.revision() - 1);
    };
    listener.step("changed elsewhere", [&] { saveElsewhere("left_ear"); });
    listener.step("refused edit", [&] { model.setState(JointReviewState::uncertain); });
    chooser->answers = {temp.path() / "copy.json"};
    listener.step("copy", [&] { model.saveCopy(); });
    listener.step("merge", [&] {
        auto pending = model.prepareMerge();
        ASSERT_TRUE(pending);
        model.applyMerge(*pending);
    });
    listener.step("changed elsewhere again", [&] { saveElsewhere("right_ear"); });
    listener.step("refused again", [&] { model.setState(JointReviewState::obscured); });
    listener.step("reload", [&] { model.reloadFromDisk(); });
    listener.step("reopen", [&] { model.load(other.manifest, other.results); });
    listener.expectEveryChannelExercised();
}

} // namespace tessary::test
