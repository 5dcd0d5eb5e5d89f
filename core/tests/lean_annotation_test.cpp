#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace dravik {
namespace {

using leantest::line;

std::string refusal(const std::function<void()>& action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

TEST(LeanLabels, RawValuesRoundTripAndUnknownOnesGiveNothing) {
    EXPECT_EQ(label(LeanHandle::referenceB), "Reference endpoint 2");
    EXPECT_EQ(prefix(LeanBasis::assumedLevel), "Proxy reference · ");
    EXPECT_EQ(prefix(LeanBasis::sharedFeature), "Shared feature · ");
    for (LeanHandle h : allLeanHandles)
        EXPECT_EQ(leanHandle(rawValue(h)), h);
    for (LeanBasis b : allLeanBases)
        EXPECT_EQ(leanBasis(rawValue(b)), b);
    EXPECT_FALSE(leanHandle("WheelA"));
    EXPECT_FALSE(leanBasis(""));
}

TEST(LeanAnnotationEdit, HandlesReadAndMoveOnlyTheirOwnEndpoint) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    LeanAnnotation a(f, line(10, 20, 30, 40), "edge-finder");
    EXPECT_EQ(a.frameID, "p1/rider");
    EXPECT_EQ(a.sourceHash, f.sourceHash);
    EXPECT_EQ(a.provenance, "edge-finder");
    EXPECT_EQ(a.point(LeanHandle::wheelB), (Point2{30, 40}));
    EXPECT_FALSE(a.point(LeanHandle::referenceA));

    LeanAnnotation before = a;
    a.move(LeanHandle::referenceA, {1, 1});
    EXPECT_EQ(a, before) << "no reference line, nothing to move";

    a.reference = line(100, 100, 200, 100);
    a.move(LeanHandle::referenceB, {250, 90});
    a.move(LeanHandle::wheelA, {11, 19});
    EXPECT_EQ(a.reference, line(100, 100, 250, 90));
    EXPECT_EQ(a.wheel, line(11, 19, 30, 40));
}

TEST(LeanAnnotationEdit, ReplacingALineClearsWhatWasSaidAboutTheOldOne) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    LeanAnnotation a = leantest::lines(f, line(0, 100, 10, 0), line(0, 200, 100, 200));
    a.wheelReviewed = a.referenceReviewed = true;
    a.setReference(line(0, 210, 100, 210));
    EXPECT_FALSE(a.referenceReviewed);
    EXPECT_TRUE(a.wheelReviewed);
    a.wheelReviewed = false;
    a.wheelNotObservable = true;
    a.setWheel(std::nullopt);
    EXPECT_FALSE(a.wheel);
    EXPECT_FALSE(a.wheelNotObservable);
}

TEST(LeanAnnotationValidate, AcceptsLinesOnThePanelEdgesAndAnUnnamedFeature) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    f.panel = {100, 50, 800, 600};
    LeanAnnotation a = leantest::lines(f, line(100, 50, 900, 650, 0.5),
                                       line(100, 650, 900, 650, 50), LeanBasis::sharedFeature);
    a.wheelReviewed = true;
    EXPECT_NO_THROW(a.validate(f));
    EXPECT_NO_THROW(LeanAnnotation(f, std::nullopt).validate(f));
}

TEST(LeanAnnotationValidate, RefusesWithASentenceNamingThePhoto) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    f.panel = {100, 50, 800, 600};
    const LeanAnnotation good =
        leantest::lines(f, line(400, 600, 460, 100), line(150, 620, 850, 610));
    ASSERT_EQ(refusal([&] { good.validate(f); }), "");

    struct Case {
        std::function<void(LeanAnnotation&)> change;
        std::string message;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<Case> cases = {
        {[](LeanAnnotation& a) { a.frameID = "p2/rider"; },
         "The lean lines for frame “p2/rider” cannot be placed on photo “rider.jpg” of frame "
         "“p1/rider”."},
        {[](LeanAnnotation& a) { a.sourceHash = leantest::hash('f'); },
         "The lean lines were drawn on another version of photo “rider.jpg”; its content hash "
         "has changed."},
        {[](LeanAnnotation& a) { a.wheel->b = a.wheel->a; },
         "The wheel axis line on photo “rider.jpg” is shorter than 1 pixel."},
        {[](LeanAnnotation& a) {
             a.reference->b = {a.reference->a.x + 0.6, a.reference->a.y + 0.6};
         },
         "The reference line on photo “rider.jpg” is shorter than 1 pixel."},
        {[&](LeanAnnotation& a) { a.wheel->a.y = nan; },
         "The wheel axis line on photo “rider.jpg” has an endpoint that is not a finite number."},
        {[](LeanAnnotation& a) { a.wheel->uncertainty = 0.49; },
         "The wheel axis line on photo “rider.jpg” has an uncertainty outside 0.5 to 50 pixels."},
        {[&](LeanAnnotation& a) { a.reference->uncertainty = 50.01; },
         "The reference line on photo “rider.jpg” has an uncertainty outside 0.5 to 50 pixels."},
        {[&](LeanAnnotation& a) { a.reference->uncertainty = nan; },
         "The reference line on photo “rider.jpg” has an uncertainty outside 0.5 to 50 pixels."},
        {[](LeanAnnotation& a) { a.wheel->a.x = 99.5; },
         "Wheel endpoint 1 lies outside the part of photo “rider.jpg” that is shown for review."},
        {[](LeanAnnotation& a) { a.reference->b.y = 650.5; },
         "Reference endpoint 2 lies outside the part of photo “rider.jpg” that is shown for "
         "review."},
        {[](LeanAnnotation& a) { a.setWheel(std::nullopt), a.wheelReviewed = true; },
         "The lean annotation of photo “rider.jpg” marks the wheel axis reviewed without a wheel "
         "axis line."},
        {[](LeanAnnotation& a) { a.wheelReviewed = a.wheelNotObservable = true; },
         "The lean annotation of photo “rider.jpg” marks the wheel axis both reviewed and not "
         "observable."},
        {[](LeanAnnotation& a) { a.setReference(std::nullopt), a.referenceReviewed = true; },
         "The lean annotation of photo “rider.jpg” marks the reference line reviewed without a "
         "reference line."},
        {[](LeanAnnotation& a) { a.featureID = std::string(101, 'k'); },
         "The shared feature ID on photo “rider.jpg” must have at most 100 characters and no "
         "control characters."},
        {[](LeanAnnotation& a) { a.featureID = "kerb\nstone"; },
         "The shared feature ID on photo “rider.jpg” must have at most 100 characters and no "
         "control characters."},
        {[](LeanAnnotation& a) { a.featureID = "kerb \xC3"; },
         "The shared feature ID on photo “rider.jpg” must have at most 100 characters and no "
         "control characters."},
        {[](LeanAnnotation& a) { a.provenance.clear(); },
         "The lean lines on photo “rider.jpg” do not say where they came from."},
    };
    for (const Case& c : cases) {
        LeanAnnotation a = good;
        c.change(a);
        EXPECT_EQ(refusal([&] { a.validate(f); }), c.message);
    }

    LeanAnnotation accented = good;
    accented.featureID = std::string(50, 'e') + std::string(50, '\0'); // NUL is a control char
    EXPECT_NE(refusal([&] { accented.validate(f); }), "");
    accented.featureID.clear();
    for (int i = 0; i < 100; ++i)
        accented.featureID += "é"; // 100 characters, 200 bytes
    EXPECT_EQ(refusal([&] { accented.validate(f); }), "");
}

class LeanReviewTest : public ::testing::Test {
  protected:
    LeanReviewTest() {
        leantest::store(document,
                        leantest::lines(*document.frame("p1/rider"), line(400, 900, 460, 300),
                                        line(100, 950, 900, 930)));
        LeanPairContext context;
        context.pairID = "p1";
        context.approvalDigest = LeanAnalysis::evidenceDigest(document, leantest::pair());
        document.setLeanPairContext("p1", context);
    }
    std::string validate() {
        return refusal([&] { LeanReview::validate(document); });
    }

    ReviewDocument document = leantest::pairDocument();
};

TEST_F(LeanReviewTest, AcceptsAConsistentDocument) {
    EXPECT_EQ(validate(), "");
}

TEST_F(LeanReviewTest, RefusesLinesThatDoNotFitTheirFrame) {
    LeanAnnotation stray = *document.leanAnnotation("p1/rider");
    stray.frameID = "p9/rider";
    document.setLeanAnnotation("p9/rider", stray);
    EXPECT_EQ(validate(), "Lean lines in “joint-review-999999999999.json” belong to frame "
                          "“p9/rider”, which is not in this session.");
    document.setLeanAnnotation("p9/rider", std::nullopt);

    document.setLeanAnnotation("p1/ref", *document.leanAnnotation("p1/rider"));
    EXPECT_EQ(validate(), "Lean lines in “joint-review-999999999999.json” for frame “p1/rider” "
                          "are stored under frame “p1/ref”.");
    document.setLeanAnnotation("p1/ref", std::nullopt);

    LeanAnnotation off = *document.leanAnnotation("p1/rider");
    off.wheel->a.x = 2001;
    document.setLeanAnnotation("p1/rider", off);
    EXPECT_EQ(
        validate(),
        "Wheel endpoint 1 lies outside the part of photo “rider.jpg” that is shown for review.");
}

TEST_F(LeanReviewTest, RefusesChecksWithoutAComparablePairOrWithAMalformedApproval) {
    LeanPairContext context = *document.leanPairContext("p1");
    context.approvalDigest = "sha256:123";
    document.setLeanPairContext("p1", context);
    EXPECT_EQ(validate(), "The lean approval of pair “p1” in “joint-review-999999999999.json” "
                          "does not carry a well-formed evidence digest.");

    context.approvalDigest.reset();
    document.setLeanPairContext("p1", context);
    document.setLeanPairContext("p2", context);
    EXPECT_EQ(validate(), "Lean checks in “joint-review-999999999999.json” belong to pair “p2”, "
                          "which has no reference rider photo in this session.");

    ReviewDocument single(leantest::hash('9'), {leantest::frame("p1", "rider", "subject", 'a')});
    single.setLeanPairContext("p1", context);
    EXPECT_NE(refusal([&] { LeanReview::validate(single); }), "");
}

} // namespace
} // namespace dravik
