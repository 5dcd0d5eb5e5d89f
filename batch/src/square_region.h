// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"

#include <cstdint>
#include <vector>

namespace dravik::batch {

// A square of the photo, in photo pixels, turned by `tilt` degrees about its centre; parts outside
// the photo read as black. A tilt is measured like a lean: positive when the square's top leans to
// the right as seen in the photo, so a rider leaning by `tilt` stands upright in the square.
struct SquareRegion {
    double x = 0; // top-left corner of the untilted square
    double y = 0;
    double side = 0;
    double tilt = 0;
    bool operator==(const SquareRegion&) const = default;

    // The square centred on `rect` whose side is the longer of its sides (the shorter is padded).
    static SquareRegion around(const PixelRect& rect, double tilt = 0);
    // The square of `side` centred on `centre`.
    static SquareRegion centred(Point2 centre, double side, double tilt = 0);
    Point2 centre() const { return {x + side / 2, y + side / 2}; }
    // Maps a point given as fractions of the square (0..1, y down the square) to photo pixels.
    Point2 toPhoto(double fx, double fy) const;
    // The inverse of toPhoto.
    Point2 toSquare(Point2 photo) const;
    // The upright rectangle of the photo that the turned square covers.
    PixelRect bounds() const;
};

// The whole-pixel part of the region's bounds that lies inside a photo of `size`; empty when none
// does.
PixelRect visiblePart(const SquareRegion& region, ImageSize size);

// Resamples `region` to side × side RGB bytes, row-major. `pixels` holds the decoded photo
// rectangle `decodedRect` (whole pixels). Shrinking averages every source pixel under an output
// pixel; enlarging interpolates bilinearly. A tilted square is first resampled upright at about
// the output's scale, then turned with bilinear interpolation.
std::vector<std::uint8_t> sampleSquare(const Image& pixels, const PixelRect& decodedRect,
                                       const SquareRegion& region, int side);

} // namespace dravik::batch
