// SPDX-License-Identifier: Apache-2.0
#include "photo_squares.h"

#include "rect_math.h"

namespace dravik::batch {

namespace {

// Decoded pixels wanted under each model pixel: enough for the average to be a fair one.
constexpr double decodedPerModelPixel = 2.4;
// A part is decoded this much larger than the square that needed it, so that the turned and
// tighter squares that follow around the same rider fit in it.
constexpr double partMargin = 0.25;

// The largest reduction (1, 2, 4 or 8) that keeps decodedPerModelPixel at `scale` photo pixels
// per model pixel.
int reductionFor(double scale) {
    int reduction = 1;
    while (reduction < 8 && reduction * 2 * decodedPerModelPixel <= scale)
        reduction *= 2;
    return reduction;
}

} // namespace

const PhotoSquares::Part& PhotoSquares::partHolding(const PixelRect& needed, int reduction) {
    for (const Part& part : parts_)
        if (part.reduction <= reduction && part.decoded.rect.contains(needed))
            return part;
    const PixelRect whole{0, 0, double(photo_.size().width), double(photo_.size().height)};
    const PixelRect wanted = intersection(grown(needed, partMargin, partMargin, partMargin), whole);
    parts_.push_back({photo_.reduced(wanted, reduction), reduction});
    return parts_.back();
}

std::vector<std::uint8_t> PhotoSquares::sample(const SquareRegion& region, int side) {
    const PixelRect needed = visiblePart(region, photo_.size());
    if (needed.width <= 0)
        return sampleSquare({}, {}, region, side);
    const Part& part = partHolding(needed, reductionFor(region.side / side));
    // The square in the part's own pixels.
    const ReducedImage& decoded = part.decoded;
    const double scale = decoded.image.width / decoded.rect.width;
    const SquareRegion inPart{(region.x - decoded.rect.x) * scale,
                              (region.y - decoded.rect.y) * scale, region.side * scale,
                              region.tilt};
    return sampleSquare(decoded.image,
                        {0, 0, double(decoded.image.width), double(decoded.image.height)}, inPart,
                        side);
}

} // namespace dravik::batch
