// SPDX-License-Identifier: Apache-2.0
#include "rider_choice.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace dravik::batch;

namespace {

const PixelRect photo{0, 0, 4000, 3000};

// A person seen only as a box, or posed with their hips and knees at `seat`.
Sighting person(PixelRect box, double score = 0.6, std::optional<Point2> seat = std::nullopt) {
    Sighting s{"person", box, score, {}};
    if (seat) {
        s.keypoints.assign(17, {{box.x + box.width / 2, box.y + 10}, 0.1}); // unsure elsewhere
        for (int joint : {11, 12, 13, 14})
            s.keypoints[std::size_t(joint)] = {*seat, 0.8};
    }
    return s;
}

Sighting vehicle(PixelRect box, std::string kind = "motorcycle", double score = 0.5) {
    return {std::move(kind), box, score, {}};
}

std::size_t indexOf(const RiderChoice& choice, const PixelRect& box) {
    for (std::size_t i = 0; i < choice.seen.size(); ++i)
        if (choice.seen[i].box == box)
            return i;
    return choice.seen.size();
}

} // namespace

TEST(RiderChoice, TheRiderIsWhoSitsOnATwoWheelerNotTheLargestOrMostCentralBystander) {
    const PixelRect bike{500, 1800, 900, 700};
    const PixelRect rider{700, 1200, 500, 1000};
    const PixelRect pedestrian{1700, 900, 700, 1900}; // larger and nearer the middle
    const PixelRect behind{1150, 1700, 150, 380};     // hips inside the bike's box, but far back
    const PixelRect farBike{3400, 600, 200, 150};     // a small rider far off rides it
    const PixelRect farRider{3450, 420, 90, 250};
    const RiderChoice choice =
        chooseRider({person(pedestrian, 0.9), vehicle(bike), person(rider, 0.3, Point2{950, 1900}),
                     person(behind), vehicle(farBike, "bicycle"), person(farRider)},
                    photo);
    ASSERT_TRUE(choice.rider);
    EXPECT_EQ(choice.seen[*choice.rider].box, rider);
    EXPECT_TRUE(choice.riderRides());
    EXPECT_EQ(choice.riding[*choice.rider], indexOf(choice, bike));
    EXPECT_FALSE(choice.riding[indexOf(choice, behind)]);
    EXPECT_FALSE(choice.riding[indexOf(choice, pedestrian)]);
    EXPECT_EQ(choice.riding[indexOf(choice, farRider)], indexOf(choice, farBike));
    EXPECT_EQ(choice.count, 2) << "two people ride";

    // A posed person whose hips and knees are off the vehicle stands beside it.
    const RiderChoice beside =
        chooseRider({vehicle(bike), person(rider, 0.6, Point2{1300, 1500})}, photo);
    EXPECT_FALSE(beside.riderRides());
    EXPECT_EQ(beside.vehicle, std::optional<std::size_t>(1)) << "its rider may be hidden";

    // What the result records: people first, a rider's vehicle named by position.
    const std::vector<Candidate> listed = choice.candidates();
    ASSERT_EQ(listed.size(), choice.seen.size());
    EXPECT_EQ(listed.front().kind, "person");
    EXPECT_EQ(listed.back().kind, "bicycle");
    EXPECT_EQ(listed[*choice.rider].riding, indexOf(choice, bike));
}

TEST(RiderChoice, WithoutVehiclesTheLargestCentralPersonIsChosenAndEveryoneCounts) {
    const PixelRect central{1700, 1000, 500, 1100};
    const PixelRect edge{100, 500, 600, 1300}; // larger, but in the corner
    const PixelRect small{2500, 1400, 150, 350};
    const RiderChoice choice = chooseRider({person(edge), person(central), person(small)}, photo);
    ASSERT_TRUE(choice.rider);
    EXPECT_EQ(choice.seen[*choice.rider].box, central);
    EXPECT_EQ(choice.count, 3);
    EXPECT_FALSE(choice.riderRides());
    EXPECT_FALSE(chooseRider({}, photo).rider);
    EXPECT_EQ(chooseRider({}, photo).count, 0);
}

TEST(RiderChoice, ThePersonSeenByBothModelsIsOneCandidateWithTheJoints) {
    const PixelRect boxed{1000, 1000, 400, 900};
    const PixelRect posed{1010, 1040, 380, 840};
    const RiderChoice choice = chooseRider(
        {person(boxed, 0.8), person(posed, 0.4, Point2{1200, 1600}), vehicle({900, 1500, 700, 500}),
         vehicle({905, 1510, 690, 480}, "bicycle", 0.4)},
        photo);
    ASSERT_EQ(choice.seen.size(), 2u);
    EXPECT_EQ(choice.seen[0].box, posed) << "the pose's box is where its joints are";
    EXPECT_EQ(choice.seen[0].keypoints.size(), 17u);
    EXPECT_EQ(choice.seen[0].score, 0.8);
    EXPECT_EQ(choice.seen[1].kind, "motorcycle") << "the more confident kind";
    EXPECT_EQ(choice.count, 1);
}
