#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

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

TEST(LeanAnnotationEdit, HandlesReadAndMoveOnlyTheirOwnEndpoint) {
    LeanAnnotation a(leantest::frame("p1", "rider", "subject", 'a'), line(10, 20, 30, 40));
    EXPECT_EQ(a.point(LeanHandle::wheelB), (Point2{30, 40}));
    EXPECT_FALSE(a.point(LeanHandle::referenceA));
    const LeanAnnotation before = a;
    a.move(LeanHandle::referenceA, {1, 1});
    EXPECT_EQ(a, before) << "no reference line, nothing to move";

    a.reference = line(100, 100, 200, 100);
    a.referenceReviewed = true;
    a.move(LeanHandle::referenceB, {250, 90});
    a.move(LeanHandle::wheelA, {11, 19});
    EXPECT_EQ(a.reference, line(100, 100, 250, 90));
    EXPECT_EQ(a.wheel, line(11, 19, 30, 40));
    a.setReference(line(0, 210, 100, 210));
    EXPECT_FALSE(a.referenceReviewed) << "a new line is not the one that was reviewed";
}

TEST(LeanAnnotationValidate, RefusesWithASentenceNamingThePhoto) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    f.panel = {100, 50, 800, 600};
    LeanAnnotation good = leantest::lines(f, line(100, 50, 460, 100, 0.5),
                                          line(150, 650, 900, 610, 50), LeanBasis::sharedFeature);
    good.wheelReviewed = true;
    ASSERT_EQ(refusal([&] { good.validate(f); }), "") << "edges, limits and no feature ID pass";

    const std::pair<std::function<void(LeanAnnotation&)>, std::string> cases[] = {
        {[](LeanAnnotation& a) { a.frameID = "p2/rider"; },
         "The lean lines for frame “p2/rider” cannot be placed on photo “rider.jpg” of frame "
         "“p1/rider”."},
        {[](LeanAnnotation& a) { a.sourceHash = leantest::hash('f'); },
         "The lean lines were drawn on another version of photo “rider.jpg”; its content hash "
         "has changed."},
        {[](LeanAnnotation& a) { a.wheel->b = a.wheel->a; },
         "The wheel axis line on photo “rider.jpg” is shorter than 1 pixel."},
        {[](LeanAnnotation& a) { a.reference->a.y = std::numeric_limits<double>::infinity(); },
         "The reference line on photo “rider.jpg” has an endpoint that is not a finite number."},
        {[](LeanAnnotation& a) { a.wheel->uncertainty = 0.49; },
         "The wheel axis line on photo “rider.jpg” has an uncertainty outside 0.5 to 50 pixels."},
        {[](LeanAnnotation& a) { a.wheel->a.x = 99.5; },
         "Wheel endpoint 1 lies outside the part of photo “rider.jpg” that is shown for review."},
        {[](LeanAnnotation& a) { a.wheelNotObservable = true; },
         "The lean annotation of photo “rider.jpg” marks the wheel axis both reviewed and not "
         "observable."},
        {[](LeanAnnotation& a) { a.reference.reset(), a.referenceReviewed = true; },
         "The lean annotation of photo “rider.jpg” marks the reference line reviewed without a "
         "reference line."},
        {[](LeanAnnotation& a) { a.featureID = "kerb\nstone"; },
         "The shared feature ID on photo “rider.jpg” must have at most 100 characters and no "
         "control characters."},
        {[](LeanAnnotation& a) { a.provenance.clear(); },
         "The lean lines on photo “rider.jpg” do not say where they came from."},
    };
    for (const auto& [change, message] : cases) {
        LeanAnnotation a = good;
        change(a);
        EXPECT_EQ(refusal([&] { a.validate(f); }), message);
    }

    // Characters, not bytes, are counted, and broken UTF-8 is refused.
    LeanAnnotation text = good;
    for (int i = 0; i < 100; ++i)
        text.featureID += "é";
    EXPECT_EQ(refusal([&] { text.validate(f); }), "");
    for (std::string bad :
         {text.featureID + "e", std::string("kerb \xC3"), std::string("\xED\xA0\x80")}) {
        text.featureID = bad;
        EXPECT_NE(refusal([&] { text.validate(f); }), "") << bad;
    }
}

class LeanReviewTest : public ::testing::Test {
  protected:
    LeanReviewTest() {
        leantest::store(document,
                        leantest::lines(*document.frame("p1/rider"), line(400, 900, 460, 300),
                                        line(100, 950, 900, 930)));
        context.pairID = "p1";
        context.approvalDigest = LeanAnalysis::evidenceDigest(document, leantest::pair());
        document.setLeanPairContext("p1", context);
    }
    std::string validate() {
        return refusal([&] { LeanReview::validate(document); });
    }

    ReviewDocument document = leantest::pairDocument();
    LeanPairContext context;
};

TEST_F(LeanReviewTest, RefusesLinesThatDoNotFitTheirFrame) {
    EXPECT_EQ(validate(), "");
    document.setLeanAnnotation("p1/ref", *document.leanAnnotation("p1/rider"));
    EXPECT_EQ(validate(), "Lean lines in “joint-review-999999999999.json” for frame “p1/rider” "
                          "are stored under frame “p1/ref”.");
    document.setLeanAnnotation("p1/ref", std::nullopt);

    LeanAnnotation stray = *document.leanAnnotation("p1/rider");
    stray.frameID = "p9/rider";
    document.setLeanAnnotation("p9/rider", stray);
    EXPECT_EQ(validate(), "Lean lines in “joint-review-999999999999.json” belong to frame "
                          "“p9/rider”, which is not in this session.");
    document.setLeanAnnotation("p9/rider", std::nullopt);

    LeanAnnotation off = *document.leanAnnotation("p1/rider");
    off.wheel->a.x = 2001;
    document.setLeanAnnotation("p1/rider", off);
    EXPECT_EQ(validate(), "Wheel endpoint 1 lies outside the part of photo “rider.jpg” that is "
                          "shown for review.");
}

TEST_F(LeanReviewTest, RefusesChecksWithoutAComparablePairOrWithAMalformedApproval) {
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
