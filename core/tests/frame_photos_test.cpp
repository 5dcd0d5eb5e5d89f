// SPDX-License-Identifier: Apache-2.0
#include "dravik/image.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik;
using namespace photo_fixtures;

TEST(FramePhotos, PanelsComeInDocumentOrderAndTheFirstFailureInDocumentOrderWins) {
    const test::TempDir folder;
    std::vector<ReviewFrame> frames;
    // A 64 × 48 photo as a frame showing `panel` of it; no bytes: a missing photo.
    auto add = [&](const std::string& file, const std::string& role, PixelRect panel,
                   std::vector<std::uint8_t> bytes = {}) {
        ReviewFrame frame = test::frame("pair" + std::to_string(frames.size()), role, role, '0');
        frame.file = file;
        frame.imageSize = {64, 48};
        frame.panel = panel;
        frame.crop = {32, 0, 32, 48}; // the detector's crop is not what a frame shows
        if (!bytes.empty()) {
            test::writeText(folder / file, bytes);
            frame.sourceHash = test::hashOf(bytes);
        }
        frames.push_back(frame);
    };
    auto load = [&] {
        return loadFramePhotos(ReviewDocument("sha256:fixture", frames), folder / "session.json");
    };
    auto failure = [&] { return test::failureOf(load); };
    // Grey `grey` on the left half, white on the right.
    const auto photo = [](int grey) {
        return encodeJpeg(Picture::filled(64, 48, [=](int x, int) {
            const auto g = std::uint8_t(x < 32 ? grey : 255);
            return Rgb{g, g, g};
        }));
    };
    for (int i = 0; i < 4; ++i)
        add("ok" + std::to_string(i) + ".jpg", "subject", {0, 0, 32, 48}, photo(40 * i));
    const std::vector<Image> panels = load();
    ASSERT_EQ(panels.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        const auto grey = std::uint8_t(40 * i);
        EXPECT_LE(largestDifference(pictureOf(panels[i]),
                                    Picture::filled(32, 48,
                                                    [=](int, int) {
                                                        return Rgb{grey, grey, grey};
                                                    })),
                  3)
            << "frame " << i;
    }

    add("edited.jpg", "reference", {0, 0, 64, 48}, photo(1));
    test::writeText(folder / "edited.jpg", photo(9));
    // Later frames that fail faster must not win over the edited photo.
    add("missing.jpg", "subject", {0, 0, 64, 48});
    add("../outside.jpg", "subject", {0, 0, 64, 48});
    EXPECT_EQ(failure(), "Cannot load reference photo (edited.jpg): Source hash changed; "
                         "reanalyze before applying corrections. Previous selection preserved.");

    frames.erase(frames.begin() + 4);
    EXPECT_EQ(failure(), "Cannot load subject photo (missing.jpg): \u201cmissing.jpg\u201d could "
                         "not be read: no such file or directory. Previous selection preserved.");

    frames.resize(1);
    add("b.jpg", "reference", {70, 0, 10, 10}, photo(10));
    EXPECT_EQ(failure(), "Cannot load reference photo (b.jpg): The region 70, 0, 10 \u00d7 10 lies "
                         "outside \u201cb.jpg\u201d (64 \u00d7 48 pixels) or is empty. Previous "
                         "selection preserved.");
}

TEST(FramePhotos, SharedPanelsAreDecodedOnceWithinTheBudgetAndSizesMustMatchTheSession) {
    const test::TempDir folder;
    // 640 × 480 of RGB is 900 KiB decoded: one panel fits a budget of 1 MiB, a second does not.
    const auto bytes = encodeJpeg(Picture::filled(640, 480, [](int x, int y) {
        return Rgb{std::uint8_t(x), std::uint8_t(y), 50};
    }));
    test::writeText(folder / "wide.jpg", bytes);
    std::vector<ReviewFrame> frames;
    for (int i = 0; i < 3; ++i) {
        ReviewFrame frame = test::frame("pair" + std::to_string(i), "rider", "subject", '0',
                                        PixelRect{0, 0, 640, 480});
        frame.file = "wide.jpg";
        frame.sourceHash = test::hashOf(bytes);
        frame.imageSize = {640, 480};
        frames.push_back(frame);
    }
    auto load = [&] {
        return loadFramePhotos(ReviewDocument("sha256:fixture", frames), folder / "session.json",
                               1u << 20);
    };
    const std::vector<Image> shared = load();
    ASSERT_EQ(shared.size(), 3u);
    EXPECT_EQ(shared[0].pixels, shared[2].pixels) << "one decode for one file and panel";

    frames.push_back(frames[0]);
    frames.back().id = "pair3/rider";
    frames.back().panel = {0, 0, 320, 480};
    EXPECT_EQ(test::failureOf(load),
              "Cannot load subject photo (wide.jpg): Decoding \u201cwide.jpg\u201d would take this "
              "session past 1 MiB of decoded photos, the most it may hold. Previous selection "
              "preserved.");

    // A photo turned by its EXIF orientation is 480 × 640 as displayed; a session that expects
    // it unturned would put every point in the wrong place.
    const auto turned =
        encodeJpeg(Picture::filled(640, 480, [](int, int) { return Rgb{}; }), {.orientation = 6});
    test::writeText(folder / "turned.jpg", turned);
    frames.resize(1);
    frames[0].file = "turned.jpg";
    frames[0].sourceHash = test::hashOf(turned);
    EXPECT_EQ(test::failureOf(load),
              "Cannot load subject photo (turned.jpg): \u201cturned.jpg\u201d is 480 \u00d7 640 "
              "pixels, but the session expects 640 \u00d7 480. Previous selection preserved.");
}
