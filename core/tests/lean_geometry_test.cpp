#include "dravik/lean_analysis.h"
#include "lean_fixtures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace dravik {
namespace {

using leantest::line;

TEST(LeanWrap, KeepsTheHalfOpenRangeAtBothBoundaries) {
    EXPECT_EQ(LeanAnalysis::wrap(90), 90);
    EXPECT_EQ(LeanAnalysis::wrap(-90), 90);
    EXPECT_EQ(LeanAnalysis::wrap(270), 90);
    EXPECT_EQ(LeanAnalysis::wrap(-270), 90);
    EXPECT_EQ(LeanAnalysis::wrap(450), 90);
    EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(90.5), -89.5);
    EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(-89.5), -89.5);
    EXPECT_EQ(LeanAnalysis::wrap(180), 0);
    EXPECT_EQ(LeanAnalysis::wrap(-180), 0);
    EXPECT_FALSE(std::signbit(LeanAnalysis::wrap(-180))); // never printed as "-0"
    EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(-100), 80);
    EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(725), 5);
    EXPECT_DOUBLE_EQ(LeanAnalysis::wrap(33.25), 33.25);
}

TEST(LeanOrientation, TurnsCounterClockwiseAsSeenWithYDown) {
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 0, 10, 0)), 0);
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 10, 0, 0)), 90); // upwards on screen
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 0, 0, 10)), -90);
    EXPECT_DOUBLE_EQ(LeanAnalysis::orientation(line(0, 0, 10, 10)), -45);
}

TEST(LeanMeasure, WheelTopToTheRightIsPositiveWhateverTheEndpointOrder) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    const LeanLine level = line(0, 200, 100, 200);
    auto up = LeanAnalysis::measure(leantest::lines(f, line(0, 100, 10, 0), level));
    ASSERT_TRUE(up);
    EXPECT_NEAR(up->angle, 5.710593137499629, 1e-12);

    auto swappedWheel = LeanAnalysis::measure(leantest::lines(f, line(10, 0, 0, 100), level));
    auto swappedBoth =
        LeanAnalysis::measure(leantest::lines(f, line(10, 0, 0, 100), line(100, 200, 0, 200)));
    ASSERT_TRUE(swappedWheel && swappedBoth);
    EXPECT_NEAR(swappedWheel->angle, up->angle, 1e-12);
    EXPECT_NEAR(swappedBoth->angle, up->angle, 1e-12);

    auto left = LeanAnalysis::measure(leantest::lines(f, line(10, 100, 0, 0), level));
    ASSERT_TRUE(left);
    EXPECT_NEAR(left->angle, -up->angle, 1e-12);

    // A camera rolled by 10° turns both lines alike and leaves the angle as it was.
    auto rolled = [](double x, double y) {
        const double c = std::cos(0.17453292519943295), s = std::sin(0.17453292519943295);
        return Point2{x * c - y * s, x * s + y * c};
    };
    LeanLine wheel{rolled(0, 100), rolled(10, 0), 3};
    LeanLine reference{rolled(0, 200), rolled(100, 200), 3};
    auto tilted = LeanAnalysis::measure(leantest::lines(f, wheel, reference));
    ASSERT_TRUE(tilted);
    EXPECT_NEAR(tilted->angle, up->angle, 1e-9);
}

TEST(LeanMeasure, UprightWheelOnALevelReferenceIsZeroAndAlongItIsNinety) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    auto upright =
        LeanAnalysis::measure(leantest::lines(f, line(50, 500, 50, 100), line(0, 600, 900, 600)));
    ASSERT_TRUE(upright);
    EXPECT_EQ(upright->angle, 0);
    auto flat =
        LeanAnalysis::measure(leantest::lines(f, line(0, 500, 400, 500), line(0, 600, 900, 600)));
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->angle, 90);
}

TEST(LeanMeasure, IntervalAddsEachLinesSensitivity) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    // The worked example of docs/lean.md.
    auto m = LeanAnalysis::measure(
        leantest::lines(f, line(400, 900, 460, 300, 3), line(100, 950, 900, 930, 3)));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->angle, 7.142689321664278, 1e-12);
    EXPECT_NEAR(m->sensitivity, 0.5700955000396211 + 0.4295760728793876, 1e-12);
    EXPECT_NEAR(m->low(), 6.143017748745269, 1e-12);
    EXPECT_NEAR(m->high(), 8.142360894583287, 1e-12);

    // 2u / length = 1 gives exactly 45°; a longer line is less sensitive.
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 40, 20)), 45, 1e-12);
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 0, 0, 400, 20)), 5.710593137499643, 1e-12);
    EXPECT_NEAR(LeanAnalysis::sensitivity(line(0, 100, 10, 0, 3)), 3.416630375849584, 1e-12);
}

TEST(LeanMeasure, NoAngleWithoutTwoUsableLinesOrWithAnUnobservableWheel) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    LeanAnnotation good = leantest::lines(f, line(0, 100, 10, 0), line(0, 200, 100, 200));
    ASSERT_TRUE(LeanAnalysis::measure(good));

    LeanAnnotation noWheel = good;
    noWheel.wheel.reset();
    LeanAnnotation noReference = good;
    noReference.reference.reset();
    LeanAnnotation notObservable = good;
    notObservable.wheelNotObservable = true;
    LeanAnnotation point = good;
    point.wheel = line(5, 5, 5, 5);
    LeanAnnotation tiny = good;
    tiny.reference = line(5, 5, 5.5, 5.5);
    LeanAnnotation nan = good;
    nan.wheel->b.x = std::numeric_limits<double>::quiet_NaN();
    LeanAnnotation badUncertainty = good;
    badUncertainty.reference->uncertainty = -1;
    for (const LeanAnnotation& a :
         {noWheel, noReference, notObservable, point, tiny, nan, badUncertainty})
        EXPECT_FALSE(LeanAnalysis::measure(a));
}

TEST(LeanMeasure, CarriesBasisFeatureAndReviewState) {
    ReviewFrame f = leantest::frame("p1", "rider", "subject", 'a');
    LeanAnnotation a = leantest::lines(f, line(0, 100, 10, 0), line(0, 200, 100, 200),
                                       LeanBasis::sharedFeature, "  kerb stone 3 ");
    a.wheelReviewed = true;
    auto m = LeanAnalysis::measure(a);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->featureID, "kerb stone 3");
    EXPECT_FALSE(m->reviewed);
    EXPECT_EQ(m->title(), "Wheel-to-feature orientation");
    EXPECT_EQ(m->wording(), "wheel-to-feature orientation");

    a.referenceReviewed = true;
    a.basis = LeanBasis::assumedLevel;
    m = LeanAnalysis::measure(a);
    ASSERT_TRUE(m);
    EXPECT_TRUE(m->reviewed);
    EXPECT_EQ(m->featureID, ""); // an assumed-level horizon names no feature
    EXPECT_EQ(m->title(), "2D wheel lean");
    EXPECT_EQ(m->wording(), "2D wheel lean");
}

} // namespace
} // namespace dravik
