#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace dravik {
namespace {

using leantest::line;

TEST(LeanAngles, WrapKeepsTheHalfOpenRangeAndOrientationTurnsCounterClockwise) {
    for (auto [in, out] : {std::pair{90.0, 90.0},
                           {-90.0, 90.0},
                           {270.0, 90.0},
                           {-270.0, 90.0},
                           {90.5, -89.5},
                           {-89.5, -89.5},
                           {-100.0, 80.0},
                           {725.0, 5.0}})
        EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(in), out) << in;
    EXPECT_FALSE(std::signbit(LeanAnalysis::wrap(-180))) << "never printed as -0";
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 10, 0, 0)), 90); // up the screen
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 0, 10, 10)), -45);
}

TEST(LeanMeasure, WheelTopToTheRightIsPositiveWhateverTheEndpointOrder) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
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

TEST(LeanMeasure, IntervalAddsEachLinesSensitivity) {
    // The worked example of docs/lean.md.
    auto m = LeanAnalysis::measure(leantest::lines(leantest::frame("p1", "rider", "subject", 'a'),
                                                   line(400, 900, 460, 300, 3),
                                                   line(100, 950, 900, 930, 3)));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->angle, 7.142689321664278, 1e-12);
    EXPECT_NEAR(m->sensitivity, 0.5700955000396211 + 0.4295760728793876, 1e-12);
    EXPECT_NEAR(m->low(), 6.14301774874527, 1e-12);
    EXPECT_NEAR(m->high(), 8.142360894583287, 1e-12);
    // 2u / length = 1 gives exactly 45°; ten times the length, atan(0.1).
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 40, 20)), 45, 1e-12);
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 400, 20)), 5.710593137499643, 1e-12);
}

TEST(LeanMeasure, NoAngleWithoutTwoUsableLinesOrWithAnUnobservableWheel) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
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

TEST(LeanMeasure, CarriesBasisFeatureAndReviewState) {
    LeanAnnotation a =
        leantest::lines(leantest::frame("p1", "rider", "subject", 'a'), line(0, 100, 10, 0),
                        line(0, 200, 100, 200), LeanBasis::sharedFeature, "  kerb stone 3 ");
    a.wheelReviewed = true;
    auto m = LeanAnalysis::measure(a).value();
    EXPECT_EQ(m.featureID, "kerb stone 3");
    EXPECT_FALSE(m.reviewed);
    EXPECT_EQ(m.wording(), "wheel-to-feature orientation");

    a.referenceReviewed = true;
    a.basis = LeanBasis::assumedLevel;
    m = LeanAnalysis::measure(a).value();
    EXPECT_TRUE(m.reviewed);
    EXPECT_EQ(m.featureID, "") << "an assumed-level horizon names no feature";
    EXPECT_EQ(m.title(), "2D wheel lean");
}

} // namespace
} // namespace dravik
