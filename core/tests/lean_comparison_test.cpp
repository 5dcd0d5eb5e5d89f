#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include "json/geometry_codec.h"
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace dravik {
namespace {

using leantest::line;

class LeanPairTest : public ::testing::Test {
  protected:
    LeanPairTest() {
        // Rider: 7.14° ± 1.00°; reference rider: −5.10° ± 1.10° (docs/lean.md).
        rider = leantest::lines(*document.frame("p1/rider"), line(400, 900, 460, 300, 3),
                                line(100, 950, 900, 930, 3));
        reference = leantest::lines(*document.frame("p1/ref"), line(1200, 880, 1150, 320, 4),
                                    line(1000, 900, 1800, 900, 2));
        leantest::store(document, rider);
        leantest::store(document, reference);
    }

    void replace(const LeanAnnotation& annotation) { leantest::store(document, annotation); }
    std::string digest() { return LeanAnalysis::evidenceDigest(document, leantest::pair()); }

    ReviewDocument document = leantest::pairDocument();
    LeanAnnotation rider;
    LeanAnnotation reference;
};

TEST_F(LeanPairTest, DifferenceIsRiderMinusReferenceWithBothSensitivities) {
    auto c = LeanAnalysis::compare(document, leantest::pair());
    ASSERT_TRUE(c);
    EXPECT_NEAR(c->difference, 7.142689321664278 + 5.102165252358191, 1e-12);
    EXPECT_NEAR(c->sensitivity,
                0.5700955000396211 + 0.4295760728793876 + 0.8152129384856643 + 0.2864765102770745,
                1e-12);
    EXPECT_NEAR(c->low(), 10.143493552340722, 1e-12);
    EXPECT_NEAR(c->high(), 14.346215595704216, 1e-12);
    EXPECT_EQ(c->rider, *LeanAnalysis::measure(rider));
    EXPECT_EQ(c->reference, *LeanAnalysis::measure(reference));
}

TEST_F(LeanPairTest, NoComparisonAcrossBasesFeaturesOrMissingMeasurements) {
    auto compare = [&] { return LeanAnalysis::compare(document, leantest::pair()); };

    LeanAnnotation shared = rider;
    shared.basis = LeanBasis::sharedFeature;
    shared.featureID = "gate post";
    replace(shared);
    EXPECT_FALSE(compare()) << "bases differ";

    LeanAnnotation sharedReference = reference;
    sharedReference.basis = LeanBasis::sharedFeature;
    sharedReference.featureID = "kerb";
    replace(sharedReference);
    EXPECT_FALSE(compare()) << "feature IDs differ";

    sharedReference.featureID = " gate post ";
    replace(sharedReference);
    EXPECT_TRUE(compare()) << "same feature, blanks aside";

    shared.featureID = sharedReference.featureID = "   ";
    replace(shared);
    replace(sharedReference);
    EXPECT_FALSE(compare()) << "an unnamed feature matches nothing";

    replace(rider);
    replace(reference);
    ASSERT_TRUE(compare());
    LeanAnnotation unobservable = reference;
    unobservable.wheelNotObservable = true;
    replace(unobservable);
    EXPECT_FALSE(compare());
    document.setLeanAnnotation("p1/ref", std::nullopt);
    EXPECT_FALSE(compare());
}

TEST_F(LeanPairTest, PairsWithoutReferenceOrKnownFramesAreRefused) {
    EXPECT_THROW(LeanAnalysis::compare(document, ReviewPair{"p1", {"p1/rider"}}), DravikError);
    EXPECT_THROW(LeanAnalysis::evidenceDigest(document, ReviewPair{"p1", {"p1/rider"}}),
                 DravikError);
    ReviewPair unknown{"p1", {"p1/rider", "p1/ghost"}};
    try {
        LeanAnalysis::compare(document, unknown);
        FAIL() << "an unknown frame was accepted";
    } catch (const DravikError& error) {
        EXPECT_EQ(error.message(), "Frame “p1/ghost” of pair “p1” is not in "
                                   "“joint-review-999999999999.json”.");
    }
    EXPECT_THROW(LeanAnalysis::evidenceDigest(document, unknown), DravikError);
}

TEST_F(LeanPairTest, DigestFollowsExactlyTheEvidence) {
    const std::string original = digest();
    EXPECT_TRUE(json::isContentHash(original));
    EXPECT_EQ(digest(), original);

    // Not evidence: the reviewer's checks, provenance, revision, blanks around a feature ID.
    LeanPairContext context;
    context.pairID = "p1";
    context.sameWheelCue = true;
    document.setLeanPairContext("p1", context);
    LeanAnnotation relabelled = rider;
    relabelled.provenance = "edge-finder 2";
    replace(relabelled);
    LeanAnnotation unusedFeature = reference;
    unusedFeature.featureID = "only used by a shared feature";
    replace(unusedFeature);
    EXPECT_EQ(digest(), original);

    // Evidence: each field of either side moves the digest, and putting it back restores it.
    std::vector<std::function<void(LeanAnnotation&)>> changes = {
        [](LeanAnnotation& a) { a.wheel->a.x += 0.25; },
        [](LeanAnnotation& a) { a.wheel->b.y -= 1; },
        [](LeanAnnotation& a) { a.wheel->uncertainty = 5; },
        [](LeanAnnotation& a) { a.reference->a.y += 1; },
        [](LeanAnnotation& a) { a.reference->uncertainty = 2.5; },
        [](LeanAnnotation& a) { a.wheelReviewed = true; },
        [](LeanAnnotation& a) { a.wheelNotObservable = true; },
        [](LeanAnnotation& a) { a.referenceReviewed = true; },
        [](LeanAnnotation& a) { a.basis = LeanBasis::sharedFeature; },
        [](LeanAnnotation& a) { a.reference.reset(); },
    };
    std::set<std::string> seen{original};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        for (const LeanAnnotation* side : {&rider, &reference}) {
            LeanAnnotation changed = *side;
            changes[i](changed);
            replace(changed);
            EXPECT_TRUE(seen.insert(digest()).second) << "change " << i << " went unnoticed";
            replace(*side);
            EXPECT_EQ(digest(), original);
        }
    }

    LeanAnnotation shared = rider;
    shared.basis = LeanBasis::sharedFeature;
    shared.featureID = "gate post";
    replace(shared);
    const std::string sharedDigest = digest();
    shared.featureID = "gate post 2";
    replace(shared);
    EXPECT_NE(digest(), sharedDigest);

    document.setLeanAnnotation("p1/rider", std::nullopt);
    EXPECT_TRUE(seen.insert(digest()).second) << "a removed annotation went unnoticed";
}

TEST_F(LeanPairTest, DigestNamesThePhotosItWasGivenFor) {
    const std::string original = digest();
    std::vector<ReviewFrame> frames = document.frames();
    frames[1].sourceHash = leantest::hash('c');
    ReviewDocument rephotographed(document.identity(), frames);
    for (const auto& [id, a] : document.leanAnnotations())
        rephotographed.setLeanAnnotation(id, a);
    EXPECT_NE(LeanAnalysis::evidenceDigest(rephotographed, leantest::pair()), original);

    LeanAnnotation negativeZero = rider;
    negativeZero.wheel->a = {0.0, 900};
    replace(negativeZero);
    const std::string positive = digest();
    negativeZero.wheel->a = {-0.0, 900};
    replace(negativeZero);
    EXPECT_EQ(digest(), positive) << "−0 and 0 are the same place";
}

} // namespace
} // namespace dravik
