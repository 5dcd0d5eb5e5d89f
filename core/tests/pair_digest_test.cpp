#include "analysis/evidence_digest.h"
#include "hash/sha256.h"
#include "pair_fixtures.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace pairtest;

namespace {

// The worked example of docs/analysis.md.
struct Example {
    ReviewDocument document;
    ReviewPair pair{"turn-3", {"turn-3/anna", "turn-3/coach"}};

    Example()
        : document("sha256:" + std::string(64, 'a'),
                   {frame("turn-3", "anna", "subject"), frame("turn-3", "coach", "reference")}) {
        document.setPairAssessments({{"turn-3", {CornerDirection::left, {}}}});
        PairContext context;
        context.pairID = "turn-3";
        context.kneePlacements = std::map<PairFeature, KneePlacement>{
            {PairFeature::outsideKnee, KneePlacement::riderCloserIn}};
        context.viewComparability = {{"leftElbow", ViewComparability::comparable}};
        document.setPairContext("turn-3", context);
        reviewArm(document, 0, "left", {{400, 300}, {460, 380}, {560, 380}});
        reviewArm(document, 1, "left", {{610, 290}, {610, 390}, {710, 390}});
    }

    PairReport analyze(const RuleCatalog& catalog = RuleCatalog::production()) const {
        return PairAnalysis::analyze(document, pair, catalog);
    }
};

} // namespace

TEST(PairDigest, TheWorkedExampleRecomputes) {
    Example example;
    PairReport report = example.analyze();
    ASSERT_EQ(report.observations.size(), 2u);
    const PairObservation& inside = report.observations[0];
    EXPECT_NEAR(*inside.rider.angle, 126.8699, 1e-4);
    EXPECT_DOUBLE_EQ(*inside.reference.angle, 90.0);
    EXPECT_NEAR(*inside.difference, 36.8699, 1e-4);
    EXPECT_EQ(report.observations[1].rider.missingJoints,
              (std::vector<std::string>{"right_shoulder", "right_elbow", "right_wrist"}));
    ASSERT_EQ(report.coaching.size(), 2u);
    EXPECT_EQ(report.coaching[0].headline, "Inside elbow: Rider’s arm is 37° straighter");
    EXPECT_EQ(report.coaching[1].headline, "Outside knee: Rider’s knee is closer in");

    const std::string canonical =
        R"({"analyzer":"pair-analysis-1","context":{"kneePlacements":{"outsideKnee":)"
        R"("riderCloserIn"},"pairID":"turn-3","viewComparability":{"leftElbow":"comparable"}},)"
        R"("frames":[{"id":"turn-3/anna","joints":{"left_elbow":{"x":460.0,"y":380.0},)"
        R"("left_shoulder":{"x":400.0,"y":300.0},"left_wrist":{"x":560.0,"y":380.0},)"
        R"("right_elbow":null,"right_shoulder":null,"right_wrist":null},"sourceHash":)"
        R"("sha256:1111111111111111111111111111111111111111111111111111111111111111"},)"
        R"({"id":"turn-3/coach","joints":{"left_elbow":{"x":610.0,"y":390.0},)"
        R"("left_shoulder":{"x":610.0,"y":290.0},"left_wrist":{"x":710.0,"y":390.0},)"
        R"("right_elbow":null,"right_shoulder":null,"right_wrist":null},"sourceHash":)"
        R"("sha256:2222222222222222222222222222222222222222222222222222222222222222"}],)"
        R"("pairID":"turn-3","photoAssessment":{"coaching":[],"direction":"Left"},)"
        R"("rules":"elbow-10deg-v1"})";
    EXPECT_EQ(report.evidenceDigest, sha256Text(canonical.data(), canonical.size()));
    EXPECT_EQ(report.evidenceDigest,
              "sha256:83e00d4b88ac96149c7217e915aa04ae985668d9ce1b276d53a605e44f0c574c");
    EXPECT_EQ(report.shortDigest(), report.evidenceDigest.substr(7, 12));
}

TEST(PairDigest, ChangesExactlyWhenTheEvidenceChanges) {
    const Example base;
    const std::string digest = base.analyze().evidenceDigest;
    auto digestAfter = [&](auto change) {
        Example example;
        change(example);
        return example.analyze().evidenceDigest;
    };

    // Not evidence: the revision, joints the rules do not use, how a used point was reviewed,
    // and which kind of missing review a joint has.
    EXPECT_EQ(digestAfter([](Example& e) {
                  e.document.setPairContext("turn-3", *e.document.pairContext("turn-3"));
                  e.document.setJoint(0, "nose", Point2{10, 10}, JointReviewState::corrected);
                  e.document.setJoint(0, "left_knee", Point2{10, 10}, JointReviewState::corrected);
                  e.document.setJoint(1, "left_elbow", Point2{610, 390},
                                      JointReviewState::confirmedVisible);
                  e.document.setJoint(0, "right_wrist", Point2{5, 5}, JointReviewState::uncertain);
                  e.document.setJoint(1, "right_wrist", std::nullopt, JointReviewState::obscured);
              }),
              digest);

    const std::vector<std::string> changed = {
        digestAfter([](Example& e) {
            e.document.setJoint(0, "left_elbow", Point2{460, 380.5}, JointReviewState::corrected);
        }),
        digestAfter([](Example& e) {
            e.document.setJoint(1, "left_wrist", Point2{1, 1}, JointReviewState::uncertain);
        }),
        digestAfter([](Example& e) {
            e.document.setJoint(0, "right_wrist", Point2{5, 5}, JointReviewState::corrected);
        }),
        digestAfter([](Example& e) {
            PairContext context = *e.document.pairContext("turn-3");
            context.viewComparability["leftElbow"] = ViewComparability::notComparable;
            e.document.setPairContext("turn-3", context);
        }),
        digestAfter([](Example& e) {
            PairContext context = *e.document.pairContext("turn-3");
            context.kneePlacements.reset();
            e.document.setPairContext("turn-3", context);
        }),
        digestAfter([](Example& e) {
            e.document.setPairAssessments({{"turn-3", {CornerDirection::right, {}}}});
        }),
        digestAfter([](Example& e) { e.document.setPairAssessments({}); }),
        digestAfter([&](Example& e) {
            auto frames = e.document.frames();
            frames[1].sourceHash = "sha256:" + std::string(64, '3');
            e.document = ReviewDocument(e.document.identity(), frames);
            e.document.setPairAssessments({{"turn-3", {CornerDirection::left, {}}}});
            e.document.setPairContext("turn-3", *base.document.pairContext("turn-3"));
        }),
        base.analyze(RuleCatalog{"elbow-12deg-v1", 12.0, 1.0}).evidenceDigest,
    };
    for (std::size_t i = 0; i < changed.size(); ++i) {
        EXPECT_NE(changed[i], digest) << "change " << i;
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_NE(changed[i], changed[j]) << "changes " << j << " and " << i;
    }
}
