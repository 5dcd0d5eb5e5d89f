// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "dravik/geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dravik::batch {

// A keypoint in photo pixels.
struct BodyPoint {
    Point2 at;
    double score = 0;
};

// Someone or something a model saw, in photo pixels. One person or vehicle may be seen several
// times (by two models, on overlapping squares); chooseRider merges them.
struct Sighting {
    std::string kind; // "person", "bicycle" or "motorcycle"
    PixelRect box;
    double score = 0;
    std::vector<BodyPoint> keypoints; // the 17 COCO keypoints when a pose model saw the person
};

// Whom the detector takes for the rider.
struct RiderChoice {
    std::vector<Sighting> seen; // merged: people first, then vehicles, each by falling score
    std::vector<std::optional<std::size_t>> riding; // per entry of `seen`: the vehicle ridden
    std::optional<std::size_t> rider;               // an entry of `seen`
    // The most prominent vehicle nobody was seen riding, whose rider may have gone unrecognised.
    std::optional<std::size_t> vehicle;
    // The people riding a vehicle, or every person when nobody rides one.
    std::int64_t count = 0;

    std::vector<Candidate> candidates() const;
    // Whether the rider was chosen for riding a vehicle rather than for standing out.
    bool riderRides() const { return rider && riding[*rider]; }
};

// Merges repeated sightings and chooses the rider: of the people riding a vehicle, the one whose
// box overlaps it most, weighted by how central they are in `area`; when nobody rides one, the
// largest person, weighted the same way. A person rides a vehicle when a hip or knee (or, unposed,
// the middle of their box) lies inside the vehicle's box or just above it, and their size suits
// the vehicle's.
RiderChoice chooseRider(std::vector<Sighting> sightings, const PixelRect& area);

} // namespace dravik::batch
