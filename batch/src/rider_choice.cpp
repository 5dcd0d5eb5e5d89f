// SPDX-License-Identifier: Apache-2.0
#include "rider_choice.h"

#include "rect_math.h"

#include <algorithm>
#include <cmath>

namespace dravik::batch {

namespace {

// Two sightings this alike are one person or one vehicle seen twice: their boxes overlap this
// much, or they are of about one height and most of the smaller lies in the larger (two models
// draw one person's box differently, and a tile may see only part of someone).
constexpr double sameThing = 0.45;
constexpr double mostlyInside = 0.5;
constexpr double aboutOneHeight = 1.5;
// Where a rider's hips and knees may be: the vehicle's box, a little wider and reaching above it
// (a rider sitting up on a bicycle has the hips above the saddle).
constexpr double seatSides = 0.1;
constexpr double seatAbove = 0.35;
constexpr double seatedJoint = 0.2;  // a hip or knee this confident says where the rider sits
constexpr double unposedSeat = 0.55; // an unposed person's hips: this far down their box
// A rider's box is about the size of the vehicle's: someone far smaller stands behind it, someone
// far larger stands in front of it.
constexpr double smallestRider = 0.45;
constexpr double largestRider = 3.0;
// The rest of a crowd (the least sure) is left out of the result.
constexpr std::size_t maxPeople = 24;
constexpr std::size_t maxVehicles = 8;

enum Coco { leftHip = 11, rightHip = 12, leftKnee = 13, rightKnee = 14 };

bool isPerson(const Sighting& s) {
    return s.kind == "person";
}

// People first, then vehicles, each by falling score.
bool before(const Sighting& a, const Sighting& b) {
    if (isPerson(a) != isPerson(b))
        return isPerson(a);
    return a.score > b.score;
}

bool alike(const Sighting& a, const Sighting& b) {
    if (isPerson(a) != isPerson(b))
        return false;
    if (overlap(a.box, b.box) >= sameThing)
        return true;
    const double smaller = std::min(area(a.box), area(b.box));
    const double taller = std::max(a.box.height, b.box.height);
    const double shorter = std::min(a.box.height, b.box.height);
    return smaller > 0 && taller <= aboutOneHeight * shorter &&
           area(intersection(a.box, b.box)) >= mostlyInside * smaller;
}

std::vector<Sighting> merged(std::vector<Sighting> sightings) {
    std::stable_sort(sightings.begin(), sightings.end(), before);
    std::vector<Sighting> kept;
    for (Sighting& s : sightings) {
        auto same =
            std::find_if(kept.begin(), kept.end(), [&](const Sighting& k) { return alike(k, s); });
        if (same == kept.end()) {
            kept.push_back(std::move(s));
        } else if (same->keypoints.empty() && !s.keypoints.empty()) {
            // The posed sighting says where the joints are; its box is the joints'.
            same->keypoints = std::move(s.keypoints);
            same->box = s.box;
        }
    }
    std::vector<Sighting> listed;
    std::size_t people = 0;
    std::size_t vehicles = 0;
    for (Sighting& s : kept)
        if (isPerson(s) ? people++ < maxPeople : vehicles++ < maxVehicles)
            listed.push_back(std::move(s));
    return listed;
}

double diagonal(const PixelRect& r) {
    return std::hypot(r.width, r.height);
}

bool rides(const Sighting& person, const Sighting& vehicle) {
    const double size = diagonal(person.box) / std::max(1.0, diagonal(vehicle.box));
    if (area(intersection(person.box, vehicle.box)) <= 0 || size < smallestRider ||
        size > largestRider)
        return false;
    const PixelRect seat = grown(vehicle.box, seatSides, seatAbove, 0);
    bool posed = false;
    for (int joint : {leftHip, rightHip, leftKnee, rightKnee}) {
        if (person.keypoints.size() <= std::size_t(joint))
            break;
        const BodyPoint& p = person.keypoints[std::size_t(joint)];
        if (p.score < seatedJoint)
            continue;
        posed = true;
        if (seat.contains(p.at))
            return true;
    }
    if (posed)
        return false;
    const Point2 hips{centreOf(person.box).x, person.box.y + unposedSeat * person.box.height};
    return seat.contains(hips);
}

// 1 in the middle of the area, falling to 0.1 towards its corners: photographers frame their
// subject.
double centrality(const PixelRect& box, const PixelRect& area) {
    const Point2 middle = centreOf(area);
    const Point2 centre = centreOf(box);
    const double reach = std::hypot(area.width, area.height) / 2;
    const double off = reach > 0 ? std::hypot(centre.x - middle.x, centre.y - middle.y) / reach : 0;
    return std::max(0.1, 1 - off);
}

} // namespace

std::vector<Candidate> RiderChoice::candidates() const {
    std::vector<Candidate> list;
    for (std::size_t i = 0; i < seen.size(); ++i)
        list.push_back({seen[i].kind, seen[i].box, std::clamp(seen[i].score, 0.0, 1.0), riding[i]});
    return list;
}

RiderChoice chooseRider(std::vector<Sighting> sightings, const PixelRect& area) {
    RiderChoice choice;
    choice.seen = merged(std::move(sightings));
    choice.riding.assign(choice.seen.size(), std::nullopt);
    double best = 0;
    for (std::size_t p = 0; p < choice.seen.size() && isPerson(choice.seen[p]); ++p) {
        const Sighting& person = choice.seen[p];
        double mostShared = 0;
        for (std::size_t v = p + 1; v < choice.seen.size(); ++v) {
            if (isPerson(choice.seen[v]) || !rides(person, choice.seen[v]))
                continue;
            double shared = batch::area(intersection(person.box, choice.seen[v].box));
            if (shared > mostShared) {
                mostShared = shared;
                choice.riding[p] = v;
            }
        }
        if (!choice.riding[p])
            continue;
        ++choice.count;
        const double standing = mostShared * centrality(person.box, area);
        if (standing > best) {
            best = standing;
            choice.rider = p;
        }
    }
    if (choice.count > 0)
        return choice;
    for (std::size_t v = 0; v < choice.seen.size(); ++v) {
        const PixelRect& box = choice.seen[v].box;
        const double standing = batch::area(box) * centrality(box, area);
        if (!isPerson(choice.seen[v]) && standing > best) {
            best = standing;
            choice.vehicle = v;
        }
    }
    best = 0;
    for (std::size_t p = 0; p < choice.seen.size() && isPerson(choice.seen[p]); ++p) {
        ++choice.count;
        const Sighting& person = choice.seen[p];
        const double standing = batch::area(person.box) * centrality(person.box, area);
        if (standing > best) {
            best = standing;
            choice.rider = p;
        }
    }
    return choice;
}

} // namespace dravik::batch
