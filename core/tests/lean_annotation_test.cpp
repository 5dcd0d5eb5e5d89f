// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean/lean_json.h"
#include "lean_fixtures.h"

#include "json/json_writer.h"
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace dravik {
namespace {

using leantest::line;
using test::failureOf;

std::string refusal(std::string_view text) {
    return failureOf([&] { decodeLeanProposals(text, "lean-proposals.json"); });
}

LeanAnnotation proposal() {
    LeanAnnotation a =
        leantest::lines(leantest::riderFrame(), line(400.25, 900, 460, 300, 6),
                        line(100, 950, 900, 930), LeanBasis::sharedFeature, "white gate post");
    a.provenance = "edge-finder 2.1";
    return a;
}

// A file of one proposal whose `key` holds `value` (raw JSON), or lacks it when value is empty.
std::string file(const std::string& key, const std::string& value) {
    json::Json item = json::write(proposal());
    if (value.empty())
        item.erase(key);
    else
        item[key] = json::Json::parse(value);
    json::Json root = json::header("dravik-lean-proposals", 1);
    root["proposals"] = json::Json::array({item});
    return root.dump();
}

TEST(LeanProposals, ReadsTheFileItWritesAndRefusesReviewedOrBadLinesBothWays) {
    test::TempDir dir;
    test::writeText(dir / "lean-proposals.json", encodeLeanProposals({proposal()}));
    EXPECT_EQ(loadLeanProposals(dir / "lean-proposals.json"),
              std::vector<LeanAnnotation>{proposal()});

    LeanAnnotation reviewed = proposal();
    reviewed.referenceReviewed = true;
    EXPECT_THROW(encodeLeanProposals({reviewed}), DravikError);
    LeanAnnotation infinite = proposal();
    infinite.wheel->a.x = std::numeric_limits<double>::infinity();
    EXPECT_THROW(encodeLeanProposals({infinite}), DravikError);

    // The line rules are shared with LeanAnnotation::validate; one shows the reader applies them.
    const std::string prefix = "“lean-proposals.json” is not a valid lean proposals file: ";
    const std::pair<std::string, std::string> cases[] = {
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":2},"uncertainty":3})"),
         "proposals[0].wheel is shorter than 1 pixel."},
        {file("wheelReviewed", "true"),
         "proposals[0] is a proposal and cannot be marked reviewed."},
        {file("provenance", R"("reviewer")"),
         "proposals[0].provenance must name the analysis that proposed the lines, not "
         "\"reviewer\"."},
    };
    for (const auto& [text, problem] : cases)
        EXPECT_EQ(refusal(text), prefix + problem) << text;
}

TEST(LeanAnnotationEdit, HandlesReadAndMoveOnlyTheirOwnEndpoint) {
    LeanAnnotation a(leantest::riderFrame(), line(10, 20, 30, 40));
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

    a.markWheelNotObservable();
    EXPECT_TRUE(a.wheelNotObservable && !a.wheelReviewed);
    a.confirmWheel();
    EXPECT_TRUE(a.wheelReviewed && !a.wheelNotObservable) << "a confirmed wheel is observable";
    a.setWheel(line(10, 20, 30, 40));
    EXPECT_FALSE(a.wheelReviewed || a.wheelNotObservable);
}

TEST(LeanAnnotationEdit, UncertaintyStepsInWholePixelsWithinItsBounds) {
    LeanAnnotation a(leantest::riderFrame(), line(10, 20, 30, 40, 1.5));
    EXPECT_FALSE(a.stepUncertainty(LeanLineKind::reference, 1)) << "no reference line";
    EXPECT_TRUE(a.stepUncertainty(LeanLineKind::wheel, 1));
    EXPECT_EQ(a.wheel->uncertainty, 2.5);
    EXPECT_TRUE(a.stepUncertainty(LeanLineKind::wheel, -1));
    EXPECT_TRUE(a.stepUncertainty(LeanLineKind::wheel, -1));
    EXPECT_EQ(a.wheel->uncertainty, minSteppedLeanUncertainty) << "clamped, not left at 0.5";
    EXPECT_FALSE(a.canStepUncertainty(LeanLineKind::wheel, -1));
    a.wheel->uncertainty = maxLeanUncertainty - 0.5;
    EXPECT_TRUE(a.stepUncertainty(LeanLineKind::wheel, 1));
    EXPECT_EQ(a.wheel->uncertainty, maxLeanUncertainty);
    const LeanAnnotation atTop = a;
    EXPECT_FALSE(a.stepUncertainty(LeanLineKind::wheel, 1));
    EXPECT_EQ(a, atTop);
}

TEST(LeanAnnotationValidate, RefusesWithASentenceNamingThePhoto) {
    ReviewFrame f = leantest::riderFrame();
    f.panel = {100, 50, 800, 600};
    LeanAnnotation good = leantest::lines(f, line(100, 50, 460, 100, 0.5),
                                          line(150, 650, 900, 610, 50), LeanBasis::sharedFeature);
    good.wheelReviewed = true;
    ASSERT_EQ(failureOf([&] { good.validate(f); }), "") << "edges, limits and no feature ID pass";

    const std::pair<std::function<void(LeanAnnotation&)>, std::string> cases[] = {
        {[](LeanAnnotation& a) { a.frameID = "p2/rider"; },
         "The lean lines for frame “p2/rider” cannot be placed on photo “rider.jpg” of frame "
         "“p1/rider”."},
        {[](LeanAnnotation& a) { a.sourceHash = test::digitHash('f'); },
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
        EXPECT_EQ(failureOf([&] { a.validate(f); }), message);
    }

    // Characters, not bytes, are counted, and broken UTF-8 is refused.
    LeanAnnotation text = good;
    for (int i = 0; i < 100; ++i)
        text.featureID += "é";
    EXPECT_EQ(failureOf([&] { text.validate(f); }), "");
    for (std::string bad :
         {text.featureID + "e", std::string("kerb \xC3"), std::string("\xED\xA0\x80")}) {
        text.featureID = bad;
        EXPECT_NE(failureOf([&] { text.validate(f); }), "") << bad;
    }
}

TEST(LeanReview, RefusesLinesAndChecksThatDoNotBelongToTheDocument) {
    ReviewDocument valid = leantest::pairDocument();
    const LeanAnnotation lines = leantest::lines(*valid.frame("p1/rider"), line(400, 900, 460, 300),
                                                 line(100, 950, 900, 930));
    valid.setLeanAnnotation(lines.frameID, lines);
    LeanPairContext approved, malformed, elsewhere;
    approved.pairID = malformed.pairID = "p1";
    approved.approvalDigest = LeanAnalysis::evidenceDigest(valid, leantest::pair());
    valid.setLeanPairContext("p1", approved);
    EXPECT_EQ(failureOf([&] { LeanReview::validate(valid); }), "");
    LeanAnnotation stray = lines;
    stray.frameID = "p9/rider";
    malformed.approvalDigest = "sha256:123";
    elsewhere.pairID = "p2";

    const std::string file = "“joint-review-999999999999.json”";
    const std::pair<std::function<void(ReviewDocument&)>, std::string> cases[] = {
        {[&](ReviewDocument& d) { d.setLeanAnnotation("p1/ref", lines); },
         "Lean lines in " + file + " for frame “p1/rider” are stored under frame “p1/ref”."},
        {[&](ReviewDocument& d) { d.setLeanAnnotation("p9/rider", stray); },
         "Lean lines in " + file + " belong to frame “p9/rider”, which is not in this session."},
        {[&](ReviewDocument& d) { d.setLeanPairContext("p1", malformed); },
         "The lean approval of pair “p1” in " + file +
             " does not carry a well-formed evidence digest."},
        {[&](ReviewDocument& d) { d.setLeanPairContext("p2", elsewhere); },
         "Lean checks in " + file +
             " belong to pair “p2”, which has no reference rider photo in this session."},
    };
    for (const auto& [change, message] : cases) {
        ReviewDocument document = valid;
        change(document);
        EXPECT_EQ(failureOf([&] { LeanReview::validate(document); }), message);
    }
}

} // namespace
} // namespace dravik
