// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"
#include "image/pixel_box.h"

namespace dravik {

// How an EXIF orientation (1..8) turns stored pixels into displayed ones: displayed (x, y) is
// stored (u, v) with (u, v) = transpose ? (y, x) : (x, y), then mirrored along u and/or v.
struct Orientation {
    bool transpose = false;
    bool flipU = false;
    bool flipV = false;

    static Orientation fromExif(int value); // values outside 1..8 mean no change
    bool identity() const { return !transpose && !flipU && !flipV; }

    ImageSize oriented(ImageSize stored) const;
    // The stored pixels that hold a displayed box of a photo whose stored size is `stored`.
    PixelBox toStored(const PixelBox& displayed, ImageSize stored) const;
    // The displayed pixels a stored box of such a photo shows.
    PixelBox toDisplayed(const PixelBox& stored, ImageSize storedSize) const;
    // Turns a decoded stored region into its displayed form.
    Image apply(const Image& stored) const;
};

} // namespace dravik
