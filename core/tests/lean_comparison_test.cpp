#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include "json/geometry_codec.h"
#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace dravik {
namespace {

using leantest::line;

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
    void put(const LeanAnnotation& annotation) { leantest::store(document, annotation); }
    std::optional<LeanComparison> compare() {
        return LeanAnalysis::compare(document, leantest::pair());
    }
    std::string digest() { return LeanAnalysis::evidenceDigest(document, leantest::pair()); }

    ReviewDocument document = leantest::pairDocument();
    LeanAnnotation rider;
    LeanAnnotation reference;
};

TEST_F(LeanPairTest, DifferenceIsRiderMinusReferenceWithBothSensitivities) {
    auto c = compare().value();
    EXPECT_NEAR(c.difference, 12.244854574022469, 1e-12);
    EXPECT_NEAR(c.sensitivity, 2.1013610216817473, 1e-12);
    EXPECT_NEAR(c.low(), 10.143493552340722, 1e-12);
    EXPECT_NEAR(c.high(), 14.346215595704216, 1e-12);
    EXPECT_EQ(c.reference, LeanAnalysis::measure(reference));
}

TEST_F(LeanPairTest, NoComparisonAcrossBasesFeaturesOrMissingMeasurements) {
    LeanAnnotation shared = rider, sharedReference = reference;
    shared.basis = sharedReference.basis = LeanBasis::sharedFeature;
    shared.featureID = "gate post";
    put(shared);
    EXPECT_FALSE(compare()) << "bases differ";
    sharedReference.featureID = "kerb";
    put(sharedReference);
    EXPECT_FALSE(compare()) << "features differ";
    sharedReference.featureID = " gate post ";
    put(sharedReference);
    EXPECT_TRUE(compare()) << "same feature, blanks aside";
    shared.featureID = sharedReference.featureID = "  ";
    put(shared);
    put(sharedReference);
    EXPECT_FALSE(compare()) << "an unnamed feature matches nothing";

    put(rider);
    LeanAnnotation unobservable = reference;
    unobservable.wheelNotObservable = true;
    put(unobservable);
    EXPECT_FALSE(compare());
    document.setLeanAnnotation("p1/ref", std::nullopt);
    EXPECT_FALSE(compare());
}

TEST_F(LeanPairTest, PairsWithoutReferenceOrKnownFramesAreRefused) {
    const ReviewPair single{"p1", {"p1/rider"}}, unknown{"p1", {"p1/rider", "p1/ghost"}};
    EXPECT_THROW(LeanAnalysis::compare(document, single), DravikError);
    EXPECT_THROW(LeanAnalysis::evidenceDigest(document, single), DravikError);
    EXPECT_THROW(LeanAnalysis::evidenceDigest(document, unknown), DravikError);
    try {
        LeanAnalysis::compare(document, unknown);
        FAIL() << "an unknown frame was accepted";
    } catch (const DravikError& error) {
        EXPECT_EQ(error.message(),
                  "Frame “p1/ghost” of pair “p1” is not in “joint-review-999999999999.json”.");
    }
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
        [](LeanAnnotation& a) { a.wheel->uncertainty = 5; },
        [](LeanAnnotation& a) { a.reference->b.y += 1; },
        [](LeanAnnotation& a) { a.reference->uncertainty = 2.5; },
        [](LeanAnnotation& a) { a.wheelReviewed = true; },
        [](LeanAnnotation& a) { a.wheelNotObservable = true; },
        [](LeanAnnotation& a) { a.referenceReviewed = true; },
        [](LeanAnnotation& a) { a.basis = LeanBasis::sharedFeature; },
        [](LeanAnnotation& a) { a.reference.reset(); },
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

    LeanAnnotation shared = rider;
    shared.basis = LeanBasis::sharedFeature;
    shared.featureID = "gate post";
    put(shared);
    EXPECT_TRUE(seen.insert(digest()).second);
    shared.featureID = "gate post 2";
    put(shared);
    EXPECT_TRUE(seen.insert(digest()).second);
    document.setLeanAnnotation("p1/rider", std::nullopt);
    EXPECT_TRUE(seen.insert(digest()).second);

    std::vector<ReviewFrame> frames = document.frames();
    frames[1].sourceHash = leantest::hash('c');
    ReviewDocument rephotographed(document.identity(), frames);
    for (const auto& [id, a] : document.leanAnnotations())
        rephotographed.setLeanAnnotation(id, a);
    EXPECT_TRUE(seen.insert(LeanAnalysis::evidenceDigest(rephotographed, leantest::pair())).second);
}

} // namespace
} // namespace dravik
