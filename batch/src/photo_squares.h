// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"
#include "square_region.h"

#include <cstdint>
#include <vector>

namespace dravik::batch {

// Squares of one photo for the models. Each square is resampled from the photo decoded at the
// smallest size that still gives every model pixel a few decoded ones (a JPEG decoder scales
// while decoding, far cheaper than decoding every pixel of a large photo), and a part of the
// photo once decoded serves every later square that falls inside it.
class PhotoSquares {
  public:
    explicit PhotoSquares(const ImageInput& photo) : photo_(photo) {}

    // `region` resampled to side × side RGB bytes; black where it leaves the photo.
    std::vector<std::uint8_t> sample(const SquareRegion& region, int side);

  private:
    struct Part {
        ReducedImage decoded;
        int reduction = 1;
    };
    const Part& partHolding(const PixelRect& needed, int reduction);

    const ImageInput& photo_;
    std::vector<Part> parts_;
};

} // namespace dravik::batch
