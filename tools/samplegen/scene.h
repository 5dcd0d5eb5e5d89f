// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "canvas.h"
#include "dravik/geometry.h"
#include "pose.h"
#include "random.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tessary::samplegen {

// The corner and where the photographer stands: shared by every photo taken at that spot.
struct CornerLook {
    int turn = 1;             // +1 left-hand corner, -1 right-hand
    bool fromOutside = true;  // the photographer stands on the outside of the corner
    double viewYaw = 0.8;     // radians between the motorcycle's heading and the line of sight
    double pitch = 0.15;      // radians the camera looks down
    double kerbGap = 0.16;    // kerb above the tyres' contact, as a fraction of the height
    double kerbSlope = 0.1;   // the kerb's tilt across the picture
    double kerbBend = 0.2;    // and its curvature
    double horizonGap = 0.12; // horizon above the kerb, fraction of the height
    Rgb skyTop, skyLow, trees, grass, asphalt, kerb;
    std::array<Rgb, 4> boards; // advertising boards along the barrier
    std::uint64_t textureSeed = 0;
};

// One rider: leathers, helmet, motorcycle, and riding style.
struct RiderLook {
    Rgb leathers, stripe, helmet, helmetStripe, visor, bike, bikeTrim, rims, gloves, boots;
    int raceNumber = 7;
    RidingStyle style;
};

// One photo: a rider at a corner at one instant.
struct PhotoScene {
    CornerLook corner;
    RiderLook rider;
    double lean = 0.8;    // radians
    double size = 0.55;   // height of rider and motorcycle, fraction of the photo height
    double centreX = 0.5; // where their box is centred, fractions of the photo
    double centreY = 0.5;
    double panBlur = 0.003; // background streaking from a panned shot, fraction of the width
    std::uint64_t grainSeed = 0;
};

CornerLook randomCorner(Random& random);
RiderLook randomRider(Random& random);
PhotoScene randomMoment(const CornerLook& corner, const RiderLook& rider, Random& random);

struct RenderedPhoto {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
    std::array<dravik::Point2, jointCount> joints; // where each joint was drawn
    std::array<bool, jointCount> farSide{};        // on the far side of the motorcycle
    dravik::PixelRect riderBox;                    // the joints' bounding box
    dravik::Point2 wheelContact, wheelTop;         // the front wheel's upright axis
};

RenderedPhoto renderPhoto(const PhotoScene& scene, int width, int height);

} // namespace tessary::samplegen
