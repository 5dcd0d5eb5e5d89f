// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include "json/geometry_codec.h"
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace dravik {
namespace {

using leantest::line;

TEST(LeanAngles, WrapKeepsTheHalfOpenRangeAndOrientationTurnsCounterClockwise) {
    const std::pair<double, double> wraps[] = {{90, 90},   {-90, 90},     {270, 90},
                                               {-270, 90}, {90.5, -89.5}, {-89.5, -89.5},
                                               {-100, 80}, {725, 5}};
    for (auto [in, out] : wraps)
        EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(in), out) << in;
    EXPECT_FALSE(std::signbit(LeanAnalysis::wrap(-180))) << "never printed as -0";
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 10, 0, 0)), 90); // up the screen
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 0, 10, 10)), -45);
}

TEST(LeanMeasure, WheelTopToTheRightIsPositiveWhateverTheEndpointOrder) {
    ReviewFrame f = leantest::riderFrame();
    auto angle = [&](LeanLine wheel, LeanLine reference) {
        return LeanAnalysis::measure(leantest::lines(f, wheel, reference)).value().angle;
    };
    const LeanLine level = line(0, 200, 100, 200);
    const double right = angle(line(0, 100, 10, 0), level);
    EXPECT_NEAR(right, 5.710593137499629, 1e-12);
    EXPECT_NEAR(angle(line(10, 0, 0, 100), line(100, 200, 0, 200)), right, 1e-12);
    EXPECT_NEAR(angle(line(10, 100, 0, 0), level), -right, 1e-12);
    EXPECT_EQ(angle(line(50, 500, 50, 100), level), 0);
    EXPECT_EQ(angle(line(0, 500, 400, 500), level), 90);

    // A camera rolled by 10° turns both lines alike and leaves the angle as it was.
    const double c = std::cos(0.17453292519943295), s = std::sin(0.17453292519943295);
    auto roll = [&](const LeanLine& l) {
        return LeanLine{{l.a.x * c - l.a.y * s, l.a.x * s + l.a.y * c},
                        {l.b.x * c - l.b.y * s, l.b.x * s + l.b.y * c},
                        l.uncertainty};
    };
    EXPECT_NEAR(angle(roll(line(0, 100, 10, 0)), roll(level)), right, 1e-9);
}

TEST(LeanMeasure, NoAngleWithoutTwoUsableLinesOrWithAnUnobservableWheel) {
    ReviewFrame f = leantest::riderFrame();
    const LeanAnnotation good = leantest::lines(f, line(0, 100, 10, 0), line(0, 200, 100, 200));
    ASSERT_TRUE(LeanAnalysis::measure(good));
    const std::function<void(LeanAnnotation&)> breaks[] = {
        [](LeanAnnotation& a) { a.wheel.reset(); },
        [](LeanAnnotation& a) { a.reference.reset(); },
        [](LeanAnnotation& a) { a.wheelNotObservable = true; },
        [](LeanAnnotation& a) { a.wheel = line(5, 5, 5, 5); },
        [](LeanAnnotation& a) { a.reference = line(5, 5, 5.5, 5.5); },
        [](LeanAnnotation& a) { a.wheel->b.x = std::numeric_limits<double>::quiet_NaN(); },
        [](LeanAnnotation& a) { a.reference->uncertainty = -1; },
    };
    for (const auto& change : breaks) {
        LeanAnnotation a = good;
        change(a);
        EXPECT_FALSE(LeanAnalysis::measure(a));
    }
}

TEST(LeanMeasure, CarriesTheTrimmedFeatureOfItsBasisAndIsReviewedOnlyWithBothLines) {
    LeanAnnotation a =
        leantest::lines(leantest::riderFrame(), line(0, 100, 10, 0), line(0, 200, 100, 200),
                        LeanBasis::sharedFeature, "  kerb stone 3 ");
    a.wheelReviewed = true;
    auto m = LeanAnalysis::measure(a).value();
    EXPECT_EQ(m.featureID, "kerb stone 3");
    EXPECT_FALSE(m.reviewed);
    a.referenceReviewed = true;
    a.basis = LeanBasis::assumedLevel;
    m = LeanAnalysis::measure(a).value();
    EXPECT_TRUE(m.reviewed);
    EXPECT_EQ(m.featureID, "") << "an assumed-level horizon names no feature";
}

class LeanPairTest : public ::testing::Test {
  protected:
    LeanPairTest() {
        // Rider 7.14° ± 1.00°, reference rider −5.10° ± 1.10°: the worked example of docs/lean.md.
        rider = leantest::lines(*document.frame("p1/rider"), line(400, 900, 460, 300, 3),
                                line(100, 950, 900, 930, 3));
        reference = leantest::lines(*document.frame("p1/ref"), line(1200, 880, 1150, 320, 4),
                                    line(1000, 900, 1800, 900, 2));
        put(rider);
        put(reference);
    }
    void put(const LeanAnnotation& a) { document.setLeanAnnotation(a.frameID, a); }
    std::optional<LeanComparison> compare() {
        return LeanAnalysis::compare(document, leantest::pair());
    }
    std::string digest() { return LeanAnalysis::evidenceDigest(document, leantest::pair()); }

    ReviewDocument document = leantest::pairDocument();
    LeanAnnotation rider;
    LeanAnnotation reference;
};

TEST_F(LeanPairTest, IntervalsAddEachLinesSensitivityAndDifferenceIsRiderMinusReference) {
    const LeanMeasurement m = LeanAnalysis::measure(rider).value();
    EXPECT_NEAR(m.angle, 7.142689321664278, 1e-12);
    EXPECT_NEAR(m.low(), 6.14301774874527, 1e-12);
    EXPECT_NEAR(m.high(), 8.142360894583287, 1e-12);
    // 2u / length = 1 gives exactly 45°; ten times the length, atan(0.1).
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 40, 20)), 45, 1e-12);
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 400, 20)), 5.710593137499643, 1e-12);

    auto c = compare().value();
    EXPECT_NEAR(c.difference, 12.244854574022469, 1e-12);
    EXPECT_NEAR(c.low(), 10.143493552340722, 1e-12);
    EXPECT_NEAR(c.high(), 14.346215595704216, 1e-12);
    EXPECT_EQ(c.reference, LeanAnalysis::measure(reference));

    const ReviewPair single{"p1", {"p1/rider"}}, unknown{"p1", {"p1/rider", "p1/ghost"}};
    EXPECT_THROW(LeanAnalysis::compare(document, single), DravikError);
    EXPECT_THROW(LeanAnalysis::evidenceDigest(document, unknown), DravikError);
    EXPECT_EQ(test::failureOf([&] { LeanAnalysis::compare(document, unknown); }),
              "Frame “p1/ghost” of pair “p1” is not in “joint-review-999999999999.json”.");
}

// Bases that differ, and missing or unmeasurable lines, are the report's gaps below.
TEST_F(LeanPairTest, SharedFeaturesCompareOnlyWhenTheyNameTheSameFeature) {
    LeanAnnotation shared = rider, sharedReference = reference;
    shared.basis = sharedReference.basis = LeanBasis::sharedFeature;
    shared.featureID = "gate post";
    sharedReference.featureID = "kerb";
    put(shared);
    put(sharedReference);
    EXPECT_FALSE(compare()) << "features differ";
    sharedReference.featureID = " gate post ";
    put(sharedReference);
    EXPECT_TRUE(compare()) << "same feature, blanks aside";
    shared.featureID = sharedReference.featureID = "  ";
    put(shared);
    put(sharedReference);
    EXPECT_FALSE(compare()) << "an unnamed feature matches nothing";
}

TEST_F(LeanPairTest, ReportMeasuresShownLinesAndSaysWhyNothingCompares) {
    const auto report = [&](const std::map<std::string, LeanAnnotation>& proposals = {}) {
        return LeanAnalysis::report(document, leantest::pair(), proposals);
    };
    LeanReport full = report();
    EXPECT_EQ(full.comparison, compare());
    EXPECT_FALSE(full.gap);
    EXPECT_EQ(full.evidenceDigest, digest());
    EXPECT_EQ(full.frame("p1/rider")->measurement, LeanAnalysis::measure(rider));
    EXPECT_NEAR(full.frame("p1/rider")->measurement->referenceOrientation,
                LeanAnalysis::orientation(*rider.reference), 1e-12);
    EXPECT_FALSE(full.approved);

    LeanPairContext approval;
    approval.pairID = "p1";
    approval.approvalDigest = digest();
    document.setLeanPairContext("p1", approval);
    EXPECT_TRUE(report().approved);
    LeanAnnotation moved = reference;
    moved.wheel->b.x += 3;
    put(moved);
    EXPECT_FALSE(report().approved) << "the approval names the old evidence";

    // A proposal is shown and measured, but only saved lines are compared.
    document.setLeanAnnotation("p1/ref", std::nullopt);
    const LeanReport proposed = report({{"p1/ref", reference}});
    EXPECT_EQ(proposed.frame("p1/ref")->annotation, reference);
    EXPECT_TRUE(proposed.frame("p1/ref")->measurement);
    EXPECT_EQ(proposed.gap->explanation,
              "The Reference rider’s photo has no saved lean lines yet.");

    LeanAnnotation unobservable = reference;
    unobservable.wheelNotObservable = true;
    put(unobservable);
    EXPECT_EQ(report().gap->kind, LeanComparisonGap::Kind::unmeasurable);
    EXPECT_EQ(
        report().gap->explanation,
        "The Reference rider’s lines cannot be measured: the wheel is marked not observable.");
    LeanAnnotation shared = reference;
    shared.basis = LeanBasis::sharedFeature;
    put(shared);
    EXPECT_EQ(report().gap->kind, LeanComparisonGap::Kind::differentBases);
    LeanAnnotation noWheel = rider;
    noWheel.setWheel(std::nullopt);
    put(noWheel);
    EXPECT_EQ(report().gap->explanation, "The Rider’s photo has no wheel axis.");

    const LeanReport alone = LeanAnalysis::report(document, std::nullopt, {});
    EXPECT_FALSE(alone.comparable || alone.gap || alone.evidenceDigest);
    EXPECT_EQ(alone.frames.size(), 2u);
}

TEST_F(LeanPairTest, DigestFollowsExactlyTheEvidence) {
    const std::string original = digest();
    EXPECT_TRUE(json::isContentHash(original));

    // Not evidence: the checks, provenance, revision, an unused feature ID.
    LeanPairContext context;
    context.pairID = "p1";
    context.sameWheelCue = true;
    document.setLeanPairContext("p1", context);
    LeanAnnotation same = rider;
    same.provenance = "edge-finder 2";
    same.featureID = "only used by a shared feature";
    put(same);
    EXPECT_EQ(digest(), original);

    // Evidence: each field of either side moves the digest; putting it back restores it.
    const std::function<void(LeanAnnotation&)> changes[] = {
        [](LeanAnnotation& a) { a.wheel->a.x += 0.25; },
        [](LeanAnnotation& a) { a.reference->b.y += 1; },
        [](LeanAnnotation& a) { a.reference->uncertainty = 2.5; },
        [](LeanAnnotation& a) { a.wheelReviewed = true; },
        [](LeanAnnotation& a) { a.wheelNotObservable = true; },
        [](LeanAnnotation& a) { a.referenceReviewed = true; },
        [](LeanAnnotation& a) { a.reference.reset(); },
        [](LeanAnnotation& a) { a.basis = LeanBasis::sharedFeature, a.featureID = "gate post"; },
        [](LeanAnnotation& a) { a.basis = LeanBasis::sharedFeature, a.featureID = "gate post 2"; },
    };
    std::set<std::string> seen{original};
    for (const auto& change : changes)
        for (const LeanAnnotation* side : {&rider, &reference}) {
            LeanAnnotation changed = *side;
            change(changed);
            put(changed);
            EXPECT_TRUE(seen.insert(digest()).second) << "a change went unnoticed";
            put(*side);
            EXPECT_EQ(digest(), original);
        }

    LeanAnnotation zero = rider;
    zero.wheel->a.x = 0.0;
    put(zero);
    const std::string positive = digest();
    zero.wheel->a.x = -0.0;
    put(zero);
    EXPECT_EQ(digest(), positive) << "−0 and 0 are the same place";

    document.setLeanAnnotation("p1/rider", std::nullopt);
    EXPECT_TRUE(seen.insert(digest()).second);

    std::vector<ReviewFrame> frames = document.frames();
    frames[1].sourceHash = test::digitHash('c');
    ReviewDocument rephotographed(document.identity(), frames);
    for (const auto& [id, a] : document.leanAnnotations())
        rephotographed.setLeanAnnotation(id, a);
    EXPECT_TRUE(seen.insert(LeanAnalysis::evidenceDigest(rephotographed, leantest::pair())).second);
}

} // namespace
} // namespace dravik
