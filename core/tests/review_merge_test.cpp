// SPDX-License-Identifier: Apache-2.0
#include "dravik/review_merge.h"
#include "dravik/store.h"
#include "test_support.h"

#include <gtest/gtest.h>
#include <random>

using namespace dravik;
using test::failureOf;

namespace {

// Pair "turn3" (a rider and a reference rider) and the rider "solo" on their own.
ReviewDocument baseDocument() {
    std::vector<ReviewFrame> frames{test::frame("turn3", "rider", "subject", 'a'),
                                    test::frame("turn3", "ref", "reference", 'b'),
                                    test::frame("solo", "rider", "subject", 'c')};
    frames[0].raw.push_back(test::poseResult("2D", {400, 150}));
    return ReviewDocument(test::digitHash('9'), std::move(frames), 4);
}

LeanAnnotation lines(const ReviewDocument& document, std::size_t frame, double tilt) {
    return LeanAnnotation(document.frames()[frame], LeanLine{{100, 900}, {100 + tilt, 300}, 3.0});
}

std::optional<JointEdit> editOf(const ReviewDocument& document, std::size_t frame,
                                const std::string& joint) {
    const auto& edits = document.frames()[frame].edits;
    auto it = edits.find(joint);
    return it == edits.end() ? std::nullopt : std::optional(it->second);
}

const JointEdit moved{JointReviewState::corrected, Point2{412.5, 288}};
const JointEdit hidden{JointReviewState::obscured, std::nullopt};

} // namespace

TEST(ReviewMergeTest, ChangesMadeOnOneSideOrIdenticallyOnBothAreTakenWithoutAsking) {
    const ReviewDocument base = baseDocument();
    ReviewDocument mine = base;
    ReviewDocument theirs = base;
    // Disjoint joints of one frame; the same change to one joint on both sides; a frame that
    // only this window reviewed; a retry only the other writer accepted.
    mine.setJoint(0, "left_elbow", moved.point, moved.state);
    theirs.setJoint(0, "right_knee", Point2{500, 700}, JointReviewState::confirmedVisible);
    mine.setJoint(0, "nose", Point2{1, 2}, JointReviewState::uncertain);
    theirs.setJoint(0, "nose", Point2{1, 2}, JointReviewState::uncertain);
    mine.setJoint(2, "pelvis", std::nullopt, JointReviewState::obscured);
    theirs.addRetry(1, DetectionRetry{test::poseResult("2D", {300, 100}), std::nullopt});

    const ReviewMerge merge(base, mine, theirs);
    EXPECT_TRUE(merge.conflicts().empty());
    EXPECT_EQ(merge.changesFromMine(), 2u);
    EXPECT_EQ(merge.changesFromTheirs(), 2u);
    EXPECT_EQ(merge.expectedRevision(), theirs.revision());

    const ReviewDocument merged = merge.merged();
    EXPECT_EQ(merged.revision(), theirs.revision() + 1);
    EXPECT_EQ(editOf(merged, 0, "left_elbow"), moved);
    EXPECT_EQ(editOf(merged, 0, "right_knee")->state, JointReviewState::confirmedVisible);
    EXPECT_EQ(editOf(merged, 0, "nose"), editOf(mine, 0, "nose"));
    EXPECT_EQ(merged.frames()[0].edits.size(), 3u);
    EXPECT_EQ(editOf(merged, 2, "pelvis"), hidden);
    EXPECT_EQ(merged.frames()[1].retries, theirs.frames()[1].retries);
}

TEST(ReviewMergeTest, DifferentChangesToOneJointAreAConflictSettledEitherWay) {
    const ReviewDocument base = baseDocument();
    ReviewDocument mine = base;
    ReviewDocument theirs = base;
    mine.setJoint(0, "left_elbow", moved.point, moved.state);
    theirs.setJoint(0, "left_elbow", std::nullopt, JointReviewState::obscured);
    theirs.setJoint(1, "nose", Point2{5, 5}, JointReviewState::corrected);

    ReviewMerge merge(base, mine, theirs);
    ASSERT_EQ(merge.conflicts().size(), 1u);
    EXPECT_EQ(merge.conflicts()[0],
              (MergeConflict{MergeItem::joint, "turn3/rider", "turn3", "left_elbow",
                             "turn3 · Rider", "left_elbow", "Corrected at (412.5, 288.0)",
                             "Obscured", MergeChoice::theirs}));
    EXPECT_EQ(editOf(merge.merged(), 0, "left_elbow"), hidden);

    merge.conflicts()[0].choice = MergeChoice::mine;
    const ReviewDocument merged = merge.merged();
    EXPECT_EQ(editOf(merged, 0, "left_elbow"), moved);
    EXPECT_EQ(editOf(merged, 1, "nose"), editOf(theirs, 1, "nose"));

    // Saved over the other writer's file with its revision as the expected one; a third writer
    // in between is still refused.
    test::TempDir folder;
    const auto file = folder / "joint-review-999999999999.json";
    ReviewStore::save(theirs, file, std::nullopt);
    ReviewStore::save(merged, file, merge.expectedRevision());
    EXPECT_EQ(ReviewStore::load(file), merged);
    EXPECT_NE(failureOf([&] { ReviewStore::save(merged, file, merge.expectedRevision()); }), "");
}

TEST(ReviewMergeTest, LeanLinesRemovedOnOneSideAndMovedOnTheOtherAreAConflict) {
    ReviewDocument base = baseDocument();
    base.setLeanAnnotation("turn3/rider", lines(base, 0, 50));
    ReviewDocument mine = base;
    ReviewDocument theirs = base;
    mine.setLeanAnnotation("turn3/rider", std::nullopt);
    theirs.setLeanAnnotation("turn3/rider", lines(base, 0, 80));
    theirs.setLeanAnnotation("turn3/ref", lines(base, 1, 20));

    ReviewMerge merge(base, mine, theirs);
    ASSERT_EQ(merge.conflicts().size(), 1u);
    const MergeConflict& conflict = merge.conflicts()[0];
    EXPECT_EQ(conflict.item, MergeItem::leanLines);
    EXPECT_EQ(conflict.what, "Lean lines");
    EXPECT_EQ(conflict.mine, "No lean lines");
    EXPECT_EQ(conflict.theirs, "Wheel axis");
    EXPECT_EQ(*merge.merged().leanAnnotation("turn3/rider"), lines(base, 0, 80));
    merge.conflicts()[0].choice = MergeChoice::mine;
    const ReviewDocument merged = merge.merged();
    EXPECT_EQ(merged.leanAnnotation("turn3/rider"), nullptr);
    EXPECT_EQ(*merged.leanAnnotation("turn3/ref"), lines(base, 1, 20));
}

TEST(ReviewMergeTest, PairStatementsLeanChecksAndRetriesMergePerPairAndFrame) {
    const ReviewDocument base = baseDocument();
    ReviewDocument mine = base;
    ReviewDocument theirs = base;
    PairContext left{"turn3", CornerDirection::left, std::nullopt, {}};
    PairContext right{"turn3", CornerDirection::right, std::nullopt, {}};
    LeanPairContext checks{"turn3", true, true, false, false, false, true, std::nullopt};
    mine.setPairContext("turn3", left);
    theirs.setPairContext("turn3", right);
    theirs.setLeanPairContext("turn3", checks);
    mine.addRetry(2, DetectionRetry{test::poseResult("2D", {10, 10}), std::nullopt});
    theirs.addRetry(2, DetectionRetry{std::nullopt, test::poseResult("2D", {20, 20})});

    ReviewMerge merge(base, mine, theirs);
    ASSERT_EQ(merge.conflicts().size(), 2u);
    const MergeConflict& statements = merge.conflicts()[1];
    EXPECT_EQ(statements.item, MergeItem::pairContext);
    EXPECT_EQ(statements.frameID, "");
    EXPECT_EQ(statements.pairID, "turn3");
    EXPECT_EQ(statements.place, "turn3");
    EXPECT_EQ(statements.mine, "Direction Left");
    EXPECT_EQ(merge.conflicts()[0].what, "Accepted re-detections");
    EXPECT_EQ(merge.conflicts()[0].pairID, "solo");

    for (MergeConflict& conflict : merge.conflicts())
        conflict.choice = MergeChoice::mine;
    const ReviewDocument merged = merge.merged();
    EXPECT_EQ(*merged.pairContext("turn3"), left);
    EXPECT_EQ(*merged.leanPairContext("turn3"), checks);
    EXPECT_EQ(merged.frames()[2].retries, mine.frames()[2].retries);
}

TEST(ReviewMergeTest, DocumentsOfAnotherSessionAreRefused) {
    const ReviewDocument base = baseDocument();
    const ReviewDocument other(test::digitHash('8'), base.frames(), 2);
    EXPECT_EQ(failureOf([&] { ReviewMerge(base, base, other); }),
              "The review on disk cannot be merged: “joint-review-888888888888.json” belongs to "
              "other detection results than this session’s.");
    std::vector<ReviewFrame> frames = base.frames();
    frames[1].panel.width = 10;
    EXPECT_EQ(
        failureOf([&] { ReviewMerge(base, ReviewDocument(base.identity(), frames, 5), base); }),
        "This window’s review cannot be merged: “joint-review-999999999999.json” does not "
        "match the session’s frame “turn3/ref”: its panel differs.");
}

// Whatever both sides did, every entry of the merge is the base's, mine or theirs, and an entry
// that only one side changed is that side's.
TEST(ReviewMergeTest, EveryMergedEntryIsOneThatASideHeld) {
    const std::vector<std::string> joints{"nose", "left_elbow", "right_knee"};
    const std::vector<JointEdit> values{moved, hidden, {JointReviewState::uncertain, Point2{3, 4}}};
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        auto pick = [&](std::size_t n) { return std::size_t(random() % n); };
        auto scramble = [&](ReviewDocument document) {
            for (std::size_t steps = pick(6); steps > 0; --steps) {
                const std::size_t frame = pick(3);
                switch (pick(4)) {
                case 0:
                    document.restore(frame, joints[pick(3)],
                                     pick(3) == 0 ? std::nullopt : std::optional(values[pick(3)]));
                    break;
                case 1: {
                    const std::string id = document.frames()[frame].id;
                    document.setLeanAnnotation(
                        id, pick(3) == 0 ? std::nullopt
                                         : std::optional(lines(document, frame, 10.0 * pick(4))));
                    break;
                }
                case 2:
                    document.setPairContext(
                        "turn3", pick(3) == 0
                                     ? std::nullopt
                                     : std::optional(PairContext{
                                           "turn3", allCornerDirections[pick(3)], {}, {}}));
                    break;
                default:
                    document.addRetry(frame, DetectionRetry{});
                }
            }
            return document;
        };
        const ReviewDocument base = scramble(baseDocument());
        const ReviewDocument mine = scramble(base);
        const ReviewDocument theirs = scramble(base);
        ReviewMerge merge(base, mine, theirs);
        for (MergeConflict& conflict : merge.conflicts())
            conflict.choice = pick(2) ? MergeChoice::mine : MergeChoice::theirs;
        const ReviewDocument merged = merge.merged();

        auto check = [](const auto& b, const auto& m, const auto& t, const auto& result) {
            EXPECT_TRUE(result == b || result == m || result == t);
            if (m == b) {
                EXPECT_TRUE(result == t);
            }
            if (t == b) {
                EXPECT_TRUE(result == m);
            }
        };
        auto at = [](const auto& map, const std::string& key) {
            auto it = map.find(key);
            return it == map.end() ? std::nullopt : std::optional(it->second);
        };
        for (std::size_t f = 0; f < 3; ++f) {
            for (const std::string& joint : joints)
                check(editOf(base, f, joint), editOf(mine, f, joint), editOf(theirs, f, joint),
                      editOf(merged, f, joint));
            check(base.frames()[f].retries, mine.frames()[f].retries, theirs.frames()[f].retries,
                  merged.frames()[f].retries);
            const std::string id = base.frames()[f].id;
            check(at(base.leanAnnotations(), id), at(mine.leanAnnotations(), id),
                  at(theirs.leanAnnotations(), id), at(merged.leanAnnotations(), id));
        }
        check(at(base.pairContexts(), "turn3"), at(mine.pairContexts(), "turn3"),
              at(theirs.pairContexts(), "turn3"), at(merged.pairContexts(), "turn3"));
        EXPECT_EQ(merged.revision(), theirs.revision() + 1);
    }
}
