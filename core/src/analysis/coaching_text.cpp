// SPDX-License-Identifier: Apache-2.0
#include "analysis/coaching_text.h"

#include <cmath>
#include <cstdio>

namespace dravik::analysis {

namespace {

constexpr std::string_view cameraCaveat = "A 2D angle depends on camera view.";
constexpr std::string_view momentCaveat = "One photo shows one moment of the corner.";

std::string featureLabel(PairFeature feature) {
    return std::string(label(feature));
}

} // namespace

std::string degreesText(double degrees) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", degrees);
    return std::string(text) + "°";
}

CoachingBullet elbowBullet(const PairObservation& observation) {
    const double difference = observation.difference.value_or(0);
    const bool straighter = difference > 0;
    CoachingBullet bullet;
    bullet.id = observation.id;
    bullet.feature = observation.feature;
    bullet.headline = featureLabel(observation.feature) + ": Rider’s arm is " +
                      degreesText(std::abs(difference)) +
                      (straighter ? " straighter" : " more bent");
    std::string angles = "Reviewed 2D angle " + degreesText(observation.rider.angle.value_or(0)) +
                         " for Rider vs " + degreesText(observation.reference.angle.value_or(0)) +
                         " for Reference rider. ";
    if (straighter)
        bullet.detail = angles +
                        "A straighter arm can hold weight on the bars and stiffen the steering; "
                        "on track, check for a light grip and loose shoulders. The photo cannot "
                        "show grip pressure, and a 2D angle depends on camera view.";
    else
        bullet.detail = angles +
                        "A more bent arm often goes with a lower upper body; on track, check that "
                        "the bend comes from relaxed shoulders rather than from pulling on the "
                        "bars. " +
                        std::string(cameraCaveat);
    return bullet;
}

std::optional<CoachingBullet> kneeBullet(PairFeature knee, KneePlacement placement) {
    const bool inside = knee == PairFeature::insideKnee;
    CoachingBullet bullet;
    bullet.id = std::string(rawValue(knee));
    bullet.feature = knee;
    const std::string side = inside ? "inside" : "outside";
    const std::string moment(momentCaveat);
    switch (placement) {
    case KneePlacement::riderFurtherOut:
        bullet.headline = featureLabel(knee) + ": Rider’s knee is further out";
        bullet.detail =
            "In your visual review Rider’s " + side + " knee sits further " +
            (inside ? "out from the bike" : "from the tank") + " than Reference rider’s. " +
            (inside ? "On track, check that the opening comes from the hip and that the outside "
                      "leg still holds the tank. "
                    : "On track, check whether the outside leg can hold the tank and support "
                      "the upper body. ") +
            moment;
        return bullet;
    case KneePlacement::riderCloserIn:
        bullet.headline = featureLabel(knee) + ": Rider’s knee is closer in";
        bullet.detail =
            "In your visual review Rider’s " + side + " knee sits closer to the " +
            (inside ? "bike" : "tank") + " than Reference rider’s. " +
            (inside ? "On track, try letting the knee open from the hip as the bike goes over. "
                    : "On track, check that the hold on the tank stays light enough to move "
                      "with the bike. ") +
            moment;
        return bullet;
    case KneePlacement::cannotCompare:
    case KneePlacement::similar:
    case KneePlacement::obscured:
        break;
    }
    return std::nullopt;
}

} // namespace dravik::analysis
