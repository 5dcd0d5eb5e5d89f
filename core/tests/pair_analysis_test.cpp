// SPDX-License-Identifier: Apache-2.0
#include "analysis/included_angle.h"
#include "dravik/error.h"
#include "test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <set>

using namespace dravik;

namespace {

constexpr auto corrected = JointReviewState::corrected;
constexpr auto uncertain = JointReviewState::uncertain;

// Pair "turn": the rider's frame (index 0, "turn/rider", hash 1…) and the reference's
// ("turn/ref", hash 2…).
ReviewDocument pairDocument() {
    using test::frame;
    return ReviewDocument(test::digitHash('a'), {frame("turn", "rider", "subject", '1'),
                                                 frame("turn", "ref", "reference", '2')});
}

const ReviewPair turnPair{"turn", {"turn/rider", "turn/ref"}};

struct Arm {
    Point2 shoulder, elbow, wrist;
};

// Upper arm straight up from the elbow, forearm turned so the included angle is `degrees`.
Arm armWithAngle(double degrees, Point2 elbow = {500, 400}) {
    const double radians = degrees * std::numbers::pi / 180.0;
    return {{elbow.x, elbow.y - 100},
            elbow,
            {elbow.x + 100 * std::sin(radians), elbow.y - 100 * std::cos(radians)}};
}

// Reviews the shoulder, elbow and wrist of one side ("left" or "right") of a frame.
void reviewArm(ReviewDocument& document, std::size_t frame, const std::string& side, const Arm& arm,
               JointReviewState state = JointReviewState::corrected) {
    document.setJoint(frame, side + "_shoulder", arm.shoulder, state);
    document.setJoint(frame, side + "_elbow", arm.elbow, state);
    document.setJoint(frame, side + "_wrist", arm.wrist, state);
}

// A stored context for pair "turn" with a direction and the views of both elbows comparable.
PairContext comparableContext(CornerDirection direction) {
    PairContext context;
    context.pairID = "turn";
    context.directionOverride = direction;
    context.viewComparability = {{"leftElbow", ViewComparability::comparable},
                                 {"rightElbow", ViewComparability::comparable}};
    return context;
}

PairReport analyze(const ReviewDocument& document) {
    return PairAnalysis::analyze(document, turnPair, RuleCatalog::production());
}

constexpr std::size_t rider = 0, reference = 1;

// A left turn, both elbows' views comparable, and the inside (left) arm reviewed in both photos.
ReviewDocument leftTurn(double riderAngle, double referenceAngle) {
    ReviewDocument document = pairDocument();
    document.setPairContext("turn", comparableContext(CornerDirection::left));
    reviewArm(document, rider, "left", armWithAngle(riderAngle));
    reviewArm(document, reference, "left", armWithAngle(referenceAngle));
    return document;
}

const PairObservation& observation(const PairReport& report, PairFeature feature) {
    for (const PairObservation& o : report.observations)
        if (o.feature == feature)
            return o;
    throw std::logic_error("no observation");
}

std::vector<std::string> bulletIDs(const PairReport& report) {
    std::vector<std::string> ids;
    for (const CoachingBullet& bullet : report.coaching)
        ids.push_back(bullet.id);
    return ids;
}

// The worked example of docs/analysis.md: pair "turn-3", Anna and her coach, in a left turn.
ReviewDocument workedExample() {
    ReviewDocument document(test::digitHash('a'),
                            {test::frame("turn-3", "anna", "subject", '1'),
                             test::frame("turn-3", "coach", "reference", '2')});
    document.setPairAssessments({{"turn-3", {CornerDirection::left, {}}}});
    document.setPairContext(
        "turn-3", PairContext{"turn-3",
                              std::nullopt,
                              std::map<PairFeature, KneePlacement>{
                                  {PairFeature::outsideKnee, KneePlacement::riderCloserIn}},
                              {{"leftElbow", ViewComparability::comparable}}});
    reviewArm(document, 0, "left", {{400, 300}, {460, 380}, {560, 380}});
    reviewArm(document, 1, "left", {{610, 290}, {610, 390}, {710, 390}});
    return document;
}

} // namespace

TEST(IncludedAngle, StaysAccurateAtBothEndsOfItsRange) {
    EXPECT_DOUBLE_EQ(analysis::includedAngle({-100, 0}, {0, 0}, {100, 0}), 180.0);
    EXPECT_NEAR(analysis::includedAngle({100, 1e-7}, {0, 0}, {100, 0}), 0.0, 1e-6);
}

TEST(PairAnalysisElbow, TheThresholdIsTenDegreesInclusive) {
    PairReport atThreshold = analyze(leftTurn(90.0, 80.0));
    const PairObservation& inside = observation(atThreshold, PairFeature::insideElbow);
    ASSERT_TRUE(inside.difference);
    EXPECT_NEAR(*inside.difference, 10.0, 1e-9);
    EXPECT_EQ(bulletIDs(atThreshold), std::vector<std::string>{"leftElbow"});
    EXPECT_EQ(atThreshold.coaching[0].headline, "Inside elbow: Rider’s arm is 10° straighter");
    EXPECT_EQ(atThreshold.coaching[0].detail.rfind("Reviewed 2D angle 90° for Rider vs 80° for "
                                                   "Reference rider. ",
                                                   0),
              0u);

    // Arms drawn at 45° and 35° measure 9.99999999999999° apart in floating point: still ten.
    EXPECT_EQ(analyze(leftTurn(45.0, 35.0)).coaching.size(), 1u);
    EXPECT_TRUE(analyze(leftTurn(90.0, 80.1)).coaching.empty());
    EXPECT_TRUE(analyze(leftTurn(80.1, 90.0)).coaching.empty());

    PairReport moreBent = analyze(leftTurn(80.0, 90.0));
    ASSERT_EQ(moreBent.coaching.size(), 1u);
    EXPECT_EQ(moreBent.coaching[0].headline, "Inside elbow: Rider’s arm is 10° more bent");
}

TEST(PairAnalysisElbow, OnlyViewsMarkedComparableEarnABullet) {
    for (ViewComparability views :
         {ViewComparability::unreviewed, ViewComparability::notComparable}) {
        ReviewDocument document = leftTurn(150, 120);
        PairContext context = comparableContext(CornerDirection::left);
        context.viewComparability["leftElbow"] = views;
        document.setPairContext("turn", context);
        PairReport report = analyze(document);
        EXPECT_TRUE(report.coaching.empty());
        EXPECT_EQ(observation(report, PairFeature::insideElbow).comparability, views);
        // The measurement is still reported for the reviewer to judge.
        EXPECT_NEAR(*observation(report, PairFeature::insideElbow).difference, 30.0, 1e-9);
    }
    ReviewDocument noContext = leftTurn(150, 120);
    noContext.setPairContext("turn", std::nullopt);
    noContext.setPairAssessments({{"turn", {CornerDirection::left, {}}}});
    EXPECT_TRUE(analyze(noContext).coaching.empty());
}

TEST(PairAnalysisElbow, NamesMissingReviewAndDegenerateGeometry) {
    ReviewDocument document = leftTurn(120, 120);
    // Rider's right (outside) arm: shoulder uncertain, elbow obscured, wrist never reviewed.
    document.setJoint(rider, "right_shoulder", Point2{300, 300}, JointReviewState::uncertain);
    document.setJoint(rider, "right_elbow", std::nullopt, JointReviewState::obscured);
    // Reference's right arm: all reviewed, but the wrist lies 0.5 px from the elbow.
    reviewArm(document, reference, "right", {{300, 300}, {300, 400}, {300.3, 400.4}},
              JointReviewState::confirmedVisible);
    PairReport report = analyze(document);

    EXPECT_EQ(observation(report, PairFeature::outsideElbow),
              (PairObservation{"rightElbow",
                               PairFeature::outsideElbow,
                               {std::nullopt, {"right_shoulder", "right_elbow", "right_wrist"}},
                               {std::nullopt, {}, true},
                               std::nullopt,
                               ViewComparability::comparable}));
    EXPECT_NEAR(*observation(report, PairFeature::insideElbow).difference, 0.0, 1e-9);
    EXPECT_EQ(report.focusPoints.size(), 1u);

    // A 1 px segment is long enough.
    reviewArm(document, reference, "right", {{300, 300}, {300, 400}, {301, 400}});
    EXPECT_NEAR(*observation(analyze(document), PairFeature::outsideElbow).reference.angle, 90.0,
                1e-9);
}

TEST(PairAnalysisDirection, FollowsTheOverrideThenThePhotoAssessment) {
    ReviewDocument document = pairDocument();
    reviewArm(document, rider, "left", armWithAngle(150));
    reviewArm(document, reference, "left", armWithAngle(130));
    reviewArm(document, rider, "right", armWithAngle(100));
    reviewArm(document, reference, "right", armWithAngle(105));

    // No direction anywhere: nothing is inside or outside, so nothing is observed or advised.
    PairReport unknown = analyze(document);
    EXPECT_TRUE(unknown.observations.empty() && unknown.focusPoints.empty() &&
                unknown.coaching.empty());

    document.setPairAssessments({{"turn", {CornerDirection::right, {}}}});
    PairReport right = analyze(document);
    EXPECT_EQ(right.effectiveCornerDirection, CornerDirection::right);
    EXPECT_EQ(observation(right, PairFeature::insideElbow).id, "rightElbow");
    ASSERT_EQ(right.focusPoints.size(), 2u);
    EXPECT_NEAR(right.focusPoints[0].difference, 20.0, 1e-9); // |+20| before |−5|
    EXPECT_NEAR(right.focusPoints[1].difference, -5.0, 1e-9);

    document.setPairContext("turn", comparableContext(CornerDirection::left));
    PairReport left = analyze(document);
    EXPECT_EQ(left.effectiveCornerDirection, CornerDirection::left);
    EXPECT_EQ(bulletIDs(left), std::vector<std::string>{"leftElbow"});
    EXPECT_EQ(left.coaching[0].feature, PairFeature::insideElbow);

    // "Unknown" as an override states nothing: the photo assessment decides.
    document.setPairContext("turn", comparableContext(CornerDirection::unknown));
    EXPECT_EQ(analyze(document).effectiveCornerDirection, CornerDirection::right);
}

TEST(PairAnalysisKnees, BulletsComeOnlyFromAPlacedDifference) {
    ReviewDocument document = pairDocument();
    PairContext context = comparableContext(CornerDirection::right);
    context.kneePlacements = std::map<PairFeature, KneePlacement>{
        {PairFeature::insideKnee, KneePlacement::riderCloserIn},
        {PairFeature::outsideKnee, KneePlacement::riderFurtherOut}};
    document.setPairContext("turn", context);
    PairReport report = analyze(document);
    ASSERT_EQ(bulletIDs(report), (std::vector<std::string>{"insideKnee", "outsideKnee"}));
    EXPECT_EQ(report.coaching[0].headline, "Inside knee: Rider’s knee is closer in");
    EXPECT_EQ(report.coaching[1].headline, "Outside knee: Rider’s knee is further out");
    // The bullet's feature highlights the knee on the side the turn makes inside.
    EXPECT_EQ(joints(*report.coaching[0].feature, report.effectiveCornerDirection),
              (std::vector<std::string>{"right_hip", "right_knee", "right_ankle"}));

    for (KneePlacement none :
         {KneePlacement::cannotCompare, KneePlacement::similar, KneePlacement::obscured}) {
        context.kneePlacements = std::map<PairFeature, KneePlacement>{
            {PairFeature::insideKnee, none}, {PairFeature::outsideKnee, none}};
        document.setPairContext("turn", context);
        EXPECT_TRUE(analyze(document).coaching.empty()) << rawValue(none);
    }

    // Placements made while no direction is known name no side of the body.
    context.directionOverride.reset();
    context.kneePlacements = std::map<PairFeature, KneePlacement>{
        {PairFeature::insideKnee, KneePlacement::riderCloserIn}};
    document.setPairContext("turn", context);
    EXPECT_TRUE(analyze(document).coaching.empty());
}

TEST(PairAnalysisPhotoCoaching, ReplacesTheRulesUnlessTheOverrideContradictsIt) {
    const PairPhotoAssessment photo{
        CornerDirection::left,
        {{"look", "Eyes to the exit", "Head turned further towards the exit.", std::nullopt}}};
    ReviewDocument document = leftTurn(150, 120); // an elbow bullet under the rules
    document.setPairAssessments({{"turn", photo}});

    PairReport agreeing = analyze(document);
    EXPECT_TRUE(agreeing.hasPhotoCoaching);
    EXPECT_EQ(agreeing.coaching, photo.coaching);
    EXPECT_EQ(agreeing.observations.size(), 2u); // the measurements stay available

    document.setPairContext("turn", comparableContext(CornerDirection::right));
    PairReport contradicted = analyze(document);
    EXPECT_FALSE(contradicted.hasPhotoCoaching);
    EXPECT_EQ(contradicted.effectiveCornerDirection, CornerDirection::right);
    // The rules apply under the override: the reviewed left arm is now the outside one.
    ASSERT_EQ(bulletIDs(contradicted), std::vector<std::string>{"leftElbow"});
    EXPECT_EQ(contradicted.coaching[0].feature, PairFeature::outsideElbow);

    // A photo review that saw no direction cannot be contradicted.
    document.setPairAssessments({{"turn", {std::nullopt, photo.coaching}}});
    PairReport undirected = analyze(document);
    EXPECT_TRUE(undirected.hasPhotoCoaching);
    EXPECT_EQ(undirected.effectiveCornerDirection, CornerDirection::right);

    // Without a reference photo nothing is compared, but the photo review still applies.
    ReviewPair alone{"turn", {"turn/rider"}};
    PairReport single = PairAnalysis::analyze(document, alone, RuleCatalog::production());
    EXPECT_TRUE(single.observations.empty());
    EXPECT_TRUE(single.hasPhotoCoaching);
}

TEST(PairAnalysisReport, RefusesPairsNotInTheDocument) {
    const ReviewPair stranger{"turn", {"turn/rider", "turn/ghost"}};
    EXPECT_EQ(dravik::test::failureOf([&] {
                  PairAnalysis::analyze(pairDocument(), stranger, RuleCatalog::production());
              }),
              "Pair “turn” names the photo “turn/ghost”, which is not in "
              "“joint-review-aaaaaaaaaaaa.json”.");
    EXPECT_THROW(
        PairAnalysis::analyze(pairDocument(), ReviewPair{"turn", {}}, RuleCatalog::production()),
        DravikError);
}

TEST(PairDigest, TheWorkedExampleRecomputesAndChangesExactlyWithTheEvidence) {
    const ReviewPair pair{"turn-3", {"turn-3/anna", "turn-3/coach"}};
    const ReviewDocument base = workedExample();
    auto analyzeExample = [&](const ReviewDocument& d,
                              const RuleCatalog& catalog = RuleCatalog::production()) {
        return PairAnalysis::analyze(d, pair, catalog);
    };
    const PairReport report = analyzeExample(base);
    EXPECT_NEAR(*report.observations.at(0).difference, 36.8699, 1e-4);
    EXPECT_EQ(bulletIDs(report), (std::vector<std::string>{"leftElbow", "outsideKnee"}));
    // The digest printed in docs/analysis.md for this evidence.
    const std::string digest = report.evidenceDigest;
    EXPECT_EQ(digest, "sha256:83e00d4b88ac96149c7217e915aa04ae985668d9ce1b276d53a605e44f0c574c");

    auto digestAfter = [&](const std::function<void(ReviewDocument&)>& change) {
        ReviewDocument changed = base;
        change(changed);
        return analyzeExample(changed).evidenceDigest;
    };
    auto context = [](ReviewDocument& d, const std::function<void(PairContext&)>& change) {
        PairContext changed = *d.pairContext("turn-3");
        change(changed);
        d.setPairContext("turn-3", changed);
    };

    // Not evidence: the revision, joints the rules do not use, how a used point was reviewed,
    // and which kind of missing review a joint has.
    EXPECT_EQ(digestAfter([&](ReviewDocument& d) {
                  context(d, [](PairContext&) {});
                  d.setJoint(0, "nose", Point2{10, 10}, corrected);
                  d.setJoint(0, "left_knee", Point2{10, 10}, corrected);
                  d.setJoint(1, "left_elbow", Point2{610, 390}, JointReviewState::confirmedVisible);
                  d.setJoint(0, "right_wrist", Point2{5, 5}, uncertain);
                  d.setJoint(1, "right_wrist", std::nullopt, JointReviewState::obscured);
              }),
              digest);

    const std::function<void(ReviewDocument&)> changes[] = {
        [](ReviewDocument& d) {
            d.setJoint(0, "left_elbow", Point2{460, 380.5}, corrected);
        },
        [](ReviewDocument& d) {
            d.setJoint(1, "left_wrist", Point2{1, 1}, uncertain);
        },
        [](ReviewDocument& d) {
            d.setJoint(0, "right_wrist", Point2{5, 5}, corrected);
        },
        [&](ReviewDocument& d) {
            context(d, [](PairContext& c) {
                c.viewComparability["leftElbow"] = ViewComparability::notComparable;
            });
        },
        [&](ReviewDocument& d) { context(d, [](PairContext& c) { c.kneePlacements.reset(); }); },
        [](ReviewDocument& d) {
            d.setPairAssessments({{"turn-3", {CornerDirection::right, {}}}});
        },
        [](ReviewDocument& d) { d.setPairAssessments({}); },
        [&](ReviewDocument& d) {
            auto frames = d.frames();
            frames[1].sourceHash = test::digitHash('3');
            d = ReviewDocument(d.identity(), frames);
            d.setPairAssessments(base.pairAssessments());
            d.setPairContext("turn-3", *base.pairContext("turn-3"));
        },
    };
    std::set<std::string> seen{
        digest, analyzeExample(base, RuleCatalog{"elbow-12deg-v1", 12.0, 1.0}).evidenceDigest};
    EXPECT_EQ(seen.size(), 2u) << "the rules are evidence";
    for (const auto& change : changes)
        EXPECT_TRUE(seen.insert(digestAfter(change)).second) << "a change went unnoticed";
}
