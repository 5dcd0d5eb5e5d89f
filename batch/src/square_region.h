#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"

#include <cstdint>
#include <vector>

namespace dravik::batch {

// A square of the photo, in photo pixels; parts outside the photo read as black.
struct SquareRegion {
    double x = 0;
    double y = 0;
    double side = 0;
    bool operator==(const SquareRegion&) const = default;

    // The square centred on `rect` whose side is the longer of its sides (the shorter is padded).
    static SquareRegion around(const PixelRect& rect);
    // Maps a point given as fractions of the square (0..1) back to photo pixels.
    Point2 toPhoto(double fx, double fy) const;
};

// The whole-pixel part of `region` that lies inside a photo of `size`; empty when none does.
PixelRect visiblePart(const SquareRegion& region, ImageSize size);

// Resamples `region` to side × side RGB bytes, row-major. `pixels` holds the decoded photo
// rectangle `decodedRect` (whole pixels). Shrinking averages every source pixel under an output
// pixel; enlarging interpolates bilinearly.
std::vector<std::uint8_t> sampleSquare(const Image& pixels, const PixelRect& decodedRect,
                                       const SquareRegion& region, int side);

} // namespace dravik::batch
