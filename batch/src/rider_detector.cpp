// SPDX-License-Identifier: Apache-2.0
#include "rider_detector.h"

#include "dravik/error.h"
#include "photo_squares.h"
#include "pose_result.h"
#include "rect_math.h"
#include "rider_choice.h"
#include "upright.h"

#include <algorithm>
#include <cmath>

namespace dravik::batch {

namespace {

// The multi-person model's score above which someone is a candidate: low, because it scores
// riders in a tuck or at full lean far below people standing.
constexpr double peopleScore = 0.15;
// The object detector's scores above which a person or a two-wheeler is a candidate.
constexpr double objectPersonScore = 0.35;
constexpr double objectVehicleScore = 0.3;
// An area whose square spans more photo pixels than this per object-model pixel is also searched
// in overlapping tiles of half its side, so that a rider a twentieth of the photo's height is
// found. Only when the overview saw nobody riding and at most one person, and that person small:
// the verdicts a rider too small for the overview could turn wrong (with two people and no rider
// the photo needs attention anyway; a single large person is whom the photographer framed).
constexpr double tileFrom = 4.0;
constexpr double tileShare = 0.5;
constexpr double tileOverlap = 0.1;
constexpr double smallPerson = 0.2; // of the area's longer side
// The first pass's crop: this many times the rider's longer side.
constexpr double riderCropScale = 2.0;
constexpr double vehicleCropScale = 1.2;
// How far above a vehicle's box its rider may reach, as a fraction of its height.
constexpr double riderReach = 0.6;
// With nobody seen, a pose this confident on average still shows one rider (a tight crop of a
// folded rider, which neither finder recognises); but only in a crop of at most this share of the
// photo.
constexpr double presentMeanScore = 0.4;
constexpr double tightCrop = 0.5;
constexpr double riderAreaMargin = 0.15; // around rider and vehicle, on each side

std::optional<std::string> kindOf(int cocoClass) {
    switch (cocoClass) {
    case 0:
        return "person";
    case 1:
        return "bicycle";
    case 3:
        return "motorcycle";
    default:
        return std::nullopt;
    }
}

PixelRect boxInPhoto(const SquareBox& box, const SquareRegion& region) {
    const Point2 a = region.toPhoto(box.left, box.top);
    const Point2 b = region.toPhoto(box.right, box.bottom);
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(b.x - a.x), std::abs(b.y - a.y)};
}

// The squares that tile `area`, each side × side, overlapping by at least tileOverlap.
std::vector<SquareRegion> tiles(const PixelRect& area, double side) {
    auto starts = [&](double from, double length) {
        if (length <= side)
            return std::vector<double>{from + (length - side) / 2};
        const int count = int(std::ceil((length - side) / (side * (1 - tileOverlap)))) + 1;
        std::vector<double> list;
        for (int i = 0; i < count; ++i)
            list.push_back(from + (length - side) * i / (count - 1));
        return list;
    };
    std::vector<SquareRegion> list;
    for (double y : starts(area.y, area.height))
        for (double x : starts(area.x, area.width))
            list.push_back({x, y, side});
    return list;
}

struct Pose {
    SquareRegion region;
    SquarePose keypoints;
    double score = 0;
};

// The rider's box and the box of what they ride.
PixelRect riderAndVehicle(const RiderChoice& choice) {
    const std::size_t rider = *choice.rider;
    const PixelRect& box = choice.seen[rider].box;
    return choice.riding[rider] ? unite(box, choice.seen[*choice.riding[rider]].box) : box;
}

// The first pass's square: twice the rider's box, and enough to hold the vehicle too, which
// shows where a rider seen only in part has the rest of their body.
SquareRegion riderSquare(const RiderChoice& choice) {
    const PixelRect& person = choice.seen[*choice.rider].box;
    const PixelRect both = riderAndVehicle(choice);
    const double side = std::max(riderCropScale * std::max(person.width, person.height),
                                 vehicleCropScale * std::max(both.width, both.height));
    return SquareRegion::centred(centreOf(both), side);
}

// Where a later retry should look: the rider and the vehicle, with a margin; or, for a rider
// nobody recognised, the square their pose was found in.
PixelRect riderArea(const RiderChoice& choice, const SquareRegion& found) {
    if (!choice.rider)
        return found.bounds();
    return grown(riderAndVehicle(choice), riderAreaMargin, riderAreaMargin, riderAreaMargin);
}

// A person made from a pose the finders missed: the box of their confident keypoints.
Sighting posedPerson(const Pose& pose) {
    std::vector<BodyPoint> keypoints = batch::inPhoto(pose.keypoints, pose.region);
    PixelRect box;
    bool any = false;
    for (const BodyPoint& k : keypoints) {
        if (k.score < confidentScore)
            continue;
        const PixelRect dot{k.at.x, k.at.y, 0, 0};
        box = any ? unite(box, dot) : dot;
        any = true;
    }
    return {"person", box, pose.score, std::move(keypoints)};
}

class Search {
  public:
    Search(PoseWorker& worker, const ImageInput& photo, const PixelRect& area)
        : worker_(worker), squares_(photo), area_(area) {}

    // The people the multi-person model sees in `region`, inside the area.
    void lookForPeople(const SquareRegion& region) {
        addPeople(worker_.people(squares_.sample(region, PoseWorker::peopleSide)), region);
    }

    // The people and two-wheelers the object detector sees in each region, inside the area. Each
    // square is made while the detector looks at the one before: a tile of a large photo takes
    // about as long to decode as to look at.
    void lookForObjects(const std::vector<SquareRegion>& regions) {
        if (regions.empty())
            return;
        worker_.sendObjects(squares_.sample(regions.front(), PoseWorker::objectSide));
        for (std::size_t i = 0; i < regions.size(); ++i) {
            std::vector<std::uint8_t> next;
            if (i + 1 < regions.size())
                next = squares_.sample(regions[i + 1], PoseWorker::objectSide);
            addObjects(worker_.receiveObjects(), regions[i]);
            if (!next.empty())
                worker_.sendObjects(next);
        }
    }

    // Both, the two models working side by side.
    void lookForEveryone(const SquareRegion& region) {
        // The object detector's square first: its finer decode serves both.
        worker_.sendObjects(squares_.sample(region, PoseWorker::objectSide));
        worker_.sendPeople(squares_.sample(region, PoseWorker::peopleSide));
        addObjects(worker_.receiveObjects(), region);
        addPeople(worker_.receivePeople(), region);
    }

    RiderChoice choose() const { return chooseRider(seen_, area_); }

    // The best of the single-person model's tries on `square` turned by each tilt.
    Pose pose(const SquareRegion& square, const std::vector<double>& tilts) {
        std::vector<Pose> tries;
        std::vector<double> scores;
        for (double tilt : tilts) {
            const SquareRegion region = SquareRegion::centred(square.centre(), square.side, tilt);
            const SquarePose keypoints =
                worker_.pose(squares_.sample(region, PoseWorker::poseSide));
            tries.push_back({region, keypoints, meanScore(keypoints)});
            scores.push_back(tries.back().score);
        }
        return tries[bestTry(scores)];
    }

    Pose pose(const SquareRegion& region) {
        const SquarePose keypoints = worker_.pose(squares_.sample(region, PoseWorker::poseSide));
        return {region, keypoints, meanScore(keypoints)};
    }

    void addPeople(const std::vector<SquarePerson>& people, const SquareRegion& region) {
        for (const SquarePerson& p : people)
            if (p.score >= peopleScore)
                add({"person", boxInPhoto(p.box, region), p.score,
                     batch::inPhoto(p.keypoints, region)});
    }

    void addObjects(const std::vector<SquareObject>& objects, const SquareRegion& region) {
        for (const SquareObject& o : objects) {
            auto kind = kindOf(o.cocoClass);
            const double least = kind == "person" ? objectPersonScore : objectVehicleScore;
            if (kind && o.score >= least)
                add({*kind, boxInPhoto(o.box, region), o.score, {}});
        }
    }

    void add(Sighting s) {
        if (area_.contains(centreOf(s.box)))
            seen_.push_back(std::move(s));
    }

  private:
    PoseWorker& worker_;
    PhotoSquares squares_;
    PixelRect area_;
    std::vector<Sighting> seen_;
};

} // namespace

Detection RiderDetector::detect(const ImageInput& photo, const PixelRect& area,
                                const std::string& label, std::optional<double> lean) {
    const PixelRect whole{0, 0, double(photo.size().width), double(photo.size().height)};
    if (!(area.width > 0 && area.height > 0) || batch::area(intersection(area, whole)) <= 0)
        throw DravikError("The rider crop of " + label + " lies outside the photo.");

    Search search(worker_, photo, area);
    const SquareRegion overview = SquareRegion::around(area);
    auto small = [&](const PixelRect& box) {
        return std::max(box.width, box.height) < smallPerson * overview.side;
    };
    search.lookForEveryone(overview);
    RiderChoice choice = search.choose();
    if (!choice.riderRides() && overview.side > tileFrom * PoseWorker::objectSide &&
        (choice.count == 0 || (choice.count == 1 && small(choice.seen[*choice.rider].box)))) {
        search.lookForObjects(tiles(area, overview.side * tileShare));
        choice = search.choose();
    }
    if (choice.rider && choice.seen[*choice.rider].keypoints.empty()) {
        // Found small or by the object detector alone: look at them closely for their pose.
        search.lookForPeople(
            SquareRegion::around(grown(choice.seen[*choice.rider].box, 0.5, 0.5, 0.5)));
        choice = search.choose();
    }

    std::optional<Pose> first;
    // A two-wheeler nobody was seen riding, or nobody seen at all in a crop: a rider leaning hard
    // or filling a tight crop escapes both finders, but not the single-person model turned
    // upright. A whole photo where nobody was seen is never guessed at.
    const bool crop = batch::area(area) <= tightCrop * batch::area(whole);
    if (!choice.riderRides() && (choice.vehicle || (choice.seen.empty() && crop))) {
        const PixelRect where =
            choice.vehicle ? grown(choice.seen[*choice.vehicle].box, 0, riderReach, 0) : area;
        Pose guess = search.pose(SquareRegion::around(where), tiltsToTry(lean));
        if (guess.score >= presentMeanScore) {
            const Sighting posed = posedPerson(guess);
            search.add(posed);
            choice = search.choose();
            if (choice.rider && overlap(choice.seen[*choice.rider].box, posed.box) >= 0.5)
                first = guess;
        }
    }
    if (choice.rider && !first) {
        const Sighting& rider = choice.seen[*choice.rider];
        const std::optional<double> estimate = lean ? lean : torsoLean(rider.keypoints);
        first = search.pose(riderSquare(choice), tiltsToTry(estimate));
    }
    const std::int64_t count = first ? choice.count : 0;

    DravikResult primary{"2D", statusFor(count), count, {}, choice.candidates(), choice.rider};
    if (!first)
        return {primary, std::nullopt, std::nullopt};
    const std::vector<BodyPoint> coarse = batch::inPhoto(first->keypoints, first->region);
    primary.joints = reviewJoints(coarse);
    Detection detection{primary, std::nullopt, riderArea(choice, first->region)};
    if (auto tighter = refinedSquare(first->keypoints, first->region)) {
        const Pose fine = search.pose(*tighter);
        DravikResult refined = primary;
        refined.joints =
            reviewJoints(mostConfident(coarse, batch::inPhoto(fine.keypoints, fine.region)));
        detection.refined = refined;
    }
    return detection;
}

} // namespace dravik::batch
