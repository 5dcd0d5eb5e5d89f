// SPDX-License-Identifier: Apache-2.0
#include "photos/photo_cache.h"
#include "workers_support.h"

namespace tessary::test {

namespace {

using dravik::PhotoScale;

// A picture of `side` × `side` pixels from the file with stamp `file`.
DecodedPhoto picture(int side, PhotoScale scale, std::uint64_t file = 1) {
    QImage image(side, side, QImage::Format_RGB888);
    return {{image, {0, 0, double(side), double(side)}, scale}, {file, file, 1, 1, 1}};
}

std::string frameID(int index) {
    char id[32];
    std::snprintf(id, sizeof id, "copy-%03d/rider", index + 1);
    return id;
}

} // namespace

TEST(PhotoCacheTest, WhatIsOnScreenStaysAndTheRestGivesWayLeastRecentlyUsedFirst) {
    const std::uint64_t one = picture(100, PhotoScale::quarter).photo.bytes();
    PhotoCache cache(3 * one);
    cache.pin({"shown"});
    for (const char* id : {"shown", "older", "newer"})
        EXPECT_TRUE(cache.insert(id, picture(100, PhotoScale::quarter)));
    cache.find("older"); // used again: "newer" is now the least recently used
    EXPECT_TRUE(cache.insert("next", picture(100, PhotoScale::quarter)));
    EXPECT_EQ(cache.find("newer"), nullptr);
    EXPECT_NE(cache.find("older"), nullptr);
    EXPECT_EQ(cache.bytes(), 3 * one);

    // A sharper picture of the same file replaces the held one if room can be made; a blurrier
    // one is not taken, and one from a changed file always is.
    EXPECT_TRUE(cache.insert("shown", picture(170, PhotoScale::half)));
    EXPECT_EQ(cache.find("shown")->photo.scale, PhotoScale::half);
    EXPECT_EQ(cache.size(), 1u); // everything unpinned gave way
    EXPECT_FALSE(cache.insert("shown", picture(100, PhotoScale::quarter)));
    EXPECT_TRUE(cache.insert("shown", picture(100, PhotoScale::quarter, 2)));
    EXPECT_EQ(cache.bytes(), one);

    // What is on screen is held even past the budget, but never sharpened past it, and nothing
    // else is taken meanwhile.
    cache.pin({"shown", "large"});
    EXPECT_TRUE(cache.insert("large", picture(300, PhotoScale::eighth)));
    EXPECT_FALSE(cache.insert("large", picture(400, PhotoScale::quarter)));
    EXPECT_FALSE(cache.insert("other", picture(10, PhotoScale::eighth)));
    EXPECT_NE(cache.find("shown"), nullptr);
    EXPECT_EQ(cache.find("large")->photo.scale, PhotoScale::eighth);
    cache.pin({"shown"});
    cache.setBudget(2 * one);
    EXPECT_EQ(cache.find("large"), nullptr);
    EXPECT_EQ(cache.bytes(), one);
}

TEST_F(ModelTest, APhotoDamagedInItsDataRefusesOnlyTheMoveThatFirstShowsIt) {
    const SessionFiles damaged =
        copiedSession(temp.path() / "damaged", 160, [](int index, std::string& bytes) {
            if (index == 149)
                bytes.resize(bytes.size() * 2 / 3); // the header survives, the pixels do not
        });
    model.load(damaged.manifest, damaged.results);
    ASSERT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.images().size(), 1u);

    model.selectFrame(148);
    ASSERT_TRUE(waitUntil([&] { return !model.isDecodingPhotos(); })); // its neighbours too
    model.selectFrame(149);
    EXPECT_EQ(model.error(), "Cannot load subject photo (copy-150-rider.jpg): "
                             "“copy-150-rider.jpg” is damaged or truncated and cannot be "
                             "decoded. Previous selection preserved.");
    EXPECT_EQ(model.activeFrameID(), frameID(148));
    EXPECT_EQ(model.images().count(frameID(148)), 1u);
    model.clearError();
    model.selectFrame(150);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.activeFrameID(), frameID(150));

    // A header that cannot be read refuses the whole session at once, and the open one stays.
    const SessionFiles unreadable =
        copiedSession(temp.path() / "unreadable", 160, [](int index, std::string& bytes) {
            if (index == 149)
                bytes.replace(2, 40, 40, 'x');
        });
    model.load(unreadable.manifest, unreadable.results);
    ASSERT_TRUE(model.error());
    EXPECT_EQ(model.error()->rfind("Cannot load subject photo (copy-150-rider.jpg): ", 0), 0u);
    EXPECT_EQ(model.activeFrameID(), frameID(150));
    EXPECT_EQ(model.document()->frames().front().file, "copy-001-rider.jpg");
}

TEST_F(ModelTest, SteppingThroughASessionKeepsItsPhotosWithinTheBudget) {
    const SessionFiles session = copiedSession(temp.path() / "steps", 60);
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    // Room for the photo on screen and two more: stepping prefetches both neighbours.
    const std::uint64_t budget = model.images().begin()->second.bytes() * 7 / 2;
    model.setPhotoBudget(budget);
    std::uint64_t most = 0;
    for (int index : {1, 2, 3, 10, 59, 58, 0, 30, 31, 32, 33, 34, 35}) {
        model.selectFrame(index);
        ASSERT_EQ(model.activeFrameID(), frameID(index));
        most = std::max(most, model.photoBytes());
        ASSERT_TRUE(waitUntil([&] {
            most = std::max(most, model.photoBytes());
            return !model.isDecodingPhotos();
        }));
        ASSERT_EQ(model.images().count(frameID(index)), 1u);
    }
    EXPECT_LE(most, budget);
    EXPECT_GE(most, budget * 2 / 3); // the neighbours were kept as far as they fit
}

} // namespace tessary::test
